// The table of what a callback can be asked for.
#include <algorithm>
#include <array>

#include "base/stop_token.hpp"
#include "env/errors.hpp"
#include "model/model.hpp"
#include "opt/callback_record.hpp"

namespace zorvex {

namespace {

constexpr unsigned at(int where) { return 1U << where; }
constexpr unsigned kAnywhere = ~0U;
constexpr unsigned kSearch = at(ZLP_WHERE_MIP) | at(ZLP_WHERE_MIP_SOLUTION) | at(ZLP_WHERE_MIP_NODE);

struct Source {
  const ZLPcbdata& record;
  const CallbackView& view;

  [[nodiscard]] double user_sense(double value) const { return record.model->data.sense * value; }
};

struct CallbackDatum {
  int what;
  unsigned where;  // set of at(...)
  void (*store)(const Source& source, void* result);
};

template <class T>
void store(void* result, T value) {
  *static_cast<T*>(result) = value;
}

template <auto Member>
void store_presolve(const Source& source, void* result) {
  store<int>(result, source.view.presolve->*Member);
}
template <auto Member>
void store_simplex(const Source& source, void* result) {
  store<double>(result, source.view.simplex->*Member);
}
template <auto Member>
void store_barrier(const Source& source, void* result) {
  store<double>(result, source.view.barrier->*Member);
}
template <auto Member>
void store_search(const Source& source, void* result) {
  store(result, source.view.search->*Member);
}
void store_point(const Source& source, void* result) {
  std::copy(source.view.x->begin(), source.view.x->end(), static_cast<double*>(result));
}
void store_point_objective(const Source& source, void* result) {
  store(result, source.user_sense(source.view.objective));
}

constexpr auto kData = std::to_array<CallbackDatum>({
    {ZLP_WHAT_RUNTIME, kAnywhere,
     [](const Source& s, void* result) {
       store(result, s.record.solving ? now_seconds() - s.record.start_time : 0.0);
     }},
    {ZLP_WHAT_PRESOLVE_ROWS_REMOVED, at(ZLP_WHERE_PRESOLVE), store_presolve<&PresolveProgress::rows_removed>},
    {ZLP_WHAT_PRESOLVE_COLS_REMOVED, at(ZLP_WHERE_PRESOLVE), store_presolve<&PresolveProgress::cols_removed>},
    {ZLP_WHAT_SIMPLEX_ITERATIONS, at(ZLP_WHERE_SIMPLEX), store_simplex<&SimplexProgress::iterations>},
    {ZLP_WHAT_SIMPLEX_OBJECTIVE, at(ZLP_WHERE_SIMPLEX),
     [](const Source& s, void* result) { store(result, s.user_sense(s.view.simplex->objective)); }},
    {ZLP_WHAT_SIMPLEX_PRIMAL_INF, at(ZLP_WHERE_SIMPLEX), store_simplex<&SimplexProgress::primal_infeasibility>},
    {ZLP_WHAT_SIMPLEX_DUAL_INF, at(ZLP_WHERE_SIMPLEX), store_simplex<&SimplexProgress::dual_infeasibility>},
    {ZLP_WHAT_MIP_INCUMBENT, kSearch,
     [](const Source& s, void* result) { store(result, s.user_sense(s.view.search->incumbent)); }},
    {ZLP_WHAT_MIP_BOUND, kSearch,
     [](const Source& s, void* result) { store(result, s.user_sense(s.view.search->bound)); }},
    {ZLP_WHAT_MIP_NODES, kSearch, store_search<&SearchProgress::nodes>},
    {ZLP_WHAT_MIP_OPEN_NODES, kSearch, store_search<&SearchProgress::open_nodes>},
    {ZLP_WHAT_MIP_ITERATIONS, kSearch, store_search<&SearchProgress::iterations>},
    {ZLP_WHAT_MIP_SOLUTIONS, kSearch, store_search<&SearchProgress::solutions>},
    {ZLP_WHAT_MIP_CUTS, kSearch, store_search<&SearchProgress::cuts>},
    {ZLP_WHAT_SOLUTION, at(ZLP_WHERE_MIP_SOLUTION), store_point},
    {ZLP_WHAT_SOLUTION_OBJECTIVE, at(ZLP_WHERE_MIP_SOLUTION), store_point_objective},
    {ZLP_WHAT_NODE_RELAXATION, at(ZLP_WHERE_MIP_NODE), store_point},
    {ZLP_WHAT_NODE_OBJECTIVE, at(ZLP_WHERE_MIP_NODE), store_point_objective},
    {ZLP_WHAT_NODE_DEPTH, at(ZLP_WHERE_MIP_NODE), [](const Source& s, void* result) { store(result, s.view.depth); }},
    {ZLP_WHAT_MESSAGE_TEXT, at(ZLP_WHERE_MESSAGE), [](const Source& s, void* result) { store(result, s.view.text); }},
    {ZLP_WHAT_BARRIER_ITERATIONS, at(ZLP_WHERE_BARRIER),
     [](const Source& s, void* result) { store(result, s.view.barrier->iterations); }},
    {ZLP_WHAT_BARRIER_PRIMAL_OBJECTIVE, at(ZLP_WHERE_BARRIER),
     [](const Source& s, void* result) { store(result, s.user_sense(s.view.barrier->primal_objective)); }},
    {ZLP_WHAT_BARRIER_DUAL_OBJECTIVE, at(ZLP_WHERE_BARRIER),
     [](const Source& s, void* result) { store(result, s.user_sense(s.view.barrier->dual_objective)); }},
    {ZLP_WHAT_BARRIER_PRIMAL_RESIDUAL, at(ZLP_WHERE_BARRIER), store_barrier<&BarrierProgress::primal_residual>},
    {ZLP_WHAT_BARRIER_DUAL_RESIDUAL, at(ZLP_WHERE_BARRIER), store_barrier<&BarrierProgress::dual_residual>},
    {ZLP_WHAT_BARRIER_COMPLEMENTARITY, at(ZLP_WHERE_BARRIER), store_barrier<&BarrierProgress::complementarity>},
});

}  // namespace

int get_callback_data(const ZLPcbdata& record, int where, int what, void* result) {
  ZLPenv* env = record.model->env;
  const CallbackView* view = record.view;
  if (view == nullptr) {
    set_error(env, kErrorCallback, true, "Callback data exists only while the callback runs");
    return kErrorCallback;
  }
  if (where != view->where) {
    set_error(env, kErrorCallback, true, "Callback data was asked for with where code %d in a callback with %d", where,
              view->where);
    return kErrorCallback;
  }
  const auto found = std::find_if(kData.begin(), kData.end(), [&](const CallbackDatum& d) { return d.what == what; });
  if (found == kData.end()) {
    set_error(env, kErrorCallback, true, "There is no callback data with what code %d", what);
    return kErrorCallback;
  }
  if ((found->where & at(where)) == 0) {
    set_error(env, kErrorCallback, true, "Callback data with what code %d does not exist at where code %d", what,
              where);
    return kErrorCallback;
  }
  if (result == nullptr) return kErrorNullArgument;
  found->store({record, *view}, result);
  return kOk;
}

}  // namespace zorvex

// C entry points: registering a callback, and what it asks and answers.
#include "env/environment.hpp"
#include "model/argument_checks.hpp"
#include "model/messages.hpp"
#include "opt/callback_record.hpp"

namespace {

using namespace zorvex;

// The frame of a call made from inside a callback.
template <class Body>
int guarded_callback(ZLPcbdata* cbdata, Body&& body) noexcept {
  if (cbdata == nullptr) return kErrorNullArgument;
  if (cbdata->magic.load() != kCallbackMagic) return kErrorInvalidArgument;
  ZLPenv* env = cbdata->model->env;
  clear_error(env);
  const int code = code_of([&] { return body(*cbdata, *env); });
  set_default_message(env, code);
  return code;
}

int refuse(ZLPenv& env, const char* text) {
  set_error(&env, kErrorCallback, true, "%s", text);
  return kErrorCallback;
}

int offer_solution(ZLPcbdata& record, ZLPenv& env, const double* solution) {
  if (record.view == nullptr || record.view->search == nullptr) {
    return refuse(env, "Solutions can be offered only while the tree search calls");
  }
  if (solution == nullptr) return kErrorNullArgument;
  const Index count = record.model->data.num_cols();
  if (const int code = check_finite(&env, solution, count)) return code;
  record.offered.emplace_back(solution, solution + count);
  return kOk;
}

struct RowArgument {
  int count;
  const int* index;
  const double* value;
  char sense;
  double rhs;
};

int add_row(ZLPcbdata& record, ZLPenv& env, const RowArgument& row) {
  if (record.view == nullptr || record.view->rows == nullptr) {
    return refuse(env, "Cuts can be added only at nodes and solutions of the tree search");
  }
  if (!record.takes_rows) return refuse(env, "Cuts can be added only with parameter PreCrush at 1");
  if (row.count < 1 || !is_valid_sense(row.sense)) return kErrorInvalidArgument;
  if (row.index == nullptr || row.value == nullptr) return kErrorNullArgument;
  PendingChanges workspace(0, 0, 0);
  const int at_zero = 0;
  const ListArgument list{1, row.count, &at_zero, row.index, record.model->data.num_cols()};
  if (const int code = check_lists(list, workspace)) return code;
  if (const int code = check_finite(&env, row.value, row.count)) return code;
  if (const int code = check_finite(&env, row.rhs)) return code;
  SideRow side;
  for (int k = 0; k < row.count; ++k) {
    if (row.value[k] == 0) continue;
    side.index.push_back(row.index[k]);
    side.value.push_back(row.value[k]);
  }
  if (side.index.empty()) return kErrorInvalidArgument;
  if (row.sense != ZLP_LESS_EQUAL) side.lower = row.rhs;
  if (row.sense != ZLP_GREATER_EQUAL) side.upper = row.rhs;
  record.view->rows->push_back(std::move(side));
  return kOk;
}

}  // namespace

extern "C" {

int ZLPsetcallbackfunc(ZLPmodel* model, ZLPcallback function, void* user) {
  return guarded_change(model, nullptr, [&](ZLPmodel& valid) {
    install_callback(valid, function == nullptr ? nullptr : make_callback(valid, function, user));
    valid.solver_state.reset();
    return static_cast<int>(kOk);
  });
}

int ZLPcbget(ZLPcbdata* cbdata, int where, int what, void* result) {
  return guarded_callback(cbdata,
                          [&](ZLPcbdata& record, ZLPenv&) { return get_callback_data(record, where, what, result); });
}

int ZLPcbsolution(ZLPcbdata* cbdata, const double* solution) {
  return guarded_callback(cbdata,
                          [&](ZLPcbdata& record, ZLPenv& env) { return offer_solution(record, env, solution); });
}

int ZLPcbcut(ZLPcbdata* cbdata, int num_nz, const int* cind, const double* cval, char sense, double rhs) {
  return guarded_callback(cbdata, [&](ZLPcbdata& record, ZLPenv& env) {
    return add_row(record, env, {num_nz, cind, cval, sense, rhs});
  });
}

}  // extern "C"

#include "opt/optimize.hpp"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "env/environment.hpp"
#include "env/log_channel.hpp"
#include "env/processors.hpp"
#include "model/messages.hpp"
#include "model/model.hpp"
#include "opt/callback_hooks.hpp"
#include "opt/closing_report.hpp"
#include "opt/engine_choice.hpp"
#include "opt/presolved_dump.hpp"
#include "opt/problem_data.hpp"
#include "opt/publish.hpp"
#include "opt/solver_options.hpp"

namespace zorvex {

namespace {

constexpr const char* kDumpedModel = "zorvex.rew";
constexpr const char* kDumpedParameters = "zorvex.prm";
constexpr int kSearchThreads = 1;  // the tree search runs on the caller's thread

// Marks the model busy and protects the message the caller will see, for the time of the solve.
class InProgress {
 public:
  explicit InProgress(ZLPmodel& model) : model_(model) {
    model_.in_progress = 1;
    lock_messages(model_);
  }
  ~InProgress() {
    unlock_messages(model_);
    model_.in_progress = 0;
  }
  InProgress(const InProgress&) = delete;
  InProgress& operator=(const InProgress&) = delete;

 private:
  ZLPmodel& model_;
};

// A tree search and the log it writes to, kept with the model.
struct KeptSearch {
  KeptSearch(ZLPenv& env, MipProblem problem) : log(env), solver(std::move(problem), log) {}
  EnvironmentLog log;
  MipSolver solver;
};

bool can_be_resumed(SolveStatus status) {
  switch (status) {
    case SolveStatus::kIterationLimit:
    case SolveStatus::kNodeLimit:
    case SolveStatus::kTimeLimit:
    case SolveStatus::kSolutionLimit:
    case SolveStatus::kInterrupted:
      return true;
    default:
      return false;
  }
}

void dump_for_debugging(ZLPmodel& model) {
  if (param<Param::ZORV_PAR_DUMP>(*model.env) == 0) return;
  ZLPwrite(&model, kDumpedModel);
  ZLPwriteparams(model.env, kDumpedParameters);
}

void report_model(ZLPmodel& model) {
  const ModelData& data = model.data;
  log_printf(model.env, "Optimize a model with %d rows, %d columns and %d nonzeros\n", data.num_rows(), data.num_cols(),
             static_cast<int>(data.matrix.num_nonzeros()));
  if (!data.quadratic.empty()) {
    log_printf(model.env, "Model has %d quadratic terms\n", static_cast<int>(data.quadratic.size()));
  }
}

void report_quadratic_method(ZLPmodel& model) {
  if (param<Param::Method>(*model.env) < 3) return;
  log_printf(model.env, "WARNING: Concurrent optimizer not supported for QP models\n");
  log_printf(model.env, "         Using dual simplex\n");
}

// Time and listener of one call of optimize.
struct Call {
  double start_time;
  CallbackHooks* hooks;  // null: no callback

  // The code of a solve that ended with `error`.
  [[nodiscard]] int code(int error) const {
    return error == kOk && hooks != nullptr && hooks->failed() ? static_cast<int>(kErrorCallback) : error;
  }
};

// A start keeps the precision its basis comes from: extended unless Quad is 0, double with Quad 1. Without such a basis
// Quad 1 asks for extended precision.
void take_start_precision(const ZLPmodel& model, LpDriverOptions& options, LogSink& log) {
  const BasisPrecision start = model.warm.precision;
  const int quad = param<Param::Quad>(*model.env);
  if (start == BasisPrecision::kExtended && quad == 0) log.write("Switch to double precision\n");
  if (start == BasisPrecision::kExtended && quad != 0) options.simplex.precision = Precision::kExtended;
  if (start == BasisPrecision::kDouble && quad == 1) options.simplex.precision = Precision::kDouble;
}

void clean(LpData& lp, const ZLPenv& env) {
  clean_lp_data(lp, param<Param::ZORV_PAR_INFBOUND>(env), param<Param::ZORV_PAR_ZERO>(env));
}

// A Q without entries sends a linear model to the methods for quadratic ones.
void force_quadratic(LpData& lp) {
  if (lp.is_quadratic()) return;
  lp.quadratic.num_rows = lp.quadratic.num_cols = lp.num_cols();
  lp.quadratic.start.assign(static_cast<std::size_t>(lp.num_cols()) + 1, 0);
}

int solve_continuous(ZLPmodel& model, const Call& call) {
  const ZLPenv& env = *model.env;
  EnvironmentLog log(*model.env);
  LpData lp = make_lp_data(model.data);
  clean(lp, env);
  if (param<Param::ZORV_PAR_FORCEQP>(env) != 0) force_quadratic(lp);
  const Basis start = param<Param::ZORV_PAR_WARMBASIS>(env) == 0 ? Basis() : make_start_basis(model);
  LpDriverOptions options = make_lp_options(env, model.data.sense, call.start_time);
  if (lp.is_quadratic() && param<Param::ZORV_PAR_QPREDUCE>(env) == 0) options.presolve.level = 0;
  if (!start.empty()) take_start_precision(model, options, log);
  if (param<Param::ZORV_PAR_WRITEPREMODEL>(env) != 0) {
    options.dump_presolved = [&model](const LpData& reduced) { dump_presolved(*model.env, reduced, model.data.sense); };
  }
  const std::unique_ptr<LpEngine> engine = choose_engine(env, lp, options, start, call.start_time);
  options.engine = engine.get();
  if (lp.is_quadratic()) report_quadratic_method(model);
  LpDriverResult result =
      solve_lp(lp, options, start.empty() ? nullptr : &start, make_stop_token(env, call.start_time, call.hooks), log);
  const int error = call.code(result.error);
  publish_lp(model, lp, std::move(result), options.simplex.primal_feasibility_tol);
  return error;
}

void report_search(ZLPmodel& model, const MipResult& result, int error, double start_time) {
  const ZLPenv& env = *model.env;
  ClosingFigures figures;
  figures.nodes = result.nodes;
  figures.iterations = result.iterations;
  figures.seconds = now_seconds() - start_time;
  figures.threads = kSearchThreads;
  figures.processors = count_logical_processors();
  figures.status = result.status;
  figures.error = error;
  figures.tolerance = param<Param::MIPGap>(env);
  figures.objective = model.data.sense * result.objective;
  figures.bound = model.data.sense * result.bound;
  EnvironmentLog log(*model.env);
  print_closing_report(log, figures);
}

int solve_integer(ZLPmodel& model, std::shared_ptr<void> kept, const Call& call) {
  if (!model.data.quadratic.empty()) report_quadratic_method(model);
  auto search = std::static_pointer_cast<KeptSearch>(std::move(kept));
  if (search == nullptr) {
    MipProblem problem = make_mip_problem(model);
    clean(problem.lp, *model.env);
    search = std::make_shared<KeptSearch>(*model.env, std::move(problem));
  }
  MipOptions options = make_mip_options(*model.env, model.data.sense, call.start_time);
  options.hooks = call.hooks;
  options.threads = kSearchThreads;
  if (model.data.quadratic.empty()) {
    const LpDriverOptions relaxation = make_lp_options(*model.env, model.data.sense, call.start_time);
    options.root_engine = choose_root_engine(*model.env, relaxation, call.start_time);
    options.node_engine = choose_node_engine(*model.env, relaxation, call.start_time);
  }
  const MipResult& result = search->solver.run(options, &model.env->terminate, call.start_time);
  const int error = call.code(result.error);
  if (error == kErrorQNotPsd) return error;  // no search, no report
  publish_mip(model, result);
  report_search(model, result, error, call.start_time);
  if (error == kOk && can_be_resumed(result.status)) model.solver_state = std::move(search);
  return error;
}

int solve(ZLPmodel& model, const Call& call) {
  // A kept search survives the old results; whatever changed the model since has thrown it away already.
  std::shared_ptr<void> kept = std::move(model.solver_state);
  discard_results(model, true);
  int code = kOk;
  {
    const InProgress busy(model);
    code = code_of([&] {
      return model.data.is_mip() ? solve_integer(model, std::move(kept), call) : solve_continuous(model, call);
    });
  }
  model.solution.runtime = now_seconds() - call.start_time;
  return code;
}

void write_result_file(ZLPmodel& model) {
  const std::string name = param<Param::ResultFile>(*model.env);
  if (name.empty()) return;
  const int code = ZLPwrite(&model, name.c_str());
  log_printf(model.env, "\n");
  if (code != kOk) {
    log_printf(model.env, "WARNING: unable to write requested result file '%s'\n", name.c_str());
  } else {
    log_printf(model.env, "Wrote requested result file '%s'\n", name.c_str());
  }
  log_printf(model.env, "\n");
}

int run(ZLPmodel& model) {
  const double start_time = now_seconds();
  if (const int code = model.env->master->license->status()) return code;
  model.env->terminate.store(0);
  std::optional<CallbackHooks> hooks;
  if (model.callback != nullptr) {
    hooks.emplace(*model.callback, start_time, param<Param::PreCrush>(*model.env) != 0);
  }
  const Call call{start_time, hooks ? &*hooks : nullptr};
  apply_pending_changes(model);
  report_model(model);
  dump_for_debugging(model);
  const int code = solve(model, call);
  if (code == kOk) write_result_file(model);
  return call.code(code);
}

}  // namespace

int optimize_model(ZLPmodel& model) noexcept {
  const int code = code_of([&] { return run(model); });
  if (code == kErrorOutOfMemory) {
    set_model_error(&model, code, true, "Optimization exhausted available memory");
  } else if (code == kErrorQNotPsd) {
    set_model_error(&model, code, true, "Q not positive semi-definite (PSD)");
  } else {
    set_default_message(&model, code);
  }
  return code;
}

}  // namespace zorvex

#include "barrier/barrier.hpp"

#include <algorithm>
#include <cmath>
#include <new>

#include "barrier/barrier_log.hpp"
#include "barrier/barrier_model.hpp"
#include "barrier/convexity.hpp"
#include "barrier/interior_point.hpp"
#include "barrier/newton_system.hpp"
#include "base/solve_hooks.hpp"
#include "base/tolerances.hpp"
#include "base/worker_pool.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

// A typical solve, for predictions.
constexpr double kTypicalIterations = 30;
constexpr double kSolvesPerIteration = 3;  // with refinement and correctors, as measured
constexpr double kAssumedRate = 4e9;       // multiplications a second and thread, for the prediction in the log
constexpr std::size_t kStepsToJudge = 6;   // when residuals after so many steps ...
constexpr double kCrawlingShare = 0.2;     // ... are still this share of what they were, ...
constexpr double kRestartBoost = 100;      // ... the iteration starts over with duals larger by this factor, ...
constexpr int kMaxRestarts = 3;            // ... at most so often
constexpr int kPatience = 30;              // iterations without a better point before giving up
constexpr int kPolishIterations = 6;       // after convergence relative to the data, towards the absolute tolerances
constexpr int kFailedSolves = 2;           // in a row, after which a usable point goes to the crossover as it is
constexpr int kTinySteps = 4;              // in a row, before giving up
constexpr double kOvershoot = 1e4;   // dual objectives above the primal one by this factor suggest infeasibility, ...
constexpr double kHopeless = 1e10;   // ... and by this one leave no doubt
constexpr double kLostGround = 1e4;  // times worse than the best point: the iteration has broken down
constexpr double kDivergence = 1e3;  // likewise before anything was usable, against the start

// Correctors by the cost of a factorization against that of a solve (Gondzio 1996, section 4).
int automatic_correctors(const NewtonStatistics& statistics) {
  const double ratio = statistics.factor_operations / std::max(1.0, 4 * statistics.factor_nonzeros);
  return ratio > 50 ? 3 : ratio > 30 ? 2 : ratio > 10 ? 1 : 0;
}

class Barrier {
 public:
  Barrier(const LpData& lp, const BarrierOptions& options, const StopToken& stop, LogSink& log)
      : lp_(&lp),
        options_(options),
        tolerances_{options.convergence_tol, options.primal_feasibility_tol, options.dual_feasibility_tol},
        stop_(stop),
        log_(log),
        pool_(options.threads),
        start_(now_seconds()) {
    if (options_.log_start_time <= 0) options_.log_start_time = start_;
  }

  BarrierResult run();

 private:
  bool check_q();
  bool prepare();
  void report_statistics();
  void iterate(InteriorPointMethod& method);
  bool ends(const InteriorPointMethod& method, const Progress& progress);
  bool converged(const Progress& progress);
  bool find_proof(const std::vector<double>& duals);
  bool diverges(const InteriorPointMethod& method, const Progress& progress);
  bool crawls(const Progress& progress);
  SolveStatus restart(InteriorPointMethod& method, double dual_boost);
  void iterate_on(InteriorPointMethod& method);
  void try_cautiously(InteriorPointMethod& method);
  void keep_if_better(const InteriorPointMethod& method, const Progress& progress);
  void finish();
  void report_iteration(const Progress& progress);

  const LpData* lp_;
  ConvexModel convex_;
  BarrierOptions options_;
  Progress::Tolerances tolerances_;
  const StopToken& stop_;
  LogSink& log_;
  WorkerPool pool_;
  BarrierModel model_;
  std::unique_ptr<NewtonSystem> newton_;
  BarrierResult result_;
  double start_;
  double told_work_ = 0;  // to the stop token
  // The best point so far, and since when.
  Iterate best_;
  Progress best_progress_;
  double best_merit_ = kInf, first_merit_ = kInf;
  bool has_best_ = false;
  int restarts_ = 0, started_iteration_ = 0;
  std::vector<double> history_;  // residuals since the last start
  int best_iteration_ = 0, converged_iteration_ = -1, tiny_steps_ = 0;
};

BarrierResult Barrier::run() {
  try {
    if (check_q() && prepare()) {
      if (options_.correctors < 0) options_.correctors = automatic_correctors(newton_->statistics());
      InteriorPointMethod method(model_, *newton_, options_);
      iterate(method);
      finish();
    }
  } catch (const std::bad_alloc&) {
    result_.error = kErrorOutOfMemory;
  }
  result_.seconds = now_seconds() - start_;
  print_termination(log_, result_.status, result_.error, result_.iterations, now_seconds() - options_.log_start_time,
                    options_.sense * result_.primal_objective);
  return std::move(result_);
}

// False when the solve ends here.
bool Barrier::check_q() {
  make_convex(*lp_, options_.psd_tol, stop_, log_, convex_);
  result_.status = convex_.stopped;
  result_.error = convex_.error;
  if (convex_.lp == nullptr) return false;
  lp_ = convex_.lp;
  return true;
}

bool Barrier::prepare() {
  model_ = make_barrier_model(*lp_, options_.primal_feasibility_tol, options_.alternative_scaling);
  if (!model_.is_consistent) {
    result_.status = SolveStatus::kNumeric;
    return false;
  }
  newton_ = std::make_unique<NewtonSystem>(model_, pool_);
  const double begin = now_seconds();
  if (options_.plan != nullptr && options_.plan->kept.size() == static_cast<std::size_t>(model_.num_cols())) {
    newton_->follow(options_.plan);
  } else {
    result_.status = newton_->analyze(options_.ordering, options_.dense_segments, stop_, log_);
  }
  if (result_.status != SolveStatus::kLoaded) return false;
  log_.print("Ordering time: %.2fs\n", now_seconds() - begin);
  report_statistics();
  return true;
}

void Barrier::report_statistics() {
  if (!log_.enabled()) return;
  const NewtonStatistics& from = newton_->statistics();
  BarrierStatistics shown;
  shown.quadratic = lp_->is_quadratic();
  shown.dense_cols = from.dense_cols;
  shown.free_vars = model_.num_free;
  shown.matrix_nonzeros = from.normal_nonzeros / 2;
  if (shown.quadratic) {
    shown.matrix_nonzeros = 0;
    for (Index col = 0; col < lp_->quadratic.num_cols; ++col) {
      for (Offset k = lp_->quadratic.begin(col); k < lp_->quadratic.end(col); ++k) {
        shown.matrix_nonzeros += lp_->quadratic.index[k] == col ? 1 : 2;
      }
    }
  }
  shown.factor_nonzeros = from.factor_nonzeros;
  shown.factor_operations = from.factor_operations;
  shown.megabytes = from.bytes / 1e6;
  shown.seconds_per_iteration = from.factor_operations / (kAssumedRate * pool_.size());
  shown.threads = pool_.size();
  print_statistics(log_, shown);
}

void Barrier::report_iteration(const Progress& progress) {
  print_iteration(log_, result_.iterations, progress, options_.sense, now_seconds() - options_.log_start_time);
  if (stop_.hooks() == nullptr || !log_.enabled()) return;
  stop_.hooks()->barrier({result_.iterations, progress.primal_objective, progress.dual_objective,
                          progress.primal_residual, progress.dual_residual, progress.complementarity});
}

// Relative to the data first; then, for a point that is to be the answer, a few more iterations try to reach the
// absolute tolerances as well.
bool Barrier::converged(const Progress& progress) {
  if (progress.merit(tolerances_) > 1) return false;
  if (!options_.final_point || progress.within(tolerances_)) return true;
  if (converged_iteration_ < 0) converged_iteration_ = result_.iterations;
  return result_.iterations >= converged_iteration_ + kPolishIterations;
}

void Barrier::keep_if_better(const InteriorPointMethod& method, const Progress& progress) {
  const double merit = progress.merit(tolerances_);
  if (result_.iterations == started_iteration_) first_merit_ = merit;
  if (!(merit < best_merit_) && result_.iterations > started_iteration_) return;
  if (merit < 0.9 * best_merit_) best_iteration_ = result_.iterations;
  has_best_ = true;
  best_merit_ = merit;
  best_ = method.iterate();
  best_progress_ = progress;
}

// Costs are what the duals differ by from a multiple of the proof; rounding relative to the largest removes them when
// the proof itself consists of few different numbers.
bool Barrier::find_proof(const std::vector<double>& duals) {
  double largest = 0;
  for (const double value : duals) largest = std::max(largest, std::abs(value));
  for (const double grain : {0.0, 0x1p-20, 0x1p-10}) {
    std::vector<double> y = duals;
    for (double& value : y) {
      if (grain > 0) value = std::round(value / (grain * largest));
    }
    drop_sign_noise(*lp_, y);
    if (!proves_infeasible(*lp_, y, result_.farkas_violation)) continue;
    result_.farkas = std::move(y);
    return true;
  }
  return false;
}

// Duals that grow without end are in the limit a proof that the model is infeasible. Sets the status when they are one,
// or when there is no hope that they come back.
bool Barrier::diverges(const InteriorPointMethod& method, const Progress& progress) {
  if (lp_->is_quadratic() || progress.relative_primal <= BarrierTolerances::kUsable) return false;
  const double excess = progress.dual_objective - progress.primal_objective;
  const double size = std::max(1.0, std::abs(progress.primal_objective));
  if (!(excess > kOvershoot * size)) return false;
  if (find_proof(user_point(*lp_, model_, method.iterate().v, method.iterate().y).pi)) {
    result_.status = SolveStatus::kInfeasible;
    return true;
  }
  if (!(excess > kHopeless * size)) return false;
  result_.status = SolveStatus::kNumeric;
  return true;
}

// Sets the status when the iteration is over.
bool Barrier::ends(const InteriorPointMethod& method, const Progress& progress) {
  result_.status = stop_.poll();
  if (result_.status != SolveStatus::kLoaded) return true;
  if (converged(progress)) {
    result_.status = SolveStatus::kOptimal;
    return true;
  }
  if (progress.relative_dual <= BarrierTolerances::kResidual && progress.dual_objective > options_.cutoff) {
    result_.status = SolveStatus::kCutoff;
    return true;
  }
  if (diverges(method, progress)) return true;
  if (result_.iterations >= options_.iteration_limit) {
    result_.status = SolveStatus::kIterationLimit;
    return true;
  }
  tiny_steps_ = method.last_step() < BarrierTolerances::kTinyStep ? tiny_steps_ + 1 : 0;
  const double merit = progress.merit(tolerances_);
  const bool broken = merit > kLostGround * best_merit_ || merit > kDivergence * first_merit_ || std::isnan(merit);
  const bool unsolvable = !options_.final_point && method.failed_solves() >= kFailedSolves &&
                          best_progress_.worst() <= BarrierTolerances::kUsable;
  const bool stalls = tiny_steps_ >= kTinySteps || result_.iterations >= best_iteration_ + kPatience;
  if (!stalls && !broken && !unsolvable) return false;
  result_.status = SolveStatus::kNumeric;  // finish() looks what the best point is worth
  return true;
}

// Both residuals have far to go and hardly move. Seen to help quadratic models only.
bool Barrier::crawls(const Progress& progress) {
  const double residual = std::min(progress.relative_primal, progress.relative_dual);
  history_.push_back(residual);
  if (!lp_->is_quadratic() || restarts_ == kMaxRestarts || history_.size() <= kStepsToJudge) return false;
  return residual > BarrierTolerances::kResidual &&
         residual > kCrawlingShare * history_[history_.size() - 1 - kStepsToJudge];
}

SolveStatus Barrier::restart(InteriorPointMethod& method, double dual_boost) {
  started_iteration_ = best_iteration_ = result_.iterations + 1;
  history_.clear();
  best_merit_ = first_merit_ = kInf;
  converged_iteration_ = -1;
  tiny_steps_ = 0;
  return method.start(dual_boost, stop_);
}

void Barrier::iterate(InteriorPointMethod& method) {
  result_.status = method.start(1, stop_);
  if (result_.status != SolveStatus::kLoaded) return;
  print_iteration_header(log_, options_.root_log);
  iterate_on(method);
  const bool falls_short = result_.status == SolveStatus::kNumeric && best_merit_ > 1 &&
                           best_progress_.worst() <= BarrierTolerances::kUsable;
  if (falls_short && options_.final_point && options_.loose_steps) try_cautiously(method);
}

// Long steps save iterations, but may lead close to a face where the Newton systems can no longer be solved. When there
// is no crossover to make the point good, the iteration starts over with shorter ones; the better point counts.
void Barrier::try_cautiously(InteriorPointMethod& method) {
  const Iterate point = best_;
  const Progress progress = best_progress_;
  const double merit = best_merit_;
  method.be_cautious();
  ++result_.iterations;
  result_.status = restart(method, 1);
  if (result_.status == SolveStatus::kLoaded) iterate_on(method);
  if (best_merit_ <= merit) return;
  best_ = point;
  best_progress_ = progress;
  best_merit_ = merit;
}

void Barrier::iterate_on(InteriorPointMethod& method) {
  while (true) {
    const Progress progress = method.measure();
    report_iteration(progress);
    keep_if_better(method, progress);
    if (ends(method, progress)) return;
    stop_.spend(newton_->work() - told_work_);
    told_work_ = newton_->work();
    const SolveStatus status =
        crawls(progress) ? restart(method, std::pow(kRestartBoost, ++restarts_)) : method.step(stop_);
    if (status != SolveStatus::kLoaded) {
      result_.status = status;
      return;
    }
    ++result_.iterations;
  }
}

void Barrier::finish() {
  if (!has_best_) return;
  if (result_.status == SolveStatus::kNumeric) {
    if (best_merit_ <= 1) {
      result_.status = SolveStatus::kOptimal;
    } else if (best_progress_.worst() <= BarrierTolerances::kUsable) {
      result_.status = SolveStatus::kSuboptimal;
    }
  }
  result_.point = user_point(*lp_, model_, best_.v, best_.y);
  result_.primal_objective = best_progress_.primal_objective;
  result_.dual_objective = best_progress_.dual_objective;
  result_.primal_residual = best_progress_.primal_residual;
  result_.dual_residual = best_progress_.dual_residual;
}

}  // namespace

BarrierResult solve_barrier(const LpData& lp, const BarrierOptions& options, const StopToken& stop, LogSink& log) {
  return Barrier(lp, options, stop, log).run();
}

BarrierPrediction predict_barrier(const LpData& lp, const BarrierOptions& options, const StopToken& stop) {
  const BarrierModel model = make_barrier_model(lp, options.primal_feasibility_tol, options.alternative_scaling);
  WorkerPool pool(1);
  NewtonSystem newton(model, pool);
  QuietLog log;
  if (!model.is_consistent) return {};
  if (newton.analyze(options.ordering, options.dense_segments, stop, log) != SolveStatus::kLoaded) return {};
  return {newton.work_of(kTypicalIterations, kTypicalIterations * kSolvesPerIteration), newton.plan()};
}

}  // namespace zorvex

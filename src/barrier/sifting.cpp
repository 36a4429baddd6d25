#include "barrier/sifting.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "barrier/crossover.hpp"
#include "barrier/sifting_duals.hpp"
#include "barrier/sifting_subproblem.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

constexpr double kPrintedInfinity = 1e98;
constexpr double kStallOffset = 1;         // added to |bound| in the stall tests
constexpr double kStalled = 1e-6;          // relative growth of the bound below which an iteration counts as stalled
constexpr double kWorthGoingOn = 1e-2;     // relative distance of primal objective and bound
constexpr double kConverging = 1e-4;       // below it more columns are added at a time
constexpr int kMaxStalledIterations = 50;  // iteration times stalled iterations
constexpr Index kMinRatio = 3;             // columns per row from which a working set is a small part
constexpr Index kAutomaticRatio = 20;      // columns per row from which sifting was measured to pay
constexpr Index kAutomaticCols = 5000;
constexpr double kLeastRate = 1e-9;  // of a reduced cost along a ray, against the largest, that counts
constexpr Index kPerRow = 2;         // columns of the first working set for each row
constexpr Index kMinAdded = 50;      // columns added in one iteration
constexpr Index kMaxHeld = 6;        // columns held, per row, beyond which the working set shrinks to half of that

const char* name_of(SiftMethod method) {
  switch (method) {
    case SiftMethod::kPrimal:
      return "primal simplex";
    case SiftMethod::kDual:
      return "dual simplex";
    default:
      return "barrier";
  }
}

std::string objective_text(double value) {
  if (value >= kPrintedInfinity) return "infinity   ";
  if (value <= -kPrintedInfinity) return "-infinity   ";
  char text[32];
  std::snprintf(text, sizeof text, "%14.7e", value);
  return text;
}

// One call of run_sifting: its inputs and the answer it is building.
class Sifting {
 public:
  Sifting(const LpData& lp, const SiftingOptions& options, const SimplexLimits& limits, const StopToken& stop,
          LogSink& log)
      : lp_(lp),
        options_(options),
        limits_(limits),
        stop_(stop),
        log_(log),
        duals_(lp, options.simplex.dual_feasibility_tol) {
    if (options_.simplex.log_start_time <= 0) options_.simplex.log_start_time = now_seconds();
    method_ = options.sift_method < 0 ? SiftMethod::kPrimal : static_cast<SiftMethod>(options.sift_method);
  }

  EngineAnswer run();

 private:
  enum class Next { kPrice, kDone, kStopped };

  void sift(WorkingSet& set);
  Next solve_sub_problem(WorkingSet& set);
  bool solve_by_barrier(const LpData& sub);
  Next solve_by_simplex(const LpData& sub, WorkingSet& set);
  Next take_feasible(double objective);
  Next take_infeasible(std::vector<double> farkas);
  void basis_from_interior(WorkingSet& set);
  [[nodiscard]] Index add_columns(WorkingSet& set);
  void note_progress();
  void report(int iteration) const;
  void report_end(int iterations);
  [[nodiscard]] bool is_close() const;
  void solve_whole(const Basis& basis);
  void stop_with(SolveStatus status, const WorkingSet& set, const LpPoint& sub);

  const LpData& lp_;
  SiftingOptions options_;
  const SimplexLimits& limits_;
  const StopToken& stop_;
  LogSink& log_;
  SiftingDuals duals_;
  SiftMethod method_;
  EngineAnswer answer_;

  LpPoint sub_point_;
  bool sub_feasible_ = false;
  bool interior_ = false;  // the last sub-problem was solved by the barrier: the basis is an older one
  double primal_objective_ = kInf;
  double previous_bound_ = -kInf;
  int stalled_ = 0;
  bool converging_ = false;
};

EngineAnswer Sifting::run() {
  log_.print("\nStarting sifting (using %s for sub-problems)...\n\n", name_of(method_));
  log_.write("    Iter     Pivots    Primal Obj      Dual Obj        Time\n");
  Basis basis;
  if (duals_.find_start()) {
    WorkingSet set(lp_, duals_, kPerRow, 2 * lp_.num_rows());
    sift(set);
    basis = set.basis();
  } else {
    report_end(0);
  }
  if (answer_.status == SolveStatus::kLoaded && answer_.error == kOk) solve_whole(basis);
  return std::move(answer_);
}

void Sifting::sift(WorkingSet& set) {
  int iteration = 0;
  for (;; ++iteration) {
    const Next next = solve_sub_problem(set);
    const Index added = next == Next::kPrice ? add_columns(set) : 0;
    report(iteration);
    note_progress();
    if (added == 0 || iteration * stalled_ > kMaxStalledIterations) break;
  }
  report_end(iteration + 1);
  if (interior_) basis_from_interior(set);
}

// kDone: the whole model has to be looked at; kStopped: the answer is set.
Sifting::Next Sifting::solve_sub_problem(WorkingSet& set) {
  const LpData sub = set.sub_problem();
  interior_ = method_ == SiftMethod::kBarrier && solve_by_barrier(sub);
  if (answer_.error != kOk) return Next::kStopped;
  if (!interior_) return solve_by_simplex(sub, set);
  return take_feasible(objective_at(sub, sub_point_.x));
}

// False when the barrier found no optimum: the simplex finds out why, unless an error has ended it.
bool Sifting::solve_by_barrier(const LpData& sub) {
  QuietLog quiet;
  BarrierResult result = solve_barrier(sub, options_.barrier, stop_, quiet);
  answer_.barrier_iterations += result.iterations;
  answer_.error = result.error;
  if (result.status != SolveStatus::kOptimal) return false;
  sub_point_ = std::move(result.point);
  return true;
}

Sifting::Next Sifting::solve_by_simplex(const LpData& sub, WorkingSet& set) {
  QuietLog quiet;
  SimplexOptions simplex = options_.simplex;
  // The slack basis is dual feasible; later bases are primal feasible once a sub-problem was.
  const bool primal = method_ == SiftMethod::kPrimal && sub_feasible_;
  simplex.algorithm = primal ? SimplexAlgorithm::kPrimal : SimplexAlgorithm::kDual;
  LpSolver solver(sub, simplex, quiet);
  solver.set_basis(set.sub_basis());
  solver.solve({limits_.iterations - answer_.iterations, kInf}, stop_);
  answer_.iterations += solver.iterations();
  set.take_basis(solver.basis());
  sub_point_ = solver.point();
  switch (solver.status()) {
    case SolveStatus::kOptimal:
      return take_feasible(solver.objective());
    case SolveStatus::kInfeasible:
      return take_infeasible(solver.farkas());
    case SolveStatus::kIterationLimit:
    case SolveStatus::kTimeLimit:
    case SolveStatus::kInterrupted:
      stop_with(solver.status(), set, solver.point());
      return Next::kStopped;
    default:
      return Next::kDone;
  }
}

// The duals go towards those of the sub-problem.
Sifting::Next Sifting::take_feasible(double objective) {
  sub_feasible_ = true;
  primal_objective_ = objective;
  std::vector<double> towards = sub_point_.pi;
  for (std::size_t row = 0; row < towards.size(); ++row) towards[row] -= duals_.pi()[row];
  duals_.set_direction(std::move(towards));
  return Next::kPrice;
}

// The duals go along the proof: a ray that ends at columns outside, or nowhere.
Sifting::Next Sifting::take_infeasible(std::vector<double> farkas) {
  sub_feasible_ = false;
  primal_objective_ = kInf;
  answer_.farkas = farkas;
  duals_.set_direction(std::move(farkas));
  return Next::kPrice;
}

// Columns that joined after the last sub-problem are at their bounds.
void Sifting::basis_from_interior(WorkingSet& set) {
  const LpData sub = set.sub_problem();
  for (Index k = static_cast<Index>(sub_point_.x.size()); k < sub.num_cols(); ++k) {
    sub_point_.x.push_back(set.resting_value(set.cols()[k]));
  }
  InteriorPoint point{sub_point_.x, std::vector<double>(sub.row_lower.size(), 0.0), sub_point_.pi, sub.cost};
  for (Index col = 0; col < sub.num_cols(); ++col) {
    for (Offset k = sub.matrix.begin(col); k < sub.matrix.end(col); ++k) {
      point.row_activity[sub.matrix.index[k]] += sub.matrix.value[k] * point.x[col];
      point.reduced_cost[col] -= sub.matrix.value[k] * point.pi[sub.matrix.index[k]];
    }
  }
  QuietLog quiet;
  CrossoverOptions crossover;
  crossover.simplex = options_.simplex;
  SimplexLimits rest;
  rest.iterations = limits_.iterations - answer_.iterations;
  const CrossoverResult result = run_crossover(sub, point, crossover, rest, stop_, quiet);
  answer_.iterations += result.iterations;
  if (!result.basis.empty()) set.take_basis(result.basis);
  if (result.status == SolveStatus::kIterationLimit || result.status == SolveStatus::kTimeLimit ||
      result.status == SolveStatus::kInterrupted) {
    stop_with(result.status, set, result.point);
  }
}

// Columns outside whose reduced cost turns attractive on the way along the direction, those that do so first, join the
// working set; the duals go along as far as they stay feasible.
Index Sifting::add_columns(WorkingSet& set) {
  const double tolerance = options_.simplex.dual_feasibility_tol;
  const bool bounded = sub_feasible_;  // towards the sub-problem's duals, or along a ray without end
  std::vector<std::pair<double, Index>> attractive;
  double largest_rate = 0;
  if (!bounded) {
    for (Index col = 0; col < lp_.num_cols(); ++col)
      largest_rate = std::max(largest_rate, std::abs(duals_.dual_rate(col)));
  }
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    if (set.holds(col)) continue;
    const double sign = set.rests_above(col) ? -1.0 : 1.0;
    const double d = sign * duals_.reduced_cost(col);
    const double rate = sign * duals_.dual_rate(col);
    if (rate >= 0 && d >= 0) continue;
    const bool reached = bounded ? d + rate < -tolerance : rate < -kLeastRate * largest_rate;
    if (reached) attractive.emplace_back(rate < 0 ? std::max(0.0, d) / -rate : 0.0, col);
  }
  duals_.advance(bounded ? 1.0 : kInf);
  const Index share = options_.sifting == 2 ? 2 : 1;
  const Index most = std::max(kMinAdded, lp_.num_rows() * share * (converging_ ? 2 : 1));
  if (static_cast<Index>(attractive.size()) > most) {
    std::nth_element(attractive.begin(), attractive.begin() + most, attractive.end());
    attractive.resize(static_cast<std::size_t>(most));
  }
  if (sub_feasible_ && !interior_ && set.size() > kMaxHeld * lp_.num_rows())
    set.shrink(sub_point_, kMaxHeld / 2 * lp_.num_rows());
  for (const auto& entry : attractive) set.add(entry.second);
  return static_cast<Index>(attractive.size());
}

void Sifting::note_progress() {
  const auto bound = static_cast<double>(duals_.objective());
  const double change = std::abs(bound - previous_bound_);
  previous_bound_ = bound;
  ++stalled_;
  if (!(change < kStalled * (std::abs(bound) + kStallOffset))) stalled_ = 0;
  if (change < kConverging * (std::abs(bound) + kStallOffset)) converging_ = true;
}

void Sifting::report(int iteration) const {
  const int sense = options_.simplex.sense;
  const double bound = static_cast<double>(duals_.objective() + lp_.offset);
  log_.print("    %4d    %7.0f  %14s  %14.7e  %5.0fs\n", iteration,
             options_.simplex.first_iteration + answer_.iterations,
             objective_text(sense * std::min(primal_objective_, 1e100)).c_str(), sense * bound,
             std::floor(now_seconds() - options_.simplex.log_start_time));
}

void Sifting::report_end(int iterations) {
  log_.write(iterations > 0 ? "\nSifting complete\n\n"
                            : "\nWarning: unable to find a good dual feasible "
                              "start for sifting\n\n");
}

void Sifting::stop_with(SolveStatus status, const WorkingSet& set, const LpPoint& sub) {
  answer_.status = status;
  answer_.farkas.clear();
  if (sub.x.size() != static_cast<std::size_t>(set.size())) return;
  answer_.point = set.whole_point(sub);
  answer_.basis = set.basis();
}

// Whether the last sub-problem is so close to the bound that its basis is worth going on from.
bool Sifting::is_close() const {
  const auto bound = static_cast<double>(duals_.objective() + lp_.offset);
  return sub_feasible_ && primal_objective_ - bound <= kWorthGoingOn * (std::abs(primal_objective_) + kStallOffset);
}

// From the last sub-problem's basis, where usually nothing is left to do but to confirm it; from scratch when sifting
// got nowhere near the optimum.
void Sifting::solve_whole(const Basis& basis) {
  double gap = 0;
  if (!answer_.farkas.empty() && !sub_feasible_ && proves_infeasible(lp_, answer_.farkas, gap)) {
    answer_.status = SolveStatus::kInfeasible;
    answer_.farkas_violation = gap;
    return;
  }
  SimplexOptions simplex = options_.simplex;
  simplex.first_iteration += answer_.iterations;
  const bool close = is_close();
  if (close) simplex.algorithm = SimplexAlgorithm::kPrimal;
  LpSolver solver(lp_, simplex, log_);
  if (close && !basis.empty()) solver.set_basis(basis);
  solver.solve({limits_.iterations - answer_.iterations, limits_.objective}, stop_);
  const double before = answer_.iterations;
  const int barrier_iterations = answer_.barrier_iterations;
  answer_ = answer_of(solver);
  answer_.iterations += before;
  answer_.barrier_iterations = barrier_iterations;
}

}  // namespace

bool sifting_is_wanted(const LpData& lp, int sifting) {
  if (sifting >= 0) return sifting > 0;
  if (lp.num_cols() < kAutomaticCols || lp.num_cols() < kAutomaticRatio * Offset{lp.num_rows()}) return false;
  // Columns that are cheap at their upper bounds end at either, and by the thousand: no working set holds them.
  Index torn = 0;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    const double low = lp.col_lower[col];
    const double up = lp.col_upper[col];
    if (lp.cost[col] < 0 && low != up && std::isfinite(low) && std::isfinite(up)) ++torn;
  }
  return torn <= lp.num_rows();
}

bool sifting_is_possible(const LpData& lp, LogSink& log) {
  if (lp.num_rows() > 0 && lp.num_cols() >= kMinRatio * Offset{lp.num_rows()} && lp.num_cols() > kMinAdded) return true;
  log.write("Warning: sifting step skipped - too few columns\n");
  return false;
}

EngineAnswer run_sifting(const LpData& lp, const SiftingOptions& options, const SimplexLimits& limits,
                         const StopToken& stop, LogSink& log) {
  return Sifting(lp, options, limits, stop, log).run();
}

EngineAnswer SiftingEngine::solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  if (sifting_is_wanted(lp, options_.sifting) && sifting_is_possible(lp, log)) {
    return run_sifting(lp, options_, limits, stop, log);
  }
  LpSolver solver(lp, options_.simplex, log);
  solver.solve(limits, stop);
  return answer_of(solver);
}

}  // namespace zorvex

// Everything one search knows, shared by the node solver, branchers, separators and heuristics. Lives from the first
// solve of a model through all resumed ones.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/random_stream.hpp"
#include "base/stop_token.hpp"
#include "mip/cut_pool.hpp"
#include "mip/domain.hpp"
#include "mip/incumbents.hpp"
#include "mip/lp_relaxation.hpp"
#include "mip/mip_log.hpp"
#include "mip/mip_problem.hpp"
#include "mip/node_store.hpp"
#include "mip/pseudocosts.hpp"
#include "mip/solution_check.hpp"

namespace zorvex {

// Forwards the simplex log of the root relaxation, with the search's own signs of life; silent afterwards.
class RootLog final : public LogSink {
 public:
  RootLog(LogSink& sink, MipLog& log) : sink_(sink), log_(log) {}
  void open(double start_time, double offset) {
    open_ = true;
    start_time_ = start_time;
    offset_ = offset;
  }
  void close() { open_ = false; }
  void write(const char* text) override;
  [[nodiscard]] bool enabled() const override { return open_ && sink_.enabled(); }
  [[nodiscard]] bool diagnostics() const override { return open_ && sink_.diagnostics(); }

 private:
  LogSink& sink_;
  MipLog& log_;
  bool open_ = false;
  double start_time_ = 0, offset_ = 0;
};

// What a submitted point turned out to be.
enum class Submission {
  kImproved,    // feasible and the new incumbent
  kNotBetter,   // feasible, but not better than the incumbent or beyond the cutoff
  kInfeasible,  // no feasible point has its integer part
  kUnknown,     // could not be settled
};

struct SearchState {
  SearchState(const MipProblem& problem, const MipOptions& options, LogSink& sink);

  // --- solutions ---
  // Judges x, which need be integral only within the tolerance, on the problem as given and installs it when it
  // improves. Prints nothing. With `optimise_rest` the continuous part of x counts as a mere guess.
  Submission submit(std::vector<double> x, bool optimise_rest);
  // The last step of submit: takes x, which the checker found feasible, when it improves and whoever listens to the
  // search has no constraint against it. Such a constraint stays; the continuous part of x then adapts to it if it can.
  Submission offer(std::vector<double> x);
  // The same as submit for heuristics: prints the solution line when it improved; returns whether it did.
  bool submit_heuristic(const std::vector<double>& x, bool optimise_rest);
  // Tells the domain what the incumbents make of no interest.
  void sync_cutoff();
  // Drops cuts, LP and domain for a new start of the root from the present search model.
  void restart_root();
  // What probing saw stands for a first branching on each column.
  void learn_from_probing();
  void make_lp();
  // After an improvement: prunes open nodes and derives global bounds from the root's reduced costs.
  void on_improvement();

  // --- counters and bounds ---
  [[nodiscard]] double total_iterations() const;
  [[nodiscard]] double node_bound() const;  // over all open nodes, those in process and lost ones; kNone if none
  [[nodiscard]] double best_bound() const;  // node_bound, capped by the incumbent
  [[nodiscard]] double unexplored() const;
  [[nodiscard]] double elapsed() const { return now_seconds() - start_time + time_offset; }
  [[nodiscard]] Progress progress() const;
  [[nodiscard]] SearchProgress search_progress() const;
  [[nodiscard]] bool root_solved() const { return root_iterations >= 0; }
  // True when work inside a node must end now: time, interrupt, iteration or solution limit.
  [[nodiscard]] bool must_stop() const;
  [[nodiscard]] double remaining_iterations() const { return options.iteration_limit - total_iterations(); }
  // For LpSolver: infinite while nothing prunes.
  [[nodiscard]] double objective_limit() const;

  const MipProblem& problem;
  MipOptions options;
  LogSink& sink;
  MipLog log;
  RootLog root_log;
  SearchModel model;
  SolutionChecker checker;
  Incumbents incumbents;
  Pseudocosts pseudocosts;
  CutPool cuts;
  std::vector<std::int64_t> side_cuts;  // pinned cuts in the order they came
  std::size_t side_cuts_in_lp = 0;      // the first so many are rows of the LP
  NodeStore nodes;
  Domain domain;                     // of the node in process
  std::unique_ptr<LpRelaxation> lp;  // made for the root
  RandomStream random;
  StopToken stop;

  std::unique_ptr<Node> next;            // child to be explored next, not in the store
  double active_bound = mip_tol::kNone;  // of the node in process
  double lost_bound = mip_tol::kNone;    // least bound of a subtree that was given up
  double root_bound = -mip_tol::kNone;   // of the root while it is not finished; kNone afterwards
  double explored = 0;
  int barrier_iterations = 0;       // of relaxations before a restart
  double root_iterations = -1;      // negative until the root relaxation was solved
  double sub_iterations = 0;        // simplex iterations of finished sub-searches and dropped LPs
  double strong_iterations = 0;     // of strong branching
  double heuristic_iterations = 0;  // of heuristics on the node LP and of sub-searches
  bool improvement_focus = false;
  bool cutoff_built_in = false;  // the search model leaves out points that are no better than the incumbent
  // kUnbounded once some node was shown unbounded, kInfOrUnbd when that could not be settled; kLoaded otherwise.
  SolveStatus unbounded = SolveStatus::kLoaded;

  double start_time = 0;   // now_seconds() of the current optimize call
  double time_offset = 0;  // seconds of earlier calls

  // The root relaxation, for guided choices and global reduced-cost fixing.
  std::vector<double> root_x, root_reduced_cost;
  double root_objective = -mip_tol::kNone;
  std::vector<BoundChange> pending_global;  // valid everywhere, not yet in the domain's lowest level
};

// Bounds of integer columns implied by the reduced costs of a relaxation with optimum x and value `objective` when
// nothing above `cutoff` matters; only those that improve on [lower, upper].
struct ReducedCostArgument {
  const std::vector<double>& x;
  const std::vector<double>& reduced_cost;
  double objective;
  double cutoff;
};
std::vector<BoundChange> reduced_cost_bounds(const SearchModel& model, std::span<const double> lower,
                                             std::span<const double> upper, const ReducedCostArgument& argument);

}  // namespace zorvex

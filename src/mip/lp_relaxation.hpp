// The linear relaxation of the current node: the rows of the search model, the cuts in use, bounds mirrored from the
// domain, and a warm-started simplex solver on them.
//   Invariant  bounds of continuous columns that only propagation moved stay as in the model: the rows imply them, and
//              tight implied bounds only add degeneracy.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/stop_token.hpp"
#include "mip/cut_pool.hpp"
#include "mip/domain.hpp"
#include "mip/node_store.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

class LpRelaxation {
 public:
  LpRelaxation(const SearchModel& model, const SimplexOptions& options, LogSink& log);

  void sync_bounds(Domain& domain);
  // As LpSolver::solve; numerical trouble gets a second chance from the slack basis.
  SolveStatus solve(const SimplexLimits& limits, const StopToken& stop);

  // Lets an engine find the basis that the simplex then starts from, whatever the engine made of the problem.
  SolveStatus solve_by(LpEngine& engine, const SimplexLimits& limits, const StopToken& stop, LogSink& log);
  void set_algorithm(SimplexAlgorithm algorithm);

  [[nodiscard]] std::shared_ptr<const PackedBasis> save_basis() const;
  void load_basis(const PackedBasis& basis);

  // Makes the cuts rows of the LP.
  void add_cuts(const CutPool& pool, const std::vector<std::int64_t>& ids);
  // Ages the cuts by the slackness of their logicals and removes from LP and pool those older than `max_age` that are
  // not pinned.
  // Valid after kOptimal; returns how many were removed.
  std::size_t remove_slack_cuts(CutPool& pool, int max_age);

  // Removes all cuts that are not pinned from LP and pool.
  void drop_cuts(CutPool& pool);

  [[nodiscard]] const LpPoint& point() const { return lp_.point(); }
  [[nodiscard]] double value(Index col) const { return lp_.point().x[col]; }
  [[nodiscard]] double objective() const { return lp_.objective(); }
  [[nodiscard]] double iterations() const { return lp_.iterations(); }
  [[nodiscard]] double total_iterations() const { return lp_.total_iterations() + engine_iterations_; }
  [[nodiscard]] int barrier_iterations() const { return barrier_iterations_; }
  [[nodiscard]] double work() const { return lp_.work(); }
  [[nodiscard]] LpSolver& solver() { return lp_; }
  [[nodiscard]] const std::vector<std::int64_t>& cut_ids() const { return cut_ids_; }

 private:
  const SearchModel* model_;
  SimplexOptions options_;
  LpSolver lp_;
  double engine_iterations_ = 0;  // of engines' simplexes
  int barrier_iterations_ = 0;
  std::vector<std::int64_t> cut_ids_;  // of the rows behind the model's
};

}  // namespace zorvex

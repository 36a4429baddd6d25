// A mixed-integer model as the search sees it, and what one search is told and tells back.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/log_sink.hpp"
#include "base/solve_hooks.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

enum class VarType : char {
  kContinuous = 'C',
  kBinary = 'B',
  kInteger = 'I',
  kSemiContinuous = 'S',  // x = 0 or lower <= x <= upper
  kSemiInteger = 'N',     // as semi-continuous, and integer
};

struct SosSet {
  int type = 1;  // 1: at most one nonzero; 2: at most two, and adjacent in weight order
  std::vector<Index> member;
  std::vector<double> weight;
};

// Minimisation form. The bounds of a semi-continuous column in `lp` are those of its nonzero branch.
struct MipProblem {
  LpData lp;
  std::vector<VarType> type;  // num_cols
  std::vector<SosSet> sos;
  std::vector<Index> priority;  // empty, or num_cols: higher branches first
  std::vector<double> start;    // empty, or num_cols: MIP start, 1e101 where undefined
  int sense = 1;                // for printing only: +1 minimise, -1 maximise
};

struct MipOptions {
  SimplexOptions simplex;
  double mip_gap = 1e-4, mip_gap_abs = 1e-10;
  double integrality_tol = 1e-5;
  double node_limit = 1e100, iteration_limit = 1e100, time_limit = 1e100;
  int solution_limit = 2000000000;
  double cutoff = 1e100;             // minimisation form; 1e100 none
  double hidden_time_limit = 1e100;  // accumulated search seconds
  double heuristics = 0.05;
  int rins = -1;
  int branch_dir = 0;
  int var_branch = -1;
  int presolve = -1;
  double improve_start_time = 1e100, improve_start_gap = 0;
  int display_interval = 5;
  double nodefile_start = 1e100;  // gigabytes
  std::string nodefile_dir = ".";
  int threads = 1;
  int root_method = -1, node_method = 1;  // parameters Method and NodeMethod: quadratic problems say when they differ
  // What finds the bases of the first and of all later relaxations of the tree; null: the simplex of `simplex`, the one
  // that `node_method` names.
  std::shared_ptr<LpEngine> root_engine, node_engine;
  double psd_tol = 1e-6;  // PSDTol
  bool sub_mip = false;   // quieter log, no variable-type report
  int cuts = -1;
  // Constraints that are not known yet may come during the search: no reduction may rely on a solution being
  // replaceable by another one that is as good.
  bool keep_all_solutions = false;
  SolveHooks* hooks = nullptr;  // who listens to the search; outlives run()
};

struct MipResult {
  SolveStatus status = SolveStatus::kLoaded;
  int error = 0;             // kErrorOutOfMemory, or kErrorQNotPsd: nothing was searched then
  double objective = 1e100;  // incumbent, minimisation form, offset included; 1e100 none
  double bound = -1e100;     // minimisation form
  double nodes = 0;
  double iterations = 0;
  int barrier_iterations = 0;
  std::vector<std::vector<double>> solutions;  // best first, original space
  std::vector<double> solution_objectives;     // minimisation form
};

// The search state survives a limit stop: calling run() again resumes it.
class MipSolver {
 public:
  MipSolver(MipProblem problem, LogSink& log);
  ~MipSolver();
  MipSolver(const MipSolver&) = delete;
  MipSolver& operator=(const MipSolver&) = delete;

  // Starts the search, or resumes one that a limit stopped. `terminate` may be null. `start_time` is the
  // now_seconds() at which the surrounding optimize call began.
  const MipResult& run(const MipOptions& options, const std::atomic<int>* terminate, double start_time);

  [[nodiscard]] const MipResult& result() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zorvex

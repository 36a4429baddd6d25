// Points at which a running solve tells how it fares and asks for cuts and solutions. The solver layers call them
// through a pointer that is null unless somebody listens; the optimize driver implements them.
//   Units    objective values in minimisation form with the offset included; 1e100 no incumbent, -1e100 no bound.
//   Space    points and rows are over the columns of the model the solve was started on.
//   Threads  poll() may be called from any thread that polls the stop token; everything else from the one that solves.
//   Errors   a listener ends the solve through the termination flag of its stop token.
#pragma once

#include <vector>

#include "base/types.hpp"

namespace zorvex {

struct PresolveProgress {
  int rows_removed = 0;
  int cols_removed = 0;
};

struct SimplexProgress {
  double iterations = 0;
  double objective = 0;
  double primal_infeasibility = 0;  // sums over rows and columns, scaled space
  double dual_infeasibility = 0;
};

struct BarrierProgress {
  int iterations = 0;
  double primal_objective = 0, dual_objective = 0;
  double primal_residual = 0, dual_residual = 0;
  double complementarity = 0;
};

struct SearchProgress {
  double incumbent = 1e100;
  double bound = -1e100;
  double nodes = 0;  // explored
  double open_nodes = 0;
  double iterations = 0;
  int solutions = 0;
  int cuts = 0;  // held in the pool
};

// lower <= sum value[k] * x[index[k]] <= upper, one entry at least, no column twice; IEEE infinities.
struct SideRow {
  std::vector<Index> index;
  std::vector<double> value;
  double lower = -kInf;
  double upper = kInf;
};

class SolveHooks {
 public:
  virtual ~SolveHooks() = default;

  virtual void poll() {}
  virtual void presolve(const PresolveProgress&) {}
  virtual void simplex(const SimplexProgress&) {}
  virtual void barrier(const BarrierProgress&) {}
  virtual void search(const SearchProgress&) {}

  // x satisfies the model and would become the incumbent. Rows appended to `rows` are constraints of the model from now
  // on; when x violates one it is not taken, nor when the answer is false: nobody looked at it.
  virtual bool solution(const SearchProgress&, const std::vector<double>& /*x*/, double /*objective*/,
                        std::vector<SideRow>& /*rows*/) {
    return true;
  }
  // x is the optimum of a node's relaxation and not integral. Rows appended to `rows` must hold for every solution.
  virtual void node(const SearchProgress&, int /*depth*/, const std::vector<double>& /*x*/, double /*objective*/,
                    std::vector<SideRow>& /*rows*/) {}
  // Moves a point that was offered as a solution, 1e101 where it is left open, to x; false when there is none.
  virtual bool take_offered(std::vector<double>& /*x*/) { return false; }
};

// For a solve inside a solve, which is only asked whether to go on.
class PollingHooks final : public SolveHooks {
 public:
  explicit PollingHooks(SolveHooks* outer) : outer_(outer) {}
  void poll() override {
    if (outer_ != nullptr) outer_->poll();
  }

 private:
  SolveHooks* outer_;
};

}  // namespace zorvex

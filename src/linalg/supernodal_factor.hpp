// Numeric phase of the multifrontal factorization P A P' = L D L' of a symmetric quasi-definite matrix: the signs of
// the pivots are known beforehand, so no pivoting is needed in any order.
//   Threads  independent subtrees of the assembly tree run side by side, the fronts above them share their updates. All
//            sums are taken in the same order whatever the number of threads: so is the result.
//   Memory   a subtree keeps its update matrices on two stacks, one for the supernodes of even depth and one for those
//            of odd depth: that way a supernode's update can be laid down while those of its children still lie on top,
//            and the memory is the same in every factorization.
//   Source   I. Duff, J. Reid, ACM Trans. Math. Softw. 9 (1983) 302-325; R. Vanderbei, SIAM J. Optim. 5 (1995) 100-113.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <span>
#include <vector>

#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "base/worker_pool.hpp"
#include "linalg/dense_kernels.hpp"
#include "linalg/symbolic_factor.hpp"

namespace zorvex {

class SupernodalFactor {
 public:
  // `pool` is used by factor() and outlives this.
  SupernodalFactor(std::shared_ptr<const SymbolicFactor> symbolic, WorkerPool& pool);
  SupernodalFactor(SymbolicFactor symbolic, WorkerPool& pool)
      : SupernodalFactor(std::make_shared<const SymbolicFactor>(std::move(symbolic)), pool) {}
  SupernodalFactor(const SupernodalFactor&) = delete;
  SupernodalFactor& operator=(const SupernodalFactor&) = delete;

  // values[k] belongs to entry k of the matrix that was analysed. sign[v] and smallest[v] by variable, see PivotRule.
  // kLoaded when done, else the reason of the stop: no factor then. Throws std::bad_alloc.
  SolveStatus factor(std::span<const double> values, std::span<const std::int8_t> sign,
                     std::span<const double> smallest, const StopToken& stop);

  // rhs := A^-1 rhs, by variable. Not to be called from several threads at once.
  void solve(std::span<double> rhs);

  [[nodiscard]] const SymbolicFactor& symbolic() const { return symbolic_; }
  [[nodiscard]] int replaced_pivots() const { return replaced_; }

 private:
  struct Stack {
    std::unique_ptr<double[]> memory;
    Offset top = 0;
  };
  struct Worker {
    DenseWorkspace dense;
    std::array<Stack, 2> stacks;  // by parity of the depth
    double work_since_poll = 0;
    int replaced = 0;
  };

  void plan_subtrees();
  void plan_stacks();
  void factor_subtree(Index root, Worker& worker, const StopToken& stop);
  void factor_shared(Index s, const StopToken& stop);
  void assemble(Index s, Index first, Index last);
  void add_columns(Index child, Index first, Index last, double* target, Index rows, Index shift);
  void compute_update_block(Index s, Index block, Worker& worker);
  [[nodiscard]] Offset update_size(Index s) const;
  bool eliminate(Index s, Worker& worker, bool shared, const StopToken& stop);
  [[nodiscard]] Index num_update_blocks(Index s) const;
  [[nodiscard]] bool stopped(Worker& worker, double work, const StopToken& stop);

  std::shared_ptr<const SymbolicFactor> shared_symbolic_;
  const SymbolicFactor& symbolic_;
  WorkerPool& pool_;
  std::vector<Index> subtree_roots_;  // independent of each other, largest first
  std::vector<Index> subtree_first_;  // first supernode of the subtree of each supernode
  std::vector<Index> shared_;         // supernodes above the subtrees, in postorder
  std::unique_ptr<double[]> panels_;
  std::vector<double*> updates_;                  // alive between a supernode and its parent
  std::vector<std::unique_ptr<double[]>> owned_;  // those of supernodes that are not on a stack
  std::vector<std::size_t> parity_;               // of the depth
  std::array<Offset, 2> stack_sizes_{0, 0};       // what the largest subtree wants
  std::vector<double> pivots_;                    // by position
  std::vector<std::int8_t> sign_;                 // by position
  std::vector<double> smallest_;                  // by position
  std::span<const double> values_;                // of the running factor()
  std::vector<Worker> workers_;
  std::atomic<int> stop_status_{0};
  std::vector<double> by_position_, gathered_;  // of solve()
  int replaced_ = 0;
};

}  // namespace zorvex

#include "linalg/supernodal_factor.hpp"

#include <algorithm>
#include <cassert>

namespace zorvex {

namespace {

constexpr double kWorkPerPoll = 2e7;        // multiplications between two looks at the stop token
constexpr double kSubtreesPerThread = 8;    // enough for an even load
constexpr double kWorthThreads = 1e6;       // factorizations below this are not shared out
constexpr double kWorthSharingFront = 1e6;  // nor are fronts below this
constexpr Index kAssembledTogether = 32;    // columns of a shared front

}  // namespace

SupernodalFactor::SupernodalFactor(std::shared_ptr<const SymbolicFactor> symbolic, WorkerPool& pool)
    : shared_symbolic_(std::move(symbolic)),
      symbolic_(*shared_symbolic_),
      pool_(pool),
      panels_(new double[static_cast<std::size_t>(symbolic_.factor_size())]),
      updates_(static_cast<std::size_t>(symbolic_.num_supernodes())),
      owned_(updates_.size()),
      pivots_(static_cast<std::size_t>(symbolic_.size())),
      sign_(pivots_.size()),
      smallest_(pivots_.size()),
      workers_(static_cast<std::size_t>(pool.size())),
      by_position_(pivots_.size()) {
  Index most_rows = 0;
  for (Index s = 0; s < symbolic_.num_supernodes(); ++s) most_rows = std::max(most_rows, symbolic_.num_rows(s));
  gathered_.resize(static_cast<std::size_t>(most_rows));
  plan_subtrees();
  plan_stacks();
}

// Splits the largest subtree until there are enough of them; what was split is done afterwards, together.
void SupernodalFactor::plan_subtrees() {
  const Index count = symbolic_.num_supernodes();
  std::vector<double> work(static_cast<std::size_t>(count), 0);
  subtree_first_.resize(work.size());
  for (Index s = 0; s < count; ++s) {
    subtree_first_[s] = s;
    for (Index k = 0; k < symbolic_.num_cols(s); ++k) {
      const double length = symbolic_.num_rows(s) - k;
      work[s] += length * length;
    }
    for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
      work[s] += work[symbolic_.child[c]];
      subtree_first_[s] = std::min(subtree_first_[s], subtree_first_[symbolic_.child[c]]);
    }
  }
  const auto lighter = [&](Index a, Index b) { return work[a] != work[b] ? work[a] < work[b] : a > b; };
  std::vector<Index> heap;
  double total = 0;
  for (Index s = 0; s < count; ++s) {
    if (symbolic_.parent[s] != -1) continue;
    heap.push_back(s);
    total += work[s];
  }
  std::make_heap(heap.begin(), heap.end(), lighter);
  const double share = pool_.size() == 1 || total < kWorthThreads ? kInf : total / (kSubtreesPerThread * pool_.size());
  while (!heap.empty() && work[heap.front()] > share) {
    std::pop_heap(heap.begin(), heap.end(), lighter);
    const Index s = heap.back();
    heap.pop_back();
    shared_.push_back(s);
    for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
      heap.push_back(symbolic_.child[c]);
      std::push_heap(heap.begin(), heap.end(), lighter);
    }
  }
  std::sort(heap.begin(), heap.end(), [&](Index a, Index b) { return lighter(b, a); });
  std::sort(shared_.begin(), shared_.end());
  subtree_roots_ = std::move(heap);
}

Offset SupernodalFactor::update_size(Index s) const {
  const Offset below = symbolic_.num_rows(s) - symbolic_.num_cols(s);
  return below * below;
}

// How high the stacks get; the root of a subtree has its update elsewhere, as it outlives the subtree.
void SupernodalFactor::plan_stacks() {
  const Index count = symbolic_.num_supernodes();
  parity_.assign(static_cast<std::size_t>(count), 0);
  for (Index s = count; s-- > 0;) {
    if (symbolic_.parent[s] != -1) parity_[s] = 1 - parity_[symbolic_.parent[s]];
  }
  for (const Index root : subtree_roots_) {
    std::array<Offset, 2> tops{0, 0};
    for (Index s = subtree_first_[root]; s < root; ++s) {
      const std::size_t own = parity_[s];
      tops[own] += update_size(s);
      stack_sizes_[own] = std::max(stack_sizes_[own], tops[own]);
      for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
        tops[1 - own] -= update_size(symbolic_.child[c]);
      }
    }
  }
}

SolveStatus SupernodalFactor::factor(std::span<const double> values, std::span<const std::int8_t> sign,
                                     std::span<const double> smallest, const StopToken& stop) {
  assert(values.size() == symbolic_.entry_source.size());
  values_ = values;
  for (std::size_t k = 0; k < sign_.size(); ++k) {
    sign_[k] = sign[symbolic_.order[k]];
    smallest_[k] = smallest[symbolic_.order[k]];
  }
  for (Worker& worker : workers_) {
    worker.replaced = 0;
    for (std::size_t parity = 0; parity < 2; ++parity) {
      Stack& stack = worker.stacks[parity];
      if (stack.memory == nullptr) stack.memory.reset(new double[static_cast<std::size_t>(stack_sizes_[parity])]);
    }
  }
  for (auto& update : owned_) update.reset();
  stop_status_ = static_cast<int>(SolveStatus::kLoaded);
  const auto trees = static_cast<int>(subtree_roots_.size());
  if (shared_.empty()) {  // small or alone: no need to wake anybody
    for (const Index root : subtree_roots_) factor_subtree(root, workers_[0], stop);
  } else {
    pool_.run(trees, [&](int tree, int worker) { factor_subtree(subtree_roots_[tree], workers_[worker], stop); });
  }
  for (const Index s : shared_) factor_shared(s, stop);
  replaced_ = 0;
  for (const Worker& worker : workers_) replaced_ += worker.replaced;
  return static_cast<SolveStatus>(stop_status_.load());
}

bool SupernodalFactor::stopped(Worker& worker, double work, const StopToken& stop) {
  constexpr int kGoOn = static_cast<int>(SolveStatus::kLoaded);
  worker.work_since_poll += work;
  if (worker.work_since_poll > kWorkPerPoll) {
    worker.work_since_poll = 0;
    const int status = static_cast<int>(stop.poll());
    if (status != kGoOn) stop_status_ = status;
  }
  return stop_status_ != kGoOn;
}

Index SupernodalFactor::num_update_blocks(Index s) const {
  return (symbolic_.num_rows(s) - symbolic_.num_cols(s) + kUpdateWidth - 1) / kUpdateWidth;
}

void SupernodalFactor::factor_subtree(Index root, Worker& worker, const StopToken& stop) {
  for (Stack& stack : worker.stacks) stack.top = 0;
  for (Index s = subtree_first_[root]; s <= root; ++s) {
    const double rows = symbolic_.num_rows(s), cols = symbolic_.num_cols(s);
    assemble(s, 0, symbolic_.num_cols(s));
    if (!eliminate(s, worker, false, stop)) return;
    Stack& own = worker.stacks[parity_[s]];
    if (s == root) {
      owned_[s].reset(new double[static_cast<std::size_t>(update_size(s))]);
      updates_[s] = owned_[s].get();
    } else {
      updates_[s] = own.memory.get() + own.top;
      own.top += update_size(s);
    }
    const Index blocks = num_update_blocks(s);
    for (Index block = 0; block < blocks; ++block) {
      compute_update_block(s, block, worker);
      if (stopped(worker, rows * cols * kUpdateWidth, stop)) return;
    }
    for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
      worker.stacks[1 - parity_[s]].top -= update_size(symbolic_.child[c]);
    }
  }
}

void SupernodalFactor::factor_shared(Index s, const StopToken& stop) {
  if (stopped(workers_[0], kWorkPerPoll, stop)) return;
  const double below = symbolic_.num_rows(s) - symbolic_.num_cols(s);
  const Index cols = symbolic_.num_cols(s);
  pool_.run((cols + kAssembledTogether - 1) / kAssembledTogether, [&](int block, int) {
    const Index first = block * kAssembledTogether;
    assemble(s, first, std::min(cols, first + kAssembledTogether));
  });
  if (!eliminate(s, workers_[0], true, stop)) return;
  owned_[s].reset(new double[static_cast<std::size_t>(update_size(s))]);
  updates_[s] = owned_[s].get();
  const auto one_block = [&](int block, int worker) {
    if (!stopped(workers_[worker], kWorkPerPoll, stop)) compute_update_block(s, block, workers_[worker]);
  };
  const Index blocks = num_update_blocks(s);
  if (below * below * symbolic_.num_cols(s) > kWorthSharingFront) {
    pool_.run(blocks, one_block);
  } else {
    for (Index block = 0; block < blocks; ++block) one_block(block, 0);
  }
  for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) owned_[symbolic_.child[c]].reset();
}

// Brings matrix entries and the children's updates into columns [first, last) of the panel.
void SupernodalFactor::assemble(Index s, Index first, Index last) {
  const Index rows = symbolic_.num_rows(s);
  double* const panel = panels_.get() + symbolic_.panel_start[s];
  const Offset begin = static_cast<Offset>(first) * rows, end = static_cast<Offset>(last) * rows;
  std::fill(panel + begin, panel + end, 0.0);
  const auto entries = symbolic_.entry_target.begin();
  const auto above = [](Offset limit) { return [limit](Offset target) { return target < limit; }; };
  const auto from =
      std::partition_point(entries + symbolic_.entry_start[s], entries + symbolic_.entry_start[s + 1], above(begin));
  const auto to = std::partition_point(from, entries + symbolic_.entry_start[s + 1], above(end));
  for (Offset k = from - entries; k < to - entries; ++k) {
    panel[symbolic_.entry_target[k]] += values_[symbolic_.entry_source[k]];
  }
  for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
    add_columns(symbolic_.child[c], first, last, panel, rows, 0);
  }
}

// The product with the panel comes first: it overwrites.
void SupernodalFactor::compute_update_block(Index s, Index block, Worker& worker) {
  const Index rows = symbolic_.num_rows(s), cols = symbolic_.num_cols(s);
  update_block(panels_.get() + symbolic_.panel_start[s], rows, cols, pivots_.data() + symbolic_.first_col[s], block,
               updates_[s], worker.dense);
  const Index first = cols + block * kUpdateWidth;
  for (Index c = symbolic_.child_start[s]; c < symbolic_.child_start[s + 1]; ++c) {
    add_columns(symbolic_.child[c], first, first + kUpdateWidth, updates_[s], rows - cols, cols);
  }
}

// The columns of the child's update that belong into columns [first, last) of its parent's front, into a matrix with
// `rows` rows whose first row and column are those number `shift` of the front. Rows that lie side by side in the front
// are added as vectors.
void SupernodalFactor::add_columns(Index child, Index first, Index last, double* target, Index rows, Index shift) {
  const Index size = symbolic_.num_rows(child) - symbolic_.num_cols(child);
  const Index* const where = symbolic_.in_parent.data() + symbolic_.row_start[child] + symbolic_.num_cols(child);
  const auto begin = static_cast<Index>(std::lower_bound(where, where + size, first) - where);
  for (Index j = begin; j < size && where[j] < last; ++j) {
    const double* const source = updates_[child] + static_cast<Offset>(j) * size;
    double* const column = target + static_cast<Offset>(where[j] - shift) * rows - shift;
    if (where[size - 1] - where[j] == size - 1 - j) {
      double* const to = column + (where[j] - j);
      for (Index i = j; i < size; ++i) to[i] += source[i];
    } else {
      for (Index i = j; i < size; ++i) column[where[i]] += source[i];
    }
  }
}

// False when stopped.
bool SupernodalFactor::eliminate(Index s, Worker& worker, bool shared, const StopToken& stop) {
  const Index position = symbolic_.first_col[s], rows = symbolic_.num_rows(s), cols = symbolic_.num_cols(s);
  const PivotRule rule{std::span(sign_).subspan(position, cols), std::span(smallest_).subspan(position, cols)};
  double* const panel = panels_.get() + symbolic_.panel_start[s];
  for (Index first = 0; first < cols; first += kPanelWidth) {
    worker.replaced += eliminate_step(panel, rows, cols, first, rule, pivots_.data() + position, worker.dense);
    const Index blocks = num_trailing_blocks(cols, first);
    const double work = static_cast<double>(rows - first) * kPanelWidth * kPanelWidth;
    if (stopped(worker, work * (shared ? 1 : blocks + 1), stop)) return false;
    const auto one_block = [&](int block, DenseWorkspace& dense) {
      update_trailing(panel, rows, cols, first, block, pivots_.data() + position, dense);
    };
    if (shared && work * blocks > kWorthSharingFront) {
      pool_.run(blocks, [&](int block, int helper) { one_block(block, workers_[helper].dense); });
    } else {
      for (Index block = 0; block < blocks; ++block) one_block(block, worker.dense);
    }
  }
  return true;
}

void SupernodalFactor::solve(std::span<double> rhs) {
  assert(rhs.size() == by_position_.size());
  std::vector<double>& x = by_position_;
  for (std::size_t k = 0; k < x.size(); ++k) x[k] = rhs[symbolic_.order[k]];
  const Index count = symbolic_.num_supernodes();
  for (Index s = 0; s < count; ++s) {
    const Index cols = symbolic_.num_cols(s), below = symbolic_.num_rows(s) - cols;
    const Index* const rows = symbolic_.rows.data() + symbolic_.row_start[s] + cols;
    for (Index i = 0; i < below; ++i) gathered_[i] = x[rows[i]];
    forward_panel(panels_.get() + symbolic_.panel_start[s], symbolic_.num_rows(s), cols,
                  x.data() + symbolic_.first_col[s], gathered_.data());
    for (Index i = 0; i < below; ++i) x[rows[i]] = gathered_[i];
  }
  for (std::size_t k = 0; k < x.size(); ++k) x[k] /= pivots_[k];
  for (Index s = count; s-- > 0;) {
    const Index cols = symbolic_.num_cols(s), below = symbolic_.num_rows(s) - cols;
    const Index* const rows = symbolic_.rows.data() + symbolic_.row_start[s] + cols;
    for (Index i = 0; i < below; ++i) gathered_[i] = x[rows[i]];
    backward_panel(panels_.get() + symbolic_.panel_start[s], symbolic_.num_rows(s), cols,
                   x.data() + symbolic_.first_col[s], gathered_.data());
  }
  for (std::size_t k = 0; k < x.size(); ++k) rhs[symbolic_.order[k]] = x[k];
}

}  // namespace zorvex

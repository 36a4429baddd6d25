// reduce_dependent_equations.cpp: an equation that is a linear combination of others goes, or contradicts them. The
// equations that have a column of their own, one after the other, are independent; what remains is eliminated with the
// combinations written down, and a dependence counts only when the combination of the rows as they are confirms it.
//   Source   E. Andersen, Optim. Methods Softw. 6 (1995) 219-227.
//   Cost     O(nonzeros of the equations) for most models; the elimination stops at a work limit.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDependentEquations;

namespace {

constexpr double kPivotThreshold = 0.1;  // of the largest entry of the pivot row
// Nonzeros touched by the elimination, per nonzero of the equations that come to it: by default, and when asked for.
// Most models need less than ten; quadratic assignment some thousand, which the barrier gets back several times over.
constexpr std::int64_t kAutomaticWork = 2000;
constexpr std::int64_t kRequestedWork = 5000;
constexpr std::int64_t kFreeWork = 10000;
constexpr std::int64_t kMostWork = 50'000'000;  // under a second: nothing here looks at the time limit

struct Term {
  Index index;
  double value;
};
using Terms = std::vector<Term>;

// An equation under elimination: `entries` over columns is the sum of the original equations in `sources`.
struct Equation {
  Index row;
  Terms entries, sources;
  bool active = true;
};

// a + factor * b over ascending indices; sums that cancel leave. Indices that only b has go to `fill`.
Terms combine(const Terms& a, const Terms& b, double factor, std::vector<Index>& fill) {
  Terms result;
  result.reserve(a.size() + b.size());
  auto left = a.begin();
  auto right = b.begin();
  while (left != a.end() || right != b.end()) {
    if (right == b.end() || (left != a.end() && left->index < right->index)) {
      result.push_back(*left++);
    } else if (left == a.end() || right->index < left->index) {
      result.push_back({right->index, factor * right->value});
      fill.push_back(right->index);
      ++right;
    } else {
      const double change = factor * right->value;
      const double sum = left->value + change;
      if (std::abs(sum) > PresolveTolerances::kDependence * std::abs(change)) result.push_back({left->index, sum});
      ++left;
      ++right;
    }
  }
  return result;
}

class Elimination {
 public:
  Elimination(const PresolveModel& model, Changes& changes) : model_(model), changes_(changes) {}
  Outcome run();

 private:
  void peel();
  void load();
  bool choose_pivot(std::size_t& row, Index& col) const;
  void eliminate(std::size_t pivot_row, Index col);
  Outcome judge(const Terms& combination);
  [[nodiscard]] bool confirmed(const Terms& combination);

  const PresolveModel& model_;
  Changes& changes_;
  std::vector<char> waiting_;        // per row: an equation not known to be independent
  std::vector<Index> equations_in_;  // per column: waiting equations
  std::vector<Equation> equations_;
  std::vector<std::vector<std::size_t>> users_;  // per column: equations that have, or once had, an entry there
  std::vector<std::size_t> order_;               // equations by length at load
  std::vector<Index> fill_;
  std::int64_t work_ = 0;
};

void Elimination::peel() {
  waiting_.assign(static_cast<std::size_t>(model_.num_rows()), 0);
  equations_in_.assign(static_cast<std::size_t>(model_.num_cols()), 0);
  for (Index row = 0; row < model_.num_rows(); ++row) {
    waiting_[row] = model_.row_alive[row] && model_.is_equation(row) && model_.matrix.row_length(row) > 0;
    if (!waiting_[row]) continue;
    for (const auto& entry : model_.matrix.row(row)) ++equations_in_[entry.col];
    changes_.work().add(model_.matrix.row_length(row));
  }
  std::vector<Index> own;
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (equations_in_[col] == 1) own.push_back(col);
  }
  while (!own.empty()) {
    const Index col = own.back();
    own.pop_back();
    if (equations_in_[col] != 1) continue;
    for (const auto& entry : model_.matrix.col(col)) {
      if (!waiting_[entry.row]) continue;
      waiting_[entry.row] = 0;
      for (const auto& other : model_.matrix.row(entry.row)) {
        if (--equations_in_[other.col] == 1) own.push_back(other.col);
      }
      changes_.work().add(model_.matrix.row_length(entry.row));
      break;
    }
    changes_.work().add(model_.matrix.col_length(col));
  }
}

void Elimination::load() {
  users_.resize(static_cast<std::size_t>(model_.num_cols()));
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (!waiting_[row]) continue;
    Equation equation{row, {}, {{row, 1.0}}};
    for (const auto& entry : model_.matrix.row(row)) equation.entries.push_back({entry.col, entry.value});
    std::sort(equation.entries.begin(), equation.entries.end(),
              [](const Term& a, const Term& b) { return a.index < b.index; });
    for (const Term& term : equation.entries) users_[term.index].push_back(equations_.size());
    order_.push_back(equations_.size());
    equations_.push_back(std::move(equation));
  }
  std::sort(order_.begin(), order_.end(), [this](std::size_t a, std::size_t b) {
    const std::size_t length_a = equations_[a].entries.size();
    const std::size_t length_b = equations_[b].entries.size();
    return length_a != length_b ? length_a > length_b : a > b;  // shortest last: taken from the back
  });
}

// Within the next equation, the column of fewest users among entries that are large enough.
bool Elimination::choose_pivot(std::size_t& row, Index& col) const {
  row = order_.back();
  double largest = 0;
  for (const Term& term : equations_[row].entries) largest = std::max(largest, std::abs(term.value));
  col = -1;
  for (const Term& term : equations_[row].entries) {
    if (std::abs(term.value) < kPivotThreshold * largest) continue;
    if (col < 0 || users_[term.index].size() < users_[col].size()) col = term.index;
  }
  return col >= 0;
}

double value_at(const Terms& terms, Index index) {
  const auto at = std::lower_bound(terms.begin(), terms.end(), index,
                                   [](const Term& term, Index wanted) { return term.index < wanted; });
  return at != terms.end() && at->index == index ? at->value : 0;
}

void Elimination::eliminate(std::size_t pivot_row, Index col) {
  const Equation& pivot = equations_[pivot_row];
  const double pivot_value = value_at(pivot.entries, col);
  const std::vector<std::size_t> users = users_[col];
  work_ += static_cast<std::int64_t>(users.size());
  for (const std::size_t user : users) {
    Equation& equation = equations_[user];
    const double value = equation.active && user != pivot_row ? value_at(equation.entries, col) : 0;
    if (value == 0) continue;
    const double factor = -value / pivot_value;
    fill_.clear();
    Terms combined = combine(equation.entries, pivot.entries, factor, fill_);
    std::erase_if(combined, [col](const Term& term) { return term.index == col; });
    for (const Index filled : fill_) users_[filled].push_back(user);
    work_ += static_cast<std::int64_t>(equation.entries.size() + pivot.entries.size() + pivot.sources.size());
    equation.entries = std::move(combined);
    equation.sources = combine(equation.sources, pivot.sources, factor, fill_);
  }
}

// True when the combination of the rows as they are vanishes up to rounding.
bool Elimination::confirmed(const Terms& combination) {
  std::vector<std::pair<Index, Extended>> sum;
  for (const auto& [row, multiplier] : combination) {
    for (const auto& entry : model_.matrix.row(row)) sum.emplace_back(entry.col, Extended(multiplier) * entry.value);
  }
  changes_.work().add(static_cast<std::int64_t>(sum.size()));
  std::sort(sum.begin(), sum.end());
  for (std::size_t begin = 0, end = 0; begin < sum.size(); begin = end) {
    Extended total = 0;
    Extended magnitude = 0;
    for (; end < sum.size() && sum[end].first == sum[begin].first; ++end) {
      total += sum[end].second;
      magnitude += std::abs(sum[end].second);
    }
    if (std::abs(total) > PresolveTolerances::kDependence * magnitude) return false;
  }
  return true;
}

// A combination of equations that vanishes: kChanged if any one of them may go, kInfeasible if they contradict.
Outcome Elimination::judge(const Terms& combination) {
  if (!confirmed(combination)) return Outcome::kNone;
  Extended side = 0;
  Extended size = 0;
  Extended multipliers = 0;
  for (const auto& [row, multiplier] : combination) {
    side += Extended(multiplier) * model_.row_lower[row];
    size += std::abs(Extended(multiplier) * model_.row_lower[row]);
    multipliers += std::abs(multiplier);
  }
  if (std::abs(side) > model_.options.primal_feasibility_tol * multipliers + PresolveTolerances::kDependence * size) {
    for (const auto& [row, multiplier] : combination) changes_.prove(row, side > 0 ? multiplier : -multiplier);
    return Outcome::kInfeasible;
  }
  return std::abs(side) <= conclusion_slack(static_cast<double>(size)) ? Outcome::kChanged : Outcome::kNone;
}

Outcome Elimination::run() {
  peel();
  load();
  std::int64_t nonzeros = 0;
  for (const Equation& equation : equations_) nonzeros += static_cast<std::int64_t>(equation.entries.size());
  const std::int64_t share = model_.options.dependent_rows > 0 ? kRequestedWork : kAutomaticWork;
  const std::int64_t limit = std::min(kFreeWork + share * nonzeros, kMostWork);
  Outcome result = Outcome::kNone;
  while (!order_.empty() && work_ <= limit) {
    std::size_t row = 0;
    Index col = -1;
    if (choose_pivot(row, col)) {
      eliminate(row, col);
    } else {
      const Terms combination = equations_[row].sources;
      const Outcome outcome = judge(combination);
      if (outcome == Outcome::kInfeasible) {
        result = outcome;
        break;
      }
      if (outcome == Outcome::kChanged) {
        const Index gone = equations_[row].row;
        changes_.drop_row(gone);
        result = outcome;
      }
    }
    equations_[row].active = false;
    order_.pop_back();
  }
  changes_.work().add(work_);
  return result;
}

}  // namespace

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  if (model.options.dependent_rows == 0) return Outcome::kNone;
  return Elimination(model, changes).run();
}

const Reduction kDependentEquations{"dependent_equations", Trigger::kRound, false, find, nullptr};

}  // namespace zorvex

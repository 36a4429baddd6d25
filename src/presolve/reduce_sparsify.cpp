// reduce_sparsify.cpp: adding a multiple of an equation to another row where that cancels more nonzeros than it makes.
//   Source   S. Chang, S. McCormick, Linear Algebra Appl. 165 (1992) 1-18 (row-wise cancellation).
//   Basis    the multiplier of the equation takes over its share of the row's. An equation that is basic while the row
//            is not has none to give: such a basis of the sparser model has no counterpart, and what comes back is one
//            to start from.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kSparsify;

namespace {

constexpr Index kMaxEquationLength = 50;
constexpr Index kMaxColumnLength = 100;  // longer columns are not searched for partners

// An entry next to one of the equation's: the multiple of the equation that would cancel it.
struct Meeting {
  Index row;
  double factor;
};

class Canceller {
 public:
  Canceller(const PresolveModel& model, Changes& changes) : model_(model), changes_(changes) {}
  bool use(Index equation);

 private:
  void meet(Index equation);
  // Nonzeros that the row loses, those it gains taken off.
  [[nodiscard]] Index saved(Index equation, const Meeting& candidate) const;

  const PresolveModel& model_;
  Changes& changes_;
  std::vector<Meeting> meetings_;
};

void Canceller::meet(Index equation) {
  meetings_.clear();
  for (const auto& own : model_.matrix.row(equation)) {
    if (model_.matrix.col_length(own.col) > kMaxColumnLength) continue;
    for (const auto& other : model_.matrix.col(own.col)) {
      if (other.row != equation) meetings_.push_back({other.row, -other.value / own.value});
    }
  }
  changes_.work().add(static_cast<std::int64_t>(meetings_.size()));
  std::sort(meetings_.begin(), meetings_.end(),
            [](const Meeting& a, const Meeting& b) { return a.row != b.row ? a.row < b.row : a.factor < b.factor; });
}

Index Canceller::saved(Index equation, const Meeting& candidate) const {
  changes_.work().add(model_.matrix.row_length(equation) + model_.matrix.row_length(candidate.row));
  std::vector<std::pair<Index, double>> own;
  for (const auto& entry : model_.matrix.row(equation)) own.emplace_back(entry.col, entry.value);
  std::sort(own.begin(), own.end());
  Index cancelled = 0;
  Index shared = 0;
  for (const auto& entry : model_.matrix.row(candidate.row)) {
    const auto at = std::lower_bound(own.begin(), own.end(), std::pair(entry.col, -kInf));
    if (at == own.end() || at->first != entry.col) continue;
    ++shared;
    const double change = candidate.factor * at->second;
    if (std::abs(entry.value + change) <= PresolveTolerances::kCancel * std::abs(change)) ++cancelled;
  }
  return cancelled - (static_cast<Index>(own.size()) - shared);
}

bool Canceller::use(Index equation) {
  meet(equation);
  bool changed = false;
  for (std::size_t begin = 0, end = 0; begin < meetings_.size(); begin = end) {
    // The multiple that cancels most entries of this row.
    Meeting best = meetings_[begin];
    std::size_t most = 0;
    for (std::size_t first = begin; end < meetings_.size() && meetings_[end].row == best.row; ++end) {
      const double gap = meetings_[end].factor - meetings_[first].factor;
      if (gap > PresolveTolerances::kCancel * std::abs(meetings_[end].factor)) first = end;
      if (end - first + 1 > most) {
        most = end - first + 1;
        best = meetings_[end];
      }
    }
    if (most < 2 || std::abs(best.factor) > 1 / PresolveTolerances::kPivotShare) continue;
    if (saved(equation, best) <= 0) continue;
    changes_.record(kSparsify).index(best.row).index(equation).real(best.factor);
    changes_.add_equation(best.row, equation, best.factor);
    changed = true;
  }
  return changed;
}

}  // namespace

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  Canceller canceller(model, changes);
  bool changed = false;
  for (Index row = 0; row < model.num_rows(); ++row) {
    const Index length = model.matrix.row_length(row);
    if (!model.row_alive[row] || !model.is_equation(row) || length < 2 || length > kMaxEquationLength) continue;
    changed = canceller.use(row) || changed;
  }
  return changed ? Outcome::kChanged : Outcome::kNone;
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const Index equation = record.index();
  const double factor = record.real();
  point.activity[row] -= Extended(factor) * point.activity[equation];
  point.pi[equation] = static_cast<double>(point.pi[equation] + Extended(factor) * point.pi[row]);
  const bool equation_rests = point.row_status[equation] != BasisStatus::kBasic;
  if (equation_rests) point.row_status[equation] = side_of_sign(point.pi[equation]);
  if (!equation_rests && point.row_status[row] != BasisStatus::kBasic) point.exact_basis = false;
}

const Reduction kSparsify{"sparsify", Trigger::kRound, false, 1, find, undo};

}  // namespace zorvex

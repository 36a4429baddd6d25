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
#include "presolve/row_multiples.hpp"

namespace zorvex {
extern const Reduction kSparsify;

namespace {

constexpr Index kMaxEquationLength = 50;
// Nonzeros that the row loses, those it gains taken off; none where the options allow no gains.
Index saved(const PresolveModel& model, Index equation, const RowMultiple& multiple, Changes& changes) {
  changes.work().add(model.matrix.row_length(equation) + model.matrix.row_length(multiple.row));
  std::vector<std::pair<Index, double>> own;
  for (const auto& entry : model.matrix.row(equation)) own.emplace_back(entry.col, entry.value);
  std::sort(own.begin(), own.end());
  Index cancelled = 0;
  Index shared = 0;
  for (const auto& entry : model.matrix.row(multiple.row)) {
    const auto at = std::lower_bound(own.begin(), own.end(), std::pair(entry.col, -kInf));
    if (at == own.end() || at->first != entry.col) continue;
    ++shared;
    const double change = multiple.factor * at->second;
    if (std::abs(entry.value + change) <= PresolveTolerances::kCancel * std::abs(change)) ++cancelled;
  }
  const Index gained = static_cast<Index>(own.size()) - shared;
  return gained > 0 && model.options.cancelling == Cancelling::kContained ? 0 : cancelled - gained;
}

bool use(const PresolveModel& model, Index equation, RowMultiples& multiples, Changes& changes) {
  bool changed = false;
  for (const RowMultiple& multiple : multiples.of(equation)) {
    if (saved(model, equation, multiple, changes) <= 0) continue;
    changes.record(kSparsify).index(multiple.row).index(equation).real(multiple.factor);
    changes.add_equation(multiple.row, equation, multiple.factor);
    changed = true;
  }
  return changed;
}

}  // namespace

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  if (model.options.cancelling == Cancelling::kOff) return Outcome::kNone;
  RowMultiples multiples(model, changes.work(), 1 / PresolveTolerances::kPivotShare);
  bool changed = false;
  for (Index row = 0; row < model.num_rows(); ++row) {
    const Index length = model.matrix.row_length(row);
    if (!model.row_alive[row] || !model.is_equation(row) || length < 2 || length > kMaxEquationLength) continue;
    changed = use(model, row, multiples, changes) || changed;
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

const Reduction kSparsify{"sparsify", Trigger::kRound, false, find, undo};

}  // namespace zorvex

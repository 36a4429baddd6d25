#include "opt/final_basis.hpp"

#include <algorithm>
#include <cmath>

#include "env/log_channel.hpp"
#include "env/parameter_table.hpp"
#include "opt/problem_data.hpp"
#include "opt/solver_options.hpp"
#include "simplex/condition.hpp"
#include "simplex/lp_solver.hpp"
#include "simplex/sensitivity.hpp"

namespace zorvex {

namespace {

constexpr double kShownEntry = 1e-13;  // entries of results must be larger

// What was asked for in the user's terms: sense -1 turns a range over.
Range in_sense(Range range, double sense) { return sense > 0 ? range : Range{-range.up, -range.low}; }

double user_infinity(double value) { return std::isfinite(value) ? value : std::copysign(kParameterInfinity, value); }

// On which side a variable rests whose sides are equal is a matter of taste.
bool same_statuses(const std::vector<BasisStatus>& a, const std::vector<BasisStatus>& b,
                   const std::vector<double>& lower, const std::vector<double>& upper) {
  for (std::size_t k = 0; k < a.size(); ++k) {
    const bool both_rest = a[k] != BasisStatus::kBasic && b[k] != BasisStatus::kBasic;
    if (a[k] != b[k] && !(both_rest && lower[k] == upper[k])) return false;
  }
  return true;
}

bool same_basis(const LpData& lp, const Basis& a, const Basis& b) {
  return same_statuses(a.col, b.col, lp.col_lower, lp.col_upper) &&
         same_statuses(a.row, b.row, lp.row_lower, lp.row_upper);
}

void append(ZLPsvec& result, Index index, double value) {
  if (!(std::abs(value) > kShownEntry)) return;
  result.ind[result.len] = index;
  result.val[result.len++] = value;
}

template <class Real>
void store(Scattered<Real>& vector, ZLPsvec& result) {
  result.len = 0;
  if (vector.dense) {
    for (Index i = 0; i < vector.size(); ++i) append(result, i, static_cast<double>(vector.value[i]));
    return;
  }
  std::sort(vector.index.begin(), vector.index.end());
  for (const Index i : vector.index) append(result, i, static_cast<double>(vector.value[i]));
}

template <class Real>
Scattered<Real> scattered(Index size, SparseEntries entries) {
  Scattered<Real> vector;
  vector.resize(size);
  for (std::size_t k = 0; k < entries.index.size(); ++k) {
    if (entries.value[k] == 0) continue;
    vector.value[entries.index[k]] = Real(entries.value[k]);
    vector.index.push_back(entries.index[k]);
  }
  return vector;
}

template <class Real>
Scattered<Real> unit_vector(Index size, Index at) {
  const double one = 1;
  return scattered<Real>(size, {{&at, 1}, {&one, 1}});
}

}  // namespace

const LpData& FinalBasis::data() {
  if (!lp_) {
    lp_ = make_lp_data(model_.data);
    clean_lp_data(*lp_, param<Param::ZORV_PAR_INFBOUND>(*model_.env), param<Param::ZORV_PAR_ZERO>(*model_.env));
  }
  return *lp_;
}

template <class Real>
bool FinalBasis::build(std::optional<BasisInverse<Real>>& inverse) {
  inverse.emplace();
  return inverse->factor(data(), basis_);
}

bool FinalBasis::has_inverse() {
  if (inverse_ == State::kOpen) {
    inverse_ = (extended_ ? build(exact_) : build(fast_)) ? State::kDone : State::kFailed;
  }
  return inverse_ == State::kDone;
}

const std::vector<Index>& FinalBasis::head() const { return extended_ ? exact_->head() : fast_->head(); }

double FinalBasis::kappa() {
  if (!kappa_) kappa_ = with_inverse([](auto& inverse) { return condition_1norm(inverse); });
  return *kappa_;
}

double FinalBasis::n2_kappa() {
  if (!n2_kappa_) n2_kappa_ = with_inverse([](auto& inverse) { return condition_2norm(inverse); });
  return *n2_kappa_;
}

void FinalBasis::solve(SparseEntries b, ZLPsvec& result) {
  with_inverse([&]<class Real>(BasisInverse<Real>& inverse) {
    Scattered<Real> x = scattered<Real>(inverse.num_rows(), b);
    inverse.ftran(x);
    store(x, result);
  });
}

void FinalBasis::solve_transposed(SparseEntries b, ZLPsvec& result) {
  with_inverse([&]<class Real>(BasisInverse<Real>& inverse) {
    Scattered<Real> y = scattered<Real>(inverse.num_rows(), b);
    inverse.btran(y);
    store(y, result);
  });
}

void FinalBasis::tableau_column(Index var, ZLPsvec& result) {
  with_inverse([&]<class Real>(BasisInverse<Real>& inverse) {
    Scattered<Real> column;
    column.resize(inverse.num_rows());
    inverse.add_column(var, Real(1), column);
    inverse.ftran(column);
    store(column, result);
  });
}

void FinalBasis::tableau_row(Index position, ZLPsvec& result) {
  with_inverse([&]<class Real>(BasisInverse<Real>& inverse) {
    Scattered<Real> rho = unit_vector<Real>(inverse.num_rows(), position);
    inverse.btran(rho);
    result.len = 0;
    for (Index col = 0; col < data().num_cols(); ++col) {
      append(result, col, static_cast<double>(inverse.column_dot(col, rho)));
    }
  });
}

// A solve from the kept basis confirms it within the kernel's own tolerances, which are tighter than the ones answers
// are accepted with; where it had to go on, the ranges are those of the basis it ended with.
bool FinalBasis::compute_limits() {
  if (model_.solution.status != SolveStatus::kOptimal || !model_.data.quadratic.empty() || !has_inverse()) return false;
  QuietLog quiet;
  SimplexOptions options = make_lp_options(*model_.env, model_.data.sense, 0).simplex;
  options.perturb_value = 0;  // an optimal basis is to stay
  LpSolver solver(data(), options, quiet);
  solver.set_basis(basis_);
  if (solver.solve({}, {}) != SolveStatus::kOptimal) return false;
  const Basis confirmed = solver.basis();
  if (!same_basis(data(), confirmed, basis_)) {
    log_text(model_.env, "Warning: basis changed during sensitity analysis.\n");
    basis_ = confirmed;
    kappa_.reset();
    n2_kappa_.reset();
    inverse_ = State::kOpen;
    if (!has_inverse()) return false;
  }
  const SensitivityRanges ranges = with_inverse(
      [&](auto& inverse) { return sensitivity_ranges(data(), basis_, inverse, solver.point().x, solver.point().pi); });
  const auto add = [&](SensitivityLimit low, SensitivityLimit up, Range range) {
    limits_[static_cast<std::size_t>(low)].push_back(user_infinity(range.low));
    limits_[static_cast<std::size_t>(up)].push_back(user_infinity(range.up));
  };
  for (Index col = 0; col < data().num_cols(); ++col) {
    add(SensitivityLimit::kObjLow, SensitivityLimit::kObjUp, in_sense(ranges.cost[col], model_.data.sense));
    add(SensitivityLimit::kLowerLow, SensitivityLimit::kLowerUp, ranges.lower[col]);
    add(SensitivityLimit::kUpperLow, SensitivityLimit::kUpperUp, ranges.upper[col]);
  }
  for (Index row = 0; row < data().num_rows(); ++row) {
    const double rhs = model_.data.user_rhs(row);
    const Range shift = ranges.side_shift[row];
    add(SensitivityLimit::kRhsLow, SensitivityLimit::kRhsUp, {rhs + shift.low, rhs + shift.up});
  }
  return true;
}

const std::vector<double>* FinalBasis::limits(SensitivityLimit which) {
  if (ranges_ == State::kOpen) ranges_ = compute_limits() ? State::kDone : State::kFailed;
  return ranges_ == State::kDone ? &limits_[static_cast<std::size_t>(which)] : nullptr;
}

}  // namespace zorvex

#include "simplex/sensitivity.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

// Entries of a tableau column below this share of its largest are what rounding leaves of zero.
constexpr double kNoiseShare = 1e-11;

// Over all variables, columns first: a logical is minus its row's activity.
struct Variables {
  std::vector<double> lower, upper, value, reduced_cost;
  std::vector<BasisStatus> status;  // sides in terms of these bounds

  [[nodiscard]] bool fixed(Index var) const { return lower[var] == upper[var]; }
};

BasisStatus mirrored(BasisStatus row) {
  if (row == BasisStatus::kAtLower) return BasisStatus::kAtUpper;
  return row == BasisStatus::kAtUpper ? BasisStatus::kAtLower : row;
}

Variables variables_of(const LpData& lp, const Basis& basis, const std::vector<double>& x,
                       const std::vector<double>& pi) {
  Variables all{lp.col_lower, lp.col_upper, x, {}, basis.col};
  std::vector<Extended> activity(pi.size(), 0);
  for (Index col = 0; col < lp.num_cols(); ++col) {
    Extended d = lp.cost[col];
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      d -= Extended(lp.matrix.value[k]) * pi[lp.matrix.index[k]];
      activity[lp.matrix.index[k]] += Extended(lp.matrix.value[k]) * x[col];
    }
    all.reduced_cost.push_back(static_cast<double>(d));
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    all.lower.push_back(-lp.row_upper[row]);
    all.upper.push_back(-lp.row_lower[row]);
    all.value.push_back(static_cast<double>(-activity[row]));
    all.reduced_cost.push_back(-pi[row]);
    all.status.push_back(mirrored(basis.row[row]));
  }
  return all;
}

template <class Real>
class Ranging {
 public:
  Ranging(const LpData& lp, const Basis& basis, BasisInverse<Real>& inverse, const std::vector<double>& x,
          const std::vector<double>& pi)
      : lp_(lp), inverse_(inverse), all_(variables_of(lp, basis, x, pi)) {
    alpha_.resize(lp.num_rows());
  }

  SensitivityRanges run() {
    set_basic_ranges();
    for (Index var = 0; var < lp_.num_cols() + lp_.num_rows(); ++var) {
      if (inverse_.where()[var] >= 0) continue;
      alpha_.clear();
      inverse_.add_column(var, Real(1), alpha_);
      inverse_.ftran(alpha_);
      alpha_.pack(0);
      drop_noise();
      limit_basic_costs(var);
      set_nonbasic_ranges(var, room());
    }
    return std::move(result_);
  }

 private:
  void set_basic_ranges();
  void set_nonbasic_ranges(Index var, Range room);
  void drop_noise();
  void limit_basic_costs(Index var);
  [[nodiscard]] Range room() const;

  const LpData& lp_;
  BasisInverse<Real>& inverse_;
  Variables all_;
  Scattered<Real> alpha_;  // B^-1 a_var
  SensitivityRanges result_;
};

// What holds for basic variables, and for others before set_nonbasic_ranges: a bound may move up to the value.
template <class Real>
void Ranging<Real>::set_basic_ranges() {
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    const double value = all_.value[col];
    result_.cost.push_back({-kInf, kInf});
    result_.lower.push_back({-kInf, std::max(value, lp_.col_lower[col])});
    result_.upper.push_back({std::min(value, lp_.col_upper[col]), kInf});
  }
  for (Index row = 0; row < lp_.num_rows(); ++row) {
    const double activity = -all_.value[lp_.num_cols() + row];
    result_.side_shift.push_back(
        {std::min(0.0, activity - lp_.row_upper[row]), std::max(0.0, activity - lp_.row_lower[row])});
  }
}

template <class Real>
void Ranging<Real>::drop_noise() {
  using std::abs;
  Real largest = 0;
  for (const Index position : alpha_.index) largest = std::max<Real>(largest, abs(alpha_.value[position]));
  alpha_.pack(Real(kNoiseShare) * largest);
}

// How far the nonbasic variable may move down and up with the basic ones following: x_B moves by -alpha per unit.
template <class Real>
Range Ranging<Real>::room() const {
  Range room{-kInf, kInf};
  for (const Index position : alpha_.index) {
    const auto alpha = static_cast<double>(alpha_.value[position]);
    const Index basic = inverse_.head()[position];
    const double below = std::max(0.0, all_.value[basic] - all_.lower[basic]);
    const double above = std::max(0.0, all_.upper[basic] - all_.value[basic]);
    room.up = std::min(room.up, (alpha > 0 ? below : above) / std::abs(alpha));
    room.low = std::max(room.low, -(alpha > 0 ? above : below) / std::abs(alpha));
  }
  return room;
}

// A change t of the cost basic in position p makes this variable's reduced cost d - t alpha_p.
template <class Real>
void Ranging<Real>::limit_basic_costs(Index var) {
  if (all_.fixed(var)) return;
  const BasisStatus status = all_.status[var];
  double d = all_.reduced_cost[var];
  if (status == BasisStatus::kAtLower) d = std::max(d, 0.0);
  if (status == BasisStatus::kAtUpper) d = std::min(d, 0.0);
  if (status == BasisStatus::kNonbasicFree) d = 0;
  for (const Index position : alpha_.index) {
    const Index basic = inverse_.head()[position];
    if (basic >= lp_.num_cols()) continue;
    const auto alpha = static_cast<double>(alpha_.value[position]);
    const double step = d / alpha;
    Range& cost = result_.cost[basic];
    const double c = lp_.cost[basic];
    // Without a bound to rest on, both directions are closed.
    const bool closes_up = status == BasisStatus::kNonbasicFree || (status == BasisStatus::kAtLower) == (alpha > 0);
    const bool closes_down = status == BasisStatus::kNonbasicFree || !closes_up;
    if (closes_up) cost.up = std::min(cost.up, c + step);
    if (closes_down) cost.low = std::max(cost.low, c + step);
  }
}

template <class Real>
void Ranging<Real>::set_nonbasic_ranges(Index var, Range room) {
  const BasisStatus status = all_.status[var];
  if (var >= lp_.num_cols()) {  // the sides' shift is the activity's: that of the logical, negated
    if (status != BasisStatus::kNonbasicFree) result_.side_shift[var - lp_.num_cols()] = {-room.up, -room.low};
    return;
  }
  const double lower = lp_.col_lower[var];
  const double upper = lp_.col_upper[var];
  const double d = all_.reduced_cost[var];
  const double c = lp_.cost[var];
  if (status == BasisStatus::kAtLower) {
    if (!all_.fixed(var)) result_.cost[var] = {std::min(c, c - d), kInf};
    result_.lower[var] = {lower + room.low, std::min(lower + room.up, upper)};
    result_.upper[var] = {lower, kInf};
  } else if (status == BasisStatus::kAtUpper) {
    if (!all_.fixed(var)) result_.cost[var] = {-kInf, std::max(c, c - d)};
    result_.lower[var] = {-kInf, upper};
    result_.upper[var] = {std::max(upper + room.low, lower), upper + room.up};
  } else {
    result_.cost[var] = {c, c};
  }
}

}  // namespace

template <class Real>
SensitivityRanges sensitivity_ranges(const LpData& lp, const Basis& basis, BasisInverse<Real>& inverse,
                                     const std::vector<double>& x, const std::vector<double>& pi) {
  return Ranging<Real>(lp, basis, inverse, x, pi).run();
}

template SensitivityRanges sensitivity_ranges(const LpData&, const Basis&, BasisInverse<double>&,
                                              const std::vector<double>&, const std::vector<double>&);
template SensitivityRanges sensitivity_ranges(const LpData&, const Basis&, BasisInverse<Extended>&,
                                              const std::vector<double>&, const std::vector<double>&);

}  // namespace zorvex

#include "mip/mir.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvex {

namespace {

constexpr std::size_t kMaxScales = 10;
constexpr std::size_t kMaxComplements = 8;
constexpr double kMaxScaledRhs = 1e6;

double fraction(double value) { return value - std::floor(value); }

}  // namespace

// --- VariableBounds ---

VariableBounds::VariableBounds(const SearchModel& model)
    : upper_(static_cast<std::size_t>(model.num_cols())), lower_(upper_) {
  for (Index row = 0; row < model.num_rows(); ++row) {
    if (model.rows.col_length(row) != 2) continue;
    for (Index pos = 0; pos < 2; ++pos) {
      if (model.lp.row_upper[row] < kInf) take(model, row, pos, model.lp.row_upper[row], true);
      if (model.lp.row_lower[row] > -kInf) take(model, row, pos, model.lp.row_lower[row], false);
    }
  }
  for (const ImpliedBound& implied : model.implied_bounds) {
    (implied.upper ? upper_ : lower_)[implied.col].push_back(implied.bound);
  }
}

// a x + b y <= side (or >=): a bound of x if x is continuous and y integer.
void VariableBounds::take(const SearchModel& model, Index row, Index continuous_pos, double side, bool is_upper_side) {
  const Offset first = model.rows.begin(row);
  const Index x = model.rows.index[first + continuous_pos];
  const Index y = model.rows.index[first + 1 - continuous_pos];
  if (model.integral(x) || !model.integral(y)) return;
  if (model.lp.col_lower[y] == model.lp.col_upper[y]) return;
  const double a = model.rows.value[first + continuous_pos];
  const double b = model.rows.value[first + 1 - continuous_pos];
  if (std::abs(b / a) > mip_tol::kCutDynamism) return;
  const bool upper = is_upper_side == (a > 0);
  (upper ? upper_ : lower_)[x].push_back({y, side / a, -b / a});
}

VariableBound VariableBounds::tightest(Index col, bool upper, const std::vector<double>& x) const {
  VariableBound best;
  for (const VariableBound& bound : upper ? upper_[col] : lower_[col]) {
    if (best.of < 0 || (upper ? bound.at(x) < best.at(x) : bound.at(x) > best.at(x))) best = bound;
  }
  return best;
}

// --- AggregatedRow ---

AggregatedRow::AggregatedRow(const SearchModel& model, const LpRows& rows, const std::vector<double>& x)
    : model_(model),
      rows_(rows),
      x_(x),
      coef_(static_cast<std::size_t>(model.num_cols()), 0),
      in_support_(coef_.size(), 0) {}

void AggregatedRow::clear() {
  for (const Index col : support_) {
    coef_[col] = 0;
    in_support_[col] = 0;
  }
  support_.clear();
  slacks_.clear();
  rhs_ = 0;
}

bool AggregatedRow::integer_slack(Index row, double side) const {
  if (rows_.is_cut(row) || side != std::round(side)) return false;
  const std::span<const Index> cols = rows_.index(row);
  const std::span<const double> values = rows_.value(row);
  for (std::size_t k = 0; k < cols.size(); ++k) {
    if (!model_.integral(cols[k]) || values[k] != std::round(values[k])) return false;
  }
  return true;
}

void AggregatedRow::add(Index row, double multiplier) {
  const std::span<const Index> cols = rows_.index(row);
  const std::span<const double> values = rows_.value(row);
  double activity = 0;
  for (std::size_t k = 0; k < cols.size(); ++k) {
    const Index col = cols[k];
    if (!in_support_[col]) {
      in_support_[col] = 1;
      support_.push_back(col);
    }
    const double before = std::abs(coef_[col]);
    coef_[col] += multiplier * values[k];
    // What should have cancelled exactly is made to.
    if (std::abs(coef_[col]) <= mip_tol::kCutDrop * std::max(before, std::abs(multiplier * values[k]))) coef_[col] = 0;
    activity += values[k] * x_[col];
  }
  const double lower = rows_.lower(row);
  const double upper = rows_.upper(row);
  const bool use_upper = upper < kInf && (lower == -kInf || upper - activity <= activity - lower);
  const double side = use_upper ? upper : lower;
  rhs_ += multiplier * side;
  if (lower == upper) return;
  const double distance = std::max(0.0, use_upper ? upper - activity : activity - lower);
  slacks_.push_back({row, use_upper, use_upper ? multiplier : -multiplier, distance, integer_slack(row, side)});
}

// --- MirCutter ---

MirCutter::MirCutter(const SearchModel& model, const LpRows& rows, const VariableBounds& variable_bounds,
                     const std::vector<double>& x)
    : model_(model),
      rows_(rows),
      variable_bounds_(variable_bounds),
      x_(x),
      integer_coef_(static_cast<std::size_t>(model.num_cols()), 0),
      integer_seen_(integer_coef_.size(), 0),
      out_(integer_coef_.size(), 0),
      out_seen_(integer_coef_.size(), 0) {}

void MirCutter::add_integer_coef(Index col, double coef) {
  if (!integer_seen_[col]) {
    integer_seen_[col] = 1;
    integer_cols_.push_back(col);
  }
  integer_coef_[col] += coef;
}

// x = bound + t or bound - t with the bound nearest to the relaxation; variable bounds win ties, they bring integers
// in.
bool MirCutter::substitute_continuous(Index col, double coef) {
  const double value = x_[col];
  double upper = model_.lp.col_upper[col];
  double lower = model_.lp.col_lower[col];
  VariableBound upper_bound = variable_bounds_.tightest(col, true, x_);
  VariableBound lower_bound = variable_bounds_.tightest(col, false, x_);
  const double tie = mip_tol::kRowFeasibility;
  if (upper_bound.of >= 0 && upper_bound.at(x_) > upper + tie) upper_bound.of = -1;
  if (upper_bound.of >= 0) upper = upper_bound.at(x_);
  if (lower_bound.of >= 0 && lower_bound.at(x_) < lower - tie) lower_bound.of = -1;
  if (lower_bound.of >= 0) lower = lower_bound.at(x_);
  if (std::isinf(upper) && std::isinf(lower)) return false;
  const bool at_lower = value - lower <= upper - value;
  const VariableBound& bound = at_lower ? lower_bound : upper_bound;
  Term term{col,
            0,
            at_lower ? Kind::kLower : Kind::kUpper,
            bound,
            at_lower ? coef : -coef,
            std::max(0.0, at_lower ? value - lower : upper - value),
            kInf};
  if (bound.of >= 0) {
    rhs_ -= coef * bound.constant;
    add_integer_coef(bound.of, coef * bound.slope);
  } else {
    rhs_ -= coef * (at_lower ? lower : upper);
  }
  continuous_.push_back(term);
  return true;
}

bool MirCutter::substitute_integer(Index col, double coef) {
  const double lower = model_.lp.col_lower[col];
  const double upper = model_.lp.col_upper[col];
  if (std::isinf(lower) && std::isinf(upper)) {
    integers_.push_back({col, 0, Kind::kFree, {}, coef, x_[col], kInf});
    return true;
  }
  const bool at_lower = x_[col] - lower <= upper - x_[col];
  rhs_ -= coef * (at_lower ? lower : upper);
  integers_.push_back({col,
                       0,
                       at_lower ? Kind::kLower : Kind::kUpper,
                       {},
                       at_lower ? coef : -coef,
                       std::max(0.0, at_lower ? x_[col] - lower : upper - x_[col]),
                       upper - lower});
  return true;
}

bool MirCutter::substitute(const AggregatedRow& row, double sign) {
  integers_.clear();
  continuous_.clear();
  integer_cols_.clear();
  rhs_ = sign * row.rhs();
  bool ok = true;
  for (const Index col : row.support()) {
    const double coef = sign * row.coef(col);
    if (coef == 0) continue;
    if (model_.lp.col_lower[col] == model_.lp.col_upper[col]) {
      rhs_ -= coef * model_.lp.col_lower[col];
    } else if (model_.integral(col)) {
      add_integer_coef(col, coef);
    } else {
      ok = ok && substitute_continuous(col, coef);
    }
  }
  for (const Index col : integer_cols_) {
    if (ok && integer_coef_[col] != 0) ok = substitute_integer(col, integer_coef_[col]);
    integer_coef_[col] = 0;
    integer_seen_[col] = 0;
  }
  for (std::size_t k = 0; k < row.slacks().size(); ++k) {
    const AggregatedRow::Slack& slack = row.slacks()[k];
    Term term{-1, k, Kind::kLower, {}, sign * slack.coef, slack.value, kInf};
    (slack.integer ? integers_ : continuous_).push_back(term);
  }
  return ok;
}

// Violation over norm of the rounded row, in the space of the substituted variables.
double MirCutter::efficacy(double scale) const {
  const double beta = rhs_ / scale;
  if (std::abs(beta) > kMaxScaledRhs) return -1;
  const double f0 = fraction(beta);
  if (f0 < mip_tol::kCutFractionality || f0 > 1 - mip_tol::kCutFractionality) return -1;
  double left = 0;
  double norm = 0;
  for (const Term& term : integers_) {
    const double d = term.coef / scale;
    const double f = fraction(d);
    if (term.kind == Kind::kFree && std::min(f, 1 - f) > mip_tol::kCutDrop) return -1;
    const double rounded = std::floor(d) + std::max(0.0, f - f0) / (1 - f0);
    left += rounded * term.value;
    norm += rounded * rounded;
  }
  for (const Term& term : continuous_) {
    if (term.coef / scale >= 0) continue;
    const double rounded = term.coef / scale / (1 - f0);
    left += rounded * term.value;
    norm += rounded * rounded;
  }
  return norm > 0 ? (left - std::floor(beta)) / std::sqrt(norm) : -1;
}

double MirCutter::best_scale() {
  std::vector<double> scales = {1};
  for (const Term& term : integers_) {
    if (scales.size() >= kMaxScales) break;
    if (term.value <= mip_tol::kIntegerRounding || term.value >= term.range - mip_tol::kIntegerRounding) continue;
    const double scale = std::abs(term.coef);
    const bool known = std::any_of(scales.begin(), scales.end(),
                                   [&](double s) { return std::abs(s - scale) <= mip_tol::kIntegerRounding * scale; });
    if (!known && scale > mip_tol::kTinyCoefficient) scales.push_back(scale);
  }
  double best = 0;
  double best_efficacy = 0;
  for (const double scale : scales) {
    const double value = efficacy(scale);
    if (value > best_efficacy) {
      best_efficacy = value;
      best = scale;
    }
  }
  if (best == 0) return 0;
  for (const double divisor : {2.0, 4.0, 8.0}) {
    const double value = efficacy(best / divisor);
    if (value > best_efficacy) {
      best_efficacy = value;
      best /= divisor;
      break;
    }
  }
  improve_by_complementing(best, best_efficacy);
  return best_efficacy >= mip_tol::kCutViolation ? best : 0;
}

void MirCutter::complement(Term& term) {
  rhs_ -= term.coef * term.range;
  term.coef = -term.coef;
  term.value = std::max(0.0, term.range - term.value);
  term.kind = term.kind == Kind::kLower ? Kind::kUpper : Kind::kLower;
}

// Integer columns in the middle of their range may do better from their other bound.
void MirCutter::improve_by_complementing(double& scale, double& best) {
  std::size_t tries = 0;
  for (Term& term : integers_) {
    if (term.col < 0 || std::isinf(term.range) || tries >= kMaxComplements) continue;
    if (term.value <= mip_tol::kIntegerRounding) continue;
    ++tries;
    complement(term);
    const double value = efficacy(scale);
    if (value > best) {
      best = value;
    } else {
      complement(term);
    }
  }
}

void MirCutter::put(Index col, double coef) {
  if (!out_seen_[col]) {
    out_seen_[col] = 1;
    out_cols_.push_back(col);
  }
  out_[col] += coef;
}

void MirCutter::clear_output() {
  for (const Index col : out_cols_) {
    out_[col] = 0;
    out_seen_[col] = 0;
  }
  out_cols_.clear();
}

// Rounds and substitutes the columns back.
void MirCutter::build(const AggregatedRow& row, double scale, Cut& cut) {
  const double beta = rhs_ / scale;
  const double f0 = fraction(beta);
  double rhs = std::floor(beta);
  const auto undo = [&](const Term& term, double e) {
    if (term.col < 0) {
      const AggregatedRow::Slack& slack = row.slacks()[term.slack];
      const std::span<const Index> cols = rows_.index(slack.row);
      const std::span<const double> values = rows_.value(slack.row);
      const double direction = slack.upper ? -e : e;
      for (std::size_t k = 0; k < cols.size(); ++k) put(cols[k], direction * values[k]);
      rhs += direction * (slack.upper ? rows_.upper(slack.row) : rows_.lower(slack.row));
      return;
    }
    const double direction = term.kind == Kind::kUpper ? -e : e;
    put(term.col, direction);
    if (term.kind == Kind::kFree) return;
    if (term.bound.of >= 0) {
      put(term.bound.of, -direction * term.bound.slope);
      rhs += direction * term.bound.constant;
    } else {
      rhs += direction * (term.kind == Kind::kUpper ? model_.lp.col_upper : model_.lp.col_lower)[term.col];
    }
  };
  for (const Term& term : integers_) {
    const double d = term.coef / scale;
    const double rounded =
        term.kind == Kind::kFree ? std::round(d) : std::floor(d) + std::max(0.0, fraction(d) - f0) / (1 - f0);
    if (rounded != 0) undo(term, rounded);
  }
  for (const Term& term : continuous_) {
    if (term.coef / scale < 0) undo(term, term.coef / scale / (1 - f0));
  }
  cut = {};
  cut.rhs = rhs;
  for (const Index col : out_cols_) {
    if (out_[col] == 0) continue;
    cut.index.push_back(col);
    cut.value.push_back(out_[col]);
  }
  clear_output();
}

bool MirCutter::separate(const AggregatedRow& row, CutType type, bool both_signs, std::vector<Cut>& found) {
  const std::size_t before = found.size();
  for (const double sign : {1.0, -1.0}) {
    if (!substitute(row, sign)) continue;
    const double scale = best_scale();
    if (scale == 0) continue;
    Cut cut;
    build(row, scale, cut);
    cut.type = type;
    found.push_back(std::move(cut));
    if (!both_signs) break;
  }
  return found.size() > before;
}

}  // namespace zorvex

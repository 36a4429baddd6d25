#include "mip/separator.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace zorvex {

#define SEPARATOR(name) extern const Separator name;
#include "mip/separators.inc"
#undef SEPARATOR

std::span<const Separator* const> separators() {
#define SEPARATOR(name) &name,
  static constexpr std::array kList = {
#include "mip/separators.inc"
  };
#undef SEPARATOR
  return kList;
}

namespace {

constexpr std::size_t kBaseCutsPerRound = 50;
constexpr std::size_t kSelectionEffort = 50000000;  // entries compared
constexpr double kMaxCutDensity = 0.2;              // of the columns, beyond kFreeEntries
constexpr double kFreeEntries = 1000;

double norm_of(const Cut& cut) {
  double sum = 0;
  for (const double value : cut.value) sum += value * value;
  return std::sqrt(sum);
}

double left_side(const Cut& cut, const std::vector<double>& x) {
  double sum = 0;
  for (std::size_t k = 0; k < cut.index.size(); ++k) sum += cut.value[k] * x[cut.index[k]];
  return sum;
}

double cosine(const Cut& a, const Cut& b) {
  double dot = 0;
  std::size_t j = 0;
  for (std::size_t i = 0; i < a.index.size(); ++i) {
    while (j < b.index.size() && b.index[j] < a.index[i]) ++j;
    if (j < b.index.size() && b.index[j] == a.index[i]) dot += a.value[i] * b.value[j];
  }
  return dot / (a.norm * b.norm);
}

// Replaces the term by its least value over the bounds; false when that is unbounded.
bool relax_term(const SearchModel& model, Index col, double value, double& rhs) {
  const double bound = value > 0 ? model.lp.col_lower[col] : model.lp.col_upper[col];
  if (std::isinf(bound)) return false;
  rhs -= value * bound;
  return true;
}

bool drop_small(const SearchModel& model, Cut& cut) {
  double largest = 0;
  for (const double value : cut.value) largest = std::max(largest, std::abs(value));
  if (!(largest > 0) || !std::isfinite(largest) || !std::isfinite(cut.rhs)) return false;
  const double least = largest / mip_tol::kCutDynamism;
  std::size_t kept = 0;
  for (std::size_t k = 0; k < cut.index.size(); ++k) {
    if (std::abs(cut.value[k]) < least) {
      if (cut.value[k] != 0 && !relax_term(model, cut.index[k], cut.value[k], cut.rhs)) return false;
      continue;
    }
    cut.index[kept] = cut.index[k];
    cut.value[kept++] = cut.value[k];
  }
  cut.index.resize(kept);
  cut.value.resize(kept);
  const double scale = std::exp2(-std::floor(std::log2(largest)));
  for (double& value : cut.value) value *= scale;
  cut.rhs *= scale;
  return std::abs(cut.rhs) <= mip_tol::kCutDynamism * 10;
}

void sort_indices(Cut& cut) {
  std::vector<std::size_t> order(cut.index.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return cut.index[a] < cut.index[b]; });
  Cut sorted = cut;
  for (std::size_t k = 0; k < order.size(); ++k) {
    sorted.index[k] = cut.index[order[k]];
    sorted.value[k] = cut.value[order[k]];
  }
  cut = std::move(sorted);
}

// The incumbent satisfies every valid inequality: one it violates was made by rounding errors. Unless the model was
// prepared with the cutoff built in, which leaves the incumbent out on purpose.
bool cuts_off_incumbent(const SearchState& state, const Cut& cut) {
  if (state.incumbents.empty() || state.cutoff_built_in) return false;
  const double slack = state.options.simplex.primal_feasibility_tol * std::max(1.0, cut.norm);
  return left_side(cut, state.incumbents.best().x) > cut.rhs + slack;
}

}  // namespace

std::span<const Index> LpRows::index(Index row) const {
  if (is_cut(row)) return cut(row).index;
  const auto first = static_cast<std::size_t>(model_.rows.begin(row));
  return std::span(model_.rows.index).subspan(first, static_cast<std::size_t>(model_.rows.col_length(row)));
}

std::span<const double> LpRows::value(Index row) const {
  if (is_cut(row)) return cut(row).value;
  const auto first = static_cast<std::size_t>(model_.rows.begin(row));
  return std::span(model_.rows.value).subspan(first, static_cast<std::size_t>(model_.rows.col_length(row)));
}

double LpRows::activity(Index row, const std::vector<double>& x) const {
  const std::span<const Index> cols = index(row);
  const std::span<const double> values = value(row);
  double sum = 0;
  for (std::size_t k = 0; k < cols.size(); ++k) sum += values[k] * x[cols[k]];
  return sum;
}

bool clean_cut(const SearchModel& model, Cut& cut) {
  if (!drop_small(model, cut) || cut.index.empty()) return false;
  if (static_cast<double>(cut.index.size()) > kFreeEntries + kMaxCutDensity * model.num_cols()) return false;
  cut.rhs += mip_tol::kCutRhsRelax * std::max(1.0, std::abs(cut.rhs));
  sort_indices(cut);
  cut.norm = norm_of(cut);
  return true;
}

namespace {

// A cut of full length counts half as much as a short one of the same efficacy: it slows every later pivot.
double worth(const SearchModel& model, const Cut& cut) {
  return cut.efficacy / (1 + static_cast<double>(cut.index.size()) / model.num_cols());
}

// The worthiest cuts of which no two are nearly parallel, put into the pool.
std::vector<std::int64_t> select(SearchState& state, std::vector<Cut> candidates) {
  std::stable_sort(candidates.begin(), candidates.end(),
                   [&](const Cut& a, const Cut& b) { return worth(state.model, a) > worth(state.model, b); });
  const std::size_t limit = kBaseCutsPerRound + static_cast<std::size_t>(state.model.num_rows()) / 4;
  std::vector<std::int64_t> chosen;
  std::size_t work = 0;
  for (Cut& cut : candidates) {
    if (chosen.size() >= limit || work > kSelectionEffort) break;
    work += chosen.size() * cut.index.size();
    const bool parallel = std::any_of(chosen.begin(), chosen.end(), [&](std::int64_t id) {
      return cosine(state.cuts.cut(id), cut) > mip_tol::kCutParallel;
    });
    if (parallel) continue;
    const std::int64_t id = state.cuts.add(std::move(cut));
    if (id >= 0) chosen.push_back(id);
  }
  return chosen;
}

}  // namespace

std::vector<std::int64_t> separate_round(SearchState& state, const NodeRelaxation& relaxation) {
  SeparationContext context{state, relaxation, LpRows(state.model, state.cuts, state.lp->cut_ids()), {}};
  for (const Separator* separator : separators()) {
    if (state.stop.stop_requested()) return {};
    separator->separate(context);
  }
  std::vector<Cut> candidates;
  for (Cut& cut : context.found) {
    if (!clean_cut(state.model, cut) || cuts_off_incumbent(state, cut)) continue;
    cut.efficacy = (left_side(cut, relaxation.x) - cut.rhs) / cut.norm;
    if (cut.efficacy >= mip_tol::kCutViolation) candidates.push_back(std::move(cut));
  }
  return select(state, std::move(candidates));
}

}  // namespace zorvex

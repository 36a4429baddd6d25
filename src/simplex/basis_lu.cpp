#include "simplex/basis_lu.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/lu_assemble.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_nucleus.hpp"
#include "simplex/lu_peel.hpp"
#include "simplex/lu_poll.hpp"
#include "simplex/lu_solve.hpp"
#include "simplex/lu_update.hpp"

namespace zorvex {

namespace {
// Slots wanted per row and basis nonzero with the usual steps: three quarters of it are what is asked for first, enough
// for fill of the usual basis and a few hundred updates. Slots never touched cost no memory.
constexpr Offset kSlotsPerNonzero = 8;
constexpr Offset kSmallestSpace = 4096;
constexpr Offset kLargestEstimate = Offset{1} << 48;
// Work units of factorization per basis nonzero and per row (counting, peeling, assembly of both copies).
constexpr Offset kFactorUnitsPerNonzero = 8;
constexpr Offset kFactorUnitsPerRow = 8;
// Factorizations at half the rate that balances the work take fewer iterations and less time (measured on 26 models).
constexpr Offset kFactorsSpared = 2;
constexpr Index kBaselineUpdates = 8;  // updates over which the solve cost of fresh factors is measured
}  // namespace

template <class Real>
struct BasisLu<Real>::State {
  LuFactors<Real> factors;
  LuPeel<Real> peel;
  LuNucleus<Real> nucleus;
  LuAssemble<Real> assemble;
  LuSolve<Real> solve;
  LuUpdate<Real> update;
  std::vector<LuDeficiency> deficiencies;

  LuEntries<Real> spike;  // of the last ftran with save_for_update
  bool spike_valid = false;
  LuEntries<Real> unit_row;  // of the last btran of a unit vector: U^-T e_position
  Index unit_position = -1;

  Index num_updates = 0;
  Offset fresh_nonzeros = 0;
  // Refactorization pays once the work that solves do beyond what they cost with fresh factors exceeds one
  // factorization: with extra work growing linearly that minimises the mean cost of an iteration.
  Offset factor_work = 0, work_at_update = 0, baseline = 0, excess = 0;
  Offset past_factor_work = 0;  // of all factorizations

  [[nodiscard]] Offset total_work() const { return solve.work() + update.work(); }
  void find_deficiencies();
  [[nodiscard]] LuStatus factor(const ColumnView<Real>& columns, std::span<const Index> head, double markowitz,
                                LuPoll& poll);
  void finish_factor(const ColumnView<Real>& columns, std::span<const Index> head, Offset counted);
  void count_update();
};

template <class Real>
void BasisLu<Real>::State::find_deficiencies() {
  Index row = 0;
  for (Index pos = 0; pos < factors.m; ++pos) {
    if (!factors.col_active(pos)) continue;
    while (!factors.row_active(row)) ++row;
    deficiencies.push_back({pos, row++});
  }
}

template <class Real>
LuStatus BasisLu<Real>::State::factor(const ColumnView<Real>& columns, std::span<const Index> head, double markowitz,
                                      LuPoll& poll) {
  deficiencies.clear();
  spike_valid = false;
  unit_position = -1;
  num_updates = 0;
  factors.reset(columns.num_rows);
  solve.resize(columns.num_rows);
  LuStatus status = peel.run(columns, head, factors, poll);
  if (status == LuStatus::kOk) status = nucleus.run(columns, head, peel, markowitz, factors, poll);
  if (status != LuStatus::kOk) return status;
  find_deficiencies();
  if (!deficiencies.empty()) return LuStatus::kSingular;
  return assemble.run(columns, head, nucleus, factors);
}

template <class Real>
void BasisLu<Real>::State::finish_factor(const ColumnView<Real>& columns, std::span<const Index> head, Offset counted) {
  Offset nonzeros = 0;
  for (const Index variable : head) {
    nonzeros += variable < columns.num_cols ? columns.start[variable + 1] - columns.start[variable] : 1;
  }
  fresh_nonzeros = factors.l_nonzeros + factors.u_nonzeros + factors.m;
  // The caller recomputes its primal and dual values with dense solves after every factorization.
  factor_work = counted + kFactorUnitsPerNonzero * nonzeros + kFactorUnitsPerRow * factors.m + 2 * fresh_nonzeros;
  past_factor_work += factor_work;
  work_at_update = total_work();
  baseline = excess = 0;
}

template <class Real>
void BasisLu<Real>::State::count_update() {
  ++num_updates;
  const Offset work = total_work() - work_at_update;
  work_at_update = total_work();
  if (num_updates <= kBaselineUpdates) {
    baseline += work;
  } else {
    excess = std::max<Offset>(0, excess + work - baseline / kBaselineUpdates);
  }
}

template <class Real>
BasisLu<Real>::BasisLu() : state_(std::make_unique<State>()) {}
template <class Real>
BasisLu<Real>::~BasisLu() = default;
template <class Real>
BasisLu<Real>::BasisLu(BasisLu&&) noexcept = default;
template <class Real>
BasisLu<Real>& BasisLu<Real>::operator=(BasisLu&&) noexcept = default;

template <class Real>
bool BasisLu<Real>::reserve(Index m, Offset basis_nonzeros, int steps) {
  const Offset slots = std::min(m + basis_nonzeros, kLargestEstimate);
  const Offset usual = kSmallestSpace + kSlotsPerNonzero * slots;
  const double wanted = static_cast<double>(usual) * std::pow(1.5, steps - kUsualSpaceSteps);
  return state_->factors.space.reserve(static_cast<Offset>(std::min(wanted, static_cast<double>(kLargestEstimate))));
}

template <class Real>
Offset BasisLu<Real>::factor_space() const {
  return state_->factors.space.size();
}

template <class Real>
void BasisLu<Real>::grow_space() {
  state_->factors.space.grow();
}

template <class Real>
Index BasisLu<Real>::growth_count() const {
  return state_->factors.space.growth_count();
}

template <class Real>
LuStatus BasisLu<Real>::factor(const ColumnView<Real>& columns, std::span<const Index> head, double markowitz,
                               const StopToken& stop) {
  LuPoll poll(stop);
  if (factor_space() == 0) reserve(columns.num_rows, columns.start[columns.num_cols]);
  const LuStatus status = state_->factor(columns, head, markowitz, poll);
  if (status == LuStatus::kOk) state_->finish_factor(columns, head, poll.work());
  return status;
}

template <class Real>
const std::vector<LuDeficiency>& BasisLu<Real>::deficiencies() const {
  return state_->deficiencies;
}

template <class Real>
void BasisLu<Real>::ftran(Scattered<Real>& x, bool save_for_update) {
  state_->solve.ftran(state_->factors, x, save_for_update ? &state_->spike : nullptr);
  if (save_for_update) state_->spike_valid = true;
}

template <class Real>
void BasisLu<Real>::ftran_pair(Scattered<Real>& x, bool save_x, Scattered<Real>& y) {
  state_->solve.ftran_pair(state_->factors, x, save_x ? &state_->spike : nullptr, y);
  if (save_x) state_->spike_valid = true;
}

// The transform of a unit vector by U is what an update of that position needs: kept, as simplex iterations compute
// the row of the leaving position anyway.
template <class Real>
void BasisLu<Real>::btran(Scattered<Real>& y) {
  const bool unit = !y.dense && y.index.size() == 1 && y.value[y.index[0]] == Real(1);
  if (unit) state_->unit_position = y.index[0];
  state_->solve.btran(state_->factors, y, unit ? &state_->unit_row : nullptr);
}

template <class Real>
LuUpdateStatus BasisLu<Real>::update(Index position, Real pivot) {
  State& s = *state_;
  if (!s.spike_valid) return LuUpdateStatus::kNeedsFactor;
  if (s.unit_position != position) s.solve.unit_row(s.factors, position, s.unit_row);
  const Real expected = pivot * s.factors.pivot_of_pos[position];
  s.spike_valid = false;
  s.unit_position = -1;
  const LuUpdateStatus status = s.update.run(s.factors, position, expected, s.spike, s.unit_row);
  if (status == LuUpdateStatus::kOk) s.count_update();
  return status;
}

template <class Real>
Index BasisLu<Real>::num_updates() const {
  return state_->num_updates;
}

template <class Real>
Offset BasisLu<Real>::factor_nonzeros() const {
  return state_->fresh_nonzeros;
}

template <class Real>
bool BasisLu<Real>::wants_refactor() const {
  return state_->excess > kFactorsSpared * state_->factor_work;
}

template <class Real>
Offset BasisLu<Real>::solve_work() const {
  return state_->total_work();
}

template <class Real>
Offset BasisLu<Real>::factor_work() const {
  return state_->past_factor_work;
}

template class BasisLu<double>;
template class BasisLu<Extended>;

}  // namespace zorvex

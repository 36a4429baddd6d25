#include "simplex/lu_update.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

template <class Real>
LuUpdateStatus LuUpdate<Real>::run(LuFactors<Real>& factors, Index position, Real expected,
                                   const LuEntries<Real>& spike, const LuEntries<Real>& unit_row) {
  using std::abs;
  using std::max;
  if (factors.space.available() < static_cast<Offset>(spike.index.size() + unit_row.index.size())) {
    return LuUpdateStatus::kNeedsFactor;
  }
  const Index row = factors.row_of_pos[position];
  const Real pivot = new_pivot(factors, row, spike, unit_row);
  const Real scale = max(abs(pivot), abs(expected));
  if (!(abs(pivot) >= LuTraits<Real>::kAbsolutePivot) ||
      !(abs(pivot - expected) <= LuTraits<Real>::kUpdateMismatch * scale)) {
    return LuUpdateStatus::kUnstable;
  }
  store_eta(factors, row, unit_row);
  remove_old(factors, row, position);
  insert_spike(factors, row, position, spike);
  factors.pivot_of_row[row] = pivot;
  factors.pivot_of_pos[position] = pivot;
  move_to_end(factors, row, position);
  return LuUpdateStatus::kOk;
}

// The multipliers that eliminate the row are -unit_row / unit_row[row]: U' y = e_position says that the combination of
// the rows of U with weights y vanishes off the pivot's column.
template <class Real>
Real LuUpdate<Real>::new_pivot(const LuFactors<Real>& factors, Index row, const LuEntries<Real>& spike,
                               const LuEntries<Real>& unit_row) {
  if (static_cast<Index>(work_vector_.size()) != factors.m) work_vector_.assign(factors.m, Real(0));
  for (std::size_t k = 0; k < unit_row.index.size(); ++k) work_vector_[unit_row.index[k]] = unit_row.value[k];
  Real sum = 0;
  for (std::size_t k = 0; k < spike.index.size(); ++k) sum += work_vector_[spike.index[k]] * spike.value[k];
  for (const Index i : unit_row.index) work_vector_[i] = Real(0);
  return sum * factors.pivot_of_row[row];
}

template <class Real>
void LuUpdate<Real>::store_eta(LuFactors<Real>& factors, Index row, const LuEntries<Real>& unit_row) {
  using std::abs;
  const Real old_pivot = factors.pivot_of_row[row];
  auto& space = factors.space;
  const Index begin = space.low();
  for (std::size_t k = 0; k < unit_row.index.size(); ++k) {
    const Real multiplier = -unit_row.value[k] * old_pivot;
    if (unit_row.index[k] == row || abs(multiplier) <= LuTraits<Real>::kTiny) continue;
    const Index slot = space.take_low(1);
    space.index()[slot] = unit_row.index[k];
    space.value()[slot] = multiplier;
  }
  if (space.low() > begin) factors.etas.push_back({row, {begin, space.low()}});
  work_ += static_cast<Offset>(unit_row.index.size());
}

template <class Real>
void LuUpdate<Real>::remove_old(LuFactors<Real>& factors, Index row, Index position) {
  Index* index = factors.space.index();
  Real* value = factors.space.value();
  const LuRange col = factors.u_col[row];
  for (Index k = col.begin; k < col.end; ++k) {
    const Index other = factors.pos_of_row[index[k]];
    work_ += factors.u_row.length(other);
    factors.u_row.remove(other, position);
  }
  const LuRange line = factors.u_row.range(position);
  for (Index k = line.begin; k < line.end; ++k) {
    LuRange& other = factors.u_col[factors.row_of_pos[factors.u_row.index()[k]]];
    work_ += other.length();
    Index slot = other.begin;
    while (index[slot] != row) ++slot;
    --other.end;
    index[slot] = index[other.end];
    value[slot] = value[other.end];
  }
  factors.u_nonzeros -= col.length() + line.length();
  factors.u_row.clear_line(position);
}

template <class Real>
void LuUpdate<Real>::insert_spike(LuFactors<Real>& factors, Index row, Index position, const LuEntries<Real>& spike) {
  using std::abs;
  auto& space = factors.space;
  Index count = 0;
  for (std::size_t k = 0; k < spike.index.size(); ++k) {
    count += spike.index[k] != row && abs(spike.value[k]) > LuTraits<Real>::kTiny;
  }
  Index slot = space.take_high(count);
  factors.u_col[row] = {slot, slot + count};
  for (std::size_t k = 0; k < spike.index.size(); ++k) {
    const Index i = spike.index[k];
    if (i == row || abs(spike.value[k]) <= LuTraits<Real>::kTiny) continue;
    space.index()[slot] = i;
    space.value()[slot++] = spike.value[k];
    const Index other = factors.pos_of_row[i];
    factors.u_row.push(other, position, spike.value[k]);
    if (factors.u_row_place[other] == LuFactors<Real>::kUnlisted) {
      factors.u_row_place[other] = static_cast<Index>(factors.u_row_order.size());
      factors.u_row_order.push_back(other);
    }
  }
  factors.u_nonzeros += count;
  work_ += 2 * count;
}

template <class Real>
void LuUpdate<Real>::move_to_end(LuFactors<Real>& factors, Index row, Index position) {
  Index& place = factors.u_row_place[position];
  if (place >= factors.m) {
    factors.u_row_tail[place - factors.m] = -1;
  } else if (place != LuFactors<Real>::kUnlisted) {
    factors.u_row_order[place] = -1;
  }
  place = factors.m + static_cast<Index>(factors.u_row_tail.size());
  factors.u_row_tail.push_back(position);
  factors.u_col_order.push_back(row);
}

template class LuUpdate<double>;
template class LuUpdate<Extended>;

}  // namespace zorvex

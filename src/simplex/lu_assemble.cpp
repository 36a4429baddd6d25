#include "simplex/lu_assemble.hpp"

#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

template <class Real>
LuStatus LuAssemble<Real>::run(const ColumnView<Real>& columns, std::span<const Index> head,
                               const LuNucleus<Real>& nucleus, LuFactors<Real>& factors) {
  if (!fill_u_columns(columns, head, nucleus, factors)) return LuStatus::kSpaceTooSmall;
  fill_u_rows(factors);
  transpose_l(factors);
  return LuStatus::kOk;
}

// A column of U is what the basis column has in rows of column singletons, plus its entries in nucleus rows of U.
// Columns are laid out in pivot order, so that a dense solve streams through them.
template <class Real>
bool LuAssemble<Real>::fill_u_columns(const ColumnView<Real>& columns, std::span<const Index> head,
                                      const LuNucleus<Real>& nucleus, LuFactors<Real>& factors) {
  using std::abs;
  count_.assign(factors.m, 0);
  for (const Index pos : nucleus.u_rows().index) ++count_[pos];
  auto& space = factors.space;
  for (const Index row : factors.order) {
    const Index pos = factors.pos_of_row[row];
    if (head[pos] >= columns.num_cols) continue;
    const Offset begin = columns.start[head[pos]];
    const Offset end = columns.start[head[pos] + 1];
    Index own = 0;
    for (Offset k = begin; k < end; ++k) {
      own += factors.is_column_singleton_row(columns.index[k]) && columns.index[k] != row &&
             abs(columns.value[k]) > LuTraits<Real>::kTiny;
    }
    if (space.available() < own + count_[pos] + factors.m) return false;
    Index slot = space.take_high(own + count_[pos]);
    factors.u_col[row].begin = slot;
    for (Offset k = begin; own > 0 && k < end; ++k) {
      if (!factors.is_column_singleton_row(columns.index[k]) || columns.index[k] == row ||
          abs(columns.value[k]) <= LuTraits<Real>::kTiny) {
        continue;
      }
      space.index()[slot] = columns.index[k];
      space.value()[slot] = columns.value[k];
      ++slot;
    }
    factors.u_col[row].end = slot;
  }
  const LuPivotRows<Real>& u = nucleus.u_rows();
  for (Index k = 0; k < static_cast<Index>(u.rows.size()); ++k) {
    const Index row = factors.order[nucleus.first_pivot() + k];
    const LuRange range = u.rows[k];
    for (Index e = range.begin; e < range.end; ++e) {
      const Index slot = factors.u_col[factors.row_of_pos[u.index[e]]].end++;
      space.index()[slot] = row;
      space.value()[slot] = u.value[e];
    }
  }
  return true;
}

template <class Real>
void LuAssemble<Real>::fill_u_rows(LuFactors<Real>& factors) {
  const auto& space = factors.space;
  count_.assign(factors.m, 0);
  Offset total = 0;
  for (const Index row : factors.order) {
    const LuRange range = factors.u_col[row];
    for (Index k = range.begin; k < range.end; ++k) ++count_[space.index()[k]];
    total += range.length();
  }
  factors.u_nonzeros = total;
  factors.u_row.reset(factors.m, total + total / 2 + factors.m);
  list_nodes(factors);
  for (const Index row : factors.order) {
    const Index pos = factors.pos_of_row[row];
    const LuRange range = factors.u_col[row];
    for (Index k = range.begin; k < range.end; ++k) {
      factors.u_row.append(factors.pos_of_row[space.index()[k]], pos, space.value()[k]);
    }
  }
}

template <class Real>
void LuAssemble<Real>::list_nodes(LuFactors<Real>& factors) {
  factors.u_col_order.clear();
  factors.u_row_order.clear();
  factors.u_row_tail.clear();
  factors.u_row_place.assign(factors.m, LuFactors<Real>::kUnlisted);
  for (const Index row : factors.order) {
    const Index pos = factors.pos_of_row[row];
    if (!factors.u_col[row].empty()) factors.u_col_order.push_back(row);
    factors.u_row.place(pos, count_[row]);
    if (count_[row] == 0) continue;
    factors.u_row_place[pos] = static_cast<Index>(factors.u_row_order.size());
    factors.u_row_order.push_back(pos);
  }
}

template <class Real>
void LuAssemble<Real>::transpose_l(LuFactors<Real>& factors) {
  const auto& space = factors.space;
  const Index total = space.low();
  factors.l_nonzeros = total;
  factors.l_row.assign(factors.m, LuRange{});
  factors.l_row_order.clear();
  if (total == 0) return;
  if (static_cast<Index>(factors.l_row_index.size()) < total) {
    factors.l_row_index.resize(total);
    factors.l_row_value.resize(total);
  }
  count_.assign(factors.m, 0);
  for (Index k = 0; k < total; ++k) ++count_[space.index()[k]];
  Index next = 0;
  for (const Index row : factors.order) {
    if (count_[row] == 0) continue;
    factors.l_row_order.push_back(row);
    factors.l_row[row] = {next, next};
    next += count_[row];
  }
  for (const Index row : factors.l_order) {
    const LuRange range = factors.l_col[row];
    for (Index k = range.begin; k < range.end; ++k) {
      const Index slot = factors.l_row[space.index()[k]].end++;
      factors.l_row_index[slot] = row;
      factors.l_row_value[slot] = space.value()[k];
    }
  }
}

template class LuAssemble<double>;
template class LuAssemble<Extended>;

}  // namespace zorvex

#include "model/model_data.hpp"

#include <algorithm>

namespace zorvex {

namespace {

double widen(double bound) {
  if (bound >= kStoredInfinity) return kInf;
  return bound <= -kStoredInfinity ? -kInf : bound;
}

}  // namespace

Interval ModelData::row_sides(Index row) const {
  const double side = user_rhs(row);
  switch (row_sense[row]) {
    case '=':
      return {side, side};
    case '>':
      return {widen(side), kInf};
    default:
      return {is_range(row) ? range_lower[row] : -kInf, widen(side)};
  }
}

Interval ModelData::column_bounds(Index col) const {
  Interval bounds{widen(lb[col]), widen(ub[col])};
  if (vtype[col] == 'B') {
    bounds.lower = std::max(bounds.lower, 0.0);
    bounds.upper = std::min(bounds.upper, 1.0);
  }
  return bounds;
}

bool ModelData::has_integers() const {
  return std::any_of(vtype.begin(), vtype.end(), [](char type) { return type != 'C' && type != 'S'; });
}

bool ModelData::is_mip() const {
  return !sos.empty() || std::any_of(vtype.begin(), vtype.end(), [](char type) { return type != 'C'; });
}

void to_stored_form(ModelData& data) {
  CompressedVectors& matrix = data.matrix;
  Offset out = 0;
  Offset first = 0;
  for (Index col = 0; col < matrix.size(); ++col) {
    const Offset last = matrix.end(col);
    for (Offset k = first; k < last; ++k) {
      if (matrix.value[k] == 0) continue;
      matrix.index[out] = matrix.index[k];
      matrix.value[out++] = data.row_sign(matrix.index[k]) * matrix.value[k];
    }
    first = last;
    matrix.start[col + 1] = out;
  }
  matrix.index.resize(static_cast<std::size_t>(out));
  matrix.value.resize(static_cast<std::size_t>(out));
  for (Index row = 0; row < data.num_rows(); ++row) data.rhs[row] *= data.row_sign(row);
  if (data.var_names.size() == 0) data.var_names.append_unnamed(data.num_cols());
  if (data.constr_names.size() == 0) data.constr_names.append_unnamed(data.num_rows());
}

RowForm range_row_form(double lower, double upper) {
  lower = stored_lower(lower);
  upper = stored_upper(upper);
  if (lower == upper) return {'=', upper, -kStoredInfinity};
  if (upper < kStoredInfinity) return {'<', upper, lower};
  if (lower > -kStoredInfinity) return {'>', lower, -kStoredInfinity};
  return {'<', kStoredInfinity, -kStoredInfinity};
}

}  // namespace zorvex

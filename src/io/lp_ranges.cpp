#include "io/lp_ranges.hpp"

#include <cmath>

namespace zorvex {

namespace {

// Marks the columns that sets or quadratic terms use.
std::vector<char> used_elsewhere(const ParsedModel& data) {
  std::vector<char> used(data.obj.size(), 0);
  for (const ParsedSos& set : data.sos) {
    for (const Index col : set.member) used[col] = 1;
  }
  for (const ParsedQuadraticTerm& term : data.quadratic) used[term.first] = used[term.second] = 1;
  return used;
}

bool is_range(const ParsedModel& data, const LpRangePair& pair) {
  const auto [row, col] = pair;
  const Offset only = data.start[col];
  return data.sense[row] == '=' && data.rhs[row] == 0 && data.vtype[col] == 'C' && data.obj[col] == 0 &&
         data.start[col + 1] == only + 1 && data.index[only] == row && data.value[only] == -1 &&
         std::isfinite(data.lower[col]) && std::isfinite(data.upper[col]) && data.lower[col] <= data.upper[col];
}

template <class T>
void keep(std::vector<T>* values, const std::vector<Index>& new_index) {
  for (std::size_t col = 0; col < new_index.size(); ++col) {
    if (new_index[col] >= 0) (*values)[new_index[col]] = (*values)[col];
  }
}

// `new_index`: of each column, -1 for those that go.
void renumber(const std::vector<Index>& new_index, Index num_left, ParsedModel* data) {
  NameTable names;
  Offset filled = 0;
  Offset begin = 0;
  for (Index col = 0; col < static_cast<Index>(new_index.size()); ++col) {
    const Offset end = data->start[col + 1];
    if (new_index[col] >= 0) {
      names.insert(data->cols[col]);
      for (Offset k = begin; k < end; ++k, ++filled) {
        data->index[filled] = data->index[k];
        data->value[filled] = data->value[k];
      }
      data->start[new_index[col] + 1] = filled;
    }
    begin = end;
  }
  data->cols = std::move(names);
  data->start.resize(static_cast<std::size_t>(num_left) + 1);
  data->index.resize(static_cast<std::size_t>(filled));
  data->value.resize(static_cast<std::size_t>(filled));
  for (std::vector<double>* values : {&data->obj, &data->lower, &data->upper}) {
    keep(values, new_index);
    values->resize(static_cast<std::size_t>(num_left));
  }
  keep(&data->vtype, new_index);
  data->vtype.resize(static_cast<std::size_t>(num_left));
  for (ParsedSos& set : data->sos) {
    for (Index& col : set.member) col = new_index[col];
  }
  for (ParsedQuadraticTerm& term : data->quadratic) {
    term.first = new_index[term.first];
    term.second = new_index[term.second];
  }
}

}  // namespace

void merge_lp_ranges(const std::vector<LpRangePair>& pairs, ParsedModel* data) {
  if (pairs.empty()) return;
  const std::vector<char> used = used_elsewhere(*data);
  std::vector<Index> new_index(data->obj.size(), 0);
  for (const LpRangePair& pair : pairs) {
    if (used[pair.col] || !is_range(*data, pair)) continue;
    data->ranges.push_back({pair.row, data->lower[pair.col], data->upper[pair.col]});
    new_index[pair.col] = -1;
  }
  Index num_left = 0;
  for (Index& index : new_index) {
    if (index >= 0) index = num_left++;
  }
  renumber(new_index, num_left, data);
}

}  // namespace zorvex

#include "io/mps_columns.hpp"

#include <algorithm>

namespace zorvex {

bool MpsColumns::select(std::string_view name, bool integer) {
  if (current_ >= 0 && data_->cols[current_] == name) return (data_->vtype[current_] == 'I') == integer;
  current_ = data_->cols.insert(name);
  is_late_ = current_ < static_cast<Index>(data_->obj.size());
  if (is_late_) {
    is_late_ = current_ != static_cast<Index>(data_->obj.size()) - 1;
    return (data_->vtype[current_] == 'I') == integer;
  }
  if (current_ > 0) data_->start.push_back(static_cast<Offset>(data_->index.size()));
  data_->obj.push_back(0);
  data_->vtype.push_back(integer ? 'I' : 'C');
  has_objective_.push_back(0);
  return true;
}

void MpsColumns::add(Index row, double value) {
  ++num_entries_;
  if (is_late_ || last_column_[row] == current_) {
    late_.push_back({current_, row, value});
    return;
  }
  last_column_[row] = current_;
  data_->index.push_back(row);
  data_->value.push_back(value);
}

void MpsColumns::add_objective(double value, std::string_view objective_name) {
  ++num_entries_;
  if (has_objective_[current_]) warn_duplicate(current_, objective_name);
  has_objective_[current_] = 1;
  data_->obj[current_] += value;
}

void MpsColumns::warn_duplicate(Index col, std::string_view row_name) {
  diagnostics_->warn(ReadWarning::kDuplicateNonzero,
                     format_text("Warning: duplicate nonzeros for column %s and row %s.\n",
                                 printable(data_->cols[col]).c_str(), printable(row_name).c_str()));
}

void MpsColumns::finish() {
  const auto num_cols = static_cast<Index>(data_->obj.size());
  if (num_cols > 0) data_->start.push_back(static_cast<Offset>(data_->index.size()));
  if (late_.empty()) return;
  std::stable_sort(late_.begin(), late_.end(), [](const Late& a, const Late& b) { return a.col < b.col; });

  ParsedModel merged;
  merged.index.reserve(data_->index.size() + late_.size());
  merged.value.reserve(data_->index.size() + late_.size());
  std::vector<Offset> position(last_column_.size(), -1);  // per row: where its last entry stands in `merged`
  std::size_t next = 0;
  for (Index col = 0; col < num_cols; ++col) {
    const auto first = static_cast<Offset>(merged.index.size());
    for (Offset k = data_->start[col]; k < data_->start[col + 1]; ++k) {
      position[data_->index[k]] = static_cast<Offset>(merged.index.size());
      merged.index.push_back(data_->index[k]);
      merged.value.push_back(data_->value[k]);
    }
    for (; next < late_.size() && late_[next].col == col; ++next) {
      const Index row = late_[next].row;
      if (position[row] >= first) {
        warn_duplicate(col, data_->rows[row]);
        merged.value[position[row]] += late_[next].value;
        continue;
      }
      position[row] = static_cast<Offset>(merged.index.size());
      merged.index.push_back(row);
      merged.value.push_back(late_[next].value);
    }
    merged.start.push_back(static_cast<Offset>(merged.index.size()));
  }
  data_->start = std::move(merged.start);
  data_->index = std::move(merged.index);
  data_->value = std::move(merged.value);
}

}  // namespace zorvex

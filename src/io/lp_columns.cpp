#include "io/lp_columns.hpp"

#include <algorithm>

namespace zorvex {

Index LpColumns::column(std::string_view name, const NameTable::Key& key) {
  const Index col = data_->cols.insert(name, key);
  if (static_cast<std::size_t>(col) < given_.size()) return col;
  given_.push_back(0);
  data_->obj.push_back(0);
  data_->lower.push_back(0);
  data_->upper.push_back(kInf);
  return col;
}

void LpColumns::add_row(const LpExpression& expression) {
  for (const LpExpression::Term& term : expression.terms()) {
    if (term.value == 0) continue;
    index_.push_back(term.col);
    value_.push_back(term.value);
  }
  row_start_.push_back(num_nonzeros());
}

void LpColumns::finish() {
  settle_types();
  transpose();
}

// A binary variable keeps given bounds as far as they lie in [0, 1].
void LpColumns::settle_types() {
  data_->vtype.assign(given_.size(), 'C');
  for (Index col = 0; col < size(); ++col) {
    const bool binary = has(col, kBinary);
    const bool integer = binary || has(col, kGeneral);
    if (binary) {
      data_->lower[col] = std::max(data_->lower[col], 0.0);
      data_->upper[col] = std::min(data_->upper[col], 1.0);
    }
    if (has(col, kSemicontinuous)) {
      data_->vtype[col] = integer ? 'N' : 'S';
    } else if (integer) {
      data_->vtype[col] = binary ? 'B' : 'I';
    }
  }
}

void LpColumns::transpose() {
  std::vector<Offset>& start = data_->start;
  start.assign(given_.size() + 1, 0);
  for (const Index col : index_) ++start[col + 1];
  for (std::size_t col = 0; col < given_.size(); ++col) start[col + 1] += start[col];
  data_->index.resize(index_.size());
  data_->value.resize(index_.size());
  std::vector<Offset> next(start.begin(), start.end() - 1);
  for (Index row = 0; row + 1 < static_cast<Index>(row_start_.size()); ++row) {
    for (Offset k = row_start_[row]; k < row_start_[row + 1]; ++k) {
      const Offset at = next[index_[k]]++;
      data_->index[at] = row;
      data_->value[at] = value_[k];
    }
  }
}

}  // namespace zorvex

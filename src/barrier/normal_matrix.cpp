#include "barrier/normal_matrix.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "base/tolerances.hpp"

namespace zorvex {

namespace {
constexpr int kRowsPerTask = 512;
}  // namespace

NormalMatrix::NormalMatrix(const BarrierModel& model, const std::vector<char>& kept) : model_(model) {
  position_.assign(kept.size(), -1);
  for (Index col = 0; col < model.num_cols(); ++col) {
    if (!kept[col]) continue;
    position_[col] = num_kept();
    kept_.push_back(col);
  }
  place_in_col_.resize(model.by_row.index.size());
  std::vector<Offset> next(model.matrix.start.begin(), model.matrix.start.end() - 1);
  for (Index row = 0; row < model.num_rows(); ++row) {
    for (Offset k = model.by_row.begin(row); k < model.by_row.end(row); ++k) {
      place_in_col_[k] = next[model.by_row.index[k]]++;
      assert(model.matrix.index[place_in_col_[k]] == row);
    }
  }
  lower_.num_rows = num_kept() + model.num_rows();
  add_kept_columns();
  add_rows();
  lower_.value.assign(lower_.index.size(), 0);
  sign_.assign(static_cast<std::size_t>(lower_.num_rows), 1);
  std::fill_n(sign_.begin(), kept_.size(), static_cast<std::int8_t>(-1));
  smallest_.assign(sign_.size(), 0);
}

double NormalMatrix::assembly_work(const BarrierModel& model, const std::vector<char>& kept) {
  double work = 0;
  for (Index col = 0; col < model.num_cols(); ++col) {
    const double length = model.matrix.col_length(col);
    if (!kept[col]) work += length * (length + 1) / 2;
  }
  return work;
}

// Diagonal first, then the kept part of Q, then the column's entries of A.
void NormalMatrix::add_kept_columns() {
  std::vector<Index> rows;
  for (const Index col : kept_) {
    rows.assign(1, position_[col]);
    if (col < model_.quadratic.num_cols) {
      for (Offset k = model_.quadratic.begin(col); k < model_.quadratic.end(col); ++k) {
        const Index other = model_.quadratic.index[k];
        if (other != col) rows.push_back(position_[other]);
      }
    }
    for (Offset k = model_.matrix.begin(col); k < model_.matrix.end(col); ++k) {
      rows.push_back(num_kept() + model_.matrix.index[k]);
    }
    lower_.index.insert(lower_.index.end(), rows.begin(), rows.end());
    lower_.start.push_back(static_cast<Offset>(lower_.index.size()));
    ++lower_.num_cols;
  }
}

void NormalMatrix::add_rows() {
  std::vector<Index> mark(static_cast<std::size_t>(model_.num_rows()), -1);
  for (Index row = 0; row < model_.num_rows(); ++row) {
    mark[row] = row;
    lower_.index.push_back(num_kept() + row);
    const std::size_t first = lower_.index.size();
    for (Offset k = model_.by_row.begin(row); k < model_.by_row.end(row); ++k) {
      const Index col = model_.by_row.index[k];
      if (position_[col] != -1) continue;
      for (Offset e = place_in_col_[k] + 1; e < model_.matrix.end(col); ++e) {
        const Index other = model_.matrix.index[e];
        if (mark[other] == row) continue;
        mark[other] = row;
        lower_.index.push_back(num_kept() + other);
      }
    }
    std::sort(lower_.index.begin() + static_cast<Offset>(first), lower_.index.end());
    normal_nonzeros_ += 1 + 2 * static_cast<double>(lower_.index.size() - first);
    lower_.start.push_back(static_cast<Offset>(lower_.index.size()));
    ++lower_.num_cols;
  }
}

void NormalMatrix::assemble(const std::vector<double>& hessian, double regularization, WorkerPool& pool) {
  for (const Index col : kept_) {
    Offset at = lower_.begin(position_[col]);
    lower_.value[at++] = -hessian[col];
    if (col < model_.quadratic.num_cols) {
      for (Offset k = model_.quadratic.begin(col); k < model_.quadratic.end(col); ++k) {
        if (model_.quadratic.index[k] != col) lower_.value[at++] = -model_.quadratic.value[k];
      }
    }
    for (Offset k = model_.matrix.begin(col); k < model_.matrix.end(col); ++k) {
      lower_.value[at++] = model_.matrix.value[k];
    }
  }
  std::vector<double> inverse(hessian.size());
  for (std::size_t j = 0; j < hessian.size(); ++j) inverse[j] = 1 / hessian[j];
  sums_.resize(static_cast<std::size_t>(pool.size()));
  for (auto& sum : sums_) sum.resize(static_cast<std::size_t>(model_.num_rows()), 0);
  const int tasks = (model_.num_rows() + kRowsPerTask - 1) / kRowsPerTask;
  pool.run(tasks, [&](int task, int worker) {
    const Index end = std::min(model_.num_rows(), (task + 1) * kRowsPerTask);
    for (Index row = task * kRowsPerTask; row < end; ++row) assemble_row(row, inverse, sums_[worker]);
  });
  regularize(inverse, regularization);
}

// A kept column that is eliminated early adds to its rows what later pivots take off again: the rounding errors of a
// diagonal are those of all columns together.
void NormalMatrix::regularize(const std::vector<double>& inverse, double regularization) {
  std::vector<double> size(static_cast<std::size_t>(model_.num_rows()), 0);
  for (const Index col : kept_) {
    const Index position = position_[col];
    smallest_[position] = BarrierTolerances::kDeadPivot * std::abs(lower_.value[lower_.begin(position)]);
    for (Offset k = model_.matrix.begin(col); k < model_.matrix.end(col); ++k) {
      size[model_.matrix.index[k]] += model_.matrix.value[k] * model_.matrix.value[k] * inverse[col];
    }
  }
  for (Index row = 0; row < model_.num_rows(); ++row) {
    const Index position = num_kept() + row;
    double& diagonal = lower_.value[lower_.begin(position)];
    size[row] += diagonal;
    smallest_[position] = BarrierTolerances::kDeadPivot * size[row];
    diagonal += BarrierTolerances::kRowNoise * size[row] +
                (diagonal == 0 ? 1 : BarrierTolerances::kRegularizedShare) * regularization;
  }
}

// Row of the lower triangle; `sum` is zero before and after.
void NormalMatrix::assemble_row(Index row, const std::vector<double>& inverse, std::vector<double>& sum) {
  const SparseMatrix& matrix = model_.matrix;
  for (Offset k = model_.by_row.begin(row); k < model_.by_row.end(row); ++k) {
    const Index col = model_.by_row.index[k];
    if (position_[col] != -1) continue;
    const double factor = model_.by_row.value[k] * inverse[col];
    for (Offset e = place_in_col_[k]; e < matrix.end(col); ++e) sum[matrix.index[e]] += factor * matrix.value[e];
  }
  const Index at = num_kept() + row;
  for (Offset k = lower_.begin(at); k < lower_.end(at); ++k) {
    double& entry = sum[lower_.index[k] - num_kept()];
    lower_.value[k] = entry;
    entry = 0;
  }
}

}  // namespace zorvex

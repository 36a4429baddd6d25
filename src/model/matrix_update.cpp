#include "model/matrix_update.hpp"

namespace zorvex {

namespace {

void number_kept(const DeletionMarks& marks, Index total, std::vector<char>& keep, std::vector<Index>& renumbered,
                 Index& kept) {
  keep.assign(static_cast<std::size_t>(total), 1);
  renumbered.resize(static_cast<std::size_t>(total));
  kept = 0;
  const auto stored = static_cast<Index>(marks.word.size());
  for (Index i = 0; i < total; ++i) {
    if (i < stored && marks.marked(i)) keep[i] = 0;
    renumbered[i] = keep[i] ? kept++ : -1;
  }
}

// Positions of the coefficient changes, grouped by column in the order they were made.
struct ChangesByColumn {
  std::vector<Offset> start;
  std::vector<Offset> position;

  ChangesByColumn(const std::vector<CoefficientChange>& changes, Index num_cols)
      : start(static_cast<std::size_t>(num_cols) + 1, 0), position(changes.size()) {
    for (const CoefficientChange& change : changes) ++start[change.col + 1];
    for (Index col = 0; col < num_cols; ++col) start[col + 1] += start[col];
    std::vector<Offset> next(start.begin(), start.end() - 1);
    for (std::size_t k = 0; k < changes.size(); ++k) position[next[changes[k].col]++] = static_cast<Offset>(k);
  }
};

// Assembles the new matrix column by column.
class MatrixBuilder {
 public:
  MatrixBuilder(const PendingChanges& changes, const Renumbering& plan, Offset room)
      : changes_(changes),
        plan_(plan),
        by_column_(changes.coefficients, changes.total_cols()),
        winner_(changes.coefficients.empty() ? 0 : static_cast<std::size_t>(changes.total_rows()), kNone) {
    result_.start.reserve(static_cast<std::size_t>(plan.cols) + 1);
    result_.index.reserve(static_cast<std::size_t>(room));
    result_.value.reserve(static_cast<std::size_t>(room));
  }

  void begin_column(Index col) {
    col_ = col;
    for (Offset k = by_column_.start[col]; k < by_column_.start[col + 1]; ++k) {
      const Offset change = by_column_.position[k];
      winner_[changes_.coefficients[change].row] = change;
    }
  }

  // `stored` is the value with the row's new sign, had it not been changed.
  void entry(Index row, double stored) {
    if (!winner_.empty() && winner_[row] != kNone) {
      stored = plan_.row_sign[row] * changes_.coefficients[winner_[row]].value;
      winner_[row] = kNone;
    }
    push(row, stored);
  }

  // Changes that met no entry make new ones, in the order of the first change of each.
  void end_column() {
    for (Offset k = by_column_.start[col_]; k < by_column_.start[col_ + 1]; ++k) {
      const Index row = changes_.coefficients[by_column_.position[k]].row;
      if (winner_[row] == kNone) continue;
      push(row, plan_.row_sign[row] * changes_.coefficients[winner_[row]].value);
      winner_[row] = kNone;
    }
    result_.start.push_back(static_cast<Offset>(result_.index.size()));
  }

  CompressedVectors take() { return std::move(result_); }

 private:
  static constexpr Offset kNone = -1;

  void push(Index row, double value) {
    if (plan_.new_row[row] < 0 || value == 0) return;
    result_.index.push_back(plan_.new_row[row]);
    result_.value.push_back(value);
  }

  const PendingChanges& changes_;
  const Renumbering& plan_;
  ChangesByColumn by_column_;
  std::vector<Offset> winner_;  // by row: last change of the current column not yet applied
  CompressedVectors result_;
  Index col_ = 0;
};

}  // namespace

Renumbering plan_renumbering(const ModelData& data, const PendingChanges& changes) {
  Renumbering plan;
  number_kept(changes.del_rows, changes.total_rows(), plan.keep_row, plan.new_row, plan.rows);
  number_kept(changes.del_cols, changes.total_cols(), plan.keep_col, plan.new_col, plan.cols);
  plan.row_sign.resize(static_cast<std::size_t>(changes.total_rows()));
  for (Index row = 0; row < changes.num_rows; ++row) plan.row_sign[row] = data.row_sign(row);
  for (const ValueChange<char>& change : changes.sense) plan.row_sign[change.index] = change.value == '>' ? -1.0 : 1.0;
  for (Index row = changes.num_rows; row < changes.total_rows(); ++row) {
    plan.row_sign[row] = changes.new_rows.sense[row - changes.num_rows] == '>' ? -1.0 : 1.0;
  }
  plan.flip.resize(static_cast<std::size_t>(changes.num_rows));
  for (Index row = 0; row < changes.num_rows; ++row) plan.flip[row] = plan.row_sign[row] * data.row_sign(row);
  return plan;
}

CompressedVectors rebuild_matrix(const CompressedVectors& old, const PendingChanges& changes, const Renumbering& plan) {
  const CompressedVectors& new_cols = changes.new_cols.entries;
  const CompressedVectors added = transpose(changes.new_rows.entries, changes.total_cols());  // entries of new rows
  MatrixBuilder builder(changes, plan,
                        old.num_nonzeros() + new_cols.num_nonzeros() + added.num_nonzeros() +
                            static_cast<Offset>(changes.coefficients.size()));
  for (Index col = 0; col < changes.total_cols(); ++col) {
    if (!plan.keep_col[col]) continue;
    builder.begin_column(col);
    if (col < changes.num_cols) {
      for (Offset k = old.begin(col); k < old.end(col); ++k) {
        builder.entry(old.index[k], plan.flip[old.index[k]] * old.value[k]);
      }
    } else {
      const Index added_col = col - changes.num_cols;
      for (Offset k = new_cols.begin(added_col); k < new_cols.end(added_col); ++k) {
        builder.entry(new_cols.index[k], plan.row_sign[new_cols.index[k]] * new_cols.value[k]);
      }
    }
    for (Offset k = added.begin(col); k < added.end(col); ++k) {
      const Index row = changes.num_rows + added.index[k];
      builder.entry(row, plan.row_sign[row] * added.value[k]);
    }
    builder.end_column();
  }
  return builder.take();
}

CompressedVectors transpose(const CompressedVectors& vectors, Index num_rows) {
  CompressedVectors result;
  result.start.assign(static_cast<std::size_t>(num_rows) + 1, 0);
  result.index.resize(vectors.index.size());
  result.value.resize(vectors.value.size());
  for (const Index row : vectors.index) ++result.start[row + 1];
  for (Index row = 0; row < num_rows; ++row) result.start[row + 1] += result.start[row];
  std::vector<Offset> next(result.start.begin(), result.start.end() - 1);
  for (Index k = 0; k < vectors.size(); ++k) {
    for (Offset entry = vectors.begin(k); entry < vectors.end(k); ++entry) {
      const Offset slot = next[vectors.index[entry]]++;
      result.index[slot] = k;
      result.value[slot] = vectors.value[entry];
    }
  }
  return result;
}

}  // namespace zorvex

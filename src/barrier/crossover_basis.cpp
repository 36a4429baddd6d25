#include "barrier/crossover_basis.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zorvex {

namespace {

constexpr double kQuickThreshold = 0.1;    // pivots relative to the largest weighted entry of their row
constexpr double kCarefulThreshold = 0.5;  // the same when careful
// Weights of the columns with the largest and the smallest margin. Entries of weighted columns below the
// factorization's absolute tolerance are no pivots: with weights near one, columns that depend on others but for the
// sixth digit would get into the basis and take the point far away.
constexpr double kMostWeight = 0x1p-13;
constexpr double kLeastWeight = 0x1p-33;

// The columns off their bounds, those with the largest margins first.
template <class Real>
std::vector<Index> list_candidates(const CrossoverSides<Real>& sides) {
  std::vector<Index> list;
  for (std::size_t var = 0; var < sides.side.size(); ++var) {
    if (sides.side[var] == Side::kOff) list.push_back(static_cast<Index>(var));
  }
  std::stable_sort(list.begin(), list.end(), [&](Index a, Index b) { return sides.margin[a] > sides.margin[b]; });
  return list;
}

// Copies of the candidates' columns, each times its weight, padded with empty columns up to the number of rows and read
// as a matrix with as many rows as columns.
template <class Real>
class CandidateMatrix {
 public:
  CandidateMatrix(const SimplexCore<Real>& core, std::size_t columns)
      : num_rows_(core.m), size_(std::max(core.m, static_cast<Index>(columns))) {
    start_.reserve(static_cast<std::size_t>(size_) + 1);
  }

  void append(const SimplexCore<Real>& core, Index var, Real weight) {
    if (var >= core.n) {
      index_.push_back(var - core.n);
      value_.push_back(weight);
    } else {
      for (Offset k = core.col_start[var]; k < core.col_start[var + 1]; ++k) {
        index_.push_back(core.row_index[k]);
        value_.push_back(core.matrix_value[k] * weight);
      }
    }
    start_.push_back(static_cast<Offset>(index_.size()));
  }
  void pad() { start_.resize(static_cast<std::size_t>(size_) + 1, start_.back()); }

  [[nodiscard]] Index num_rows() const { return num_rows_; }
  [[nodiscard]] Index size() const { return size_; }
  [[nodiscard]] ColumnView<Real> view() const { return {size_, size_, start_.data(), index_.data(), value_.data()}; }

 private:
  Index num_rows_, size_;
  std::vector<Offset> start_{0};
  std::vector<Index> index_;
  std::vector<Real> value_;
};

// Weights fall with the rank of the margin, in powers of two.
template <class Real>
Real weight_of_rank(std::size_t rank, std::size_t count) {
  const double share = static_cast<double>(rank) / static_cast<double>(count);
  return Real(std::exp2(std::round(std::log2(kMostWeight) + share * std::log2(kLeastWeight / kMostWeight))));
}

// Factors the columns of `kept`; those that depend on others leave it. `open_rows` are the rows without a pivot.
template <class Real>
LuStatus independent_columns(const CandidateMatrix<Real>& matrix, double threshold, const StopToken& stop,
                             std::vector<std::size_t>& kept, std::vector<Index>& open_rows) {
  std::vector<Index> head(static_cast<std::size_t>(matrix.size()));
  std::iota(head.begin(), head.end(), 0);
  BasisLu<Real> lu;
  LuStatus status = LuStatus::kSpaceTooSmall;
  while (status == LuStatus::kSpaceTooSmall) {
    status = lu.factor(matrix.view(), head, threshold, stop);
    if (status == LuStatus::kSpaceTooSmall) lu.grow_space();
  }
  open_rows.clear();
  if (status == LuStatus::kOk || status == LuStatus::kInterrupted) return status;
  std::vector<char> lost(static_cast<std::size_t>(matrix.size()), 0);
  for (const LuDeficiency& deficiency : lu.deficiencies()) {
    lost[deficiency.position] = 1;
    if (deficiency.row < matrix.num_rows()) open_rows.push_back(deficiency.row);
  }
  std::size_t left = 0;
  for (std::size_t k = 0; k < kept.size(); ++k) {
    if (!lost[k]) kept[left++] = kept[k];
  }
  kept.resize(left);
  return status;
}

}  // namespace

// As many candidates at a time as there are rows: with all of them at once the rows of degenerate models are so long
// that the search for pivots takes most of the crossover's time (qap15: 136 of 161 s, this way 11). When none of a
// batch finds a place, those farther down would hardly do.
template <class Real>
CrossoverBasis<Real> choose_crossover_basis(const SimplexCore<Real>& core, const CrossoverSides<Real>& sides,
                                            bool careful, const StopToken& stop) {
  CrossoverBasis<Real> result;
  const std::vector<Index> candidates = list_candidates(sides);
  const auto weight = [&](std::size_t rank) { return weight_of_rank<Real>(rank, candidates.size()); };
  const double threshold = careful ? kCarefulThreshold : kQuickThreshold;
  const auto batch = static_cast<std::size_t>(core.m);
  std::vector<std::size_t> kept;  // ranks
  std::vector<Index> open_rows;
  bool grows = true;
  for (std::size_t begin = 0; begin < candidates.size() && kept.size() < batch && grows; begin += batch) {
    const std::size_t before = kept.size();
    for (std::size_t rank = begin; rank < std::min(candidates.size(), begin + batch); ++rank) kept.push_back(rank);
    CandidateMatrix<Real> matrix(core, kept.size());
    for (const std::size_t rank : kept) matrix.append(core, candidates[rank], weight(rank));
    matrix.pad();
    const LuStatus status = independent_columns(matrix, threshold, stop, kept, open_rows);
    if (status == LuStatus::kInterrupted) {
      result.stopped = true;
      return result;
    }
    grows = kept.size() > before;
  }
  if (candidates.empty()) {
    for (Index row = 0; row < core.m; ++row) open_rows.push_back(row);
  }
  result.basic.assign(static_cast<std::size_t>(core.num_vars()), 0);
  for (const std::size_t rank : kept) result.basic[candidates[rank]] = 1;
  for (const Index row : open_rows) result.basic[core.n + row] = 1;
  result.placed = static_cast<Index>(kept.size());
  result.dropped = static_cast<Index>(candidates.size()) - result.placed;
  return result;
}

template struct CrossoverBasis<double>;
template struct CrossoverBasis<Extended>;
template CrossoverBasis<double> choose_crossover_basis(const SimplexCore<double>&, const CrossoverSides<double>&, bool,
                                                       const StopToken&);
template CrossoverBasis<Extended> choose_crossover_basis(const SimplexCore<Extended>&, const CrossoverSides<Extended>&,
                                                         bool, const StopToken&);

}  // namespace zorvex

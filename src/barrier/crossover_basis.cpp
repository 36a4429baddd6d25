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
  CandidateMatrix(const SimplexCore<Real>& core, const std::vector<Index>& candidates) {
    Offset nonzeros = 0;
    for (const Index var : candidates) nonzeros += var < core.n ? core.col_start[var + 1] - core.col_start[var] : 1;
    size_ = std::max(core.m, static_cast<Index>(candidates.size()));
    start_.reserve(static_cast<std::size_t>(size_) + 1);
    index_.reserve(static_cast<std::size_t>(nonzeros));
    value_.reserve(static_cast<std::size_t>(nonzeros));
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

  [[nodiscard]] Index size() const { return size_; }
  [[nodiscard]] ColumnView<Real> view() const { return {size_, size_, start_.data(), index_.data(), value_.data()}; }

 private:
  Index size_ = 0;
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

}  // namespace

template <class Real>
CrossoverBasis<Real> choose_crossover_basis(const SimplexCore<Real>& core, const CrossoverSides<Real>& sides,
                                            bool careful, const StopToken& stop) {
  CrossoverBasis<Real> result;
  result.basic.assign(static_cast<std::size_t>(core.num_vars()), 0);
  const std::vector<Index> candidates = list_candidates(sides);
  CandidateMatrix<Real> matrix(core, candidates);
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    matrix.append(core, candidates[k], weight_of_rank<Real>(k, candidates.size()));
  }
  matrix.pad();
  std::vector<Index> head(static_cast<std::size_t>(matrix.size()));
  std::iota(head.begin(), head.end(), 0);
  BasisLu<Real> lu;
  LuStatus status = LuStatus::kSpaceTooSmall;
  while (status == LuStatus::kSpaceTooSmall) {
    status = lu.factor(matrix.view(), head, careful ? kCarefulThreshold : kQuickThreshold, stop);
    if (status == LuStatus::kSpaceTooSmall) lu.grow_space();
  }
  if (status == LuStatus::kInterrupted) {
    result.stopped = true;
    return result;
  }
  for (const Index var : candidates) result.basic[var] = 1;
  result.placed = static_cast<Index>(candidates.size());
  if (status == LuStatus::kOk) return result;
  for (const LuDeficiency& lost : lu.deficiencies()) {
    if (lost.position < static_cast<Index>(candidates.size())) {
      result.basic[candidates[lost.position]] = 0;
      --result.placed;
      ++result.dropped;
    }
  }
  for (const LuDeficiency& lost : lu.deficiencies()) {
    if (lost.row < core.m) result.basic[core.n + lost.row] = 1;
  }
  return result;
}

template struct CrossoverBasis<double>;
template struct CrossoverBasis<Extended>;
template CrossoverBasis<double> choose_crossover_basis(const SimplexCore<double>&, const CrossoverSides<double>&, bool,
                                                       const StopToken&);
template CrossoverBasis<Extended> choose_crossover_basis(const SimplexCore<Extended>&, const CrossoverSides<Extended>&,
                                                         bool, const StopToken&);

}  // namespace zorvex

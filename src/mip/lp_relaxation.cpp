#include "mip/lp_relaxation.hpp"

#include <algorithm>

namespace zorvex {

LpRelaxation::LpRelaxation(const SearchModel& model, const SimplexOptions& options, LogSink& log)
    : model_(&model), options_(options), lp_(model.lp, options, log) {}

void LpRelaxation::sync_bounds(Domain& domain) {
  const auto mirror = [&](Index col) {
    if (!model_->branchable[col]) return;
    const LpData& data = lp_.data();
    if (data.col_lower[col] != domain.lower(col) || data.col_upper[col] != domain.upper(col)) {
      lp_.set_col_bounds(col, domain.lower(col), domain.upper(col));
    }
  };
  for (const Index col : domain.take_changed()) mirror(col);
}

SolveStatus LpRelaxation::solve(const SimplexLimits& limits, const StopToken& stop) {
  SolveStatus status = lp_.solve(limits, stop);
  if (status == SolveStatus::kNumeric) {
    lp_.reset_to_slack_basis();
    status = lp_.solve(limits, stop);
  }
  return status;
}

SolveStatus LpRelaxation::solve_by(LpEngine& engine, const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  const EngineAnswer answer = engine.solve(lp_.data(), limits, stop, log);
  engine_iterations_ += answer.iterations;
  barrier_iterations_ += answer.barrier_iterations;
  if (!answer.basis.empty()) lp_.set_basis(answer.basis);
  SimplexLimits rest = limits;
  rest.iterations -= answer.iterations;
  return solve(rest, stop);
}

void LpRelaxation::set_algorithm(SimplexAlgorithm algorithm) {
  options_.algorithm = algorithm;
  lp_.set_options(options_);
}

std::shared_ptr<const PackedBasis> LpRelaxation::save_basis() const {
  return std::make_shared<const PackedBasis>(lp_.basis(), model_->num_rows(), cut_ids_);
}

void LpRelaxation::load_basis(const PackedBasis& basis) { lp_.set_basis(basis.unpack(cut_ids_)); }

void LpRelaxation::add_cuts(const CutPool& pool, const std::vector<std::int64_t>& ids) {
  SparseMatrix rows;
  rows.num_rows = model_->num_cols();
  std::vector<double> lower;
  std::vector<double> upper;
  for (const std::int64_t id : ids) {
    const Cut& cut = pool.cut(id);
    rows.append_col(cut.index.data(), cut.value.data(), static_cast<Index>(cut.index.size()));
    lower.push_back(-kInf);
    upper.push_back(cut.rhs);
    cut_ids_.push_back(id);
  }
  lp_.add_rows(rows, lower, upper);
}

std::size_t LpRelaxation::remove_slack_cuts(CutPool& pool, int max_age) {
  const auto m = static_cast<std::size_t>(model_->num_rows());
  const Basis basis = lp_.basis();
  std::vector<char> drop(m + cut_ids_.size(), 0);
  std::size_t kept = 0;
  std::size_t dropped = 0;
  for (std::size_t k = 0; k < cut_ids_.size(); ++k) {
    Cut& cut = pool.cut(cut_ids_[k]);
    cut.age = basis.row[m + k] == BasisStatus::kBasic ? cut.age + 1 : 0;
    if (cut.age > max_age && !cut.pinned) {
      drop[m + k] = 1;
      ++dropped;
      pool.remove(cut_ids_[k]);
    } else {
      cut_ids_[kept++] = cut_ids_[k];
    }
  }
  cut_ids_.resize(kept);
  if (dropped > 0) lp_.delete_rows(drop);
  return dropped;
}

void LpRelaxation::drop_cuts(CutPool& pool) {
  const auto m = static_cast<std::size_t>(model_->num_rows());
  std::vector<char> drop(m + cut_ids_.size(), 0);
  std::size_t kept = 0;
  for (std::size_t k = 0; k < cut_ids_.size(); ++k) {
    if (pool.cut(cut_ids_[k]).pinned) {
      cut_ids_[kept++] = cut_ids_[k];
      continue;
    }
    drop[m + k] = 1;
    pool.remove(cut_ids_[k]);
  }
  if (kept < cut_ids_.size()) lp_.delete_rows(drop);
  cut_ids_.resize(kept);
}

}  // namespace zorvex

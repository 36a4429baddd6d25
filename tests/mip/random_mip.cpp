#include "mip/random_mip.hpp"

#include <algorithm>
#include <cmath>
#include <functional>

#include "barrier/barrier_engine.hpp"
#include "barrier/convexity.hpp"
#include "base/quality.hpp"
#include "simplex/lp_driver.hpp"
#include "support/convex_q.hpp"
#include "support/dense_lp.hpp"
#include "support/problem_view.hpp"

namespace zorvex::testing {

namespace {

VarType random_type(RandomStream& random, const RandomMipShape& shape) {
  const bool integer = random.uniform() < shape.integer_share;
  if (random.uniform() < shape.semi_share) return integer ? VarType::kSemiInteger : VarType::kSemiContinuous;
  if (!integer) return VarType::kContinuous;
  return random.uniform() < 0.6 ? VarType::kBinary : VarType::kInteger;
}

void add_column(RandomStream& random, const RandomMipShape& shape, MipProblem& problem) {
  const VarType type = random_type(random, shape);
  double lower = 0;
  double upper = 1;
  if (type == VarType::kInteger) {
    lower = static_cast<double>(random.below(4)) - 2;
    upper = lower + static_cast<double>(random.below(4));
  } else if (type == VarType::kContinuous) {
    lower = static_cast<double>(random.below(5)) - 2;
    upper = random.uniform() < shape.unbounded_share ? kInf : lower + static_cast<double>(random.below(7)) / 2;
  } else if (type != VarType::kBinary) {
    lower = static_cast<double>(1 + random.below(3));
    upper = lower + static_cast<double>(random.below(3));
    if (type == VarType::kSemiContinuous && random.uniform() < 0.2) upper = kInf;
  }
  problem.type.push_back(type);
  problem.lp.col_lower.push_back(lower);
  problem.lp.col_upper.push_back(upper);
  problem.lp.cost.push_back(static_cast<double>(random.below(13)) - 6);
}

void add_rows(RandomStream& random, const RandomMipShape& shape, MipProblem& problem) {
  const Index rows = static_cast<Index>(random.below(shape.max_rows + 1));
  const auto n = static_cast<Index>(problem.type.size());
  const bool real = random.uniform() < 0.3;
  SparseMatrix by_row;
  by_row.num_rows = n;
  for (Index row = 0; row < rows; ++row) {
    std::vector<Index> index;
    std::vector<double> value;
    double centre = 0;
    for (Index col = 0; col < n; ++col) {
      if (random.uniform() > 0.6) continue;
      double a = static_cast<double>(random.below(15)) - 6;
      if (real) a += random.uniform();
      if (a == 0) continue;
      index.push_back(col);
      value.push_back(a);
      centre += a * problem.lp.col_lower[col];
      if (std::isfinite(problem.lp.col_upper[col])) {
        centre += a * (problem.lp.col_upper[col] - problem.lp.col_lower[col]) * random.uniform();
      }
    }
    by_row.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
    const double side = std::round(centre * 2) / 2;
    const auto kind = random.below(7);
    problem.lp.row_lower.push_back(kind < 3 ? -kInf : side);
    problem.lp.row_upper.push_back(kind < 3 ? side : kind < 5 ? kInf : kind == 5 ? side : side + 2);
  }
  problem.lp.matrix = by_row.transpose();
}

void add_sets(RandomStream& random, MipProblem& problem) {
  const auto n = static_cast<Index>(problem.type.size());
  const auto sets = 1 + random.below(2);
  for (std::int64_t k = 0; k < sets; ++k) {
    SosSet set;
    set.type = 1 + static_cast<int>(random.below(2));
    for (Index col = 0; col < n; ++col) {
      if (random.uniform() < 0.6) {
        set.member.push_back(col);
        set.weight.push_back(static_cast<double>(random.below(1000)) + 0.001 * col);
      }
    }
    if (!set.member.empty()) problem.sos.push_back(std::move(set));
  }
}

void add_q(RandomStream& random, const RandomMipShape& shape, MipProblem& problem) {
  oracle::add_convex_q(random, problem.lp);
  if (shape.concave_share == 0) return;
  std::vector<double> shift(problem.type.size(), 0);
  for (std::size_t col = 0; col < shift.size(); ++col) {
    if (problem.type[col] != VarType::kBinary || random.uniform() > shape.concave_share) continue;
    shift[col] = -static_cast<double>(1 + random.below(20));
  }
  add_to_diagonal(problem.lp.quadratic, shift);
}

// Enumerates by restricting bounds: integers, then gaps, then sets, then the oracle.
class Enumerator {
 public:
  explicit Enumerator(const MipProblem& problem) : problem_(problem), lp_(problem.lp) {}

  EnumeratedMip run() {
    for (std::size_t col = 0; col < problem_.type.size(); ++col) {
      if (problem_.type[col] != VarType::kContinuous && problem_.type[col] != VarType::kSemiContinuous) {
        lp_.col_lower[col] = std::ceil(lp_.col_lower[col]);
        lp_.col_upper[col] = std::floor(lp_.col_upper[col]);
      }
    }
    column(0);
    return best_;
  }

 private:
  void with_bounds(std::size_t col, double lower, double upper, const std::function<void()>& next) {
    if (lower > upper) return;
    const double old_lower = lp_.col_lower[col];
    const double old_upper = lp_.col_upper[col];
    lp_.col_lower[col] = lower;
    lp_.col_upper[col] = upper;
    next();
    lp_.col_lower[col] = old_lower;
    lp_.col_upper[col] = old_upper;
  }

  void column(std::size_t col) {
    if (col == problem_.type.size()) return set(0);
    const auto next = [&] { column(col + 1); };
    const double lower = lp_.col_lower[col];
    const double upper = lp_.col_upper[col];
    const VarType type = problem_.type[col];
    const bool semi = type == VarType::kSemiContinuous || type == VarType::kSemiInteger;
    if (semi && !(lower <= 0 && upper >= 0)) with_bounds(col, 0, 0, next);
    if (type == VarType::kContinuous || type == VarType::kSemiContinuous) {
      if (lower <= upper) next();
    } else {
      for (double value = lower; value <= upper; ++value) with_bounds(col, value, value, next);
    }
  }

  void set(std::size_t s) {
    if (s == problem_.sos.size()) return solve();
    const SosSet& sos = problem_.sos[s];
    std::vector<std::size_t> order(sos.member.size());
    for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return sos.weight[a] < sos.weight[b]; });
    const auto width = std::min(order.size(), static_cast<std::size_t>(sos.type));
    for (std::size_t first = 0; first + width <= order.size(); ++first) {
      const std::vector<double> old_lower = lp_.col_lower;
      const std::vector<double> old_upper = lp_.col_upper;
      bool possible = true;
      for (std::size_t k = 0; k < order.size(); ++k) {
        if (k >= first && k < first + width) continue;
        const Index col = sos.member[order[k]];
        possible = possible && lp_.col_lower[col] <= 0 && lp_.col_upper[col] >= 0;
        lp_.col_lower[col] = lp_.col_upper[col] = 0;
      }
      if (possible) set(s + 1);
      lp_.col_lower = old_lower;
      lp_.col_upper = old_upper;
    }
  }

  void solve() {
    if (best_.status == SolveStatus::kUnbounded) return;
    if (!lp_.is_quadratic()) {
      const oracle::DenseLpResult result = oracle::solve_dense_lp(lp_);
      take(result.status, result.objective);
    } else if (lp_.col_lower == lp_.col_upper) {
      const PrimalQuality quality = measure_primal(oracle::view_of(lp_), lp_.col_lower, {});
      const bool feasible = quality.row.max <= 1e-9;
      take(feasible ? SolveStatus::kOptimal : SolveStatus::kInfeasible,
           oracle::quadratic_objective(lp_, lp_.col_lower));
    } else {
      BarrierEngine barrier({});
      LpDriverOptions options;
      options.engine = &barrier;
      QuietLog log;
      const LpDriverResult result = solve_lp(lp_, options, nullptr, {}, log);
      take(result.status, result.objective);
    }
  }

  void take(SolveStatus status, double objective) {
    switch (status) {
      case SolveStatus::kInfeasible:
        return;
      case SolveStatus::kOptimal:
        best_.objective = std::min(best_.objective, objective);
        [[fallthrough]];
      case SolveStatus::kUnbounded:
        best_.status = status;
        return;
      default:
        best_.doubtful = true;
    }
  }

  const MipProblem& problem_;
  LpData lp_;
  EnumeratedMip best_;
};

}  // namespace

MipProblem random_mip(RandomStream& random, const RandomMipShape& shape) {
  MipProblem problem;
  const Index cols = 1 + static_cast<Index>(random.below(shape.max_cols));
  for (Index col = 0; col < cols; ++col) add_column(random, shape, problem);
  add_rows(random, shape, problem);
  problem.lp.offset = static_cast<double>(random.below(5));
  if (random.uniform() < shape.sos_share) add_sets(random, problem);
  if (shape.quadratic) add_q(random, shape, problem);
  return problem;
}

EnumeratedMip enumerate_mip(const MipProblem& problem) { return Enumerator(problem).run(); }

MipProblem dense_problem(const std::vector<std::vector<double>>& rows, std::vector<double> lower,
                         std::vector<double> upper, double col_upper) {
  MipProblem problem;
  SparseMatrix by_row;
  const auto n = static_cast<Index>(rows[0].size());
  by_row.num_rows = n;
  for (const std::vector<double>& row : rows) {
    std::vector<Index> index;
    std::vector<double> value;
    for (Index col = 0; col < n; ++col) {
      if (row[col] == 0) continue;
      index.push_back(col);
      value.push_back(row[col]);
    }
    by_row.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  problem.lp.matrix = by_row.transpose();
  problem.lp.row_lower = std::move(lower);
  problem.lp.row_upper = std::move(upper);
  problem.lp.cost.assign(static_cast<std::size_t>(n), 1);
  problem.lp.col_lower.assign(static_cast<std::size_t>(n), 0);
  problem.lp.col_upper.assign(static_cast<std::size_t>(n), col_upper);
  problem.type.assign(static_cast<std::size_t>(n), VarType::kInteger);
  return problem;
}

}  // namespace zorvex::testing

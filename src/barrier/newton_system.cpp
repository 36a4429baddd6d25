#include "barrier/newton_system.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "linalg/gmres.hpp"

namespace zorvex {

namespace {

// Columns this much longer than the next shorter one, and at least this long, are dense.
constexpr double kDenseJump = 10;
constexpr Index kDenseLength = 40;
constexpr Index kMaxDenseCols = 1000;
// Factorizations below this many operations are not worth a second opinion on ordering or on what to keep.
constexpr double kCheapFactor = 2e7;
// The partitioner takes two to three seconds per million edges of the graph: as long as some 20 factorizations of this
// many operations for each.
constexpr double kOperationsPerEdge = 3000;
// Of two graphs the partitioner does better on the one with so small a share of the other's edges, unless that takes
// kComparable times the operations by minimum degree.
constexpr double kMuchSparser = 0.75;
constexpr double kComparable = 4;
constexpr double kDenseAssembly = 20;         // multiplications per nonzero of A that make normal equations suspicious
constexpr double kOperationsPerAssembly = 4;  // of the factor, for one of the assembly
constexpr double kShareOfFill = 0.25;         // of the entries that columns make, those that do not coincide
constexpr double kMaxAssembly = 1.5e9;        // multiplications; beyond, the normal equations are not even tried
constexpr double kPartitionerEdges = 4e6;     // at most: finding one separator cannot be stopped
constexpr double kSecondsPerReport = 5;
// Effort is counted in nanoseconds, those of the crossover included.
constexpr double kOperationsPerNanosecond = 32;
constexpr double kVectorsPerSolve = 5;
constexpr double kNanosecondsPerNonzero = 10;  // of triangular solves and products, which run through memory in order
constexpr int kMaxRefinements = 3;
constexpr int kMaxGmresIterations = 20;

void add(std::vector<double>& to, const std::vector<double>& from) {
  for (std::size_t k = 0; k < to.size(); ++k) to[k] += from[k];
}

double largest_magnitude(const std::vector<double>& values) {
  double largest = 0;
  for (const double value : values) largest = std::max(largest, std::abs(value));
  return largest;
}

// Length from which on columns count as dense, or more than any length.
Index dense_length(const BarrierModel& model) {
  std::vector<Index> lengths;
  for (Index col = 0; col < model.num_structurals; ++col) lengths.push_back(model.matrix.col_length(col));
  std::sort(lengths.begin(), lengths.end());
  const std::size_t first =
      lengths.size() > static_cast<std::size_t>(kMaxDenseCols) ? lengths.size() - kMaxDenseCols : 1;
  for (std::size_t k = first; k < lengths.size(); ++k) {
    if (lengths[k] > kDenseLength && lengths[k] > kDenseJump * lengths[k - 1]) return lengths[k];
  }
  return model.num_rows() + 1;
}

}  // namespace

struct NewtonSystem::Candidate {
  std::vector<char> kept;
  std::unique_ptr<NormalMatrix> matrix;
  SymmetricPattern pattern;
  EliminationTree tree;
  double operations = kInf;
  bool ordered_twice = false;
};

// Free columns without curvature of their own, and those that Q ties to others.
std::vector<char> NewtonSystem::must_keep() const {
  std::vector<char> kept(static_cast<std::size_t>(model_.num_cols()), 0);
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const bool free = model_.lower[col] == -kInf && model_.upper[col] == kInf;
    if (free && q_diagonal_[col] == 0) kept[col] = 1;
  }
  const SparseMatrix& q = model_.quadratic;
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      if (q.index[k] != col) kept[col] = kept[q.index[k]] = 1;
    }
  }
  return kept;
}

// Ordered by minimum degree.
NewtonSystem::Candidate NewtonSystem::make_candidate(const std::vector<char>& kept,
                                                     const std::function<bool()>& go_on) const {
  Candidate candidate;
  if (NormalMatrix::assembly_work(model_, kept) > kMaxAssembly || !go_on()) return candidate;
  candidate.kept = kept;
  candidate.matrix = std::make_unique<NormalMatrix>(model_, kept);
  candidate.pattern = pattern_of_lower(candidate.matrix->lower());
  candidate.tree = make_elimination_tree(candidate.pattern, order_minimum_degree(candidate.pattern));
  candidate.operations = candidate.tree.factor_operations();
  return candidate;
}

// With `kept` and with all columns but singletons kept, which leaves the choice of what to eliminate first to the
// ordering. The partitioner, which costs more than all else here, orders one of the two.
NewtonSystem::Candidate NewtonSystem::cheapest_candidate(const std::vector<char>& kept, int ordering,
                                                         const std::function<bool()>& go_on) const {
  std::vector<char> all = kept;
  for (Index col = 0; col < model_.num_structurals; ++col) {
    if (model_.matrix.col_length(col) > 1) all[col] = 1;
  }
  // Where the other factor is cheaper than normal equations can be, these are not worth an ordering: they have to be
  // assembled, and each of their columns is eliminated.
  const double assembly = NormalMatrix::assembly_work(model_, kept);
  const double rows = model_.num_rows();
  const double lower_half = std::min(assembly, rows * rows / 2);
  const double least = std::max(kOperationsPerAssembly * assembly, kShareOfFill * lower_half * lower_half / rows);
  const bool costly = assembly > kDenseAssembly * static_cast<double>(model_.matrix.num_nonzeros());
  Candidate other;
  if (costly) {
    other = make_candidate(all, go_on);
    if (ordering == 1 || other.operations >= least) order_again(other, ordering, go_on);
    if (other.operations < least) return other;
  }
  Candidate best = make_candidate(kept, go_on);
  if (best.operations > kCheapFactor && !costly) other = make_candidate(all, go_on);
  const bool other_is_sparse =
      other.operations < kComparable * best.operations &&
      static_cast<double>(other.pattern.index.size()) < kMuchSparser * static_cast<double>(best.pattern.index.size());
  order_again(other_is_sparse ? other : best, ordering, go_on);
  Candidate& chosen = other.operations < BarrierTolerances::kAugmentedPays * best.operations ? other : best;
  if (ordering == 1) order_again(chosen, ordering, go_on);
  return std::move(chosen);
}

// The partitioner's ordering, where it is asked for or promises to pay, and better than minimum degree or asked for.
void NewtonSystem::order_again(Candidate& candidate, int ordering, const std::function<bool()>& go_on) const {
  if (candidate.matrix == nullptr || candidate.ordered_twice || ordering == 0) return;
  const auto edges = static_cast<double>(candidate.pattern.index.size());
  if (ordering == -1) {
    const bool worthwhile = candidate.operations > std::max(kCheapFactor, kOperationsPerEdge * edges);
    if (!worthwhile || edges >= kPartitionerEdges) return;
  }
  candidate.ordered_twice = true;
  std::vector<Index> order;
  if (!order_nested_dissection(candidate.pattern, go_on, order)) return;
  EliminationTree tree = make_elimination_tree(candidate.pattern, order);
  const double operations = tree.factor_operations();
  if (ordering == -1 && operations >= candidate.operations) return;
  candidate.tree = std::move(tree);
  candidate.operations = operations;
}

void NewtonSystem::note_quadratic_diagonal() {
  q_diagonal_.assign(static_cast<std::size_t>(model_.num_cols()), 0);
  const SparseMatrix& q = model_.quadratic;
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      if (q.index[k] == col) q_diagonal_[col] = q.value[k];
    }
  }
}

SolveStatus NewtonSystem::analyze(int ordering, bool dense_segments, const StopToken& stop, LogSink& log) {
  note_quadratic_diagonal();
  const Index dense = dense_length(model_);
  std::vector<char> kept = must_keep();
  int dense_cols = 0;
  for (Index col = 0; col < model_.num_structurals; ++col) {
    if (kept[col] || model_.matrix.col_length(col) < dense) continue;
    kept[col] = 1;
    ++dense_cols;
  }
  const double begin = now_seconds();
  double told = begin;
  const auto go_on = [&] {
    const double now = now_seconds();
    if (now >= told + kSecondsPerReport) {
      told = now;
      log.print("Elapsed ordering time = %.0fs\n", now - begin);
    }
    return !stop.stop_requested();
  };
  Candidate best = cheapest_candidate(kept, ordering, go_on);
  if (const SolveStatus status = stop.poll(); status != SolveStatus::kLoaded) return status;
  auto symbolic =
      std::make_shared<const SymbolicFactor>(analyze_factor(best.matrix->lower(), best.tree, dense_segments));
  take_plan(std::make_shared<const FactorPlan>(FactorPlan{std::move(best.kept), std::move(symbolic), dense_cols}),
            std::move(best.matrix));
  return SolveStatus::kLoaded;
}

void NewtonSystem::follow(std::shared_ptr<const FactorPlan> plan) {
  note_quadratic_diagonal();
  auto matrix = std::make_unique<NormalMatrix>(model_, plan->kept);
  take_plan(std::move(plan), std::move(matrix));
}

void NewtonSystem::take_plan(std::shared_ptr<const FactorPlan> plan, std::unique_ptr<NormalMatrix> matrix) {
  plan_ = std::move(plan);
  matrix_ = std::move(matrix);
  const SymbolicFactor& symbolic = *plan_->symbolic;
  statistics_.dense_cols = plan_->dense_cols;
  statistics_.normal_nonzeros = matrix_->normal_nonzeros();
  statistics_.factor_nonzeros = symbolic.exact_nonzeros;
  statistics_.factor_operations = symbolic.operations;
  statistics_.bytes = symbolic.bytes();
  factor_ = std::make_unique<SupernodalFactor>(plan_->symbolic, pool_);
}

SolveStatus NewtonSystem::factor(const std::vector<double>& theta, double regularization, const StopToken& stop) {
  ++num_factors_;
  assemble(theta, regularization);
  return factor_->factor(matrix_->lower().value, matrix_->signs(), matrix_->smallest_pivots(), stop);
}

void NewtonSystem::assemble(const std::vector<double>& theta, double regularization) {
  theta_ = theta;
  hessian_.resize(theta.size());
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const bool kept = matrix_->position_of(col) >= 0;
    hessian_[col] = theta[col] + q_diagonal_[col] + (kept ? 1 : BarrierTolerances::kRegularizedShare) * regularization;
  }
  matrix_->assemble(hessian_, regularization, pool_);
}

double NewtonSystem::work_of(double factorizations, double solves) const {
  const double solve = statistics_.factor_nonzeros + static_cast<double>(model_.matrix.num_nonzeros()) +
                       kVectorsPerSolve * (model_.num_rows() + model_.num_cols());
  return factorizations * statistics_.factor_operations / kOperationsPerNanosecond +
         solves * solve * kNanosecondsPerNonzero;
}

double NewtonSystem::solve(const std::vector<double>& r1, const std::vector<double>& r2, const Goal& goal,
                           std::vector<double>& dv, std::vector<double>& dy) {
  goal_ = goal;
  solve_regularized(r1, r2, dv, dy);
  double error = residuals(r1, r2, dv, dy);
  bool stagnates = false;
  for (int round = 0; round < kMaxRefinements && error > 1 && !stagnates; ++round) {
    const std::vector<double> before_v = dv, before_y = dy;
    solve_regularized(std::vector<double>(res1_), std::vector<double>(res2_), cor_v_, cor_y_);
    add(dv, cor_v_);
    add(dy, cor_y_);
    const double refined = residuals(r1, r2, dv, dy);
    stagnates = !(refined < 0.1 * error);
    if (!(refined < error)) {
      dv = before_v;
      dy = before_y;
    } else {
      error = refined;
    }
  }
  if (!(error > 1) || !std::isfinite(error)) return error;
  const std::vector<double> before_v = dv, before_y = dy;
  residuals(r1, r2, dv, dy);
  improve_by_gmres(dv, dy);
  const double improved = residuals(r1, r2, dv, dy);
  if (improved < error) return improved;
  dv = before_v;
  dy = before_y;
  return error;
}

// Both parts of the residual divided by their goals make one vector.
void NewtonSystem::improve_by_gmres(std::vector<double>& dv, std::vector<double>& dy) {
  const std::size_t cols = dv.size(), rows = dy.size();
  const auto split = [&](const std::vector<double>& joined, double scale1, double scale2) {
    std::pair<std::vector<double>, std::vector<double>> parts{
        {joined.begin(), joined.begin() + static_cast<Offset>(cols)},
        {joined.begin() + static_cast<Offset>(cols), joined.end()}};
    for (double& value : parts.first) value *= scale1;
    for (double& value : parts.second) value *= scale2;
    return parts;
  };
  const auto join = [&](const std::vector<double>& first, const std::vector<double>& second, double scale1,
                        double scale2, std::vector<double>& joined) {
    joined.resize(cols + rows);
    for (std::size_t k = 0; k < cols; ++k) joined[k] = first[k] * scale1;
    for (std::size_t k = 0; k < rows; ++k) joined[cols + k] = second[k] * scale2;
  };
  const std::vector<double> zero_v(cols, 0), zero_y(rows, 0);
  GmresOperators operators;
  operators.precondition = [&](const std::vector<double>& r, std::vector<double>& z) {
    const auto [r1, r2] = split(r, goal_.r1, goal_.r2);
    solve_regularized(r1, r2, cor_v_, cor_y_);
    join(cor_v_, cor_y_, 1, 1, z);
  };
  operators.apply = [&](const std::vector<double>& x, std::vector<double>& y) {
    const auto [v, w] = split(x, 1, 1);
    residuals(zero_v, zero_y, v, w);
    join(res1_, res2_, -1 / goal_.r1, -1 / goal_.r2, y);
  };
  std::vector<double> residual, correction(cols + rows, 0);
  join(res1_, res2_, 1 / goal_.r1, 1 / goal_.r2, residual);
  flexible_gmres(operators, residual, 1, kMaxGmresIterations, correction);
  const auto [v, w] = split(correction, 1, 1);
  add(dv, v);
  add(dy, w);
}

void NewtonSystem::solve_regularized(const std::vector<double>& r1, const std::vector<double>& r2,
                                     std::vector<double>& dv, std::vector<double>& dy) {
  ++num_solves_;
  const Index num_kept = matrix_->num_kept();
  const SparseMatrix& a = model_.matrix;
  rhs_.assign(static_cast<std::size_t>(num_kept + model_.num_rows()), 0);
  std::copy(r2.begin(), r2.end(), rhs_.begin() + num_kept);
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const Index position = matrix_->position_of(col);
    if (position != -1) {
      rhs_[position] = r1[col];
      continue;
    }
    const double factor = r1[col] / hessian_[col];
    if (factor == 0) continue;
    for (Offset k = a.begin(col); k < a.end(col); ++k) rhs_[num_kept + a.index[k]] += factor * a.value[k];
  }
  factor_->solve(rhs_);
  dy.assign(rhs_.begin() + num_kept, rhs_.end());
  dv.resize(r1.size());
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const Index position = matrix_->position_of(col);
    if (position != -1) {
      dv[col] = rhs_[position];
      continue;
    }
    double sum = -r1[col];
    for (Offset k = a.begin(col); k < a.end(col); ++k) sum += a.value[k] * dy[a.index[k]];
    dv[col] = sum / hessian_[col];
  }
}

// Sets res1_, res2_.
double NewtonSystem::residuals(const std::vector<double>& r1, const std::vector<double>& r2,
                               const std::vector<double>& dv, const std::vector<double>& dy) {
  const SparseMatrix& a = model_.matrix;
  res1_ = r1;
  res2_ = r2;
  for (Index col = 0; col < model_.num_cols(); ++col) {
    double sum = theta_[col] * dv[col];
    for (Offset k = a.begin(col); k < a.end(col); ++k) {
      sum -= a.value[k] * dy[a.index[k]];
      res2_[a.index[k]] -= a.value[k] * dv[col];
    }
    res1_[col] += sum;
  }
  add_quadratic_product(model_, 1, dv, res1_);
  const double error = std::max(largest_magnitude(res1_) / goal_.r1, largest_magnitude(res2_) / goal_.r2);
  return std::isnan(error) ? kInf : error;
}

}  // namespace zorvex

// Factors and solves the Newton system of the interior point method
//     -(Q + diag(theta)) dv + A' dy = r1,     A dv = r2
// through its reduced matrix with a small regularization, whose effect iterative refinement removes.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "barrier/barrier_model.hpp"
#include "barrier/normal_matrix.hpp"
#include "base/log_sink.hpp"
#include "base/stop_token.hpp"
#include "linalg/elimination_tree.hpp"
#include "linalg/supernodal_factor.hpp"

namespace zorvex {

struct NewtonStatistics {
  int dense_cols = 0;
  double normal_nonzeros = 0;  // of the full symmetric pattern
  double factor_nonzeros = 0;
  double factor_operations = 0;
  double bytes = 0;
};

// What the analysis of a model found out at some cost, good for every Newton system of that model.
struct FactorPlan {
  std::vector<char> kept;                          // of each column of the barrier model: stays in the reduced matrix
  std::shared_ptr<const SymbolicFactor> symbolic;  // of the reduced matrix
  int dense_cols;                                  // kept for their length
};

class NewtonSystem {
 public:
  // `model` and `pool` outlive this.
  NewtonSystem(const BarrierModel& model, WorkerPool& pool) : model_(model), pool_(pool) {}

  // Chooses kept columns and ordering (`ordering`, `dense_segments` as BarrierOptions) and analyses the factor. kLoaded
  // unless stopped. Tells `log` from time to time how long the ordering has taken.
  SolveStatus analyze(int ordering, bool dense_segments, const StopToken& stop, LogSink& log);
  // The same with the choices of another system of an equal model.
  void follow(std::shared_ptr<const FactorPlan> plan);
  [[nodiscard]] const std::shared_ptr<const FactorPlan>& plan() const { return plan_; }  // of the last analysis
  [[nodiscard]] const NewtonStatistics& statistics() const { return statistics_; }

  // theta: num_cols entries, zero for free columns. kLoaded unless stopped. `regularization` is added to the Hessian
  // and to the rows' diagonal.
  SolveStatus factor(const std::vector<double>& theta, double regularization, const StopToken& stop);
  // The first part of factor(): the reduced matrix's values.
  void assemble(const std::vector<double>& theta, double regularization);

  // Largest residuals that the caller wants to see, absolute.
  struct Goal {
    double r1, r2;
  };

  // Refines until the residuals are at the goal or do not shrink any more; returns the largest of them, divided by its
  // goal.
  double solve(const std::vector<double>& r1, const std::vector<double>& r2, const Goal& goal, std::vector<double>& dv,
               std::vector<double>& dy);
  // So far, refinement included.
  [[nodiscard]] double num_solves() const { return num_solves_; }
  // Effort so far in units of a stop token, and that of one factorization with as many solves.
  [[nodiscard]] double work() const { return work_of(num_factors_, num_solves_); }
  [[nodiscard]] double work_of(double factorizations, double solves) const;

 private:
  struct Candidate;
  void note_quadratic_diagonal();
  [[nodiscard]] std::vector<char> must_keep() const;
  [[nodiscard]] Candidate make_candidate(const std::vector<char>& kept, const std::function<bool()>& go_on) const;
  [[nodiscard]] Candidate cheapest_candidate(const std::vector<char>& kept, int ordering,
                                             const std::function<bool()>& go_on) const;
  void order_again(Candidate& candidate, int ordering, const std::function<bool()>& go_on) const;
  void take_plan(std::shared_ptr<const FactorPlan> plan, std::unique_ptr<NormalMatrix> matrix);
  void solve_regularized(const std::vector<double>& r1, const std::vector<double>& r2, std::vector<double>& dv,
                         std::vector<double>& dy);
  double residuals(const std::vector<double>& r1, const std::vector<double>& r2, const std::vector<double>& dv,
                   const std::vector<double>& dy);
  void improve_by_gmres(std::vector<double>& dv, std::vector<double>& dy);

  const BarrierModel& model_;
  std::shared_ptr<const FactorPlan> plan_;
  WorkerPool& pool_;
  NewtonStatistics statistics_;
  std::unique_ptr<NormalMatrix> matrix_;
  std::unique_ptr<SupernodalFactor> factor_;
  std::vector<double> theta_, hessian_;  // without and with regularization; the diagonal of Q is in hessian_ only
  std::vector<double> q_diagonal_;
  std::vector<double> rhs_, res1_, res2_, cor_v_, cor_y_;
  Goal goal_{1, 1};  // of the running solve
  double num_solves_ = 0, num_factors_ = 0;
};

}  // namespace zorvex

// The iteration of the interior point method on a BarrierModel: starting point, predictor-corrector steps, measures of
// progress. The loop around it, limits and log are in barrier.cpp.
//   Iterate  v - below = lower, v + above = upper up to residuals that shrink like the others; below, above and their
//            duals low, up are positive. Columns without a bound have zeros there.
//   Source   S. Mehrotra, SIAM J. Optim. 2 (1992) 575-601; J. Gondzio, Comput. Optim. Appl. 6 (1996) 137-156;
//            M. Colombo, J. Gondzio, Comput. Optim. Appl. 41 (2008) 277-305 (weighted correctors).
#pragma once

#include <vector>

#include "barrier/barrier.hpp"
#include "barrier/barrier_model.hpp"
#include "barrier/newton_system.hpp"
#include "base/stop_token.hpp"

namespace zorvex {

struct Iterate {
  std::vector<double> v, y;
  std::vector<double> below, above;  // distances to the bounds
  std::vector<double> low, up;       // duals of the bounds: cost + Qv - A'y - low + up = 0
};

// In the user's space and units, minimisation form.
struct Progress {
  double primal_objective = 0, dual_objective = 0;  // offset included
  double primal_residual = 0, dual_residual = 0;    // largest, absolute
  double relative_primal = 0, relative_dual = 0;    // the same relative to the largest right-hand side and cost
  double relative_gap = 0;
  double complementarity = 0;  // average product of a distance and its dual

  // Targets of the iteration, all in the units of the figures above.
  struct Tolerances {
    double gap, primal, dual;
  };
  // How far from converged: 1 when the gap is at its tolerance and each residual either at half of its own or at
  // kResidual relative to the data.
  [[nodiscard]] double merit(const Tolerances& tolerances) const;
  // Each residual is within its tolerance, whatever the size of the data.
  [[nodiscard]] bool within(const Tolerances& tolerances) const;
  [[nodiscard]] double worst() const;  // the largest of residuals and gap, all relative
};

class InteriorPointMethod {
 public:
  // options.correctors is not negative.
  InteriorPointMethod(const BarrierModel& model, NewtonSystem& newton, const BarrierOptions& options);

  // `dual_boost` multiplies the shift of the duals: models whose multipliers are much larger than costs suggest are
  // reached in short steps only unless they start far out.
  SolveStatus start(double dual_boost, const StopToken& stop);
  // From the next start on steps stay well short of the bounds, with the regularization that a first start has.
  void be_cautious();
  // One iteration: kLoaded when done, kNumeric when no step could be made, else the reason of the stop.
  SolveStatus step(const StopToken& stop);

  Progress measure();
  [[nodiscard]] const Iterate& iterate() const { return iterate_; }
  [[nodiscard]] int failed_solves() const { return failed_solves_; }  // Newton systems in a row, poorly solved
  [[nodiscard]] double last_step() const { return last_step_; }       // the shorter of the last two step lengths

 private:
  static constexpr double kCautiousShare = 0.95;  // of the longest step
  static constexpr double kFirstTrend = 0.1;

  struct Residuals {
    std::vector<double> primal, dual, below, above;
  };
  struct Targets {  // right-hand sides of the linearised complementarity
    std::vector<double> low, up;
  };
  struct Steps {
    double primal = 1, dual = 1;
    [[nodiscard]] double shorter() const { return primal < dual ? primal : dual; }
  };

  void place_primal();
  void place_dual();
  void shift_start(double dual_boost);
  void compute_residuals();
  [[nodiscard]] double average_product() const;
  [[nodiscard]] double product_after(const Iterate& d, const Steps& steps) const;
  SolveStatus factor(const StopToken& stop);
  [[nodiscard]] double smallest_product() const;
  [[nodiscard]] NewtonSystem::Goal step_goal() const;
  SolveStatus find_affine(Targets& targets, Iterate& affine, const StopToken& stop);
  void adapt_regularization(double solves);
  double direction(const Residuals& residuals, const Targets& targets, Iterate& d);
  [[nodiscard]] Steps longest_steps(const Iterate& d) const;
  // Along d + weight * (corrected - d).
  [[nodiscard]] Steps longest_steps(const Iterate& d, const Iterate& corrected, double weight) const;
  [[nodiscard]] Steps steps_of(double primal, double dual) const;
  // Leaves the best mixture in `d`; `corrector` is used up.
  void choose_corrector_weight(Iterate& corrector, Iterate& d, Steps& steps);
  void correct_centrality(double mu, Iterate& d, Steps& steps);
  bool centrality_targets(double mu, const Iterate& d, const Steps& trial, Targets& targets) const;
  void move(const Iterate& d, const Steps& steps);

  [[nodiscard]] bool has_lower(Index j) const { return model_.lower[j] > -kInf; }
  [[nodiscard]] bool has_upper(Index j) const { return model_.upper[j] < kInf; }

  const BarrierModel& model_;
  NewtonSystem& newton_;
  BarrierOptions options_;
  double step_share_;            // of the longest step
  double scaled_objective_ = 1;  // magnitude of the last primal objective, at least 1 in the user's units
  double regularization_;
  double trend_ = kFirstTrend;  // of regularization
  double last_solves_ = 0;
  Iterate iterate_;
  Residuals residuals_, zero_residuals_;
  std::vector<double> theta_, r1_;
  Index num_products_ = 0;                  // bounds of all columns
  double rhs_norm_ = 1, cost_norm_ = 1;     // of the user's model
  double primal_goal_ = 1, dual_goal_ = 1;  // residuals that need not be reduced any more, scaled
  NewtonSystem::Goal goal_{1, 1};           // of this iteration
  double last_step_ = 1;
  int failed_solves_ = 0;
};

}  // namespace zorvex

// Choice of the leaving row: primal infeasibilities of the basic variables, divided by edge weights.
//   Modes    steepest edge (exact norms), devex (reference norms), and row counts, where the weight is a fixed cost of
//            the row and candidates come from a short list.
//   Lists    every infeasible row is listed; those whose price may exceed `hot_price_` are hot. A choice looks at the
//            hot rows alone and still finds the largest price; when they run out the next best of all become hot.
//   Source   J. Forrest, D. Goldfarb, Math. Program. 57 (1992) 341-374; P. Harris, Math. Program. 5 (1973) 1-28;
//            J. Hall, K. McKinnon, Comput. Optim. Appl. 32 (2005) 259-283, sec. 3.3 (short lists of candidates).
#pragma once

#include <limits>
#include <span>
#include <vector>

#include "simplex/simplex_core.hpp"

namespace zorvex {

enum class DualPricingMode { kDevex = 1, kRowCount = 2, kSteepestEdge = 3 };

template <class Real>
class DualPricing {
 public:
  explicit DualPricing(SimplexCore<Real>& core) : core_(core) {}
  // Starts a solve. `pricing` is the parameter SimplexPricing: -1 automatic, 0 partial, 1 steepest edge, 2 devex, 3
  // quick steepest edge.
  void begin(int pricing);

  [[nodiscard]] DualPricingMode mode() const { return mode_; }
  [[nodiscard]] bool is_norm_based() const { return mode_ != DualPricingMode::kRowCount; }

  // Recomputes all infeasibilities; forgets rejected rows. O(m).
  void recompute();
  // Basic values, bounds or weights at these positions have changed.
  void refresh(std::span<const Index> positions);
  void refresh_all();  // O(m)
  // Position with the largest price, or -1 when no row is infeasible (rejected ones aside).
  Index choose();
  // Leaves a row out until the next recompute().
  void reject(Index position);
  [[nodiscard]] bool has_rejected() const { return !rejected_.empty(); }

  // Weight changes of one pivot, to be followed by refresh() of alpha's positions. rho_norm is the exact || rho ||^2 of
  // the pivot row, tau = B^-1 rho (steepest edge only).
  void update_weights(Index position, const Scattered<Real>& alpha, const Scattered<Real>& tau, Real rho_norm);
  void reset_weights();

  // Work counted by the caller for the automatic change of mode.
  void count_norm_work(double amount) { norm_work_ += amount; }
  void count_row_work(double amount) { row_work_ += amount; }
  // To be called after every factorization with the iterations of the solve; may change the mode of large models, which
  // keep theirs where memory is short.
  void reconsider_mode(double iterations);

 private:
  void switch_to(DualPricingMode mode);
  void start_partial();
  [[nodiscard]] bool reserve_row_counts();
  bool list_is_short();
  // A row's place: not listed, listed, or listed and hot.
  enum State : char { kUnlisted, kCold, kHot };

  // Writes the squared violation of row k; does the row have to move up, into the list or among the hot?
  [[nodiscard]] bool measure(Index k);
  // Lists the first `count` rows of chosen_ and makes those hot whose price has risen above that of the cold ones.
  void move_up(std::size_t count);
  void cool_all();
  void heat_best();
  void heat(Real price, std::size_t most);
  // Row of the largest price in `list`, -1 when it has none above `floor`; the others leave the list for `lower`.
  Index best_of(std::vector<Index>& list, State lower, Real floor);

  SimplexCore<Real>& core_;
  DualPricingMode mode_ = DualPricingMode::kSteepestEdge;
  bool locked_ = false;              // the mode was asked for, or has been changed once
  bool full_pricing_ = true;         // the candidate list holds every infeasible row
  std::vector<Real> infeasibility_;  // squared, by position
  std::vector<State> state_;
  std::vector<Index> list_;
  std::vector<Index> rejected_;
  std::vector<Index> hot_list_;
  Real hot_price_ = std::numeric_limits<Real>::infinity();  // no cold row has a larger one, but for rounding
  std::vector<Real> prices_;                                // workspace
  std::vector<Index> chosen_;                               // workspace
  double norm_work_ = 0, row_work_ = 0;
  double list_length_sum_ = 0, list_count_ = 0;
  Index partial_size_ = 0;
};

}  // namespace zorvex

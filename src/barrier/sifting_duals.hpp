// Dual feasible row duals of the whole model, improved from sub-problem to sub-problem: the bound that sifting proves,
// and the measure by which columns outside the working set are attractive.
//   Form      dual objective L(pi) = sum over rows of pi_i times the bound that its sign prices, plus the same over
//             columns with d = c - A'pi. It is concave; pi is feasible while no infinite bound is priced.
//   Numbers   the objective is summed in extended precision.
//   Source    R. Bixby, J. Gregory, I. Lustig, R. Marsten, D. Shanno, Oper. Res. 40 (1992) 885-897.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex {

class SiftingDuals {
 public:
  // Amounts up to `tolerance` do not price an infinite bound. `lp` must outlive this.
  SiftingDuals(const LpData& lp, double tolerance);

  // Looks for feasible duals: zero, or a multiple of all ones with the signs that one-sided rows allow.
  [[nodiscard]] bool find_start();

  // Reduced costs change by -A'`direction`, of length num_rows.
  void set_direction(std::vector<double> direction);
  [[nodiscard]] double dual_rate(Index col) const { return rate_[col]; }
  // Goes along the direction, by at most `longest`, as far as pi stays feasible and L grows.
  void advance(double longest);

  [[nodiscard]] const std::vector<double>& pi() const { return pi_; }
  [[nodiscard]] double reduced_cost(Index col) const { return reduced_cost_[col]; }
  // The proven bound without the objective's constant; minus infinity when pi is not feasible.
  [[nodiscard]] Extended objective() const { return objective_; }

 private:
  [[nodiscard]] bool try_start(double row_sign);
  [[nodiscard]] double longest_feasible(double longest) const;
  [[nodiscard]] Extended objective_at(double step) const;
  [[nodiscard]] std::vector<double> minus_transposed_product(const std::vector<double>& y) const;

  const LpData& lp_;
  double tolerance_;
  std::vector<double> pi_, reduced_cost_;  // num_rows, num_cols
  std::vector<double> direction_, rate_;   // num_rows, num_cols
  Extended objective_ = 0;
};

}  // namespace zorvex

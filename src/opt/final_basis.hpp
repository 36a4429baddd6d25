// The basis that the last solve of a continuous model ended with: solves with it and its inverse, its condition, and
// the ranges of the model's numbers over which it stays optimal. Kept with the results; the inverse is built at the
// first question, in the precision in which the solve ended.
//   Errors   std::bad_alloc.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "model/basis_analysis.hpp"
#include "model/model.hpp"
#include "simplex/basis_inverse.hpp"

namespace zorvex {

// Entries of a sparse vector.
struct SparseEntries {
  std::span<const Index> index;
  std::span<const double> value;
};

class FinalBasis final : public BasisAnalysis {
 public:
  // `model` owns the object.
  FinalBasis(ZLPmodel& model, Basis basis, bool extended)
      : model_(model), basis_(std::move(basis)), extended_(extended) {}

  bool has_inverse() override;
  double kappa() override;
  double n2_kappa() override;
  const std::vector<double>* limits(SensitivityLimit which) override;

  // --- with has_inverse() only. Results have no entry of magnitude 1e-13 or less; `result` has room for them. ---
  [[nodiscard]] const std::vector<Index>& head() const;
  void solve(SparseEntries b, ZLPsvec& result);             // B^-1 b, b over rows
  void solve_transposed(SparseEntries b, ZLPsvec& result);  // b'B^-1, b over positions
  void tableau_column(Index var, ZLPsvec& result);          // B^-1 a_var, var < num_cols + num_rows
  void tableau_row(Index position, ZLPsvec& result);        // e'B^-1 A over the columns

 private:
  enum class State { kOpen, kDone, kFailed };

  template <class Use>
  auto with_inverse(Use use) {
    return extended_ ? use(*exact_) : use(*fast_);
  }
  template <class Real>
  bool build(std::optional<BasisInverse<Real>>& inverse);
  const LpData& data();
  bool compute_limits();

  ZLPmodel& model_;
  Basis basis_;
  bool extended_;
  std::optional<LpData> lp_;
  State inverse_ = State::kOpen, ranges_ = State::kOpen;
  std::optional<BasisInverse<double>> fast_;
  std::optional<BasisInverse<Extended>> exact_;
  std::optional<double> kappa_, n2_kappa_;
  std::array<std::vector<double>, kNumSensitivityLimits> limits_;
};

}  // namespace zorvex

// The reduced Newton system of the interior point method. Columns of the model are split into those that are eliminated
// (diagonal Hessian, few entries) and those that are kept; the reduced matrix, of order kept + rows,
//     [ -(Q_KK + diag H_K)   A_K'                 ]
//     [       A_K            A_E H_E^-1 A_E' + D  ]
// is quasi-definite. This class knows its pattern and fills in its values.
//   Source   R. Vanderbei, T. Carpenter, Math. Program. 58 (1993) 1-32 (symmetric indefinite systems); A. Altman,
//            J. Gondzio, Optim. Methods Softw. 11 (1999) 275-302.
#pragma once

#include <cstdint>
#include <vector>

#include "barrier/barrier_model.hpp"
#include "base/worker_pool.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

class NormalMatrix {
 public:
  // kept[j] != 0: column j stays. Columns with off-diagonal entries of Q must be kept.
  NormalMatrix(const BarrierModel& model, const std::vector<char>& kept);

  // Multiplications of one assembly, a bound on the entries that it makes; for columns kept as given.
  static double assembly_work(const BarrierModel& model, const std::vector<char>& kept);

  // hessian[j] > 0: diagonal of column j with regularization, that of Q included. D is `regularization` >= 0 for rows
  // without eliminated columns, little more than the rounding errors of the diagonal for others.
  void assemble(const std::vector<double>& hessian, double regularization, WorkerPool& pool);

  [[nodiscard]] const SparseMatrix& lower() const { return lower_; }
  [[nodiscard]] const std::vector<std::int8_t>& signs() const { return sign_; }
  [[nodiscard]] const std::vector<double>& smallest_pivots() const { return smallest_; }
  [[nodiscard]] Index num_kept() const { return static_cast<Index>(kept_.size()); }
  [[nodiscard]] const std::vector<Index>& kept() const { return kept_; }       // columns
  [[nodiscard]] Index position_of(Index col) const { return position_[col]; }  // among the kept, -1 if eliminated
  [[nodiscard]] double normal_nonzeros() const { return normal_nonzeros_; }    // of the rows' block, full symmetric

 private:
  void add_kept_columns();
  void add_rows();
  void assemble_row(Index row, const std::vector<double>& inverse, std::vector<double>& sum);
  void regularize(const std::vector<double>& inverse, double regularization);

  const BarrierModel& model_;
  std::vector<Index> kept_, position_;
  std::vector<Offset> place_in_col_;  // of each entry of model.by_row: where it stands in model.matrix
  SparseMatrix lower_;
  std::vector<std::int8_t> sign_;
  std::vector<double> smallest_;
  std::vector<std::vector<double>> sums_;  // one dense row a thread
  double normal_nonzeros_ = 0;
};

}  // namespace zorvex

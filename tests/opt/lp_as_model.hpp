// Random linear programs as models of the public interface, and back.
#pragma once

#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "opt/tiny_model.hpp"

namespace zorvex::testing {

// Adds row `index`, `value` with the sides of an LpData in whatever form the interface has for them.
inline int add_row(ZLPmodel* model, const std::vector<int>& index, const std::vector<double>& value, double lower,
                   double upper) {
  const int count = static_cast<int>(index.size());
  if (lower == upper) return ZLPaddconstr(model, count, index.data(), value.data(), ZLP_EQUAL, upper, nullptr);
  if (std::isfinite(lower) == std::isfinite(upper)) {
    return ZLPaddrangeconstr(model, count, index.data(), value.data(), lower, upper, nullptr);
  }
  const bool less = std::isfinite(upper);
  return ZLPaddconstr(model, count, index.data(), value.data(), less ? ZLP_LESS_EQUAL : ZLP_GREATER_EQUAL,
                      less ? upper : lower, nullptr);
}

// `sense` -1 makes it a maximisation with the same solutions and the negated objective.
inline Model model_of(ZLPenv* env, const LpData& lp, int sense) {
  std::vector<double> obj;
  for (const double c : lp.cost) obj.push_back(sense * c);
  ZLPmodel* model = nullptr;
  EXPECT_EQ(0, ZLPnewmodel(env, &model, "random", lp.num_cols(), obj.data(), lp.col_lower.data(), lp.col_upper.data(),
                           nullptr, nullptr));
  EXPECT_EQ(0, ZLPsetintattr(model, "ModelSense", sense));
  EXPECT_EQ(0, ZLPsetdblattr(model, "ObjCon", sense * lp.offset));
  const SparseMatrix rows = lp.matrix.transpose();
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const std::vector<int> index(rows.index.begin() + rows.begin(row), rows.index.begin() + rows.end(row));
    const std::vector<double> value(rows.value.begin() + rows.begin(row), rows.value.begin() + rows.end(row));
    EXPECT_EQ(0, add_row(model, index, value, lp.row_lower[row], lp.row_upper[row]));
  }
  EXPECT_EQ(0, ZLPupdatemodel(model));
  return Model(model);
}

inline std::vector<BasisStatus> statuses(ZLPmodel* model, const char* name, const char* count_name) {
  std::vector<int> codes(static_cast<std::size_t>(int_attr(model, count_name)));
  EXPECT_EQ(0, ZLPgetintattrarray(model, name, 0, static_cast<int>(codes.size()), codes.data())) << name;
  std::vector<BasisStatus> result;
  for (const int code : codes) result.push_back(static_cast<BasisStatus>(code));
  return result;
}

inline Basis basis_of(ZLPmodel* model) {
  return {statuses(model, "VBasis", "NumVars"), statuses(model, "CBasis", "NumConstrs"), {}, {}};
}

}  // namespace zorvex::testing

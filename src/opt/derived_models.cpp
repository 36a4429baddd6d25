#include "opt/derived_models.hpp"

#include <algorithm>
#include <cmath>

#include "model/messages.hpp"

namespace zorvex {

namespace {

int derive(ZLPmodel& model, ModelData&& data, ZLPmodel** derived) {
  WarmStart warm = model.warm;
  std::vector<int> priority = model.branch_priority;
  if (const int code = adopt_stored_data(model.env, std::move(data), derived)) return code;
  (*derived)->warm = std::move(warm);
  (*derived)->branch_priority = std::move(priority);
  return kOk;
}

bool semicontinuous(char type) { return type == ZLP_SEMICONT || type == ZLP_SEMIINT; }

void make_continuous(ModelData& data, Index col, double lower, double upper) {
  data.vtype[col] = ZLP_CONTINUOUS;
  data.lb[col] = stored_lower(lower);
  data.ub[col] = stored_upper(upper);
}

// A value at zero, or on the side of a semicontinuous column's gap where zero is.
bool in_zero_branch(const Interval& branch, double value) {
  if (branch.lower > 0) return value < branch.lower / 2;
  if (branch.upper < 0) return value > branch.upper / 2;
  return value == 0;
}

void fix_column(ModelData& data, Index col, double value) {
  const Interval bounds = data.column_bounds(col);
  const char type = data.vtype[col];
  if (semicontinuous(type) && in_zero_branch(bounds, value)) {
    make_continuous(data, col, 0, 0);
  } else if (type == ZLP_SEMICONT) {
    make_continuous(data, col, bounds.lower, bounds.upper);
  } else if (type != ZLP_CONTINUOUS) {
    const double whole = std::round(value) + 0.0;
    make_continuous(data, col, whole, whole);
  }
}

void relax_column(ModelData& data, Index col) {
  const char type = data.vtype[col];
  if (type == ZLP_CONTINUOUS) return;
  Interval bounds = data.column_bounds(col);
  if (semicontinuous(type)) {
    bounds = bounds.lower > bounds.upper ? Interval{0, 0}
                                         : Interval{std::min(bounds.lower, 0.0), std::max(bounds.upper, 0.0)};
  }
  make_continuous(data, col, bounds.lower, bounds.upper);
}

}  // namespace

int copy_model(ZLPmodel& model, ZLPmodel** derived) { return derive(model, ModelData(model.data), derived); }

int fixed_model(ZLPmodel& model, ZLPmodel** derived) {
  const std::vector<double>& x = model.solution.x;
  if (x.size() != model.data.obj.size() || model.solution.solution_count() == 0) {
    set_model_error(&model, kErrorDataNotAvailable, false, "The model has no solution to fix its variables at");
    return kErrorDataNotAvailable;
  }
  ModelData data = model.data;
  for (Index col = 0; col < data.num_cols(); ++col) fix_column(data, col, x[col]);
  for (const SosConstraint& set : data.sos) {
    for (const Index col : set.member) {
      if (x[col] == 0) data.lb[col] = data.ub[col] = 0;
    }
  }
  data.sos.clear();
  return derive(model, std::move(data), derived);
}

int relaxed_model(ZLPmodel& model, ZLPmodel** derived) {
  ModelData data = model.data;
  for (Index col = 0; col < data.num_cols(); ++col) relax_column(data, col);
  data.sos.clear();
  return derive(model, std::move(data), derived);
}

}  // namespace zorvex

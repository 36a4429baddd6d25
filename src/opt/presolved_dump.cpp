#include "opt/presolved_dump.hpp"

#include "model/model.hpp"

namespace zorvex {

namespace {

ModelData as_model_data(const LpData& lp, int sense) {
  ModelData data;
  data.name = "presolved";
  data.sense = sense;
  data.obj_con = sense * lp.offset;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    data.obj.push_back(sense * lp.cost[col]);
    data.lb.push_back(stored_lower(lp.col_lower[col]));
    data.ub.push_back(stored_upper(lp.col_upper[col]));
    data.vtype.push_back(ZLP_CONTINUOUS);
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const RowForm form = range_row_form(lp.row_lower[row], lp.row_upper[row]);
    data.row_sense.push_back(form.sense);
    data.rhs.push_back(form.rhs);
    data.range_lower.push_back(form.range_lower);
  }
  data.matrix = {lp.matrix.start, lp.matrix.index, lp.matrix.value};
  return data;
}

}  // namespace

int dump_presolved(ZLPenv& env, const LpData& lp, int sense) {
  ZLPmodel* model = nullptr;
  int code = create_model(&env, as_model_data(lp, sense), &model);
  if (code == kOk) code = ZLPwrite(model, kPresolvedDump);
  free_model(model);
  return code;
}

}  // namespace zorvex

// Making and freeing models, their error text, and the environment calls that take a model.
#include "env/environment.hpp"
#include "env/handle_pool.hpp"
#include "env/interrupt.hpp"
#include "model/block_arguments.hpp"
#include "model/matrix_update.hpp"

namespace zorvex {

namespace {

struct ModelDeleter {
  void operator()(ZLPmodel* model) const noexcept { free_model(model); }
};

int make_new_model(ZLPenv& env, ZLPmodel** model, const char* name, const ColumnArguments& columns) {
  if (const int code = check_name(&env, name)) return code;
  if (const int code = check_columns(&env, columns)) return code;
  ModelData data;
  data.name = name == nullptr ? "" : name;
  append_column_values(data, columns);
  data.var_names = copy_names(columns.names, columns.count);
  data.matrix.start.resize(data.obj.size() + 1, 0);
  return create_model(&env, std::move(data), model);
}

// Columns given by begin and, unless null, length: a general list argument allows gaps between them.
struct ColumnLists {
  const int* begin;
  const int* length;
  const int* index;
  const double* value;

  [[nodiscard]] int last(int col) const { return length == nullptr ? begin[col + 1] : begin[col] + length[col]; }
};

int check_column_lists(ZLPenv& env, const ColumnLists& lists, int num_cols, int num_rows) {
  if (lists.begin == nullptr) return kOk;
  PendingChanges workspace(0, 0, 0);
  for (int col = 0; col < num_cols; ++col) {
    const int first = lists.begin[col];
    const int count = lists.last(col) - first;
    if (first < 0 || count < 0) return kErrorInvalidArgument;
    if (count == 0) continue;
    if (lists.index == nullptr || lists.value == nullptr) return kErrorNullArgument;
    const int at_zero = 0;
    if (const int code = check_lists({1, count, &at_zero, lists.index + first, num_rows}, workspace)) return code;
    if (const int code = check_finite(&env, lists.value + first, count)) return code;
  }
  return kOk;
}

struct ObjectiveArguments {
  int sense;
  double constant;
};

int load_model(ZLPenv& env, ZLPmodel** model, const char* name, const ObjectiveArguments& objective,
               const ColumnArguments& columns, const RowArguments& rows, const ColumnLists& lists) {
  if (const int code = check_name(&env, name)) return code;
  if (objective.sense != ZLP_MINIMIZE && objective.sense != ZLP_MAXIMIZE) return kErrorInvalidArgument;
  if (const int code = check_finite(&env, objective.constant)) return code;
  if (const int code = check_columns(&env, columns)) return code;
  if (const int code = check_rows(&env, rows)) return code;
  if (const int code = check_column_lists(env, lists, columns.count, rows.count)) return code;
  ModelData data;
  data.name = name == nullptr ? "" : name;
  data.sense = objective.sense;
  data.obj_con = objective.constant;
  append_column_values(data, columns);
  data.var_names = copy_names(columns.names, columns.count);
  if (rows.count > 0) data.row_sense.assign(rows.sense, rows.sense + rows.count);
  data.rhs.assign(static_cast<std::size_t>(rows.count), 0.0);
  if (rows.rhs != nullptr) data.rhs.assign(rows.rhs, rows.rhs + rows.count);
  data.constr_names = copy_names(rows.names, rows.count);
  for (int col = 0; col < columns.count; ++col) {
    for (int k = 0; lists.begin != nullptr && k < lists.last(col) - lists.begin[col]; ++k) {
      data.matrix.index.push_back(lists.index[lists.begin[col] + k]);
      data.matrix.value.push_back(lists.value[lists.begin[col] + k]);
    }
    data.matrix.start.push_back(static_cast<Offset>(data.matrix.index.size()));
  }
  return create_model(&env, std::move(data), model);
}

}  // namespace

int create_model(ZLPenv* env, ModelData&& data, ZLPmodel** model) {
  *model = nullptr;
  if (const int code = check_environment(env)) return code;
  return code_of([&] {
    to_stored_form(data);
    return adopt_stored_data(env, std::move(data), model);
  });
}

int adopt_stored_data(ZLPenv* env, ModelData&& data, ZLPmodel** model) {
  *model = nullptr;
  if (const int code = check_environment(env)) return code;
  return code_of([&] {
    EnvironmentPtr own = new_model_environment(*env);
    std::unique_ptr<ZLPmodel, ModelDeleter> made(HandlePool<ZLPmodel>::instance().acquire());
    made->magic.store(kModelMagic);
    made->env = own.release();
    made->data = std::move(data);
    *model = made.release();
    return static_cast<int>(kOk);
  });
}

void free_model(ZLPmodel* model) noexcept {
  if (model == nullptr || model->magic.load() != kModelMagic) return;
  model->magic.store(0);
  discard_results(*model, false);  // a kept search may still refer to the environment
  free_environment(model->env);
  model->callback.reset();
  model->env = nullptr;
  model->in_progress = 0;
  model->callback_allowed = false;
  model->signal_enabled = false;
  model->data = ModelData();
  model->pending.reset();
  model->warm = WarmStart();
  model->branch_priority = std::vector<int>();
  model->rows.reset();
  model->default_names = DefaultNames();
  HandlePool<ZLPmodel>::instance().release(model);
}

}  // namespace zorvex

using namespace zorvex;

extern "C" {

int ZLPnewmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, const double* obj, const double* lb,
                const double* ub, const char* vtype, const char* const* var_names) {
  if (model != nullptr) *model = nullptr;
  return guarded(env, [&](ZLPenv& valid) {
    if (model == nullptr) return static_cast<int>(kErrorNullArgument);
    return make_new_model(valid, model, name, {num_vars, obj, lb, ub, vtype, var_names});
  });
}

int ZLPloadmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, int num_constrs, int obj_sense,
                 double obj_con, const double* obj, const char* sense, const double* rhs, const int* vbeg,
                 const int* vlen, const int* vind, const double* vval, const double* lb, const double* ub,
                 const char* vtype, const char* const* var_names, const char* const* constr_names) {
  if (model != nullptr) *model = nullptr;
  return guarded(env, [&](ZLPenv& valid) {
    if (model == nullptr) return static_cast<int>(kErrorNullArgument);
    return load_model(valid, model, name, {obj_sense, obj_con}, {num_vars, obj, lb, ub, vtype, var_names},
                      {num_constrs, sense, rhs, constr_names}, {vbeg, vlen, vind, vval});
  });
}

// The environment may be gone already: only the model's own handle and state are checked.
int ZLPfreemodel(ZLPmodel* model) {
  if (model == nullptr) return kErrorNullArgument;
  if (model->magic.load() != kModelMagic) return kErrorInvalidArgument;
  if (model->in_progress != 0 || model->callback_allowed) return kErrorOptimizationInProgress;
  free_model(model);
  return kOk;
}

int ZLPcheckmodel(ZLPmodel* model) { return check_model_and_clear(model); }

const char* ZLPgetmerrormsg(ZLPmodel* model) {
  if (model == nullptr || model->magic.load() != kModelMagic || model->in_progress != 0) return "";
  return ZLPgeterrormsg(model->env);
}

ZLPenv* ZLPgetenv(ZLPmodel* model) { return check_model_and_clear(model) == kOk ? model->env : nullptr; }

void ZLPterminate(ZLPmodel* model) {
  if (model != nullptr && model->magic.load() == kModelMagic) request_termination(model->env);
}

int ZLPsetsignal(ZLPmodel* model) {
  return guarded_change(model, nullptr, [](ZLPmodel& valid) {
    valid.signal_enabled = true;
    install_interrupt_handler(valid.env);
    return kOk;
  });
}

}  // extern "C"

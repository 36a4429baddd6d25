// Adding columns and rows.
#include "model/block_arguments.hpp"
#include "model/grow.hpp"

namespace zorvex {

namespace {

constexpr char kAddingVariables[] = "Problem adding variables";
constexpr char kAddingConstraints[] = "Problem adding constraints";
constexpr int kAtZero = 0;  // begin of the one list of a function that adds a single row or column

int add_columns(ZLPmodel& model, PendingChanges& changes, const ColumnArguments& columns, const ListArgument& lists,
                const double* values) {
  if (const int code = check_columns(model.env, columns)) return code;
  if (const int code = check_lists(lists, changes)) return code;
  if (const int code = check_list_values(model.env, lists, values)) return code;
  PendingChanges::Columns& target = changes.new_cols;
  const auto count = static_cast<std::size_t>(columns.count);
  NameList names = copy_names(columns.names, columns.count);
  make_room(target.obj, count);
  make_room(target.lb, count);
  make_room(target.ub, count);
  make_room(target.vtype, count);
  make_room(target.entries, lists);
  target.names.reserve_for(names);
  // Nothing fails from here on: the queue takes all of it or none.
  append_column_values(target, columns);
  append_lists(target.entries, lists, values);
  target.names.append(std::move(names));
  return kOk;
}

struct RowSides {
  const char* sense;
  const double* rhs;
  const double* range_lower;  // null: no range rows
};

int add_rows(ZLPmodel& model, PendingChanges& changes, int count, const RowSides& sides, const char* const* names,
             const ListArgument& lists, const double* values) {
  if (const int code = check_rows(model.env, {count, sides.sense, sides.rhs, names})) return code;
  if (const int code = check_lists(lists, changes)) return code;
  if (const int code = check_list_values(model.env, lists, values)) return code;
  PendingChanges::Rows& target = changes.new_rows;
  NameList copied_names = copy_names(names, count);
  make_room(target.sense, static_cast<std::size_t>(count));
  make_room(target.rhs, static_cast<std::size_t>(count));
  make_room(target.range_lower, static_cast<std::size_t>(count));
  make_room(target.entries, lists);
  target.names.reserve_for(copied_names);
  for (int k = 0; k < count; ++k) {
    target.sense.push_back(sides.sense[k]);
    target.rhs.push_back(sides.rhs == nullptr ? 0.0 : sides.rhs[k]);
    target.range_lower.push_back(sides.range_lower == nullptr ? -kStoredInfinity : sides.range_lower[k]);
  }
  append_lists(target.entries, lists, values);
  target.names.append(std::move(copied_names));
  return kOk;
}

int add_range_rows(ZLPmodel& model, PendingChanges& changes, int count, const double* lower, const double* upper,
                   const char* const* names, const ListArgument& lists, const double* values) {
  if (count < 0) return kErrorInvalidArgument;
  if (count > 0 && (lower == nullptr || upper == nullptr)) return kErrorNullArgument;
  if (const int code = check_not_nan(model.env, lower, count)) return code;
  if (const int code = check_not_nan(model.env, upper, count)) return code;
  std::vector<char> sense;
  std::vector<double> rhs, range_lower;
  for (int k = 0; k < count; ++k) {
    if (lower[k] > upper[k]) return kErrorInvalidArgument;
    const RowForm form = range_row_form(lower[k], upper[k]);
    sense.push_back(form.sense);
    rhs.push_back(form.rhs);
    range_lower.push_back(form.range_lower);
  }
  if (count == 0) return kOk;
  return add_rows(model, changes, count, {sense.data(), rhs.data(), range_lower.data()}, names, lists, values);
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

extern "C" {

int ZLPaddvar(ZLPmodel* model, int num_nz, const int* vind, const double* vval, double obj, double lb, double ub,
              char vtype, const char* name) {
  return edit_model(model, kAddingVariables, [&](ZLPmodel& valid, PendingChanges& changes) {
    if (const int code = check_finite(valid.env, obj)) return code;
    if (const int code = check_not_nan(valid.env, lb)) return code;
    if (const int code = check_not_nan(valid.env, ub)) return code;
    return add_columns(valid, changes, {1, &obj, &lb, &ub, &vtype, &name},
                       {1, num_nz, &kAtZero, vind, changes.total_rows()}, vval);
  });
}

int ZLPaddvars(ZLPmodel* model, int num_vars, int num_nz, const int* vbeg, const int* vind, const double* vval,
               const double* obj, const double* lb, const double* ub, const char* vtype, const char* const* names) {
  return edit_model(model, kAddingVariables, [&](ZLPmodel& valid, PendingChanges& changes) {
    return add_columns(valid, changes, {num_vars, obj, lb, ub, vtype, names},
                       {num_vars, num_nz, vbeg, vind, changes.total_rows()}, vval);
  });
}

int ZLPaddconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, char sense, double rhs,
                 const char* name) {
  return edit_model(model, kAddingConstraints, [&](ZLPmodel& valid, PendingChanges& changes) {
    if (const int code = check_finite(valid.env, rhs)) return code;
    return add_rows(valid, changes, 1, {&sense, &rhs, nullptr}, &name,
                    {1, num_nz, &kAtZero, cind, changes.total_cols()}, cval);
  });
}

int ZLPaddconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind, const double* cval,
                  const char* sense, const double* rhs, const char* const* names) {
  return edit_model(model, kAddingConstraints, [&](ZLPmodel& valid, PendingChanges& changes) {
    return add_rows(valid, changes, num_constrs, {sense, rhs, nullptr}, names,
                    {num_constrs, num_nz, cbeg, cind, changes.total_cols()}, cval);
  });
}

int ZLPaddrangeconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, double lower, double upper,
                      const char* name) {
  return edit_model(model, kAddingConstraints, [&](ZLPmodel& valid, PendingChanges& changes) {
    if (const int code = check_not_nan(valid.env, lower)) return code;
    if (const int code = check_not_nan(valid.env, upper)) return code;
    return add_range_rows(valid, changes, 1, &lower, &upper, &name, {1, num_nz, &kAtZero, cind, changes.total_cols()},
                          cval);
  });
}

int ZLPaddrangeconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind,
                       const double* cval, const double* lower, const double* upper, const char* const* names) {
  return edit_model(model, kAddingConstraints, [&](ZLPmodel& valid, PendingChanges& changes) {
    return add_range_rows(valid, changes, num_constrs, lower, upper, names,
                          {num_constrs, num_nz, cbeg, cind, changes.total_cols()}, cval);
  });
}

}  // extern "C"

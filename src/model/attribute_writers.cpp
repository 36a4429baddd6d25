#include "model/attribute_writers.hpp"

#include <algorithm>

#include "model/argument_checks.hpp"
#include "model/grow.hpp"

namespace zorvex {

namespace {

int check_finite_values(const ZLPmodel& model, const ObjectSet& objects, const double* values) {
  return objects.single ? check_finite(model.env, *values) : check_finite(model.env, values, objects.count);
}

int check_not_nan_values(const ZLPmodel& model, const ObjectSet& objects, const double* values) {
  return objects.single ? check_not_nan(model.env, *values) : check_not_nan(model.env, values, objects.count);
}

template <class T, class Convert>
int queue(std::vector<ValueChange<T>>& changes, const ObjectSet& objects, const T* values, Convert convert) {
  make_room(changes, static_cast<std::size_t>(objects.count));
  for (int k = 0; k < objects.count; ++k) changes.push_back({objects[k], convert(values[k])});
  return kOk;
}

template <class T>
int queue(std::vector<ValueChange<T>>& changes, const ObjectSet& objects, const T* values) {
  return queue(changes, objects, values, [](T value) { return value; });
}

int queue_names(ZLPmodel& model, std::vector<ValueChange<std::string>> PendingChanges::*changes,
                const ObjectSet& objects, const char* const* names) {
  if (const int code = check_names(model.env, names, objects.count)) return code;
  std::vector<ValueChange<std::string>> copies;
  copies.reserve(static_cast<std::size_t>(objects.count));
  for (int k = 0; k < objects.count; ++k) copies.push_back({objects[k], names[k] == nullptr ? "" : names[k]});
  std::vector<ValueChange<std::string>>& queued = pending_changes(model).*changes;
  make_room(queued, copies.size());
  for (ValueChange<std::string>& change : copies) queued.push_back(std::move(change));
  return kOk;
}

template <class T>
void assign(std::vector<T>& stored, const ObjectSet& objects, const T* values) {
  for (int k = 0; k < objects.count; ++k) stored[objects[k]] = values[k];
}

bool are_statuses(const int* values, int count) {
  return std::all_of(values, values + count, [](int value) { return value <= ZLP_BASIC && value >= ZLP_SUPERBASIC; });
}

void ensure_basis(ZLPmodel& model) {
  if (model.warm.has_basis()) return;
  std::vector<int> vbasis(model.data.obj.size());
  for (Index col = 0; col < model.data.num_cols(); ++col) vbasis[col] = nonbasic_status(model.data, col);
  std::vector<int> cbasis(model.data.rhs.size(), ZLP_BASIC);
  model.warm.vbasis = std::move(vbasis);
  model.warm.cbasis = std::move(cbasis);
}

int write_norms(ZLPmodel& model, std::vector<double> WarmStart::*norms, const ObjectSet& objects,
                const double* values) {
  if (const int code = check_finite_values(model, objects, values)) return code;
  if (!std::all_of(values, values + objects.count, [](double value) { return value > 0; })) {
    return kErrorInvalidArgument;
  }
  if (!model.warm.has_norms()) {
    std::vector<double> vnorm(model.data.obj.size(), 1.0);
    std::vector<double> cnorm(model.data.rhs.size(), 1.0);
    model.warm.vnorm = std::move(vnorm);
    model.warm.cnorm = std::move(cnorm);
  }
  assign(model.warm.*norms, objects, values);
  return kOk;
}

}  // namespace

int write_model_name(ZLPmodel& model, const ObjectSet&, const void* values) {
  const char* name = *static_cast<const char* const*>(values);
  if (const int code = check_name(model.env, name)) return code;
  pending_changes(model).model_name = name == nullptr ? "" : name;
  return kOk;
}

int write_model_sense(ZLPmodel& model, const ObjectSet&, const void* values) {
  const int sense = *static_cast<const int*>(values);
  if (sense != ZLP_MINIMIZE && sense != ZLP_MAXIMIZE) return kErrorInvalidArgument;
  pending_changes(model).model_sense = sense;
  return kOk;
}

int write_obj_con(ZLPmodel& model, const ObjectSet&, const void* values) {
  const double constant = *static_cast<const double*>(values);
  if (const int code = check_finite(model.env, constant)) return code;
  pending_changes(model).obj_con = constant;
  return kOk;
}

int write_lb(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* bounds = static_cast<const double*>(values);
  if (const int code = check_not_nan_values(model, objects, bounds)) return code;
  return queue(pending_changes(model).lb, objects, bounds, stored_lower);
}

int write_ub(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* bounds = static_cast<const double*>(values);
  if (const int code = check_not_nan_values(model, objects, bounds)) return code;
  return queue(pending_changes(model).ub, objects, bounds, stored_upper);
}

int write_obj(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* costs = static_cast<const double*>(values);
  if (const int code = check_finite_values(model, objects, costs)) return code;
  return queue(pending_changes(model).obj, objects, costs);
}

int write_vtype(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* types = static_cast<const char*>(values);
  if (const int code = check_characters(types, objects.count, is_valid_vtype)) return code;
  return queue(pending_changes(model).vtype, objects, types);
}

int write_var_name(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  return queue_names(model, &PendingChanges::var_names, objects, static_cast<const char* const*>(values));
}

int write_rhs(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* sides = static_cast<const double*>(values);
  if (const int code = check_finite_values(model, objects, sides)) return code;
  return queue(pending_changes(model).rhs, objects, sides);
}

int write_sense(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* senses = static_cast<const char*>(values);
  if (const int code = check_characters(senses, objects.count, is_valid_sense)) return code;
  return queue(pending_changes(model).sense, objects, senses);
}

int write_constr_name(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  return queue_names(model, &PendingChanges::constr_names, objects, static_cast<const char* const*>(values));
}

int write_start(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* start = static_cast<const double*>(values);
  if (const int code = check_not_nan_values(model, objects, start)) return code;
  model.warm.start.resize(model.data.obj.size(), kUndefinedStart);
  assign(model.warm.start, objects, start);
  model.solver_state.reset();
  return kOk;
}

int write_branch_priority(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  model.branch_priority.resize(model.data.obj.size(), 0);
  assign(model.branch_priority, objects, static_cast<const int*>(values));
  model.solver_state.reset();
  return kOk;
}

int write_vbasis(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* statuses = static_cast<const int*>(values);
  if (!are_statuses(statuses, objects.count)) return kErrorInvalidArgument;
  ensure_basis(model);
  assign(model.warm.vbasis, objects, statuses);
  model.warm.precision = BasisPrecision::kUnknown;
  return kOk;
}

int write_cbasis(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  const auto* statuses = static_cast<const int*>(values);
  if (!are_statuses(statuses, objects.count)) return kErrorInvalidArgument;
  ensure_basis(model);
  assign(model.warm.cbasis, objects, statuses);
  model.warm.precision = BasisPrecision::kUnknown;
  return kOk;
}

int write_vdual_norm(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  return write_norms(model, &WarmStart::vnorm, objects, static_cast<const double*>(values));
}

int write_cdual_norm(ZLPmodel& model, const ObjectSet& objects, const void* values) {
  return write_norms(model, &WarmStart::cnorm, objects, static_cast<const double*>(values));
}

}  // namespace zorvex

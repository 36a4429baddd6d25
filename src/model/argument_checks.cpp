#include "model/argument_checks.hpp"

#include <cmath>
#include <cstring>

#include "model/messages.hpp"

namespace zorvex {

namespace {

template <class Predicate>
int first_failing(const double* values, int count, Predicate passes) {
  for (int k = 0; values != nullptr && k < count; ++k) {
    if (!passes(values[k])) return k;
  }
  return -1;
}

}  // namespace

int check_finite(ZLPenv* env, double value) {
  if (std::isfinite(value)) return kOk;
  set_building_error(env, kErrorInvalidArgument, false, "Double value is Nan or Inf.");
  return kErrorInvalidArgument;
}

int check_not_nan(ZLPenv* env, double value) {
  if (!std::isnan(value)) return kOk;
  set_building_error(env, kErrorInvalidArgument, false, "Double value is Nan.");
  return kErrorInvalidArgument;
}

int check_finite(ZLPenv* env, const double* values, int count) {
  const int at = first_failing(values, count, [](double value) { return std::isfinite(value); });
  if (at < 0) return kOk;
  set_building_error(env, kErrorInvalidArgument, false, "Element %d of a double array is Nan or Inf.", at);
  return kErrorInvalidArgument;
}

int check_not_nan(ZLPenv* env, const double* values, int count) {
  const int at = first_failing(values, count, [](double value) { return !std::isnan(value); });
  if (at < 0) return kOk;
  set_building_error(env, kErrorInvalidArgument, false, "Element %d of a double array is Nan.", at);
  return kErrorInvalidArgument;
}

int check_name(ZLPenv* env, const char* name) {
  if (name == nullptr || strnlen(name, ZLP_MAX_NAMELEN + 1) <= ZLP_MAX_NAMELEN) return kOk;
  set_building_error(env, kErrorInvalidArgument, true, "Name too long (maximum name length is %d characters)",
                     ZLP_MAX_NAMELEN);
  return kErrorInvalidArgument;
}

int check_names(ZLPenv* env, const char* const* names, int count) {
  int code = kOk;
  for (int k = 0; names != nullptr && k < count && code == kOk; ++k) code = check_name(env, names[k]);
  return code;
}

int check_lists(const ListArgument& lists, PendingChanges& workspace) {
  if (lists.count < 0 || lists.num_entries < 0) return kErrorInvalidArgument;
  if (lists.num_entries == 0 && lists.begin == nullptr) return kOk;
  if (lists.begin == nullptr || (lists.index == nullptr && lists.num_entries > 0)) return kErrorNullArgument;
  if (lists.count == 0) return lists.num_entries == 0 ? kOk : kErrorInvalidArgument;
  if (lists.begin[0] < 0) return kErrorInvalidArgument;
  for (int k = 0; k < lists.count; ++k) {
    if (lists.first(k) > lists.last(k) || lists.last(k) > lists.num_entries) return kErrorInvalidArgument;
  }
  if (workspace.stamp.size() < static_cast<std::size_t>(lists.limit)) {
    workspace.stamp.resize(static_cast<std::size_t>(lists.limit) + workspace.stamp.size() / 2);
  }
  for (int k = 0; k < lists.count; ++k) {
    ++workspace.last_stamp;
    for (int entry = lists.first(k); entry < lists.last(k); ++entry) {
      const int i = lists.index[entry];
      if (i < 0 || i >= lists.limit) return kErrorIndexOutOfRange;
      if (workspace.stamp[i] == workspace.last_stamp) return kErrorDuplicates;
      workspace.stamp[i] = workspace.last_stamp;
    }
  }
  return kOk;
}

}  // namespace zorvex

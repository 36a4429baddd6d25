#include "model/block_arguments.hpp"

#include "model/grow.hpp"

namespace zorvex {

int check_columns(ZLPenv* env, const ColumnArguments& columns) {
  if (columns.count < 0) return kErrorInvalidArgument;
  if (const int code = check_finite(env, columns.obj, columns.count)) return code;
  if (const int code = check_not_nan(env, columns.lb, columns.count)) return code;
  if (const int code = check_not_nan(env, columns.ub, columns.count)) return code;
  if (const int code = check_characters(columns.vtype, columns.count, is_valid_vtype)) return code;
  return check_names(env, columns.names, columns.count);
}

int check_rows(ZLPenv* env, const RowArguments& rows) {
  if (rows.count < 0) return kErrorInvalidArgument;
  if (rows.count > 0 && rows.sense == nullptr) return kErrorNullArgument;
  if (const int code = check_characters(rows.sense, rows.count, is_valid_sense)) return code;
  if (const int code = check_finite(env, rows.rhs, rows.count)) return code;
  return check_names(env, rows.names, rows.count);
}

NameList copy_names(const char* const* names, int count) {
  NameList list;
  if (names == nullptr) {
    list.append_unnamed(count);
  } else {
    for (int k = 0; k < count; ++k) list.append(names[k]);
  }
  return list;
}

void append_lists(CompressedVectors& target, const ListArgument& lists, const double* values) {
  for (int k = 0; k < lists.count; ++k) {
    for (int entry = lists.first(k); entry < lists.last(k); ++entry) {
      if (values[entry] == 0) continue;
      target.index.push_back(lists.index[entry]);
      target.value.push_back(values[entry]);
    }
    target.start.push_back(static_cast<Offset>(target.index.size()));
  }
}

void make_room(CompressedVectors& target, const ListArgument& lists) {
  make_room(target.start, static_cast<std::size_t>(lists.count));
  make_room(target.index, static_cast<std::size_t>(lists.num_entries));
  make_room(target.value, static_cast<std::size_t>(lists.num_entries));
}

int check_list_values(ZLPenv* env, const ListArgument& lists, const double* values) {
  if (lists.num_entries > 0 && values == nullptr) return kErrorNullArgument;
  return check_finite(env, values, lists.num_entries);
}

}  // namespace zorvex

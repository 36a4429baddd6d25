// Argument checks shared by the model-building functions. Each returns 0 or a code, having recorded its text on the
// environment: texts about numbers only into an empty buffer, the text about names over any.
#pragma once

#include "base/status.hpp"
#include "base/types.hpp"
#include "model/pending_changes.hpp"
#include "zorvex.h"

namespace zorvex {

int check_finite(ZLPenv* env, double value);
int check_not_nan(ZLPenv* env, double value);
// Null arrays pass.
int check_finite(ZLPenv* env, const double* values, int count);
int check_not_nan(ZLPenv* env, const double* values, int count);

int check_name(ZLPenv* env, const char* name);
int check_names(ZLPenv* env, const char* const* names, int count);

// `codes` must all pass `valid`; a null array passes.
template <class Predicate>
int check_characters(const char* codes, int count, Predicate valid) {
  for (int k = 0; codes != nullptr && k < count; ++k) {
    if (!valid(codes[k])) return kErrorInvalidArgument;
  }
  return kOk;
}

// Lists of a compressed argument: `count` lists of `num_entries` entries in all, list k from begin[k] to begin[k + 1],
// the last to num_entries. Refuses negative counts, missing arrays, begins that are out of order or range, indices
// outside [0, limit) and an index named twice in one list (10018). `values` is not looked at.
struct ListArgument {
  int count;
  int num_entries;
  const int* begin;  // may be null when there are no entries
  const int* index;
  int limit;

  [[nodiscard]] int first(int k) const { return begin == nullptr ? 0 : begin[k]; }
  [[nodiscard]] int last(int k) const { return begin == nullptr || k + 1 == count ? num_entries : begin[k + 1]; }
};
int check_lists(const ListArgument& lists, PendingChanges& workspace);

}  // namespace zorvex

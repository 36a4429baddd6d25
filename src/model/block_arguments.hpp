// Columns and rows as the building functions receive them: checks and copies shared by the functions that queue them
// and those that make a model of them at once.
#pragma once

#include "model/argument_checks.hpp"
#include "model/messages.hpp"
#include "model/model.hpp"

namespace zorvex {

// Null arrays stand for: objective 0, lower bound 0, upper bound infinity, type 'C', no names.
struct ColumnArguments {
  int count;
  const double* obj;
  const double* lb;
  const double* ub;
  const char* vtype;
  const char* const* names;
};
int check_columns(ZLPenv* env, const ColumnArguments& columns);

// `Columns` has vectors obj, lb, ub, vtype, and room for the new entries.
template <class Columns>
void append_column_values(Columns& target, const ColumnArguments& columns) {
  for (int k = 0; k < columns.count; ++k) {
    target.obj.push_back(columns.obj == nullptr ? 0.0 : columns.obj[k]);
    target.lb.push_back(columns.lb == nullptr ? 0.0 : stored_lower(columns.lb[k]));
    target.ub.push_back(columns.ub == nullptr ? kStoredInfinity : stored_upper(columns.ub[k]));
    target.vtype.push_back(columns.vtype == nullptr ? ZLP_CONTINUOUS : columns.vtype[k]);
  }
}

// Senses are required, a null array of right-hand sides stands for zeros.
struct RowArguments {
  int count;
  const char* sense;
  const double* rhs;
  const char* const* names;
};
int check_rows(ZLPenv* env, const RowArguments& rows);

NameList copy_names(const char* const* names, int count);

// Appends the lists with their values, leaving out zeros; `target` must have room.
void append_lists(CompressedVectors& target, const ListArgument& lists, const double* values);
void make_room(CompressedVectors& target, const ListArgument& lists);
// The values of the lists: required and finite.
int check_list_values(ZLPenv* env, const ListArgument& lists, const double* values);

// The frame of a function that queues changes: a queue left empty, by a failure or by nothing to do, goes away again.
template <class Body>
int edit_model(ZLPmodel* model, const char* context, Body&& body) noexcept {
  return guarded_change(model, context, [&](ZLPmodel& valid) {
    struct Tidy {
      ZLPmodel& model;
      ~Tidy() {
        if (model.pending->empty()) model.pending.reset();
      }
    };
    PendingChanges& changes = pending_changes(valid);
    const Tidy tidy{valid};
    return body(valid, changes);
  });
}

}  // namespace zorvex

// Coefficient changes, SOS sets, quadratic terms, deletions, and the update that applies them all.
#include "model/block_arguments.hpp"
#include "model/grow.hpp"

namespace zorvex {

namespace {

bool in_range(int i, Index limit) { return i >= 0 && i < limit; }

int change_coefficients(ZLPmodel& model, PendingChanges& changes, int count, const int* rows, const int* cols,
                        const double* values) {
  if (count <= 0) return kOk;
  if (rows == nullptr || cols == nullptr || values == nullptr) return kErrorNullArgument;
  for (int k = 0; k < count; ++k) {
    if (!in_range(rows[k], changes.total_rows()) || !in_range(cols[k], changes.total_cols())) {
      return kErrorIndexOutOfRange;
    }
  }
  if (const int code = check_finite(model.env, values, count)) return code;
  make_room(changes.coefficients, static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k) changes.coefficients.push_back({rows[k], cols[k], values[k]});
  return kOk;
}

int add_sos(ZLPmodel& model, PendingChanges& changes, const ListArgument& lists, const int* types,
            const double* weights) {
  if (lists.count < 0) return kErrorInvalidArgument;
  if (lists.count > 0 && types == nullptr) return kErrorNullArgument;
  for (int k = 0; k < lists.count; ++k) {
    if (types[k] != ZLP_SOS_TYPE1 && types[k] != ZLP_SOS_TYPE2) return kErrorInvalidArgument;
  }
  if (const int code = check_lists(lists, changes)) return code;
  if (const int code = check_finite(model.env, weights, lists.num_entries)) return code;
  std::vector<SosConstraint> sets(static_cast<std::size_t>(lists.count));
  for (int k = 0; k < lists.count; ++k) {
    sets[k].type = types[k];
    for (int entry = lists.first(k); entry < lists.last(k); ++entry) {
      sets[k].member.push_back(lists.index[entry]);
      sets[k].weight.push_back(weights == nullptr ? entry - lists.first(k) + 1.0 : weights[entry]);
    }
  }
  make_room(changes.new_sos, sets.size());
  for (SosConstraint& set : sets) changes.new_sos.push_back(std::move(set));
  return kOk;
}

int add_quadratic_terms(ZLPmodel& model, PendingChanges& changes, int count, const int* first, const int* second,
                        const double* values) {
  if (count < 0) return kErrorInvalidArgument;
  if (count == 0) return kOk;
  if (first == nullptr || second == nullptr || values == nullptr) return kErrorNullArgument;
  for (int k = 0; k < count; ++k) {
    if (!in_range(first[k], changes.total_cols()) || !in_range(second[k], changes.total_cols())) {
      return kErrorIndexOutOfRange;
    }
  }
  if (const int code = check_finite(model.env, values, count)) return code;
  make_room(changes.new_quadratic, static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k) {
    if (values[k] != 0) changes.new_quadratic.push_back({first[k], second[k], values[k]});
  }
  return kOk;
}

// Marks in order up to the first index out of range; marks set before it stay.
int mark_deleted(DeletionMarks& marks, Index stored, int count, const int* indices) {
  if (count <= 0) return kOk;
  if (indices == nullptr) return kErrorNullArgument;
  if (marks.word.empty()) marks.word.assign(static_cast<std::size_t>(stored), 0);
  for (int k = 0; k < count; ++k) {
    if (!in_range(indices[k], stored)) return kErrorIndexOutOfRange;
    marks.mark(indices[k]);
  }
  return kOk;
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

extern "C" {

int ZLPchgcoeffs(ZLPmodel* model, int num_changes, const int* cind, const int* vind, const double* val) {
  return edit_model(model, "Problem changing coefficient", [&](ZLPmodel& valid, PendingChanges& changes) {
    return change_coefficients(valid, changes, num_changes, cind, vind, val);
  });
}

int ZLPaddsos(ZLPmodel* model, int num_sos, int num_members, const int* types, const int* beg, const int* ind,
              const double* weight) {
  return edit_model(model, "Problem adding SOS constraints", [&](ZLPmodel& valid, PendingChanges& changes) {
    return add_sos(valid, changes, {num_sos, num_members, beg, ind, changes.total_cols()}, types, weight);
  });
}

int ZLPaddqpterms(ZLPmodel* model, int num_terms, const int* qrow, const int* qcol, const double* qval) {
  return edit_model(model, "Problem adding quadratic coefficients", [&](ZLPmodel& valid, PendingChanges& changes) {
    return add_quadratic_terms(valid, changes, num_terms, qrow, qcol, qval);
  });
}

int ZLPdelvars(ZLPmodel* model, int num, const int* ind) {
  return edit_model(model, "Problem deleting variable", [&](ZLPmodel&, PendingChanges& changes) {
    return mark_deleted(changes.del_cols, changes.num_cols, num, ind);
  });
}

int ZLPdelconstrs(ZLPmodel* model, int num, const int* ind) {
  return edit_model(model, "Problem deleting constraint", [&](ZLPmodel&, PendingChanges& changes) {
    return mark_deleted(changes.del_rows, changes.num_rows, num, ind);
  });
}

int ZLPdelsos(ZLPmodel* model, int num, const int* ind) {
  return edit_model(model, "Problem deleting sos", [&](ZLPmodel&, PendingChanges& changes) {
    return mark_deleted(changes.del_sos, changes.num_sos, num, ind);
  });
}

int ZLPdelq(ZLPmodel* model) {
  return edit_model(model, "Problem deleting Q matrix", [](ZLPmodel& valid, PendingChanges& changes) {
    changes.drop_quadratic = !valid.data.quadratic.empty();
    changes.new_quadratic.clear();
    return kOk;
  });
}

int ZLPupdatemodel(ZLPmodel* model) {
  return guarded_change(model, "Problem updating model", [](ZLPmodel& valid) {
    apply_pending_changes(valid);
    return kOk;
  });
}

int ZLPresetmodel(ZLPmodel* model) {
  return guarded_change(model, "Problem resetting model", [](ZLPmodel& valid) {
    discard_results(valid, false);
    return kOk;
  });
}

}  // extern "C"

// Writers of the settable attributes. What describes the model is queued like any edit and seen after the next update:
// ModelName, ModelSense, ObjCon, LB, UB, Obj, VType, VarName, RHS, Sense, ConstrName. What helps the next solve takes
// effect at once: Start, BranchPriority, VBasis, CBasis, VDualNorm, CDualNorm.
#pragma once

#include "model/attribute.hpp"

namespace zorvex {

int write_model_name(ZLPmodel& model, const ObjectSet& objects, const void* values);
int write_model_sense(ZLPmodel& model, const ObjectSet& objects, const void* values);  // 1 or -1
int write_obj_con(ZLPmodel& model, const ObjectSet& objects, const void* values);      // finite

int write_lb(ZLPmodel& model, const ObjectSet& objects, const void* values);  // not NaN; stored as by stored_lower
int write_ub(ZLPmodel& model, const ObjectSet& objects, const void* values);
int write_obj(ZLPmodel& model, const ObjectSet& objects, const void* values);    // finite
int write_vtype(ZLPmodel& model, const ObjectSet& objects, const void* values);  // one of C B I S N
int write_var_name(ZLPmodel& model, const ObjectSet& objects, const void* values);

// A range row moves as a whole: its upper side becomes the given value, its width stays.
int write_rhs(ZLPmodel& model, const ObjectSet& objects, const void* values);  // finite
// A range row becomes one-sided, with its upper side as right-hand side.
int write_sense(ZLPmodel& model, const ObjectSet& objects, const void* values);  // one of < > =
int write_constr_name(ZLPmodel& model, const ObjectSet& objects, const void* values);

// Values at or beyond 1e101 stay open. The search state of an earlier solve is dropped: it would not see the start.
int write_start(ZLPmodel& model, const ObjectSet& objects, const void* values);
int write_branch_priority(ZLPmodel& model, const ObjectSet& objects, const void* values);

// Statuses 0, -1, -2 or -3. The first write to a model without a basis starts from the slack basis.
int write_vbasis(ZLPmodel& model, const ObjectSet& objects, const void* values);
int write_cbasis(ZLPmodel& model, const ObjectSet& objects, const void* values);
// Positive and finite. The first write to a model without norms starts from ones.
int write_vdual_norm(ZLPmodel& model, const ObjectSet& objects, const void* values);
int write_cdual_norm(ZLPmodel& model, const ObjectSet& objects, const void* values);

}  // namespace zorvex

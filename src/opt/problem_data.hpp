// The user's model in the form the solver layers take: minimisation, rows in the user's signs, IEEE infinities.
#pragma once

#include "linalg/lp_data.hpp"
#include "mip/mip_problem.hpp"
#include "model/model.hpp"

namespace zorvex {

// The continuous part of the model with its quadratic terms: objective and offset negated for maximisation, '>' rows as
// the user wrote them.
LpData make_lp_data(const ModelData& data);

// Takes column bounds and one-sided row sides of at least `infinite` for infinite and leaves out matrix coefficients
// below `zero`; magnitudes.
void clean_lp_data(LpData& lp, double infinite, double zero);

// With column types, SOS sets, priorities and the MIP start.
MipProblem make_mip_problem(const ZLPmodel& model);

// The starting basis of the model, or an empty one when there is none that fits. Stored dual norms come along.
Basis make_start_basis(const ZLPmodel& model);

}  // namespace zorvex

// Quadratic objectives for random models.
#pragma once

#include "base/random_stream.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::oracle {

// Lower triangle, zeros left out, of a dense symmetric matrix.
SparseMatrix lower_of(const std::vector<std::vector<double>>& q);

// Gives the model a random positive semi-definite Q of any rank: a sum of outer products of sparse vectors with small
// integers.
void add_convex_q(RandomStream& random, LpData& lp);

// c + Qx, in long double.
std::vector<double> gradient_of(const LpData& lp, const std::vector<double>& x);

// c'x + 1/2 x'Qx + offset, in long double.
double quadratic_objective(const LpData& lp, const std::vector<double>& x);

// The model with the tangent of the objective at x in place of the objective: x has the same objective in both and is
// optimal for both or neither.
LpData linear_model_at(const LpData& lp, const std::vector<double>& x);

}  // namespace zorvex::oracle

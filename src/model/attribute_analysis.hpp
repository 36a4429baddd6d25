// Attributes answered by the analysis of the final basis.
#pragma once

#include "model/attribute.hpp"
#include "model/basis_analysis.hpp"

namespace zorvex {

double read_kappa(const ZLPmodel& model);
double read_n2_kappa(const ZLPmodel& model);
bool has_inverse(const ZLPmodel& model);

constexpr int limit_detail(SensitivityLimit limit) { return static_cast<int>(limit); }
void read_limit(ZLPmodel& model, const Attribute& attribute, const ObjectSet& objects, void* values);
bool has_sensitivity(const ZLPmodel& model);

}  // namespace zorvex

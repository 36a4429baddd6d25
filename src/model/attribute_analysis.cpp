#include "model/attribute_analysis.hpp"

namespace zorvex {

double read_kappa(const ZLPmodel& model) { return model.solution.analysis->kappa(); }
double read_n2_kappa(const ZLPmodel& model) { return model.solution.analysis->n2_kappa(); }

bool has_inverse(const ZLPmodel& model) {
  BasisAnalysis* analysis = model.solution.analysis.get();
  return analysis != nullptr && analysis->has_inverse();
}

void read_limit(ZLPmodel& model, const Attribute& attribute, const ObjectSet& objects, void* values) {
  const std::vector<double>& limits = *model.solution.analysis->limits(static_cast<SensitivityLimit>(attribute.detail));
  for (int k = 0; k < objects.count; ++k) static_cast<double*>(values)[k] = limits[objects[k]];
}

bool has_sensitivity(const ZLPmodel& model) {
  BasisAnalysis* analysis = model.solution.analysis.get();
  return analysis != nullptr && analysis->limits(SensitivityLimit::kObjLow) != nullptr;
}

}  // namespace zorvex

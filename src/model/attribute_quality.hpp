// Quality of the current solution and statistics of the coefficients, computed from the model's data on request.
#pragma once

#include "model/attribute.hpp"

namespace zorvex {

// In the order of the attributes. The S variants are those of the scaled model; the store keeps no scaling, so they
// equal the plain ones.
enum class QualityMeasure { kBound, kRow, kRowResidual, kDual, kDualResidual, kIntegrality, kComplementarity };
enum class QualityAspect { kMax, kSum, kIndex };

constexpr int quality_detail(QualityMeasure measure, QualityAspect aspect) {
  return static_cast<int>(measure) * 3 + static_cast<int>(aspect);
}

// kIndex is the variable or constraint where the maximum is attained, -1 when nothing is violated; dual violations of
// slack variables count under num_cols + row. Integrality: distance of 'B', 'I', 'N' values from the nearest integer,
// and of 'S' and 'N' values from zero or their bounds, whichever is nearer.
void read_quality(ZLPmodel& model, const Attribute& attribute, const ObjectSet& objects, void* values);

bool primal_quality_available(const ZLPmodel& model);
bool dual_quality_available(const ZLPmodel& model);  // with duals

enum class CoefficientSet { kMatrix, kBounds, kObjective, kRhs };

constexpr int statistic_detail(CoefficientSet set, bool largest) {
  return static_cast<int>(set) * 2 + (largest ? 1 : 0);
}

// Largest or smallest magnitude among the nonzero, finite values of the set; 0 when there is none.
void read_statistic(ZLPmodel& model, const Attribute& attribute, const ObjectSet& objects, void* values);

}  // namespace zorvex

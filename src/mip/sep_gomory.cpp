// Gomory mixed-integer cuts: the tableau rows of fractional basic integer columns, rounded. The row is summed again
// from the LP rows, so a cut is valid however inaccurate the multipliers are.
//   Source   R. Gomory, "An algorithm for the mixed integer problem", RAND RM-2597 (1960); E. Balas, S. Ceria,
//            G. Cornuejols, N. Natraj, "Gomory cuts revisited", Oper. Res. Letters 19 (1996) 1-9.
#include <algorithm>
#include <cmath>

#include "mip/mir.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxRows = 300;
constexpr double kMinFraction = 0.005;

struct Source {
  Index position;
  double fraction;
};

std::vector<Source> fractional_rows(const SeparationContext& context) {
  std::vector<Source> result;
  const std::vector<Index>& head = context.state.lp->solver().basis_head();
  for (std::size_t p = 0; p < head.size(); ++p) {
    if (head[p] >= context.state.model.num_cols() || !context.state.model.integral(head[p])) continue;
    const double value = context.relaxation.x[head[p]];
    const double fraction = std::abs(value - std::round(value));
    if (fraction >= kMinFraction) result.push_back({static_cast<Index>(p), fraction});
  }
  std::stable_sort(result.begin(), result.end(),
                   [](const Source& a, const Source& b) { return a.fraction > b.fraction; });
  if (result.size() > kMaxRows) result.resize(kMaxRows);
  return result;
}

void separate(SeparationContext& context) {
  const SearchModel& model = context.state.model;
  const std::vector<Source> sources = fractional_rows(context);
  if (sources.empty()) return;
  const VariableBounds bounds(model);
  AggregatedRow row(model, context.rows, context.relaxation.x);
  MirCutter cutter(model, context.rows, bounds, context.relaxation.x);
  std::vector<double> multipliers;
  for (const Source& source : sources) {
    if (context.state.stop.stop_requested()) return;
    if (!context.state.lp->solver().inverse_row(source.position, multipliers)) return;
    double largest = 0;
    for (const double y : multipliers) largest = std::max(largest, std::abs(y));
    row.clear();
    for (Index i = 0; i < context.rows.count(); ++i) {
      if (std::abs(multipliers[i]) > mip_tol::kCutDrop * largest) row.add(i, multipliers[i]);
    }
    cutter.separate(row, CutType::kGomory, false, context.found);
  }
}

}  // namespace

extern const Separator kGomorySeparator;
const Separator kGomorySeparator{"gomory", separate};

}  // namespace zorvex

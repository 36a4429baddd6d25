#include "support/wide_lp.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex::oracle {

namespace {

// `count` different rows; neighbours are likelier than others, as in rosters.
std::vector<Index> draw_rows(Index rows, Index count, RandomStream& random) {
  std::vector<Index> drawn;
  auto row = static_cast<Index>(random.below(rows));
  while (static_cast<Index>(drawn.size()) < count) {
    if (std::find(drawn.begin(), drawn.end(), row) == drawn.end()) drawn.push_back(row);
    row = random.uniform() < 0.5 ? static_cast<Index>(random.below(rows)) : (row + 1) % rows;
  }
  return drawn;
}

void append(LpData& lp, const std::vector<Index>& rows, const std::vector<double>& values, double cost, double upper) {
  lp.matrix.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  lp.cost.push_back(cost);
  lp.col_lower.push_back(0);
  lp.col_upper.push_back(upper);
}

void append_set(LpData& lp, WideKind kind, Index rows, RandomStream& random) {
  const auto count = std::min(rows, static_cast<Index>(2 + random.below(9)));
  const std::vector<Index> drawn = draw_rows(rows, count, random);
  std::vector<double> values(drawn.size(), 1.0);
  const double cost = count * (0.5 + random.uniform());
  if (kind == WideKind::kBoxed) {
    for (double& v : values) v = static_cast<double>(1 + random.below(4));
  }
  append(lp, drawn, values, kind == WideKind::kPacking ? -cost : cost, kind == WideKind::kBoxed ? 1 : kInf);
}

// Items of 5 to 50 units of length, one per row, cut from a roll of 100.
void append_pattern(LpData& lp, Index rows, RandomStream& random) {
  const auto length = [rows](Index row) { return 5 + static_cast<int>(45 * static_cast<double>(row) / rows); };
  int left = 100;
  std::vector<Index> drawn;
  std::vector<double> values;
  for (int tries = 0; tries < 12 && left >= 5; ++tries) {
    const auto row = static_cast<Index>(random.below(rows));
    if (length(row) > left || std::find(drawn.begin(), drawn.end(), row) != drawn.end()) continue;
    const auto copies = static_cast<int>(1 + random.below(left / length(row)));
    left -= copies * length(row);
    drawn.push_back(row);
    values.push_back(copies);
  }
  append(lp, drawn, values, 1, kInf);
}

}  // namespace

LpData wide_lp(WideKind kind, Index rows, Index cols, RandomStream& random) {
  LpData lp;
  lp.matrix.num_rows = rows;
  for (Index col = 0; col < cols; ++col) {
    if (col < rows && kind != WideKind::kPacking) {  // a solution exists
      append(lp, {col}, {1.0}, kind == WideKind::kCutting ? 1 : 20, kInf);
    } else if (kind == WideKind::kCutting) {
      append_pattern(lp, rows, random);
    } else {
      append_set(lp, kind, rows, random);
    }
  }
  for (Index row = 0; row < rows; ++row) {
    const double side = kind == WideKind::kCutting   ? static_cast<double>(10 + random.below(90))
                        : kind == WideKind::kPacking ? static_cast<double>(1 + random.below(5))
                                                     : 1;
    lp.row_lower.push_back(kind == WideKind::kPacking ? -kInf : side);
    lp.row_upper.push_back(kind == WideKind::kPacking || kind == WideKind::kPartitioning ? side : kInf);
  }
  return lp;
}

}  // namespace zorvex::oracle

// Lifted cover cuts of knapsack rows: columns other than binaries are put at their best bound, a minimal cover is found
// greedily for the relaxation, the remaining columns are lifted one after another by an exact table.
//   Source   Z. Gu, G. Nemhauser, M. Savelsbergh, "Lifted cover inequalities for 0-1 integer programs: computation",
//            INFORMS J. Computing 10 (1998) 427-437; E. Zemel, "Easily computable facets of the knapsack polytope",
//            Math. Oper. Res. 14 (1989) 760-764 (the table).
#include <algorithm>
#include <cmath>

#include "mip/knapsack_row.hpp"
#include "mip/separator.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxItems = 2000;

struct Item {
  Literal lit;
  double weight;  // > 0
  double value;   // of the literal, at x
};

// How the members of a cover are chosen. Items above the share of the capacity stay outside: they are lifted with
// coefficients of two and more, which covers of the light items alone bring out.
struct CoverRule {
  bool by_weight;        // value missing to one per unit of weight, or the missing value alone
  double largest_share;  // of the capacity
};
constexpr CoverRule kCoverRules[] = {{true, kInf}, {false, kInf}, {false, 0.75}, {false, 0.5}};

// Indices of a minimal cover, those that cost the violation least first; empty if there is none.
std::vector<std::size_t> minimal_cover(const std::vector<Item>& items, double capacity, const CoverRule& rule) {
  std::vector<std::size_t> order;
  for (std::size_t k = 0; k < items.size(); ++k) {
    if (items[k].weight <= rule.largest_share * capacity) order.push_back(k);
  }
  const auto price = [&](std::size_t k) { return (1 - items[k].value) / (rule.by_weight ? items[k].weight : 1.0); };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) { return price(x) < price(y); });
  const double excess = mip_tol::kRowFeasibility * std::max(1.0, capacity);
  std::vector<std::size_t> cover;
  double weight = 0;
  for (const std::size_t k : order) {
    if (weight > capacity + excess) break;
    cover.push_back(k);
    weight += items[k].weight;
  }
  if (weight <= capacity + excess) return {};
  // Members that are not needed go, those far from one first.
  std::stable_sort(cover.begin(), cover.end(),
                   [&](std::size_t a, std::size_t b) { return items[a].value < items[b].value; });
  std::vector<std::size_t> kept;
  for (const std::size_t k : cover) {
    if (weight - items[k].weight > capacity + excess) {
      weight -= items[k].weight;
    } else {
      kept.push_back(k);
    }
  }
  return kept;
}

// Coefficients of all items: 1 in the cover, lifted outside in order of decreasing value.
std::vector<double> lift(const std::vector<Item>& items, const std::vector<std::size_t>& cover, double capacity) {
  std::vector<double> coef(items.size(), 0);
  std::vector<double> weights;
  for (const std::size_t k : cover) {
    coef[k] = 1;
    weights.push_back(items[k].weight);
  }
  std::sort(weights.begin(), weights.end());
  // least[z]: least weight of a choice among the items lifted so far that counts at least z.
  const auto rhs = cover.size() - 1;
  std::vector<double> least(rhs + 1, 0);
  for (std::size_t z = 1; z <= rhs; ++z) least[z] = least[z - 1] + weights[z - 1];
  std::vector<std::size_t> rest;
  for (std::size_t k = 0; k < items.size(); ++k) {
    if (coef[k] == 0) rest.push_back(k);
  }
  std::stable_sort(rest.begin(), rest.end(),
                   [&](std::size_t a, std::size_t b) { return items[a].value > items[b].value; });
  const double slack = mip_tol::kRowFeasibility * std::max(1.0, capacity);
  for (const std::size_t k : rest) {
    const double room = capacity - items[k].weight;
    if (room < -slack) {  // can never be one: the strongest coefficient the table can carry
      coef[k] = static_cast<double>(rhs) + 1;
      continue;
    }
    std::size_t z = 0;
    while (z < rhs && least[z + 1] <= room + slack) ++z;
    const std::size_t alpha = rhs - z;
    if (alpha == 0) continue;
    coef[k] = static_cast<double>(alpha);
    for (std::size_t t = rhs; t >= 1; --t) {
      const double with = t > alpha ? least[t - alpha] + items[k].weight : items[k].weight;
      least[t] = std::min(least[t], with);
    }
  }
  return coef;
}

void try_cover(SeparationContext& context, const std::vector<Item>& items, double capacity, const CoverRule& rule) {
  const std::vector<std::size_t> cover = minimal_cover(items, capacity, rule);
  if (cover.size() < 2) return;
  const std::vector<double> coef = lift(items, cover, capacity);
  double left = 0;
  for (std::size_t k = 0; k < items.size(); ++k) left += coef[k] * items[k].value;
  const double rhs = static_cast<double>(cover.size()) - 1;
  if (left <= rhs + mip_tol::kCutViolation) return;
  Cut cut;
  cut.type = CutType::kCover;
  cut.rhs = rhs;
  for (std::size_t k = 0; k < items.size(); ++k) {
    if (coef[k] == 0) continue;
    const bool one = is_one(items[k].lit);
    cut.index.push_back(column_of(items[k].lit));
    cut.value.push_back(one ? coef[k] : -coef[k]);
    if (!one) cut.rhs -= coef[k];
  }
  context.found.push_back(std::move(cut));
}

void separate(SeparationContext& context) {
  const SearchModel& model = context.state.model;
  std::vector<KnapsackItem> knapsack;
  std::vector<Item> items;
  double capacity = 0;
  for (Index row = 0; row < model.num_rows(); ++row) {
    for (const double sign : {1.0, -1.0}) {
      if (!knapsack_of_row(model, row, sign, knapsack, capacity)) continue;
      if (knapsack.size() > kMaxItems || capacity <= 0) continue;
      items.clear();
      for (const auto& [lit, weight] : knapsack) {
        const double x = context.relaxation.x[column_of(lit)];
        items.push_back({lit, weight, is_one(lit) ? x : 1 - x});
      }
      for (const CoverRule& rule : kCoverRules) try_cover(context, items, capacity, rule);
    }
  }
}

}  // namespace

extern const Separator kCoverSeparator;
const Separator kCoverSeparator{"cover", separate};

}  // namespace zorvex

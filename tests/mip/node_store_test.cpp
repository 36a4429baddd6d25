#include "mip/node_store.hpp"

#include <gtest/gtest.h>

#include "base/random_stream.hpp"
#include "mip/cut_pool.hpp"
#include "mip/incumbents.hpp"

namespace zorvex {
namespace {

std::unique_ptr<Node> make_node(double bound, double estimate) {
  auto node = std::make_unique<Node>();
  node->bound = bound;
  node->estimate = estimate;
  return node;
}

TEST(NodeStore, BothOrdersAndPruning) {
  NodeStore store;
  RandomStream random(1, "nodes");
  std::vector<double> bounds;
  for (int k = 0; k < 200; ++k) {
    const double bound = static_cast<double>(random.below(50));
    bounds.push_back(bound);
    store.push(make_node(bound, 100 - bound));
  }
  std::sort(bounds.begin(), bounds.end());
  EXPECT_EQ(store.best_bound(), bounds.front());
  EXPECT_EQ(store.best_estimate(), 100 - bounds.back());
  EXPECT_EQ(store.pop_best_bound()->bound, bounds.front());
  EXPECT_EQ(store.pop_best_estimate()->bound, bounds.back());
  store.prune(20);
  std::size_t left = 0;
  for (std::size_t k = 1; k + 1 < bounds.size(); ++k) left += bounds[k] <= 20;
  EXPECT_EQ(store.size(), left);
  double last = -1;
  while (!store.empty()) {
    const double bound = store.pop_best_bound()->bound;
    EXPECT_GE(bound, last);
    last = bound;
  }
  EXPECT_LE(last, 20);
  EXPECT_EQ(store.bytes(), 0u);
  EXPECT_EQ(store.best_bound(), 1e100);
}

TEST(PackedBasis, SurvivesChangesOfTheCuts) {
  RandomStream random(2, "basis");
  const BasisStatus all[] = {BasisStatus::kBasic, BasisStatus::kAtLower, BasisStatus::kAtUpper,
                             BasisStatus::kNonbasicFree};
  Basis basis;
  for (int k = 0; k < 37; ++k) basis.col.push_back(all[random.below(4)]);
  for (int k = 0; k < 11; ++k) basis.row.push_back(all[random.below(4)]);
  const std::vector<std::int64_t> cuts = {5, 9, 12};
  basis.row[8] = BasisStatus::kAtUpper;  // cut 5
  basis.row[9] = BasisStatus::kBasic;
  basis.row[10] = BasisStatus::kAtUpper;  // cut 12
  const PackedBasis packed(basis, 8, cuts);
  const Basis same = packed.unpack(cuts);
  EXPECT_EQ(same.col, basis.col);
  EXPECT_EQ(same.row, basis.row);
  const Basis other = packed.unpack({12, 77});
  ASSERT_EQ(other.row.size(), 10u);
  EXPECT_EQ(other.row[8], BasisStatus::kAtUpper);
  EXPECT_EQ(other.row[9], BasisStatus::kBasic) << "a cut the basis never saw";
}

TEST(PackedBasis, NormsOnlyForTheSameRows) {
  Basis basis;
  basis.col = {BasisStatus::kBasic, BasisStatus::kAtLower};
  basis.row = {BasisStatus::kAtLower, BasisStatus::kBasic};
  basis.head = {0, 3};
  basis.norm = {2.5, 1};
  const PackedBasis packed(basis, 1, {4});
  EXPECT_EQ(packed.unpack({4}).norm, basis.norm);
  EXPECT_EQ(packed.unpack({4}).head, basis.head);
  EXPECT_TRUE(packed.unpack({}).norm.empty());
}

TEST(Incumbents, CutoffTable) {
  struct Row {
    const char* name;
    double user_cutoff;
    ObjectiveGrid grid;
    double objective;
    bool taken;
    double cutoff;
  };
  for (const Row& row :
       {Row{"plain", 1e100, {}, 100, true, 100 - 1e-5}, Row{"small objective", 1e100, {}, 0.5, true, 0.5 - 1e-7},
        Row{"integral objective", 1e100, {1, 0}, 100, true, 99 + 1e-5},
        Row{"incumbent off the grid", 1e100, {1, 0}, 100.7, true, 100 + 1.007e-5},
        Row{"grid with a base", 1e100, {2, 0.5}, 100.5, true, 98.5 + 1.005e-5},
        Row{"user cutoff holds", 50, {}, 40, true, 40 - 4e-6}, Row{"beyond the user cutoff", 50, {}, 60, false, 50}}) {
    Incumbents incumbents;
    incumbents.configure(row.user_cutoff, row.grid);
    EXPECT_EQ(incumbents.add({1}, row.objective), row.taken) << row.name;
    EXPECT_NEAR(incumbents.pruning_cutoff(), row.cutoff, 1e-10) << row.name;
    if (row.taken) {
      EXPECT_FALSE(incumbents.add({2}, row.objective)) << "ties are no improvement";
      EXPECT_TRUE(incumbents.prunes(row.objective)) << row.name;
    }
  }
}

TEST(Incumbents, PoolKeepsTheBestFirst) {
  Incumbents incumbents;
  incumbents.configure(1e100, {}, 3);
  for (const double objective : {9.0, 7.0, 8.0, 5.0, 4.0}) incumbents.add({objective}, objective);
  EXPECT_EQ(incumbents.found(), 4);
  ASSERT_EQ(incumbents.solutions().size(), 3u);
  EXPECT_EQ(incumbents.solutions()[0].objective, 4);
  EXPECT_EQ(incumbents.solutions()[2].x[0], 7);
}

TEST(CutPool, MultiplesOfOneCutMeet) {
  CutPool pool;
  const std::int64_t first = pool.add({{0, 3}, {1, 2}, 5, CutType::kMir, 0, 0});
  EXPECT_GE(first, 0);
  EXPECT_EQ(pool.add({{0, 3}, {2, 4}, 10, CutType::kGomory, 0, 0}), -1);
  EXPECT_GE(pool.add({{0, 3}, {1, 2}, 4, CutType::kGomory, 0, 0}), 0) << "stronger";
  EXPECT_GE(pool.add({{0, 4}, {1, 2}, 5, CutType::kCover, 0, 0}), 0);
  EXPECT_EQ(pool.size(), 3u);
  pool.remove(first);
  const auto counts = pool.counts_by_type();
  EXPECT_EQ(counts[6], 0);
  EXPECT_EQ(counts[2], 1);
  EXPECT_EQ(counts[3], 1);
}

}  // namespace
}  // namespace zorvex

// The automatic change of the dual's pricing on large models, with and without the memory for it.
#include <gtest/gtest.h>

#include <string_view>

#include "simplex/dual_pricing.hpp"
#include "support/failing_allocation.hpp"

namespace zorvex {
namespace {

// A log that takes no memory.
class Complaints final : public LogSink {
 public:
  void write(const char* text) override {
    ++lines;
    EXPECT_EQ(std::string_view(text), "Out of memory in DChangePrice().\n");
  }
  int lines = 0;
};

TEST(DualPricing, CostlyNormsGiveWayToRowCountsWhereThereIsMemoryForThem) {
  using Mode = DualPricingMode;
  const struct {
    Index rows;
    int pricing;
    double norm_work, row_work;
    bool memory;
    Mode after;
  } facts[] = {
      {15000, -1, 301, 100, true, Mode::kRowCount},     {15000, -1, 301, 100, false, Mode::kSteepestEdge},
      {15000, -1, 300, 100, true, Mode::kSteepestEdge}, {14999, -1, 301, 100, true, Mode::kSteepestEdge},
      {15000, 1, 301, 100, true, Mode::kSteepestEdge},
  };
  for (const auto& fact : facts) {
    SCOPED_TRACE(std::to_string(&fact - facts));
    SimplexCore<double> core;
    core.m = fact.rows;
    core.lower.assign(static_cast<std::size_t>(fact.rows), 0.0);
    core.upper = core.cost = core.lower;
    core.col_start.assign(1, 0);
    core.prepare();
    Complaints complaints;
    SimplexLog log(complaints, {});
    core.log = &log;
    DualPricing<double> pricing(core);
    pricing.begin(fact.pricing);
    core.weight[7] = 4;
    pricing.count_norm_work(fact.norm_work);
    pricing.count_row_work(fact.row_work);
    if (fact.memory) {
      pricing.reconsider_mode(0);
    } else {
      const testing::FailingAllocations none_left(0);
      pricing.reconsider_mode(0);
    }
    EXPECT_EQ(pricing.mode(), fact.after);
    EXPECT_EQ(core.weight[7], fact.after == Mode::kRowCount ? 1 : 4);
    EXPECT_EQ(complaints.lines, fact.memory ? 0 : 1);
  }
}

}  // namespace
}  // namespace zorvex

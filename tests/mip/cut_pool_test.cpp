#include "mip/cut_pool.hpp"

#include <gtest/gtest.h>

namespace zorvex {
namespace {

Cut make_cut(std::vector<double> value, double rhs, bool pinned = false) {
  Cut cut;
  for (std::size_t k = 0; k < value.size(); ++k) cut.index.push_back(static_cast<Index>(k));
  cut.value = std::move(value);
  cut.rhs = rhs;
  cut.pinned = pinned;
  return cut;
}

TEST(CutPool, KnowsWhatItHolds) {
  struct Case {
    const char* what;
    Cut held, added;
    bool taken;
  };
  const Case cases[] = {
      {"the same cut", make_cut({1, -2}, 3), make_cut({1, -2}, 3), false},
      {"a multiple", make_cut({1, -2}, 3), make_cut({2, -4}, 6), false},
      {"a weaker one", make_cut({1, -2}, 3), make_cut({1, -2}, 4), false},
      {"a stronger one", make_cut({1, -2}, 3), make_cut({1, -2}, 2), true},
      {"other coefficients", make_cut({1, -2}, 3), make_cut({1, -3}, 5), true},
      {"the other side of the row", make_cut({1, -2}, 3), make_cut({-1, 2}, -3), true},
      {"the other side, four columns", make_cut({1, 2, 3, 4}, 3), make_cut({-1, -2, -3, -4}, 3), true},
      {"two signs differ", make_cut({1, 2, 3}, 3), make_cut({-1, -2, 3}, 3), true},
      {"pinned over ordinary", make_cut({1, -2}, 3), make_cut({1, -2}, 3, true), true},
      {"ordinary over pinned", make_cut({1, -2}, 3, true), make_cut({1, -2}, 3), false},
      {"pinned over pinned", make_cut({1, -2}, 3, true), make_cut({1, -2}, 3, true), false},
  };
  for (const Case& c : cases) {
    CutPool pool;
    EXPECT_EQ(pool.add(c.held), 0) << c.what;
    EXPECT_EQ(pool.add(c.added), c.taken ? 1 : -1) << c.what;
  }
}

}  // namespace
}  // namespace zorvex

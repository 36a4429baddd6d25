// Shortest round trips: the model with every subtour constraint written down, against the model without any, whose
// callback adds those that a solution breaks. Cities from fixed seeds.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/random_stream.hpp"
#include "tiny_model.hpp"

namespace zorvex::testing {
namespace {

struct Cities {
  int count;
  std::vector<double> length;  // of the edges, in the order of edge()

  [[nodiscard]] int edge(int a, int b) const {
    if (a > b) std::swap(a, b);
    return a * count - a * (a + 1) / 2 + b - a - 1;
  }
  [[nodiscard]] int num_edges() const { return count * (count - 1) / 2; }
};

// Two clusters far apart, so that the cheapest solution without subtour constraints falls into two tours.
Cities two_clusters(int count, int seed) {
  RandomStream random(static_cast<std::uint64_t>(seed), "cities");
  std::vector<double> x, y;
  for (int city = 0; city < count; ++city) {
    x.push_back(random.uniform() * 10 + (city % 2 == 0 ? 0 : 40));
    y.push_back(random.uniform() * 10);
  }
  Cities cities{count, {}};
  for (int a = 0; a < count; ++a) {
    for (int b = a + 1; b < count; ++b) cities.length.push_back(std::round(100 * std::hypot(x[a] - x[b], y[a] - y[b])));
  }
  return cities;
}

std::vector<double> edges_within(const Cities& cities, unsigned subset) {
  std::vector<double> row(static_cast<std::size_t>(cities.num_edges()), 0.0);
  for (int a = 0; a < cities.count; ++a) {
    for (int b = a + 1; b < cities.count; ++b) {
      if ((subset >> a & 1U) != 0 && (subset >> b & 1U) != 0) row[cities.edge(a, b)] = 1;
    }
  }
  return row;
}

Tiny degree_model(const Cities& cities) {
  Tiny tiny;
  tiny.obj = cities.length;
  tiny.ub.assign(tiny.obj.size(), 1.0);
  tiny.types = std::string(tiny.obj.size(), 'B');
  for (int city = 0; city < cities.count; ++city) {
    Row row{std::vector<double>(tiny.obj.size(), 0.0), '=', 2};
    for (int other = 0; other < cities.count; ++other) {
      if (other != city) row.coefficient[cities.edge(city, other)] = 1;
    }
    tiny.rows.push_back(row);
  }
  return tiny;
}

Tiny full_model(const Cities& cities) {
  Tiny tiny = degree_model(cities);
  for (unsigned subset = 1; subset < 1U << (cities.count - 1); ++subset) {
    const int size = __builtin_popcount(subset);
    if (size >= 3 && size <= cities.count - 3) tiny.rows.push_back({edges_within(cities, subset), '<', size - 1.0});
  }
  return tiny;
}

// The cities that the edges of x connect with each other, one set for each tour.
std::vector<unsigned> tours(const Cities& cities, const double* x) {
  std::vector<unsigned> result;
  unsigned seen = 0;
  for (int start = 0; start < cities.count; ++start) {
    if ((seen >> start & 1U) != 0) continue;
    unsigned tour = 1U << start;
    for (bool grew = true; grew;) {
      grew = false;
      for (int a = 0; a < cities.count; ++a) {
        for (int b = 0; b < cities.count; ++b) {
          const bool leaves = a != b && (tour >> a & 1U) != 0 && (tour >> b & 1U) == 0;
          if (!leaves || x[cities.edge(a, b)] < 0.5) continue;
          tour |= 1U << b;
          grew = true;
        }
      }
    }
    seen |= tour;
    result.push_back(tour);
  }
  return result;
}

// Two tours, one through each cluster: feasible for the degrees, shorter than any round trip.
std::vector<double> two_tours(const Cities& cities) {
  std::vector<double> x(static_cast<std::size_t>(cities.num_edges()), 0.0);
  for (int city = 0; city < cities.count; ++city) {
    const int next = city + 2 < cities.count ? city + 2 : city % 2;
    x[cities.edge(city, next)] = 1;
  }
  return x;
}

struct Watch {
  const Cities& cities;
  bool offer = false;  // two tours and a partial point, at every node
  int solutions = 0, broken = 0;

  int call(ZLPcbdata* cbdata, int where) {
    if (where == ZLP_WHERE_MIP && offer) {
      std::vector<double> point = two_tours(cities);
      EXPECT_EQ(0, ZLPcbsolution(cbdata, point.data()));
      std::fill(point.begin() + cities.count, point.end(), ZLP_UNDEFINED);
      EXPECT_EQ(0, ZLPcbsolution(cbdata, point.data()));
    }
    if (where != ZLP_WHERE_MIP_SOLUTION) return 0;
    std::vector<double> x(static_cast<std::size_t>(cities.num_edges()));
    EXPECT_EQ(0, ZLPcbget(cbdata, where, ZLP_WHAT_SOLUTION, x.data()));
    ++solutions;
    const std::vector<unsigned> found = tours(cities, x.data());
    if (found.size() == 1) return 0;
    ++broken;
    for (const unsigned tour : found) {
      std::vector<int> index;
      const std::vector<double> row = edges_within(cities, tour);
      for (int edge = 0; edge < cities.num_edges(); ++edge) {
        if (row[edge] != 0) index.push_back(edge);
      }
      const std::vector<double> ones(index.size(), 1.0);
      const double limit = __builtin_popcount(tour) - 1.0;
      EXPECT_EQ(0, ZLPcbcut(cbdata, static_cast<int>(index.size()), index.data(), ones.data(), '<', limit));
    }
    return 0;
  }
};

int watch_callback(ZLPmodel*, ZLPcbdata* cbdata, int where, void* user) {
  return static_cast<Watch*>(user)->call(cbdata, where);
}

TEST(LazyConstraints, EverySourceOfSolutionsRespectsThem) {
  struct Case {
    const char* what;
    double heuristics;
    int rins;
    bool start, offer;
    double node_limit = 1e100;  // of the first of two calls
  };
  const Case cases[] = {{"tree", 0, 0, false, false}, {"heuristics", 0.5, 5, false, false},
                        {"start", 0, 0, true, false}, {"offered", 0, 0, false, true},
                        {"all", 0.5, 5, true, true},  {"resumed", 0.05, -1, false, false, 1}};
  const Env env = quiet_env();
  for (const int count : {7, 8, 9}) {
    for (int seed = 0; seed < 3; ++seed) {
      const Cities cities = two_clusters(count, 100 * count + seed);
      const Model full = build(env.get(), full_model(cities), {{"MIPGap", 0}});
      ASSERT_EQ(0, ZLPoptimize(full.get()));
      ASSERT_EQ(2, int_attr(full.get(), "Status"));
      for (const Case& c : cases) {
        const std::string place = c.what + (" " + std::to_string(count)) + " " + std::to_string(seed);
        const Model model = build(env.get(), degree_model(cities),
                                  {{"MIPGap", 0}, {"Heuristics", c.heuristics}, {"RINS", c.rins}, {"PreCrush", 1}});
        ZLPenv* own = ZLPgetenv(model.get());
        if (c.start) {
          const std::vector<double> x = two_tours(cities);
          ASSERT_EQ(0, ZLPsetdblattrarray(model.get(), "Start", 0, cities.num_edges(), x.data()));
        }
        Watch watch{cities, c.offer};
        ASSERT_EQ(0, ZLPsetcallbackfunc(model.get(), watch_callback, &watch));
        if (c.node_limit < 1e100) {
          ASSERT_EQ(0, ZLPsetdblparam(own, "NodeLimit", c.node_limit));
          ASSERT_EQ(0, ZLPoptimize(model.get()));
          ASSERT_EQ(0, ZLPsetdblparam(own, "NodeLimit", 1e100));
        }
        ASSERT_EQ(0, ZLPoptimize(model.get()));
        ASSERT_EQ(2, int_attr(model.get(), "Status")) << place;
        EXPECT_NEAR(dbl_attr(full.get(), "ObjVal"), dbl_attr(model.get(), "ObjVal"), 1e-6) << place;
        EXPECT_GT(watch.broken, 0) << place;
        // Every stored solution is a round trip.
        for (int number = 0; number < int_attr(model.get(), "SolCount"); ++number) {
          ASSERT_EQ(0, ZLPsetintparam(own, "SolutionNumber", number));
          const std::vector<double> x = dbl_array(model.get(), "Xn", "NumVars");
          EXPECT_EQ(1u, tours(cities, x.data()).size()) << place;
        }
      }
    }
  }
}

}  // namespace
}  // namespace zorvex::testing

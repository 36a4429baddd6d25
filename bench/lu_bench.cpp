// Cost of the basis factorization and its solves on synthetic bases that look like those of large models: mostly
// logical and triangular, with a sparse nucleus.
//   Counters  ns_per_nnz: time per basis nonzero (factor) or per nonzero of the result (solves).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <numeric>

#include "base/random_stream.hpp"
#include "simplex/basis_lu.hpp"

namespace zorvex {
namespace {

struct BenchBasis {
  Index m = 0;
  std::vector<Offset> start{0};
  std::vector<Index> index;
  std::vector<double> value;
  std::vector<Index> head;

  [[nodiscard]] ColumnView<double> view() const {
    return {m, static_cast<Index>(start.size()) - 1, start.data(), index.data(), value.data()};
  }
};

// Three in five positions logical; of the structurals, `nucleus` in a thousand couple in both directions, the others
// have two further entries among the preceding hundred rows, as in staircase models.
BenchBasis make_basis(Index m, Index nucleus) {
  RandomStream random(1, "lu_bench");
  BenchBasis basis;
  basis.m = m;
  std::vector<Index> row_of(m);
  std::iota(row_of.begin(), row_of.end(), 0);
  for (Index i = m - 1; i > 0; --i) std::swap(row_of[i], row_of[random.below(i + 1)]);
  std::vector<Index> logicals;
  for (Index k = 0; k < m; ++k) {
    if (random.below(5) < 3) {
      logicals.push_back(row_of[k]);
      continue;
    }
    const bool couples = random.below(1000) < nucleus;
    std::vector<Index> rows{k};
    for (int e = 0; e < 2; ++e) {
      const auto back = static_cast<Index>(1 + random.below(100));
      rows.push_back(couples ? static_cast<Index>(random.below(m)) : std::max<Index>(0, k - back));
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (const Index row : rows) {
      basis.index.push_back(row_of[row]);
      basis.value.push_back((row == k ? 2 : 1) * (random.below(2) == 0 ? 1 : -1) * (0.5 + random.uniform()));
    }
    basis.head.push_back(static_cast<Index>(basis.start.size()) - 1);
    basis.start.push_back(static_cast<Offset>(basis.index.size()));
  }
  for (const Index row : logicals) basis.head.push_back(static_cast<Index>(basis.start.size()) - 1 + row);
  return basis;
}

void factor_or_skip(benchmark::State& state, BasisLu<double>& lu, const BenchBasis& basis) {
  LuStatus status = lu.factor(basis.view(), basis.head, 0.1, StopToken());
  while (status == LuStatus::kSpaceTooSmall) {
    lu.grow_space();
    status = lu.factor(basis.view(), basis.head, 0.1, StopToken());
  }
  if (status != LuStatus::kOk) state.SkipWithError("basis did not factor");
}

void bm_factor(benchmark::State& state) {
  const BenchBasis basis = make_basis(static_cast<Index>(state.range(0)), static_cast<Index>(state.range(1)));
  BasisLu<double> lu;
  for (auto _ : state) factor_or_skip(state, lu, basis);
  const auto nonzeros = static_cast<double>(basis.index.size()) + basis.m;
  state.counters["ns_per_nnz"] =
      benchmark::Counter(nonzeros * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["fill"] = static_cast<double>(lu.factor_nonzeros()) / nonzeros;
}
BENCHMARK(bm_factor)
    ->Args({1000, 50})
    ->Args({10000, 50})
    ->Args({100000, 50})
    ->Args({100000, 300})
    ->Unit(benchmark::kMicrosecond);

// One solve with a unit vector (kind 0: ftran, 1: btran) or with a right-hand side of m / 4 nonzeros (kinds 2, 3).
void bm_solve(benchmark::State& state) {
  const BenchBasis basis = make_basis(static_cast<Index>(state.range(0)), 50);
  BasisLu<double> lu;
  factor_or_skip(state, lu, basis);
  RandomStream random(2, "lu_bench");
  Scattered<double> x;
  x.resize(basis.m);
  const Index count = state.range(1) < 2 ? 1 : basis.m / 4;
  double result = 0;
  for (auto _ : state) {
    x.clear();
    for (Index k = 0; k < count; ++k) {
      const auto i = static_cast<Index>(random.below(basis.m));
      if (x.value[i] != 0) continue;
      x.value[i] = 1;
      x.index.push_back(i);
    }
    state.range(1) % 2 == 0 ? lu.ftran(x) : lu.btran(x);
    result += static_cast<double>(x.dense ? basis.m : static_cast<Index>(x.index.size()));
  }
  state.counters["nnz"] = benchmark::Counter(result, benchmark::Counter::kAvgIterations);
}
BENCHMARK(bm_solve)->ArgsProduct({{1000, 10000, 100000, 1000000}, {0, 1, 2, 3}});

// A simplex iteration's share: ftran of an entering column, btran of a unit vector, update; refactored when asked for.
void bm_iteration(benchmark::State& state) {
  BenchBasis basis = make_basis(static_cast<Index>(state.range(0)), 50);
  std::vector<Index> outside;
  for (const Index variable : basis.head) {
    if (variable < basis.view().num_cols) continue;
    outside.push_back(variable);
  }
  BasisLu<double> lu;
  factor_or_skip(state, lu, basis);
  RandomStream random(3, "lu_bench");
  Scattered<double> x, y;
  x.resize(basis.m);
  y.resize(basis.m);
  const Index structurals = basis.view().num_cols;
  double factors = 0;
  for (auto _ : state) {
    x.clear();  // an entering column made of two basic ones, so that the exchange keeps the basis regular
    for (int part = 0; part < 2; ++part) {
      const auto col = static_cast<Index>(random.below(structurals));
      for (Offset k = basis.start[col]; k < basis.start[col + 1]; ++k) {
        if (x.value[basis.index[k]] != 0) continue;
        x.value[basis.index[k]] = basis.value[k];
        x.index.push_back(basis.index[k]);
      }
    }
    lu.ftran(x, true);
    Index leaving = -1;
    for (const Index i : x.index) {
      if (leaving < 0 || std::abs(x.value[i]) > std::abs(x.value[leaving])) leaving = i;
    }
    if (leaving < 0) {
      state.SkipWithError("dense column");
      break;
    }
    const double pivot = x.value[leaving];
    y.clear();
    y.value[leaving] = 1;
    y.index.push_back(leaving);
    lu.btran(y);
    if (lu.update(leaving, pivot) != LuUpdateStatus::kOk || lu.wants_refactor()) {
      factors += 1;
      factor_or_skip(state, lu, basis);
    }
  }
  state.counters["updates_per_factor"] = static_cast<double>(state.iterations()) / (factors + 1);
}
BENCHMARK(bm_iteration)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace zorvex

BENCHMARK_MAIN();

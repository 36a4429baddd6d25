#include "io/mps_quadratic.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace zorvex {

bool MpsQuadratic::finish(long line, MpsDiagnostics* diagnostics, std::vector<ParsedQuadraticTerm>* terms) {
  // Entries of one unordered pair stand together, in the order of the file.
  std::vector<std::size_t> order(entries_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const auto low = [](const Entry& e) { return std::min(e.first, e.second); };
  const auto high = [](const Entry& e) { return std::max(e.first, e.second); };
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const Entry& x = entries_[a];
    const Entry& y = entries_[b];
    if (low(x) != low(y)) return low(x) < low(y);
    return high(x) != high(y) ? high(x) < high(y) : a < b;
  });

  std::vector<char> keep(entries_.size(), 1);
  for (std::size_t k = 0; k < order.size();) {
    const Entry& a = entries_[order[k]];
    std::size_t next = k + 1;
    while (next < order.size() && low(entries_[order[next]]) == low(a) && high(entries_[order[next]]) == high(a))
      ++next;
    const std::size_t count = next - k;
    const Entry& b = entries_[order[next - 1]];
    const bool mirrored = count == 2 && a.first == b.second && a.first != a.second && a.full == b.full;
    if (count > 1 && !mirrored) {
      return diagnostics->fail("Error: duplicate quadratic elements\n", "Duplicate quadratic elements\n", line);
    }
    if (a.full && a.first != a.second && !(mirrored && a.value == b.value)) {
      return diagnostics->fail("Error: qmatrix isn't symmetric\n", "Qmatrix isn't symmetric\n", line);
    }
    if (a.full && mirrored) keep[order[next - 1]] = 0;
    k = next;
  }
  for (std::size_t k = 0; k < entries_.size(); ++k) {
    const Entry& e = entries_[k];
    if (keep[k]) terms->push_back({e.first, e.second, e.first == e.second ? e.value : 2 * e.value});
  }
  return true;
}

}  // namespace zorvex

// Collects the quadratic sections of an MPS file and checks them as a whole.
#pragma once

#include <vector>

#include "io/mps_diagnostics.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

class MpsQuadratic {
 public:
  // An entry Q(first, second); `full` when both triangles are given (QMATRIX), else the other one is implied.
  void add(Index first, Index second, double value, bool full) { entries_.push_back({first, second, value, full}); }
  [[nodiscard]] Offset size() const { return static_cast<Offset>(entries_.size()); }

  // Turns the entries into terms, one per pair of a full matrix, in the order of the file. False with an error when
  // an entry occurs twice, in one section or in two, or a full matrix is not symmetric. A triangle may name a pair in
  // both orders: such entries are two terms. Cost O(n log n).
  bool finish(long line, MpsDiagnostics* diagnostics, std::vector<ParsedQuadraticTerm>* terms);

 private:
  struct Entry {
    Index first, second;
    double value;
    bool full;
  };
  std::vector<Entry> entries_;
};

}  // namespace zorvex

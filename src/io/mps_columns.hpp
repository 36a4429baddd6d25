// Collects the COLUMNS section into column-wise storage.
#pragma once

#include <string_view>
#include <vector>

#include "io/mps_diagnostics.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

// Columns usually stand together and are stored as they come. What does not fit, entries of a column that is taken up
// again later and entries of a place that has one, is kept aside in `late_` and merged by finish().
class MpsColumns {
 public:
  MpsColumns(ParsedModel* data, MpsDiagnostics* diagnostics) : data_(data), diagnostics_(diagnostics) {}

  // Call once all rows are known.
  void start(Index num_rows) { last_column_.assign(static_cast<std::size_t>(num_rows), -1); }

  // Makes `name` the current column. False when it belongs both to an integer block and to none.
  bool select(std::string_view name, bool integer);

  // An entry of the current column. Values of the same place are added up with a warning.
  void add(Index row, double value);
  void add_objective(double value, std::string_view objective_name);

  // Entries seen, objective included.
  [[nodiscard]] Offset num_entries() const { return num_entries_; }

  // Closes the last column and merges what came late.
  void finish();

 private:
  struct Late {
    Index col, row;
    double value;
  };
  void warn_duplicate(Index col, std::string_view row_name);

  ParsedModel* data_;
  MpsDiagnostics* diagnostics_;
  Index current_ = -1;
  bool is_late_ = false;             // the current column is not the last one
  std::vector<Index> last_column_;   // per row: the column of its last entry; small, as every entry touches it
  std::vector<char> has_objective_;  // per column
  std::vector<Late> late_;
  Offset num_entries_ = 0;
};

}  // namespace zorvex

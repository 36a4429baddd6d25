// Reads the text of an MPS file in one layout into ParsedModel. Knows neither environment nor model.
//   Sections  NAME, ROWS, COLUMNS, RHS, RANGES, BOUNDS, SOS (or SETS), QMATRIX, QSECTION, QUADOBJ, ENDATA; OBJSENSE and
//             OBJNAME with their word on the same or the next line; MAX and MIN alone on a line.
//   Sets      the first named RHS, RANGES and BOUNDS set counts, others are skipped with a warning.
//   Twice     nonzeros given twice are added up; of right-hand sides and ranges the first, of bounds the last one
//             counts; each with a warning.
//   Ranges    R on an L row: [rhs - |R|, rhs]; on G: [rhs, rhs + |R|]; on E: [rhs, rhs + R] or [rhs + R, rhs] by sign.
//   Bounds    0 and infinity by default; an integer column without any bound is 0/1. A negative UP without a lower
//             bound makes the lower one minus infinity, with a warning. SC without a number is unbounded above. LI, UI
//             and SI are LO, UP and SC of an integer column.
//   Quadratic objective 1/2 x'Qx: QUADOBJ and QSECTION give one triangle of Q, QMATRIX all of it.
//   Cost      one pass; O(1) per entry.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/line_reader.hpp"
#include "io/mps_columns.hpp"
#include "io/mps_diagnostics.hpp"
#include "io/mps_layout.hpp"
#include "io/mps_quadratic.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

class MpsParser {
 public:
  MpsParser(MpsLayout layout, const ReadLimits& limits);

  // Parses up to ENDATA. False after an error, which stands in diagnostics().
  bool parse(ModelStream* stream);

  // After parse() returned true. The parser is empty afterwards.
  [[nodiscard]] ParsedModel take_data() { return std::move(data_); }
  [[nodiscard]] const MpsDiagnostics& diagnostics() const { return diagnostics_; }

 private:
  enum class Section { kNone, kRows, kColumns, kRhs, kRanges, kBounds, kSos, kQuadratic, kEnd };
  enum class Awaited { kNothing, kSense, kObjectiveName };

  bool line(std::string_view line);
  bool header(std::string_view line);
  bool section_header(std::string_view keyword, std::string_view rest);
  bool enter_after_columns(Section section);
  bool enter_rows();
  bool enter_columns();
  void name_line(std::string_view rest);
  void set_sense(std::string_view word);
  void choose_objective();
  bool data_line(std::string_view line);

  bool rows_line(std::string_view line);
  bool columns_line(std::string_view line);
  bool marker_line(std::string_view kind);
  bool rhs_line(std::string_view line);
  bool add_rhs(Index row, std::string_view row_name, double value);
  bool ranges_line(std::string_view line);
  bool bounds_line(std::string_view line);
  bool apply_bound(std::string_view type, std::string_view number, Index col);
  bool sos_line(std::string_view line);
  bool sos_header(const MpsWords& words);
  bool sos_member(std::string_view line);
  bool quadratic_line(std::string_view line);
  bool finish();
  void prepare_bounds();
  void apply_default_bounds();
  void settle_ranges();

  bool number(std::string_view text, double* value);  // finite, or an error at this line
  // The set of a RHS, RANGES or BOUNDS line counts when it is unnamed or the first named one of its section.
  bool accept_set(std::string_view set, const char* section, std::optional<std::string>* first);
  bool fail_line(std::string_view line, LineShape shape);
  bool fail_line() { return diagnostics_.fail_at_line(line_number_, printable(current_line_)); }
  [[nodiscard]] bool is_objective(std::string_view row) const { return free_rows_.find(row) == objective_; }

  MpsLineScanner scanner_;
  ReadLimits limits_;
  MpsDiagnostics diagnostics_;
  ParsedModel data_;

  Section section_ = Section::kNone;
  Awaited awaited_ = Awaited::kNothing;
  bool seen_rows_ = false, seen_columns_ = false;
  long line_number_ = 0;
  std::string_view current_line_;

  NameTable free_rows_;  // N rows in order; disjoint from data_.rows
  std::string wanted_objective_;
  Index objective_ = -1;  // index into free_rows_, -1 without an objective
  bool in_integer_block_ = false;
  MpsColumns columns_;

  std::vector<char> rhs_given_;
  std::vector<double> range_;  // empty without RANGES; NaN for rows without an entry
  bool objective_rhs_given_ = false;
  std::optional<std::string> rhs_set_, range_set_, bound_set_;
  std::vector<unsigned char> bound_given_;  // bits kLowerGiven, kUpperGiven, kAnyGiven per column
  std::vector<Index> sos_of_col_;           // last set (1-based) that a column was put into, to find duplicates
  MpsQuadratic quadratic_;
  bool full_quadratic_ = false;  // in QMATRIX

  MpsPairs pairs_;
  std::array<NameTable::Key, MpsPairs::kMax> key_;  // of the names in pairs_
};

}  // namespace zorvex

#include "io/mps_parser.hpp"

#include <cmath>

#include "io/number_text.hpp"

namespace zorvex {

namespace {

std::string upper_case(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return out;
}

// The first word, cut off the front of `text`.
std::string_view take_word(std::string_view* text) {
  *text = trim(*text);
  std::size_t length = 0;
  while (length < text->size() && !is_blank((*text)[length])) ++length;
  const std::string_view word = text->substr(0, length);
  *text = trim(text->substr(length));
  return word;
}

bool is_sense_word(std::string_view word) {
  const std::string upper = upper_case(word);
  return upper == "MAX" || upper == "MIN" || upper == "MAXIMIZE" || upper == "MINIMIZE" || upper == "MAXIMISE" ||
         upper == "MINIMISE";
}

bool is_keyword(std::string_view word) {
  for (const char* keyword : {"NAME", "ROWS", "RHS", "RANGES", "BOUNDS", "SOS", "SETS", "QMATRIX", "QSECTION",
                              "QUADOBJ", "ENDATA", "OBJNAME", "OBJSENSE"}) {
    if (word == keyword) return true;
  }
  return word.starts_with("COLU");
}

}  // namespace

MpsParser::MpsParser(MpsLayout layout, const ReadLimits& limits)
    : scanner_(layout), limits_(limits), columns_(&data_, &diagnostics_) {}

bool MpsParser::parse(ModelStream* stream) {
  LineReader lines(stream);
  std::string_view text;
  while (section_ != Section::kEnd && lines.next(&text)) {
    line_number_ = lines.line_number();
    if (!line(text)) return false;
  }
  if (section_ == Section::kEnd) return finish();
  if (!seen_rows_) return diagnostics_.fail("Error: no row section.\n", "MPS reader: no row section\n", line_number_);
  return diagnostics_.fail_not_right(line_number_);
}

bool MpsParser::line(std::string_view line) {
  while (!line.empty() && is_blank(line.back())) line.remove_suffix(1);
  if (line.empty() || line.front() == '*') return true;
  current_line_ = line;
  // Text files have no zero bytes; names with one would be cut wherever they are handed on as C strings.
  if (std::memchr(line.data(), '\0', line.size()) != nullptr) return fail_line();
  if (awaited_ != Awaited::kNothing) {
    std::string_view rest = line;
    const std::string_view word = take_word(&rest);
    const bool is_value = is_blank(line.front()) || !is_keyword(word);
    if (is_value && awaited_ == Awaited::kSense) set_sense(word);
    if (is_value && awaited_ == Awaited::kObjectiveName) wanted_objective_ = word;
    awaited_ = Awaited::kNothing;
    if (is_value) return true;
  }
  return is_blank(line.front()) ? data_line(line) : header(line);
}

void MpsParser::set_sense(std::string_view word) { data_.maximize = upper_case(word).starts_with("MAX"); }

bool MpsParser::header(std::string_view line) {
  std::string_view rest = line;
  const std::string_view keyword = take_word(&rest);
  if (keyword == "NAME") {
    name_line(rest);
    return true;
  }
  if (keyword == "OBJSENSE" || keyword == "OBJNAME") {
    section_ = Section::kNone;
    const bool is_sense = keyword == "OBJSENSE";
    if (!is_sense && seen_columns_) return diagnostics_.fail_not_right(line_number_);
    if (rest.empty()) {
      awaited_ = is_sense ? Awaited::kSense : Awaited::kObjectiveName;
    } else if (is_sense) {
      set_sense(take_word(&rest));
    } else {
      wanted_objective_ = take_word(&rest);
    }
    return true;
  }
  if (rest.empty() && is_sense_word(keyword)) {
    set_sense(keyword);
    return true;
  }
  return section_header(keyword, rest);
}

bool MpsParser::section_header(std::string_view keyword, std::string_view rest) {
  const bool names_objective = keyword == "QSECTION" && !rest.empty();
  const bool has_comment = !rest.empty() && (rest.front() == '$' || rest.front() == '*');
  // More words on a header are data that stand in the wrong place, or a section of another meaning.
  if (!rest.empty() && !has_comment && !names_objective) return diagnostics_.fail_not_right(line_number_);
  if (keyword == "ROWS") return enter_rows();
  if (keyword.starts_with("COLU")) return enter_columns();
  if (keyword == "RHS") return enter_after_columns(Section::kRhs);
  if (keyword == "RANGES") return enter_after_columns(Section::kRanges);
  if (keyword == "BOUNDS") return enter_after_columns(Section::kBounds);
  if (keyword == "SOS" || keyword == "SETS") return enter_after_columns(Section::kSos);
  if (keyword == "QMATRIX" || keyword == "QSECTION" || keyword == "QUADOBJ") {
    if (!enter_after_columns(Section::kQuadratic)) return false;
    // A quadratic section of a constraint: not a model that we can hold.
    if (names_objective && !has_comment && !is_objective(take_word(&rest))) {
      return diagnostics_.fail_not_right(line_number_);
    }
    full_quadratic_ = keyword == "QMATRIX";
    return true;
  }
  if (keyword == "ENDATA") return enter_after_columns(Section::kEnd);
  return diagnostics_.fail_not_right(line_number_);
}

bool MpsParser::enter_rows() {
  if (seen_columns_) return diagnostics_.fail_not_right(line_number_);
  section_ = Section::kRows;
  seen_rows_ = true;
  return true;
}

bool MpsParser::enter_after_columns(Section section) {
  if (!seen_rows_) return diagnostics_.fail("Error: no row section.\n", "MPS reader: no row section\n", line_number_);
  if (!seen_columns_) {
    return diagnostics_.fail("Error: no column section.\n", "MPS reader: no column section\n", line_number_);
  }
  section_ = section;
  return true;
}

bool MpsParser::enter_columns() {
  if (!seen_rows_) return diagnostics_.fail("Error: no row section.\n", "MPS reader: no row section\n", line_number_);
  section_ = Section::kColumns;
  if (seen_columns_) return true;
  seen_columns_ = true;
  choose_objective();
  if (data_.rows.size() == 0) {
    return diagnostics_.fail("Error: no constraints.\n", "MPS reader: no constraints in MPS file\n", line_number_);
  }
  data_.rhs.assign(data_.sense.size(), 0);
  rhs_given_.assign(data_.sense.size(), 0);
  columns_.start(data_.rows.size());
  return true;
}

void MpsParser::choose_objective() {
  if (free_rows_.size() == 0) {
    diagnostics_.warn(ReadWarning::kNoObjective, "Warning: no objective.\n");
    return;
  }
  if (!wanted_objective_.empty()) {
    objective_ = free_rows_.find(wanted_objective_);
    if (objective_ >= 0) return;
    diagnostics_.warn(ReadWarning::kObjectiveNotFound, format_text("Warning: objective row %s is not an N row.\n",
                                                                   printable(wanted_objective_).c_str()));
  }
  objective_ = 0;
  if (free_rows_.size() > 1) {
    diagnostics_.warn(ReadWarning::kSeveralObjectives, "Warning: more than one unconstrainted rows,\n");
    diagnostics_.warn(ReadWarning::kSeveralObjectives, "the first one is used for objective.\n");
  }
}

// "NAME [name] [with objcon=constant]"; other words behind the name are remarks.
void MpsParser::name_line(std::string_view rest) {
  constexpr std::string_view kConstant = "with objcon=";
  const std::size_t at = rest.rfind(kConstant);
  double constant = 0;
  if (at != std::string_view::npos && parse_number(trim(rest.substr(at + kConstant.size())), &constant) &&
      std::isfinite(constant)) {
    data_.objective_constant += constant;
    rest = rest.substr(0, at);
  }
  data_.name = std::string(take_word(&rest).substr(0, kMaxNameLength));
}

bool MpsParser::data_line(std::string_view line) {
  switch (section_) {
    case Section::kRows:
      return rows_line(line);
    case Section::kColumns:
      return columns_line(line);
    case Section::kRhs:
      return rhs_line(line);
    case Section::kRanges:
      return ranges_line(line);
    case Section::kBounds:
      return bounds_line(line);
    case Section::kSos:
      return sos_line(line);
    case Section::kQuadratic:
      return quadratic_line(line);
    case Section::kNone:
    case Section::kEnd:
      break;
  }
  return diagnostics_.fail_not_right(line_number_);
}

bool MpsParser::accept_set(std::string_view set, const char* section, std::optional<std::string>* first) {
  if (set.empty()) return true;
  if (!first->has_value()) *first = std::string(set);
  if (**first == set) return true;
  diagnostics_.warn_once(ReadWarning::kOtherSet, format_text("Warning: %s has several sets, only %s is used.\n",
                                                             section, printable(**first).c_str()));
  return false;
}

bool MpsParser::fail_line(std::string_view line, LineShape shape) {
  const bool in_rows = section_ == Section::kRows && scanner_.layout() == MpsLayout::kFree;
  if (shape == LineShape::kNotThisLayout && in_rows) return diagnostics_.fail_not_free(line_number_);
  return diagnostics_.fail_at_line(line_number_, printable(line));
}

bool MpsParser::finish() {
  columns_.finish();
  if (data_.cols.size() == 0 || columns_.num_entries() == 0) {
    return diagnostics_.fail("Error: no columns or no nonzeros.\n", "MPS reader: no columns or no nonzeros\n",
                             line_number_);
  }
  apply_default_bounds();
  settle_ranges();
  return quadratic_.finish(line_number_, &diagnostics_, &data_.quadratic);
}

// By the sense of the row and the sign of the range.
void MpsParser::settle_ranges() {
  if (range_.empty()) return;
  for (Index row = 0; row < data_.num_rows(); ++row) {
    if (std::isnan(range_[row])) continue;
    const double rhs = data_.rhs[row];
    const double width = std::fabs(range_[row]);
    const char sense = data_.sense[row];
    const bool downward = sense == '<' || (sense == '=' && range_[row] < 0);
    data_.ranges.push_back(downward ? ParsedRange{row, rhs - width, rhs} : ParsedRange{row, rhs, rhs + width});
  }
}

// A side that no bound line set keeps the default of its column.
void MpsParser::apply_default_bounds() {
  prepare_bounds();
  for (Index col = 0; col < data_.cols.size(); ++col) {
    if (data_.vtype[col] != 'I') continue;
    if (bound_given_[col] == 0) data_.upper[col] = 1;
    if (data_.lower[col] == 0 && data_.upper[col] == 1) data_.vtype[col] = 'B';
  }
}

void MpsParser::prepare_bounds() {
  const auto num_cols = static_cast<std::size_t>(data_.cols.size());
  data_.lower.resize(num_cols, 0);
  data_.upper.resize(num_cols, kInf);
  bound_given_.resize(num_cols, 0);
}

}  // namespace zorvex

// The lines of each section.
#include <cmath>
#include <limits>

#include "io/mps_parser.hpp"
#include "io/number_text.hpp"

namespace zorvex {

namespace {

constexpr double kRhsInfinity = 1e30;

constexpr unsigned char kLowerGiven = 1, kUpperGiven = 2, kAnyGiven = 4;

char sense_of(std::string_view type) {
  if (type.size() != 1) return 0;
  switch (type[0]) {
    case 'N':
    case 'n':
      return 'N';
    case 'L':
    case 'l':
      return '<';
    case 'G':
    case 'g':
      return '>';
    case 'E':
    case 'e':
      return '=';
    default:
      return 0;
  }
}

// What a bound type does. `integer`: the column becomes integer.
struct BoundSpec {
  const char* type;
  bool needs_number, sets_lower, sets_upper, integer, semicontinuous;
};
constexpr BoundSpec kBoundSpecs[] = {
    {"LO", true, true, false, false, false},  {"UP", true, false, true, false, false},
    {"FX", true, true, true, false, false},   {"FR", false, true, true, false, false},
    {"MI", false, true, false, false, false}, {"PL", false, false, true, false, false},
    {"BV", false, true, true, true, false},   {"LI", true, true, false, true, false},
    {"UI", true, false, true, true, false},   {"SC", false, false, true, false, true},
    {"SI", false, false, true, true, true},
};

const BoundSpec* bound_spec(std::string_view type) {
  for (const BoundSpec& spec : kBoundSpecs) {
    if (type == spec.type) return &spec;
  }
  return nullptr;
}

// The type of a column that a bound makes integer or semicontinuous.
char changed_type(char type, const BoundSpec& spec) {
  const bool integer = spec.integer || type == 'I' || type == 'B' || type == 'N';
  const bool semicontinuous = spec.semicontinuous || type == 'S' || type == 'N';
  if (semicontinuous) return integer ? 'N' : 'S';
  return integer ? 'I' : 'C';
}

}  // namespace

bool MpsParser::number(std::string_view text, double* value) {
  return (parse_number(text, value) && std::isfinite(*value)) || fail_line();
}

bool MpsParser::rows_line(std::string_view line) {
  MpsRow row;
  const LineShape shape = scanner_.row(line, &row);
  if (shape != LineShape::kGood) return fail_line(line, shape);
  const char sense = sense_of(row.type);
  if (sense == 0 || row.name.size() > kMaxNameLength) return fail_line();
  if (data_.rows.find(row.name) >= 0 || free_rows_.find(row.name) >= 0) return fail_line();
  if (sense == 'N') {
    free_rows_.insert(row.name);
    return true;
  }
  data_.rows.insert(row.name);
  data_.sense.push_back(sense);
  if (data_.rows.size() <= limits_.rows) return true;
  return diagnostics_.fail("Warning: number of constraints exceeds two billion\n",
                           "MPS reader: number of constraints exceeds two billion\n", line_number_);
}

bool MpsParser::columns_line(std::string_view line) {
  // In fixed layout a marker's words stand where numbers would.
  if (scanner_.layout() == MpsLayout::kFixed && line.find("'MARKER'") != std::string_view::npos) {
    return marker_line(trim(line.substr(line.find("'MARKER'") + 8)));
  }
  const LineShape shape = scanner_.pairs(line, false, data_.rows, &free_rows_, &pairs_);
  if (pairs_.count == 1 && shape == LineShape::kGood && pairs_.name[0] == "'MARKER'") {
    return marker_line(pairs_.number[0]);
  }
  if (shape != LineShape::kGood) return fail_line(line, shape);
  const Index known = data_.cols.size();
  if (pairs_.head.empty()) {
    if (known == 0) return fail_line();
  } else if (pairs_.head.size() > kMaxNameLength || !columns_.select(pairs_.head, in_integer_block_)) {
    return fail_line();
  }
  if (data_.cols.size() > limits_.cols) {
    return diagnostics_.fail("Warning: number of variables exceeds two billion\n",
                             "MPS reader: number of variables exceeds two billion\n", line_number_);
  }
  for (int k = 0; k < pairs_.count; ++k) key_[k] = data_.rows.prepare(pairs_.name[k]);
  for (int k = 0; k < pairs_.count; ++k) {
    double value;
    if (!number(pairs_.number[k], &value)) return false;
    const Index row = data_.rows.find(pairs_.name[k], key_[k]);
    if (row >= 0) {
      columns_.add(row, value);
      continue;
    }
    const Index free_row = free_rows_.find(pairs_.name[k]);
    if (free_row < 0) {
      diagnostics_.warn(ReadWarning::kUndefinedRowInColumns,
                        format_text("Warning: row name %s in column section at line %ld not defined.\n",
                                    printable(pairs_.name[k]).c_str(), line_number_));
    } else if (free_row == objective_) {
      columns_.add_objective(value, pairs_.name[k]);
    }
  }
  if (columns_.num_entries() <= limits_.nonzeros) return true;
  return diagnostics_.fail("Warning: number of nonzeros exceeds two billion\n",
                           "MPS reader: number of nonzeros exceeds two billion\n", line_number_);
}

bool MpsParser::marker_line(std::string_view kind) {
  const bool opens = kind == "'INTORG'";
  if ((!opens && kind != "'INTEND'") || opens == in_integer_block_) {
    diagnostics_.warn(ReadWarning::kWrongMarker, format_text("Warning: marker at line %ld is wrong.\n", line_number_));
    return true;
  }
  in_integer_block_ = opens;
  return true;
}

bool MpsParser::rhs_line(std::string_view line) {
  const LineShape shape = scanner_.pairs(line, true, data_.rows, &free_rows_, &pairs_);
  if (shape != LineShape::kGood) return fail_line(line, shape);
  if (!accept_set(pairs_.head, "RHS", &rhs_set_)) return true;
  for (int k = 0; k < pairs_.count; ++k) {
    double value;
    if (!parse_number(pairs_.number[k], &value)) return fail_line();
    if (!add_rhs(data_.rows.find(pairs_.name[k]), pairs_.name[k], value)) return false;
  }
  return true;
}

bool MpsParser::add_rhs(Index row, std::string_view row_name, double value) {
  const bool objective = row < 0 && objective_ >= 0 && is_objective(row_name);
  if (row < 0 && !objective) {
    if (free_rows_.find(row_name) < 0) {
      diagnostics_.warn(ReadWarning::kUndefinedRowInRhs,
                        format_text("Warning: row name %s in rhs section not defined.\n", printable(row_name).c_str()));
    }
    return true;
  }
  if (objective ? objective_rhs_given_ : rhs_given_[row] != 0) {
    diagnostics_.warn(ReadWarning::kDuplicateRhs,
                      format_text("Warning: duplicate row %s in rhs section.\n", printable(row_name).c_str()));
    return true;
  }
  if (objective) {
    if (!std::isfinite(value)) return fail_line();
    objective_rhs_given_ = true;
    data_.objective_constant -= value;
    return true;
  }
  // An infinite side is a row without that side; an infinite equation says nothing.
  if (std::isinf(value) && data_.sense[row] != (value > 0 ? '<' : '>')) return fail_line();
  rhs_given_[row] = 1;
  data_.rhs[row] = std::isinf(value) ? std::copysign(kRhsInfinity, value) : value;
  return true;
}

bool MpsParser::ranges_line(std::string_view line) {
  const LineShape shape = scanner_.pairs(line, true, data_.rows, &free_rows_, &pairs_);
  if (shape != LineShape::kGood) return fail_line(line, shape);
  if (!accept_set(pairs_.head, "RANGES", &range_set_)) return true;
  if (range_.empty()) range_.assign(data_.sense.size(), std::numeric_limits<double>::quiet_NaN());
  for (int k = 0; k < pairs_.count; ++k) {
    double value;
    if (!parse_number(pairs_.number[k], &value)) return fail_line();
    const Index row = data_.rows.find(pairs_.name[k]);
    const std::string name = printable(pairs_.name[k]);
    if (row >= 0 && std::isnan(range_[row])) {
      range_[row] = value;
    } else if (row >= 0) {
      diagnostics_.warn(ReadWarning::kDuplicateRange, format_text("Warning: duplicate range row %s.\n", name.c_str()));
    } else if (free_rows_.find(pairs_.name[k]) < 0) {
      diagnostics_.warn(ReadWarning::kUndefinedRowInRanges,
                        format_text("Warning: row name %s in ranges section not defined.\n", name.c_str()));
    }
  }
  return true;
}

bool MpsParser::bounds_line(std::string_view line) {
  MpsBound bound;
  const LineShape shape = scanner_.bound(line, data_.cols, &bound);
  if (shape != LineShape::kGood) return fail_line(line, shape);
  if (bound_given_.size() != static_cast<std::size_t>(data_.cols.size())) prepare_bounds();
  if (!accept_set(bound.set, "BOUNDS", &bound_set_)) return true;
  const Index col = data_.cols.find(bound.column);
  if (col >= 0) return apply_bound(bound.type, bound.number, col);
  // The type and the number are checked all the same: a garbled line is an error, not an unknown name.
  double value;
  const bool known_type = bound_spec(bound.type) != nullptr;
  if (!known_type || (!bound.number.empty() && !parse_number(bound.number, &value))) return fail_line();
  diagnostics_.warn(ReadWarning::kUndefinedColumn, format_text("Warning: column name %s in bound section not defined\n",
                                                               printable(bound.column).c_str()));
  return true;
}

bool MpsParser::apply_bound(std::string_view type, std::string_view text, Index col) {
  const BoundSpec* spec = bound_spec(type);
  if (spec == nullptr) return fail_line();
  double value = kInf;
  const bool is_plain = is_plain_bound(type);
  if (spec->needs_number || !text.empty()) {
    if (!parse_number(text, &value)) return fail_line();
    const double excluded = spec->sets_upper ? -kInf : kInf;
    if (!is_plain && (value == excluded || (spec->sets_lower && spec->sets_upper && std::isinf(value)))) {
      return fail_line();
    }
  }
  const unsigned char sides = (spec->sets_lower ? kLowerGiven : 0) | (spec->sets_upper ? kUpperGiven : 0);
  if ((bound_given_[col] & sides) != 0) {
    diagnostics_.warn(ReadWarning::kDuplicateBound,
                      format_text("Warning: duplicate bounds for column %s.\n", printable(data_.cols[col]).c_str()));
  }
  if (is_plain) {
    const bool binary = type == "BV";
    if (spec->sets_lower) data_.lower[col] = binary ? 0 : -kInf;
    if (spec->sets_upper) data_.upper[col] = binary ? 1 : kInf;
  } else {
    if (spec->sets_lower) data_.lower[col] = value;
    if (spec->sets_upper) data_.upper[col] = value;
  }
  if (!spec->sets_lower && !spec->semicontinuous && value < 0 && data_.lower[col] == 0 &&
      (bound_given_[col] & kLowerGiven) == 0 && !is_plain) {
    data_.lower[col] = -kInf;
    diagnostics_.warn(ReadWarning::kNegativeUpper,
                      format_text("Warning: negative upper bound for column %s without lower bound, "
                                  "its lower bound becomes minus infinity.\n",
                                  printable(data_.cols[col]).c_str()));
  }
  bound_given_[col] |= static_cast<unsigned char>(sides | kAnyGiven);
  data_.vtype[col] = changed_type(data_.vtype[col], *spec);
  return true;
}

bool MpsParser::sos_line(std::string_view line) {
  MpsWords words;
  split_words(line, &words);
  const bool is_type = words[0] == "S1" || words[0] == "S2";
  // Members stand further right than types; a column may be called S1.
  const std::size_t indent = static_cast<std::size_t>(words[0].data() - line.data());
  constexpr std::size_t kTypeIndent = 2;
  if (is_type && (indent <= kTypeIndent || data_.cols.find(words[0]) < 0)) return sos_header(words);
  return sos_member(line);
}

// "S1 name [priority]" or "S1 set name priority". A priority has no place in a model.
bool MpsParser::sos_header(const MpsWords& words) {
  double priority;
  if (words.overflow || words.count > 4) return fail_line();
  if (words.count >= 3 && !parse_number(words[words.count - 1], &priority)) return fail_line();
  data_.sos.emplace_back();
  data_.sos.back().type = words[0] == "S1" ? 1 : 2;
  const std::string_view name = words.count == 1 ? std::string_view() : words[words.count == 4 ? 2 : 1];
  if (name.size() > kMaxNameLength) return fail_line();
  data_.sos.back().name = name;
  sos_of_col_.resize(static_cast<std::size_t>(data_.cols.size()), 0);
  return true;
}

bool MpsParser::sos_member(std::string_view line) {
  MpsMember member;
  const LineShape shape = scanner_.member(line, data_.cols, &member);
  if (shape != LineShape::kGood) return fail_line(line, shape);
  const Index col = data_.cols.find(member.column);
  const auto set = static_cast<Index>(data_.sos.size());
  if (col < 0 || set == 0 || sos_of_col_[col] == set) return fail_line();
  ParsedSos& sos = data_.sos.back();
  // Without weights the order counts.
  double weight = static_cast<double>(sos.member.size() + 1);
  if (!member.weight.empty() && !number(member.weight, &weight)) return false;
  sos_of_col_[col] = set;
  sos.member.push_back(col);
  sos.weight.push_back(weight);
  return true;
}

bool MpsParser::quadratic_line(std::string_view line) {
  const LineShape shape = scanner_.pairs(line, false, data_.cols, nullptr, &pairs_);
  if (shape != LineShape::kGood || pairs_.head.empty()) return fail_line(line, shape);
  const Index first = data_.cols.find(pairs_.head);
  for (int k = 0; k < pairs_.count; ++k) {
    const Index second = data_.cols.find(pairs_.name[k]);
    if (first < 0 || second < 0) {
      return diagnostics_.fail_at_line(line_number_, "variable name in the quadratic section not found\n");
    }
    double value;
    if (!number(pairs_.number[k], &value)) return false;
    quadratic_.add(first, second, value, full_quadratic_);
  }
  if (quadratic_.size() <= limits_.quadratic_terms) return true;
  return diagnostics_.fail("Warning: number of q terms exceeds two billion\n",
                           "MPS reader: number of q terms exceeds two billion\n", line_number_);
}

}  // namespace zorvex

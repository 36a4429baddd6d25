#include "io/lp_writer.hpp"

#include <algorithm>

#include "env/log_channel.hpp"
#include "io/file_suffix.hpp"
#include "io/lp_line_writer.hpp"
#include "io/lp_names.hpp"
#include "io/lp_ranges.hpp"
#include "io/model_writer.hpp"
#include "io/name_table.hpp"
#include "io/read_diagnostics.hpp"
#include "io/unique_names.hpp"

namespace zorvex {

namespace {

bool wants_generic_names(const std::string& file_name) { return file_type_of(file_name) == FileType::kRlp; }

// Whether the nonzero costs and then the rows name the columns in the order of their indices, each at least once.
bool natural_order(const ModelData& data, const CompressedVectors& rows) {
  Index next = 0;
  std::vector<char> seen(static_cast<std::size_t>(data.num_cols()), 0);
  const auto name = [&](Index col) {
    if (seen[col]) return true;
    seen[col] = 1;
    return col == next++;
  };
  for (Index col = 0; col < data.num_cols(); ++col) {
    if (data.obj[col] != 0 && !name(col)) return false;
  }
  for (const QuadraticTerm& term : data.quadratic) {
    if (!name(term.first) || !name(term.second)) return false;
  }
  return std::all_of(rows.index.begin(), rows.index.end(), name) && next == data.num_cols();
}

struct LpNames {
  const UniqueNames &row, &col, &set;
};

class LpTextWriter {
 public:
  LpTextWriter(const ModelData& data, const CompressedVectors& rows, const LpNames& names, ModelStream* stream)
      : data_(data), rows_(rows), row_names_(names.row), col_names_(names.col), set_names_(names.set), out_(stream) {}

  bool write() {
    if (!data_.name.empty()) out_.line("\\Problem name: " + printable(data_.name));
    out_.line("");
    objective();
    out_.line("Subject To");
    for (Index row = 0; row < data_.num_rows(); ++row) constraint(row);
    bounds();
    kinds("Generals", [this](Index col) { return kind(col) == 'I' || kind(col) == 'N'; });
    kinds("Binaries", [this](Index col) { return kind(col) == 'B'; });
    kinds("Semi-continuous", [this](Index col) { return kind(col) == 'S' || kind(col) == 'N'; });
    sos();
    out_.line("End");
    return out_.flush();
  }

 private:
  [[nodiscard]] std::string objective_name() const;
  void objective();
  void quadratic(bool first);
  [[nodiscard]] std::string range_name(Index row);
  void constraint(Index row);
  void bounds();
  void bound(const std::string& name, double lower, double upper);
  template <class Wanted>
  void kinds(const char* header, Wanted wanted);
  void sos();

  [[nodiscard]] char kind(Index col) const { return data_.vtype[col]; }

  const ModelData& data_;
  const CompressedVectors& rows_;
  const UniqueNames& row_names_;
  const UniqueNames& col_names_;
  const UniqueNames& set_names_;
  NameTable column_table_;  // of col_names_, once there is a range
  LpLineWriter out_;
};

// A name for the objective that no row has.
std::string LpTextWriter::objective_name() const {
  std::string name = "obj";
  const auto is_taken = [&] {
    for (Index row = 0; row < data_.num_rows(); ++row) {
      if (row_names_[row] == name) return true;
    }
    return false;
  };
  while (is_taken()) name += '_';
  return name;
}

void LpTextWriter::objective() {
  out_.line(data_.sense < 0 ? "Maximize" : "Minimize");
  out_.word(objective_name() + ":");
  const bool all = !natural_order(data_, rows_);
  bool first = true;
  for (Index col = 0; col < data_.num_cols(); ++col) {
    if (data_.obj[col] == 0 && !all) continue;
    out_.term(data_.obj[col] == 0 ? 0.0 : data_.obj[col], col_names_[col], first);
    first = false;
  }
  if (first && data_.num_cols() > 0) {
    out_.term(0, col_names_[0], true);
    first = false;
  }
  if (data_.obj_con != 0) {
    out_.word(data_.obj_con < 0 ? "-" : "+").number(std::abs(data_.obj_con));
    first = false;
  }
  if (!data_.quadratic.empty()) quadratic(first);
  out_.end_line();
}

void LpTextWriter::quadratic(bool first) {
  if (!first) out_.word("+");
  out_.word("[");
  first = true;
  for (const QuadraticTerm& term : data_.quadratic) {
    out_.term(term.value, col_names_[term.first], first);
    if (term.first == term.second) {
      out_.word("^").word("2");
    } else {
      out_.word("*").word(col_names_[term.second]);
    }
    first = false;
  }
  out_.word("]").word("/").word("2");
}

// The name of the variable that stands for the row's activity; no column has it.
std::string LpTextWriter::range_name(Index row) {
  if (column_table_.size() == 0) {
    for (Index col = 0; col < data_.num_cols(); ++col) column_table_.insert(col_names_[col]);
  }
  std::string name = "Rg" + std::to_string(row);
  while (column_table_.find(name) >= 0) name += '_';
  return name;
}

void LpTextWriter::constraint(Index row) {
  if (data_.is_range(row)) out_.line("\\" + std::string(kLpRangeRemark));
  out_.word(row_names_[row] + ":");
  const double sign = data_.row_sign(row);
  for (Offset k = rows_.begin(row); k < rows_.end(row); ++k) {
    out_.term(sign * rows_.value[k], col_names_[rows_.index[k]], k == rows_.begin(row));
  }
  if (rows_.begin(row) == rows_.end(row) && data_.num_cols() > 0) out_.term(0, col_names_[0], true);
  if (data_.is_range(row)) {
    out_.term(-1, range_name(row), false).word("= 0");
    out_.end_line();
    return;
  }
  const char sense = data_.row_sense[row];
  out_.word(sense == '=' ? "=" : sense == '<' ? "<=" : ">=").number(data_.user_rhs(row) + 0.0);
  out_.end_line();
}

void LpTextWriter::bounds() {
  bool headed = false;
  const auto line = [&](const std::string& name, double lower, double upper) {
    if (!headed) out_.line("Bounds");
    headed = true;
    bound(name, lower, upper);
    out_.end_line();
  };
  for (Index col = 0; col < data_.num_cols(); ++col) {
    const bool binary = data_.vtype[col] == 'B';
    const auto [lower, upper] = binary ? data_.column_bounds(col) : Interval{data_.lb[col], data_.ub[col]};
    if (lower == 0 && (binary ? upper == 1 : upper >= kStoredInfinity)) continue;
    line(col_names_[col], lower, upper);
  }
  for (Index row = 0; row < data_.num_rows(); ++row) {
    if (data_.is_range(row)) line(range_name(row), data_.range_lower[row], data_.rhs[row]);
  }
}

void LpTextWriter::bound(const std::string& name, double lower, double upper) {
  const bool no_lower = lower <= -kStoredInfinity, no_upper = upper >= kStoredInfinity;
  if (no_lower && no_upper) {
    out_.word(name).word("free");
  } else if (lower == upper) {
    out_.word(name).word("=").number(lower);
  } else if (no_upper) {
    out_.word(name).word(">=").number(lower);
  } else if (lower == 0 && upper > 0) {
    out_.word(name).word("<=").number(upper);
  } else {
    if (no_lower) {
      out_.word("-inf");
    } else {
      out_.number(lower);
    }
    out_.word("<=").word(name).word("<=").number(upper);
  }
}

template <class Wanted>
void LpTextWriter::kinds(const char* header, Wanted wanted) {
  bool headed = false;
  for (Index col = 0; col < data_.num_cols(); ++col) {
    if (!wanted(col)) continue;
    if (!headed) out_.line(header);
    headed = true;
    out_.word(col_names_[col]);
  }
  if (headed) out_.end_line();
}

void LpTextWriter::sos() {
  if (data_.sos.empty()) return;
  out_.line("SOS");
  for (std::size_t k = 0; k < data_.sos.size(); ++k) {
    const SosConstraint& set = data_.sos[k];
    if (set.member.empty()) continue;
    out_.word(set_names_[static_cast<Index>(k)] + ":").word(set.type == 1 ? "S1::" : "S2::");
    for (std::size_t member = 0; member < set.member.size(); ++member) {
      char weight[kNumberTextSize];
      format_number(set.weight[member], weight);
      out_.word(col_names_[set.member[member]] + ":" + weight);
    }
    out_.end_line();
  }
}

void warn_of_replaced_names(const ZLPmodel& model, const UniqueNames& names, const char* what) {
  if (names.num_replaced() == 0) return;
  log_printf(model.env,
             "Warning: %d names of %s are unfit for LP format or not unique, generic names stand for them.\n",
             names.num_replaced(), what);
}

}  // namespace

int write_lp(ZLPmodel& model, const std::string& name) {
  return write_model_file(model, name, [&](ModelStream* stream) {
    const bool generic = wants_generic_names(name);
    const auto names = [generic](const NameList& own, char letter) {
      return generic ? UniqueNames(own, letter) : UniqueNames(own, letter, lp_can_carry_name);
    };
    const UniqueNames rows = names(model.data.constr_names, 'R');
    const UniqueNames cols = names(model.data.var_names, 'C');
    NameList own_sets;
    for (const SosConstraint& set : model.data.sos) own_sets.append(set.name.c_str());
    const UniqueNames sets = own_sets.any() ? names(own_sets, 's') : UniqueNames(own_sets, 's');
    warn_of_replaced_names(model, rows, "constraints");
    warn_of_replaced_names(model, cols, "variables");
    warn_of_replaced_names(model, sets, "sets");
    return LpTextWriter(model.data, row_twin(model), {rows, cols, sets}, stream).write();
  });
}

}  // namespace zorvex

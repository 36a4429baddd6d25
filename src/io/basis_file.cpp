#include "io/basis_file.hpp"

#include <vector>

#include "env/log_channel.hpp"
#include "io/mps_layout.hpp"
#include "io/number_text.hpp"
#include "io/read_diagnostics.hpp"
#include "io/side_file.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

// A row that is not basic stands at a side that it has.
int row_status(const ModelData& data, Index row, bool upper) {
  if (data.is_range(row)) return upper ? ZLP_NONBASIC_UPPER : ZLP_NONBASIC_LOWER;
  return data.row_sense[row] == '<' ? ZLP_NONBASIC_UPPER : ZLP_NONBASIC_LOWER;
}

void write_lines(const ModelData& data, const WarmStart& warm, TextWriter& out) {
  const UniqueNames cols = side_file_columns(data);
  const UniqueNames rows = side_file_rows(data);
  const auto line = [&](const char* type, Index col) {
    out << ' ' << type << ' ';
    out.padded(cols[col], 8);
  };
  out << "NAME " << data.name << '\n';
  Index row = 0;
  for (Index col = 0; col < data.num_cols(); ++col) {
    if (warm.vbasis[col] == ZLP_BASIC) {
      while (warm.cbasis[row] == ZLP_BASIC) ++row;
      const int status = row_status(data, row, warm.cbasis[row] == ZLP_NONBASIC_UPPER);
      line(status == ZLP_NONBASIC_UPPER ? "XU" : "XL", col);
      out << "  " << rows[row++] << '\n';
    } else if (warm.vbasis[col] == ZLP_NONBASIC_UPPER && nonbasic_status(data, col) != ZLP_NONBASIC_UPPER) {
      line("UL", col);
      out << '\n';
    }
  }
  out << "ENDATA\n";
}

// The text without its last word, when that is a number.
std::string_view without_value(std::string_view text) {
  const std::size_t blank = text.find_last_of(" \t");
  double value;
  if (blank == std::string_view::npos || !parse_number(text.substr(blank + 1), &value)) return text;
  return trim(text.substr(0, blank));
}

// A basis under construction.
class BasisReader {
 public:
  explicit BasisReader(const ModelData& data)
      : data_(data),
        columns_(index_of_names(side_file_columns(data), data.num_cols())),
        rows_(index_of_names(side_file_rows(data), data.num_rows())),
        column_given_(static_cast<std::size_t>(data.num_cols())) {
    for (Index col = 0; col < data.num_cols(); ++col) vbasis.push_back(nonbasic_status(data, col));
    cbasis.assign(static_cast<std::size_t>(data.num_rows()), ZLP_BASIC);
  }

  // False for a line that is not one of a basis file.
  bool apply(std::string_view line) {
    line = trim(line);
    const std::string_view type = line.substr(0, 2);
    const std::string_view rest = line.size() > 2 && is_blank(line[2]) ? trim(line.substr(2)) : std::string_view();
    if (rest.empty()) return false;
    if (type == "UL" || type == "LL") {
      at_bound(find(columns_, rest), type == "UL");
      return true;
    }
    if ((type != "XU" && type != "XL") || rest.find_first_of(" \t") == std::string_view::npos) return false;
    exchange(rest, type == "XU");
    return true;
  }

  std::vector<int> vbasis, cbasis;
  long repairs = 0;

 private:
  static Index find(const NameTable& names, std::string_view text) {
    const Index whole = names.find(text);
    return whole >= 0 ? whole : names.find(without_value(text));
  }

  void at_bound(Index col, bool upper) {
    if (col < 0 || column_given_[col]) {
      ++repairs;
      return;
    }
    column_given_[col] = 1;
    const bool exists = upper ? data_.ub[col] < kStoredInfinity : data_.lb[col] > -kStoredInfinity;
    if (exists) {
      vbasis[col] = upper ? ZLP_NONBASIC_UPPER : ZLP_NONBASIC_LOWER;
    } else {
      ++repairs;
    }
  }

  void exchange(std::string_view names, bool upper) {
    Index col = -1, row = -1;
    for (std::size_t at = names.find_first_of(" \t"); at != std::string_view::npos && row < 0;
         at = names.find_first_of(" \t", at + 1)) {
      col = columns_.find(trim(names.substr(0, at)));
      if (col >= 0) row = find(rows_, trim(names.substr(at)));
    }
    if (row < 0 || column_given_[col] || cbasis[row] != ZLP_BASIC) {
      ++repairs;
      return;
    }
    column_given_[col] = 1;
    vbasis[col] = ZLP_BASIC;
    cbasis[row] = row_status(data_, row, upper);
  }

  const ModelData& data_;
  NameTable columns_, rows_;
  std::vector<char> column_given_;
};

}  // namespace

int write_basis(ZLPmodel& model, const std::string& name) {
  const bool fits = static_cast<Index>(model.warm.vbasis.size()) == model.data.num_cols() &&
                    static_cast<Index>(model.warm.cbasis.size()) == model.data.num_rows() &&
                    model.warm.basis_fits(model.data);
  if (!model.warm.has_basis() || !fits) return no_data(model, "No basis available for file '%s'", name);
  return write_side_file(name, [&](TextWriter& out) { write_lines(model.data, model.warm, out); });
}

int read_basis(ZLPmodel& model, const std::string& name) {
  SideFileReader file(model, name);
  if (!file.is_open()) return file.code();
  BasisReader basis(model.data);
  std::string_view line;
  bool ended = false;
  while (!ended && file.next(&line)) {
    if (trim(line).empty() || line.front() == '*') continue;
    ended = trim(line) == "ENDATA";
    const bool is_header = line.starts_with("NAME");
    if (!ended && !is_header && (!is_blank(line.front()) || !basis.apply(line))) return file.fail_line(line);
  }
  if (!file.close()) return file.code();
  if (!ended) {
    return file.fail(
        format_text("file %s ends at line %ld without ENDATA", printable(name).c_str(), file.line_number()));
  }
  if (basis.repairs > 0) {
    log_printf(model.env, "Warning: %ld lines of basis file '%s' do not fit the model, the basis is repaired\n",
               basis.repairs, name.c_str());
  }
  model.warm.drop_basis();
  model.warm.vbasis = std::move(basis.vbasis);
  model.warm.cbasis = std::move(basis.cbasis);
  return kOk;
}

}  // namespace zorvex

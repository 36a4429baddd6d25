#include "io/basis_file.hpp"

#include <vector>

#include "env/log_channel.hpp"
#include "io/mps_layout.hpp"
#include "io/object_names.hpp"
#include "io/side_file.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

void write_lines(const ModelData& data, const WarmStart& warm, TextWriter& out) {
  ObjectNames names(data, true);
  const auto line = [&](const char* type, Index col) {
    out << ' ' << type << ' ';
    out.padded(names.col(col), 8);
  };
  out << "NAME " << data.name << '\n';
  Index row = 0;
  for (Index col = 0; col < data.num_cols(); ++col) {
    if (warm.vbasis[col] == ZLP_BASIC) {
      while (warm.cbasis[row] == ZLP_BASIC) ++row;
      line(warm.cbasis[row] == ZLP_NONBASIC_UPPER ? "XU" : "XL", col);
      out << "  " << names.row(row++) << '\n';
    } else if (warm.vbasis[col] == ZLP_NONBASIC_UPPER) {
      line("UL", col);
      out << '\n';
    }
  }
  out << "ENDATA\n";
}

// A basis under construction.
class BasisReader {
 public:
  explicit BasisReader(const ModelData& data)
      : columns_(ObjectIndex::columns(data)),
        rows_(ObjectIndex::rows(data)),
        column_given_(static_cast<std::size_t>(data.num_cols())) {
    for (Index col = 0; col < data.num_cols(); ++col) {
      const Interval bounds = data.column_bounds(col);
      const int bounded = bounds.lower > -kInf ? ZLP_NONBASIC_LOWER : ZLP_NONBASIC_UPPER;
      vbasis.push_back(bounds.lower == -kInf && bounds.upper == kInf ? ZLP_SUPERBASIC : bounded);
    }
    cbasis.assign(static_cast<std::size_t>(data.num_rows()), ZLP_BASIC);
  }

  // False for a line that is not one of a basis file.
  bool apply(std::string_view line) {
    split_words(line, &words_);
    const std::string_view type = words_[0];
    const bool exchange = type == "XU" || type == "XL";
    const bool bound = type == "UL" || type == "LL";
    if (words_.count != (exchange ? 3 : 2) || (!exchange && !bound)) return false;
    const Index col = columns_.find(words_[1]);
    const Index row = exchange ? rows_.find(words_[2]) : -1;
    if (col < 0 || column_given_[col] || (exchange && (row < 0 || cbasis[row] != ZLP_BASIC))) {
      ++skipped;
      return true;
    }
    column_given_[col] = 1;
    vbasis[col] = exchange ? ZLP_BASIC : type == "UL" ? ZLP_NONBASIC_UPPER : ZLP_NONBASIC_LOWER;
    if (exchange) cbasis[row] = type == "XU" ? ZLP_NONBASIC_UPPER : ZLP_NONBASIC_LOWER;
    return true;
  }

  std::vector<int> vbasis, cbasis;
  long skipped = 0;

 private:
  ObjectIndex columns_, rows_;
  std::vector<char> column_given_;
  MpsWords words_;
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
  if (!ended) return file.fail("no ENDATA in file " + name);
  if (basis.skipped > 0) {
    log_printf(model.env, "Warning: %ld lines of basis file '%s' do not fit the model and are left out\n",
               basis.skipped, name.c_str());
  }
  model.warm.drop_basis();
  model.warm.vbasis = std::move(basis.vbasis);
  model.warm.cbasis = std::move(basis.cbasis);
  return kOk;
}

}  // namespace zorvex

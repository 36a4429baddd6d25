#include "io/mps_writer.hpp"

#include <charconv>
#include <cmath>

#include "env/log_channel.hpp"
#include "io/file_suffix.hpp"
#include "io/model_stream.hpp"
#include "io/model_writer.hpp"
#include "io/object_names.hpp"
#include "io/text_writer.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kNameWidth = 8;

bool wants_generic_names(const std::string& file_name) {
  const std::string_view base = without_compression(file_name);
  if (base.size() < 3) return false;
  const std::string_view tail = base.substr(base.size() - 3);
  return (tail[0] | 0x20) == 'r' && (tail[1] | 0x20) == 'e' && (tail[2] | 0x20) == 'w';
}

// As "%12g".
std::string constant_text(double value) {
  char digits[kNumberTextSize];
  const char* end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
  const auto length = static_cast<std::size_t>(end - digits);
  constexpr std::size_t kWidth = 12;
  return std::string(length < kWidth ? kWidth - length : 0, ' ') + std::string(digits, length);
}

// How a range row lower <= a'x <= upper is written: as an L row with right-hand side `upper`, or as a G row with
// `lower`.
struct RangeForm {
  char letter;
  double rhs;
  double width;
};

// Chosen so that adding or subtracting the width restores the other side exactly. The rounded difference or one of its
// neighbours does so in nearly every case from one side or the other; where none does, the L row comes closest.
RangeForm range_form(double lower, double upper) {
  const double width = upper - lower;
  const double candidates[] = {width, std::nextafter(width, kInf), std::nextafter(width, -kInf)};
  for (const double candidate : candidates) {
    if (upper - candidate == lower) return {'L', upper, candidate};
  }
  for (const double candidate : candidates) {
    if (lower + candidate == upper) return {'G', lower, candidate};
  }
  return {'L', upper, width};
}

// The stored bounds. Those of a binary column that go beyond [0, 1] are cut, as every reading of the model does; but
// [0, infinity) stays, since a binary column without bound lines is what it is.
Interval written_bounds(const ModelData& data, Index col) {
  const Interval stored{data.lb[col], data.ub[col]};
  if (data.vtype[col] != 'B' || (stored.lower == 0 && stored.upper >= kStoredInfinity)) return stored;
  return data.column_bounds(col);
}

class MpsTextWriter {
 public:
  MpsTextWriter(const ModelData& data, ObjectNames names, ModelStream* stream)
      : data_(data), names_(std::move(names)), out_(stream), is_mip_(data.has_integers() || !data.sos.empty()) {}

  bool write() {
    header();
    rows();
    columns();
    right_hand_sides();
    ranges();
    out_ << "BOUNDS\n";
    for (Index col = 0; col < data_.num_cols(); ++col) bounds(col);
    sos();
    quadratic();
    out_ << "ENDATA\n";
    return out_.flush();
  }

 private:
  void header();
  void rows();
  void columns();
  void column(Index col);
  void marker(const char* kind) { out_ << "    MARKER    'MARKER'                 " << kind << '\n'; }
  void right_hand_sides();
  void ranges();
  [[nodiscard]] RangeForm range_of(Index row) const { return range_form(data_.range_lower[row], data_.rhs[row]); }
  void bounds(Index col);
  void bound(const char* type, Index col) {
    out_ << ' ' << type << " BND1      ";
    out_.padded(names_.col(col), kNameWidth);
  }
  void bound(const char* type, Index col, double value) {
    bound(type, col);
    out_ << "  " << value << '\n';
  }
  void sos();
  void quadratic();
  // "    name      name      value", names padded.
  void entry(std::string_view first, std::string_view second, double value) {
    out_ << "    ";
    out_.padded(first, kNameWidth) << "  ";
    out_.padded(second, kNameWidth) << "  " << value << '\n';
  }

  const ModelData& data_;
  ObjectNames names_;
  TextWriter out_;
  bool is_mip_;
};

void MpsTextWriter::header() {
  const double constant = data_.sense < 0 ? -data_.obj_con : data_.obj_con;
  out_ << "NAME " << data_.name;
  if (constant != 0) out_ << " with objcon=" << constant_text(constant);
  out_ << '\n';
  if (data_.sense < 0) out_ << "* Max problem is converted into Min one\n";
}

void MpsTextWriter::rows() {
  out_ << "ROWS\n N  OBJ\n";
  for (Index row = 0; row < data_.num_rows(); ++row) {
    const char sense = data_.row_sense[row];
    const char letter = sense == '=' ? 'E' : sense == '<' ? 'L' : 'G';
    out_ << ' ' << (data_.is_range(row) ? range_of(row).letter : letter) << "  ";
    out_.padded(names_.row(row), kNameWidth) << '\n';
  }
}

void MpsTextWriter::columns() {
  out_ << "COLUMNS\n";
  bool open = false;
  for (Index col = 0; col < data_.num_cols(); ++col) {
    const bool integer = data_.vtype[col] != 'C' && data_.vtype[col] != 'S';
    if (is_mip_ && integer != open) {
      marker(integer ? "'INTORG'" : "'INTEND'");
      open = integer;
    }
    column(col);
  }
  if (open) marker("'INTEND'");
}

void MpsTextWriter::column(Index col) {
  const std::string name = names_.col(col);
  const double cost = data_.min_cost(col);
  const CompressedVectors& matrix = data_.matrix;
  if (cost != 0 || matrix.begin(col) == matrix.end(col)) {
    out_ << "    ";
    out_.padded(name, kNameWidth) << "  OBJ       " << (cost == 0 ? 0.0 : cost) << '\n';
  }
  for (Offset k = matrix.begin(col); k < matrix.end(col); ++k) {
    const Index row = matrix.index[k];
    entry(name, names_.row(row), data_.row_sign(row) * matrix.value[k]);
  }
}

void MpsTextWriter::right_hand_sides() {
  out_ << "RHS\n";
  for (Index row = 0; row < data_.num_rows(); ++row) {
    const double side = data_.is_range(row) ? range_of(row).rhs : data_.user_rhs(row);
    if (side == 0) continue;
    out_ << "    RHS1      ";
    out_.padded(names_.row(row), kNameWidth) << "  " << side << '\n';
  }
}

void MpsTextWriter::ranges() {
  bool headed = false;
  for (Index row = 0; row < data_.num_rows(); ++row) {
    if (!data_.is_range(row)) continue;
    if (!headed) out_ << "RANGES\n";
    headed = true;
    out_ << "    RNG1      ";
    out_.padded(names_.row(row), kNameWidth) << "  " << range_of(row).width << '\n';
  }
}

void MpsTextWriter::bounds(Index col) {
  const auto [lower, upper] = written_bounds(data_, col);
  const char type = data_.vtype[col];
  const bool finite_upper = upper < kStoredInfinity;
  if (lower <= -kStoredInfinity) {
    bound(finite_upper ? "MI" : "FR", col);
    out_ << '\n';
    if (finite_upper) bound("UP", col, upper);
    return;
  }
  if (lower == upper) {
    bound("FX", col, lower);
    return;
  }
  const bool semicontinuous = type == 'S' || type == 'N';
  if (is_mip_ && type == 'I' && !finite_upper) {
    bound("LI", col, lower);
  } else if (lower != 0 || (upper < 0 && !semicontinuous)) {
    // A zero lower bound is written before a negative upper one: without it readers take minus infinity.
    bound("LO", col, lower);
  }
  if (semicontinuous) {
    bound("SC", col, upper);
  } else if (finite_upper) {
    bound("UP", col, upper);
  }
}

void MpsTextWriter::sos() {
  if (data_.sos.empty()) return;
  out_ << "SOS\n";
  for (std::size_t k = 0; k < data_.sos.size(); ++k) {
    const SosConstraint& set = data_.sos[k];
    out_ << (set.type == 1 ? " S1 s" : " S2 s") << std::to_string(k) << '\n';
    for (std::size_t member = 0; member < set.member.size(); ++member) {
      out_ << "    ";
      out_.padded(names_.col(set.member[member]), kNameWidth) << "     " << set.weight[member] << '\n';
    }
  }
}

// A stored term v x_i x_j / 2 is the diagonal entry v of Q, or the pair of entries v / 2.
void MpsTextWriter::quadratic() {
  if (data_.quadratic.empty()) return;
  out_ << "QUADOBJ\n";
  for (const QuadraticTerm& term : data_.quadratic) {
    const double value = (term.first == term.second ? term.value : term.value / 2) * (data_.sense < 0 ? -1 : 1);
    const std::string first = names_.col(term.first);
    entry(first, names_.col(term.second), value);
  }
}

}  // namespace

int write_mps(ZLPmodel& model, const std::string& name) {
  const int code = write_model_file(model, name, [&](ModelStream* stream) {
    ObjectNames names(model.data, !wants_generic_names(name));
    if (names.own() && !mps_can_carry_names(model.data)) {
      log_printf(model.env,
                 "Warning: names are not unique or hold characters unfit for MPS, generic names are used.\n");
      names = ObjectNames(model.data, false);
    }
    return MpsTextWriter(model.data, std::move(names), stream).write();
  });
  if (code != kOk) set_model_error(&model, code, true, "Unable to write to file '%s'\n", name.c_str());
  return code;
}

}  // namespace zorvex

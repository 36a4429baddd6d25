#include "io/name_value_file.hpp"

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "env/log_channel.hpp"
#include "io/line_reader.hpp"
#include "io/mps_layout.hpp"
#include "io/name_table.hpp"
#include "io/read_diagnostics.hpp"
#include "io/side_file.hpp"
#include "io/text_writer.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

const char* status_name(SolveStatus status) {
  constexpr std::array<const char*, 14> kNames{
      "",        "LOADED",          "OPTIMAL",    "INFEASIBLE", "INF_OR_UNBD",    "UNBOUNDED",
      "CUTOFF",  "ITERATION_LIMIT", "NODE_LIMIT", "TIME_LIMIT", "SOLUTION_LIMIT", "INTERRUPTED",
      "NUMERIC", "SUBOPTIMAL"};
  return kNames[static_cast<int>(status)];
}

bool is_integer_type(char type) { return type == 'B' || type == 'I' || type == 'N'; }

struct NamedValue {
  Index col;
  double value;
};

bool is_comment_or_blank(std::string_view line) { return trim(line).empty() || line.front() == '#'; }

// All values of the file whose names the model has. `valid` refuses numbers.
template <class Valid>
int read_named_values(ZLPmodel& model, const std::string& name, Valid valid, std::vector<NamedValue>* values) {
  SideFileReader file(model, name);
  if (!file.is_open()) return file.code();
  const NameTable columns = index_of_names(side_file_columns(model.data), model.data.num_cols());
  long unknown = 0;
  std::string_view line;
  while (file.next(&line)) {
    if (is_comment_or_blank(line)) continue;
    const std::string_view text = trim(line);
    const std::size_t split = text.find_last_of(" \t");
    double value;
    if (split == std::string_view::npos || !parse_number(text.substr(split + 1), &value) || !valid(value)) {
      return file.fail_line(line);
    }
    const Index col = columns.find(trim(text.substr(0, split)));
    if (col < 0) {
      ++unknown;
    } else {
      values->push_back({col, value});
    }
  }
  if (!file.close()) return file.code();
  if (unknown > 0) {
    log_printf(model.env, "Warning: %ld names in file '%s' are not variables of the model\n", unknown, name.c_str());
  }
  return kOk;
}

}  // namespace

int write_solution(ZLPmodel& model, const std::string& name) {
  const SolutionStore& solution = model.solution;
  if (static_cast<Index>(solution.x.size()) != model.data.num_cols() || solution.x.empty()) {
    return no_data(model, "No solution available for file '%s'", name);
  }
  return write_side_file(name, [&](TextWriter& out) {
    out << "# Solution for model " << model.data.name << "\n# Status = " << status_name(solution.status) << '\n';
    if (solution.has_objective) out << "# Objective value = " << solution.obj_val << '\n';
    const UniqueNames names = side_file_columns(model.data);
    for (Index col = 0; col < model.data.num_cols(); ++col) {
      out << names[col] << ' ' << solution.x[col] << '\n';
    }
  });
}

int write_mip_start(ZLPmodel& model, const std::string& name) {
  const std::vector<double>& x = model.solution.x.empty() ? model.warm.start : model.solution.x;
  if (static_cast<Index>(x.size()) != model.data.num_cols() || x.empty()) {
    return no_data(model, "No MIP start available for file '%s'", name);
  }
  return write_side_file(name, [&](TextWriter& out) {
    out << "# MIP start for model " << model.data.name << '\n';
    const UniqueNames names = side_file_columns(model.data);
    for (Index col = 0; col < model.data.num_cols(); ++col) {
      if (!is_integer_type(model.data.vtype[col]) || std::fabs(x[col]) >= ZLP_INFINITY) continue;
      out << names[col] << ' ' << x[col] << '\n';
    }
  });
}

int read_mip_start(ZLPmodel& model, const std::string& name) {
  std::vector<NamedValue> values;
  const auto valid = [](double value) { return std::isfinite(value); };
  if (const int code = read_named_values(model, name, valid, &values)) return code;
  std::vector<double>& start = model.warm.start;
  start.resize(static_cast<std::size_t>(model.data.num_cols()), kUndefinedStart);
  for (const NamedValue& named : values) start[named.col] = named.value;
  return kOk;
}

int read_priorities(ZLPmodel& model, const std::string& name) {
  std::vector<NamedValue> values;
  const auto valid = [](double value) {
    return value == std::trunc(value) && std::fabs(value) <= std::numeric_limits<int>::max();
  };
  if (const int code = read_named_values(model, name, valid, &values)) return code;
  model.branch_priority.resize(static_cast<std::size_t>(model.data.num_cols()), 0);
  for (const NamedValue& named : values) model.branch_priority[named.col] = static_cast<int>(named.value);
  return kOk;
}

}  // namespace zorvex

#include "io/mps_reader.hpp"

#include <cmath>
#include <new>
#include <stdexcept>

#include "env/errors.hpp"
#include "env/log_channel.hpp"
#include "io/model_stream.hpp"

namespace zorvex {

namespace {

MpsParseResult parse_once(const std::string& name, MpsLayout layout, const MpsLimits& limits) {
  MpsParseResult result;
  std::string reason;
  const auto stream = open_model_stream(name, 'r', nullptr, &reason);
  if (stream == nullptr) {
    const std::string shown = printable(name);
    result.diagnostics.fail(format_text("Error: file %s not found\n", shown.c_str()),
                            format_text("File %s not found\n", shown.c_str()), 0);
    return result;
  }
  MpsParser parser(layout, limits);
  result.ok = parser.parse(stream.get());
  // Data that were cut off or damaged on the way explain any error of the text.
  if (!stream->close(&reason)) {
    const std::string text = format_text("cannot read file %s: %s\n", printable(name).c_str(), reason.c_str());
    result.ok = false;
    result.diagnostics.fail("Error: " + text, "MPS reader: " + text, 0);
    return result;
  }
  result.diagnostics = parser.diagnostics();
  if (result.ok) result.data = parser.take_data();
  return result;
}

// Whether the fixed reading is the better one. Where both fail, the one that got further.
bool fixed_fits_better(const MpsParseResult& free, const MpsParseResult& fixed) {
  if (free.ok != fixed.ok) return fixed.ok;
  if (!free.ok) return fixed.diagnostics.error_line() > free.diagnostics.error_line();
  return fixed.diagnostics.undefined_names() < free.diagnostics.undefined_names();
}

Interval sides_of(char sense, double rhs, double range) {
  const double width = std::fabs(range);
  if (sense == '<') return {rhs - width, rhs};
  if (sense == '>') return {rhs, rhs + width};
  return range < 0 ? Interval{rhs + range, rhs} : Interval{rhs, rhs + range};
}

void convert_rows(MpsData& parsed, ModelData& data) {
  data.row_sense = std::move(parsed.sense);
  data.rhs = std::move(parsed.rhs);
  for (Index row = 0; row < parsed.rows.size(); ++row) {
    data.constr_names.append(std::string(parsed.rows[row]).c_str());
  }
  if (parsed.range.empty()) return;
  for (Index row = 0; row < data.num_rows(); ++row) {
    if (std::isnan(parsed.range[row])) continue;
    const Interval sides = sides_of(data.row_sense[row], data.rhs[row], parsed.range[row]);
    const RowForm form = range_row_form(sides.lower, sides.upper);
    data.row_sense[row] = form.sense;
    data.rhs[row] = form.rhs;
    if (form.range_lower <= -kStoredInfinity) continue;
    if (data.range_lower.empty()) data.range_lower.assign(data.rhs.size(), -kStoredInfinity);
    data.range_lower[row] = form.range_lower;
  }
}

void convert_columns(MpsData& parsed, ModelData& data) {
  data.obj = std::move(parsed.obj);
  data.vtype = std::move(parsed.vtype);
  data.lb = std::move(parsed.lower);
  data.ub = std::move(parsed.upper);
  for (double& bound : data.lb) bound = stored_lower(bound);
  for (double& bound : data.ub) bound = stored_upper(bound);
  for (Index col = 0; col < parsed.cols.size(); ++col) data.var_names.append(std::string(parsed.cols[col]).c_str());
  data.matrix.start = std::move(parsed.start);
  data.matrix.index = std::move(parsed.index);
  data.matrix.value = std::move(parsed.value);
}

int report_and_create(ZLPenv* env, MpsParseResult&& parsed, ZLPmodel** model) {
  for (const std::string& warning : parsed.diagnostics.warnings()) log_text(env, warning.c_str());
  if (!parsed.ok) {
    log_text(env, parsed.diagnostics.error().log.c_str());
    set_error(env, kErrorFileRead, true, "%s", parsed.diagnostics.error().text.c_str());
    return kErrorFileRead;
  }
  return create_model(env, to_model_data(std::move(parsed.data)), model);
}

}  // namespace

MpsParseResult parse_mps_file(const std::string& name, const MpsLimits& limits) {
  MpsParseResult free = parse_once(name, MpsLayout::kFree, limits);
  if (free.ok && free.diagnostics.undefined_names() == 0) return free;
  MpsParseResult fixed = parse_once(name, MpsLayout::kFixed, limits);
  return fixed_fits_better(free, fixed) ? std::move(fixed) : std::move(free);
}

ModelData to_model_data(MpsData&& parsed) {
  ModelData data;
  data.name = std::move(parsed.name);
  data.sense = parsed.maximize ? -1 : 1;
  data.obj_con = parsed.objective_constant;
  convert_rows(parsed, data);
  convert_columns(parsed, data);
  for (MpsSos& sos : parsed.sos) data.sos.push_back({sos.type, std::move(sos.member), std::move(sos.weight)});
  data.quadratic.reserve(parsed.quadratic.size());
  for (const MpsQuadraticTerm& term : parsed.quadratic) {
    data.quadratic.push_back({term.first, term.second, term.value});
  }
  return data;
}

ZLPmodel* read_mps(ZLPenv* env, const std::string& name) {
  const auto out_of_memory = [env] {
    log_text(env, "Error: out of memory.\n");
    set_error(env, kErrorOutOfMemory, true, "Out of memory in MPS reader\n");
  };
  ZLPmodel* model = nullptr;
  try {
    if (report_and_create(env, parse_mps_file(name), &model) == kErrorOutOfMemory) out_of_memory();
  } catch (const std::bad_alloc&) {
    out_of_memory();
  } catch (const std::length_error&) {
    out_of_memory();
  }
  return model;
}

}  // namespace zorvex

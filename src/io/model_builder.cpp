#include "io/model_builder.hpp"

#include <new>
#include <stdexcept>

#include "env/errors.hpp"
#include "env/log_channel.hpp"

namespace zorvex {

namespace {

void convert_names(const ParsedModel& parsed, ModelData& data) {
  const auto text = [](const NameTable& names, Index i) { return std::string(names[i]); };
  for (Index row = 0; row < parsed.num_rows(); ++row) {
    const Index name = parsed.row_name.empty() ? row : parsed.row_name[row];
    data.constr_names.append(name < 0 ? nullptr : text(parsed.rows, name).c_str());
  }
  for (Index col = 0; col < parsed.cols.size(); ++col) data.var_names.append(text(parsed.cols, col).c_str());
}

void convert_rows(ParsedModel& parsed, ModelData& data) {
  data.row_sense = std::move(parsed.sense);
  data.rhs = std::move(parsed.rhs);
  for (const ParsedRange& range : parsed.ranges) {
    const RowForm form = range_row_form(range.lower, range.upper);
    data.row_sense[range.row] = form.sense;
    data.rhs[range.row] = form.rhs;
    if (form.range_lower <= -kStoredInfinity) continue;
    if (data.range_lower.empty()) data.range_lower.assign(data.rhs.size(), -kStoredInfinity);
    data.range_lower[range.row] = form.range_lower;
  }
}

void convert_columns(ParsedModel& parsed, ModelData& data) {
  data.obj = std::move(parsed.obj);
  data.vtype = std::move(parsed.vtype);
  data.lb = std::move(parsed.lower);
  data.ub = std::move(parsed.upper);
  for (double& bound : data.lb) bound = stored_lower(bound);
  for (double& bound : data.ub) bound = stored_upper(bound);
  data.matrix.start = std::move(parsed.start);
  data.matrix.index = std::move(parsed.index);
  data.matrix.value = std::move(parsed.value);
}

int report_and_create(ZLPenv* env, const ReadDiagnostics& diagnostics, ParsedModel&& parsed, ZLPmodel** model) {
  for (const std::string& warning : diagnostics.warnings()) log_text(env, warning.c_str());
  if (diagnostics.failed()) {
    log_text(env, diagnostics.error().log.c_str());
    set_error(env, kErrorFileRead, true, "%s", diagnostics.error().text.c_str());
    return kErrorFileRead;
  }
  return create_model(env, to_model_data(std::move(parsed)), model);
}

}  // namespace

bool read_stream(const std::string& name, const char* format, ReadDiagnostics* diagnostics,
                 const std::function<void(ModelStream*)>& body) {
  const std::string shown = printable(name);
  std::string reason;
  const auto stream = open_model_stream(name, 'r', nullptr, &reason);
  if (stream == nullptr) {
    return diagnostics->fail(format_text("Error: file %s not found\n", shown.c_str()),
                             format_text("File %s not found\n", shown.c_str()), 0);
  }
  body(stream.get());
  if (stream->close(&reason)) return true;
  const std::string text = format_text("cannot read file %s: %s\n", shown.c_str(), reason.c_str());
  return diagnostics->fail("Error: " + text, std::string(format) + " reader: " + text, 0);
}

ModelData to_model_data(ParsedModel&& parsed) {
  ModelData data;
  data.name = std::move(parsed.name);
  data.sense = parsed.maximize ? -1 : 1;
  data.obj_con = parsed.objective_constant;
  convert_names(parsed, data);
  convert_rows(parsed, data);
  convert_columns(parsed, data);
  for (ParsedSos& sos : parsed.sos) {
    data.sos.push_back({sos.type, std::move(sos.member), std::move(sos.weight), std::move(sos.name)});
  }
  data.quadratic.reserve(parsed.quadratic.size());
  for (const ParsedQuadraticTerm& term : parsed.quadratic) {
    data.quadratic.push_back({term.first, term.second, term.value});
  }
  return data;
}

ZLPmodel* model_of_file(ZLPenv* env, const char* format, const ModelParse& parse) {
  const auto out_of_memory = [env, format] {
    log_text(env, "Error: out of memory.\n");
    set_error(env, kErrorOutOfMemory, true, "Out of memory in %s reader\n", format);
  };
  ZLPmodel* model = nullptr;
  try {
    ParsedModel parsed;
    const ReadDiagnostics diagnostics = parse(&parsed);
    if (report_and_create(env, diagnostics, std::move(parsed), &model) == kErrorOutOfMemory) out_of_memory();
  } catch (const std::bad_alloc&) {
    out_of_memory();
  } catch (const std::length_error&) {
    out_of_memory();
  }
  return model;
}

}  // namespace zorvex

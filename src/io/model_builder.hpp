// From what a model file says to a model: the way that all model readers end.
#pragma once

#include <functional>
#include <string>

#include "io/model_stream.hpp"
#include "io/parsed_model.hpp"
#include "io/read_diagnostics.hpp"
#include "model/model.hpp"

namespace zorvex {

// Opens `name`, lets `body` read, closes. False, with the error set, when the file does not open or its data were cut
// off or damaged on the way: that explains any error of the text. `format` names the reader.
bool read_stream(const std::string& name, const char* format, ReadDiagnostics* diagnostics,
                 const std::function<void(ModelStream*)>& body);

// The model in the user's form (see create_model).
[[nodiscard]] ModelData to_model_data(ParsedModel&& parsed);

// Fills in the data unless the diagnostics it returns hold an error.
using ModelParse = std::function<ReadDiagnostics(ParsedModel*)>;

// Runs `parse` and makes a model of the result. Warnings and errors go to the log, an error also into the error text;
// `format` names the reader there when memory runs out. Null on failure.
[[nodiscard]] ZLPmodel* model_of_file(ZLPenv* env, const char* format, const ModelParse& parse);

}  // namespace zorvex

// What a finished solve amounts to, as JSON for programs that read it.
#pragma once

#include <string>

#include "session.hpp"

namespace zorvex_cli {

const char* status_name(int status);  // "OPTIMAL" for 2; "UNKNOWN" outside 1..13

// `model_path` is reported as given. A value that the model does not hold in its state is null.
std::string summary_json(ZLPmodel* model, const std::string& model_path);

}  // namespace zorvex_cli

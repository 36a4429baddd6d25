// What all writers of models do around their text.
#pragma once

#include <functional>
#include <string>

#include "io/model_stream.hpp"
#include "model/model.hpp"

namespace zorvex {

// Opens `name`, logs the two lines owed to a model with queued changes, lets `body` write, closes. `body` is false when
// a write failed. Returns 0 or kErrorFileWrite; the text is left to the caller.
int write_model_file(ZLPmodel& model, const std::string& name, const std::function<bool(ModelStream*)>& body);

}  // namespace zorvex

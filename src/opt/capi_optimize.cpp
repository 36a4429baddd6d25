// C entry point: solving.
#include "model/messages.hpp"
#include "opt/optimize.hpp"

using namespace zorvex;

int ZLPoptimize(ZLPmodel* model) {
  // One model has one solve at a time: not even a callback of the running one may start another.
  const int code = check_model_change(model);
  if (code != kOk) {
    set_default_message(model, code);
    return code;
  }
  return optimize_model(*model);
}

// C entry point: solving.
#include "model/messages.hpp"
#include "opt/optimize.hpp"

using namespace zorvex;

int ZLPoptimize(ZLPmodel* model) {
  int code = check_model(model);
  // A callback of the running solve passes the check, but one model has one solve at a time.
  if (code == kOk && model->in_progress != 0) code = kErrorOptimizationInProgress;
  if (code != kOk) {
    set_default_message(model, code);
    return code;
  }
  return optimize_model(*model);
}

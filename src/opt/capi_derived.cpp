// C entry points: models made from other models.
#include "model/messages.hpp"
#include "opt/derived_models.hpp"

namespace {

using namespace zorvex;

template <class Derive>
int derive_model(ZLPmodel* model, ZLPmodel** derived, Derive make) {
  if (derived != nullptr) *derived = nullptr;
  return guarded_model(model, nullptr, [&](ZLPmodel& valid) {
    if (derived == nullptr) return static_cast<int>(kErrorNullArgument);
    return make(valid, derived);
  });
}

}  // namespace

extern "C" {

int ZLPcopymodel(ZLPmodel* model, ZLPmodel** copy) { return derive_model(model, copy, copy_model); }

int ZLPfixedmodel(ZLPmodel* model, ZLPmodel** fixed) { return derive_model(model, fixed, fixed_model); }

int ZLPrelaxmodel(ZLPmodel* model, ZLPmodel** relaxed) { return derive_model(model, relaxed, relaxed_model); }

}  // extern "C"

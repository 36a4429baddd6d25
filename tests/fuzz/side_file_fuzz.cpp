// Any bytes as a basis, a start and a priority file of one small model. A basis that was read fits the model.
#include "fuzz_support.hpp"
#include "io/basis_file.hpp"
#include "io/lp_reader.hpp"
#include "io/name_value_file.hpp"

using namespace zorvex;

namespace {

ZLPmodel* small_model() {
  const fuzz::MemoryFile file(
      "min x + y + z + w st le: x + y <= 4 ge: x - y >= -2 eq: x + z = 3 rg: 1 <= y + z <= 5\n"
      "bounds z <= 2 w free -inf <= y <= 7 gen x z end\n");
  ZLPmodel* model = read_lp(fuzz::quiet_env(), file.name());
  fuzz::require(model != nullptr);
  return model;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static ZLPmodel* const model = small_model();
  const fuzz::MemoryFile file(fuzz::text_of(data, size));
  if (read_basis(*model, file.name()) == 0) fuzz::require(model->warm.basis_fits(model->data));
  if (read_mip_start(*model, file.name()) == 0) fuzz::require(model->warm.start.size() == model->data.obj.size());
  if (read_priorities(*model, file.name()) == 0) fuzz::require(model->branch_priority.size() == model->data.obj.size());
  return 0;
}

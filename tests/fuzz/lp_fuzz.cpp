// Any bytes as an LP-format file. What was read can be written and read again, and is the same then.
#include "fuzz_support.hpp"
#include "io/lp_parser.hpp"
#include "io/lp_reader.hpp"
#include "io/lp_writer.hpp"
#include "support/model_comparison.hpp"

using namespace zorvex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::MemoryStream stream(fuzz::text_of(data, size));
  LpParser parser(&stream, {});
  if (!parser.parse()) {
    fuzz::require(parser.diagnostics().failed());
    return 0;
  }
  ZLPmodel* model = nullptr;
  if (create_model(fuzz::quiet_env(), to_model_data(parser.take_data()), &model) != 0) return 0;
  const fuzz::MemoryFile file("");
  fuzz::require(write_lp(*model, file.name()) == 0);
  ZLPmodel* again = read_lp(fuzz::quiet_env(), file.name());
  fuzz::require(again != nullptr);
  fuzz::require(testing::difference(model->data, again->data, false).empty());
  ZLPfreemodel(again);
  ZLPfreemodel(model);
  return 0;
}

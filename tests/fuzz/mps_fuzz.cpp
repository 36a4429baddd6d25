// Any bytes as an MPS file, in both layouts. What was read can be written, and reads again.
#include "fuzz_support.hpp"
#include "io/mps_parser.hpp"
#include "io/mps_reader.hpp"
#include "io/mps_writer.hpp"

using namespace zorvex;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const MpsLayout layout : {MpsLayout::kFree, MpsLayout::kFixed}) {
    fuzz::MemoryStream stream(fuzz::text_of(data, size));
    MpsParser parser(layout, {});
    if (!parser.parse(&stream)) {
      fuzz::require(parser.diagnostics().failed());
      continue;
    }
    ZLPmodel* model = nullptr;
    if (create_model(fuzz::quiet_env(), to_model_data(parser.take_data()), &model) != 0) continue;
    const fuzz::MemoryFile file("");
    fuzz::require(write_mps(*model, file.name()) == 0);
    ZLPmodel* again = read_mps(fuzz::quiet_env(), file.name());
    fuzz::require(again != nullptr);
    fuzz::require(again->data.num_rows() == model->data.num_rows() && again->data.num_cols() == model->data.num_cols());
    ZLPfreemodel(again);
    ZLPfreemodel(model);
  }
  return 0;
}

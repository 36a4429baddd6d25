// C interface: reading models, loading companion data, writing either. The format follows from the name's suffix.
#include <chrono>
#include <string>

#include "env/environment.hpp"
#include "env/guarded.hpp"
#include "env/log_channel.hpp"
#include "io/basis_file.hpp"
#include "io/file_suffix.hpp"
#include "io/lp_reader.hpp"
#include "io/lp_writer.hpp"
#include "io/model_stream.hpp"
#include "io/mps_reader.hpp"
#include "io/mps_writer.hpp"
#include "io/name_value_file.hpp"
#include "io/parameter_file.hpp"
#include "model/messages.hpp"
#include "zorvex.h"

namespace zorvex {

namespace {

constexpr char kNoFileName[] = "No 'filename' argument supplied";
constexpr char kCannotOpen[] = "Unable to open file '%s' for input";
constexpr char kUnknownType[] = "Unknown file type for file '%s'";

struct FoundFile {
  std::string name;  // empty: none opens
  int probe = 0;     // index into kProbeSuffixes
};

// The first of `name` + probe suffix + compression suffix that opens. When none does although one is there (its
// compressor is missing, say), the log tells why.
FoundFile probe_file(ZLPenv* env, const std::string& name, int num_probes) {
  std::string complaint;
  for (int probe = 0; probe < num_probes; ++probe) {
    for (const char* compression : kCompressionSuffixes) {
      std::string candidate = name + kProbeSuffixes[probe] + compression;
      std::string reason;
      if (open_model_stream(candidate, 'r', nullptr, &reason) != nullptr) return {std::move(candidate), probe};
      if (complaint.empty() && reason.starts_with("cannot start")) complaint = "file " + candidate + ": " + reason;
    }
  }
  if (!complaint.empty()) log_printf(env, "Error: %s\n", complaint.c_str());
  return {};
}

FileType type_of(const FoundFile& file) { return file.probe == 0 ? file_type_of(file.name) : probed_type(file.probe); }

bool is_mps_type(FileType type) { return type == FileType::kMps || type == FileType::kRew || type == FileType::kQps; }
bool is_lp_type(FileType type) { return type == FileType::kLp || type == FileType::kRlp || type == FileType::kIlp; }

void announce(ZLPenv& env, const ZLPmodel& model, const FoundFile& file, FileType type, double seconds) {
  // A file found under its exact ".qps" name is announced as LP: users' log filters know it so.
  const bool mps = type == FileType::kMps || type == FileType::kRew;
  log_printf(&env, mps ? "Read MPS format model from file %s\n" : "Read LP format model from file %s\n",
             file.name.c_str());
  log_printf(&env, "Reading time = %.2f seconds\n", seconds);
  log_printf(&env, "%s: %d rows, %d columns, %lld nonzeros\n", model.data.name.c_str(), model.data.num_rows(),
             model.data.num_cols(), static_cast<long long>(model.data.matrix.num_nonzeros()));
}

int read_model(ZLPenv& env, const char* filename, ZLPmodel** model) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  clear_error(&env);
  const auto fail = [&](int code, const char* format) {
    set_error(&env, code, true, format, filename);
    return code;
  };
  if (filename == nullptr) return fail(kErrorNullArgument, kNoFileName);
  if (model == nullptr) return kErrorNullArgument;
  const FoundFile file = probe_file(&env, filename, static_cast<int>(kProbeSuffixes.size()));
  if (file.name.empty()) return fail(kErrorInvalidArgument, kCannotOpen);
  const FileType type = type_of(file);
  if (!is_mps_type(type) && !is_lp_type(type)) return fail(kErrorFileRead, kUnknownType);
  *model = is_lp_type(type) ? read_lp(&env, file.name) : read_mps(&env, file.name);
  if (*model == nullptr) return kErrorFileRead;
  announce(env, **model, file, type, std::chrono::duration<double>(Clock::now() - start).count());
  return kOk;
}

int read_companion(ZLPmodel& model, const char* filename) {
  const auto fail = [&](int code, const char* format) {
    set_model_error(&model, code, true, format, filename);
    return code;
  };
  if (filename == nullptr) return fail(kErrorNullArgument, kNoFileName);
  const FileType type = file_type_of(filename);
  const FoundFile file = probe_file(model.env, filename, 1);
  if (file.name.empty()) return fail(kErrorInvalidArgument, kCannotOpen);
  switch (type) {
    case FileType::kMst:
      return read_mip_start(model, file.name);
    case FileType::kBas:
      return read_basis(model, file.name);
    case FileType::kPrm:
      return read_parameter_file(*model.env, file.name);
    case FileType::kOrd:
      return read_priorities(model, file.name);
    case FileType::kUnknown:
      return fail(kErrorFileRead, kUnknownType);
    default:
      return fail(kErrorFileRead, "Can't import file '%s' into a model");
  }
}

// Only an infeasible model with a computed IIS has one to write.
int write_iis(ZLPmodel& model) {
  set_model_error(&model, kErrorDataNotAvailable, true, "No IIS available for current model");
  return kErrorDataNotAvailable;
}

int write_by_type(ZLPmodel& model, FileType type, const std::string& name) {
  switch (type) {
    case FileType::kMps:
    case FileType::kRew:
      return write_mps(model, name);
    case FileType::kLp:
    case FileType::kRlp:
      return write_lp(model, name);
    case FileType::kIlp:
      return write_iis(model);
    case FileType::kMst:
      return write_mip_start(model, name);
    case FileType::kSol:
      return write_solution(model, name);
    case FileType::kBas:
      return write_basis(model, name);
    case FileType::kPrm:
      return write_parameter_file(*model.env, name);
    default:
      set_model_error(&model, kErrorFileWrite, true, kUnknownType, name.c_str());
      return kErrorFileWrite;
  }
}

int write_file(ZLPmodel& model, const char* filename) {
  if (filename == nullptr) {
    set_model_error(&model, kErrorNullArgument, true, kNoFileName);
    return kErrorNullArgument;
  }
  const int code = write_by_type(model, file_type_of(filename), filename);
  if (code == kOk) return kOk;
  const char* format = code == kErrorFileWrite ? "Unable to open file '%s' for output" : "Failed to write '%s'";
  set_model_error(&model, code, false, format, filename);
  return code;
}

}  // namespace

}  // namespace zorvex

int ZLPreadmodel(ZLPenv* env, const char* filename, ZLPmodel** model) {
  if (model != nullptr) *model = nullptr;
  return zorvex::guarded(env, [&](ZLPenv& alive) { return zorvex::read_model(alive, filename, model); });
}

int ZLPread(ZLPmodel* model, const char* filename) {
  return zorvex::guarded_change(model, nullptr,
                                [&](ZLPmodel& alive) { return zorvex::read_companion(alive, filename); });
}

int ZLPwrite(ZLPmodel* model, const char* filename) {
  return zorvex::guarded_model(model, nullptr, [&](ZLPmodel& alive) { return zorvex::write_file(alive, filename); });
}

#include "io/model_stream.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <vector>

#include "io/child_process.hpp"
#include "io/file_suffix.hpp"

namespace zorvex {

namespace {

std::string system_message(int error) { return std::generic_category().message(error); }

// Keeps SIGPIPE away from the host program while we write to a compressor that may have died: blocked on this thread,
// and a signal that we caused is taken back before unblocking.
class SigpipeGuard {
 public:
  SigpipeGuard() {
    sigemptyset(&broken_pipe_);
    sigaddset(&broken_pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    was_pending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &broken_pipe_, &previous_);
  }
  SigpipeGuard(const SigpipeGuard&) = delete;
  SigpipeGuard& operator=(const SigpipeGuard&) = delete;
  ~SigpipeGuard() {
    if (!was_pending_) {
      const timespec no_wait{};
      while (sigtimedwait(&broken_pipe_, nullptr, &no_wait) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
  }

 private:
  sigset_t broken_pipe_, previous_;
  bool was_pending_ = false;
};

// Descriptor input and output with retries; remembers the first errno.
class DescriptorIo {
 public:
  [[nodiscard]] std::size_t read(int fd, char* buffer, std::size_t size) {
    ssize_t got;
    do {
      got = ::read(fd, buffer, size);
    } while (got < 0 && errno == EINTR);
    if (got < 0) error_ = errno;
    at_end_ = got <= 0;
    return got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  bool write(int fd, const char* data, std::size_t size) {
    while (error_ == 0 && size > 0) {
      const ssize_t put = ::write(fd, data, size);
      if (put < 0) {
        if (errno != EINTR) error_ = errno;
        continue;
      }
      data += put;
      size -= static_cast<std::size_t>(put);
    }
    return error_ == 0;
  }
  void fail(int error) {
    if (error_ == 0) error_ = error;
  }
  [[nodiscard]] int error() const { return error_; }
  [[nodiscard]] bool at_end() const { return at_end_; }

 private:
  int error_ = 0;
  bool at_end_ = false;
};

class PlainStream final : public ModelStream {
 public:
  explicit PlainStream(FileDescriptor file) : file_(std::move(file)) {}

  std::size_t read(char* buffer, std::size_t size) override { return io_.read(file_.get(), buffer, size); }
  bool write(const char* data, std::size_t size) override { return io_.write(file_.get(), data, size); }
  bool close(std::string* reason) override {
    if (!file_.close()) io_.fail(errno);
    if (io_.error() != 0 && reason != nullptr) *reason = system_message(io_.error());
    return io_.error() == 0;
  }

 private:
  FileDescriptor file_;
  DescriptorIo io_;
};

// Reads gzip data in process. As with the gzip program, members may follow each other and data that are not gzip's
// are refused.
class GzipReadStream final : public ModelStream {
 public:
  explicit GzipReadStream(FileDescriptor file) : stream_(gzdopen(file.get(), "rb")) {
    if (stream_ == nullptr) return;
    file.release();
    gzbuffer(stream_, kBufferSize);
  }
  GzipReadStream(const GzipReadStream&) = delete;
  GzipReadStream& operator=(const GzipReadStream&) = delete;
  ~GzipReadStream() override {
    if (stream_ != nullptr) gzclose_r(stream_);
  }

  [[nodiscard]] bool is_open() const { return stream_ != nullptr; }

  std::size_t read(char* buffer, std::size_t size) override {
    if (!failure_.empty()) return 0;
    const int got = gzread(stream_, buffer, static_cast<unsigned>(std::min<std::size_t>(size, kBufferSize * 4)));
    if (gzdirect(stream_) != 0) {
      failure_ = "not in gzip format";
      return 0;
    }
    // A cut file is not an error to gzread before its last byte was asked for: gzerror tells.
    int code = Z_OK;
    const char* text = gzerror(stream_, &code);
    if (got < 0 || (got == 0 && code != Z_OK && code != Z_STREAM_END)) {
      failure_ = code == Z_BUF_ERROR ? "unexpected end of compressed data" : (code == Z_ERRNO ? "read error" : text);
      return 0;
    }
    return static_cast<std::size_t>(got);
  }
  bool write(const char*, std::size_t) override { return false; }
  bool close(std::string* reason) override {
    gzclose_r(stream_);
    stream_ = nullptr;
    if (!failure_.empty() && reason != nullptr) *reason = failure_;
    return failure_.empty();
  }

 private:
  static constexpr unsigned kBufferSize = 128 * 1024;
  gzFile stream_;
  std::string failure_;
};

// Data through a compressor that runs beside us.
class CompressorStream final : public ModelStream {
 public:
  CompressorStream(std::string program, bool reading) : program_(std::move(program)), reading_(reading) {}

  [[nodiscard]] int start(const std::vector<std::string>& arguments, FileDescriptor other_end) {
    const int error = child_.start(arguments, reading_, other_end.get());
    // When writing, the file stays open here so that a full disk is noticed at close as well.
    if (!reading_) output_ = std::move(other_end);
    return error;
  }

  std::size_t read(char* buffer, std::size_t size) override { return io_.read(child_.pipe().get(), buffer, size); }
  bool write(const char* data, std::size_t size) override {
    const SigpipeGuard guard;
    return io_.write(child_.pipe().get(), data, size);
  }
  bool close(std::string* reason) override {
    const bool stopped_early = reading_ && !io_.at_end();
    const int status = child_.finish();
    if (!output_.close()) io_.fail(errno);
    if (status != 0 && !stopped_early) {
      if (reason != nullptr) *reason = program_ + " failed with exit status " + std::to_string(status);
      return false;
    }
    if (io_.error() != 0 && reason != nullptr) *reason = system_message(io_.error());
    return io_.error() == 0;
  }

 private:
  std::string program_;
  bool reading_;
  ChildProcess child_;
  FileDescriptor output_;
  DescriptorIo io_;
};

// Opens without blocking on anything but regular data; directories are refused.
FileDescriptor open_file(const std::string& name, char mode, std::string* reason) {
  const int flags = mode == 'r' ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
  FileDescriptor file(::open(name.c_str(), flags | O_CLOEXEC, 0666));
  int error = file.valid() ? 0 : errno;
  struct stat status {};
  if (error == 0 && (fstat(file.get(), &status) != 0 || S_ISDIR(status.st_mode))) error = EISDIR;
  if (error != 0) {
    if (reason != nullptr) *reason = system_message(error);
    return FileDescriptor();
  }
  return file;
}

// 7z takes names that start with '-' as switches and '@' as list files.
std::string as_operand(const std::string& name) {
  return name.starts_with('-') || name.starts_with('@') ? "./" + name : name;
}

struct Command {
  std::vector<std::string> arguments;
  bool names_file;  // the program opens the file itself; otherwise it is connected to the other end of the pipe
};

// Empty arguments: cannot be done.
Command compressor_command(Compression compression, char mode, const std::string& name) {
  const bool reading = mode == 'r';
  switch (compression) {
    case Compression::kGzip:
      return {{"gzip", reading ? "-dc" : "-c"}, false};
    case Compression::kBzip2:
      return {{"bzip2", reading ? "-dc" : "-c"}, false};
    case Compression::kZip:
    case Compression::k7z:
      // -spd: no wildcards in names, so that no other archive is touched.
      if (reading) return {{"7z", "e", "-so", "-spd", as_operand(name)}, true};
      if (compression == Compression::k7z) return {{"7z", "a", "-si", "-spd", as_operand(name)}, true};
      return {{}, false};
    case Compression::kNone:
      break;
  }
  return {{}, false};
}

std::unique_ptr<ModelStream> open_compressed(const std::string& name, Compression compression, char mode,
                                             std::string* reason) {
  const Command command = compressor_command(compression, mode, name);
  if (command.arguments.empty()) {
    if (reason != nullptr) *reason = "files of this compression cannot be written";
    return nullptr;
  }
  FileDescriptor file = open_file(name, mode, reason);
  if (!file.valid()) return nullptr;
  if (compression == Compression::kGzip && mode == 'r') {
    auto stream = std::make_unique<GzipReadStream>(std::move(file));
    return stream->is_open() ? std::move(stream) : nullptr;
  }
  if (command.names_file) {
    file.reset();
    // "7z a" would add to an archive that is already there; and it refuses the empty file made by the test above.
    if (mode == 'w') ::unlink(name.c_str());
  }
  auto stream = std::make_unique<CompressorStream>(command.arguments[0], mode == 'r');
  if (const int error = stream->start(command.arguments, std::move(file))) {
    if (reason != nullptr) *reason = "cannot start " + command.arguments[0] + ": " + system_message(error);
    return nullptr;
  }
  return stream;
}

}  // namespace

std::unique_ptr<ModelStream> open_model_stream(const std::string& name, char mode, StreamKind* kind,
                                               std::string* reason) {
  const Compression compression = compression_of(name);
  if (kind != nullptr) *kind = compression == Compression::kNone ? StreamKind::kFile : StreamKind::kPipe;
  if (compression != Compression::kNone) return open_compressed(name, compression, mode, reason);
  FileDescriptor file = open_file(name, mode, reason);
  if (!file.valid()) return nullptr;
  return std::make_unique<PlainStream>(std::move(file));
}

}  // namespace zorvex

// A child program connected by one pipe, started from an argument vector: no command interpreter ever sees a file name.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zorvex {

// Closes a descriptor when it goes out of scope. -1 means none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd = -1) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    reset(other.release());
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { reset(); }

  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] bool valid() const { return fd_ >= 0; }
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void reset(int fd = -1);
  // As reset(), and tells whether the system accepted everything that was written.
  [[nodiscard]] bool close();

 private:
  int fd_;
};

// Both directions leave the child's standard error on /dev/null: what failed is told by the exit status.
class ChildProcess {
 public:
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  // Starts arguments[0], searched on PATH. Reading: the child's standard output is readable through pipe() and its
  // standard input is `other_end` (-1: /dev/null). Writing: the child's standard input is writable through pipe()
  // and its standard output is `other_end` (-1: /dev/null). `other_end` stays the caller's.
  // Returns 0, or the errno of the failed start (ENOENT: no such program).
  [[nodiscard]] int start(const std::vector<std::string>& arguments, bool reading, int other_end);

  [[nodiscard]] FileDescriptor& pipe() { return pipe_; }

  // Closes the pipe and waits for the child. Returns its exit status, or 128 + signal number when it was killed.
  // 0 when nothing was started.
  int finish();

 private:
  FileDescriptor pipe_;
  pid_t pid_ = -1;
};

}  // namespace zorvex

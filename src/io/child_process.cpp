#include "io/child_process.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;

namespace zorvex {

namespace {

// File actions and attributes of one posix_spawn call, freed in every case.
class SpawnSetup {
 public:
  SpawnSetup() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  SpawnSetup(const SpawnSetup&) = delete;
  SpawnSetup& operator=(const SpawnSetup&) = delete;
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  // A null device where fd is -1. dup2 onto itself would keep close-on-exec; posix_spawn clears it in that case.
  void connect(int fd, int target) {
    if (fd < 0) {
      posix_spawn_file_actions_addopen(&actions_, target, "/dev/null", O_RDWR, 0);
    } else {
      posix_spawn_file_actions_adddup2(&actions_, fd, target);
    }
  }

  // The host program may ignore or block SIGPIPE; the child must still die when its reader is gone.
  void default_signals() {
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    sigset_t broken_pipe;
    sigemptyset(&broken_pipe);
    sigaddset(&broken_pipe, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes_, &broken_pipe);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }

  [[nodiscard]] int spawn(const std::vector<std::string>& arguments, pid_t* pid) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return posix_spawnp(pid, argv[0], &actions_, &attributes_, argv.data(), environ);
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// Descriptors 0 to 2 may be closed in the host program; a pipe end that landed there would be overwritten by the
// redirections of the child.
int move_above_standard(FileDescriptor* fd) {
  if (fd->get() > STDERR_FILENO) return 0;
  const int moved = fcntl(fd->get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (moved < 0) return errno;
  fd->reset(moved);
  return 0;
}

}  // namespace

void FileDescriptor::reset(int fd) {
  if (fd_ >= 0) ::close(fd_);
  fd_ = fd;
}

bool FileDescriptor::close() {
  const int fd = release();
  return fd < 0 || ::close(fd) == 0;
}

ChildProcess::~ChildProcess() { finish(); }

int ChildProcess::start(const std::vector<std::string>& arguments, bool reading, int other_end) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  FileDescriptor read_end(ends[0]);
  FileDescriptor write_end(ends[1]);
  if (const int error = move_above_standard(&read_end)) return error;
  if (const int error = move_above_standard(&write_end)) return error;

  SpawnSetup setup;
  setup.connect(reading ? other_end : read_end.get(), STDIN_FILENO);
  setup.connect(reading ? write_end.get() : other_end, STDOUT_FILENO);
  setup.connect(-1, STDERR_FILENO);
  setup.default_signals();
  if (const int error = setup.spawn(arguments, &pid_)) {
    pid_ = -1;
    return error;
  }
  pipe_ = std::move(reading ? read_end : write_end);
  return 0;
}

int ChildProcess::finish() {
  pipe_.reset();
  if (pid_ < 0) return 0;
  int status = 0;
  pid_t result;
  do {
    result = waitpid(pid_, &status, 0);
  } while (result < 0 && errno == EINTR);
  pid_ = -1;
  // A host that ignores SIGCHLD reaps our child itself: its status is then unknown and the data stand for themselves.
  if (result < 0) return 0;
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return WEXITSTATUS(status);
}

}  // namespace zorvex

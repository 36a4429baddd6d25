/* measure SECONDS REPORT COMMAND [ARGUMENT...]: runs a command, killed with its children after SECONDS, and writes
 * one line to REPORT: wall and processor seconds, peak memory in KiB of the largest process, exit code (128 + signal
 * when killed), 1 if the time ran out.
 *
 * A small program of its own because the peak memory that wait4 reports for a child starts at what its parent held
 * when it was forked: a scripting language as the parent would hide the memory of every small solve.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double seconds_now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + 1e-9 * (double)now.tv_nsec;
}

static double as_seconds(struct timeval t) { return (double)t.tv_sec + 1e-6 * (double)t.tv_usec; }

/* Waits for the child, which leads its own process group; kills the group at the deadline. Returns 1 if it did. */
static int wait_until(pid_t child, double limit, int* status, struct rusage* used) {
  sigset_t signals;
  int killed = 0;
  const double deadline = seconds_now() + limit;
  sigemptyset(&signals);
  sigaddset(&signals, SIGCHLD);
  while (wait4(child, status, WNOHANG, used) == 0) {
    const double left = deadline - seconds_now();
    struct timespec pause = {0, 0};
    if (left <= 0 && !killed) {
      killed = 1;
      kill(-child, SIGKILL);
    }
    if (killed) {
      pause.tv_nsec = 10000000;
    } else {
      pause.tv_sec = (time_t)left;
      pause.tv_nsec = (long)(1e9 * (left - (double)pause.tv_sec));
    }
    sigtimedwait(&signals, NULL, &pause);
  }
  return killed;
}

int main(int argc, char** argv) {
  sigset_t signals;
  struct rusage used;
  int status = 0;
  if (argc < 4) {
    fprintf(stderr, "usage: %s SECONDS REPORT COMMAND [ARGUMENT...]\n", argv[0]);
    return 1;
  }
  /* SIGCHLD stays blocked, so that a child that ends between the look and the wait is not missed. */
  sigemptyset(&signals);
  sigaddset(&signals, SIGCHLD);
  sigprocmask(SIG_BLOCK, &signals, NULL);

  const double start = seconds_now();
  const pid_t child = fork();
  if (child == 0) {
    setpgid(0, 0);
    sigprocmask(SIG_UNBLOCK, &signals, NULL);
    execvp(argv[3], argv + 3);
    perror(argv[3]);
    _exit(127);
  }
  if (child < 0) {
    perror("fork");
    return 1;
  }
  setpgid(child, child);
  const int killed = wait_until(child, atof(argv[1]), &status, &used);
  const double wall = seconds_now() - start;

  FILE* report = fopen(argv[2], "w");
  if (report == NULL) {
    perror(argv[2]);
    return 1;
  }
  fprintf(report, "%.6f %.6f %ld %d %d\n", wall, as_seconds(used.ru_utime) + as_seconds(used.ru_stime), used.ru_maxrss,
          WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), killed);
  fclose(report);
  return 0;
}

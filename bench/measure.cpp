// measure INPUT COMMAND [ARG...]: runs COMMAND with standard input from the
// file INPUT and its output discarded, and prints three numbers in
// nanoseconds: the wall time, the time COMMAND's own process spent on a CPU
// (its children excluded), and the CPU time of the whole process tree.
// The own time is read from /proc while the finished process is still a
// zombie, before it is reaped.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>

namespace {

long long Nanoseconds(const timeval& t) { return t.tv_sec * 1000000000LL + t.tv_usec * 1000LL; }

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: measure INPUT COMMAND [ARG...]\n");
    return 64;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t pid = fork();
  if (pid < 0) return 71;
  if (pid == 0) {
    const int in = open(argv[1], O_RDONLY);
    const int out = open("/dev/null", O_WRONLY);
    if (in < 0 || out < 0 || dup2(in, 0) < 0 || dup2(out, 1) < 0 || dup2(out, 2) < 0) _exit(127);
    execvp(argv[2], argv + 2);
    _exit(127);
  }
  siginfo_t info{};
  if (waitid(P_PID, pid, &info, WEXITED | WNOWAIT) != 0) return 71;
  const auto end = std::chrono::steady_clock::now();
  long long own = -1;
  std::ifstream(("/proc/" + std::to_string(pid) + "/schedstat").c_str()) >> own;
  int status = 0;
  rusage usage{};
  if (wait4(pid, &status, 0, &usage) != pid) return 71;
  const long long wall = std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count();
  std::printf("%lld %lld %lld\n", wall, own, Nanoseconds(usage.ru_utime) + Nanoseconds(usage.ru_stime));
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "measure: %s did not end with status 0\n", argv[2]);
    return 1;
  }
  return 0;
}

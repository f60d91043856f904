// popen_replay COMMANDS: the least any program must do to run a session's
// command lines and read their answers. Each line of the file COMMANDS is
// run as Veltrak runs it: "clear" through system, every other line with
// " 2>&1" through popen, its whole output read and then dropped.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: popen_replay COMMANDS\n");
    return 64;
  }
  std::ifstream commands(argv[1]);
  for (std::string line; std::getline(commands, line);) {
    if (line == "clear") {
      if (std::system("clear") == -1) return 71;
      continue;
    }
    FILE* pipe = popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return 71;
    std::string output;
    char buffer[4096];
    for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, got);
    pclose(pipe);
  }
  return 0;
}

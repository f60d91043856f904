#include "utils.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>

namespace {

// pclose waits for the child, so a pipe closed on every path leaves no child
// behind, even when reading its output throws.
struct PipeCloser {
  void operator()(FILE* pipe) const { pclose(pipe); }
};
using Pipe = std::unique_ptr<FILE, PipeCloser>;

// Runs cmd and leaves in result everything it wrote to standard output;
// false when the pipe cannot be opened.
bool ReadCommandOutput(const std::string& cmd, std::string& result) {
  result.clear();
  FlushOutput();
  const Pipe pipe(popen(cmd.c_str(), "r"));
  if (!pipe) return false;
  // fread rather than fgets: a NUL byte in a tool's output must not cut a chunk.
  char buffer[4096];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0) result.append(buffer, got);
  return true;
}

class ShellRunner : public CommandRunner {
 public:
  std::string Run(const std::string& queryCmd) override {
    return GetExecutedResult((queryCmd + " 2>&1").c_str());
  }
  bool RunShell(const std::string& cmd, std::string& result) override {
    return ReadCommandOutput(cmd, result);
  }
  bool Clear() override {
    FlushOutput();
    return std::system("clear") != -1;
  }
};

ShellRunner shell_runner;
CommandRunner* current_runner = &shell_runner;

}  // namespace

void FlushOutput() {
  std::cout.flush();
  std::fflush(stdout);
}

std::string GetExecutedResult(const char* cmd) {
  std::string result;
  if (!ReadCommandOutput(cmd, result)) std::cout << "Open Fail" << std::endl;
  return result;
}

std::stringstream GetCmdResponse(const std::string& queryCmd) {
  return std::stringstream(current_runner->Run(queryCmd), std::ios::in | std::ios::out);
}

bool shellCmd(const std::string& cmd, std::string& result) {
  return current_runner->RunShell(cmd, result);
}

bool ClearScreen() { return current_runner->Clear(); }

CommandRunner* SetCommandRunner(CommandRunner* runner) {
  CommandRunner* previous = current_runner;
  current_runner = runner != nullptr ? runner : &shell_runner;
  return previous == &shell_runner ? nullptr : previous;
}

std::vector<std::string> ParseItems(const std::string& sourceStr, const std::string& delim) {
  std::vector<std::string> items;
  if (sourceStr.empty()) return items;
  const std::string tmpStr = sourceStr + delim;
  const size_t size = tmpStr.size();
  // A 32-bit index, as the splitting rule is defined in 32-bit arithmetic.
  for (uint32_t i = 0; i < size; ++i) {
    const size_t pos = tmpStr.find(delim, i);
    if (pos < size) {
      std::string item = tmpStr.substr(i, pos - i);
      if (!item.empty()) items.push_back(std::move(item));
      i = static_cast<uint32_t>(pos + delim.size() - 1);
    }
  }
  return items;
}

void WaitForKey() {
  FlushOutput();
  if (std::fgetc(stdin) == EOF || std::fgetc(stdin) == EOF) EndOfInput();
}

void EndOfInput() {
  FlushOutput();
  std::exit(0);
}

void PauseForKey() {
  std::cout << "\nEnter any key to continue...";
  WaitForKey();
}

bool ReadUntilLineWith(std::istream& output, const std::string& phrase, Echo echo) {
  std::string line;
  while (std::getline(output, line)) {
    if (echo == Echo::kShow) std::cout << line << std::endl;
    if (line.find(phrase) != std::string::npos) return true;
  }
  return false;
}

bool EveryLineHolds(std::istream& output, const std::string& phrase) {
  bool all = true;
  std::string line;
  while (std::getline(output, line)) {
    if (line.find(phrase) == std::string::npos) all = false;
  }
  return all;
}

void EchoAllLines(std::istream& output) {
  std::string line;
  while (std::getline(output, line)) std::cout << line << '\n';
}

bool FlagAfter(const std::string& line, const std::string& key) {
  // npos + key.size() wraps round on purpose; substr throws past the end.
  return line.substr(line.find(key) + key.size(), 1) == "Y";
}

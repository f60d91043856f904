// Runs the built veltrak as an operator would: in a fresh temporary
// directory holding fake ./sedutil-cli and ./Lantivo scripts, with a fake
// `clear` (printing "[clear]") first on PATH and scripted standard input.
#pragma once

#include <map>
#include <string>
#include <vector>

class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // When `tool` is called with arguments that, joined by single blanks,
  // match the shell pattern (`*` is the only wildcard), it prints output.
  // Registering a pattern again queues a further output for its next call;
  // the last one repeats. "sedutil-cli" and "Lantivo" live in the working
  // directory, any other tool (sudo, dmidecode, ...) on PATH. Unmatched
  // calls print nothing.
  Session& On(const std::string& tool, const std::string& pattern, const std::string& output);

  // Runs veltrak with input on standard input (through a pipe-free file),
  // filling screen (standard output and error) and exit_status. A session
  // that hangs is killed and reports status 124.
  void Run(const std::string& input);

  // Every tool call in order, a line each: "<tool> <arguments joined by blanks>".
  std::string Calls() const;

  const std::string& dir() const { return dir_; }

  std::string screen;
  int exit_status = -1;

 private:
  struct Rule {
    std::string pattern;
    std::vector<std::string> outputs;
  };
  void WriteTools() const;
  std::string ToolPath(const std::string& tool) const;

  std::string dir_;
  std::map<std::string, std::vector<Rule>> tools_;
};

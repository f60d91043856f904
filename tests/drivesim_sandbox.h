// A fresh temporary directory in which the built drive simulator answers as
// ./sedutil-cli, ./Lantivo and ./drivesim, for tests that drive it through
// its command lines as Veltrak and an operator do.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

class SimSandbox {
 public:
  struct Result {
    std::string output;  // standard output and error, as with 2>&1
    int status;
  };

  SimSandbox() {
    char dir_template[] = "/tmp/drivesim-test-XXXXXX";
    if (mkdtemp(dir_template) == nullptr) throw std::runtime_error("mkdtemp failed");
    dir_ = dir_template;
    for (const char* name : {"sedutil-cli", "Lantivo", "drivesim"}) {
      std::filesystem::create_symlink(DRIVESIM_BINARY, dir_ + "/" + name);
    }
  }
  ~SimSandbox() {
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  SimSandbox(const SimSandbox&) = delete;
  SimSandbox& operator=(const SimSandbox&) = delete;

  // Runs a shell command line in the directory, standard input closed.
  Result Run(const std::string& command_line) const {
    const std::string command = "cd '" + dir_ + "' && " + command_line + " > .out 2>&1 < /dev/null";
    const int status = std::system(command.c_str());
    return {Read(".out"), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
  }

  // The admin view of one drive, which tests read instead of the state file.
  std::string Show(const std::string& device) const { return Run("./drivesim show " + device).output; }

  std::string Read(const std::string& name) const {
    std::ifstream file(dir_ + "/" + name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << text;
  }

  const std::string& dir() const { return dir_; }

 private:
  std::string dir_;
};

// The blank-separated words of the first line of text that starts, after
// its indentation, with key; empty when there is none.
inline std::vector<std::string> WordsOfLine(const std::string& text, const std::string& key) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::vector<std::string> found;
    for (std::string word; words >> word;) found.push_back(word);
    if (!found.empty() && found[0] == key) return found;
  }
  return {};
}

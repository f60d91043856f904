// A fresh temporary directory in which the built drive simulator answers as
// ./sedutil-cli, ./Lantivo and ./drivesim, for tests that drive it through
// its command lines as Veltrak and an operator do.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>

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

  // Runs a shell command line in the directory; standard input is closed
  // unless the command line redirects it.
  Result Run(const std::string& command_line) const {
    const std::string command = "cd '" + dir_ + "' && { " + command_line + "; } > .out 2>&1 < /dev/null";
    const int status = std::system(command.c_str());
    return {Read(".out"), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
  }

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

// Whether `drivesim show device`, each run of blanks squeezed to one,
// holds text; a failure prints the whole state.
inline ::testing::AssertionResult Shows(const SimSandbox& sim, const std::string& device, const std::string& text) {
  const std::string shown = std::regex_replace(sim.Run("./drivesim show " + device).output, std::regex(" +"), " ");
  if (shown.find(text) != std::string::npos) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no \"" << text << "\" in:\n" << shown;
}

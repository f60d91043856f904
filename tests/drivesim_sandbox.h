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
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

class SimSandbox {
 public:
  // Standard output and error (as with 2>&1) and the exit status.
  struct Result { std::string output; int status; };

  SimSandbox() {
    char dir_template[] = "/tmp/drivesim-test-XXXXXX";
    if (mkdtemp(dir_template) == nullptr) throw std::runtime_error("mkdtemp failed");
    dir_ = dir_template;
    for (const char* name : {"sedutil-cli", "Lantivo", "drivesim"}) {
      std::filesystem::create_symlink(DRIVESIM_BINARY, dir_ + "/" + name);
    }
  }
  ~SimSandbox() { std::error_code ignored; std::filesystem::remove_all(dir_, ignored); }
  SimSandbox(const SimSandbox&) = delete;
  SimSandbox& operator=(const SimSandbox&) = delete;

  // Runs a shell command line in the directory, where S stands for
  // `./sedutil-cli -n` and L for `./Lantivo`; standard input is closed
  // unless the command line redirects it.
  Result Run(const std::string& command_line) const {
    const int rc = std::system(("cd '" + dir_ + "' && { S() { ./sedutil-cli -n \"$@\"; }; L() { ./Lantivo \"$@\"; }; " +
                                command_line + "; } > .out 2>&1 < /dev/null").c_str());
    return {Read(".out"), WIFEXITED(rc) ? WEXITSTATUS(rc) : -1};
  }

  std::string Read(const std::string& name) const {
    return {std::istreambuf_iterator<char>(std::ifstream(dir_ + "/" + name, std::ios::binary).rdbuf()), {}};
  }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << text;
  }

  const std::string& dir() const { return dir_; }

  // The lines of `drivesim show device` whose first word also starts a line
  // of like, blanks squeezed: compared with like, they tell whether the
  // drive is in that state.
  Result Shown(const std::string& device, const std::string& like) const {
    Write(".like", like);
    return Run("./drivesim show " + device + " | awk 'NR == FNR { w[$1]; next } $1 in w { $1 = $1; print }' .like -");
  }

 private:
  std::string dir_;
};

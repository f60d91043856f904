// A fresh copy of the demo's emulated world (tools/demo/world.sh) in a
// temporary directory: our drive tools under the names Veltrak runs, the
// emulated drives behind the preload library, and a silent clear. Sessions of
// the real program, and the tools and opalsim, run in it as in the demo.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class EmulatedWorld {
 public:
  // Standard output and error (as with 2>&1) and the exit status.
  struct Result {
    std::string output;
    int status;
  };

  EmulatedWorld() : dir_(MakeDir("world")) {
    std::filesystem::copy(Template(), dir_, std::filesystem::copy_options::recursive);
    std::filesystem::create_symlink("/bin/true", dir_ + "/bin/clear");
    Write(".input", "");
  }
  ~EmulatedWorld() {
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  EmulatedWorld(const EmulatedWorld&) = delete;
  EmulatedWorld& operator=(const EmulatedWorld&) = delete;

  // Runs a shell command line in the world's directory, standard input from
  // the file .input (empty unless written).
  Result Run(const std::string& command_line) const {
    Write(".command", command_line + "\n");
    const int rc = std::system(("'" VELTRAK_SOURCE_DIR "/tools/demo/run.sh' '" + dir_ + "' '" VELTRAK_BUILD_DIR
                                "' sh .command > '" + dir_ + "/.out' 2>&1 < '" + dir_ + "/.input'")
                                   .c_str());
    return {Read(".out"), WIFEXITED(rc) ? WEXITSTATUS(rc) : -1};
  }

  // Runs Veltrak with input; the hang guard reports status 124.
  Result Veltrak(const std::string& input) const {
    Write(".input", input);
    Result result = Run("timeout " VELTRAK_SESSION_LIMIT " '" VELTRAK_BINARY "'");
    Write(".input", "");
    return result;
  }

  // The lines of `opalsim show DEVICE` that begin with one of the words
  // given, blanks squeezed: "LR1 2048 409600 Y Y Y Y 0 ...".
  std::string Shown(const std::string& device, const std::string& firstWords) const {
    return Run("./opalsim show " + device + " | awk -v w='" + firstWords +
               "' 'BEGIN { n = split(w, a, \" \"); for (i = 1; i <= n; ++i) keep[a[i]] } $1 in keep { $1 = $1; print }'")
        .output;
  }

  std::string Read(const std::string& name) const {
    std::ifstream in(dir_ + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << text;
  }
  const std::string& dir() const { return dir_; }

 private:
  static std::string MakeDir(const char* what) {
    std::string name = std::string("/tmp/veltrak-") + what + "-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    return name;
  }

  // The world, made once per test process, copied for each test, and
  // removed when the process ends.
  static const std::string& Template() {
    struct Made {
      std::string path = MakeDir("world-template");
      Made() {
        const std::string command = "'" VELTRAK_SOURCE_DIR "/tools/demo/world.sh' '" + path + "' '" VELTRAK_BUILD_DIR
                                    "' && mkdir '" + path + "/bin'";
        if (std::system(command.c_str()) != 0) throw std::runtime_error("tools/demo/world.sh failed");
      }
      ~Made() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
      }
    };
    static const Made made;
    return made.path;
  }

  std::string dir_;
};

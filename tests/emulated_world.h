// A fresh copy of the demo's emulated world (tools/demo/world.sh) in a
// temporary directory: our drive tools under the names Veltrak runs, the
// emulated drives behind the preload library, a silent clear. Veltrak, the
// tools and opalsim run in it as in the demo (tools/demo/run.sh).
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

// The README's first session, one answer a line, empty lines for the pauses:
// a new drive taken into ownership, a range given an address and a mode, the
// ranges shown, a user enabled and granted the range, the access listing.
inline const std::string kReadmeSession = "1\n1\n" "2\nSecret1\nY\n\n" "5\n1\n2048\n409600\n\n" "4\n1\n2\n1\n\n"
                                          "3\n\n" "6\n1\nUserPw1\nN\n\n" "8\n1\n1\nY\n\n" "7\n\n" "0\n";

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
  }
  ~EmulatedWorld() {
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  EmulatedWorld(const EmulatedWorld&) = delete;
  EmulatedWorld& operator=(const EmulatedWorld&) = delete;

  // Runs a shell command line in the world, input from the given text.
  Result Run(const std::string& command_line, const std::string& input = "") const {
    std::ofstream(dir_ + "/.command") << command_line << "\n";
    std::ofstream(dir_ + "/.input", std::ios::binary) << input;
    const int rc = std::system(("'" VELTRAK_SOURCE_DIR "/tools/demo/run.sh' '" + dir_ + "' '" VELTRAK_BUILD_DIR
                                "' sh .command > '" + dir_ + "/.out' 2>&1 < '" + dir_ + "/.input'").c_str());
    std::ifstream out(dir_ + "/.out", std::ios::binary);
    return {{std::istreambuf_iterator<char>(out), {}}, WIFEXITED(rc) ? WEXITSTATUS(rc) : -1};
  }

  // Runs Veltrak on the keys; the hang guard reports status 124.
  Result Veltrak(const std::string& keys) const {
    return Run("timeout " VELTRAK_SESSION_LIMIT " '" VELTRAK_BINARY "'", keys);
  }

  // The lines of `opalsim show DEVICE` whose first word is one of the words
  // given, blanks squeezed: "LR1 2048 409600 Y Y Y Y 0 <key> ...".
  std::string Shown(const std::string& device, const std::string& firstWords) const {
    return Run("./opalsim show " + device + " | awk -v w='" + firstWords +
               "' 'BEGIN { split(w, a, \" \"); for (i in a) keep[a[i]] } $1 in keep { $1 = $1; print }'").output;
  }

 private:
  static std::string MakeDir(const char* what) {
    std::string name = std::string("/tmp/veltrak-") + what + "-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    return name;
  }

  // The world, made once per test process and removed when it ends.
  static const std::string& Template() {
    struct Made {
      std::string path = MakeDir("world-template");
      Made() {
        if (std::system(("'" VELTRAK_SOURCE_DIR "/tools/demo/world.sh' '" + path + "' '" VELTRAK_BUILD_DIR "' && mkdir '" +
                         path + "/bin'").c_str()) != 0) {
          throw std::runtime_error("tools/demo/world.sh failed");
        }
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

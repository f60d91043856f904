// Veltrak on the drive simulator: an operator's whole life of one drive,
// each step a separate run of the built program with scripted keys, and the
// drive's state read back with `drivesim show` rather than from Veltrak.
#include <gtest/gtest.h>

#include <filesystem>

#include "drivesim_sandbox.h"

namespace {

namespace fs = std::filesystem;

// The demo's sudo and dmidecode stand-ins, so the flash lock reads a fixed
// machine UUID; a clear that leaves no terminal codes; the two images.
void LayOutDemo(const SimSandbox& sim) {
  const fs::path standins = fs::path(__FILE__).parent_path().parent_path() / "tools" / "demo";
  fs::create_directory(sim.dir() + "/bin");
  for (const char* tool : {"sudo", "dmidecode"}) fs::create_symlink(standins / tool, sim.dir() + "/bin/" + tool);
  sim.Write("bin/clear", "#!/bin/sh\necho '[clear]'\n");
  fs::permissions(sim.dir() + "/bin/clear", fs::perms::owner_all, fs::perm_options::add);
  sim.Write("PBA.img", std::string(5000, 'p'));
  sim.Write("PBA_flash.img", std::string(3000, 'f'));
}

// The KVX drive is the second that Veltrak accepts; once owned, each run
// starts by telling Veltrak its password. Every screen ends with a pause
// that wants one more key.
const std::string kSelectSda = "1\n1\n";
const std::string kLogIn = kSelectSda + "11\npw1\ny\n\n";
const std::string kUuidPassword = "4C4C4544004235108051B4C04F384E32";

struct Step {
  const char* what;
  std::string keys;
  std::vector<std::string> shown;  // what `drivesim show /dev/sda` then holds
};

TEST(DrivesimSession, VeltrakTakesADriveFromTheFactoryThroughEveryActionToPsidErase) {
  SimSandbox sim;
  ASSERT_EQ(0, sim.Run("./drivesim init").status);
  LayOutDemo(sim);
  const Step steps[] = {
      {"take ownership",
       kSelectSda + "2\npw1\ny\n\n0\n",
       {"Owner (SID) taken, password pw1\n", "Locking SP active, Admin1 password pw1\n",
        "Shadow MBR MBREnable Y, MBRDone Y\n", "LR0 0 0 N N N N 1 Admin1\n"}},
      {"give range 1 an address", kLogIn + "5\n1\n2048\n4096\n\n0\n", {"LR1 2048 4096 N N N N 2 Admin1\n"}},
      {"lock range 1", kLogIn + "4\n1\n3\n1\n\n0\n", {"LR1 2048 4096 Y Y Y Y 2 Admin1\n", "Locked Y\n"}},
      {"make range 1 read-only", kLogIn + "4\n1\n2\n1\n\n0\n", {"LR1 2048 4096 N Y N Y 2 Admin1\n"}},
      {"open range 1", kLogIn + "4\n1\n1\n1\n\n0\n", {"LR1 2048 4096 N N N N 2 Admin1\n", "Locked N\n"}},
      {"enable User3 with a password", kLogIn + "6\n3\nu3pw\nn\n\n0\n", {"User3 enabled password u3pw\n"}},
      {"let User1 and User3 lock range 1", kLogIn + "8\n1\n1,3\ny\n\n0\n",
       {"LR1 2048 4096 N N N N 2 Admin1 User1 User3\n"}},
      {"remove all users from range 1", kLogIn + "9\n1\nn\n\n0\n", {"LR1 2048 4096 N N N N 2 Admin1\n"}},
      {"switch the shadow MBR off", kLogIn + "13\nn\n\n14\nn\n\n0\n", {"Shadow MBR MBREnable N, MBRDone N\n"}},
      {"load the default pre-boot image", kLogIn + "15\ndefault\n\n0\n", {"Pre-boot image PBA.img (5000 bytes)\n"}},
      {"revert, keeping the data",
       kLogIn + "16\ny\n\n0\n",
       {"Owner (SID) not taken", "Locking SP inactive\n", "LR0 0 0 N N N N 1 Admin1\n", "LR1 0 0 N N N N 3 Admin1\n",
        "Pre-boot image none\n", "User3 disabled no password\n"}},
      {"take ownership again with the flash lock",
       kSelectSda + "3\ny\n\n",
       {"Owner (SID) taken, password " + kUuidPassword + "\n", "LR0 0 0 Y Y Y Y 1 Admin1\n", "Locked Y\n",
        "Shadow MBR MBREnable Y, MBRDone Y\n", "Pre-boot image PBA_flash.img (3000 bytes)\n"}},
      {"erase with the built-in PSID",
       kSelectSda + "17\nXQJ\ny\n\n0\n",
       {"Owner (SID) not taken", "Locking SP inactive\n", "LR0 0 0 N N N N 2 Admin1\n", "Pre-boot image none\n"}},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    sim.Write(".keys", step.keys);
    const SimSandbox::Result run = sim.Run("PATH=\"$PWD/bin:$PATH\" timeout 20 " VELTRAK_BINARY " < .keys");
    EXPECT_EQ(0, run.status) << run.output;
    for (const std::string& line : step.shown) EXPECT_TRUE(Shows(sim, "/dev/sda", line)) << run.output;
  }
}

}  // namespace

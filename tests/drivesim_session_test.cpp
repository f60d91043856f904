// Veltrak on the drive simulator: an operator's whole life of one drive,
// each step a separate run of the built program with scripted keys, and the
// drive's state read back with `drivesim show` rather than from Veltrak.
#include <gtest/gtest.h>

#include <regex>

#include "drivesim_sandbox.h"

namespace {

// The KVX drive is the second that Veltrak accepts; once owned, each run
// starts by telling Veltrak its password. Every screen ends with a pause
// that wants one more key.
const std::string kSelectSda = "1\n1\n";
const std::string kLogIn = kSelectSda + "11\npw1\ny\n\n";

// One run of Veltrak with its keys, and the lines of `drivesim show
// /dev/sda` it must leave (see SimSandbox::Shown).
struct Step { const char* what; std::string keys, shown; };

TEST(DrivesimSession, VeltrakTakesADriveFromTheFactoryThroughEveryActionToPsidErase) {
  SimSandbox sim;
  // The demo's sudo and dmidecode stand-ins, so that the flash lock reads a
  // fixed machine UUID; a clear that does nothing; the two images.
  ASSERT_EQ(0, sim.Run("./drivesim init && mkdir bin && demo=\"$(dirname '" __FILE__ "')/../tools/demo\" && "
                       "ln -s \"$demo/sudo\" \"$demo/dmidecode\" bin && ln -s /bin/true bin/clear && "
                       "head -c 5000 /dev/zero > PBA.img && head -c 3000 /dev/zero > PBA_flash.img").status);
  const std::string factory = "Owner (SID) not taken, factory MSID 107E937C4F701A33\nLocking SP inactive\n";
  const Step steps[] = {
      {"take ownership", kSelectSda + "2\npw1\ny\n\n0\n",
       "Owner (SID) taken, password pw1\nLocking SP active, Admin1 password pw1\nLocked N\n"
       "Shadow MBR MBREnable Y, MBRDone Y\nLR0 0 0 N N N N 1 Admin1\n"},
      {"give range 1 an address", kLogIn + "5\n1\n2048\n4096\n\n0\n", "LR1 2048 4096 N N N N 2 Admin1\n"},
      {"lock range 1", kLogIn + "4\n1\n3\n1\n\n0\n", "Locked Y\nLR1 2048 4096 Y Y Y Y 2 Admin1\n"},
      {"make range 1 read-only", kLogIn + "4\n1\n2\n1\n\n0\n", "Locked Y\nLR1 2048 4096 N Y N Y 2 Admin1\n"},
      {"open range 1", kLogIn + "4\n1\n1\n1\n\n0\n", "Locked N\nLR1 2048 4096 N N N N 2 Admin1\n"},
      {"enable User3 with a password", kLogIn + "6\n3\nu3pw\nn\n\n0\n", "User3 enabled password u3pw\n"},
      {"let User1 and User3 lock it", kLogIn + "8\n1\n1,3\ny\n\n0\n", "LR1 2048 4096 N N N N 2 Admin1 User1 User3\n"},
      {"remove all users from range 1", kLogIn + "9\n1\nn\n\n0\n", "LR1 2048 4096 N N N N 2 Admin1\n"},
      {"switch the shadow MBR off", kLogIn + "13\nn\n\n14\nn\n\n0\n", "Shadow MBR MBREnable N, MBRDone N\n"},
      {"load the default pre-boot image", kLogIn + "15\ndefault\n\n0\n", "Pre-boot image PBA.img (5000 bytes)\n"},
      {"revert, keeping the data", kLogIn + "16\ny\n\n0\n", factory + "Pre-boot image none\n"
       "LR0 0 0 N N N N 1 Admin1\nLR1 0 0 N N N N 3 Admin1\nUser3 disabled no password\n"},
      {"take ownership again with the flash lock", kSelectSda + "3\ny\n\n",
       "Owner (SID) taken, password 4C4C4544004235108051B4C04F384E32\nLocked Y\nShadow MBR MBREnable Y, MBRDone Y\n"
       "Pre-boot image PBA_flash.img (3000 bytes)\nLR0 0 0 Y Y Y Y 1 Admin1\n"},
      {"PSID erase", kSelectSda + "17\nXQJ\ny\n\n0\n", factory + "Pre-boot image none\nLR0 0 0 N N N N 2 Admin1\n"},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    const auto run = sim.Run("printf '" + step.keys +
                             "' | PATH=\"$PWD/bin:$PATH\" timeout " VELTRAK_SESSION_LIMIT " " VELTRAK_BINARY);
    EXPECT_EQ(0, run.status) << run.output;
    EXPECT_FALSE(std::regex_search(run.output, std::regex("fail|error", std::regex::icase))) << run.output;
    EXPECT_EQ(step.shown, sim.Shown("/dev/sda", step.shown).output) << run.output;
  }
}

}  // namespace

// Rehearsal that tells the truth: Veltrak in the demo's emulated world, over
// our drive tools, the preload library and the emulated drives, each step a
// separate run of the built program with scripted keys, and the drive read
// back with opalsim rather than from Veltrak.
#include <gtest/gtest.h>

#include <regex>

#include "emulated_world.h"

namespace {

// Drives in the order Veltrak lists them: 0 /dev/nvme0 (owned, password
// Zep2024), 1 /dev/sda (new; its PSID is the built-in one), 2 /dev/sdc (new,
// 16 ranges). Every screen ends with a pause that wants one more key.
const std::string kSelectSda = "1\n1\n";
const std::string kLogIn = kSelectSda + "11\npw1\ny\n\n";

// A data key stands for itself; lines are compared without them.
std::string WithoutKeys(const std::string& lines) {
  return std::regex_replace(lines, std::regex(" [0-9a-f]{16} "), " KEY ");
}

// The data keys of a drive's ranges, LR0 first.
std::vector<std::string> Keys(const EmulatedWorld& world, const std::string& device) {
  std::vector<std::string> keys;
  const std::string rows = world.Shown(device, "LR0 LR1 LR2 LR3 LR4 LR5 LR6 LR7 LR8");
  const std::regex key(" ([0-9a-f]{16}) ");
  for (auto m = std::sregex_iterator(rows.begin(), rows.end(), key); m != std::sregex_iterator(); ++m) {
    keys.push_back((*m)[1]);
  }
  return keys;
}

void ExpectSession(const EmulatedWorld& world, const std::string& keys, const char* what) {
  const EmulatedWorld::Result run = world.Veltrak(keys);
  EXPECT_EQ(0, run.status) << what << "\n" << run.output;
  EXPECT_FALSE(std::regex_search(run.output, std::regex("fail|error|wrong", std::regex::icase)))
      << what << "\n" << run.output;
}

// One run of Veltrak, and the lines of `opalsim show /dev/sda` it must leave.
struct Step {
  const char* what;
  std::string keys, words, shown;
};

const std::string kFactory =
    "SID not owned (password is the MSID), tries 0/5\nLocking SP inactive (Manufactured-Inactive)\n"
    "MBR Enable N, Done N, DoneOnReset 0, 0 bytes written\n";

TEST(Rehearsal, VeltrakTakesADriveFromTheFactoryThroughEveryActionToPsidErase) {
  const EmulatedWorld world;
  const Step steps[] = {
      {"take ownership", kSelectSda + "2\npw1\ny\n\n0\n", "SID Locking MBR LR0",
       "SID owned, password \"pw1\", tries 0/5\nLocking SP active (Manufactured)\n"
       "MBR Enable Y, Done Y, DoneOnReset 0, 0 bytes written\nLR0 0 0 N N N N 0 KEY Admins / Admins\n"},
      {"give range 1 an address", kLogIn + "5\n1\n2048\n4096\n\n0\n", "LR1",
       "LR1 2048 4096 N N N N 0 KEY Admins / Admins\n"},
      {"lock range 1", kLogIn + "4\n1\n3\n1\n\n0\n", "Locked LR1",
       "Locked Y\nLR1 2048 4096 Y Y Y Y 0 KEY Admins / Admins\n"},
      {"make range 1 read-only", kLogIn + "4\n1\n2\n1\n\n0\n", "Locked LR1",
       "Locked Y\nLR1 2048 4096 N Y N Y 0 KEY Admins / Admins\n"},
      {"open range 1", kLogIn + "4\n1\n1\n1\n\n0\n", "Locked LR1",
       "Locked N\nLR1 2048 4096 N N N N 0 KEY Admins / Admins\n"},
      {"enable User3 with a password", kLogIn + "6\n3\nu3pw\nn\n\n0\n", "User3",
       "User3 enabled, password \"u3pw\", tries 0/5\n"},
      {"let User1 and User3 lock it", kLogIn + "8\n1\n1,3\ny\n\n0\n", "LR1",
       "LR1 2048 4096 N N N N 0 KEY Admins User1 OR User3 OR / Admins User1 OR User3 OR\n"},
      {"remove all users from range 1", kLogIn + "9\n1\nn\n\n0\n", "LR1",
       "LR1 2048 4096 N N N N 0 KEY Admins / Admins\n"},
      {"switch the shadow MBR off", kLogIn + "13\nn\n\n14\nn\n\n0\n", "MBR",
       "MBR Enable N, Done N, DoneOnReset 0, 0 bytes written\n"},
      {"load the default pre-boot image", kLogIn + "15\ndefault\n\n0\n", "MBR",
       "MBR Enable N, Done N, DoneOnReset 0, 1048576 bytes written\n"},
      {"revert, keeping the data", kLogIn + "16\ny\n\n0\n", "SID Locking MBR LR0 LR1 User3",
       kFactory + "User3 disabled, password none, tries 0/5\n"
       "LR0 0 0 N N N N 0 KEY Admins / Admins\nLR1 0 0 N N N N 0 KEY Admins / Admins\n"},
      {"take ownership again with the flash lock", kSelectSda + "3\ny\n\n", "SID Locked MBR LR0",
       "SID owned, password \"4C4C4544004235108051B4C04F384E32\", tries 0/5\nLocked Y\n"
       "MBR Enable Y, Done Y, DoneOnReset 0, 524288 bytes written\nLR0 0 0 Y Y Y Y 0 KEY Admins / Admins\n"},
      {"PSID erase", kSelectSda + "17\nXQJ\ny\n\n0\n", "SID Locking MBR", kFactory},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    const std::vector<std::string> before = Keys(world, "/dev/sda");
    const EmulatedWorld::Result run = world.Veltrak(step.keys);
    EXPECT_EQ(0, run.status) << run.output;
    EXPECT_FALSE(std::regex_search(run.output, std::regex("fail|error", std::regex::icase))) << run.output;
    EXPECT_EQ(step.shown, WithoutKeys(world.Shown("/dev/sda", step.words))) << run.output;
    const std::vector<std::string> after = Keys(world, "/dev/sda");
    ASSERT_EQ(9u, after.size());
    // A new address re-keys its range; a revert keeps only the global
    // range's data; a PSID erase keeps nothing.
    const std::string w = step.what;
    for (size_t range = 0; range < after.size(); ++range) {
      const bool rekeyed = (w == "give range 1 an address" && range == 1) ||
                           (w == "revert, keeping the data" && range > 0) || w == "PSID erase";
      EXPECT_EQ(rekeyed, before[range] != after[range]) << "LR" << range;
    }
  }
}

// A power cycle: ranges with LockOnReset lock and MBRDone clears, so the
// next boot shows the shadow MBR: empty after taking ownership, the flash
// image after a flash lock.
TEST(Rehearsal, APowerCycleShowsWhatTheNextBootSees) {
  const EmulatedWorld world;
  ExpectSession(world, kSelectSda + "2\npw1\ny\n\n0\n", "take ownership");
  ASSERT_EQ(0, world.Run("./opalsim power-cycle /dev/sda").status);
  EXPECT_EQ("MBR Enable Y, Done N, DoneOnReset 0, 0 bytes written\n", world.Shown("/dev/sda", "MBR"));
  ExpectSession(world, kLogIn + "16\ny\n\n0\n", "revert");
  ExpectSession(world, kSelectSda + "3\ny\n\n", "flash lock");
  ASSERT_EQ(0, world.Run("./opalsim power-cycle").status);
  EXPECT_EQ("Locked Y\nMBR Enable Y, Done N, DoneOnReset 0, 524288 bytes written\n",
            world.Shown("/dev/sda", "Locked MBR"));
  EXPECT_NE(std::string::npos, world.Veltrak(kSelectSda + "0\n").output.find(" OPAL Locked:     Yes"));
}

// After the try limit the drive refuses even the right password until a
// power cycle, and Veltrak's check of the admin password says it is wrong.
TEST(Rehearsal, LockedOutTheRightPasswordIsWrongUntilAPowerCycle) {
  const EmulatedWorld world;
  std::string keys;
  for (int i = 0; i < 5; ++i) keys += "11\nnot-it\ny\n\n";
  const std::string screen = world.Veltrak(keys + "11\nZep2024\ny\n\n0\n").output;
  size_t wrong = 0;
  for (size_t at = 0; (at = screen.find("Password wrong, please try again", at)) != std::string::npos; ++at) ++wrong;
  EXPECT_EQ(6u, wrong) << screen;
  EXPECT_EQ("Admin1 enabled, password \"Zep2024\", tries 5/5\n", world.Shown("/dev/nvme0", "Admin1"));
  ASSERT_EQ(0, world.Run("./opalsim power-cycle /dev/nvme0").status);
  EXPECT_NE(std::string::npos, world.Veltrak("11\nZep2024\ny\n\n0\n").output.find("Password correct"));
}

// A host whose tools warn before their own output (a SATA drive not behind
// libata): the PSID erase works, yet Veltrak, which reads only the first
// line, reports it failed.
TEST(Rehearsal, AWarningLineBeforeTheToolsOutputTurnsAPsidEraseIntoFail) {
  const EmulatedWorld world;
  ASSERT_EQ(0, world.Run("./opalsim host allow-tpm missing").status);
  const std::string screen = world.Veltrak(kSelectSda + "2\npw1\ny\n\n17\nXQJ\ny\n\n0\n").output;
  EXPECT_NE(std::string::npos, screen.find("Enable OPAL OK")) << screen;
  EXPECT_NE(std::string::npos, screen.find("Erase All Data FAIL")) << screen;
  EXPECT_EQ(kFactory, world.Shown("/dev/sda", "SID Locking MBR"));
}

// A drive with 16 ranges: the bounds of actions 4 and 5 follow the drive
// (though the sedutil tool takes range numbers up to 15 only), action 8 keeps
// its 0 ~ 8, action 9 takes a range beyond 8 and sends nothing for it.
TEST(Rehearsal, SixteenRangesMoveTheBoundsOfTheRangeScreens) {
  const EmulatedWorld world;
  const std::string open = "1\n2\n2\npw1\ny\n\n";
  const std::string screen = world.Veltrak(open + "5\n15\n2048\n4096\n\n" "5\n16\n8192\n4096\n\n"
                                           "4\n16\n3\n1\n\n" "8\n16\n\n" "9\n16\nn\n\n0\n").output;
  for (const char* expected :
       {"Which LR you want to setup (1 ~ 16)?", "LockingRange15 reKeyed \nSet done",
        "Invalid Locking Range (0-15) 16\nSetupLockingRange Error", "Which Locking Range you want to setup (0 ~ 16)?",
        "(0 ~ 8)? Wrong locking range choosen!!", "remove done"}) {
    EXPECT_NE(std::string::npos, screen.find(expected)) << expected << "\n" << screen;
  }
  EXPECT_EQ("LR15 2048 4096 N N N N 0 KEY Admins / Admins\nLR16 0 0 Y Y Y Y 0 KEY Admins / Admins\n",
            WithoutKeys(world.Shown("/dev/sdc", "LR15 LR16")));
}

}  // namespace

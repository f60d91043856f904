// Rehearsal that tells the truth: Veltrak in the demo's emulated world, over
// our drive tools, the preload library and the emulated drives, each step a
// separate run of the built program, the drive read back with opalsim.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "emulated_world.h"

namespace {

// Veltrak lists 0 /dev/nvme0 (owned, password Zep2024), 1 /dev/sda (new, the
// built-in PSID), 2 /dev/sdc (new, 16 ranges).
const std::string kSda = "1\n1\n";
const std::string kLogIn = kSda + "11\npw1\ny\n\n";
const std::string kFactory = "SID not owned (password is the MSID), tries 0/5\n"
                             "Locking SP inactive (Manufactured-Inactive)\n"
                             "MBR Enable N, Done N, DoneOnReset 0, 0 bytes written\n";
const std::string kLr = "LR0 LR1 LR2 LR3 LR4 LR5 LR6 LR7 LR8";

// opalsim show's lines with each data key replaced by KEY.
std::string Shown(const EmulatedWorld& world, const std::string& device, const std::string& words) {
  return std::regex_replace(world.Shown(device, words), std::regex(" [0-9a-f]{16} "), " KEY ");
}

// Which ranges of /dev/sda got a new data key between two listings: "1".
std::string Rekeyed(const std::string& before, const std::string& after) {
  const std::regex key("LR([0-9]+) .* ([0-9a-f]{16}) ");
  std::string ranges;
  std::istringstream b(before), a(after);
  std::smatch mb, ma;
  for (std::string lb, la; std::getline(b, lb) && std::getline(a, la);) {
    if (std::regex_search(lb, mb, key) && std::regex_search(la, ma, key) && mb[2] != ma[2]) ranges += mb[1];
  }
  return ranges;
}

std::string Session(const EmulatedWorld& world, const std::string& keys) {
  const EmulatedWorld::Result run = world.Veltrak(keys);
  EXPECT_EQ(0, run.status) << run.output;
  return run.output;
}

// A run of Veltrak on /dev/sda; the lines of opalsim show that begin with
// the words given, as it must leave them; the ranges it must re-key.
struct Step {
  const char* what;
  std::string keys, words, shown, rekeyed;
};

TEST(Rehearsal, VeltrakTakesADriveFromTheFactoryThroughEveryActionToPsidErase) {
  const EmulatedWorld world;
  const std::string plain = " 0 KEY Admins / Admins\n";
  const Step steps[] = {
      {"take ownership", kSda + "2\npw1\ny\n\n0\n", "SID Locking MBR LR0",
       "SID owned, password \"pw1\", tries 0/5\nLocking SP active (Manufactured)\n"
       "MBR Enable Y, Done Y, DoneOnReset 0, 0 bytes written\nLR0 0 0 N N N N" + plain, ""},
      {"give range 1 an address", kLogIn + "5\n1\n2048\n4096\n\n0\n", "LR1", "LR1 2048 4096 N N N N" + plain, "1"},
      {"lock range 1", kLogIn + "4\n1\n3\n1\n\n0\n", "Locked LR1", "Locked Y\nLR1 2048 4096 Y Y Y Y" + plain, ""},
      {"let User1 and User3 lock range 1", kLogIn + "6\n3\nu3pw\nn\n\n8\n1\n1,3\ny\n\n0\n", "LR1 User3",
       "User3 enabled, password \"u3pw\", tries 0/5\n"
       "LR1 2048 4096 Y Y Y Y 0 KEY Admins User1 OR User3 OR / Admins User1 OR User3 OR\n", ""},
      {"shadow MBR off, image in", kLogIn + "13\nn\n\n14\nn\n\n15\ndefault\n\n0\n", "MBR",
       "MBR Enable N, Done N, DoneOnReset 0, 1048576 bytes written\n", ""},
      {"revert, keeping the global range's data", kLogIn + "16\ny\n\n0\n", "SID Locking MBR LR1 User3",
       kFactory + "User3 disabled, password none, tries 0/5\nLR1 0 0 N N N N" + plain, "12345678"},
      {"flash lock", kSda + "3\ny\n\n", "SID Locked MBR LR0",
       "SID owned, password \"4C4C4544004235108051B4C04F384E32\", tries 0/5\nLocked Y\n"
       "MBR Enable Y, Done Y, DoneOnReset 0, 524288 bytes written\nLR0 0 0 Y Y Y Y" + plain, ""},
      {"PSID erase", kSda + "17\nXQJ\ny\n\n0\n", "SID Locking MBR", kFactory, "012345678"},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    const std::string before = world.Shown("/dev/sda", kLr);
    const std::string screen = Session(world, step.keys);
    EXPECT_FALSE(std::regex_search(screen, std::regex("fail|error", std::regex::icase))) << screen;
    EXPECT_EQ(step.shown, Shown(world, "/dev/sda", step.words)) << screen;
    EXPECT_EQ(step.rekeyed, Rekeyed(before, world.Shown("/dev/sda", kLr)));
  }
}

// A power cycle locks what LockOnReset says and clears MBRDone: the next boot
// shows an empty shadow MBR after taking ownership, the flash image after a
// flash lock. The global range locked at power-up makes the drive refuse the
// revert that keeps its data, so the TPer revert after it erases everything,
// unless the range is unlocked first (action 4, range 0, mode 1).
TEST(Rehearsal, APowerCycleShowsWhatTheNextBootSees) {
  const EmulatedWorld world;
  Session(world, kSda + "2\npw1\ny\n\n0\n");
  ASSERT_EQ(0, world.Run("./opalsim power-cycle /dev/sda").status);
  EXPECT_EQ("MBR Enable Y, Done N, DoneOnReset 0, 0 bytes written\n", Shown(world, "/dev/sda", "MBR"));
  std::string before = world.Shown("/dev/sda", kLr);
  Session(world, kLogIn + "16\ny\n\n" + "3\ny\n\n");
  EXPECT_EQ("012345678", Rekeyed(before, world.Shown("/dev/sda", kLr)));
  ASSERT_EQ(0, world.Run("./opalsim power-cycle").status);
  EXPECT_EQ("Locked Y\nMBR Enable Y, Done N, DoneOnReset 0, 524288 bytes written\n",
            Shown(world, "/dev/sda", "Locked MBR"));
  EXPECT_NE(std::string::npos, Session(world, kSda + "0\n").find(" OPAL Locked:     Yes"));
  before = world.Shown("/dev/sda", kLr);
  Session(world, kSda + "11\n4C4C4544004235108051B4C04F384E32\ny\n\n4\n0\n1\n1\n\n16\ny\n\n0\n");
  EXPECT_EQ("12345678", Rekeyed(before, world.Shown("/dev/sda", kLr)));
}

// After the try limit even the right password is refused until a power
// cycle, and Veltrak's check says it is wrong.
TEST(Rehearsal, LockedOutTheRightPasswordIsWrongUntilAPowerCycle) {
  const EmulatedWorld world;
  std::string keys;
  for (int i = 0; i < 5; ++i) keys += "11\nnot-it\ny\n\n";
  const std::string screen = Session(world, keys + "11\nZep2024\ny\n\n0\n");
  const std::regex wrong("Password wrong");
  EXPECT_EQ(6, std::distance(std::sregex_iterator(screen.begin(), screen.end(), wrong), std::sregex_iterator()));
  ASSERT_EQ(0, world.Run("./opalsim power-cycle /dev/nvme0").status);
  EXPECT_NE(std::string::npos, Session(world, "11\nZep2024\ny\n\n0\n").find("Password correct"));
}

// Tools that warn before their own output (a SATA drive not behind libata):
// the PSID erase works, yet Veltrak, reading only the first line, says FAIL.
TEST(Rehearsal, AWarningLineBeforeTheToolsOutputTurnsAPsidEraseIntoFail) {
  const EmulatedWorld world;
  ASSERT_EQ(0, world.Run("./opalsim host allow-tpm missing").status);
  const std::string screen = Session(world, kSda + "2\npw1\ny\n\n17\nXQJ\ny\n\n0\n");
  EXPECT_NE(std::string::npos, screen.find("Enable OPAL OK\n")) << screen;
  EXPECT_NE(std::string::npos, screen.find("Erase All Data FAIL")) << screen;
  EXPECT_EQ(kFactory, Shown(world, "/dev/sda", "SID Locking MBR"));
}

// 16 ranges: actions 4 and 5 offer them (the sedutil tool takes ranges up to
// 15 only), action 8 keeps 0 ~ 8, action 9 takes 16 and sends nothing for it.
TEST(Rehearsal, SixteenRangesMoveTheBoundsOfTheRangeScreens) {
  const EmulatedWorld world;
  const std::string screen = Session(world, "1\n2\n2\npw1\ny\n\n" "5\n15\n2048\n4096\n\n" "5\n16\n8192\n4096\n\n"
                                            "4\n16\n3\n1\n\n" "8\n16\n\n" "9\n16\nn\n\n0\n");
  for (const char* expected :
       {"(1 ~ 16)?", "LockingRange15 reKeyed \nSet done", "Invalid Locking Range (0-15) 16\nSetupLockingRange Error",
        "(0 ~ 16)?", "(0 ~ 8)? Wrong locking range choosen!!", "remove done"}) {
    EXPECT_NE(std::string::npos, screen.find(expected)) << expected << "\n" << screen;
  }
  EXPECT_EQ("LR15 2048 4096 N N N N 0 KEY Admins / Admins\nLR16 0 0 Y Y Y Y 0 KEY Admins / Admins\n",
            Shown(world, "/dev/sdc", "LR15 LR16"));
}

}  // namespace

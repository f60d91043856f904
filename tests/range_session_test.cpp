// Whole sessions of the locking-range screens: the range view (3), the
// protection mode (4) and the range address (5).
#include <gtest/gtest.h>

#include "owned_session.h"

namespace {

using Calls = std::vector<std::string>;

const std::string kRule(103, '=');
const std::string kTable =
    "Now status\n" + kRule +
    "\n"
    "Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked\n"
    " 0                   0         0           N                  N                 N              N\n"
    " 1                2048      4096           Y                  Y                 Y              Y\n"
    " 2                8192      8192           N                  Y                 N              Y\n" +
    kRule + "\n";

const std::string kModeQuestion =
    "Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write "
    "LocK)? ";
const std::string kEnableQuestion = "Enable or disable Locking Range (1: enable; others: diasble)? ";

std::string AskedState(const std::string& bound) {
  return "Which Locking Range you want to setup (0 ~ " + bound + ")? others:exit  ";
}

// The companion tool's commands for a protection mode on range index.
Calls ModeCommands(const std::string& mode, const std::string& index) {
  if (mode == "RW") {
    return {"Lantivo --disableLockingRange " + index + " pw RW /dev/sda",
            "Lantivo --setLockingRange " + index + " N N pw /dev/sda"};
  }
  if (mode == "RO") {
    return {"Lantivo --disableLockingRange " + index + " pw R /dev/sda",
            "Lantivo --enableLockingRange " + index + " pw W /dev/sda",
            "Lantivo --setLockingRange " + index + " N Y pw /dev/sda"};
  }
  return {"Lantivo --enableLockingRange " + index + " pw RW /dev/sda",
          "Lantivo --setLockingRange " + index + " Y Y pw /dev/sda"};
}

const Calls kListing{"sedutil-cli -n --listLockingRanges pw /dev/sda"};

Calls Concat(Calls first, const Calls& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

TEST(RangeSessionTest, ViewRefreshesAndShowsTheTable) {
  Session s;
  OwnedDrive(s, ThreeRanges());
  s.Run(kLogin + "3\n\n");
  EXPECT_EQ(ActionOutput(s, 2), kTable + kPause);
  EXPECT_EQ(CallsAfterLogin(s), kListing);
  EXPECT_EQ(s.exit_status, 0);
}

TEST(RangeSessionTest, StateAnswersMapToModesAndRanges) {
  struct Case {
    std::string range, mode_answer, mode, index;
  } cases[] = {
      {"1", "1", "RW", "1"},  {"2", "2", "RO", "2"},     {"1", "7", "LK", "1"},
      {"1", "x", "LK", "1"},  {"2x", "2abc", "RO", "2"}, {"abc", "1", "RW", "0"},  // a non-number is range 0
      {"0", "-1", "LK", "0"},
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges()).On("Lantivo", "*", "success\n");
    s.Run(kLogin + "4\n" + c.range + "\n" + c.mode_answer + "\n1\n\n");
    EXPECT_EQ(ActionOutput(s, 2), kTable + AskedState("2") + kModeQuestion + kEnableQuestion + kPause)
        << c.range << " " << c.mode_answer;
    EXPECT_EQ(CallsAfterLogin(s), Concat(kListing, ModeCommands(c.mode, c.index)))
        << c.range << " " << c.mode_answer;
  }
}

TEST(RangeSessionTest, StateReportsAFailedModeChange) {
  Session s;
  OwnedDrive(s, ThreeRanges())
      .On("Lantivo", "--disableLockingRange *", "LockingRange 1 success\n")
      .On("Lantivo", "--enableLockingRange *", "success\nNOT_AUTHORIZED\n");
  s.Run(kLogin + "4\n1\n2\n1\n\n");
  EXPECT_EQ(ActionOutput(s, 2),
            kTable + AskedState("2") + kModeQuestion + kEnableQuestion + "SetLockingRange Error\n" + kPause);
  // The set command after the failed one is not run.
  EXPECT_EQ(CallsAfterLogin(s), Concat(kListing, {"Lantivo --disableLockingRange 1 pw R /dev/sda",
                                                  "Lantivo --enableLockingRange 1 pw W /dev/sda"}));
}

TEST(RangeSessionTest, StateSendsNothingOnRefusalsDisablesOrDeadInput) {
  const std::string questions = kModeQuestion + kEnableQuestion;
  struct Case {
    std::string keys, shown;
  } cases[] = {
      {"3\n\n", "Wrong index choosen!!\n"},
      {"-1\n\n", "Wrong index choosen!!\n"},
      // Too big for an int: not a number, so range 0.
      {"4294967295\n1\n0\n\n", questions},
      // Only an enable answer of 1 acts.
      {"1\n1\n0\n\n", questions},
      {"1\n1\n2\n\n", questions},
      {"1\n1\nx\n\n", questions},
      {"1\n1\n-1\n\n", questions},
      // Input ends: the mode falls back to LK, the enable answer to 0.
      {"", questions},
      {"1\n", questions},
      {"1\n2\n", questions},
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges()).On("Lantivo", "*", "error\n");
    s.Run(kLogin + "4\n" + c.keys);
    EXPECT_EQ(ActionOutput(s, 2), kTable + AskedState("2") + c.shown + kPause) << c.keys;
    EXPECT_EQ(CallsAfterLogin(s), kListing) << c.keys;
    EXPECT_EQ(ScreensOf(s.screen).size(), 4u) << c.keys;
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(RangeSessionTest, StateOnAnEmptyListRefusesEveryRange) {
  Session s;
  OwnedDrive(s, {});
  s.Run(kLogin + "4\n0\n\n");
  EXPECT_EQ(ActionOutput(s, 2), "Now status\n" + kRule + "\n" +
                                    "Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled"
                                    "    ReadLocked    WriteLocked\n" +
                                    kRule + "\n" + AskedState("18446744073709551615") +
                                    "Wrong index choosen!!\n" + kPause);
}

namespace {

const std::string kAskedAddress =
    "Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? "
    "What is this LR's length (align 8)? ";

}  // namespace

TEST(RangeSessionTest, AddressSendsStartAndLengthAsTyped) {
  struct Case {
    std::string answers, command;
  } cases[] = {
      {"1\n2048\n4096\n", "-n --setupLockingRange 1 2048 4096 pw /dev/sda"},
      {"2x\n100\n-1\n", "-n --setupLockingRange 2 100 18446744073709551615 pw /dev/sda"},
      {"1\n-8\n8abc\n", "-n --setupLockingRange 1 18446744073709551608 8 pw /dev/sda"},
      // Not numbers, or too big for an int: 0.
      {"1\nx\n2147483648\n", "-n --setupLockingRange 1 0 0 pw /dev/sda"},
      {"1\n2147483647\n7\n", "-n --setupLockingRange 1 2147483647 7 pw /dev/sda"},
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges())
        .On("sedutil-cli", "-n --setupLockingRange *",
            "LockingRange1 reKeyed \nLockingRange2 reKeyed \nconfigured as unlocked range\n");
    s.Run(kLogin + "5\n" + c.answers + "\n");
    const std::string echoed = c.command.find("setupLockingRange 1 ") != std::string::npos
                                   ? "LockingRange1 reKeyed \n"
                                   : "LockingRange1 reKeyed \nLockingRange2 reKeyed \n";
    EXPECT_EQ(ActionOutput(s, 2), kTable + kAskedAddress + echoed + "Set done\n" + kPause) << c.answers;
    EXPECT_EQ(CallsAfterLogin(s), Concat(kListing, {"sedutil-cli " + c.command})) << c.answers;
  }
}

TEST(RangeSessionTest, AddressReportsAToolRefusal) {
  Session s;
  OwnedDrive(s, ThreeRanges())
      .On("sedutil-cli", "-n --setupLockingRange *",
          "method status code INVALID_PARAMETER\nsetupLockingRange Failed \n");
  s.Run(kLogin + "5\n1\n3\n5\n\n");
  EXPECT_EQ(ActionOutput(s, 2), kTable + kAskedAddress +
                                    "method status code INVALID_PARAMETER\nsetupLockingRange Failed \n"
                                    "SetupLockingRange Error\n" +
                                    kPause);
}

TEST(RangeSessionTest, AddressRefusesTheGlobalRangeAndRangesPastTheList) {
  for (const std::string range : {"0", "3", "-1", "x", "99999999999", ""}) {
    Session s;
    OwnedDrive(s, ThreeRanges());
    s.Run(kLogin + "5\n" + range + (range.empty() ? "" : "\n\n"));
    EXPECT_EQ(ActionOutput(s, 2),
              kTable + "Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!\n" + kPause)
        << range;
    EXPECT_EQ(CallsAfterLogin(s), kListing) << range;
  }
  // Input ending after the range: start and length fall back to 0.
  Session s;
  OwnedDrive(s, ThreeRanges());
  s.Run(kLogin + "5\n2\n");
  EXPECT_EQ(ActionOutput(s, 2), kTable + kAskedAddress + "SetupLockingRange Error\n" + kPause);
  EXPECT_EQ(CallsAfterLogin(s), Concat(kListing, {"sedutil-cli -n --setupLockingRange 2 0 0 pw /dev/sda"}));
}

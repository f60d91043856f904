// The drive record in-process, through the recording runner: what it reads
// from each listing of the tools, and the verdicts it reads from their text.
#include "DiskInfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <regex>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"

namespace {

using Lines = std::vector<std::string>;
using Op = std::function<bool(DiskInfo&)>;
#define OP(call) [](DiskInfo& d) { return d.call; }

const std::string kPause = "\nEnter any key to continue...", kRule = "----------------------------\n";

struct Outcome { bool result; Lines commands; std::string printed; size_t ranges; };

// Runs op on disk, the tools printing replies in turn; its pauses find keys.
Outcome RunOp(const Op& op, DiskInfo disk, const Lines& replies = {}) {
  RecordingRunner runner(replies);
  Type("\n\n\n\n");
  bool result = false;
  const std::string printed = Printed([&] { result = op(disk); });
  return {result, runner.commands, printed, disk.GetLRInfo().size()};
}

// An owned drive with count ranges, the first partitions of them named after
// partitions of prefix. The ranges are numbered from 5, so that a listing
// which went by a range's number rather than its position asks the wrong ones.
DiskInfo DriveWithRanges(unsigned count, uint32_t partitions = 0, const std::string& prefix = "") {
  DiskInfo disk = OwnedDrive();
  disk.SetBlockNum(partitions);
  disk.SetPrefixName(prefix);
  std::vector<RangeEntry> ranges;
  for (unsigned i = 0; i < count; ++i) ranges.push_back({i + 5, 8LL * i, 8});
  RecordingRunner listing({RangesText(ranges)});
  disk.UpdateLockingRangesStatus();
  return disk;
}

// The access-list command of each range.
Lines AccessLists(const std::vector<int>& ranges) {
  Lines out;
  for (int r : ranges) out.push_back("./Lantivo --list_User_ACE_Locking_range /dev/sda pw " + std::to_string(r));
  return out;
}

}  // namespace

TEST(ScanDisksTest, AcceptsTheTwoMakersFromLinesOfFourColumns) {
  RecordingRunner runner({"Scanning for Opal compliant disks\n"
                          "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7\n"
                          "/dev/sda   12  KVX 480GB                                SBFK71F3\n"
                          "/dev/sdb   No  Other KVX 500GB                          EMT01B6Q\n"
                          "/dev/sdc  2  one  two  three\n/dev/sdd  99999999999  KVX 1TB  F1\n/dev/sde  No  KVX HDD  CC45\n"
                          "No more disks present ending scan\n"});
  EXPECT_EQ(Printed(ScanDisks),
            "/dev/nvme0\tZEP NV2000 1TB\t 2B2QEXM7\t\t2\n/dev/sda\tKVX 480GB\tSBFK71F3\t\t 12\n/dev/sdb\tOther KVX 500GB\t"
            "EMT01B6Q\t\t No\n5\nscan error: /dev/sdc  2  one  two  three\n/dev/sdd\tKVX 1TB\tF1\t\t99999999999\n"
            "/dev/sde\tKVX HDD\tCC45\t\tNo\n");
  EXPECT_EQ(runner.commands, Lines{"./sedutil-cli -n --scan "});
  std::string accepted;  // the Opal version is 0 for "No" and for a number beyond int
  for (const DiskInfo& d : DiskList) accepted += d.GetFileDescriptor() + "|" + d.GetFirmware() + std::to_string(d.GetOPALVer()) + " ";
  EXPECT_EQ(accepted, "/dev/nvme0| 2B2QEXM72 /dev/sda|SBFK71F312 /dev/sdd|F10 /dev/sde|CC450 ");
  EXPECT_TRUE(DiskCount == 4 && SelectedDisk == DiskList.data());
}

// Which flag is which: the menu test. Without the header line the flags keep their values.
TEST(DiskInfoTest, QueryWithoutItsLockingFunctionLineChangesNoFlag) {
  RecordingRunner runner({QueryText(true, true), "Locked = N, LockingEnabled = N\n"});
  DiskInfo disk("/dev/sdb", "KVX 480GB", "F1", "2");
  EXPECT_TRUE(disk.UpdateOPALStatus());
  EXPECT_FALSE(disk.UpdateOPALStatus());
  EXPECT_TRUE(disk.GetOPALLocked() && disk.GetOPALEnable() && disk.GetOPALSupport());
  EXPECT_EQ(runner.commands, Lines(2, "./sedutil-cli -n --query /dev/sdb"));
}

TEST(DiskInfoTest, RangeListingStopsAtAFailedSessionOrAMalformedHeader) {
  const std::string header = "LR1 Begin 0 for 8\n            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n";
  // A wrong password: the ranges read before "EndSession Failed" are kept.
  const Outcome wrong = RunOp(OP(UpdateLockingRangesStatus()), OwnedDrive(), {header + "EndSession Failed\n" + header});
  EXPECT_TRUE(!wrong.result && wrong.ranges == 1 && wrong.printed.empty());
  EXPECT_EQ(wrong.commands, Lines{"./sedutil-cli -n --listLockingRanges pw /dev/sda"});
  // A header that does not split in five is reported after a pause, and no range is kept.
  const Outcome bad = RunOp(OP(UpdateLockingRangesStatus()), OwnedDrive(), {header + "LR2 Begin 8 for\n"});
  EXPECT_TRUE(!bad.result && bad.ranges == 0);
  EXPECT_EQ(bad.printed, "list lockingranges error: LR2 Begin 8 for\n" + kPause);
}

TEST(DiskInfoTest, AccessRightPrintsEachRangeOrPartitionUpToALineThatDoesNotSplitInTwo) {
  const std::string one = "Admin1 can access Locking Range 1\n", shown = "Access Right of Locking Range  1 :     Admin1\n";
  auto error = [](const std::string& line) { return "list lockingranges error: " + line + "\n" + kPause; };
  struct Case { const char* name; unsigned ranges, partitions; std::string prefix; Lines replies; std::vector<int> asked;
                std::string printed; bool result = true; } cases[] = {
      {"ranges", 3, 0, "", {"Admin1 can access Locking Range 0\n", "", "Admin1  User3 can access Locking Range 2"},
       {0, 1, 2}, "Access Right of Locking Range  0 :     Admin1\nAccess Right of Locking Range  2 :     Admin1  User3\n"},
      // Partitions ask ranges from 1, the positions after them ask i again and
      // print nothing; the number printed is the tool's, not the one asked.
      {"sd partitions", 4, 2, "/dev/sdb", {"Admin1 User1 can access Locking Range 7\n", one, one, one}, {1, 2, 2, 3},
       "7, Access Right of /dev/sdb7 :    Admin1  User1\n1, Access Right of /dev/sdb1 :    Admin1\n"},
      // A line that is no access line ends the listing after a pause, even where nothing is printed.
      {"refused", 3, 0, "", {one, one + "method status code NOT_AUTHORIZED\n" + one}, {0, 1},
       shown + shown + error("method status code NOT_AUTHORIZED"), false},
      {"empty line for a partition", 3, 1, "/dev/sda", {one, one + "\n" + one}, {1, 1},
       "1, Access Right of /dev/sda1 :    Admin1\n" + error(""), false},
  };
  for (const Case& c : cases) {
    const Outcome run = RunOp(OP(ListAccessRight()), DriveWithRanges(c.ranges, c.partitions, c.prefix), c.replies);
    EXPECT_EQ(run.printed, c.printed) << c.name;
    EXPECT_EQ(run.result, c.result) << c.name;
    EXPECT_EQ(run.commands, AccessLists(c.asked)) << c.name;
  }
}

// Each name before the phrase of a range's access list marks a row of that
// range's column; the j-th status line shows the ranges of row j + 1. Marks
// only accumulate, across calls and drives.
TEST(DiskInfoTest, UserStatusShowsTheMarksOfTheAccessLists) {
  std::memset(apply_table, 0, sizeof apply_table);
  // Partitions change nothing: every position is asked by itself.
  const DiskInfo first = DriveWithRanges(3, 2, "/dev/sdb");
  const Outcome once = RunOp(OP(ListUserStatus()), first, {"Admin1 can access Locking Range 0\n",
                             "Admin1 User1 User2 can access Locking Range 1\n", "", "U1\nU2\nU3\n"});
  EXPECT_EQ(once.printed, "U1, LR1 \nU2, LR1 \nU3, N/A\n" + kRule);
  Lines asked = AccessLists({0, 1, 2});
  asked.push_back("./Lantivo --ListUserStatus pw /dev/sda");
  EXPECT_EQ(once.commands, asked);
  // Range 1 now names nobody, yet its marks stay; range 0 gains one, also for a drive without ranges.
  RunOp(OP(ListUserStatus()), first, {"Admin1 User1 can access Locking Range 0\n", "", "", ""});
  EXPECT_EQ(RunOp(OP(ListUserStatus()), OwnedDrive(), {"U1\nU2"}).printed, "U1, LR0 LR1 \nU2, LR1 \n" + kRule);
  struct Case { std::string line; int rows_marked; } cases[] = {
      {"method status code NOT_AUTHORIZED", 4},  // no phrase: every word counts
      {"can access Locking Range 0", 1},         // nothing before it: the words after
      {"", 0},
      {"a b c d e f g h i j k l can access Locking Range 0", 10},  // the matrix has ten rows
  };
  for (const Case& c : cases) {
    std::memset(apply_table, 0, sizeof apply_table);
    RunOp(OP(ListUserStatus()), DriveWithRanges(1), {c.line + "\n"});
    std::string column;
    for (const auto& row : apply_table) column += std::to_string(row[0]);
    EXPECT_EQ(column, std::string(c.rows_marked, '1') + std::string(10 - c.rows_marked, '0')) << c.line;
  }
  // A tenth range (still asked) and status lines past the tenth row fall outside the matrix.
  std::memset(apply_table, 0, sizeof apply_table);
  Lines replies(10, "");
  replies.push_back("U1\nU2\nU3\nU4\nU5\nU6\nU7\nU8\nU9\nU10\nU11\n");
  replies[9] = "Admin1 can access Locking Range 9";
  const Outcome run = RunOp(OP(ListUserStatus()), DriveWithRanges(10), replies);
  EXPECT_EQ(run.printed, std::regex_replace(replies.back(), std::regex("\n"), ", N/A\n") + kRule);
}

namespace {

Op Mode(int range, const char* mode) {
  return [=](DiskInfo& d) { return d.SetLockingRangeStatus_TCG_V2_5(range, mode, 1); };
}
std::string Lan(const std::string& operands) { return "./Lantivo " + operands + " /dev/sda"; }

}  // namespace

TEST(DiskInfoTest, OperationsReadTheirVerdictsFromTheToolsText) {
  struct Case { const char* name; Op op; Lines commands, replies; bool result; std::string printed = ""; } cases[] = {
      // sedutil's verdict is the first line holding the phrase, which names the
      // range; the lines shown are those read.
      {"another range re-keyed", OP(SetupLockingRange(2, 8, 8)), {"./sedutil-cli -n --setupLockingRange 2 8 8 pw /dev/sda"},
       {"LockingRange1 reKeyed \nb"}, false, "LockingRange1 reKeyed \nb\n"},
      // The protection modes need "success" on every line, and stop at the first command that fails.
      {"read-only", Mode(2, "RO"), {Lan("--disableLockingRange 2 pw R"), Lan("--enableLockingRange 2 pw W"),
       Lan("--setLockingRange 2 N Y pw")}, {"range 2 success\nsuccess", "success\n", "success\n"}, true},
      {"lock refused", Mode(0, "LK"), {Lan("--enableLockingRange 0 pw RW")}, {"Lantivo v2\nsuccess\n"}, false},
      {"read-only, a blank line", Mode(2, "RO"), {Lan("--disableLockingRange 2 pw R"), Lan("--enableLockingRange 2 pw W")},
       {"success\n", "success\n\n", "success\n"}, false},
      // A grant reports true whatever the tool said.
      {"grant", OP(SetPrevilege2LR(12, "User1 ")), {"./Lantivo --Add_ACE_Locking_range /dev/sda pw 12 User1 "}, {"error"},
       true},
  };
  for (const Case& c : cases) {
    const Outcome run = RunOp(c.op, OwnedDrive(), c.replies);
    EXPECT_EQ(run.commands, c.commands) << c.name;
    EXPECT_EQ(run.result, c.result) << c.name;
    EXPECT_EQ(run.printed, c.printed) << c.name;
  }
}

// Drive operations through the recording runner: the exact command lines,
// the guards, the verdict each reads from the tool's text, and what each echoes.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

using Op = std::function<bool(DiskInfo&)>;
using Lines = std::vector<std::string>;
#define OP(call) [](DiskInfo& d) { return d.call; }

const std::string kRule = "----------------------------\n", kPause = "\nEnter any key to continue...";
constexpr bool kOpal = true, kAny = false;  // whether Opal being off stops the operation

// sedutil's command lines all end with the device; Mode sets a protection mode.
std::string Sed(const std::string& operands) { return "./sedutil-cli -n " + operands + " /dev/sda"; }
std::string Lan(const std::string& operands) { return "./Lantivo " + operands; }
Op Mode(int range, const char* mode, int enable) {
  return [=](DiskInfo& d) { return d.SetLockingRangeStatus_TCG_V2_5(range, mode, enable); };
}

// An owned drive with count ranges, handled as partitions under prefix when
// partitions is not 0. The ranges are numbered from 5, so that a listing which
// went by a range's number rather than by its position would ask the wrong ones.
DiskInfo DriveWithRanges(unsigned count, uint32_t partitions = 0, const std::string& prefix = "") {
  DiskInfo disk = OwnedDrive();
  disk.SetBlockNum(partitions);
  disk.SetPrefixName(prefix);
  std::vector<RangeEntry> ranges;
  for (unsigned i = 0; i < count; ++i) ranges.push_back({i + 5, 8LL * i, 8});
  RecordingRunner listing({RangesText("/dev/sda", ranges)});
  disk.UpdateLockingRangesStatus();
  return disk;
}

struct Outcome { bool result = false; Lines commands; std::string printed; };

// Runs op on disk, the tool printing replies in turn.
Outcome RunOp(const Op& op, DiskInfo disk, const Lines& replies = {}) {
  RecordingRunner runner(replies);
  bool result = false;
  const std::string printed = Printed([&] { result = op(disk); });
  return {result, runner.commands, printed};
}

// The access-list command of each range.
Lines AccessLists(const std::vector<int>& ranges) {
  Lines out;
  for (int r : ranges) out.push_back(Lan("--list_User_ACE_Locking_range /dev/sda pw ") + std::to_string(r));
  return out;
}

}  // namespace

TEST(DiskInfoOpsTest, CommandLinesGuardsVerdictsAndEcho) {
  const std::string to_user = "a\nLockingRange1 reKeyed \nUser0001 has been enabled \n", out = to_user + "b";
  const std::string pba = "Writing PBA to /dev/sda\n1024 of 2048 50% blk=0 \r2048 of 2048 100% \r\n"
                          "PBA image  PBA.img written to /dev/sda\n";
  struct Case { Op op; Lines commands, replies; bool result, guarded;
                std::string printed = "", idle_echo = ""; };
  const Case cases[] = {
      // sedutil's verdict is the first line holding the phrase; the lines
      // shown, where any are, are those read up to it.
      {OP(SetupLockingRange(2, 2048, uint64_t(-8))), {Sed("--setupLockingRange 2 2048 18446744073709551608 pw")},
       {"LockingRange1 reKeyed \nb"}, false, kOpal, "LockingRange1 reKeyed \nb\n"},
      {OP(SetupLockingRange(1, 8, 8)), {Sed("--setupLockingRange 1 8 8 pw")}, {out}, true, kOpal,
       "a\nLockingRange1 reKeyed \n"},
      {OP(SetLockingRangeStatus(1, "R")), {Sed("--setLockingRange 1 R pw")}, {"x LockingRange1 set to L"}, true, kOpal},
      {OP(SetLockingRangeStatus(4, "rw")), {Sed("--setLockingRange 4 rw pw")},
       {"LockingRange40 set to L\nLockingRange4 set to"}, false, kOpal},
      {OP(EnableLockingRange(3, true)), {Sed("--enableLockingRange 3 pw")},
       {"\nLockingRange3 enabled ReadLocking,WriteLocking\n"}, true, kOpal},
      {OP(EnableLockingRange(3, true)), {Sed("--enableLockingRange 3 pw")}, {"LockingRange3 enabled"}, false, kOpal},
      {OP(EnableLockingRange(3, false)), {Sed("--disableLockingRange 3 pw")}, {"LockingRange3 disabled "}, true, kOpal},
      {OP(EnableLockingRange(3, false)), {Sed("--disableLockingRange 3 pw")}, {}, false, kOpal},
      {OP(EnableUser(0)), {Sed("--enableUser pw User0000")}, {out}, true, kOpal, to_user, "WTF\n"},
      {OP(EnableUser(1)), {Sed("--enableUser pw User0001")}, {}, false, kOpal, "", "WTF\n"},
      {OP(EnableUser(10)), {}, {}, true, kOpal, "", "WTF\n"},
      {OP(SetUserPwd(9, "new")), {Sed("--setPassword pw User0009 new")}, {"a\nUser0009 password changed\n"}, true,
       kOpal},
      {OP(SetUserPwd(1, "x")), {Sed("--setPassword pw User0001 x")}, {}, false, kOpal},
      {OP(SetUserPwd(10, "new")), {}, {}, false, kOpal},
      // Erase reads the first line only (a later line: mbr-erase/erase.t).
      {OP(EraseAllData("80213657")), {Sed("--yesIreallywanttoERASEALLmydatausingthePSID 80213657")},
       {"completed successfully\n"}, true, kAny},
      {OP(EraseAllData("1")), {Sed("--yesIreallywanttoERASEALLmydatausingthePSID 1")}, {}, false, kAny},
      // The protection modes need "success" on every line, an output without
      // lines included, and stop at the first command that fails.
      {Mode(2, "RW", 1), {Lan("--disableLockingRange 2 pw RW /dev/sda"), Lan("--setLockingRange 2 N N pw /dev/sda")},
       {}, true, kOpal},
      {Mode(2, "RO", 1), {Lan("--disableLockingRange 2 pw R /dev/sda"), Lan("--enableLockingRange 2 pw W /dev/sda"),
       Lan("--setLockingRange 2 N Y pw /dev/sda")}, {"range 2 success\nsuccess", "success\n", "success\n"}, true,
       kOpal},
      {Mode(0, "LK", 1), {Lan("--enableLockingRange 0 pw RW /dev/sda")}, {"Lantivo v2\nsuccess\n"}, false, kOpal},
      {Mode(2, "RO", 1), {Lan("--disableLockingRange 2 pw R /dev/sda"), Lan("--enableLockingRange 2 pw W /dev/sda")},
       {"success\n", "success\n\n", "success\n"}, false, kOpal},
      // Only enable 1 acts, and only for the three exact modes.
      {Mode(1, "RW", 0), {}, {}, true, kOpal}, {Mode(1, "RW", 2), {}, {}, true, kOpal},
      {Mode(1, "rw", 1), {}, {}, true, kOpal},
      // A grant reports true whatever the tool said.
      {OP(SetPrevilege2LR(2, "User1 User3 ")), {Lan("--Add_ACE_Locking_range /dev/sda pw 2 User1 User3 ")}, {out}, true,
       kAny},
      {OP(SetPrevilege2LR(12, "")), {Lan("--Add_ACE_Locking_range /dev/sda pw 12 ")}, {}, true, kAny},
      {OP(RemoveAllUserFromLR(8)), {Lan("--Delete_AllUser_ACE_Locking_range /dev/sda pw 8")}, {out}, true, kOpal},
      {OP(RemoveAllUserFromLR(9)), {}, {}, false, kOpal},
      {OP(DisableOPAL()), {Sed("--disableLockingRange 0 pw"), Sed("--revertNoErase pw"), Sed("--revertTPer sid")},
       {out}, true, kAny},
      {OP(RevertSSD()), {Sed("--revertTPer sid")}, {out}, true, kAny, out + "\n"},
      // The shadow-MBR family reports false once its command was sent.
      {OP(EnableMBR()), {Sed("--setMBREnable ON pw")}, {"MBREnable set on \n"}, false, kOpal},
      {OP(DisableMBR()), {Sed("--setMBREnable OFF pw")}, {out}, false, kOpal},
      {OP(SetMBR()), {Sed("--setMBRDone ON pw")}, {out}, false, kOpal, out + "\n"},
      {OP(UnSetMBR()), {Sed("--setMBRDone OFF pw")}, {out}, false, kOpal, out + "\n"},
      {OP(LoadImage("default")), {Sed("--loadPBAimage pw PBA.img")}, {pba}, false, kOpal, pba},
      {OP(LoadImage("Default")), {Sed("--loadPBAimage pw Default")}, {}, false, kOpal},
      {OP(OPAL_ScanResult()), {Lan("--scan ")}, {out}, true, kAny, out + "\n"},
      {OP(ListUserStatus()), {Lan("--ListUserStatus pw /dev/sda")}, {}, true, kAny, kRule},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    const Outcome run = RunOp(c.op, OwnedDrive(), c.replies);
    EXPECT_EQ(run.commands, c.commands);
    EXPECT_EQ(run.result, c.result);
    EXPECT_EQ(run.printed, c.printed);
    Lines blank = c.commands;  // an empty password leaves two blanks in a row
    for (std::string& command : blank) command = std::regex_replace(command, std::regex(" pw "), "  ");
    EXPECT_EQ(RunOp(c.op, OwnedDrive("/dev/sda", ""), c.replies).commands, blank);
    // Without Opal, or with Opal not enabled, a guarded operation sends nothing and reports true.
    for (const DiskInfo& idle :
         {OwnedDrive("/dev/sda", "pw", "No"), OwnedDrive("/dev/sda", "pw", "2", false)}) {
      const Outcome still = RunOp(c.op, idle, c.replies);
      EXPECT_EQ(still.commands, c.guarded ? Lines{} : c.commands);
      EXPECT_EQ(still.result, c.guarded || c.result);
      EXPECT_EQ(still.printed, c.guarded ? c.idle_echo : c.printed);
    }
  }
}

TEST(DiskInfoOpsTest, AccessRightPrintsEachRangeOrPartitionUpToALineThatDoesNotSplitInTwo) {
  const std::string one = "Admin1 can access Locking Range 1\n";
  const std::string shown = "Access Right of Locking Range  1 :     Admin1\n";
  auto error = [](const std::string& line) { return "list lockingranges error: " + line + "\n" + kPause; };
  struct Case { unsigned ranges, partitions; std::string prefix; Lines replies; std::vector<int> asked;
                std::string printed; bool result = true; } cases[] = {
      {3, 0, "", {"Admin1 can access Locking Range 0\n", "", "Admin1  User3 can access Locking Range 2"},
       {0, 1, 2}, "Access Right of Locking Range  0 :     Admin1\n"
                  "Access Right of Locking Range  2 :     Admin1  User3\n"},
      // Partitions ask ranges from 1, the positions after them ask i again and
      // print nothing; the number printed is the tool's, not the one asked.
      {4, 2, "/dev/sdb", {"Admin1 User1 can access Locking Range 7\n", one, one, one}, {1, 2, 2, 3},
       "7, Access Right of /dev/sdb7 :    Admin1  User1\n1, Access Right of /dev/sdb1 :    Admin1\n"},
      {2, 1, "/dev/nvme0n1", {one, one}, {1, 1}, "1, Access Right of /dev/nvme0n1p1 :    Admin1\n"},
      {0, 0, "", {}, {}, ""},
      // A malformed line ends the listing after a pause, even where nothing is printed.
      {3, 0, "", {one, one + "method status code NOT_AUTHORIZED\n" + one}, {0, 1},
       shown + shown + error("method status code NOT_AUTHORIZED"), false},
      {3, 0, "", {one + "\n" + one}, {0}, shown + error(""), false},
      {3, 1, "/dev/sda", {one, one + "Invalid\n"}, {1, 1},
       "1, Access Right of /dev/sda1 :    Admin1\n" + error("Invalid"), false},
  };
  for (const Case& c : cases) {
    ScopedStdin keys("\nxy");
    const Outcome run =
        RunOp(OP(ListAccessRight()), DriveWithRanges(c.ranges, c.partitions, c.prefix), c.replies);
    EXPECT_EQ(run.printed, c.printed) << "case " << &c - cases;
    EXPECT_EQ(run.result, c.result) << "case " << &c - cases;
    EXPECT_EQ(run.commands, AccessLists(c.asked)) << "case " << &c - cases;
    EXPECT_EQ(std::fgetc(stdin), c.result ? '\n' : 'y') << "the pause reads two characters";
  }
}

// apply_table only ever gains marks: each test that reads it starts from a clean one.
TEST(DiskInfoOpsTest, UserStatusMarksAccumulateAcrossCallsAndDrives) {
  std::memset(apply_table, 0, sizeof apply_table);
  // Partitions change nothing: every position is asked by itself.
  const DiskInfo first = DriveWithRanges(3, 2, "/dev/sdb");
  const Outcome once = RunOp(OP(ListUserStatus()), first, {"Admin1 can access Locking Range 0\n",
                             "Admin1 User1 User2 can access Locking Range 1\n", "", "U1\nU2\nU3\n"});
  EXPECT_EQ(once.printed, "U1, LR1 \nU2, LR1 \nU3, N/A\n" + kRule);
  EXPECT_EQ(Lines(once.commands.begin(), once.commands.end() - 1), AccessLists({0, 1, 2}));
  EXPECT_EQ(once.commands.back(), Lan("--ListUserStatus pw /dev/sda"));
  // A drive without ranges asks only the status, and shows the marks left.
  const Outcome other = RunOp(OP(ListUserStatus()), OwnedDrive("/dev/sda", "pw2"), {"User1 : Enabled"});
  EXPECT_EQ(other.printed, "User1 : Enabled, LR1 \n" + kRule);
  EXPECT_EQ(other.commands, Lines{Lan("--ListUserStatus pw2 /dev/sda")});
  // Range 1 now names nobody, yet its marks stay; range 0 gains one.
  const Outcome again = RunOp(OP(ListUserStatus()), first,
                              {"Admin1 User1 can access Locking Range 0\n", "", "", "U1\nU2\n"});
  EXPECT_EQ(again.printed, "U1, LR0 LR1 \nU2, LR1 \n" + kRule);
}

TEST(DiskInfoOpsTest, UserStatusCountsTheWordsBeforeThePhraseInsideTheMatrix) {
  struct Case { std::string line; int rows_marked; } cases[] = {
      {"Admin1 User1 can access Locking Range 0", 2},
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
  // A tenth range and status lines past the tenth row fall outside the matrix.
  std::memset(apply_table, 0, sizeof apply_table);
  const std::string status = "U1\nU2\nU3\nU4\nU5\nU6\nU7\nU8\nU9\nU10\nU11\n";
  Lines replies(10, "Admin1 can access Locking Range 0");
  replies.push_back(status);
  const Outcome run = RunOp(OP(ListUserStatus()), DriveWithRanges(10), replies);
  EXPECT_EQ(run.commands.size(), 11u) << "the tenth range is still asked";
  EXPECT_EQ(run.printed, std::regex_replace(status, std::regex("\n"), ", N/A\n") + kRule);
  EXPECT_EQ(apply_table[0][8], 1);
}

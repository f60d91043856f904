// Drive operations through the recording runner: the exact command lines,
// the verdict each reads from the tool's text, and what each echoes.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

using Op = std::function<bool(DiskInfo&)>;
using Lines = std::vector<std::string>;

const std::string kPsid = "80213657490812736459018273645091";
const std::string kRule = "----------------------------\n";

std::string Sed(const std::string& operands) { return "./sedutil-cli -n " + operands; }
std::string Lan(const std::string& operands) { return "./Lantivo " + operands; }

// A drive whose Opal state came from a query, with the passwords held; by
// default owned, as the full menu sees it. The query has a runner of its own
// so that the test's runner records only the operation's commands.
DiskInfo OpalDrive(const std::string& password = "pw", const std::string& version = "2",
                   bool enabled = true) {
  RecordingRunner query;
  query.Reply(QueryText("/dev/sda", false, enabled));
  DiskInfo disk("/dev/sda", "KVX 480GB", "F1", version);
  disk.UpdateOPALStatus();
  disk.SetAdmin1Pwd(password);
  disk.SetSIDPwd("sid");
  return disk;
}

// An owned drive whose range listing reported count ranges; with partitions,
// handled as that many partitions of prefix. The ranges are numbered from 5,
// so that a listing which went by a range's number rather than its position
// in the list would ask the wrong ranges.
DiskInfo DriveWithRanges(unsigned count, uint32_t partitions = 0, const std::string& prefix = "") {
  DiskInfo disk = OpalDrive();
  disk.Set2Parted(partitions != 0);
  disk.SetBlockNum(partitions);
  disk.SetPrefixName(prefix);
  std::vector<RangeEntry> ranges;
  for (unsigned i = 0; i < count; ++i) ranges.push_back({i + 5, 8LL * i, 8});
  RecordingRunner listing;
  listing.Reply(RangesText("/dev/sda", ranges));
  disk.UpdateLockingRangesStatus();
  return disk;
}

Lines AccessListCommands(const std::vector<int>& ranges) {
  Lines commands;
  for (int range : ranges) {
    commands.push_back(Lan("--list_User_ACE_Locking_range /dev/sda pw " + std::to_string(range)));
  }
  return commands;
}

// apply_table is process-wide and only ever gains marks; tests that read it
// start from a clean one so that marks left by earlier tests do not show.
void ClearApplyTable() { std::memset(apply_table, 0, sizeof apply_table); }

std::string Captured(const std::function<void()>& run) {
  testing::internal::CaptureStdout();
  run();
  return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(DiskInfoOpsTest, CommandLinesAndVerdictOnSilence) {
  struct Case {
    Op op;
    Lines commands;
    bool silent_result;  // the verdict when the tool prints nothing
  } cases[] = {
      {[](DiskInfo& d) { return d.SetupLockingRange(1, 2048, uint64_t(-8)); },
       {Sed("--setupLockingRange 1 2048 18446744073709551608 pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus(4, "rw"); },
       {Sed("--setLockingRange 4 rw pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.EnableLockingRange(3, true); },
       {Sed("--enableLockingRange 3 pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.EnableLockingRange(3, false); },
       {Sed("--disableLockingRange 3 pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus_TCG_V2_5(2, "RW", 1); },
       {Lan("--disableLockingRange 2 pw RW /dev/sda"), Lan("--setLockingRange 2 N N pw /dev/sda")},
       true},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus_TCG_V2_5(2, "RO", 1); },
       {Lan("--disableLockingRange 2 pw R /dev/sda"), Lan("--enableLockingRange 2 pw W /dev/sda"),
        Lan("--setLockingRange 2 N Y pw /dev/sda")}, true},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus_TCG_V2_5(0, "LK", 1); },
       {Lan("--enableLockingRange 0 pw RW /dev/sda"), Lan("--setLockingRange 0 Y Y pw /dev/sda")},
       true},
      {[](DiskInfo& d) { return d.EnableUser(0); },
       {Sed("--enableUser pw User0000 /dev/sda")}, false},
      {[](DiskInfo& d) { return d.SetUserPwd(9, "new"); },
       {Sed("--setPassword pw User0009 new /dev/sda")}, false},
      {[](DiskInfo& d) { return d.SetPrevilege2LR(2, "User1 User3 "); },
       {Lan("--Add_ACE_Locking_range /dev/sda pw 2 User1 User3 ")}, true},
      {[](DiskInfo& d) { return d.SetPrevilege2LR(12, ""); },
       {Lan("--Add_ACE_Locking_range /dev/sda pw 12 ")}, true},
      {[](DiskInfo& d) { return d.RemoveAllUserFromLR(8); },
       {Lan("--Delete_AllUser_ACE_Locking_range /dev/sda pw 8")}, true},
      {[](DiskInfo& d) { return d.DisableOPAL(); },
       {Sed("--disableLockingRange 0 pw /dev/sda"), Sed("--revertNoErase pw /dev/sda"),
        Sed("--revertTPer sid /dev/sda")}, true},
      {[](DiskInfo& d) { return d.RevertSSD(); }, {Sed("--revertTPer sid /dev/sda")}, true},
      {[](DiskInfo& d) { return d.EraseAllData(kPsid); },
       {Sed("--yesIreallywanttoERASEALLmydatausingthePSID " + kPsid + " /dev/sda")}, false},
      {[](DiskInfo& d) { return d.EnableMBR(); }, {Sed("--setMBREnable ON pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.DisableMBR(); }, {Sed("--setMBREnable OFF pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.SetMBR(); }, {Sed("--setMBRDone ON pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.UnSetMBR(); }, {Sed("--setMBRDone OFF pw /dev/sda")}, false},
      {[](DiskInfo& d) { return d.LoadImage("default"); },
       {Sed("--loadPBAimage pw PBA.img /dev/sda")}, false},
      {[](DiskInfo& d) { return d.LoadImage("Default"); },
       {Sed("--loadPBAimage pw Default /dev/sda")}, false},
      {[](DiskInfo& d) { return d.OPAL_ScanResult(); }, {Lan("--scan ")}, true},
      {[](DiskInfo& d) { return d.ListUserStatus(); }, {Lan("--ListUserStatus pw /dev/sda")}, true},
  };
  for (const Case& c : cases) {
    RecordingRunner runner;
    DiskInfo disk = OpalDrive();
    bool result = !c.silent_result;
    Captured([&] { result = c.op(disk); });
    EXPECT_EQ(runner.commands, c.commands);
    EXPECT_EQ(result, c.silent_result) << c.commands[0];
  }
}

TEST(DiskInfoOpsTest, EmptyPasswordLeavesTwoBlanksInARow) {
  RecordingRunner runner;
  DiskInfo disk = OpalDrive("");
  Captured([&] { disk.EnableUser(1); });
  disk.SetPrevilege2LR(2, "User1 ");
  disk.LoadImage("default");
  EXPECT_EQ(runner.commands, (Lines{Sed("--enableUser  User0001 /dev/sda"),
                                    Lan("--Add_ACE_Locking_range /dev/sda  2 User1 "),
                                    Sed("--loadPBAimage  PBA.img /dev/sda")}));
}

TEST(DiskInfoOpsTest, InactiveOpalRunsNothingExceptUnguardedOperations) {
  for (const DiskInfo& inactive : {OpalDrive("pw", "No"), OpalDrive("pw", "2", false)}) {
    RecordingRunner runner;
    DiskInfo disk = inactive;
    bool all_true = false;
    const std::string out = Captured([&] {
      all_true = disk.SetupLockingRange(1, 8, 8) && disk.SetLockingRangeStatus(1, "LK") &&
                 disk.EnableLockingRange(1, true) &&
                 disk.SetLockingRangeStatus_TCG_V2_5(1, "LK", 1) && disk.EnableUser(1) &&
                 disk.SetUserPwd(1, "x") && disk.RemoveAllUserFromLR(1) &&
                 disk.EnableMBR() && disk.DisableMBR() && disk.SetMBR() && disk.UnSetMBR() &&
                 disk.LoadImage("default");
    });
    EXPECT_TRUE(all_true);
    EXPECT_EQ(out, "WTF\n") << "only EnableUser complains";
    EXPECT_TRUE(runner.commands.empty());
    // Grant, revert and erase look at no Opal state.
    disk.SetPrevilege2LR(1, "");
    disk.DisableOPAL();
    disk.EraseAllData(kPsid);
    EXPECT_EQ(runner.commands.size(), 5u) << inactive.GetOPALVer();
  }
}

TEST(DiskInfoOpsTest, BoundsAndNoOpRequestsOnAnActiveDrive) {
  RecordingRunner runner;
  DiskInfo disk = OpalDrive();
  std::vector<uint32_t> users{1};
  EXPECT_TRUE(disk.EnableUser(10));
  EXPECT_FALSE(disk.SetUserPwd(10, "x"));
  EXPECT_FALSE(disk.RemoveAllUserFromLR(9));
  for (uint32_t enable : {0u, 2u}) {
    EXPECT_TRUE(disk.SetLockingRangeStatus_TCG_V2_5(1, "RW", enable)) << enable;
  }
  for (const char* mode : {"rw", "Lk", "XX", ""}) {
    EXPECT_TRUE(disk.SetLockingRangeStatus_TCG_V2_5(1, mode, 1)) << mode;
  }
  EXPECT_TRUE(disk.ListAccessSetting() && disk.SetAccessSetting(3, true, users));
  EXPECT_TRUE(runner.commands.empty());
}

TEST(DiskInfoOpsTest, FirstLineWithThePhraseDecides) {
  struct Case {
    Op op;
    std::string output;
    bool expected;
  } cases[] = {
      {[](DiskInfo& d) { return d.SetupLockingRange(2, 8, 8); }, "LockingRange1 reKeyed \n", false},
      {[](DiskInfo& d) { return d.SetupLockingRange(2, 8, 8); }, "x LockingRange2 reKeyed y", true},
      {[](DiskInfo& d) { return d.SetupLockingRange(1, 8, 8); }, "w\nLockingRange1 reKeyed ", true},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus(1, "R"); }, "LockingRange1 set to L", true},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus(1, "R"); }, "LockingRange10 set to", false},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus(1, "RO"); }, "LockingRange1 set to", false},
      {[](DiskInfo& d) { return d.EnableLockingRange(3, false); }, "LockingRange3 disabled ", true},
      {[](DiskInfo& d) { return d.EnableLockingRange(3, true); }, "LockingRange3 enabled ", false},
      {[](DiskInfo& d) { return d.EnableLockingRange(3, true); },
       "\nLockingRange3 enabled ReadLocking,WriteLocking\n", true},
      {[](DiskInfo& d) { return d.EnableUser(1); }, "Incorrect number of paramaters\n", false},
      {[](DiskInfo& d) { return d.SetUserPwd(1, "x"); }, "a\nUser0001 password changed\n", true},
      {[](DiskInfo& d) { return d.EraseAllData(kPsid); }, "completed successfully\n", true},
      {[](DiskInfo& d) { return d.EraseAllData(kPsid); }, "warning\ncompleted successfully", false},
      // The shadow-MBR family reports false once its command was sent.
      {[](DiskInfo& d) { return d.EnableMBR(); }, "MBRDone set on \nMBREnable set on \n", false},
  };
  for (const Case& c : cases) {
    RecordingRunner runner;
    DiskInfo disk = OpalDrive();
    runner.Reply(c.output);
    bool result = !c.expected;
    Captured([&] { result = c.op(disk); });
    EXPECT_EQ(result, c.expected) << c.output;
  }
}

TEST(DiskInfoOpsTest, EchoStopsWhereEachOperationStopsReading) {
  const std::string to_range = "a\nb\nLockingRange1 reKeyed \n";
  const std::string to_user = to_range + "User0001 has been enabled \n";
  const std::string out = to_user + "e\n";
  const std::string pba = "Writing PBA to /dev/sda\n1024 of 2048 50% blk=0 \r2048 of 2048 100% \r\n"
                          "PBA image  PBA.img written to /dev/sda\n";
  struct Case {
    Op op;
    std::string reply, printed;
  } cases[] = {
      {[](DiskInfo& d) { return d.SetupLockingRange(1, 8, 8); }, out, to_range},
      {[](DiskInfo& d) { return d.EnableUser(1); }, out, to_user},
      {[](DiskInfo& d) { return d.SetUserPwd(1, "x"); }, out, ""},
      {[](DiskInfo& d) { return d.SetLockingRangeStatus(1, "RW"); }, out, ""},
      {[](DiskInfo& d) { return d.EnableLockingRange(1, true); }, out, ""},
      {[](DiskInfo& d) { return d.EnableMBR(); }, out, ""},
      {[](DiskInfo& d) { return d.SetPrevilege2LR(1, ""); }, out, ""},
      {[](DiskInfo& d) { return d.DisableOPAL(); }, out, ""},
      {[](DiskInfo& d) { return d.SetMBR(); }, out, out},
      {[](DiskInfo& d) { return d.UnSetMBR(); }, "a\nb", "a\nb\n"},
      {[](DiskInfo& d) { return d.RevertSSD(); }, out, out},
      {[](DiskInfo& d) { return d.OPAL_ScanResult(); }, out, out},
      {[](DiskInfo& d) { return d.LoadImage("default"); }, pba, pba},
  };
  for (const Case& c : cases) {
    RecordingRunner runner;
    DiskInfo disk = OpalDrive();
    runner.Reply(c.reply);
    EXPECT_EQ(Captured([&] { c.op(disk); }), c.printed) << c.reply;
  }
}

TEST(DiskInfoOpsTest, ProtectionModeNeedsSuccessOnEveryLineAndStopsAtFirstFailure) {
  struct Case {
    Lines replies;
    bool expected;
    size_t commands_run;
  } cases[] = {
      {{"", "", ""}, true, 3},
      {{"range 1 success\nsuccess", "success\n", "success\n"}, true, 3},
      {{"Lantivo v2\nsuccess\n"}, false, 1},  // a banner line fails
      {{"success\n\nsuccess\n"}, false, 1},   // so does a blank one
      {{"success\n", "success\nwrong password\n", "success\n"}, false, 2},
  };
  for (const Case& c : cases) {
    RecordingRunner runner;
    DiskInfo disk = OpalDrive();
    for (const std::string& reply : c.replies) runner.Reply(reply);
    EXPECT_EQ(disk.SetLockingRangeStatus_TCG_V2_5(1, "RO", 1), c.expected) << c.replies[0];
    EXPECT_EQ(runner.commands.size(), c.commands_run) << c.replies[0];
  }
}

TEST(DiskInfoOpsTest, AccessRightPrintsEachRangeOrPartition) {
  struct Case {
    unsigned ranges;
    uint32_t partitions;
    std::string prefix;
    Lines replies;
    std::vector<int> asked;
    std::string printed;
  } cases[] = {
      {3, 0, "",
       {"Admin1 can access Locking Range 0\n", "",
        "Admin1 User1  User3 can access Locking Range 2"},
       {0, 1, 2},
       "Access Right of Locking Range  0 :     Admin1\n"
       "Access Right of Locking Range  2 :     Admin1  User1  User3\n"},
      // Partitions ask ranges from 1; the positions after them ask i again
      // and print nothing.
      {4, 2, "/dev/sdb",
       {"Admin1 User1 can access Locking Range 7\n", "Admin1 can access Locking Range 2\n",
        "Admin1 can access Locking Range 2\n", "Admin1 can access Locking Range 3"},
       {1, 2, 2, 3},
       // The number printed is the tool's, not the one asked.
       "7, Access Right of /dev/sdb7 :    Admin1  User1\n"
       "2, Access Right of /dev/sdb2 :    Admin1\n"},
      {2, 1, "/dev/nvme0n1", {"Admin1 can access Locking Range 1\n"}, {1, 1},
       "1, Access Right of /dev/nvme0n1p1 :    Admin1\n"},
      {0, 0, "", {}, {}, ""},
  };
  for (const Case& c : cases) {
    DiskInfo disk = DriveWithRanges(c.ranges, c.partitions, c.prefix);
    RecordingRunner runner;
    for (const std::string& reply : c.replies) runner.Reply(reply);
    bool result = false;
    EXPECT_EQ(Captured([&] { result = disk.ListAccessRight(); }), c.printed) << c.prefix;
    EXPECT_TRUE(result);
    EXPECT_EQ(runner.commands, AccessListCommands(c.asked));
  }
}

TEST(DiskInfoOpsTest, AccessRightStopsAtTheFirstLineThatDoesNotSplitInTwo) {
  struct Case {
    uint32_t partitions;
    std::string bad_line;
  } cases[] = {
      {0, "method status code NOT_AUTHORIZED"},
      {0, "Admin1 can access Locking Range"},
      {0, "can access Locking Range 1"},
      {0, ""},
      {1, "Invalid or unsupported disk /dev/sda"},  // checked even where nothing is printed
  };
  for (const Case& c : cases) {
    DiskInfo disk = DriveWithRanges(3, c.partitions, "/dev/sda");
    RecordingRunner runner;
    runner.Reply("Admin1 can access Locking Range 1\n")
        .Reply(c.bad_line + "\nAdmin1 can access Locking Range 1\n");
    ScopedStdin keys("\nxy");
    bool result = true;
    const std::string printed = Captured([&] { result = disk.ListAccessRight(); });
    EXPECT_FALSE(result);
    EXPECT_EQ(runner.commands.size(), 2u) << "no later range is asked";
    const std::string error =
        "list lockingranges error: " + c.bad_line + "\n\nEnter any key to continue...";
    ASSERT_GE(printed.size(), error.size()) << printed;
    EXPECT_EQ(printed.substr(printed.size() - error.size()), error);
    EXPECT_EQ(std::fgetc(stdin), 'y') << "the pause reads two characters";
  }
}

TEST(DiskInfoOpsTest, UserStatusMarksAccumulateAcrossCallsAndDrives) {
  ClearApplyTable();
  DiskInfo first = DriveWithRanges(3);
  DiskInfo second = OpalDrive("pw2");  // no ranges
  RecordingRunner runner;
  runner.Reply("Admin1 can access Locking Range 0\n")
      .Reply("Admin1 User1 User2 can access Locking Range 1\n")
      .Reply("")
      .Reply("User1 : Enabled\nUser2 : Disabled\nUser3 : Disabled\n");
  EXPECT_EQ(Captured([&] { first.ListUserStatus(); }),
            "User1 : Enabled, LR1 \nUser2 : Disabled, LR1 \nUser3 : Disabled, N/A\n" + kRule);
  Lines expected = AccessListCommands({0, 1, 2});
  expected.push_back(Lan("--ListUserStatus pw /dev/sda"));
  EXPECT_EQ(runner.commands, expected);

  runner.commands.clear();
  runner.Reply("User1 : Enabled");
  EXPECT_EQ(Captured([&] { second.ListUserStatus(); }), "User1 : Enabled, LR1 \n" + kRule);
  EXPECT_EQ(runner.commands, Lines{Lan("--ListUserStatus pw2 /dev/sda")});

  // Range 1 now names nobody, yet its marks stay; range 0 gains one.
  runner.Reply("Admin1 User1 can access Locking Range 0\n").Reply("").Reply("");
  runner.Reply("User1 : Enabled\nUser2 : Enabled\n");
  EXPECT_EQ(Captured([&] { first.ListUserStatus(); }),
            "User1 : Enabled, LR0 LR1 \nUser2 : Enabled, LR1 \n" + kRule);
}

TEST(DiskInfoOpsTest, UserStatusAsksEveryPositionEvenWithPartitions) {
  DiskInfo disk = DriveWithRanges(2, 2, "/dev/sdb");
  RecordingRunner runner;
  Captured([&] { disk.ListUserStatus(); });
  Lines expected = AccessListCommands({0, 1});
  expected.push_back(Lan("--ListUserStatus pw /dev/sda"));
  EXPECT_EQ(runner.commands, expected);
}

TEST(DiskInfoOpsTest, UserStatusCountsTheWordsBeforeThePhrase) {
  struct Case {
    std::string line;
    int rows_marked;
  } cases[] = {
      {"Admin1 User1 can access Locking Range 0", 2},
      {"method status code NOT_AUTHORIZED", 4},  // no phrase: every word counts
      {"can access Locking Range 0", 1},         // nothing before it: the words after
      {"", 0},
      {"a b c d e f g h i j k l can access Locking Range 0", 10},  // the matrix has ten rows
  };
  for (const Case& c : cases) {
    ClearApplyTable();
    DiskInfo disk = DriveWithRanges(1);
    RecordingRunner runner;
    runner.Reply(c.line + "\n");
    Captured([&] { disk.ListUserStatus(); });
    int marked = 0;
    for (const auto& row : apply_table) {
      for (int mark : row) marked += mark;
    }
    EXPECT_EQ(marked, c.rows_marked) << c.line;
    EXPECT_EQ(apply_table[0][0], c.rows_marked > 0 ? 1 : 0) << c.line;
  }
}

TEST(DiskInfoOpsTest, UserStatusStaysInsideTheMatrix) {
  ClearApplyTable();
  DiskInfo disk = DriveWithRanges(10);
  RecordingRunner runner;
  // Row 1 stays empty unless a mark for the tenth range spills out of row 0.
  for (int range = 0; range < 10; ++range) {
    runner.Reply("Admin1 can access Locking Range " + std::to_string(range));
  }
  std::string status;
  for (int user = 1; user <= 11; ++user) status += "User" + std::to_string(user) + "\n";
  runner.Reply(status);
  const std::string printed = Captured([&] { disk.ListUserStatus(); });
  EXPECT_EQ(runner.commands.size(), 11u) << "the tenth range is still asked";
  EXPECT_EQ(printed.substr(0, 11), "User1, N/A\n") << printed;
  EXPECT_NE(printed.find("User9, N/A\nUser10, N/A\nUser11, N/A\n"), std::string::npos) << printed;
  EXPECT_EQ(apply_table[0][8], 1);
}

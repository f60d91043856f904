// Screens run in-process: the range tables' exact widths, and the wording
// and bounds of partition mode, which no session can reach because nothing
// in the program switches a drive into it.
#include <gtest/gtest.h>

#include <cstdio>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

using Commands = std::vector<std::string>;

// The selected drive: /dev/sdb, Opal enabled, password "pw", and in
// partition mode with the given prefix and number of partitions when parts
// is not 0. Restores an empty drive list on destruction.
class SelectedDrive {
 public:
  explicit SelectedDrive(const std::string& prefix = "", uint32_t parts = 0, const std::string& version = "2",
                         bool enabled = true) {
    DiskList = {DiskInfo("/dev/sdb", "KVX 480GB", "F1", version)};
    DiskCount = 1;
    SelectedDisk = &DiskList[0];
    runner.Reply(QueryText("/dev/sdb", false, enabled));
    SelectedDisk->UpdateOPALStatus();
    SelectedDisk->SetAdmin1Pwd("pw");
    if (parts != 0) {
      SelectedDisk->Set2Parted(true);
      SelectedDisk->SetPrefixName(prefix);
      SelectedDisk->SetBlockNum(parts);
    }
    runner.commands.clear();
  }
  ~SelectedDrive() {
    DiskList.clear();
    DiskCount = 0;
    SelectedDisk = nullptr;
  }
  SelectedDrive(const SelectedDrive&) = delete;
  SelectedDrive& operator=(const SelectedDrive&) = delete;

  RecordingRunner runner;
};

// Runs screen with input as standard input and returns what it printed.
// Unread input is drained so that it cannot leak into the next run.
template <typename Screen>
std::string Printed(Screen screen, const std::string& input) {
  ScopedStdin keys(input);
  testing::internal::CaptureStdout();
  screen();
  std::fflush(stdout);
  const std::string printed = testing::internal::GetCapturedStdout();
  while (std::fgetc(stdin) != EOF) {
  }
  return printed;
}

std::string Blanks(size_t count) { return std::string(count, ' '); }

const std::string kPause = "\nEnter any key to continue...";

// LR0, then LR1 to LR3; with two partitions only LR1 and LR2 are named.
std::string FourRanges(const std::string& device) {
  return RangesText(device,
                    {{0, 0, 0}, {1, 2048, 4096, true, false, true, false}, {2, 8192, 1024}, {3, 16384, 8}});
}

}  // namespace

TEST(ScreensTest, RangeTableColumnsAreRightAlignedInFixedWidths) {
  SelectedDrive drive;
  const std::vector<LockingRangeInfo> ranges{
      LockingRangeInfo(1, 2048, 4096, true, false, false, true),
      // Values longer than their columns are printed whole and shift the row.
      LockingRangeInfo(123, 18446744073709551615u, 12345678901, false, true, true, false)};
  const std::string rule(103, '=');
  EXPECT_EQ(Printed([&] { ShowLRs(ranges); }, ""),
            "Now status\n" + rule +
                "\nLocking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    "
                "WriteLocked\n" +
                " 1" + Blanks(16) + "2048" + Blanks(6) + "4096" + Blanks(11) + "Y" + Blanks(18) + "N" +
                Blanks(17) + "N" + Blanks(14) + "Y\n" + "123" + "18446744073709551615" + "12345678901" +
                Blanks(11) + "N" + Blanks(18) + "Y" + Blanks(17) + "Y" + Blanks(14) + "N\n" + rule + "\n");
}

TEST(ScreensTest, PartitionTableShowsOnlyNamedRangesNumberedFromOne) {
  const std::string heading =
      "Index  LBA                Begin      Length        ReadLock Enabled   WriteLock Enabled    ReadLocked "
      "   "
      "WriteLocked\n";
  struct Case {
    std::string prefix, first, second;
    size_t name_width, start_width;
  } cases[] = {
      {"/dev/sdb", "/dev/sdb1", "/dev/sdb2", 10, 20},
      {"/dev/nvme0n1", "/dev/nvme0n1p1", "/dev/nvme0n1p2", 14, 15},
  };
  for (const Case& c : cases) {
    SelectedDrive drive(c.prefix, 2);
    std::vector<LockingRangeInfo> ranges(4);
    ranges[1] = LockingRangeInfo(1, 2048, 4096, true, false, true, false);
    ranges[1].SetAlias(c.first);
    ranges[3] = LockingRangeInfo(3, 16384, 8, false, true, false, true);
    ranges[3].SetAlias(c.second);
    auto row = [&](const std::string& number, const std::string& name, const std::string& start,
                   const std::string& length, const std::string& flags) {
      return " " + number + Blanks(c.name_width - name.size()) + name + Blanks(c.start_width - start.size()) +
             start + Blanks(13 - length.size()) + length + flags;
    };
    const std::string yny = Blanks(14) + "Y" + Blanks(18) + "Y" + Blanks(17) + "N" + Blanks(14) + "N\n";
    const std::string nyn = Blanks(14) + "N" + Blanks(18) + "N" + Blanks(17) + "Y" + Blanks(14) + "Y\n";
    EXPECT_EQ(Printed([&] { ShowSpecLRs(ranges); }, ""),
              c.prefix + "\nNow status\n" + std::string(117, '=') + "\n" + heading +
                  row("1", c.first, "2048", "4096", yny) + row("2", c.second, "16384", "8", nyn) +
                  std::string(116, '=') + "\n")
        << c.prefix;
  }
}

TEST(ScreensTest, RangeViewOfAPartitionedDriveShowsTheAreas) {
  SelectedDrive drive("/dev/nvme0n1", 2);
  drive.runner.Reply(FourRanges("/dev/sdb"));
  const std::string shown = Printed(LockingRanges, "\n\n");
  EXPECT_EQ(shown.substr(0, 24), "/dev/nvme0n1\nNow status\n");
  EXPECT_NE(shown.find(" 2/dev/nvme0n1p2           8192"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("16384"), std::string::npos);  // LR3 is no partition's
  EXPECT_EQ(shown.substr(shown.size() - kPause.size()), kPause);
  EXPECT_EQ(drive.runner.commands, Commands{"./sedutil-cli -n --listLockingRanges pw /dev/sdb"});
}

TEST(ScreensTest, AreaStateTakesAreasOneToThePartitionCount) {
  const std::string asked = "Which Logical Block Area do you want to setup (1 ~ 2)? others:exit  ";
  const std::string questions =
      "Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write "
      "Lock)? "
      "Enable or disable Locking Range (1: enable; others: diasble)? ";
  for (const std::string area : {"0", "3", "x", "-1", ""}) {
    SelectedDrive drive("/dev/sdb", 2);
    drive.runner.Reply(FourRanges("/dev/sdb"));
    const std::string shown = Printed(SetStateofLR, area.empty() ? "" : area + "\n1\n1\n\n");
    EXPECT_EQ(shown.substr(shown.find(asked)), asked + "Wrong index choosen!!\n" + kPause) << area;
    EXPECT_EQ(drive.runner.commands.size(), 1u) << area;
  }
  SelectedDrive drive("/dev/sdb", 2);
  drive.runner.Reply(FourRanges("/dev/sdb"));
  const std::string shown = Printed(SetStateofLR, "2\n2\n1\n\n");
  EXPECT_EQ(shown.substr(0, 20), "/dev/sdb\nNow status\n");
  EXPECT_EQ(shown.substr(shown.find(asked)), asked + questions + kPause);
  // Area 2 is locking range 2.
  EXPECT_EQ(drive.runner.commands, (Commands{"./sedutil-cli -n --listLockingRanges pw /dev/sdb",
                                             "./Lantivo --disableLockingRange 2 pw R /dev/sdb",
                                             "./Lantivo --enableLockingRange 2 pw W /dev/sdb",
                                             "./Lantivo --setLockingRange 2 N Y pw /dev/sdb"}));
}

TEST(ScreensTest, GlobalRangeScreenAsksEnableThenConfirmationThenMode) {
  const std::string questions =
      "Enable or disable Locking Range 0 (1: enable; others: diasble)? Continue set protection mode?(Y/N)? ";
  const std::string mode =
      "Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write "
      "LocK)? ";
  struct Case {
    std::string input, tool_output, shown;
    Commands commands;
  } cases[] = {
      {"1\ny\n2\n\n",
       "success\n",
       questions + mode + kPause,
       {"./Lantivo --disableLockingRange 0 pw R /dev/sdb", "./Lantivo --enableLockingRange 0 pw W /dev/sdb",
        "./Lantivo --setLockingRange 0 N Y pw /dev/sdb"}},
      {"1\nY\nabc\n\n",
       "error\n",
       questions + mode + "SetLockingRange Error\n" + kPause,
       {"./Lantivo --enableLockingRange 0 pw RW /dev/sdb"}},
      {"1\nn\n\n", "", questions + kPause, {}},
      {"0\ny\n1\n\n", "", questions + mode + kPause, {}},
      {"x\ny\n1\n\n", "", questions + mode + kPause, {}},
      {"1\n", "", questions + kPause, {}},
  };
  for (const Case& c : cases) {
    SelectedDrive drive("/dev/sdb", 2);
    drive.runner.Reply(c.tool_output).Reply(c.tool_output).Reply(c.tool_output);
    EXPECT_EQ(Printed(SpecialActionLR0, c.input), c.shown) << c.input;
    EXPECT_EQ(drive.runner.commands, c.commands) << c.input;
  }
}

TEST(ScreensTest, AreaPrivilegeRefusesNonNumbersAndAreasOutsideThePartitions) {
  const std::string asked = "Which Logical Block Area do you want to setup?(1~ 2)?";
  for (const std::string area : {"x", "0", "3", ""}) {
    SelectedDrive drive("/dev/sdb", 2);
    EXPECT_EQ(Printed(SetAccessSetting_TCG, area + "\n\n"),
              "\n\n\n" + asked + "Wrong locking range choosen!!\n" + kPause)
        << area;
    EXPECT_TRUE(drive.runner.commands.empty()) << area;  // no ranges known: nothing listed
  }
  SelectedDrive drive("/dev/sdb", 2);
  const std::string shown = Printed(SetAccessSetting_TCG, "2\n1,2\ny\n\n");
  EXPECT_EQ(shown,
            "\n\n\n" + asked +
                "Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  "
                "User1 User2 \nAre you sure to give them priviledge? (Y/N): Set Priviledge OK!!\n\n" +
                kPause);
  EXPECT_EQ(drive.runner.commands, Commands{"./Lantivo --Add_ACE_Locking_range /dev/sdb pw 2 User1 User2 "});
}

TEST(ScreensTest, AreaRemovalTakesAreasOneToThePartitionCount) {
  const std::string asked = "Which Logical Block Area do you want to setup (1~2)?";
  for (const std::string area : {"x", "0", "3", ""}) {
    SelectedDrive drive("/dev/sdb", 2);
    drive.runner.Reply(FourRanges("/dev/sdb"));
    EXPECT_EQ(Printed(RemoveUsers, area + "\n\n"), asked + "Wrong index choosen!!\n" + kPause) << area;
    EXPECT_EQ(drive.runner.commands.size(), 1u) << area;
  }
  SelectedDrive drive("/dev/sdb", 2);
  drive.runner.Reply(FourRanges("/dev/sdb"));
  // The access list of a partitioned drive asks ranges 1, 2, then 2 and 3
  // again for the positions past the partitions.
  drive.runner.Reply("removed\n").Reply("Admin1 User2 can access Locking Range 1\n");
  EXPECT_EQ(Printed(RemoveUsers, "1\nn\n\n"),
            asked +
                "remove done\n\n\n1, Access Right of /dev/sdb1 :    Admin1  User2\n\n\n"
                "Do you want to continue removing? (Y/N)\n" +
                kPause);
  EXPECT_EQ(drive.runner.commands, (Commands{"./sedutil-cli -n --listLockingRanges pw /dev/sdb",
                                             "./Lantivo --Delete_AllUser_ACE_Locking_range /dev/sdb pw 1",
                                             "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw 1",
                                             "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw 2",
                                             "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw 2",
                                             "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw 3"}));
}

TEST(ScreensTest, OwnerSetupRefusesDrivesWithoutOpalOrAlreadyEnabled) {
  {
    SelectedDrive drive("", 0, "No", false);
    EXPECT_EQ(Printed(EnableOPAL, "\n\n"), "Not support OPAL\n" + kPause);
    EXPECT_TRUE(drive.runner.commands.empty());
  }
  {
    SelectedDrive drive;
    EXPECT_EQ(Printed(EnableOPAL, "\n\n"), "OPAL already enabled\n" + kPause);
    EXPECT_TRUE(drive.runner.commands.empty());
  }
}

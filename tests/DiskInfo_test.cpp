#include "DiskInfo.h"

#include <gtest/gtest.h>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

DiskInfo EnabledDrive(RecordingRunner& runner, const std::string& password) {
  DiskInfo disk("/dev/sda", "KVX 480GB", "F1", "2");
  runner.Reply(QueryText("/dev/sda", false, true));
  disk.UpdateOPALStatus();
  disk.SetAdmin1Pwd(password);
  return disk;
}

}  // namespace

TEST(DiskInfoTest, ConstructionReadsVersionAndDriveIndex) {
  struct Case {
    std::string device, version;
    uint32_t opal_version, drive_index;
  } cases[] = {
      {"/dev/sda", "2", 2, 0},      {"/dev/sdc", "12", 12, 2},    {"/dev/sdb", " 12", 12, 1},
      {"/dev/sda", "No", 0, 0},     {"/dev/nvme0", "2", 2, 0},    {"/dev/nvme1n1", "2", 2, 1},
      {"/dev/nvme12", "2", 2, 1},   {"/dev/mmcblk0", "2", 2, 0},  {"/dev/sd", "2", 2, uint32_t(-97)},
      {"/dev/sda", "99999999999", 0, 0},
  };
  for (const Case& c : cases) {
    DiskInfo disk(c.device, "KVX 480GB", "F1", c.version);
    EXPECT_EQ(disk.GetOPALVer(), c.opal_version) << c.device << " " << c.version;
    EXPECT_EQ(disk.GetDriveIndex(), c.drive_index) << c.device;
  }
  DiskInfo fresh("/dev/sda", "KVX 480GB", "F1", "2");
  EXPECT_FALSE(fresh.GetOPALSupport() || fresh.GetOPALEnable() || fresh.GetOPALLocked());
  EXPECT_EQ(fresh.GetAdmin1Pwd(), "");
  EXPECT_TRUE(fresh.GetLRInfo().empty());
  EXPECT_EQ(fresh.GetSupportedUserSize(), 9u);
  EXPECT_EQ(fresh.GetLBA()[9].sectors, "0");
  // Only one character after "/dev/nvme" is converted, unguarded.
  EXPECT_THROW(DiskInfo("/dev/nvmeX", "ZEP", "F1", "2"), std::invalid_argument);
}

TEST(DiskInfoTest, QueryFlagsComeFromTheLineAfterLockingFunction) {
  RecordingRunner runner;
  DiskInfo disk("/dev/sdb", "KVX 480GB", "F1", "2");
  runner.Reply(QueryText("/dev/sdb", true, true, true));
  EXPECT_TRUE(disk.UpdateOPALStatus());
  EXPECT_EQ(runner.commands, std::vector<std::string>{"./sedutil-cli -n --query /dev/sdb"});
  EXPECT_TRUE(disk.GetOPALLocked() && disk.GetOPALEnable() && disk.GetOPALSupport());

  runner.Reply(QueryText("/dev/sdb", false, true, true));
  EXPECT_TRUE(disk.UpdateOPALStatus());
  EXPECT_FALSE(disk.GetOPALLocked());
  EXPECT_TRUE(disk.GetOPALEnable());

  runner.Reply(QueryText("/dev/sdb", false, false, true));
  EXPECT_TRUE(disk.UpdateOPALStatus());
  EXPECT_TRUE(disk.GetOPALSupport());
  EXPECT_FALSE(disk.GetOPALEnable());
  runner.Reply(QueryText("/dev/sdb", false, true, true));
  disk.UpdateOPALStatus();

  // Without the header line the flags keep their values.
  runner.Reply("Invalid or unsupported disk /dev/sdb\n");
  EXPECT_FALSE(disk.UpdateOPALStatus());
  EXPECT_TRUE(disk.GetOPALEnable());
}

TEST(DiskInfoTest, DriveWithoutOpalIsNeverAsked) {
  RecordingRunner runner;
  DiskInfo disk("/dev/sda", "KVX 480GB", "F1", "No");
  EXPECT_TRUE(disk.UpdateOPALStatus());
  EXPECT_TRUE(disk.UpdateLockingRangesStatus());
  EXPECT_TRUE(runner.commands.empty());
  EXPECT_FALSE(disk.GetOPALSupport());
}

TEST(DiskInfoTest, RangeListingBuildsTheRanges) {
  RecordingRunner runner;
  DiskInfo disk = EnabledDrive(runner, "pw");
  runner.Reply(RangesText("/dev/sda", {{0, 0, 0, false, false, false, false},
                                       {1, 2048, 4096, true, true, false, true},
                                       {2, 8192, 16, false, false, true, false}}));
  EXPECT_TRUE(disk.UpdateLockingRangesStatus());
  EXPECT_EQ(runner.commands.back(), "./sedutil-cli -n --listLockingRanges pw /dev/sda");
  const std::vector<LockingRangeInfo> ranges = disk.GetLRInfo();
  ASSERT_EQ(ranges.size(), 3u);
  EXPECT_EQ(ranges[1].GetIndex(), 1u);
  EXPECT_EQ(ranges[1].GetStartLocation(), 2048u);
  EXPECT_EQ(ranges[1].GetLength(), 4096u);
  EXPECT_TRUE(ranges[1].GetRLKEnable());
  EXPECT_FALSE(ranges[1].GetRLocked());
  EXPECT_TRUE(ranges[1].GetWLKEnable());
  EXPECT_TRUE(ranges[1].GetWLocked());
  EXPECT_TRUE(ranges[2].GetRLocked());
  EXPECT_EQ(ranges[2].GetAlias(), "");
}

TEST(DiskInfoTest, DriveNotEnabledKeepsItsLastRanges) {
  RecordingRunner runner;
  DiskInfo disk = EnabledDrive(runner, "pw");
  runner.Reply(RangesText("/dev/sda", {{0, 0, 0}, {1, 8, 8}}));
  disk.UpdateLockingRangesStatus();
  runner.Reply(QueryText("/dev/sda", false, false));
  disk.UpdateOPALStatus();
  const size_t commands = runner.commands.size();
  EXPECT_TRUE(disk.UpdateLockingRangesStatus());
  EXPECT_EQ(runner.commands.size(), commands);
  EXPECT_EQ(disk.GetLRInfo().size(), 2u);
}

TEST(DiskInfoTest, RangeListingFailures) {
  RecordingRunner runner;
  DiskInfo disk = EnabledDrive(runner, "pw");
  // A wrong password: ranges read before "EndSession Failed" are kept.
  runner.Reply(RangesText("/dev/sda", {{0, 0, 0}, {1, 8, 8}}) + kWrongPasswordText +
               RangesText("/dev/sda", {{2, 16, 8}}));
  EXPECT_FALSE(disk.UpdateLockingRangesStatus());
  EXPECT_EQ(disk.GetLRInfo().size(), 2u);

  // A header that does not split in five is reported after a pause.
  runner.Reply("LR1 Begin 0 for 8\n            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n"
               "LR2 Begin 8 for\n");
  ScopedStdin keys("\n\n");
  testing::internal::CaptureStdout();
  EXPECT_FALSE(disk.UpdateLockingRangesStatus());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "list lockingranges error: LR2 Begin 8 for\n\nEnter any key to continue...");
  EXPECT_TRUE(disk.GetLRInfo().empty());

  // Numbers are converted as signed 32-bit values, unguarded: past that the
  // program ends, whether in the start or in the length.
  const std::string flags = "            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n";
  runner.Reply("LR1 Begin 2147483648 for 8\n" + flags);
  EXPECT_THROW(disk.UpdateLockingRangesStatus(), std::out_of_range);
  runner.Reply("LR1 Begin 8 for 2147483648\n" + flags);
  EXPECT_THROW(disk.UpdateLockingRangesStatus(), std::out_of_range);
  runner.Reply("LR1 Begin 2147483647 for 8\n" + flags);
  EXPECT_TRUE(disk.UpdateLockingRangesStatus());
  // A negative start is widened with its sign.
  runner.Reply("LR1 Begin -8 for 8\n" + flags);
  EXPECT_TRUE(disk.UpdateLockingRangesStatus());
  EXPECT_EQ(disk.GetLRInfo()[0].GetStartLocation(), 18446744073709551608u);
}

TEST(DiskInfoTest, PartitionModeNamesRangesAfterPartitions) {
  for (const auto& [prefix, first] : {std::pair<std::string, std::string>{"/dev/sdb", "/dev/sdb1"},
                                      {"/dev/nvme0n1", "/dev/nvme0n1p1"}}) {
    RecordingRunner runner;
    DiskInfo disk = EnabledDrive(runner, "pw");
    disk.SetPrefixName(prefix);
    disk.SetBlockNum(1);
    runner.Reply(RangesText("/dev/sda", {{0, 0, 0}, {1, 8, 8}, {2, 16, 8}}));
    disk.UpdateLockingRangesStatus();
    const std::vector<LockingRangeInfo> ranges = disk.GetLRInfo();
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_EQ(ranges[0].GetAlias(), "");
    EXPECT_EQ(ranges[1].GetAlias(), first);
    EXPECT_EQ(ranges[2].GetAlias(), "");  // only part_number partitions are named
  }
}

TEST(ScanDisksTest, AcceptsOnlyTheTwoMakersAndReportsBadLines) {
  RecordingRunner runner;
  runner.Reply(ScanText({{"/dev/nvme0", "2", "ZEP NV2000 1TB", "2B2QEXM7"},
                         {"/dev/sda", "2", "KVX 480GB", "SBFK71F3"},
                         {"/dev/sdb", "12", "Other Maker 500GB", "EMT01B6Q"}}) +
               "/dev/sdc  2  one  two  three\n");
  testing::internal::CaptureStdout();
  ScanDisks();
  const std::string echo = testing::internal::GetCapturedStdout();
  EXPECT_EQ(runner.commands, std::vector<std::string>{"./sedutil-cli -n --scan "});
  ASSERT_EQ(DiskCount, 2);
  EXPECT_EQ(SelectedDisk, &DiskList[0]);
  EXPECT_EQ(DiskList[0].GetFileDescriptor(), "/dev/nvme0");
  EXPECT_EQ(DiskList[1].GetDeviceName(), "KVX 480GB");
  EXPECT_EQ(DiskList[1].GetFirmware(), "SBFK71F3");
  EXPECT_EQ(DiskList[1].GetOPALVer(), 2u);
  EXPECT_NE(echo.find("/dev/sda\tKVX 480GB\tSBFK71F3\t\t2\n"), std::string::npos);
  EXPECT_NE(echo.find("/dev/sdb\tOther Maker 500GB\tEMT01B6Q\t\t 12\n"), std::string::npos);
  EXPECT_NE(echo.find("\n5\nscan error: /dev/sdc  2  one  two  three\n"), std::string::npos);

  runner.Reply("Scanning for Opal compliant disks\n/dev/sda    2   KVX odd padding  F1\n");
  testing::internal::CaptureStdout();
  ScanDisks();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(DiskCount, 0);  // the model kept a leading blank
}

#include "DiskInfo.h"

#include <gtest/gtest.h>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

using Lines = std::vector<std::string>;

// Each range as "index start length", its RLKEna, WLKEna, RLocked and WLocked
// flags, and its alias.
Lines Ranges(const DiskInfo& disk) {
  Lines shown;
  for (const LockingRangeInfo& r : disk.GetLRInfo()) {
    shown.push_back(std::to_string(r.GetIndex()) + " " + std::to_string(r.GetStartLocation()) + " " +
                    std::to_string(r.GetLength()) + " " + YN(r.GetRLKEnable()) + YN(r.GetWLKEnable()) +
                    YN(r.GetRLocked()) + YN(r.GetWLocked()) + r.GetAlias());
  }
  return shown;
}

const std::string kFlags = "            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n";

}  // namespace

TEST(DiskInfoTest, ConstructionReadsVersionAndDriveIndex) {
  struct Case { std::string device, version; uint32_t opal_version, drive_index; } cases[] = {
      {"/dev/sda", "2", 2, 0},    {"/dev/sdc", "12", 12, 2},   {"/dev/sdb", " 12", 12, 1},
      {"/dev/sda", "No", 0, 0},   {"/dev/nvme0", "2", 2, 0},   {"/dev/nvme1n1", "2", 2, 1},
      {"/dev/nvme12", "2", 2, 1}, {"/dev/mmcblk0", "2", 2, 0}, {"/dev/sd", "2", 2, uint32_t(-97)},
      {"/dev/sda", "99999999999", 0, 0},
  };
  for (const Case& c : cases) {
    DiskInfo disk(c.device, "KVX 480GB", "F1", c.version);
    EXPECT_EQ(disk.GetOPALVer(), c.opal_version) << c.device << " " << c.version;
    EXPECT_EQ(disk.GetDriveIndex(), c.drive_index) << c.device;
  }
  // Only one character after "/dev/nvme" is converted, unguarded.
  EXPECT_THROW(DiskInfo("/dev/nvmeX", "ZEP", "F1", "2"), std::invalid_argument);
}

TEST(DiskInfoTest, QueryFlagsComeFromTheLineAfterLockingFunction) {
  RecordingRunner runner;
  DiskInfo disk("/dev/sdb", "KVX 480GB", "F1", "2");
  auto flags = [&] { return disk.GetOPALLocked() + 2 * disk.GetOPALEnable() + 4 * disk.GetOPALSupport(); };
  for (int bits = 0; bits < 8; ++bits) {
    runner.Reply(QueryText("/dev/sdb", bits & 1, bits & 2, bits & 4));  // locked, enabled, supported
    EXPECT_TRUE(disk.UpdateOPALStatus());
    EXPECT_EQ(flags(), bits);
  }
  // Without the header line the flags keep their values.
  runner.Reply("Invalid or unsupported disk /dev/sdb\n");
  EXPECT_FALSE(disk.UpdateOPALStatus());
  EXPECT_EQ(flags(), 7);
  EXPECT_EQ(runner.commands, Lines(9, "./sedutil-cli -n --query /dev/sdb"));
  // A drive no longer enabled keeps its ranges and, like one without Opal, is asked nothing more.
  runner.Reply(RangesText("/dev/sdb", {{1, 8, 8}})).Reply(QueryText("/dev/sdb", false, false));
  DiskInfo no_opal("/dev/sdb", "KVX 480GB", "F1", "No");
  EXPECT_TRUE(disk.UpdateLockingRangesStatus() && disk.UpdateOPALStatus() &&
              disk.UpdateLockingRangesStatus() && no_opal.UpdateOPALStatus() && no_opal.UpdateLockingRangesStatus());
  EXPECT_EQ(runner.commands.size(), 11u);
  EXPECT_EQ(Ranges(disk), Lines{"1 8 8 NNNN"});
}

TEST(DiskInfoTest, RangeListingBuildsTheRanges) {
  const std::string header = "LR1 Begin 0 for 8\n" + kFlags;
  const std::string four = RangesText("/dev/sda", {{0, 0, 0}, {1, 8, 8}, {2, 16, 8}, {3, 24, 8}});
  struct Case { std::string output; bool result; Lines ranges; std::string prefix = "", printed = ""; };
  const Case cases[] = {
      {RangesText("/dev/sda", {{0, 0, 0}, {4, 2048, 4096, true, false, true}, {2, 8, 16, false, true, true}}),
       true, {"0 0 0 NNNN", "4 2048 4096 YNYN", "2 8 16 NYYN"}},
      // A wrong password: the ranges read before "EndSession Failed" are kept.
      {header + kWrongPasswordText + header, false, {"1 0 8 NNNN"}},
      // Signed 32-bit numbers, widened with their sign.
      {"LR1 Begin 2147483647 for -1\n" + kFlags + "LR2 Begin -8 for 8\n" + kFlags, true,
       {"1 2147483647 18446744073709551615 NNNN", "2 18446744073709551608 8 NNNN"}},
      // A header that does not split in five is reported after a pause.
      {header + "LR2 Begin 8 for\n", false, {}, "",
       "list lockingranges error: LR2 Begin 8 for\n\nEnter any key to continue..."},
      // As partitions, ranges 1 to their number are named after them.
      {four, true, {"0 0 0 NNNN", "1 8 8 NNNN/dev/sdb1", "2 16 8 NNNN/dev/sdb2", "3 24 8 NNNN"}, "/dev/sdb"},
      {four, true, {"0 0 0 NNNN", "1 8 8 NNNN/dev/nvme0n1p1", "2 16 8 NNNN/dev/nvme0n1p2", "3 24 8 NNNN"},
       "/dev/nvme0n1"},
  };
  for (const Case& c : cases) {
    DiskInfo disk = OwnedDrive();
    disk.SetPrefixName(c.prefix);
    disk.SetBlockNum(c.prefix.empty() ? 0 : 2);
    RecordingRunner runner({c.output});
    ScopedStdin keys("\n\n");
    bool result = !c.result;
    EXPECT_EQ(Printed([&] { result = disk.UpdateLockingRangesStatus(); }), c.printed);
    EXPECT_EQ(result, c.result) << c.output;
    EXPECT_EQ(runner.commands, Lines{"./sedutil-cli -n --listLockingRanges pw /dev/sda"});
    EXPECT_EQ(Ranges(disk), c.ranges);
  }
  // Past 32 bits the unguarded conversion ends the program, in the start or the length.
  DiskInfo disk = OwnedDrive();
  RecordingRunner runner({"LR1 Begin 2147483648 for 8\n" + kFlags, "LR1 Begin 8 for -2147483649\n"});
  EXPECT_THROW(disk.UpdateLockingRangesStatus(), std::out_of_range);
  EXPECT_THROW(disk.UpdateLockingRangesStatus(), std::out_of_range);
}

TEST(ScanDisksTest, AcceptsOnlyTheTwoMakersAndReportsBadLines) {
  RecordingRunner runner({ScanText({{"/dev/nvme0", "2", "ZEP NV2000 1TB", "2B2QEXM7"},
                                    {"/dev/sda", "2", "KVX 480GB", "SBFK71F3"},
                                    {"/dev/sdb", "12", "Other KVX 500GB", "EMT01B6Q"}}) +
                          "/dev/sdc  2  one  two  three\n/dev/sdd    2   KVX odd padding  F1\n"});
  EXPECT_EQ(Printed(ScanDisks),
            "/dev/nvme0\tZEP NV2000 1TB\t 2B2QEXM7\t\t2\n/dev/sda\tKVX 480GB\tSBFK71F3\t\t2\n"
            "/dev/sdb\tOther KVX 500GB\tEMT01B6Q\t\t 12\n5\nscan error: /dev/sdc  2  one  two  three\n"
            "/dev/sdd\t KVX odd padding\tF1\t\t2\n");
  EXPECT_EQ(runner.commands, Lines{"./sedutil-cli -n --scan "});
  ASSERT_TRUE(DiskCount == 2 && SelectedDisk == &DiskList[0]);
  const DiskInfo& kvx = DiskList[1];
  EXPECT_EQ(DiskList[0].GetFileDescriptor() + "|" + kvx.GetFileDescriptor() + "|" + kvx.GetDeviceName() +
                "|" + kvx.GetFirmware() + "|" + std::to_string(kvx.GetOPALVer()),
            "/dev/nvme0|/dev/sda|KVX 480GB|SBFK71F3|2");
}

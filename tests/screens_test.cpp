// Screens run in-process through the recording runner: the range tables'
// exact widths; the wording and bounds of partition mode, which no session
// can reach because nothing in the program switches a drive into it; the
// flash lock's steps; the menu of every drive state.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"
#include "tool_text.h"

namespace {

using Commands = std::vector<std::string>;

struct Shown { std::string printed; Commands commands; };

// Runs screen with input typed, the tool printing replies in turn, on the
// selected drive /dev/sdb (password "pw", or a factory drive unless owned),
// handled as two partitions of prefix unless prefix is empty.
Shown RunScreen(const std::function<void()>& screen, const std::string& input, const Commands& replies = {},
                const std::string& version = "2", const std::string& prefix = "/dev/sdb", bool owned = true) {
  DiskList = {OwnedDrive("/dev/sdb", owned ? "pw" : "", version, owned)};
  SelectedDisk = &DiskList[0];
  SelectedDisk->Set2Parted(!prefix.empty());
  SelectedDisk->SetPrefixName(prefix);
  SelectedDisk->SetBlockNum(prefix.empty() ? 0 : 2);
  RecordingRunner runner(replies);
  ScopedStdin keys(input);
  return {Printed(screen), runner.commands};
}

std::string Right(const std::string& text, size_t width) {
  return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}
// The four lock flags, "Y" or "N" each, the first in a column of width first.
std::string Flags(const std::string& yn, size_t first) {
  return Right(yn.substr(0, 1), first) + Right(yn.substr(1, 1), 19) + Right(yn.substr(2, 1), 18) +
         Right(yn.substr(3, 1), 15) + "\n";
}

const std::string kPause = "\nEnter any key to continue...";
const std::string kListRanges = "./sedutil-cli -n --listLockingRanges pw /dev/sdb";
// Numbers apart from positions: LR3 and LR5 are the two partitions' ranges,
// LR0 and LR7 no partition's.
const std::string kRanges = RangesText(
    "/dev/sdb", {{3, 2048, 4096, true, false, true, false}, {0, 0, 0}, {5, 8192, 1024}, {7, 16384, 8}});

// The partition table of kRanges: names and starts in columns of the widths given.
std::string AreaTable(const std::string& prefix, const std::string& name, size_t name_w, size_t start_w) {
  return prefix + "\nNow status\n" + std::string(117, '=') +
         "\nIndex  LBA                Begin      Length        ReadLock Enabled   WriteLock Enabled"
         "    ReadLocked    WriteLocked\n 1" +
         Right(name + "1", name_w) + Right("2048", start_w) + Right("4096", 13) + Flags("YNYN", 15) +
         " 2" + Right(name + "2", name_w) + Right("8192", start_w) + Right("1024", 13) +
         Flags("NNNN", 15) + std::string(116, '=') + "\n";
}

}  // namespace

TEST(ScreensTest, RangeTablesAndPartitionModeScreens) {
  const std::string area = "Which Logical Block Area do you want to setup (1 ~ 2)? others:exit  ";
  const std::string grant = "\n\n\nWhich Logical Block Area do you want to setup?(1~ 2)?";
  const std::string remove = "Which Logical Block Area do you want to setup (1~2)?";
  const std::string mode = "Which protection mode do you want to set (1: Read and Write; 2: Read Only; ";
  const std::string mode_k = mode + "others: Read and Write LocK)? ";  // the ranges' wording
  const std::string mode_l = mode + "others: Read and Write Lock)? ";  // the areas' wording
  const std::string enable = "Enable or disable Locking Range (1: enable; others: diasble)? ";
  const std::string lr0 =
      "Enable or disable Locking Range 0 (1: enable; others: diasble)? Continue set protection mode?(Y/N)? ";
  const std::string sdb_table = AreaTable("/dev/sdb", "/dev/sdb", 10, 20);
  const std::string list = "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw ";
  struct Case { void (*screen)(); std::string input; Commands replies; std::string printed; Commands commands;
                std::string version = "2", prefix = "/dev/sdb"; } cases[] = {
      // Columns right-aligned in fixed widths; values longer than theirs are printed whole and shift the row.
      {LockingRanges, "\n\n",
       {RangesText("/dev/sdb", {{1, 2048, 4096, true, false, false, true},  // LR123 from -1 for -1
                                {123, -1, -1, false, true, true}})},
       "Now status\n" + std::string(103, '=') +
           "\nLocking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    "
           "WriteLocked\n 1" + Right("2048", 20) + Right("4096", 10) + Flags("YNNY", 12) +
           "123" "18446744073709551615" "18446744073709551615" + Flags("NYYN", 12) +
           std::string(103, '=') + "\n" + kPause,
       {kListRanges}, "2", ""},
      {LockingRanges, "\n\n", {kRanges}, sdb_table + kPause, {kListRanges}},
      {LockingRanges, "\n\n", {kRanges}, AreaTable("/dev/nvme0n1", "/dev/nvme0n1p", 14, 15) + kPause,
       {kListRanges}, "2", "/dev/nvme0n1"},
      // Area 2 is locking range 2.
      {SetStateofLR, "2\n2\n1\n\n", {kRanges}, sdb_table + area + mode_l + enable + kPause,
       {kListRanges, "./Lantivo --disableLockingRange 2 pw R /dev/sdb",
        "./Lantivo --enableLockingRange 2 pw W /dev/sdb", "./Lantivo --setLockingRange 2 N Y pw /dev/sdb"}},
      {SetAccessSetting_TCG, "2\n1,2\ny\n\n", {},
       grant + "Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  "
               "User1 User2 \nAre you sure to give them priviledge? (Y/N): Set Priviledge OK!!\n\n" + kPause,
       {"./Lantivo --Add_ACE_Locking_range /dev/sdb pw 2 User1 User2 "}},
      // The access list of a partitioned drive asks ranges 1, 2, then 2 and 3
      // again for the positions past the partitions.
      {RemoveUsers, "1\nn\n\n", {kRanges, "removed\n", "Admin1 User2 can access Locking Range 1\n"},
       remove + "remove done\n\n\n1, Access Right of /dev/sdb1 :    Admin1  User2\n\n\n"
                "Do you want to continue removing? (Y/N)\n" + kPause,
       {kListRanges, "./Lantivo --Delete_AllUser_ACE_Locking_range /dev/sdb pw 1", list + "1", list + "2",
        list + "2", list + "3"}},
      // The global range: enable, then a confirmation, then the mode.
      {SpecialActionLR0, "1\ny\n2\n\n", {"success\n", "success\n", "success\n"}, lr0 + mode_k + kPause,
       {"./Lantivo --disableLockingRange 0 pw R /dev/sdb", "./Lantivo --enableLockingRange 0 pw W /dev/sdb",
        "./Lantivo --setLockingRange 0 N Y pw /dev/sdb"}},
      {SpecialActionLR0, "1\nY\nabc\n\n", {"error\n"}, lr0 + mode_k + "SetLockingRange Error\n" + kPause,
       {"./Lantivo --enableLockingRange 0 pw RW /dev/sdb"}},
      {SpecialActionLR0, "1\nn\n\n", {}, lr0 + kPause, {}},
      {SpecialActionLR0, "0\ny\n1\n\n", {}, lr0 + mode_k + kPause, {}},
      {SpecialActionLR0, "x\ny\n1\n\n", {}, lr0 + mode_k + kPause, {}},
      // Owner set-up refuses a drive without Opal and one already enabled.
      {EnableOPAL, "\n\n", {}, "Not support OPAL\n" + kPause, {}, "No"},
      {EnableOPAL, "\n\n", {}, "OPAL already enabled\n" + kPause, {}},
  };
  for (const Case& c : cases) {
    const Shown shown = RunScreen(c.screen, c.input, c.replies, c.version, c.prefix);
    EXPECT_EQ(shown.printed, c.printed) << "case " << &c - cases;
    EXPECT_EQ(shown.commands, c.commands) << "case " << &c - cases;
  }
  struct Refusal { void (*screen)(); std::string asked, refused; Commands commands; } refusals[] = {
      {SetStateofLR, sdb_table + area, "Wrong index choosen!!\n", {kListRanges}},
      {SetAccessSetting_TCG, grant, "Wrong locking range choosen!!\n", {}},  // no ranges known: none listed
      {RemoveUsers, remove, "Wrong index choosen!!\n", {kListRanges}},
  };
  for (const Refusal& r : refusals) {
    for (const std::string answer : {"0", "3", "x", "-1"}) {
      const Shown shown = RunScreen(r.screen, answer + "\n1\n1\n\n", {kRanges});
      EXPECT_EQ(shown.printed, r.asked + r.refused + kPause) << answer;
      EXPECT_EQ(shown.commands, r.commands) << answer;
    }
  }
}

TEST(ScreensTest, FlashLockTakesItsPasswordFromTheLastUuidWordAndRunsEveryStepOnceConfirmed) {
  const std::string uuid = "sudo dmidecode | grep -i uuid", asked = "Are you sure to flash lock(Y/N)?\n";
  const std::string sed = "./sedutil-cli -n ", lan = "./Lantivo ", wait = "Please wait...   \n";
  auto setup = [&](const std::string& password) { return sed + "--initialSetup " + password + " /dev/sdb"; };
  struct Case { std::string input; Commands replies; int result; std::string printed; Commands commands; } cases[] = {
      // Declined: only the UUID was read.
      {"n\n", {"\tUUID: 0000-11\n"}, -1, asked, {uuid}},
      {"yes\n", {"\tUUID: 0000-11\n"}, -1, asked, {uuid}},
      // The last word of the last line, its final character (the newline)
      // cut off, hyphens dropped; without a final newline a digit goes.
      {"y\n", {"\tUUID: aaaa-1111\n\tUUID: bbbb-2222\n"}, 0, asked + wait, {uuid, setup("bbbb2222")}},
      {"y\n", {"\tUUID: 4C4C4544-0042 \n"}, 0, asked + wait, {uuid, setup("")}},
      {"y\n", {"UUID: ab-12"}, 0, asked + wait, {uuid, setup("ab1")}},
      // A failed take-ownership leaves the drive not enabled: the later steps send nothing.
      {"Y\n", {"", kWrongPasswordText + std::string("takeOwnership failed\n")}, 0,
       asked + "Enable OPAL FAIL\n" + wait, {uuid, setup("")}},
      // Once owned, every step runs, even after the global range failed to lock.
      {"y\n", {"\tUUID: 0000-11\n", "takeOwnership complete\n", QueryText("/dev/sdb", false, true), "",
               "LockingRange0 success\n", "NOT_AUTHORIZED\n", "MBRDone set off \n"}, 0,
       asked + "Enable OPAL OK\nSetLockingRange Error\nMBRDone set off \n" + wait,
       {uuid, setup("000011"), sed + "--query /dev/sdb", sed + "--listLockingRanges 000011 /dev/sdb",
        lan + "--enableLockingRange 0 000011 RW /dev/sdb", lan + "--setLockingRange 0 Y Y 000011 /dev/sdb",
        sed + "--setMBRDone OFF 000011 /dev/sdb", sed + "--loadPBAimage 000011 PBA_flash.img /dev/sdb",
        sed + "--setMBRDone ON 000011 /dev/sdb"}},
  };
  for (const Case& c : cases) {
    int result = 1;
    const Shown shown = RunScreen([&] { result = FlashLock(); }, c.input, c.replies, "2", "", false);
    EXPECT_EQ(result, c.result) << "case " << &c - cases;
    EXPECT_EQ(shown.printed, c.printed) << "case " << &c - cases;
    EXPECT_EQ(shown.commands, c.commands) << "case " << &c - cases;
  }
}

// Every combination of the drive's flags: the numbers printed are those
// accepted, none twice, and each state offers its own set.
TEST(MenuTest, EachStateOffersItsNumbersOnceAndAcceptsWhatItPrints) {
  const std::map<std::string, std::string> offers = {
      {"no Opal", "0 1"}, {"not owned", "0 1 2 3"}, {"owned", "0 1 11 17"},
      {"ranges", "0 1 3 4 5 6 7 8 9 13 14 15 16 17"}, {"areas", "0 1 3 4 6 7 8 9 12 13 14 15 16 17"}};
  for (int flags = 0; flags < 32; ++flags) {
    const bool opal = flags & 1, enabled = flags & 2, locked = flags & 4, password = flags & 8, parted = flags & 16;
    DiskList = {OwnedDrive("/dev/sda", password ? "pw" : "", opal ? "2" : "No", enabled, locked)};
    SelectedDisk = &DiskList[0];
    SelectedDisk->Set2Parted(parted);
    RecordingRunner runner;
    std::vector<int> choiceList;
    const std::string screen = Printed([&] { ShowMenu(choiceList); });
    std::string printed, accepted;
    static const std::regex kNumber("\n   ([0-9]+)\\. ");
    for (std::sregex_iterator it(screen.begin(), screen.end(), kNumber), end; it != end; ++it)
      printed += (printed.empty() ? "" : " ") + (*it)[1].str();
    for (int number : choiceList) accepted += (accepted.empty() ? "" : " ") + std::to_string(number);
    const char* state = !opal ? "no Opal" : !enabled ? "not owned" : !password ? "owned" : parted ? "areas" : "ranges";
    EXPECT_EQ(accepted, offers.at(state)) << "flags " << flags;
    EXPECT_EQ(printed, accepted) << "flags " << flags;
    EXPECT_EQ(std::set<int>(choiceList.begin(), choiceList.end()).size(), choiceList.size()) << "flags " << flags;
    EXPECT_EQ(runner.commands, Commands{"clear"});
  }
  // The last combination handles the drive as areas, which keep their own
  // empty lines; a clear that cannot start shows and offers nothing.
  RecordingRunner runner;
  std::vector<int> choiceList;
  EXPECT_NE(Printed([&] { ShowMenu(choiceList); }).find(
                "   9.  Remove All Users from Logical Block Area\n\n   12. Enable/Disble LockingRange 0 (global)\n\n"
                "   13. Set MBR Enable or not\n   14. Set/Unset MBR\n   15. Load Pre-Boot Authorization Image\n\n"
                "   16. Disable OPAL (revert)\n   17. Erase All Data\n\n---"), std::string::npos);
  runner.clears = false;
  choiceList.clear();
  EXPECT_EQ(Printed([&] { ShowMenu(choiceList); }), "");
  EXPECT_TRUE(choiceList.empty());
}

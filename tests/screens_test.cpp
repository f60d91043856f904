// Screens run in-process through the recording runner: the range tables'
// exact widths; partition mode, which no session reaches because nothing in
// the program switches a drive into it; what no session of the scripted world
// can meet (a drive without ranges, a failed flash lock); the menu of every
// drive state.
#include <gtest/gtest.h>

#include <regex>

#include "main.h"
#include "recording_runner.h"
#include "test_io.h"

namespace {

using Commands = std::vector<std::string>;

struct Shown { std::string printed; Commands commands; };

// Runs screen with input typed, the tools printing replies in turn, on the
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
  Type(input);
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
const std::string kRangeTable = "Now status\n" + std::string(103, '=') +
    "\nLocking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked\n";
// Numbers apart from positions: LR3 and LR5 are the two partitions' ranges,
// LR0 and LR7 no partition's.
const std::string kRanges = RangesText({{3, 2048, 4096, true, false, true, false}, {0, 0, 0}, {5, 8192, 1024}, {7, 16384, 8}});

// The partition table of kRanges: names and starts in columns of the widths given.
std::string AreaTable(const std::string& prefix, const std::string& name, size_t name_w, size_t start_w) {
  return prefix + "\nNow status\n" + std::string(117, '=') +
         "\nIndex  LBA                Begin      Length        ReadLock Enabled   WriteLock Enabled"
         "    ReadLocked    WriteLocked\n 1" +
         Right(name + "1", name_w) + Right("2048", start_w) + Right("4096", 13) + Flags("YNYN", 15) + " 2" +
         Right(name + "2", name_w) + Right("8192", start_w) + Right("1024", 13) + Flags("NNNN", 15) +
         std::string(116, '=') + "\n";
}

}  // namespace

TEST(ScreensTest, RangeTablesAndPartitionMode) {
  const std::string area = "Which Logical Block Area do you want to setup (1 ~ 2)? others:exit  ";
  const std::string grant = "\n\n\nWhich Logical Block Area do you want to setup?(1~ 2)?";
  const std::string remove = "Which Logical Block Area do you want to setup (1~2)?";
  const std::string mode = "Which protection mode do you want to set (1: Read and Write; 2: Read Only; ";
  const std::string enable = "Enable or disable Locking Range (1: enable; others: diasble)? ";
  const std::string lr0 =
      "Enable or disable Locking Range 0 (1: enable; others: diasble)? Continue set protection mode?(Y/N)? ";
  const std::string sdb_table = AreaTable("/dev/sdb", "/dev/sdb", 10, 20);
  const std::string list = "./Lantivo --list_User_ACE_Locking_range /dev/sdb pw ";
  struct Case { const char* name; void (*screen)(); std::string input; Commands replies; std::string printed;
                Commands commands; std::string version = "2", prefix = "/dev/sdb"; } cases[] = {
      // Columns right-aligned in fixed widths; longer values are printed whole and shift the row.
      {"range table", LockingRanges, "\n\n",
       {RangesText({{1, 2048, 4096, true, false, false, true}, {123, -1, -1, false, true, true}})},
       kRangeTable + " 1" + Right("2048", 20) + Right("4096", 10) + Flags("YNNY", 12) +
           "123" "18446744073709551615" "18446744073709551615" + Flags("NYYN", 12) + std::string(103, '=') + "\n" +
           kPause, {kListRanges}, "2", ""},
      // No range listed: the bound shows as 2^64 - 1 and even 0 is refused.
      {"no range", SetStateofLR, "0\n1\n1\n\n", {RangesText({})},
       kRangeTable + std::string(103, '=') + "\nWhich Locking Range you want to setup (0 ~ 18446744073709551615)? "
                                            "others:exit  Wrong index choosen!!\n" + kPause, {kListRanges}, "2", ""},
      {"sd areas", LockingRanges, "\n\n", {kRanges}, sdb_table + kPause, {kListRanges}},
      {"nvme areas", LockingRanges, "\n\n", {kRanges}, AreaTable("/dev/nvme0n1", "/dev/nvme0n1p", 14, 15) + kPause,
       {kListRanges}, "2", "/dev/nvme0n1"},
      // Area 2 is locking range 2; areas say "Lock" where ranges say "LocK".
      {"area state", SetStateofLR, "2\n1\n1\n\n", {kRanges}, sdb_table + area + mode + "others: Read and Write Lock)? " +
       enable + kPause, {kListRanges, "./Lantivo --disableLockingRange 2 pw RW /dev/sdb", "./Lantivo --setLockingRange 2 N N pw /dev/sdb"}},
      {"area grant", SetAccessSetting_TCG, "2\n1,2\ny\n\n", {},
       grant + "Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  "
               "User1 User2 \nAre you sure to give them priviledge? (Y/N): Set Priviledge OK!!\n\n" + kPause,
       {"./Lantivo --Add_ACE_Locking_range /dev/sdb pw 2 User1 User2 "}},
      // The access list of a partitioned drive asks ranges 1, 2, then 2 and 3
      // again for the positions past the partitions.
      {"area removal", RemoveUsers, "1\nn\n\n", {kRanges, "removed\n", "Admin1 User2 can access Locking Range 1\n"},
       remove + "remove done\n\n\n1, Access Right of /dev/sdb1 :    Admin1  User2\n\n\n"
                "Do you want to continue removing? (Y/N)\n" + kPause,
       {kListRanges, "./Lantivo --Delete_AllUser_ACE_Locking_range /dev/sdb pw 1", list + "1", list + "2",
        list + "2", list + "3"}},
      // The global range: enable, then a confirmation, then the mode.
      {"global range read-write", SpecialActionLR0, "1\ny\n1\n\n", {}, lr0 + mode + "others: Read and Write LocK)? " + kPause,
       {"./Lantivo --disableLockingRange 0 pw RW /dev/sdb", "./Lantivo --setLockingRange 0 N N pw /dev/sdb"}},
      {"global range unconfirmed", SpecialActionLR0, "1\nn\n\n", {}, lr0 + kPause, {}},
      // Owner set-up refuses a drive without Opal and one already enabled.
      {"set-up without Opal", EnableOPAL, "\n\n", {}, "Not support OPAL\n" + kPause, {}, "No"},
      {"set-up when enabled", EnableOPAL, "\n\n", {}, "OPAL already enabled\n" + kPause, {}},
  };
  for (const Case& c : cases) {
    const Shown shown = RunScreen(c.screen, c.input, c.replies, c.version, c.prefix);
    EXPECT_EQ(shown.printed, c.printed) << c.name;
    EXPECT_EQ(shown.commands, c.commands) << c.name;
  }
  struct Refusal { const char* name; void (*screen)(); std::string asked, refused; Commands commands; } refusals[] = {
      {"area state", SetStateofLR, sdb_table + area, "Wrong index choosen!!\n", {kListRanges}},
      {"area grant", SetAccessSetting_TCG, grant, "Wrong locking range choosen!!\n", {}},  // no ranges known: none listed
      {"area removal", RemoveUsers, remove, "Wrong index choosen!!\n", {kListRanges}},
  };
  for (const Refusal& r : refusals) {
    for (const std::string answer : {"0", "3", "x", "-1"}) {
      const Shown shown = RunScreen(r.screen, answer + "\n1\n1\n\n", {kRanges});
      EXPECT_EQ(shown.printed, r.asked + r.refused + kPause) << r.name << " " << answer;
      EXPECT_EQ(shown.commands, r.commands) << r.name << " " << answer;
    }
  }
}

// The password is the last word of the UUID lines, its final character (the
// newline) cut off. A failed take-ownership leaves the drive not enabled, so
// the later steps send nothing.
TEST(ScreensTest, FlashLockAfterAFailedTakeOwnershipSendsNothingMore) {
  int result = 1;
  const Shown shown = RunScreen([&] { result = FlashLock(); }, "y\n", {"\tUUID: aaaa-1111\n\tUUID: bbbb-2222\n",
                                "takeOwnership failed\n"}, "2", "", false);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(shown.printed, "Are you sure to flash lock(Y/N)?\nEnable OPAL FAIL\nPlease wait...   \n");
  EXPECT_EQ(shown.commands, Commands({"sudo dmidecode | grep -i uuid", "./sedutil-cli -n --initialSetup bbbb2222 /dev/sdb"}));
}

// Every combination of the drive's flags: the summary of the drive, and the
// actions of its state, in order, with their empty lines; the numbers printed
// are those accepted.
TEST(MenuTest, EachStateShowsTheDriveAndOffersItsActions) {
  const std::string head = "0.  Exit|1.  Select Disk|";
  const std::string tail = "13. Set MBR Enable or not|14. Set/Unset MBR|15. Load Pre-Boot Authorization Image||"
                           "16. Disable OPAL (revert)|17. Erase All Data||";
  const std::map<std::string, std::string> menus = {
      {"no Opal", head},
      {"not owned", head + "2.  Initial this OPAL Device and Set Admin Password (Enable OPAL)|3.  Flash Lock|"},
      {"locked", head + "11. Enter Admin1 / SID Password|17. Erase All Data||"},
      {"owned", head + "11. Set Admin1 / SID Password|17. Erase All Data||"},
      {"ranges", head + "|3.  Look up Locking Range|4.  Set State of Locking Range|5.  Set Address of Locking Range||"
                 "6.  Set User's Password||7.  Check Access Right of Locking Range|8.  Set Previleges to Locking Range|"
                 "9.  Remove All Users from Locking Range||" + tail},
      {"areas", head + "|3.  Look up Logical Block Area|4.  Set State of Logical Block Area||6.  Set User's Password||"
                "7.  Check Access Right of Locking Range|8.  Set Previleges to Logical Block Area|"
                "9.  Remove All Users from Logical Block Area||12. Enable/Disble LockingRange 0 (global)||" + tail}};
  for (int flags = 0; flags < 32; ++flags) {
    const bool opal = flags & 1, enabled = flags & 2, locked = flags & 4, password = flags & 8, parted = flags & 16;
    DiskList = {OwnedDrive("/dev/sda", password ? "pw" : "", opal ? "2" : "No", enabled, locked)};
    SelectedDisk = &DiskList[0];
    SelectedDisk->Set2Parted(parted);
    RecordingRunner runner;
    std::vector<int> choiceList;
    const std::string screen = Printed([&] { ShowMenu(choiceList); }), rule(49, '=');
    const size_t start = screen.find(" Action:\n") + 9, end = screen.find(std::string(49, '-'));
    EXPECT_EQ(screen.substr(0, start), rule + "\n|                  Veltrak v1.1.20051           |\n" + rule +
              "\n File Descriptor: /dev/sda\n Model Name:      KVX 480GB\n Firmware Version:     F1\n OPAL Version:    " +
              (opal ? "2" : "0") + "\n OPAL Support:    " + (opal ? "Support" : "Not Support") + "\n OPAL Enable:     " +
              (opal && enabled ? "Enable" : "Disable") + "\n OPAL Locked:     " + (opal && locked ? "Yes" : "No") +
              "\n\n Action:\n") << "flags " << flags;
    EXPECT_EQ(screen.substr(end), std::string(49, '-') + "\n") << "flags " << flags;
    std::string shown = std::regex_replace(screen.substr(start, end - start), std::regex("(^|\n)   "), "$1");
    std::replace(shown.begin(), shown.end(), '\n', '|');
    std::string numbers, accepted;
    static const std::regex kNumber("([0-9]+)\\. ");
    for (std::sregex_iterator it(shown.begin(), shown.end(), kNumber), last; it != last; ++it)
      numbers += (*it)[1].str() + " ";
    for (int number : choiceList) accepted += std::to_string(number) + " ";
    const char* state = !opal ? "no Opal" : !enabled ? "not owned" : !password ? (locked ? "locked" : "owned")
                      : parted ? "areas" : "ranges";
    EXPECT_EQ(shown, menus.at(state)) << "flags " << flags;
    EXPECT_EQ(accepted, numbers) << "flags " << flags;
    EXPECT_EQ(runner.commands, Commands{"clear"});
  }
  // A clear that cannot start shows and offers nothing.
  RecordingRunner runner;
  runner.clears = false;
  std::vector<int> choiceList;
  EXPECT_EQ(Printed([&] { ShowMenu(choiceList); }), "");
  EXPECT_TRUE(choiceList.empty());
}

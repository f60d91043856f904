#include "main.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <optional>

#include "utils.h"

std::vector<DiskInfo> DiskList;
int DiskCount = 0;
DiskInfo* SelectedDisk = nullptr;

namespace {

// --- Reading answers -------------------------------------------------------

// One blank-delimited word. The end of input is no answer: the program ends
// there, before a fallback could reach a drive.
std::string ReadWord() {
  std::string word;
  if (!(std::cin >> word)) EndOfInput();
  return word;
}

// Yes only for exactly "Y" or "y".
bool ReadYes() {
  const std::string word = ReadWord();
  return word == "Y" || word == "y";
}

// Leading sign and digits of word as a decimal int, trailing text ignored;
// nothing when there are no digits or the value does not fit.
std::optional<int> ToInt(const std::string& word) {
  try {
    return std::stoi(word);
  } catch (const std::logic_error&) {
    return std::nullopt;
  }
}

// The answer to a number prompt; nothing when it is not a number.
std::optional<int> ReadNumber() { return ToInt(ReadWord()); }

// The answer to a number prompt whose non-numbers stand for fallback.
int ReadNumberOr(int fallback) { return ReadNumber().value_or(fallback); }

// Whether number, taken as an unsigned 32-bit value (so a negative one is
// huge), lies in [first, end); a missing number never does.
bool InBounds(std::optional<int> number, uint32_t first, uint64_t end) {
  if (!number) return false;
  const uint32_t value = static_cast<uint32_t>(*number);
  return value >= first && value < end;
}

// The action number as stream extraction stores it: 0, the exit, for end of
// input, a non-number or an input already failed by an earlier answer, so the
// loop never spins on a dead input; the nearest int for a number beyond int,
// which no menu offers.
int ReadActionNumber() {
  int action = 0;
  std::cin >> action;
  return action;
}

// --- The banner and the drive summary -------------------------------------

void ShowBanner() {
  const std::string rule(49, '=');
  std::cout << rule << '\n'
            << "|                  Veltrak v1.1." << 20051 << "           |" << '\n'
            << rule << '\n';
}

void ShowDriveSummary(const DiskInfo& disk) {
  std::cout << " File Descriptor: " << disk.GetFileDescriptor() << '\n'
            << " Model Name:      " << disk.GetDeviceName() << '\n'
            << " Firmware Version:     " << disk.GetFirmware() << '\n'
            << " OPAL Version:    " << disk.GetOPALVer() << '\n'
            << " OPAL Support:    " << (disk.GetOPALSupport() ? "Support" : "Not Support") << '\n'
            << " OPAL Enable:     " << (disk.GetOPALEnable() ? "Enable" : "Disable") << '\n'
            << " OPAL Locked:     " << (disk.GetOPALLocked() ? "Yes" : "No") << '\n';
}

// --- Shared by the screens ---------------------------------------------------

void ReportWrongIndex() { std::cout << "Wrong index choosen!!" << '\n'; }

const char* YN(bool flag) { return flag ? "Y" : "N"; }

// The four lock flags of a table row; only the first column's width differs
// between the two tables.
void PrintLockFlags(const LockingRangeInfo& range, int readLockEnabledWidth) {
  std::cout << std::setw(readLockEnabledWidth) << YN(range.GetRLKEnable()) << std::setw(19)
            << YN(range.GetWLKEnable()) << std::setw(18) << YN(range.GetRLocked()) << std::setw(15)
            << YN(range.GetWLocked()) << '\n';
}

// The two wordings of the protection-mode question: areas say "Lock",
// ranges "LocK".
const char* const kAreaModePrompt =
    "Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and "
    "Write Lock)? ";
const char* const kRangeModePrompt =
    "Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and "
    "Write LocK)? ";

// Asks for a protection mode: 1 is "RW", 2 "RO", anything else "LK".
std::string AskProtectionMode(const char* prompt) {
  std::cout << prompt;
  switch (ReadNumberOr(0)) {
    case 1:
      return "RW";
    case 2:
      return "RO";
    default:
      return "LK";
  }
}

// The enable answer; anything but 1 makes the protection change a no-op.
uint32_t AskEnable(const char* prompt) {
  std::cout << prompt;
  return static_cast<uint32_t>(ReadNumberOr(0));
}

void ApplyProtection(uint32_t index, const std::string& mode, uint32_t enable) {
  if (!SelectedDisk->SetLockingRangeStatus_TCG_V2_5(index, mode, enable)) {
    std::cout << "SetLockingRange Error" << '\n';
  }
}

// Whether number names an area of a partitioned drive: 1 to its number of
// partitions.
bool IsArea(std::optional<int> number) {
  return InBounds(number, 1, uint64_t{SelectedDisk->GetBlockNum()} + 1);
}

// A block address or length: a signed 32-bit answer widened with its sign,
// so -8 reaches the tool as 2^64 - 8; a non-number is 0.
uint64_t ReadBlockNumber() { return static_cast<uint64_t>(static_cast<int64_t>(ReadNumberOr(0))); }

}  // namespace

void ScanDisks() {
  DiskList.clear();
  std::stringstream output = GetCmdResponse(kSedutil + "--scan ");
  std::string line;
  while (std::getline(output, line)) {
    if (line.find("/dev") == std::string::npos) continue;  // banner and closing lines
    // Columns: device, Opal version, model, firmware, at least two blanks apart.
    const std::vector<std::string> items = ParseItems(line, "  ");
    if (items.size() != 4) {
      std::cout << items.size() << '\n' << "scan error: " << line << std::endl;
      continue;
    }
    // Flushed at once: a later line may end the program (an unreadable NVMe
    // path), and what was found before must still reach a logged session.
    std::cout << items[0] << '\t' << items[2] << '\t' << items[3] << "\t\t" << items[1] << std::endl;
    if (items[2].find("KVX") == 0) DiskList.push_back(DiskInfo(items[0], items[2], items[3], items[1]));
    if (items[2].find("ZEP") == 0) DiskList.push_back(DiskInfo(items[0], items[2], items[3], items[1]));
  }
  SelectedDisk = DiskList.data();  // never dereferenced while the list is empty
  DiskCount = static_cast<int>(DiskList.size());
}

void SelectDisk() {
  std::cout << " * Disk list:" << '\n';
  for (int i = 0; i < DiskCount; ++i) {
    std::cout << "    " << i << ". " << DiskList[i].GetFileDescriptor() << ", "
              << DiskList[i].GetDeviceName() << '\n';
  }
  std::cout << "Select a disk by number: ";
  int number = 0;  // a non-number stores 0 and so selects the first drive
  std::cin >> number;
  // The failed input left by a non-number ends the program at the next
  // prompt; the end of input ends it here.
  if (std::cin.fail() && std::cin.eof()) EndOfInput();
  // Only numbers that name a drive select it; a negative number names none
  // and is refused like any number past the end.
  if (number >= 0 && number < DiskCount) SelectedDisk = &DiskList[number];
}

// --- Locking-range screens ----------------------------------------------------

void ShowLRs(std::vector<LockingRangeInfo> ranges) {
  const std::string rule(103, '=');
  std::cout << "Now status" << '\n'
            << rule << '\n'
            << "Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked"
               "    WriteLocked"
            << '\n';
  for (const LockingRangeInfo& range : ranges) {
    std::cout << std::setw(2) << range.GetIndex() << std::setw(20) << range.GetStartLocation()
              << std::setw(10) << range.GetLength();
    PrintLockFlags(range, 12);
  }
  std::cout << rule << '\n';
}

void ShowSpecLRs(std::vector<LockingRangeInfo> ranges) {
  const std::string prefix = SelectedDisk->GetPrefix();
  // NVMe partition names are longer ("/dev/nvme0n1p1"), so the name column
  // is wider and the start column narrower.
  const bool nvme = prefix.find("nvme") != std::string::npos;
  std::cout << prefix << '\n'
            << "Now status" << '\n'
            << std::string(117, '=') << '\n'
            << "Index  LBA                Begin      Length        ReadLock Enabled   WriteLock Enabled"
               "    ReadLocked    WriteLocked"
            << '\n';
  int row = 0;
  for (const LockingRangeInfo& range : ranges) {
    if (range.GetAlias().empty()) continue;  // not a partition's range
    std::cout << std::setw(2) << ++row << std::setw(nvme ? 14 : 10) << range.GetAlias()
              << std::setw(nvme ? 15 : 20) << range.GetStartLocation() << std::setw(13)
              << range.GetLength();
    PrintLockFlags(range, 15);
  }
  std::cout << std::string(116, '=') << '\n';
}

namespace {

void ShowRangeTable(const std::vector<LockingRangeInfo>& ranges) {
  if (SelectedDisk->GetParted()) {
    ShowSpecLRs(ranges);
  } else {
    ShowLRs(ranges);
  }
}

// The range list, freshly read from the drive.
std::vector<LockingRangeInfo> RefreshedRanges() {
  SelectedDisk->UpdateLockingRangesStatus();
  return SelectedDisk->GetLRInfo();
}

// Area k of a partitioned drive is locking range k; nothing (reported) for
// a non-number, 0 or an area past the last partition.
std::optional<uint32_t> PickArea() {
  std::cout << "Which Logical Block Area do you want to setup (1 ~ " << SelectedDisk->GetBlockNum()
            << ")? others:exit  ";
  const std::optional<int> area = ReadNumber();
  if (!IsArea(area)) {
    ReportWrongIndex();
    return std::nullopt;
  }
  return static_cast<uint32_t>(*area);
}

// A range of the list; a non-number means range 0. Nothing (reported) for a
// number past the list, which refuses everything when the list is empty.
std::optional<uint32_t> PickRange(const std::vector<LockingRangeInfo>& ranges) {
  std::cout << "Which Locking Range you want to setup (0 ~ " << ranges.size() - 1 << ")? others:exit  ";
  const int index = ReadNumberOr(0);
  if (!InBounds(index, 0, ranges.size())) {
    ReportWrongIndex();
    return std::nullopt;
  }
  return static_cast<uint32_t>(index);
}

}  // namespace

void LockingRanges() {
  ShowRangeTable(RefreshedRanges());
  PauseForKey();
}

void SetStateofLR() {
  const std::vector<LockingRangeInfo> ranges = RefreshedRanges();
  const bool parted = SelectedDisk->GetParted();
  ShowRangeTable(ranges);
  const std::optional<uint32_t> index = parted ? PickArea() : PickRange(ranges);
  if (index) {
    const std::string mode = AskProtectionMode(parted ? kAreaModePrompt : kRangeModePrompt);
    const uint32_t enable = AskEnable("Enable or disable Locking Range (1: enable; others: diasble)? ");
    ApplyProtection(*index, mode, enable);
  }
  PauseForKey();
}

void SpecialActionLR0() {
  const uint32_t enable = AskEnable("Enable or disable Locking Range 0 (1: enable; others: diasble)? ");
  std::cout << "Continue set protection mode?(Y/N)? ";
  if (ReadYes()) ApplyProtection(0, AskProtectionMode(kRangeModePrompt), enable);
  PauseForKey();
}

// Range 0, the global range, has no address of its own.
void SetAddressofLR() {
  const std::vector<LockingRangeInfo> ranges = RefreshedRanges();
  ShowLRs(ranges);
  std::cout << "Which LR you want to setup (1 ~ " << ranges.size() - 1 << ")?  others: exit  ";
  const std::optional<int> index = ReadNumber();
  if (!InBounds(index, 1, ranges.size())) {
    ReportWrongIndex();
    PauseForKey();
    return;
  }
  // "(align 8)" is advice only; neither value is checked.
  std::cout << "Where should this LR begin (align 8)? ";
  const uint64_t start = ReadBlockNumber();
  std::cout << "What is this LR's length (align 8)? ";
  const uint64_t length = ReadBlockNumber();
  if (SelectedDisk->SetupLockingRange(static_cast<uint32_t>(*index), start, length)) {
    std::cout << "Set done" << '\n';
  } else {
    std::cout << "SetupLockingRange Error" << '\n';
  }
  PauseForKey();
}

// --- Privilege screens --------------------------------------------------------

void GetAccessSetting() {
  std::cout << '\n';
  SelectedDisk->ListAccessRight();
}

namespace {

// The range to grant on: area 1 to the last partition, or range 0 to 8 with
// a non-number meaning range 0. Nothing (reported) otherwise.
std::optional<uint32_t> PickPrivilegeRange() {
  const bool parted = SelectedDisk->GetParted();
  if (parted) {
    std::cout << "Which Logical Block Area do you want to setup?(1~ " << SelectedDisk->GetBlockNum() << ")?";
  } else {
    std::cout << "Which Locking Range you want to setup (0 ~ 8)? ";
  }
  const std::optional<int> number = parted ? ReadNumber() : ReadNumberOr(0);
  if (!(parted ? IsArea(number) : InBounds(number, 0, 9))) {
    std::cout << "Wrong locking range choosen!!" << '\n';
    return std::nullopt;
  }
  return static_cast<uint32_t>(*number);
}

// "1,3" becomes "User1 User3 ". User 0 and repeats pass; nothing (reported)
// for a piece that is not a number or a user past the supported count.
std::optional<std::string> ParseUserList(const std::string& answer) {
  const uint32_t users = SelectedDisk->GetSupportedUserSize();
  std::string text;
  for (const std::string& piece : ParseItems(answer, ",")) {
    const std::optional<int> user = ToInt(piece);
    if (!user) {
      std::cout << "Wrong user list input!!" << '\n';
      return std::nullopt;
    }
    if (!InBounds(user, 0, uint64_t{users} + 1)) {
      std::cout << "Only support User1 ~ User" << users << "!!" << '\n';
      return std::nullopt;
    }
    text += "User" + std::to_string(static_cast<uint32_t>(*user)) + " ";
  }
  return text;
}

// Asks for the users and, once confirmed, grants them the range.
void GrantUsers(uint32_t index) {
  std::cout << "Please enter which users to give lock privilege (e.g. 1,2,3 ): ";
  const std::optional<std::string> users = ParseUserList(ReadWord());
  if (!users) return;
  std::cout << "The user list is: " << "result:  " << *users << '\n';
  std::cout << "Are you sure to give them priviledge? (Y/N): ";
  if (ReadYes()) {
    const bool granted = SelectedDisk->SetPrevilege2LR(index, *users);
    std::cout << (granted ? "Set Priviledge OK!!" : "Set Priviledge fail!!") << '\n';
  }
  std::cout << '\n';
}

}  // namespace

void SetAccessSetting_TCG() {
  GetAccessSetting();
  std::cout << "\n\n";
  const std::optional<uint32_t> index = PickPrivilegeRange();
  if (index) GrantUsers(*index);
  PauseForKey();
}

namespace {

// The range to clear: area 1 to the last partition, or a range of the
// drive's list with a non-number meaning range 0. Nothing (reported)
// otherwise.
std::optional<uint32_t> PickRangeToClear(uint64_t rangeCount) {
  const bool parted = SelectedDisk->GetParted();
  if (parted) {
    std::cout << "Which Logical Block Area do you want to setup (1~" << SelectedDisk->GetBlockNum() << ")?";
  } else {
    std::cout << "Which Locking Range you want to setup (0~8)?" << '\n';
  }
  const std::optional<int> number = parted ? ReadNumber() : ReadNumberOr(0);
  if (!(parted ? IsArea(number) : InBounds(number, 0, rangeCount))) {
    ReportWrongIndex();
    return std::nullopt;
  }
  return static_cast<uint32_t>(*number);
}

}  // namespace

void RemoveUsers() {
  // The count bounds every answer of the screen; it is not read again.
  const uint64_t rangeCount = RefreshedRanges().size();
  do {
    const std::optional<uint32_t> index = PickRangeToClear(rangeCount);
    if (!index) break;
    SelectedDisk->RemoveAllUserFromLR(*index);
    std::cout << "remove done" << '\n' << '\n';
    GetAccessSetting();
    std::cout << "\n\n" << "Do you want to continue removing? (Y/N)" << '\n';
  } while (ReadYes());
  PauseForKey();
}

// --- Owner set-up, admin password and flash lock -----------------------------

namespace {

// Takes the drive into ownership with password. On "takeOwnership complete"
// the password is kept for both authorities and the drive re-read; a failure
// is only reported; output with neither phrase changes nothing.
void TakeOwnership(const std::string& password) {
  std::stringstream output = GetCmdResponse(SelectedDisk->SedutilLine("--initialSetup", password));
  std::string line;
  while (std::getline(output, line)) {
    // "complete" is looked for first, so a line holding both counts as complete.
    if (line.find("takeOwnership complete") != std::string::npos) {
      SelectedDisk->SetAdmin1Pwd(password);
      SelectedDisk->SetSIDPwd(password);
      SelectedDisk->UpdateOPALStatus();
      SelectedDisk->UpdateLockingRangesStatus();
      std::cout << "Enable OPAL OK" << '\n';
      return;
    }
    if (line.find("takeOwnership failed") != std::string::npos) {
      std::cout << "Enable OPAL FAIL" << '\n';
      return;
    }
  }
}

// Asks until the operator confirms a password: only a yes leaves.
std::string AskNewAdminPassword() {
  while (true) {
    std::cout << "Please enter your admin password (w/o space): ";
    const std::string password = ReadWord();
    std::cout << "Your password is: " << password << '\n'
              << "Are you sure to use this password? (Y/N): ";
    if (ReadYes()) return password;
  }
}

// The last blank-separated piece of dmidecode's UUID line without its final
// character (the newline) and without hyphens.
std::string FlashLockPassword(const std::string& uuidText) {
  const std::vector<std::string> pieces = ParseItems(uuidText, " ");
  std::string password = pieces.empty() ? "" : pieces.back();
  if (!password.empty()) password.pop_back();
  password.erase(std::remove(password.begin(), password.end(), '-'), password.end());
  return password;
}

}  // namespace

// The steps all run even after a failed take-ownership.
int FlashLock() {
  std::string uuidText;
  shellCmd("sudo dmidecode | grep -i uuid", uuidText);
  const std::string password = FlashLockPassword(uuidText);
  std::cout << "Are you sure to flash lock(Y/N)?" << '\n';
  if (!ReadYes()) return -1;
  TakeOwnership(password);
  ApplyProtection(0, "LK", 1);
  SelectedDisk->UnSetMBR();
  std::cout << "Please wait...   " << '\n';
  SelectedDisk->LoadImage("PBA_flash.img");
  SelectedDisk->SetMBR();
  return 0;
}

namespace {

// Action 3 on a drive not yet enabled. True when the flash lock ran and the
// program is to end, so that the machine is powered off.
bool FlashLockScreen() {
  if (FlashLock() != 0) {
    PauseForKey();
    return false;
  }
  std::cout << '\n' << "Please poweroff " << '\n';
  WaitForKey();
  return true;
}

// Action 11: the listing of the ranges with the typed password is the check.
void SetAdmin1SidPW() {
  std::cout << "Please enter your admin password (w/o space): ";
  const std::string password = ReadWord();
  std::cout << "Your password is: " << password << '\n'
            << "Are you sure this is your admin password? (Y/N): ";
  if (ReadYes()) {
    SelectedDisk->SetAdmin1Pwd(password);
    SelectedDisk->SetSIDPwd(password);
    if (SelectedDisk->UpdateLockingRangesStatus()) {
      std::cout << "Password correct" << '\n';
    } else {
      std::cout << "Password wrong, please try again" << '\n';
      SelectedDisk->SetAdmin1Pwd("");
      SelectedDisk->SetSIDPwd("");
    }
  }
  PauseForKey();
}

}  // namespace

void EnableOPAL() {
  if (SelectedDisk->GetOPALVer() == 0) {
    std::cout << "Not support OPAL" << '\n';
  } else if (SelectedDisk->GetOPALEnable()) {
    std::cout << "OPAL already enabled" << '\n';
  } else {
    TakeOwnership(AskNewAdminPassword());
  }
  PauseForKey();
}

namespace {

// --- User password screen -----------------------------------------------------

// Action 6. The password is set even when enabling the user failed.
void EnableUser() {
  SelectedDisk->ListUserStatus();
  do {
    std::cout << "Which User you want to setup (1 ~ 9)? ";
    const std::optional<int> number = ReadNumber();
    if (!InBounds(number, 1, uint64_t{SelectedDisk->GetSupportedUserSize()} + 1)) {
      ReportWrongIndex();
      break;
    }
    const uint32_t user = static_cast<uint32_t>(*number);
    std::cout << "Please enter User" << user << "'s password (w/o space): ";
    const std::string password = ReadWord();
    std::cout << "The password is: " << password << '\n';
    // Each verdict is printed after the operation: enabling echoes the tool.
    const bool enabled = SelectedDisk->EnableUser(user);
    std::cout << "Enable User" << user << (enabled ? " OK!!" : " fail!!") << '\n';
    const bool passwordSet = SelectedDisk->SetUserPwd(user, password);
    std::cout << "Set User" << user << (passwordSet ? " password OK!!" : " password fail!!") << '\n';
    std::cout << '\n' << "Do you want to continue setting user's password? (Y/N)" << '\n';
  } while (ReadYes());
  PauseForKey();
}

// --- MBR, pre-boot image, revert and erase ------------------------------------

// Typed as the PSID exactly so (case counts), the keyword stands for the
// built-in default PSID.
const char* const kDefaultPsidKeyword = "XQJ";
const char* const kDefaultPsid = "80213657490812736459018273645091";
constexpr size_t kPsidLength = 32;

void SetMBREnable() {
  std::cout << "Enable(Y) or Disable(N) ?  ";
  if (ReadYes()) {
    SelectedDisk->EnableMBR();
  } else {
    SelectedDisk->DisableMBR();
  }
  PauseForKey();
}

void SetMBRDone() {
  std::cout << "SetMBRDone ON(Y)  or  OFF(N) ?  ";
  if (ReadYes()) {
    SelectedDisk->SetMBR();
  } else {
    SelectedDisk->UnSetMBR();
  }
  PauseForKey();
}

void SetPBAFile() {
  std::cout << "Enter image name/path ( or key 'default' ):   ";
  const std::string image = ReadWord();
  std::cout << "Please wait...   " << '\n';
  SelectedDisk->LoadImage(image);
  PauseForKey();
}

void DisableOPAL() {
  std::cout << "Are you sure to disable? (Y/N): ";
  if (ReadYes()) std::cout << (SelectedDisk->DisableOPAL() ? "Disable ok !" : "FAIL") << '\n';
  PauseForKey();
}

// Only the length of the PSID is checked, and only after the confirmation.
void EraseAllData() {
  std::cout << "Please enter your PSID (w/o space): ";
  std::string psid = ReadWord();
  if (psid == kDefaultPsidKeyword) psid = kDefaultPsid;
  std::cout << "Your PSID is: " << psid << '\n' << "Are you sure this is your PSID? (Y/N): ";
  if (ReadYes()) {
    if (psid.size() != kPsidLength) {
      std::cout << "PSID length is wrong" << '\n';
    } else {
      std::cout << (SelectedDisk->EraseAllData(psid) ? "Erase All Data OK" : "Erase All Data FAIL") << '\n';
    }
  }
  PauseForKey();
}

// --- The menu --------------------------------------------------------------

// The drive states that decide what the menu offers, as bits of a set.
enum MenuState : unsigned {
  kNoOpal = 1u << 0,            // the scan reported no Opal version
  kNotOwned = 1u << 1,          // Opal not enabled
  kLockedNoPassword = 1u << 2,  // enabled and locked, admin password not held
  kNoPassword = 1u << 3,        // enabled, not locked, admin password not held
  kRanges = 1u << 4,            // enabled, admin password held
  kAreas = 1u << 5,             // the same, the drive handled as partitions
};
constexpr unsigned kPasswordHeld = kRanges | kAreas;
constexpr unsigned kOwned = kLockedNoPassword | kNoPassword | kPasswordHeld;
constexpr unsigned kEveryState = kNoOpal | kNotOwned | kOwned;

MenuState StateOf(const DiskInfo& disk) {
  if (disk.GetOPALVer() == 0) return kNoOpal;
  if (!disk.GetOPALEnable()) return kNotOwned;
  if (disk.GetAdmin1Pwd().empty()) return disk.GetOPALLocked() ? kLockedNoPassword : kNoPassword;
  return disk.GetParted() ? kAreas : kRanges;
}

// One line of the menu: action number, its text, the states that offer it and
// its screen, which returns true when the program is to end. An empty line
// has the number kBlank and no screen.
struct MenuEntry {
  int number;
  const char* text;
  unsigned states;
  bool (*screen)();
};
constexpr int kBlank = -1;
constexpr MenuEntry Blank(unsigned states) { return {kBlank, "", states, nullptr}; }

bool Exit() { return true; }

template <void (*Screen)()>
bool ThenMenu() {
  Screen();
  return false;
}

bool ShowAccessRights() {
  GetAccessSetting();
  PauseForKey();
  return false;
}

// The whole menu in the order printed; a state offers the entries that name it.
// A partitioned drive speaks of areas, has no address action (5) and has the
// global range's action (12) instead.
const MenuEntry kMenu[] = {
    {0, "Exit", kEveryState, Exit},
    {1, "Select Disk", kEveryState, ThenMenu<SelectDisk>},
    {2, "Initial this OPAL Device and Set Admin Password (Enable OPAL)", kNotOwned, ThenMenu<EnableOPAL>},
    {3, "Flash Lock", kNotOwned, FlashLockScreen},
    Blank(kPasswordHeld),
    {3, "Look up Logical Block Area", kAreas, ThenMenu<LockingRanges>},
    {4, "Set State of Logical Block Area", kAreas, ThenMenu<SetStateofLR>},
    {3, "Look up Locking Range", kRanges, ThenMenu<LockingRanges>},
    {4, "Set State of Locking Range", kRanges, ThenMenu<SetStateofLR>},
    {5, "Set Address of Locking Range", kRanges, ThenMenu<SetAddressofLR>},
    Blank(kPasswordHeld),
    {6, "Set User's Password", kPasswordHeld, ThenMenu<EnableUser>},
    Blank(kPasswordHeld),
    {7, "Check Access Right of Locking Range", kPasswordHeld, ShowAccessRights},
    {8, "Set Previleges to Logical Block Area", kAreas, ThenMenu<SetAccessSetting_TCG>},
    {9, "Remove All Users from Logical Block Area", kAreas, ThenMenu<RemoveUsers>},
    Blank(kAreas),
    {12, "Enable/Disble LockingRange 0 (global)", kAreas, ThenMenu<SpecialActionLR0>},
    Blank(kAreas),
    {8, "Set Previleges to Locking Range", kRanges, ThenMenu<SetAccessSetting_TCG>},
    {9, "Remove All Users from Locking Range", kRanges, ThenMenu<RemoveUsers>},
    Blank(kRanges),
    {11, "Enter Admin1 / SID Password", kLockedNoPassword, ThenMenu<SetAdmin1SidPW>},
    {11, "Set Admin1 / SID Password", kNoPassword, ThenMenu<SetAdmin1SidPW>},
    {13, "Set MBR Enable or not", kPasswordHeld, ThenMenu<SetMBREnable>},
    {14, "Set/Unset MBR", kPasswordHeld, ThenMenu<SetMBRDone>},
    {15, "Load Pre-Boot Authorization Image", kPasswordHeld, ThenMenu<SetPBAFile>},
    Blank(kPasswordHeld),
    {16, "Disable OPAL (revert)", kPasswordHeld, ThenMenu<DisableOPAL>},
    {17, "Erase All Data", kOwned, ThenMenu<EraseAllData>},
    Blank(kOwned),
};

// The entries the selected drive's state offers, empty lines included, in
// the order printed: the menu prints these and dispatches among them.
std::vector<const MenuEntry*> OfferedEntries() {
  const MenuState state = StateOf(*SelectedDisk);
  std::vector<const MenuEntry*> offered;
  for (const MenuEntry& entry : kMenu) {
    if (entry.states & state) offered.push_back(&entry);
  }
  return offered;
}

// "   3.  Look up Locking Range", "   11. Set Admin1 / SID Password".
std::string MenuLine(const MenuEntry& entry) {
  if (entry.number == kBlank) return "";
  std::string label = std::to_string(entry.number) + ".";
  label.resize(4, ' ');
  return "   " + label + entry.text;
}

// Runs the screen of an offered action; true when the program is to end.
bool RunAction(int action) {
  for (const MenuEntry* entry : OfferedEntries()) {
    if (entry->number == action) return entry->screen();
  }
  return false;
}

}  // namespace

void ShowMenu(std::vector<int>& choiceList) {
  if (!ClearScreen()) return;
  ShowBanner();
  ShowDriveSummary(*SelectedDisk);
  std::cout << '\n' << " Action:" << '\n';
  for (const MenuEntry* entry : OfferedEntries()) {
    std::cout << MenuLine(*entry) << '\n';
    if (entry->number != kBlank) choiceList.push_back(entry->number);
  }
  std::cout << std::string(49, '-') << '\n';
}

int VeltrakMain() {
  ScanDisks();
  if (DiskCount == 0) {
    std::cout << "No disks found" << std::endl;
    return -1;
  }
  bool endProcess = false;
  while (!endProcess) {
    SelectedDisk->UpdateOPALStatus();
    std::vector<int> choiceList;
    ShowMenu(choiceList);
    std::cout << "Enter action number: ";
    int action = ReadActionNumber();
    if (std::find(choiceList.begin(), choiceList.end(), action) == choiceList.end()) {
      std::cout << "Unsupported action" << std::endl;
      action = 0;
    }
    endProcess = RunAction(action);
  }
  return 0;
}

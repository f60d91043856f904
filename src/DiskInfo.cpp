#include "DiskInfo.h"

#include <iostream>
#include <stdexcept>

#include "utils.h"

int apply_table[kApplyTableRows][kApplyTableColumns] = {};

namespace {

uint32_t OpalVersionFromScan(const std::string& text) {
  try {
    return static_cast<uint32_t>(std::stoi(text));
  } catch (const std::logic_error&) {
    return 0;  // "No" and other non-numbers: no Opal
  }
}

// "/dev/sdc" gives 2, "/dev/nvme1n1" gives 1, anything else 0. A "/dev/sd"
// with nothing after it yields the unsigned value of -97, accepted as it is.
uint32_t DriveIndexFromPath(const std::string& path) {
  const size_t sd = path.find("/dev/sd");
  if (sd != std::string::npos) return static_cast<uint32_t>(path.c_str()[sd + 7] - 'a');
  const size_t nvme = path.find("/dev/nvme");
  if (nvme != std::string::npos) return static_cast<uint32_t>(std::stoi(path.substr(nvme + 9, 1)));
  return 0;
}

// Range header numbers are read as signed 32-bit values and widened with
// their sign, so a negative one becomes a huge unsigned block address.
uint64_t WidenedBlockNumber(const std::string& text) {
  return static_cast<uint64_t>(static_cast<int64_t>(std::stoi(text)));
}

}  // namespace

DiskInfo::DiskInfo(const std::string& FD, const std::string& DN, const std::string& FW,
                   const std::string& OPALVer)
    : m_FileDescriptor(FD), m_DeviceName(DN), m_Firmware(FW) {
  for (L_Part& part : m_parts) part = L_Part{"0", "0", "0"};
  m_OPALVer = OpalVersionFromScan(OPALVer);
  m_DriveIndex = DriveIndexFromPath(FD);
}

void DiskInfo::SetupLBA(uint32_t index, std::string start, std::string end) {
  if (index >= m_parts.size()) return;
  m_parts[index].start = std::move(start);
  m_parts[index].end = std::move(end);
}

std::string DiskInfo::PartitionName(int64_t number) const {
  const bool nvme = m_PrefixDevice.find("nvme") != std::string::npos;
  return m_PrefixDevice + (nvme ? "p" : "") + std::to_string(number);
}

std::string DiskInfo::SedutilLine(const std::string& operation, const std::string& password) const {
  return kSedutil + operation + " " + password + " " + m_FileDescriptor;
}

bool DiskInfo::UpdateOPALStatus() {
  if (m_OPALVer == 0) return true;
  std::stringstream output = GetCmdResponse(kSedutil + "--query " + m_FileDescriptor);
  if (!ReadUntilLineWith(output, "Locking function", Echo::kSilent)) return false;
  std::string flags;
  std::getline(output, flags);
  m_OPALSupport = FlagAfter(flags, "LockingSupported = ");
  m_OPALEnable = FlagAfter(flags, "LockingEnabled = ");
  // The first "Locked = " of the line is the leading Locked field.
  m_OPALLocked = FlagAfter(flags, "Locked = ");
  return true;
}

bool DiskInfo::UpdateLockingRangesStatus() {
  if (OpalInactive()) return true;
  std::stringstream output = GetCmdResponse(SedutilLine("--listLockingRanges", m_Admin1Pwd));
  m_LR.clear();
  uint32_t count_index = 1;
  std::string line;
  while (std::getline(output, line)) {
    if (line.find("Begin") == std::string::npos) {
      if (line.find("EndSession Failed") != std::string::npos) return false;
      continue;
    }
    // A header reads like "LR1 Begin 2048 for 4096".
    const std::vector<std::string> items = ParseItems(line, " ");
    if (items.size() != 5) {
      std::cout << "list lockingranges error: " << line << std::endl;
      PauseForKey();
      m_LR.clear();
      return false;
    }
    const uint32_t index = static_cast<uint32_t>(std::stoi(items[0].substr(2)));
    const uint64_t start = WidenedBlockNumber(items[2]);
    const uint64_t length = WidenedBlockNumber(items[4]);
    std::string flags;
    std::getline(output, flags);
    LockingRangeInfo range(index, start, length, FlagAfter(flags, "RLKEna = "),
                           FlagAfter(flags, "RLocked = "), FlagAfter(flags, "WLKEna = "),
                           FlagAfter(flags, "WLocked = "));
    // In partition mode ranges 1, 2, ... are named after the partitions.
    if (part_number != 0 && part_number >= count_index && index != 0) {
      range.SetAlias(PartitionName(count_index));
      ++count_index;
    }
    m_LR.push_back(range);
  }
  return true;
}

namespace {

const std::string kAccessPhrase = "can access Locking Range";

// Runs a tool command line and reads its output up to the first line that
// holds phrase; whether it was found is the operation's verdict.
bool RunUntilLineWith(const std::string& command, const std::string& phrase, Echo echo) {
  std::stringstream output = GetCmdResponse(command);
  return ReadUntilLineWith(output, phrase, echo);
}

// The success phrase of sedutil's range reports, bound to the range number
// so that a report about another range does not count.
std::string RangePhrase(uint32_t index, const std::string& suffix) {
  return "LockingRange" + std::to_string(index) + suffix;
}

// Opal user authorities are always named with a fixed three-zero prefix.
std::string OpalUserName(uint32_t index) { return "User000" + std::to_string(index); }

// The companion tool's command sequence that puts a range into a protection
// mode; empty for a mode that is not one of "RW", "RO", "LK".
std::vector<std::string> ProtectionModeCommands(uint32_t index, const std::string& status,
                                                const std::string& password,
                                                const std::string& device) {
  const std::string range = std::to_string(index) + " ";
  const std::string enable = kLantivo + "--enableLockingRange " + range + password;
  const std::string disable = kLantivo + "--disableLockingRange " + range + password;
  const std::string set = kLantivo + "--setLockingRange " + range;
  const std::string tail = password + " " + device;
  if (status == "RW") return {disable + " RW " + device, set + "N N " + tail};
  if (status == "RO") {
    return {disable + " R " + device, enable + " W " + device, set + "N Y " + tail};
  }
  if (status == "LK") return {enable + " RW " + device, set + "Y Y " + tail};
  return {};
}

// The ranges a row of apply_table marks, as "LR0 LR2 ", or "N/A" for none.
std::string RangesOfRow(size_t row) {
  std::string ranges;
  // Status lines beyond the matrix's last row have no marks to show.
  if (row < kApplyTableRows) {
    for (int column = 0; column < kApplyTableColumns; ++column) {
      if (apply_table[row][column] == 1) ranges += "LR" + std::to_string(column) + " ";
    }
  }
  return ranges.empty() ? "N/A" : ranges;
}

// Marks the first rows of a column, one per name of an access-list line.
// Names beyond the tenth and ranges beyond the ninth fall outside the matrix
// and are ignored.
void MarkAccessList(const std::string& line, size_t column) {
  const std::vector<std::string> parts = ParseItems(line, kAccessPhrase);
  // An empty line has no parts at all: it names nobody.
  if (parts.empty() || column >= kApplyTableColumns) return;
  const size_t names = ParseItems(parts[0], " ").size();
  for (size_t row = 0; row < names && row < kApplyTableRows; ++row) apply_table[row][column] = 1;
}

void PrintNames(const std::vector<std::string>& names) {
  for (const std::string& name : names) std::cout << "  " << name;
  std::cout << "\n";
}

}  // namespace

bool DiskInfo::SetupLockingRange(uint32_t index, uint64_t startLocation, uint64_t length) {
  if (OpalInactive()) return true;
  const std::string operation = "--setupLockingRange " + std::to_string(index) + " " +
                                std::to_string(startLocation) + " " + std::to_string(length);
  return RunUntilLineWith(SedutilLine(operation, m_Admin1Pwd), RangePhrase(index, " reKeyed"),
                          Echo::kShow);
}

bool DiskInfo::SetLockingRangeStatus(uint32_t index, const std::string& status) {
  if (OpalInactive()) return true;
  // Any reported state counts: the phrase stops at "set to ".
  return RunUntilLineWith(
      SedutilLine("--setLockingRange " + std::to_string(index) + " " + status, m_Admin1Pwd),
      RangePhrase(index, " set to "), Echo::kSilent);
}

bool DiskInfo::EnableLockingRange(uint32_t index, bool enable) {
  if (OpalInactive()) return true;
  const std::string range = " " + std::to_string(index);
  if (enable) {
    return RunUntilLineWith(SedutilLine("--enableLockingRange" + range, m_Admin1Pwd),
                            RangePhrase(index, " enabled ReadLocking,WriteLocking"), Echo::kSilent);
  }
  return RunUntilLineWith(SedutilLine("--disableLockingRange" + range, m_Admin1Pwd),
                          RangePhrase(index, " disabled"), Echo::kSilent);
}

bool DiskInfo::SetLockingRangeStatus_TCG_V2_5(uint32_t index, const std::string& status,
                                              uint32_t enable) {
  // Only enabling acts; any other request is a silent success.
  if (OpalInactive() || enable != 1) return true;
  for (const std::string& command :
       ProtectionModeCommands(index, status, m_Admin1Pwd, m_FileDescriptor)) {
    std::stringstream output = GetCmdResponse(command);
    // Nothing is undone: an earlier command's change stays on the drive.
    if (!EveryLineHolds(output, "success")) return false;
  }
  return true;
}

bool DiskInfo::EnableUser(uint32_t index) {
  if (OpalInactive()) {
    std::cout << "WTF" << std::endl;
    return true;
  }
  if (index > 9) return true;
  return RunUntilLineWith(
      kSedutil + "--enableUser " + m_Admin1Pwd + " " + OpalUserName(index) + " " + m_FileDescriptor,
      "has been enabled", Echo::kShow);
}

bool DiskInfo::SetUserPwd(uint32_t index, const std::string& password) {
  if (OpalInactive()) return true;
  if (index > 9) return false;
  return RunUntilLineWith(kSedutil + "--setPassword " + m_Admin1Pwd + " " + OpalUserName(index) +
                              " " + password + " " + m_FileDescriptor,
                          "password changed", Echo::kSilent);
}

bool DiskInfo::SetPrevilege2LR(uint32_t index, std::string users) {
  // The tool's report is not read: a grant always counts as done.
  GetCmdResponse(kLantivo + "--Add_ACE_Locking_range " + m_FileDescriptor + " " + m_Admin1Pwd +
                 " " + std::to_string(index) + " " + users);
  return true;
}

bool DiskInfo::RemoveAllUserFromLR(uint32_t index) {
  if (OpalInactive()) return true;
  if (index > 8) return false;
  GetCmdResponse(kLantivo + "--Delete_AllUser_ACE_Locking_range " + m_FileDescriptor + " " +
                 m_Admin1Pwd + " " + std::to_string(index));
  return true;
}

bool DiskInfo::ListAccessSetting() const { return true; }

bool DiskInfo::SetAccessSetting(uint32_t, bool, std::vector<uint32_t>&) { return true; }

bool DiskInfo::DisableOPAL() {
  // Each step runs whatever the one before it printed.
  GetCmdResponse(SedutilLine("--disableLockingRange 0", m_Admin1Pwd));
  GetCmdResponse(SedutilLine("--revertNoErase", m_Admin1Pwd));
  GetCmdResponse(SedutilLine("--revertTPer", m_SIDPwd));
  return true;
}

bool DiskInfo::RevertSSD() {
  std::stringstream output = GetCmdResponse(SedutilLine("--revertTPer", m_SIDPwd));
  EchoAllLines(output);
  return true;
}

bool DiskInfo::EraseAllData(const std::string& yourPSID) {
  std::stringstream output =
      GetCmdResponse(SedutilLine("--yesIreallywanttoERASEALLmydatausingthePSID", yourPSID));
  // Only the first line decides; a warning before the report means failure.
  std::string first;
  std::getline(output, first);
  return first.find("successfully") != std::string::npos;
}

bool DiskInfo::RunShadowMBRCommand(const std::string& command, Echo echo) {
  if (OpalInactive()) return true;
  std::stringstream output = GetCmdResponse(command);
  if (echo == Echo::kShow) EchoAllLines(output);
  return false;
}

bool DiskInfo::EnableMBR() {
  return RunShadowMBRCommand(SedutilLine("--setMBREnable ON", m_Admin1Pwd), Echo::kSilent);
}

bool DiskInfo::DisableMBR() {
  return RunShadowMBRCommand(SedutilLine("--setMBREnable OFF", m_Admin1Pwd), Echo::kSilent);
}

bool DiskInfo::SetMBR() {
  return RunShadowMBRCommand(SedutilLine("--setMBRDone ON", m_Admin1Pwd), Echo::kShow);
}

bool DiskInfo::UnSetMBR() {
  return RunShadowMBRCommand(SedutilLine("--setMBRDone OFF", m_Admin1Pwd), Echo::kShow);
}

bool DiskInfo::LoadImage(std::string file) {
  if (file == "default") file = "PBA.img";
  return RunShadowMBRCommand(
      kSedutil + "--loadPBAimage " + m_Admin1Pwd + " " + file + " " + m_FileDescriptor,
      Echo::kShow);
}

bool DiskInfo::OPAL_ScanResult() {
  std::stringstream output = GetCmdResponse(kLantivo + "--scan ");
  EchoAllLines(output);
  return true;
}

std::string DiskInfo::AccessListCommand(uint32_t range) const {
  return kLantivo + "--list_User_ACE_Locking_range " + m_FileDescriptor + " " + m_Admin1Pwd + " " +
         std::to_string(range);
}

bool DiskInfo::ListAccessRight() const {
  for (size_t i = 0; i < m_LR.size(); ++i) {
    const bool partition = i < part_number;
    // Partitions ask range i + 1; the positions after them ask i again.
    const uint32_t range = static_cast<uint32_t>(partition ? i + 1 : i);
    std::stringstream output = GetCmdResponse(AccessListCommand(range));
    std::string line;
    while (std::getline(output, line)) {
      const std::vector<std::string> parts = ParseItems(line, kAccessPhrase);
      if (parts.size() != 2) {
        std::cout << "list lockingranges error: " << line << std::endl;
        PauseForKey();
        return false;
      }
      if (part_number == 0) {
        std::cout << "Access Right of Locking Range " << parts[1] << " :   ";
        PrintNames(ParseItems(parts[0], " "));
      } else if (partition) {
        const int number = std::stoi(parts[1]);
        std::cout << number << ", Access Right of " << PartitionName(number) << " :  ";
        PrintNames(ParseItems(parts[0], " "));
      }
    }
  }
  return true;
}

bool DiskInfo::ListUserStatus() const {
  for (size_t i = 0; i < m_LR.size(); ++i) {
    std::stringstream output = GetCmdResponse(AccessListCommand(static_cast<uint32_t>(i)));
    std::string line;
    while (std::getline(output, line)) MarkAccessList(line, i);
  }
  // The tool wants the password before the device here, unlike every other command.
  std::stringstream status =
      GetCmdResponse(kLantivo + "--ListUserStatus " + m_Admin1Pwd + " " + m_FileDescriptor);
  std::string line;
  // The j-th status line (from 0) reads row j + 1: row 0 is never shown.
  for (size_t row = 1; std::getline(status, line); ++row) {
    std::cout << line << ", " << RangesOfRow(row) << "\n";
  }
  std::cout << "----------------------------" << std::endl;
  return true;
}

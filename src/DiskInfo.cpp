#include "DiskInfo.h"

#include <iostream>
#include <stdexcept>

#include "utils.h"

int apply_table[kApplyTableRows][kApplyTableColumns] = {};

namespace {

const std::string kSedutil = "./sedutil-cli -n ";

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
  std::stringstream output =
      GetCmdResponse(kSedutil + "--listLockingRanges " + m_Admin1Pwd + " " + m_FileDescriptor);
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

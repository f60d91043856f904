#include "drive.h"

#include <cstdio>

namespace {

constexpr uint64_t kAlignment = 8;

// A serial number that stays the same for the same PSID, so a re-created
// scenario shows the same drives.
std::string SerialFor(const std::string& psid) {
  uint64_t hash = 1469598103934665603ULL;  // FNV-1a
  for (unsigned char c : psid) hash = (hash ^ c) * 1099511628211ULL;
  char text[17];
  std::snprintf(text, sizeof text, "%016llX", static_cast<unsigned long long>(hash));
  return text;
}

void ReplaceKey(LockingRange& range) { ++range.dataKey; }

// A range as the Locking SP defines it before anyone configures it.
void ClearRange(LockingRange& range) {
  const unsigned key = range.dataKey;
  range = LockingRange{};
  range.dataKey = key;
}

}  // namespace

Drive FactoryDrive(const std::string& device, const std::string& opal, const std::string& model,
                   const std::string& firmware, const std::string& psid, uint64_t blocks) {
  Drive drive;
  drive.device = device;
  drive.opal = opal;
  drive.model = model;
  drive.firmware = firmware;
  drive.serial = SerialFor(psid);
  drive.blocks = blocks;
  drive.psid = psid;
  drive.msid = drive.serial;  // many drives report their serial as MSID
  drive.sidPassword = drive.msid;
  return drive;
}

Drive* FindDrive(SimState& state, const std::string& device) {
  for (Drive& drive : state.drives) {
    if (drive.device == device) return &drive;
  }
  return nullptr;
}

int UserNumber(const std::string& name) {
  const bool valid = name.size() == 5 && name.compare(0, 4, "User") == 0 && name[4] >= '1' && name[4] <= '9';
  return valid ? name[4] - '0' : 0;
}

bool SupportsOpal(const Drive& drive) { return drive.opal != "No"; }

bool IsOwned(const Drive& drive) { return drive.sidPassword != drive.msid; }

bool IsNvme(const Drive& drive) { return drive.device.rfind("/dev/nvme", 0) == 0; }

bool IsLocked(const Drive& drive) {
  for (const LockingRange& range : drive.ranges) {
    if ((range.readLockEnabled && range.readLocked) || (range.writeLockEnabled && range.writeLocked)) return true;
  }
  return false;
}

void TakeOwnership(Drive& drive, const std::string& password) {
  drive.sidPassword = password;
  drive.lockingActive = true;
  drive.admin1Password = password;
  ClearRange(drive.ranges[0]);
  drive.mbrEnable = true;
  drive.mbrDone = true;
}

void RevertLockingSp(Drive& drive) {
  drive.lockingActive = false;
  drive.admin1Password.clear();
  ClearRange(drive.ranges[0]);
  for (int r = 1; r < kRangeCount; ++r) {
    ReplaceKey(drive.ranges[r]);
    ClearRange(drive.ranges[r]);
  }
  drive.users = {};
  drive.mbrEnable = false;
  drive.mbrDone = false;
  drive.pbaImage.clear();
  drive.pbaSize = 0;
}

void RevertTper(Drive& drive, Erase erase) {
  if (erase == Erase::kAlways || drive.lockingActive) ReplaceKey(drive.ranges[0]);
  if (drive.lockingActive) RevertLockingSp(drive);
  drive.sidPassword = drive.msid;
}

bool RangeAddressFits(const Drive& drive, int range, uint64_t start, uint64_t length) {
  if (start % kAlignment != 0 || length % kAlignment != 0) return false;
  if (start > drive.blocks || length > drive.blocks - start) return false;
  for (int other = 1; other < kRangeCount; ++other) {
    const LockingRange& r = drive.ranges[other];
    if (other == range || r.length == 0 || length == 0) continue;
    if (start < r.start + r.length && r.start < start + length) return false;
  }
  return true;
}

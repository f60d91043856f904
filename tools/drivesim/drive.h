// The simulated drives: what an Opal drive remembers between two commands,
// and the transitions that ownership, revert and erase make on it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

constexpr int kRangeCount = 9;  // LR0 (global) to LR8
constexpr int kUserCount = 9;   // User1 to User9
constexpr std::size_t kPasswordLimit = 32;  // bytes of a password a drive keeps

struct LockingRange {
  uint64_t start = 0;
  uint64_t length = 0;
  bool readLockEnabled = false;
  bool writeLockEnabled = false;
  bool readLocked = false;
  bool writeLocked = false;
  // Counts the range's media keys: a new key makes the old data unreadable.
  unsigned dataKey = 1;
  // Users (1 to 9) that may lock the range besides Admin1.
  std::set<int> ace;
};

struct User {
  bool enabled = false;
  std::string password;
};

struct Drive {
  std::string device;
  std::string opal;  // version code of the scan: "1", "2", "12" or "No"
  std::string model;
  std::string firmware;
  std::string serial;
  uint64_t blocks = 0;
  std::string psid;
  std::string msid;
  std::string sidPassword;  // equals msid until ownership is taken
  bool lockingActive = false;
  std::string admin1Password;
  bool mbrEnable = false;
  bool mbrDone = false;
  std::string pbaImage;  // empty: no pre-boot image in the shadow MBR
  uint64_t pbaSize = 0;
  std::array<LockingRange, kRangeCount> ranges;
  std::array<User, kUserCount> users;  // users[0] is User1
};

struct SimState {
  // Command name (without "--", any case) whose next authentication is
  // refused; "*" for any command; empty for none.
  std::string failNext;
  std::vector<Drive> drives;
};

// 1 to 9 for "User1" to "User9", the names access lists use; 0 otherwise.
int UserNumber(const std::string& name);

// How every listing writes a flag.
inline const char* YesNo(bool flag) { return flag ? "Y" : "N"; }

// A drive as it leaves the factory: not owned, Locking SP inactive.
Drive FactoryDrive(const std::string& device, const std::string& opal, const std::string& model,
                   const std::string& firmware, const std::string& psid, uint64_t blocks);

Drive* FindDrive(SimState& state, const std::string& device);

bool SupportsOpal(const Drive& drive);
bool IsOwned(const Drive& drive);
bool IsNvme(const Drive& drive);
// True when a range with locking enabled is locked for reading or writing.
bool IsLocked(const Drive& drive);

// What a successful take-ownership and Locking SP activation leave: SID and
// Admin1 share the password, the global range unlocked and not lock-enabled,
// the shadow MBR enabled and done.
void TakeOwnership(Drive& drive, const std::string& password);

// Locking SP revert keeping the global range's key: the other ranges lose
// their keys, users, access entries and the shadow MBR are reset.
void RevertLockingSp(Drive& drive);

// Back to the factory. An active Locking SP is reverted with it, which
// replaces every range's key; PSID revert always does.
enum class Erase { kIfLockingActive, kAlways };
void RevertTper(Drive& drive, Erase erase);

// True when a range may take this address: aligned to 8 blocks, inside the
// drive, not overlapping another non-empty range.
bool RangeAddressFits(const Drive& drive, int range, uint64_t start, uint64_t length);

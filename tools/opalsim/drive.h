// The emulated drives: what an Opal 2 TPer keeps between two commands (its
// Admin SP and Locking SP tables), the behaviours in which real drives
// differ (as per-drive settings), and the transitions of the life cycle:
// activation, reverts, re-keying and power cycles.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ace.h"
#include "tokens.h"
#include "uids.h"

namespace opalsim {

using opal::BooleanExpr;
using opal::Bytes;
using opal::Uid;

// Where drives disagree, each drive says what it does. The defaults are the
// common behaviour.
struct Settings {
  // Wrong passwords before an authority locks out (0: never), and whether
  // the count survives a power cycle.
  uint64_t tryLimit = 5;
  bool triesPersist = false;
  // Status of a StartSession to a Locking SP that is not active.
  int inactiveSpStatus = static_cast<int>(opal::MethodStatus::kInvalidParameter);
  // A refused StartSession answered with a bare status list ("status") or
  // with a SyncSession call carrying the status ("sync").
  std::string failedStartShape = "status";
  // Whether a stray end of session outside any session (TSN 0) gets an
  // empty ComPacket ("empty") or an end of session ("answer").
  std::string strayEndOfSession = "empty";
  // RevertSP keeping the global key is refused while the global range is
  // locked: by ReadLocked and WriteLocked alone ("locked"), or only where
  // the matching LockEnabled is set too ("effective").
  std::string revertSpLockedTest = "locked";
  // Whether a power cycle sets ReadLocked/WriteLocked of every range listing
  // it in LockOnReset ("all") or only where locking is enabled ("enabled").
  std::string lockOnResetScope = "all";
  // The Locking feature's Locked bit: some range effectively locked
  // ("effective") or some ReadLocked/WriteLocked set ("any").
  std::string lockedBit = "effective";
  // Whether a PSID revert erases every range even when the Locking SP was
  // not active.
  bool psidRevertErases = true;
  // Whether ranges above 8 have their own Set_RdLocked/Set_WrLocked ACEs.
  bool aceRowsBeyond8 = true;
  // Operands one BooleanExpr may hold.
  uint64_t aceOperands = 32;
  // Size of the shadow MBR table in bytes.
  uint64_t mbrSize = 128ull << 20;
};

// A C_PIN row; its TryLimit and Persistence are the drive's settings.
struct Credential {
  Bytes pin;
  uint64_t tries = 0;
};

struct Authority {
  bool enabled = false;
  Credential credential;
};

struct Range {
  uint64_t start = 0;
  uint64_t length = 0;
  bool readLockEnabled = false, writeLockEnabled = false, readLocked = false, writeLocked = false;
  std::vector<uint64_t> lockOnReset = {0};
  // The media key: a new one makes the range's old data unreadable.
  uint64_t dataKey = 0;
};

struct Drive {
  std::string device;  // "/dev/nvme0" or "/dev/sda"
  std::string model, firmware, serial;
  bool opal = true;
  uint64_t blocks = 0;
  unsigned rangeCount = 8;  // ranges 1..rangeCount beside the global range
  unsigned userCount = 8;
  Settings settings;

  // Admin SP
  Bytes msid;
  Credential sid;
  Credential psid;
  // Locking SP
  uint64_t lifeCycle = opal::kManufacturedInactive;
  std::vector<Authority> admins;  // Admin1..4
  std::vector<Authority> users;   // User1..userCount
  std::vector<Range> ranges;      // global, then 1..rangeCount
  // The ACEs whose BooleanExpr a client may change, by UID; the others
  // keep their fixed expressions.
  std::map<Uid, BooleanExpr> aces;
  bool mbrEnable = false, mbrDone = false;
  std::vector<uint64_t> mbrDoneOnReset = {0};
  uint64_t mbrWritten = 0;  // bytes from 0 that may hold data

  // Sessions opened before a power cycle or a revert end with it.
  uint64_t generation = 0;
  // Authentications still to be refused as if the password were wrong.
  uint64_t failNext = 0;

  bool IsNvme() const { return device.rfind("/dev/nvme", 0) == 0; }
  bool LockingActive() const { return lifeCycle == opal::kManufactured; }
};

// A factory-new drive: SID = MSID, Locking SP inactive, PSID as printed on
// its label.
Drive NewDrive(const std::string& device, const std::string& model, const std::string& firmware,
               const std::string& psid, unsigned ranges, bool opal);

// The Locking SP tables as Activate leaves them: Admin1 with the SID's PIN,
// everyone else disabled without PIN, ranges empty and unlocked, ACEs at
// their defaults, shadow MBR off and empty.
void ResetLockingSp(Drive& drive);
void Activate(Drive& drive);
// RevertSP: the Locking SP back to its factory state; the ranges' keys are
// replaced, the global one only unless kept.
void RevertLockingSp(Drive& drive, bool keepGlobalRangeKey);
// Revert of the whole TPer: SID back to the MSID; an active Locking SP is
// reverted with every key replaced (erase: replace them regardless).
void RevertTper(Drive& drive, bool erase);
// Reset type 0: locks what LockOnReset asks, clears MBRDone where
// DoneOnReset asks, resets try counts that do not persist, ends sessions.
void PowerCycle(Drive& drive);
void NewKey(Range& range);

// Whether the global range blocks RevertSP with KeepGlobalRangeKey.
bool RevertSpRefused(const Drive& drive);
// The Locking feature's Locked bit.
bool LockedBit(const Drive& drive);

// The default expression of a changeable ACE.
BooleanExpr DefaultAce(const Drive& drive, Uid ace);
// The ACEs of the Locking SP a client may rewrite.
std::vector<Uid> ChangeableAces(const Drive& drive);

// Parses "name=value" for a setting; false (with reason) when either is
// unknown or the value does not fit.
bool ApplySetting(Settings& settings, const std::string& name, const std::string& value, std::string& reason);
// Every setting as "name value" lines.
std::vector<std::pair<std::string, std::string>> SettingList(const Settings& settings);

}  // namespace opalsim

#include "drive.h"

#include <algorithm>

namespace opalsim {

namespace {

uint64_t Fnv1a(const std::string& text) {
  uint64_t hash = 0xcbf29ce484222325ull;
  for (unsigned char c : text) hash = (hash ^ c) * 0x100000001b3ull;
  return hash;
}

// A step of a fixed pseudo-random sequence: drives made alike get the same
// serial, MSID and keys, so tests and the demo see the same values each time.
uint64_t Mix(uint64_t x) {
  x += 0x9e3779b97f4a7c15ull;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
  return x ^ (x >> 31);
}

std::string Hex(uint64_t seed, size_t digits) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (uint64_t x = seed; text.size() < digits;) {
    x = Mix(x);
    for (int i = 0; i < 16 && text.size() < digits; ++i) text += kDigits[x >> (4 * i) & 0xF];
  }
  return text;
}

bool Lists(const std::vector<uint64_t>& resetTypes, uint64_t type) {
  return std::find(resetTypes.begin(), resetTypes.end(), type) != resetTypes.end();
}

constexpr uint64_t kPowerCycle = 0;

}  // namespace

void NewKey(Range& range) { range.dataKey = Mix(range.dataKey); }

Drive NewDrive(const std::string& device, const std::string& model, const std::string& firmware,
               const std::string& psid, unsigned ranges, bool opal) {
  Drive drive;
  drive.device = device;
  drive.model = model;
  drive.firmware = firmware;
  drive.opal = opal;
  drive.rangeCount = ranges;
  drive.blocks = 976773168;  // 500 GB of 512-byte blocks
  const uint64_t seed = Fnv1a(device + "\n" + model + "\n" + psid);
  drive.serial = "OS" + Hex(seed, 14);
  const std::string msid = Hex(seed + 1, 32);
  drive.msid.assign(msid.begin(), msid.end());
  drive.sid.pin = drive.msid;
  drive.psid.pin.assign(psid.begin(), psid.end());
  drive.ranges.resize(ranges + 1);
  for (size_t i = 0; i < drive.ranges.size(); ++i) drive.ranges[i].dataKey = Mix(seed + 100 + i);
  ResetLockingSp(drive);
  return drive;
}

void ResetLockingSp(Drive& drive) {
  drive.lifeCycle = opal::kManufacturedInactive;
  drive.admins.assign(4, Authority{});
  drive.users.assign(drive.userCount, Authority{});
  for (Range& range : drive.ranges) {
    const uint64_t key = range.dataKey;
    range = Range{};
    range.dataKey = key;
  }
  drive.aces.clear();
  drive.mbrEnable = false;
  drive.mbrDone = false;
  drive.mbrDoneOnReset = {kPowerCycle};
  drive.mbrWritten = 0;
}

void Activate(Drive& drive) {
  ResetLockingSp(drive);
  drive.lifeCycle = opal::kManufactured;
  drive.admins[0].enabled = true;
  drive.admins[0].credential.pin = drive.sid.pin;
}

void RevertLockingSp(Drive& drive, bool keepGlobalRangeKey) {
  for (size_t i = keepGlobalRangeKey ? 1 : 0; i < drive.ranges.size(); ++i) NewKey(drive.ranges[i]);
  ResetLockingSp(drive);
  ++drive.generation;
}

void RevertTper(Drive& drive, bool erase) {
  if (drive.LockingActive() || erase) {
    for (Range& range : drive.ranges) NewKey(range);
  }
  ResetLockingSp(drive);
  drive.sid = Credential{drive.msid, 0};
  drive.psid.tries = 0;
  ++drive.generation;
}

void PowerCycle(Drive& drive) {
  const bool onlyEnabled = drive.settings.lockOnResetScope == "enabled";
  if (drive.LockingActive()) {
    for (Range& range : drive.ranges) {
      if (!Lists(range.lockOnReset, kPowerCycle)) continue;
      if (!onlyEnabled || range.readLockEnabled) range.readLocked = true;
      if (!onlyEnabled || range.writeLockEnabled) range.writeLocked = true;
    }
    if (Lists(drive.mbrDoneOnReset, kPowerCycle)) drive.mbrDone = false;
  }
  if (!drive.settings.triesPersist) {
    drive.sid.tries = 0;
    drive.psid.tries = 0;
    for (Authority& a : drive.admins) a.credential.tries = 0;
    for (Authority& a : drive.users) a.credential.tries = 0;
  }
  ++drive.generation;
}

bool RevertSpRefused(const Drive& drive) {
  const Range& global = drive.ranges[0];
  if (drive.settings.revertSpLockedTest == "effective") {
    return global.readLockEnabled && global.readLocked && global.writeLockEnabled && global.writeLocked;
  }
  return global.readLocked && global.writeLocked;
}

bool LockedBit(const Drive& drive) {
  if (!drive.LockingActive()) return false;
  const bool any = drive.settings.lockedBit == "any";
  for (const Range& r : drive.ranges) {
    if (any ? (r.readLocked || r.writeLocked)
            : ((r.readLockEnabled && r.readLocked) || (r.writeLockEnabled && r.writeLocked))) {
      return true;
    }
  }
  return false;
}

std::vector<Uid> ChangeableAces(const Drive& drive) {
  std::vector<Uid> aces;
  for (unsigned n = 0; n <= drive.rangeCount; ++n) {
    aces.push_back(opal::AceGetRangeUid(n));
    aces.push_back(opal::AceGenKeyUid(n));
    if (n > 8 && !drive.settings.aceRowsBeyond8) continue;
    aces.push_back(opal::AceSetRdLockedUid(n));
    aces.push_back(opal::AceSetWrLockedUid(n));
  }
  for (unsigned n = 1; n <= drive.userCount; ++n) aces.push_back(opal::AceCpinUserSetPinUid(n));
  aces.push_back(opal::kAceMbrControlSetDoneToDor);
  return aces;
}

BooleanExpr DefaultAce(const Drive& drive, Uid ace) {
  for (unsigned n = 1; n <= drive.userCount; ++n) {
    if (ace == opal::AceCpinUserSetPinUid(n)) return opal::AnyOf({opal::kAdmins, opal::UserUid(n)});
  }
  return opal::AnyOf({opal::kAdmins});
}

// --- Settings ---------------------------------------------------------------------

namespace {

bool ParseNumber(const std::string& text, uint64_t& number) {
  if (text.empty() || text.size() > 19 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  number = std::stoull(text);
  return true;
}

bool ParseYesNo(const std::string& text, bool& flag) {
  if (text != "yes" && text != "no") return false;
  flag = text == "yes";
  return true;
}

bool ParseWord(const std::string& text, std::initializer_list<const char*> words, std::string& out) {
  for (const char* word : words) {
    if (text == word) {
      out = text;
      return true;
    }
  }
  return false;
}

}  // namespace

bool ApplySetting(Settings& s, const std::string& name, const std::string& value, std::string& reason) {
  uint64_t number = 0;
  bool ok = false;
  if (name == "try-limit") {
    ok = ParseNumber(value, s.tryLimit);
  } else if (name == "tries-persist") {
    ok = ParseYesNo(value, s.triesPersist);
  } else if (name == "inactive-sp-status") {
    ok = ParseNumber(value, number) && number <= 0x3F;
    if (ok) s.inactiveSpStatus = static_cast<int>(number);
  } else if (name == "failed-start") {
    ok = ParseWord(value, {"status", "sync"}, s.failedStartShape);
  } else if (name == "stray-end-session") {
    ok = ParseWord(value, {"empty", "answer"}, s.strayEndOfSession);
  } else if (name == "revertsp-locked") {
    ok = ParseWord(value, {"locked", "effective"}, s.revertSpLockedTest);
  } else if (name == "lock-on-reset") {
    ok = ParseWord(value, {"all", "enabled"}, s.lockOnResetScope);
  } else if (name == "locked-bit") {
    ok = ParseWord(value, {"effective", "any"}, s.lockedBit);
  } else if (name == "psid-revert-erases") {
    ok = ParseYesNo(value, s.psidRevertErases);
  } else if (name == "ace-rows-beyond-8") {
    ok = ParseYesNo(value, s.aceRowsBeyond8);
  } else if (name == "ace-operands") {
    ok = ParseNumber(value, s.aceOperands) && s.aceOperands >= 1;
  } else if (name == "mbr-size") {
    ok = ParseNumber(value, s.mbrSize) && s.mbrSize >= 512 && s.mbrSize <= (1ull << 32);
  } else {
    reason = "unknown setting " + name;
    return false;
  }
  if (!ok) reason = "setting " + name + " cannot be " + value;
  return ok;
}

std::vector<std::pair<std::string, std::string>> SettingList(const Settings& s) {
  auto yesNo = [](bool flag) { return std::string(flag ? "yes" : "no"); };
  return {{"try-limit", std::to_string(s.tryLimit)},
          {"tries-persist", yesNo(s.triesPersist)},
          {"inactive-sp-status", std::to_string(s.inactiveSpStatus)},
          {"failed-start", s.failedStartShape},
          {"stray-end-session", s.strayEndOfSession},
          {"revertsp-locked", s.revertSpLockedTest},
          {"lock-on-reset", s.lockOnResetScope},
          {"locked-bit", s.lockedBit},
          {"psid-revert-erases", yesNo(s.psidRevertErases)},
          {"ace-rows-beyond-8", yesNo(s.aceRowsBeyond8)},
          {"ace-operands", std::to_string(s.aceOperands)},
          {"mbr-size", std::to_string(s.mbrSize)}};
}

}  // namespace opalsim

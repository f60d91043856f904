// The drive's life cycle: ownership, activation, the reverts and what each
// does to the data keys, re-keying, sign-ins and try limits, power cycles,
// the shadow MBR.
#include <gtest/gtest.h>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

// Each operation on an owned drive: which data keys it replaces ('x',
// global range first), whether the drive ends the session itself (reverts
// that succeed), and what is left: SID's PIN, Admin1's sign-in (the Locking
// SP's life cycle) and range 1's lock. RevertSP keeping the global key is
// refused while the global range is locked, in the setting's reading.
TEST(LifeCycle, Operations) {
  enum Op { kKeep, kRevertSp, kGenKey3, kRevert, kActivate, kPsidRevert };  // kKeep: RevertSP keeping the global key
  const Uid kObjects[] = {kThisSp, kThisSp, Aes256KeyUid(3), kAdminSp, kLockingSp, kAdminSp};
  const Uid kMethods[] = {kMethodRevertSp, kMethodRevertSp, kMethodGenKey, kMethodRevert, kMethodActivate,
                          kMethodRevert};
  const std::vector<Value> kKeepKey = {Value::Named(param::kKeepGlobalRangeKey, Value::UInt(1))}, kNone;
  const char *kEffective = "revertsp-locked effective", *kNoErase = "psid-revert-erases no";
  const int kInactive = kInvalidParameter;
  enum Global { kUnlocked = 0, kRead = 1, kWrite = 2, kEnabled = 4 };  // the global range, before
  // active: the Locking SP, before; admin1: how Admin1's sign-in is answered after.
  struct Case { const char *name, *setting; bool active; Op op; int status; const char* replaced; bool sidKept;
                int admin1, global = kUnlocked; };
  const Case cases[] = {
      {"Activate", "", false, kActivate, 0, ".........", true, 0},
      {"Activate again, changing nothing", "", true, kActivate, 0, ".........", true, 0},
      {"RevertSP keeping the global key", "", true, kKeep, 0, ".xxxxxxxx", true, kInactive},
      {"RevertSP", "inactive-sp-status 5", true, kRevertSp, 0, "xxxxxxxxx", true, 5},
      {"Revert, Locking SP active", "", true, kRevert, 0, "xxxxxxxxx", false, kInactive},
      {"Revert, Locking SP inactive", "", false, kRevert, 0, ".........", false, kInactive},
      {"PSID revert, inactive", "", false, kPsidRevert, 0, "xxxxxxxxx", false, kInactive},
      {"PSID revert, inactive, not erasing", kNoErase, false, kPsidRevert, 0, ".........", false, kInactive},
      {"PSID revert, active, not erasing", kNoErase, true, kPsidRevert, 0, "xxxxxxxxx", false, kInactive},
      {"GenKey of range 3", "", true, kGenKey3, 0, "...x.....", true, 0},
      {"RevertSP keeping, read-locked", "", true, kKeep, 0, ".xxxxxxxx", true, kInactive, kRead | kEnabled},
      {"RevertSP keeping, locked", "", true, kKeep, kFailStatus, ".........", true, 0, kRead | kWrite},
      {"... in the effective reading", kEffective, true, kKeep, 0, ".xxxxxxxx", true, kInactive, kRead | kWrite},
      {"... read-locked, enabled", kEffective, true, kKeep, 0, ".xxxxxxxx", true, kInactive, kRead | kEnabled},
      {"... locked, enabled", kEffective, true, kKeep, kFailStatus, ".........", true, 0, kRead | kWrite | kEnabled},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Drive& drive = sim.Own().Setting(c.setting).drive();
    if (!c.active) opalsim::ResetLockingSp(drive);
    opalsim::Range& global = drive.ranges[0];
    global.readLockEnabled = global.writeLockEnabled = c.global & kEnabled;
    global.readLocked = c.global & kRead;
    global.writeLocked = c.global & kWrite;
    std::vector<uint64_t> keys;
    for (const opalsim::Range& range : drive.ranges) keys.push_back(range.dataKey);
    auto session = sim.Must(c.op < kRevert ? kAdmin1Who : c.op < kPsidRevert ? kSidWho : kPsidWho);
    EXPECT_EQ(Code(session->Call(kObjects[c.op], kMethods[c.op], c.op == kKeep ? kKeepKey : kNone)), c.status);
    EXPECT_EQ(static_cast<bool>(session->End()), c.status != 0 || c.op == kGenKey3 || c.op == kActivate) << "open";
    std::string replaced;
    for (size_t n = 0; n < keys.size(); ++n) replaced += drive.ranges[n].dataKey != keys[n] ? 'x' : '.';
    EXPECT_EQ(replaced, c.replaced);
    EXPECT_EQ(drive.sid.pin == B("sid-pw"), c.sidKept);
    EXPECT_EQ(Code(sim.Open(kAdmin1Who)), c.admin1);
    EXPECT_EQ(drive.ranges[1].readLocked, c.active && c.admin1 == 0) << "range 1 as it was";
  }
}

// A sign-in (as check, or else as who) after attempts as who: w a wrong
// password, r the right one, f the right one while the drive is told to fail
// the next authentication, p a power cycle.
TEST(LifeCycle, SignIns) {
  struct Case { const char* name; Who who; const char *setting, *attempts; int status; std::optional<Who> check = {}; };
  const Case cases[] = {
      {"disabled user with a PIN", {kLockingSp, UserUid(3), "user3-pw"}, "", "", kNotAuthorized},
      {"user beyond the drive's users", {kLockingSp, UserUid(9), ""}, "", "", kInvalidParameter},
      {"SP that does not exist", {0x0000020500000009, std::nullopt, ""}, "", "", kInvalidParameter},
      {"at the try limit", kSidWho, "", "wwwww", kLockedOut},
      {"a success resets the count", kSidWho, "", "wwwwrwwww", 0},
      {"a power cycle lifts the lock-out", kSidWho, "", "wwwwwp", 0},
      {"persistent tries outlive a power cycle", kSidWho, "tries-persist yes", "wwwwwp", kLockedOut},
      {"no limit", kSidWho, "try-limit 0", "wwwwwwww", 0},
      {"user", kUser1Who, "try-limit 3", "www", kLockedOut},
      {"another user unaffected", kUser1Who, "try-limit 3", "www", 0, kUser2Who},
      {"PSID", kPsidWho, "try-limit 2", "ww", kLockedOut},
      {"fail-next once", kSidWho, "", "f", 0},
      {"fail-next counts towards the limit", kSidWho, "try-limit 3", "fff", kLockedOut},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own().Setting(c.setting);
    for (const char* a = c.attempts; *a != '\0'; ++a) {
      const Who attempt{c.who.sp, c.who.authority, *a == 'w' ? "wrong" : c.who.password};
      if (*a == 'f') sim.drive().failNext = 1;
      if (*a == 'p') opalsim::PowerCycle(sim.drive());
      if (*a != 'p') { EXPECT_EQ(Code(sim.Open(attempt)) == 0, *a == 'r'); }
    }
    EXPECT_EQ(Code(sim.Open(c.check.value_or(c.who))), c.status);
  }
}

// What a power cycle does to the locks of range 2 (set up as a row says, and
// MBRDone with it), under the settings that decide them; the Level 0 Locked
// bit after it; and that it ends open sessions.
TEST(LifeCycle, PowerCycle) {
  // resets: range 2's LockOnReset and MBRControl's DoneOnReset.
  struct Case { const char *name, *setting; bool readEnabled, writeEnabled; std::vector<uint64_t> resets;
                bool readLocked, writeLocked, lockedBit; };
  const Case cases[] = {
      {"every listed range", "", false, false, {0}, true, true, false},
      {"every listed range, enabled", "", true, true, {0}, true, true, true},
      {"only enabled ones, none enabled", "lock-on-reset enabled", false, false, {0}, false, false, false},
      {"only enabled ones, reads enabled", "lock-on-reset enabled", true, false, {0}, true, false, true},
      {"not listed", "", true, true, {}, false, false, false},
      {"listed for another reset", "", true, true, {2}, false, false, false},
      {"Locked bit for any lock flag", "locked-bit any", false, false, {0}, true, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Drive& drive = sim.Own().Setting(c.setting).drive();
    drive.ranges[2] = {0, 0, c.readEnabled, c.writeEnabled, false, false, c.resets, 0};
    drive.mbrDoneOnReset = c.resets;
    drive.mbrEnable = drive.mbrDone = true;
    auto session = sim.Must(kAnyone);
    opalsim::PowerCycle(drive);
    EXPECT_EQ(Code(session->Get(kCpinMsid, 3, 3)), kInvalidParameter) << "a session from before";
    EXPECT_EQ(drive.ranges[2].readLocked, c.readLocked);
    EXPECT_EQ(drive.ranges[2].writeLocked, c.writeLocked);
    EXPECT_EQ(opalsim::DiscoveryOf(drive).locking->locked, c.lockedBit);
    EXPECT_EQ(drive.mbrDone, c.resets != std::vector<uint64_t>{0});
  }
}

// The largest write one ComPacket carries (the drive advertises its
// MaxComPacketSize); the table ends where mbr-size says, and a RevertSP
// empties it.
TEST(LifeCycle, ShadowMbr) {
  Sim sim;
  auto admin = sim.Own().Setting("mbr-size 1048576").Must(kAdmin1Who);
  const size_t overhead = EncodeCall(kMbrTable, kMethodSet, SetBytes(4096, Bytes(4096))).size() - 4096;
  const Bytes data(sim.host->MaxPayload() - overhead, 0x5A);
  EXPECT_EQ(Code(WriteMbr(*admin, 4096, data)), 0);
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, data.size())), data);
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(4, 1))), 0);
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(5, 1))), kInvalidParameter);
  Need(RevertLockingSp(*admin, false));
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, 4)), Bytes(4));
}

}  // namespace
}  // namespace opalsim_test

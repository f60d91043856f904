// The drive's life cycle: ownership, activation, the reverts and what each
// does to the data keys, re-keying, try limits, power cycles, the shadow MBR.
#include <gtest/gtest.h>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

TEST(LifeCycle, OwnershipAndActivation) {
  Sim sim;
  EXPECT_EQ(Code(sim.Open(kSidWho)), kNotAuthorized) << "SID's PIN is the MSID when new";
  const Bytes msid = Need(ReadMsid(*sim.Must(kAnyone)));
  Need(SetPin(*Need(Session::Start(*sim.host, kAdminSp, kSid, msid)), kCpinSid, B("sid-pw")));
  EXPECT_EQ(Code(sim.Open(kSidWho, std::string(msid.begin(), msid.end()))), kNotAuthorized);
  EXPECT_EQ(Code(sim.Open(kAdmin1Who)), kInvalidParameter) << "the Locking SP is not active yet";
  EXPECT_EQ(Code(sim.Setting("inactive-sp-status 5").Open(kAdmin1Who)), 5);
  Need(ActivateLockingSp(*sim.Must(kSidWho)));
  EXPECT_EQ(Need(ReadLifeCycle(*sim.Must(kAnyone), kLockingSp)), kManufactured);
  EXPECT_TRUE(opalsim::DiscoveryOf(sim.drive()).locking->enabled);
  // Admin1 got SID's PIN once, at activation; SID's later PIN is its own.
  Need(SetPin(*sim.Must(kSidWho), kCpinSid, B("later")));
  EXPECT_EQ(Code(sim.Open(kAdmin1Who)), 0);
  EXPECT_EQ(Code(sim.Open(kUser1Who)), kNotAuthorized) << "users start disabled";
  const RangeInfo global = Need(ReadRange(*sim.Must(kAdmin1Who), 0));
  EXPECT_FALSE(global.readLockEnabled || global.writeLockEnabled || global.readLocked || global.writeLocked);
  const std::string before = opalsim::Serialize(sim.world);
  EXPECT_EQ(Code(ActivateLockingSp(*sim.Must({kAdminSp, kSid, "later"}))), 0) << "again, changing nothing";
  EXPECT_EQ(opalsim::Serialize(sim.world), before);
}

// Which data keys each operation replaces ('x', global range first), whether
// the drive ends the session itself (reverts that succeed) and what is left:
// SID's PIN and the Locking SP's life cycle. RevertSP keeping the global key
// is refused while the global range is locked, in the setting's reading.
TEST(LifeCycle, RevertsAndKeys) {
  enum Op { kRevertSpKeeping, kRevertSp, kRevert, kPsidRevert, kGenKey3 };
  struct Case {
    const char* name;
    bool active;
    const char* setting;
    Op op;
    int status;
    const char* replaced;
    bool sidKept, activeAfter;
    bool globalEnabled = false, globalReadLocked = false, globalWriteLocked = false;
  } cases[] = {
      {"RevertSP keeping the global key", true, "", kRevertSpKeeping, 0, ".xxxxxxxx", true, false},
      {"RevertSP", true, "", kRevertSp, 0, "xxxxxxxxx", true, false},
      {"Revert, Locking SP active", true, "", kRevert, 0, "xxxxxxxxx", false, false},
      {"Revert, Locking SP inactive", false, "", kRevert, 0, ".........", false, false},
      {"PSID revert, inactive", false, "", kPsidRevert, 0, "xxxxxxxxx", false, false},
      {"PSID revert, inactive, not erasing", false, "psid-revert-erases no", kPsidRevert, 0, ".........", false, false},
      {"PSID revert, active, not erasing", true, "psid-revert-erases no", kPsidRevert, 0, "xxxxxxxxx", false, false},
      {"GenKey of range 3", true, "", kGenKey3, 0, "...x.....", true, true},
      {"RevertSP keeping, read-locked only", true, "", kRevertSpKeeping, 0, ".xxxxxxxx", true, false, true, true},
      {"RevertSP keeping, locked", true, "", kRevertSpKeeping, kFailStatus, ".........", true, true, false, true, true},
      {"RevertSP keeping, locked, effective reading", true, "revertsp-locked effective", kRevertSpKeeping, 0,
       ".xxxxxxxx", true, false, false, true, true},
      {"RevertSP keeping, read-locked and enabled, effective reading", true, "revertsp-locked effective",
       kRevertSpKeeping, 0, ".xxxxxxxx", true, false, true, true},
      {"RevertSP keeping, locked and enabled, effective reading", true, "revertsp-locked effective",
       kRevertSpKeeping, kFailStatus, ".........", true, true, true, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Drive& drive = sim.Own().Setting(c.setting).drive();
    if (!c.active) opalsim::ResetLockingSp(drive);
    opalsim::Range& global = drive.ranges[0];
    global.readLockEnabled = global.writeLockEnabled = c.globalEnabled;
    global.readLocked = c.globalReadLocked;
    global.writeLocked = c.globalWriteLocked;
    std::vector<uint64_t> keys;
    for (const opalsim::Range& range : drive.ranges) keys.push_back(range.dataKey);
    auto session = sim.Must(c.op == kRevert ? kSidWho : c.op == kPsidRevert ? kPsidWho : kAdmin1Who);
    std::vector<Value> keep;
    if (c.op == kRevertSpKeeping) keep.push_back(Value::Named(param::kKeepGlobalRangeKey, Value::UInt(1)));
    const bool revertSp = c.op <= kRevertSp;
    EXPECT_EQ(Code(c.op == kGenKey3 ? session->Call(Aes256KeyUid(3), kMethodGenKey)
                                    : session->Call(revertSp ? kThisSp : kAdminSp,
                                                    revertSp ? kMethodRevertSp : kMethodRevert, keep)),
              c.status);
    EXPECT_EQ(static_cast<bool>(session->End()), c.status != 0 || c.op == kGenKey3) << "the session is open";
    std::string replaced;
    for (size_t n = 0; n < keys.size(); ++n) replaced += drive.ranges[n].dataKey != keys[n] ? 'x' : '.';
    EXPECT_EQ(replaced, c.replaced);
    EXPECT_EQ(drive.sid.pin == B("sid-pw"), c.sidKept);
    EXPECT_EQ(drive.LockingActive(), c.activeAfter);
  }
}

// Attempts: w wrong password, r right one, f right one while the drive is
// told to fail the next authentication, p power cycle; then a right one.
TEST(LifeCycle, TriesAndLockOut) {
  struct Case {
    const char* name;
    const Who& who;
    const char* setting;
    const char* attempts;
    const Who& check;
    int status;
  } cases[] = {
      {"at the limit", kSidWho, "", "wwwww", kSidWho, kLockedOut},
      {"one short of the limit", kSidWho, "", "wwww", kSidWho, 0},
      {"a success resets the count", kSidWho, "", "wwwwrwwww", kSidWho, 0},
      {"a power cycle lifts the lock-out", kSidWho, "", "wwwwwp", kSidWho, 0},
      {"persistent tries outlive a power cycle", kSidWho, "tries-persist yes", "wwwwwp", kSidWho, kLockedOut},
      {"no limit", kSidWho, "try-limit 0", "wwwwwwww", kSidWho, 0},
      {"user", kUser1Who, "try-limit 3", "www", kUser1Who, kLockedOut},
      {"another user unaffected", kUser1Who, "try-limit 3", "www", kUser2Who, 0},
      {"PSID", kPsidWho, "try-limit 2", "ww", kPsidWho, kLockedOut},
      {"fail-next once", kSidWho, "", "f", kSidWho, 0},
      {"fail-next counts towards the limit", kSidWho, "try-limit 3", "fff", kSidWho, kLockedOut},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own().Setting(c.setting);
    for (const char* a = c.attempts; *a != '\0'; ++a) {
      if (*a == 'f') sim.drive().failNext = 1;
      if (*a == 'p') opalsim::PowerCycle(sim.drive());
      if (*a != 'p') { EXPECT_EQ(Code(sim.Open(c.who, *a == 'w' ? "wrong" : c.who.password)) == 0, *a == 'r'); }
    }
    EXPECT_EQ(Code(sim.Open(c.check)), c.status);
  }
}

// What a power cycle locks (range 2, the one listing it, set up as a row
// says) and whether it clears MBRDone, under the settings that decide them;
// the Level 0 Locked bit after it; and that it ends open sessions.
TEST(LifeCycle, PowerCycle) {
  struct Case {
    const char* name;
    const char* setting;
    bool readEnabled, writeEnabled;
    std::vector<uint64_t> resets;  // range 2's LockOnReset and MBRControl's DoneOnReset
    bool readLocked, writeLocked, lockedBit;
  } cases[] = {
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
    for (opalsim::Range& range : drive.ranges) range = {0, 0, false, false, false, false, {}, range.dataKey};
    drive.ranges[2].readLockEnabled = c.readEnabled;
    drive.ranges[2].writeLockEnabled = c.writeEnabled;
    drive.ranges[2].lockOnReset = drive.mbrDoneOnReset = c.resets;
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

// A ComPacket as large as the drive's MaxComPacketSize: a shadow MBR write
// that fills it exactly. The table ends where mbr-size says, and a RevertSP
// empties it.
TEST(LifeCycle, ShadowMbr) {
  Sim sim;
  auto admin = sim.Own().Setting("mbr-size 1048576").Must(kAdmin1Who);
  ASSERT_EQ(PropertyOr(sim.host->tperProperties(), "MaxComPacketSize", 0), 65536u);
  const size_t overhead = EncodeCall(kMbrTable, kMethodSet, SetBytes(4096, Bytes(4096))).size() - 4096;
  const Bytes data(65536 - kHeadersSize - overhead, 0x5A);
  ComPacket packet;
  packet.payload = EncodeCall(kMbrTable, kMethodSet, SetBytes(4096, data));
  ASSERT_EQ(Frame(packet).size(), 65536u);
  EXPECT_EQ(Code(WriteMbr(*admin, 4096, data)), 0);
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, data.size())), data);
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(4, 1))), 0);
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(8, 1))), kInvalidParameter);
  Need(RevertLockingSp(*admin, false));
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, 4)), Bytes(4));
}

}  // namespace
}  // namespace opalsim_test

// The drive's life cycle: ownership, activation, the reverts and what each
// does to the data keys, re-keying, try limits, power cycles.
#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

TEST(LifeCycle, OwnershipAndActivation) {
  Sim sim;
  EXPECT_FALSE(sim.Discover().locking->enabled);
  EXPECT_EQ(Code(sim.Open(kSidWho)), kNotAuthorized) << "SID's PIN is the MSID when new";
  sim.TakeOwnership();
  EXPECT_EQ(Code(sim.Open(kSidWho)), 0);
  EXPECT_EQ(Code(sim.Open(kSidWho, std::string(sim.drive().msid.begin(), sim.drive().msid.end()))), kNotAuthorized);
  EXPECT_EQ(Code(sim.Open(kAdmin1Who)), kInvalidParameter) << "Locking SP not active yet";
  Need(ActivateLockingSp(*sim.Must(kSidWho)));
  EXPECT_TRUE(sim.Discover().locking->enabled);
  EXPECT_EQ(Need(ReadLifeCycle(*sim.Must(kAnyone), kLockingSp)), kManufactured);
  // Admin1 got SID's PIN once, at activation; SID's later PIN is its own.
  Need(SetPin(*sim.Must(kSidWho), kCpinSid, B("later")));
  EXPECT_EQ(Code(sim.Open(kAdmin1Who)), 0);
  EXPECT_EQ(Code(sim.Open(kUser1Who)), kNotAuthorized) << "users start disabled";
  const RangeInfo global = Need(ReadRange(*sim.Must(kAdmin1Who), 0));
  EXPECT_FALSE(global.readLockEnabled || global.writeLockEnabled || global.readLocked || global.writeLocked);
  // Activating an active Locking SP succeeds and changes nothing.
  Need(sim.Must(kAdmin1Who)->Set(RangeUid(1), {{3, Value::UInt(8)}, {4, Value::UInt(8)}}));
  const std::string before = opalsim::Serialize(sim.world);
  EXPECT_EQ(Code(ActivateLockingSp(*sim.Must({kAdminSp, kSid, "later"}))), 0);
  EXPECT_EQ(opalsim::Serialize(sim.world), before);
}

// Which data keys each operation replaces ('x' in the global, 1..8 order),
// and who can sign in after it.
TEST(LifeCycle, DataKeys) {
  using Op = Status (*)(Sim&);
  const Op revertSpKeeping = [](Sim& s) { return RevertLockingSp(*s.Must(kAdmin1Who), true); };
  const Op revertSp = [](Sim& s) { return RevertLockingSp(*s.Must(kAdmin1Who), false); };
  const Op revert = [](Sim& s) { return RevertTper(*s.Must(kSidWho)); };
  const Op psidRevert = [](Sim& s) { return RevertTper(*s.Must(kPsidWho)); };
  const Op genKey3 = [](Sim& s) { return GenKey(*s.Must(kAdmin1Who), Aes256KeyUid(3)); };
  const int kNo = kNotAuthorized, kInactive = kInvalidParameter;
  struct Case {
    const char* name;
    bool active;
    bool psidErases;
    Op op;
    const char* replaced;
    int sid, admin1;  // what StartSession answers them after it
  } cases[] = {
      {"RevertSP keeping the global key", true, true, revertSpKeeping, ".xxxxxxxx", 0, kInactive},
      {"RevertSP", true, true, revertSp, "xxxxxxxxx", 0, kInactive},
      {"Revert, Locking SP active", true, true, revert, "xxxxxxxxx", kNo, kInactive},
      {"Revert, Locking SP inactive", false, true, revert, ".........", kNo, kInactive},
      {"PSID revert, inactive, erasing drive", false, true, psidRevert, "xxxxxxxxx", kNo, kInactive},
      {"PSID revert, inactive, keeping drive", false, false, psidRevert, ".........", kNo, kInactive},
      {"PSID revert, active, keeping drive", true, false, psidRevert, "xxxxxxxxx", kNo, kInactive},
      {"GenKey of range 3", true, true, genKey3, "...x.....", 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    if (c.active) sim.Own();
    else sim.TakeOwnership();
    sim.drive().settings.psidRevertErases = c.psidErases;
    const std::vector<uint64_t> keys = sim.Keys();
    EXPECT_EQ(Code(c.op(sim)), 0);
    std::string replaced;
    for (size_t n = 0; n < keys.size(); ++n) replaced += sim.Keys()[n] != keys[n] ? 'x' : '.';
    EXPECT_EQ(replaced, c.replaced);
    EXPECT_EQ(Code(sim.Open(kSidWho)), c.sid) << "SID back to the MSID after a Revert";
    EXPECT_EQ(Code(sim.Open(kAdmin1Who)), c.admin1);
  }
}

// RevertSP keeping the global key is refused while the global range is
// locked, in either reading of "locked"; the session then stays open.
TEST(LifeCycle, RevertSpRefused) {
  struct Case {
    const char* name;
    const char* setting;  // revertsp-locked
    uint64_t lockEnabled, readLocked, writeLocked;
    int status;
  } cases[] = {
      {"read-locked only", "locked", 1, 1, 0, 0},
      {"locked", "locked", 0, 1, 1, kFailStatus},
      {"locked and enabled", "locked", 1, 1, 1, kFailStatus},
      {"locked, effective reading", "effective", 0, 1, 1, 0},
      {"locked and enabled, effective reading", "effective", 1, 1, 1, kFailStatus},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own().drive().settings.revertSpLockedTest = c.setting;
    Need(sim.Must(kAdmin1Who)->Set(RangeUid(0), {{5, Value::UInt(c.lockEnabled)}, {6, Value::UInt(c.lockEnabled)},
                                                 {7, Value::UInt(c.readLocked)}, {8, Value::UInt(c.writeLocked)}}));
    const std::string before = opalsim::Serialize(sim.world);
    auto admin = sim.Must(kAdmin1Who);
    EXPECT_EQ(Code(RevertLockingSp(*admin, true)), c.status);
    EXPECT_EQ(opalsim::Serialize(sim.world) == before, c.status != 0);
    if (c.status != 0) { EXPECT_EQ(Code(admin->End()), 0); }
  }
}

// Attempts: w wrong password, r right one, f right one while the drive is
// told to fail the next authentication, p power cycle; then a last right
// attempt as check.
TEST(LifeCycle, TriesAndLockOut) {
  struct Case {
    const char* name;
    const Who& who;
    uint64_t limit;
    bool persist;
    const char* attempts;
    const Who& check;
    int status;
  } cases[] = {
      {"SID at the limit", kSidWho, 5, false, "wwwww", kSidWho, kLockedOut},
      {"one short of the limit", kSidWho, 5, false, "wwww", kSidWho, 0},
      {"a success resets the count", kSidWho, 5, false, "wwwwrwwww", kSidWho, 0},
      {"a power cycle lifts the lock-out", kSidWho, 5, false, "wwwwwp", kSidWho, 0},
      {"persistent tries outlive a power cycle", kSidWho, 5, true, "wwwwwp", kSidWho, kLockedOut},
      {"no limit", kSidWho, 0, false, "wwwwwwwwwwww", kSidWho, 0},
      {"admin", kAdmin1Who, 3, false, "www", kAdmin1Who, kLockedOut},
      {"user", kUser1Who, 3, false, "www", kUser1Who, kLockedOut},
      {"another user unaffected", kUser1Who, 3, false, "www", kUser2Who, 0},
      {"PSID", kPsidWho, 2, false, "ww", kPsidWho, kLockedOut},
      {"fail-next once", kSidWho, 5, false, "f", kSidWho, 0},
      {"fail-next counts towards the limit", kSidWho, 3, false, "fff", kSidWho, kLockedOut},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own().drive().settings.tryLimit = c.limit;
    sim.drive().settings.triesPersist = c.persist;
    for (const char* a = c.attempts; *a != '\0'; ++a) {
      if (*a == 'p') {
        opalsim::PowerCycle(sim.drive());
        continue;
      }
      if (*a == 'f') sim.drive().failNext = 1;
      const int status = Code(sim.Open(c.who, *a == 'w' ? std::optional<std::string>("wrong") : std::nullopt));
      EXPECT_EQ(status == 0, *a == 'r') << "attempt " << a - c.attempts;
    }
    EXPECT_EQ(Code(sim.Open(c.check)), c.status);
  }
}

// What a power cycle locks (range 2 set up as a row says), and the Level 0
// Locked bit after it, under the settings that decide both.
TEST(LifeCycle, PowerCycleLocks) {
  struct Case {
    const char* name;
    const char *setting, *value;
    uint64_t readLockEnabled, writeLockEnabled;
    std::vector<Value> lockOnReset;
    bool readLocked, writeLocked, lockedBit;
  } cases[] = {
      {"every listed range", "lock-on-reset", "all", 0, 0, {Value::UInt(0)}, true, true, false},
      {"every listed range, enabled", "lock-on-reset", "all", 1, 1, {Value::UInt(0)}, true, true, true},
      {"only enabled ones, none enabled", "lock-on-reset", "enabled", 0, 0, {Value::UInt(0)}, false, false, false},
      {"only enabled ones, reads enabled", "lock-on-reset", "enabled", 1, 0, {Value::UInt(0)}, true, false, true},
      {"not listed", "lock-on-reset", "all", 1, 1, {}, false, false, false},
      {"listed for hot plug only", "lock-on-reset", "all", 1, 1, {Value::UInt(2)}, false, false, false},
      {"Locked bit for any lock flag", "locked-bit", "any", 0, 0, {Value::UInt(0)}, true, true, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    std::string reason;
    ASSERT_TRUE(opalsim::ApplySetting(sim.Own().drive().settings, c.setting, c.value, reason)) << reason;
    auto admin = sim.Must(kAdmin1Who);
    Need(admin->Set(RangeUid(2), {{5, Value::UInt(c.readLockEnabled)}, {6, Value::UInt(c.writeLockEnabled)},
                                  {9, Value::List(c.lockOnReset)}}));
    for (unsigned other : {0, 1}) Need(admin->Set(RangeUid(other), {{7, Value::UInt(0)}, {9, Value::List({})}}));
    opalsim::PowerCycle(sim.drive());
    const RangeInfo range = Need(ReadRange(*sim.Must(kAdmin1Who), 2));
    EXPECT_EQ(range.readLocked, c.readLocked);
    EXPECT_EQ(range.writeLocked, c.writeLocked);
    EXPECT_EQ(sim.Discover().locking->locked, c.lockedBit);
  }
}

TEST(LifeCycle, PowerCycleClearsMbrDoneAndEndsSessions) {
  Sim sim;
  auto admin = sim.Own().Must(kAdmin1Who);
  Need(admin->Set(kMbrControl, {{1, Value::UInt(1)}, {2, Value::UInt(1)}}));
  EXPECT_TRUE(sim.Discover().locking->mbrDone);
  opalsim::PowerCycle(sim.drive());
  EXPECT_EQ(Code(admin->Get(kMbrControl, 1, 2)), kInvalidParameter) << "a session from before the power cycle";
  const Discovery after = sim.Discover();
  EXPECT_TRUE(after.locking->mbrEnabled);
  EXPECT_FALSE(after.locking->mbrDone);
  // Without DoneOnReset listing the power cycle, Done stays.
  Need(sim.Must(kAdmin1Who)->Set(kMbrControl, {{2, Value::UInt(1)}, {3, Value::List({})}}));
  opalsim::PowerCycle(sim.drive());
  EXPECT_TRUE(sim.Discover().locking->mbrDone);
}

// A ComPacket as large as the drive's MaxComPacketSize: a shadow MBR write
// that fills it exactly.
TEST(LifeCycle, LargestComPacketAccepted) {
  Sim sim;
  auto admin = sim.Own().Must(kAdmin1Who);
  const uint64_t largest = PropertyOr(sim.host->tperProperties(), "MaxComPacketSize", 0);
  ASSERT_GE(largest, 2048u);
  const size_t overhead = EncodeCall(kMbrTable, kMethodSet, SetBytes(4096, Bytes(4096))).size() - 4096;
  const Bytes data(largest - kHeadersSize - overhead, 0x5A);
  ComPacket packet;
  packet.payload = EncodeCall(kMbrTable, kMethodSet, SetBytes(4096, data));
  ASSERT_EQ(Frame(packet).size(), largest);
  EXPECT_EQ(Code(WriteMbr(*admin, 4096, data)), 0);
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, data.size())), data);
  Need(RevertLockingSp(*sim.Must(kAdmin1Who), false));
  EXPECT_EQ(Need(opalsim::ReadMbr(sim.mbr, 4096, 4)), Bytes(4)) << "a RevertSP empties the table";
  Need(ActivateLockingSp(*sim.Must(kSidWho)));
  admin = sim.Must(kAdmin1Who);
  // The table ends where the mbr-size setting says.
  sim.drive().settings.mbrSize = 1 << 20;
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(4, 1))), 0);
  EXPECT_EQ(Code(WriteMbr(*admin, (1 << 20) - 4, Bytes(8, 1))), kInvalidParameter);
}

}  // namespace
}  // namespace opalsim_test

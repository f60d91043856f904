// Who may read and change what on an owned drive. Each row makes one call on
// a fresh owned drive; a refused call must leave the drive as it was, an
// accepted Set must change it, and a Get shows (+c) or hides (-c) column c.
#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

struct Call {
  Uid method;
  std::vector<Value> arguments;
};
Call Set(std::initializer_list<std::pair<uint64_t, uint64_t>> columns) {
  std::vector<std::pair<uint64_t, Value>> values;
  for (auto [column, value] : columns) values.emplace_back(column, Value::UInt(value));
  return {kMethodSet, SetColumns(values)};
}
Call Pin(const std::string& pin) { return {kMethodSet, SetColumns({{column::kPin, Value::Text(pin)}})}; }
Call Get(uint64_t first, uint64_t last) { return {kMethodGet, GetColumns(first, last)}; }
const Call kGenKey{kMethodGenKey, {}}, kLock = Set({{7, 1}, {8, 1}}), kUnlock = Set({{7, 0}, {8, 0}});
BooleanExpr Expr(std::initializer_list<Uid> operands, size_t ors) {
  BooleanExpr expr;
  for (Uid uid : operands) expr.push_back(AceTerm::Authority(uid));
  expr.insert(expr.end(), ors, AceTerm::Operator(BooleanOp::kOr));
  return expr;
}
Call Ace(const BooleanExpr& expr) {
  return {kMethodSet, SetColumns({{column::kBooleanExpr, EncodeBooleanExpr(expr)}})};
}

// Makes the call as who (or, without an object, only opens the session) and
// checks it as the header says.
void Check(Sim& sim, const Who& who, Uid object, const Call& call, int status, int column = 0) {
  if (object == 0) {
    EXPECT_EQ(Code(sim.Open(who)), status);
    return;
  }
  const std::string before = opalsim::Serialize(sim.world);
  Result<Message> reply = sim.Must(who)->Call(object, call.method, call.arguments);
  EXPECT_EQ(Code(reply), status);
  if (call.method != kMethodGet) { EXPECT_EQ(opalsim::Serialize(sim.world) == before, status != 0) << "changed"; }
  if (column != 0) { EXPECT_EQ(reply && Need(ColumnsOfResult(*reply)).count(std::abs(column)), column > 0); }
}

TEST(Access, Calls) {
  const Call kOpen{0, {}};
  struct Case {
    const char* name;
    Who who;
    Uid object;
    Call call;
    int status, column;
  } cases[] = {
      {"enabled user signs in", kUser1Who, 0, kOpen, 0, 0},
      {"wrong password", {kLockingSp, UserUid(1), "guess"}, 0, kOpen, kNotAuthorized, 0},
      {"disabled user with a PIN", kUser3Who, 0, kOpen, kNotAuthorized, 0},
      {"admin 2, never enabled", {kLockingSp, AdminUid(2), ""}, 0, kOpen, kNotAuthorized, 0},
      {"user beyond the drive's users", {kLockingSp, UserUid(9), ""}, 0, kOpen, kInvalidParameter, 0},
      {"a class as authority", {kLockingSp, kUsers, ""}, 0, kOpen, kInvalidParameter, 0},
      {"SID in the Locking SP", {kLockingSp, kSid, "sid-pw"}, 0, kOpen, kInvalidParameter, 0},
      {"SP that does not exist", {0x0000020500000009, std::nullopt, ""}, 0, kOpen, kInvalidParameter, 0},
      {"PSID signs in", kPsidWho, 0, kOpen, 0, 0},
      {"user locks its range", kUser1Who, RangeUid(1), kLock, 0, 0},
      {"user unlocks its range", kUser1Who, RangeUid(1), kUnlock, 0, 0},
      {"user on another range", kUser1Who, RangeUid(2), kLock, kNotAuthorized, 0},
      {"user on the global range", kUser1Who, RangeUid(0), kLock, kNotAuthorized, 0},
      {"user enables locking of its range", kUser1Who, RangeUid(1), Set({{5, 1}, {6, 1}}), kNotAuthorized, 0},
      {"user locks and enables at once", kUser1Who, RangeUid(1), Set({{5, 1}, {7, 1}, {8, 1}}), kNotAuthorized, 0},
      {"user reads its range's address", kUser1Who, RangeUid(1), Get(3, 8), 0, -3},
      {"ungranted user on the range", kUser2Who, RangeUid(1), kLock, kNotAuthorized, 0},
      {"admin locks past the users' ACEs", kAdmin1Who, RangeUid(1), kLock, 0, 0},
      {"admin enables range locking", kAdmin1Who, RangeUid(1), Set({{5, 1}, {6, 1}}), 0, 0},
      {"admin locks the global range", kAdmin1Who, RangeUid(0), Set({{5, 1}, {6, 1}, {7, 1}, {8, 1}}), 0, 0},
      {"admin reads a range and its key", kAdmin1Who, RangeUid(1), Get(3, 10), 0, 10},
      {"admin sets MBRDone", kAdmin1Who, kMbrControl, Set({{2, 1}}), 0, 0},
      {"user sets MBRDone", kUser1Who, kMbrControl, Set({{2, 1}}), kNotAuthorized, 0},
      {"user sets its own PIN", kUser1Who, CpinUserUid(1), Pin("mine"), 0, 0},
      {"user sets another's PIN", kUser1Who, CpinUserUid(2), Pin("yours"), kNotAuthorized, 0},
      {"admin sets a user's PIN", kAdmin1Who, CpinUserUid(2), Pin("new"), 0, 0},
      {"user enables another user", kUser1Who, UserUid(3), Set({{5, 1}}), kNotAuthorized, 0},
      {"admin enables a user", kAdmin1Who, UserUid(3), Set({{5, 1}}), 0, 0},
      {"user grants itself a range", kUser1Who, AceSetRdLockedUid(2), Ace(Expr({UserUid(1)}, 0)), kNotAuthorized, 0},
      {"user re-keys its range", kUser1Who, Aes256KeyUid(1), kGenKey, kNotAuthorized, 0},
      {"admin re-keys a range", kAdmin1Who, Aes256KeyUid(1), kGenKey, 0, 0},
      {"anybody sets the SID PIN", kAnyone, kCpinSid, Pin("mine"), kNotAuthorized, 0},
      {"SID sets its PIN", kSidWho, kCpinSid, Pin("other"), 0, 0},
      {"anybody reverts the TPer", kAnyone, kAdminSp, {kMethodRevert, {}}, kNotAuthorized, 0},
      {"user reverts the Locking SP", kUser1Who, kThisSp, {kMethodRevertSp, {}}, kNotAuthorized, 0},
      {"MSID PIN to anybody", kAnyone, kCpinMsid, Get(3, 3), 0, 3},
      {"SID PIN not to anybody", kAnyone, kCpinSid, Get(3, 3), kNotAuthorized, 0},
      {"SID PIN not even to SID", kSidWho, kCpinSid, Get(3, 7), 0, -3},
      {"SID's try count to SID", kSidWho, kCpinSid, Get(3, 7), 0, 6},
      {"user PIN not to the admin", kAdmin1Who, CpinUserUid(1), Get(3, 3), 0, -3},
      {"admin PIN not to the admin", kAdmin1Who, CpinAdminUid(1), Get(0, 7), 0, -3},
      {"life cycle to anybody", kAnyone, kLockingSp, Get(6, 6), 0, 6},
      {"MaxRanges to a user", kUser1Who, kLockingInfo, Get(4, 4), 0, 4},
      {"range 9 of an 8-range drive", kAdmin1Who, RangeUid(9), Set({{7, 1}}), kInvalidParameter, 0},
      {"reading range 9", kAdmin1Who, RangeUid(9), Get(3, 8), kInvalidParameter, 0},
      {"ACE of range 9", kAdmin1Who, AceSetRdLockedUid(9), Ace(Expr({kAdmins}, 0)), kInvalidParameter, 0},
      {"key of range 9", kAdmin1Who, Aes256KeyUid(9), kGenKey, kInvalidParameter, 0},
      {"unknown UID", kAdmin1Who, 0x0000ABCD00000001, Set({{1, 1}}), kInvalidParameter, 0},
      {"Locking SP row in the Admin SP", kSidWho, RangeUid(1), kLock, kInvalidParameter, 0},
      {"user 9 of an 8-user drive", kAdmin1Who, UserUid(9), Set({{5, 1}}), kInvalidParameter, 0},
      {"PIN of the Users class", kAdmin1Who, CpinUserUid(0), Pin("x"), kInvalidParameter, 0},
      {"user enabled, to the admin", kAdmin1Who, UserUid(1), Get(5, 5), 0, 5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Check(sim.Own(), c.who, c.object, c.call, c.status, c.column);
  }
}

// The three shapes in which clients grant a range to a user (each replaces
// the ACE's expression), the remove that gives it back to the admins, and
// expressions the drive must refuse.
TEST(Access, AceShapes) {
  const std::vector<Uid> both2 = {AceSetRdLockedUid(2), AceSetWrLockedUid(2)};
  struct Case {
    const char* name;
    std::vector<Uid> aces;
    BooleanExpr expr;
    int written;
    const Who& who;
    Uid object;
    Call call;
    int status, column;
  } cases[] = {
      {"user OR itself", both2, Expr({UserUid(2), UserUid(2)}, 1), 0, kUser2Who, RangeUid(2), kLock, 0, 0},
      {"one operand", both2, Expr({UserUid(2)}, 0), 0, kUser2Who, RangeUid(2), kLock, 0, 0},
      {"Admin1 OR user may read", {AceGetRangeUid(2)}, Expr({kAdmin1, UserUid(2)}, 1), 0, kUser2Who, RangeUid(2),
       Get(3, 10), 0, 3},
      {"Admin1 still reads", {AceGetRangeUid(2)}, Expr({kAdmin1, UserUid(2)}, 1), 0, kAdmin1Who, RangeUid(2),
       Get(3, 10), 0, 10},
      {"admins and users", both2, Expr({kAdmins, UserUid(1), UserUid(2)}, 2), 0, kUser1Who, RangeUid(2), kLock, 0, 0},
      {"reads only granted", {AceSetRdLockedUid(2)}, Expr({UserUid(2)}, 0), 0, kUser2Who, RangeUid(2), kLock,
       kNotAuthorized, 0},
      {"remove: Admins again", {AceSetRdLockedUid(1), AceSetWrLockedUid(1)}, Expr({kAdmins}, 0), 0, kUser1Who,
       RangeUid(1), kLock, kNotAuthorized, 0},
      {"user beyond the drive", both2, Expr({UserUid(9)}, 0), kInvalidParameter, kUser2Who, RangeUid(2), kLock,
       kNotAuthorized, 0},
      {"operator without operands", both2, Expr({UserUid(2)}, 1), kInvalidParameter, kUser2Who, RangeUid(2), kLock,
       kNotAuthorized, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own();
    for (Uid ace : c.aces) {
      auto admin = sim.Must(kAdmin1Who);
      EXPECT_EQ(Code(WriteAce(*admin, ace, c.expr)), c.written);
      if (c.written == 0) { EXPECT_EQ(Need(ReadAce(*admin, ace)), c.expr) << "read back as written"; }
    }
    Check(sim, c.who, c.object, c.call, c.status, c.column);
  }
}

TEST(Access, AceSettings) {
  for (bool rows : {true, false}) {  // ranges above 8 with or without lock ACEs of their own
    SCOPED_TRACE(rows ? "rows beyond 8" : "no rows beyond 8");
    Sim sim("/dev/nvme0", 16);
    sim.Own().drive().settings.aceRowsBeyond8 = rows;
    for (Uid ace : {AceSetRdLockedUid(12), AceSetWrLockedUid(12)}) {
      Check(sim, kAdmin1Who, ace, Ace(Expr({UserUid(1)}, 0)), rows ? 0 : kInvalidParameter);
    }
    Check(sim, kUser1Who, RangeUid(12), kLock, rows ? 0 : kNotAuthorized);
    Check(sim, kAdmin1Who, RangeUid(12), Set({{7, 1}, {8, 0}}), 0);
    Check(sim, kAdmin1Who, RangeUid(17), kLock, kInvalidParameter);
  }
  Sim sim;
  sim.Own().drive().settings.aceOperands = 2;
  Check(sim, kAdmin1Who, AceSetRdLockedUid(2), Ace(Expr({kAdmins, UserUid(2)}, 1)), 0);
  Check(sim, kAdmin1Who, AceSetRdLockedUid(2), Ace(Expr({kAdmins, UserUid(1), UserUid(2)}, 2)), kInvalidParameter);
}

// GetACL lists the ACEs that guard a method on an object, not their users.
TEST(Access, GetAcl) {
  Sim sim;
  const Message reply = Need(sim.Own().Must(kUser1Who)->Call(kAccessControlTable, kMethodGetAcl,
                                                             {Value::Ref(RangeUid(1)), Value::Ref(kMethodSet)}));
  std::vector<Uid> aces;
  for (const Value& item : reply.arguments.at(0).items()) {
    EXPECT_TRUE(item.AsUid(aces.emplace_back()));
  }
  EXPECT_EQ(aces, (std::vector<Uid>{kAceLockingAdminsRangeStartToLor, AceSetRdLockedUid(1), AceSetWrLockedUid(1)}));
}

// Range addresses the drive must refuse, and those it takes, beside range 1
// at 2048 for 4096 blocks on a drive of 976773168 blocks.
TEST(Access, RangeAddresses) {
  struct Case {
    const char* name;
    unsigned range;
    uint64_t start, length;
    int status;
  } cases[] = {
      {"same address again", 1, 2048, 4096, 0},
      {"touching the first", 2, 6144, 8, 0},
      {"overlapping the first", 2, 6136, 16, kInvalidParameter},
      {"inside the first", 2, 4096, 8, kInvalidParameter},
      {"misaligned start", 2, 100001, 8, kInvalidParameter},
      {"misaligned length", 2, 100000, 9, kInvalidParameter},
      {"up to the last block", 2, 976773168 - 8, 8, 0},
      {"past the last block", 2, 976773168 - 8, 16, kInvalidParameter},
      {"start past the drive", 2, 976773168, 8, kInvalidParameter},
      {"length that wraps", 2, 8, 0xFFFFFFFFFFFFFFF8, kInvalidParameter},
      {"global range", 0, 0, 8, kInvalidParameter},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Need(sim.Own().Must(kAdmin1Who)->Set(RangeUid(1), {{3, Value::UInt(2048)}, {4, Value::UInt(4096)}}));
    const std::string before = opalsim::Serialize(sim.world);
    const std::vector<std::pair<uint64_t, Value>> address = {{3, Value::UInt(c.start)}, {4, Value::UInt(c.length)}};
    EXPECT_EQ(Code(sim.Must(kAdmin1Who)->Set(RangeUid(c.range), address)), c.status);
    EXPECT_EQ(opalsim::Serialize(sim.world) == before, c.status != 0 || c.range == 1);
  }
}

}  // namespace
}  // namespace opalsim_test

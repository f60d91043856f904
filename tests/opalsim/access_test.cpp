// Who may read and change what on an owned drive of 16 ranges, granted as
// kGrants says. Each row makes one call on a fresh drive: a refused call
// leaves the drive as it was, an accepted Set changes it, and a Get shows
// (+c) or hides (-c) column c.
#include <gtest/gtest.h>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

struct Call { Uid method; std::vector<Value> arguments; };
Call Set(std::initializer_list<std::pair<uint64_t, uint64_t>> columns) {
  std::vector<std::pair<uint64_t, Value>> values;
  for (auto [column, value] : columns) values.emplace_back(column, Value::UInt(value));
  return {kMethodSet, SetColumns(values)};
}
Call Pin(const char* pin) { return {kMethodSet, SetColumns({{column::kPin, Value::Text(pin)}})}; }
Call Get(uint64_t first, uint64_t last) { return {kMethodGet, GetColumns(first, last)}; }
Call Ace(const BooleanExpr& e) { return {kMethodSet, SetColumns({{column::kBooleanExpr, EncodeBooleanExpr(e)}})}; }

TEST(Access, Calls) {
  const Call kGenKey{kMethodGenKey, {}}, kLock = Set({{7, 1}, {8, 1}});
  const Call kGrant = Ace({A(UserUid(1))}), kTwo = Ace({A(kAdmins), A(UserUid(1)), kOr});
  const Call kThree = Ace({A(kAdmins), A(UserUid(1)), kOr, A(UserUid(2)), kOr});
  const char *kNoRows = "ace-rows-beyond-8 no", *kTwoOperands = "ace-operands 2";
  struct Case { const char* name; Who who; Uid object; Call call; int status, column = 0; const char* setting = ""; };
  const Case cases[] = {
      {"user locks its range", kUser1Who, RangeUid(1), kLock, 0},
      {"user on another's range", kUser1Who, RangeUid(2), kLock, kNotAuthorized},
      {"user locks and enables at once", kUser1Who, RangeUid(1), Set({{5, 1}, {7, 1}, {8, 1}}), kNotAuthorized},
      {"user granted alone", kUser2Who, RangeUid(2), kLock, 0},
      {"user granted reads with the admins", kUser1Who, RangeUid(3), Set({{7, 1}}), 0},
      {"user locks writes not granted", kUser2Who, RangeUid(3), kLock, kNotAuthorized},
      {"address to Admin1 OR the user", kUser2Who, RangeUid(2), Get(3, 10), 0, 3},
      {"address to admins AND NOT User1", kAdmin1Who, RangeUid(3), Get(3, 10), 0, 3},
      {"address to admins AND NOT User1, as User2", kUser2Who, RangeUid(3), Get(3, 10), 0, -3},
      {"admin locks past the users' grants", kAdmin1Who, RangeUid(1), kLock, 0},
      {"admin locks the global range", kAdmin1Who, RangeUid(0), Set({{5, 1}, {6, 1}, {7, 1}, {8, 1}}), 0},
      // Addresses beside range 1 (2048 for 4096) on a drive of 976773168 blocks.
      {"touching range 1", kAdmin1Who, RangeUid(2), Set({{3, 6144}, {4, 8}}), 0},
      {"overlapping range 1", kAdmin1Who, RangeUid(2), Set({{3, 6136}, {4, 16}}), kInvalidParameter},
      {"misaligned start", kAdmin1Who, RangeUid(2), Set({{3, 100001}, {4, 8}}), kInvalidParameter},
      {"up to the last block", kAdmin1Who, RangeUid(2), Set({{3, 976773160}, {4, 8}}), 0},
      {"past the last block", kAdmin1Who, RangeUid(2), Set({{3, 976773160}, {4, 16}}), kInvalidParameter},
      {"start past the drive", kAdmin1Who, RangeUid(2), Set({{3, 976773168}, {4, 8}}), kInvalidParameter},
      {"length that wraps", kAdmin1Who, RangeUid(2), Set({{3, 8}, {4, ~uint64_t{7}}}), kInvalidParameter},
      {"global range address", kAdmin1Who, RangeUid(0), Set({{4, 8}}), kInvalidParameter},
      {"admin sets MBRDone", kAdmin1Who, kMbrControl, Set({{2, 1}}), 0},
      {"user sets its own PIN", kUser1Who, CpinUserUid(1), Pin("mine"), 0},
      {"user sets another's PIN", kUser1Who, CpinUserUid(2), Pin("yours"), kNotAuthorized},
      {"user enables another user", kUser1Who, UserUid(3), Set({{5, 1}}), kNotAuthorized},
      {"admin enables a user", kAdmin1Who, UserUid(3), Set({{5, 1}}), 0},
      {"user grants itself a range", kUser1Who, AceSetRdLockedUid(4), kGrant, kNotAuthorized},
      {"user re-keys its range", kUser1Who, Aes256KeyUid(1), kGenKey, kNotAuthorized},
      {"anybody sets the SID PIN", kAnyone, kCpinSid, Pin("mine"), kNotAuthorized},
      {"user reverts the Locking SP", kUser1Who, kThisSp, {kMethodRevertSp, {}}, kNotAuthorized},
      {"SID PIN not even to SID", kSidWho, kCpinSid, Get(3, 7), 0, -3},
      {"SID's try count to SID", kSidWho, kCpinSid, Get(3, 7), 0, 6},
      {"range 17 of 16", kAdmin1Who, RangeUid(17), Set({{7, 1}}), kInvalidParameter},
      {"ACE of range 17", kAdmin1Who, AceSetRdLockedUid(17), kGrant, kInvalidParameter},
      {"unknown UID", kAdmin1Who, 0x0000ABCD00000001, Set({{1, 1}}), kInvalidParameter},
      {"ACE naming user 9 of 8", kAdmin1Who, AceSetRdLockedUid(4), Ace({A(UserUid(9))}), kInvalidParameter},
      {"operator without operands", kAdmin1Who, AceSetRdLockedUid(4), Ace({A(kAdmins), kOr}), kInvalidParameter},
      {"ACE of range 9", kAdmin1Who, AceSetWrLockedUid(9), kGrant, 0},
      {"ACE of range 9, no rows beyond 8", kAdmin1Who, AceSetRdLockedUid(9), kGrant, kInvalidParameter, 0, kNoRows},
      {"ACE of range 8, no rows beyond 8", kAdmin1Who, AceSetWrLockedUid(8), kGrant, 0, 0, kNoRows},
      {"admin locks range 9 without its ACEs", kAdmin1Who, RangeUid(9), kLock, 0, 0, kNoRows},
      {"operands at the limit", kAdmin1Who, AceSetRdLockedUid(4), kTwo, 0, 0, kTwoOperands},
      {"operands past the limit", kAdmin1Who, AceSetRdLockedUid(4), kThree, kInvalidParameter, 0, kTwoOperands},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim(16);
    sim.Own().Setting(c.setting);
    const std::string before = opalsim::Serialize(sim.world);
    const Result<Message> reply = sim.Must(c.who)->Call(c.object, c.call.method, c.call.arguments);
    EXPECT_EQ(Code(reply), c.status);
    if (c.call.method != kMethodGet) { EXPECT_EQ(opalsim::Serialize(sim.world) == before, c.status != 0); }
    if (c.column != 0) { EXPECT_EQ(reply && Need(ColumnsOfResult(*reply)).count(std::abs(c.column)), c.column > 0); }
  }
}

}  // namespace
}  // namespace opalsim_test

// What the emulated drive's tests and its fuzzer share: a drive held in
// memory, reached through the host library, and owned as clients leave it.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "local_transport.h"
#include "packet.h"
#include "tables.h"

namespace opalsim_test {

using namespace opal;
using opalsim::Drive;
using opalsim::World;

inline Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// A Result's value, or an exception that fails the test (aborts the fuzzer).
template <typename T>
T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}
// 0 for success, else the drive's status.
template <typename T>
int Code(const Result<T>& result) {
  return result ? 0 : result.error().status;
}
constexpr int kNotAuthorized = 0x01, kInvalidParameter = 0x0C, kLockedOut = 0x12, kFailStatus = 0x3F;

// Who a session is opened as, with the password Sim::Own gives it.
struct Who {
  Uid sp;
  std::optional<Uid> authority;
  std::string password;
};
inline const Who kAnyone{kAdminSp, std::nullopt, ""}, kSidWho{kAdminSp, kSid, "sid-pw"},
    kPsidWho{kAdminSp, kPsid, "PSIDPSIDPSIDPSIDPSIDPSIDPSID0001"}, kAdmin1Who{kLockingSp, kAdmin1, "sid-pw"},
    kUser1Who{kLockingSp, UserUid(1), "user1-pw"}, kUser2Who{kLockingSp, UserUid(2), "user2-pw"},
    kUser3Who{kLockingSp, UserUid(3), "user3-pw"};

// Postfix: the operands, then the operators.
inline BooleanExpr Expr(std::initializer_list<Uid> operands, std::initializer_list<BooleanOp> ops = {}) {
  BooleanExpr expr;
  for (Uid uid : operands) expr.push_back(AceTerm::Authority(uid));
  for (BooleanOp op : ops) expr.push_back(AceTerm::Operator(op));
  return expr;
}
constexpr BooleanOp kOr = BooleanOp::kOr;

// The grants of an owned drive, in the shapes clients write: range 1 to
// User1 as User1 OR User1, range 2 to User2 alone and readable by Admin1 OR
// User2, range 3's reads (not writes) to the admins and both users, and its
// address readable by the admins but not User1.
inline const std::pair<Uid, BooleanExpr> kGrants[] = {
    {AceSetRdLockedUid(1), Expr({UserUid(1), UserUid(1)}, {kOr})},
    {AceSetWrLockedUid(1), Expr({UserUid(1), UserUid(1)}, {kOr})},
    {AceSetRdLockedUid(2), Expr({UserUid(2)})},
    {AceSetWrLockedUid(2), Expr({UserUid(2)})},
    {AceGetRangeUid(2), Expr({kAdmin1, UserUid(2)}, {kOr})},
    {AceSetRdLockedUid(3), Expr({kAdmins, UserUid(1), UserUid(2)}, {kOr, kOr})},
    {AceGetRangeUid(3), Expr({kAdmins, UserUid(1)}, {BooleanOp::kNot, BooleanOp::kAnd})},
};

// One factory-new emulated drive in a world of its own.
class Sim {
 public:
  explicit Sim(unsigned ranges = 8) : mbr("/tmp/opalsim-test-mbr-" + std::to_string(getpid())) {
    world.drives.push_back(opalsim::NewDrive("/dev/nvme0", "ZEP NV2000 1TB", "2B2QEXM7", kPsidWho.password,
                                             ranges, true));
    host = std::make_unique<Device>(std::make_unique<opalsim::LocalTransport>(world, "/dev/nvme0", mbr));
  }
  ~Sim() { std::remove(mbr.c_str()); }
  Drive& drive() { return world.drives[0]; }

  Result<std::unique_ptr<Session>> Open(const Who& who, std::optional<std::string> password = std::nullopt) {
    std::optional<Bytes> challenge;
    if (who.authority) challenge = B(password.value_or(who.password));
    return Session::Start(*host, who.sp, who.authority, challenge);
  }
  std::unique_ptr<Session> Must(const Who& who) { return Need(Open(who)); }
  // A setting as the admin command takes it ("try-limit 3"); none when empty.
  Sim& Setting(const std::string& setting) {
    std::string reason;
    const size_t space = setting.find(' ');
    if (!setting.empty() && !opalsim::ApplySetting(drive().settings, setting.substr(0, space),
                                                   setting.substr(space + 1), reason)) {
      throw std::runtime_error(reason);
    }
    return *this;
  }

  // As clients leave a drive: SID's PIN "sid-pw", the Locking SP active,
  // User1 and User2 enabled (User3 has a PIN but stays disabled), kGrants
  // written, and range 1 at 2048 for 4096 blocks and read-locked, so that
  // both locking and unlocking it change the drive.
  Sim& Own() {
    drive().sid.pin = B(kSidWho.password);
    opalsim::Activate(drive());
    for (unsigned n = 0; n < 3; ++n) drive().users[n] = {n < 2, {B("user" + std::to_string(n + 1) + "-pw"), 0}};
    for (const auto& [ace, expr] : kGrants) drive().aces[ace] = expr;
    drive().ranges[1].start = 2048;
    drive().ranges[1].length = 4096;
    drive().ranges[1].readLocked = true;
    return *this;
  }

  World world;
  std::string mbr;
  std::unique_ptr<Device> host;
};

}  // namespace opalsim_test

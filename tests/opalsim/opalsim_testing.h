// What the emulated drive's tests and its fuzzer share: a drive held in
// memory, reached through the host library, and owned as clients leave it.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <stdexcept>

#include "local_transport.h"
#include "packet.h"
#include "tables.h"

namespace opalsim_test {

using namespace opal;
using opalsim::Drive, opalsim::World;

inline Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// A Result's value, or an exception that fails the test (aborts the fuzzer).
template <typename T> T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}
// 0 for success, else the drive's status.
template <typename T> int Code(const Result<T>& result) { return result ? 0 : result.error().status; }
constexpr int kNotAuthorized = 0x01, kInvalidParameter = 0x0C, kLockedOut = 0x12, kFailStatus = 0x3F;

// Who a session is opened as, with the password Sim::Own gives it.
struct Who { Uid sp; std::optional<Uid> authority; std::string password; };
inline const Who kAnyone{kAdminSp, std::nullopt, ""}, kSidWho{kAdminSp, kSid, "sid-pw"},
    kPsidWho{kAdminSp, kPsid, "PSIDPSIDPSIDPSIDPSIDPSIDPSID0001"}, kAdmin1Who{kLockingSp, kAdmin1, "sid-pw"},
    kUser1Who{kLockingSp, UserUid(1), "user1-pw"}, kUser2Who{kLockingSp, UserUid(2), "user2-pw"};

// Terms of a postfix BooleanExpr.
inline AceTerm A(Uid authority) { return AceTerm::Authority(authority); }
inline const AceTerm kOr = AceTerm::Operator(BooleanOp::kOr), kAnd = AceTerm::Operator(BooleanOp::kAnd),
                     kNot = AceTerm::Operator(BooleanOp::kNot);

// The grants of an owned drive, in the shapes clients write: range 1 to
// User1 as User1 OR User1, range 2 to User2 alone and readable by Admin1 OR
// User2, range 3's reads (not writes) to the admins and both users, and its
// address readable by the admins but not User1.
inline const std::pair<Uid, BooleanExpr> kGrants[] = {
    {AceSetRdLockedUid(1), {A(UserUid(1)), A(UserUid(1)), kOr}},
    {AceSetWrLockedUid(1), {A(UserUid(1)), A(UserUid(1)), kOr}},
    {AceSetRdLockedUid(2), {A(UserUid(2))}}, {AceSetWrLockedUid(2), {A(UserUid(2))}},
    {AceGetRangeUid(2), {A(kAdmin1), A(UserUid(2)), kOr}}, {AceGetRangeUid(3), {A(kAdmins), A(UserUid(1)), kNot, kAnd}},
    {AceSetRdLockedUid(3), {A(kAdmins), A(UserUid(1)), kOr, A(UserUid(2)), kOr}}};

// One factory-new emulated drive in a world of its own.
struct Sim {
  Sim(unsigned n = 8) { world.drives = {opalsim::NewDrive("/dev/nvme0", "Z", "F", kPsidWho.password, n, true)}; }
  ~Sim() { std::remove(mbr.c_str()); }
  Drive& drive() { return world.drives[0]; }

  Result<std::unique_ptr<Session>> Open(const Who& who) {
    return Session::Start(*host, who.sp, who.authority, who.authority ? std::optional(B(who.password)) : std::nullopt);
  }
  std::unique_ptr<Session> Must(const Who& who) { return Need(Open(who)); }
  // A setting as the admin command takes it ("try-limit 3"); none when empty.
  Sim& Setting(const std::string& s) {
    std::string name = s.substr(0, s.find(' ')), reason;
    if (s.empty() || opalsim::ApplySetting(drive().settings, name, s.substr(name.size() + 1), reason)) return *this;
    throw std::runtime_error(reason);
  }
  // As clients leave a drive: SID's PIN "sid-pw", the Locking SP active,
  // User1 and User2 enabled (User3 has a PIN but stays disabled), kGrants
  // written as clients write them, and range 1 at 2048 for 4096 blocks,
  // read-locked.
  Sim& Own() {
    drive().sid.pin = B(kSidWho.password);
    opalsim::Activate(drive());
    for (unsigned n = 0; n < 3; ++n) drive().users[n] = {n < 2, {B("user" + std::to_string(n + 1) + "-pw"), 0}};
    Device device(std::make_unique<opalsim::LocalTransport>(world, "/dev/nvme0", mbr));  // leaves host's TSNs alone
    auto admin = Need(Session::Start(device, kLockingSp, kAdmin1, B(kAdmin1Who.password)));
    for (const auto& [ace, expr] : kGrants) Need(WriteAce(*admin, ace, expr));
    drive().ranges[1] = {2048, 4096, false, false, true, false, {0}, drive().ranges[1].dataKey};
    return *this;
  }

  World world;
  std::string mbr = "/tmp/opalsim-test-mbr-" + std::to_string(getpid());
  std::unique_ptr<Device> host =
      std::make_unique<Device>(std::make_unique<opalsim::LocalTransport>(world, "/dev/nvme0", mbr));
};

}  // namespace opalsim_test

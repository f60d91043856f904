// What the emulated drive's tests share: a drive held in memory and reached
// through the host library, the same drive owned with two users, and raw
// ComPackets for the tests that talk below the library.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "local_transport.h"
#include "packet.h"
#include "session.h"
#include "tables.h"

namespace opalsim_test {

using namespace opal;
using opalsim::Drive;
using opalsim::World;

inline Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// A Result's value, or an exception that fails the test with its message.
template <typename T>
T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}

// 0 for success, else the drive's status (-1 when the failure was not a
// method status).
template <typename T>
int Code(const Result<T>& result) {
  return result ? 0 : result.error().status;
}
constexpr int kNotAuthorized = 0x01, kInvalidParameter = 0x0C, kLockedOut = 0x12, kFailStatus = 0x3F;

inline const char kPsidText[] = "PSIDPSIDPSIDPSIDPSIDPSIDPSID0001";

// Who a session is opened as, with the password Sim::Own gives it.
struct Who {
  Uid sp;
  std::optional<Uid> authority;
  std::string password;
};
inline const Who kAnyone{kAdminSp, std::nullopt, ""};
inline const Who kSidWho{kAdminSp, kSid, "sid-pw"};
inline const Who kPsidWho{kAdminSp, kPsid, kPsidText};
inline const Who kAdmin1Who{kLockingSp, kAdmin1, "sid-pw"};
inline const Who kUser1Who{kLockingSp, UserUid(1), "user1-pw"};
inline const Who kUser2Who{kLockingSp, UserUid(2), "user2-pw"};
inline const Who kUser3Who{kLockingSp, UserUid(3), "user3-pw"};

// One emulated drive, factory-new, in a world of its own; its shadow MBR
// lives in a temporary file.
class Sim {
 public:
  explicit Sim(const std::string& device = "/dev/nvme0", unsigned ranges = 8) : device_(device) {
    char file[] = "/tmp/opalsim-mbr-XXXXXX";
    close(mkstemp(file));
    mbr = file;
    world.drives.push_back(opalsim::NewDrive(device, "ZEP NV2000 1TB", "2B2QEXM7", kPsidText, ranges, true));
    host = std::make_unique<Device>(std::make_unique<opalsim::LocalTransport>(world, device_, mbr));
  }
  ~Sim() { std::remove(mbr.c_str()); }
  Drive& drive() { return world.drives[0]; }

  Result<std::unique_ptr<Session>> Open(const Who& who, std::optional<std::string> password = std::nullopt) {
    std::optional<Bytes> challenge;
    if (who.authority) challenge = B(password.value_or(who.password));
    return Session::Start(*host, who.sp, who.authority, challenge);
  }
  std::unique_ptr<Session> Must(const Who& who) { return Need(Open(who)); }

  // SID's PIN from the MSID to "sid-pw", as a client takes ownership.
  Sim& TakeOwnership() {
    const Bytes msid = Need(ReadMsid(*Must(kAnyone)));
    Need(SetPin(*Need(Session::Start(*host, kAdminSp, kSid, msid)), kCpinSid, B(kSidWho.password)));
    return *this;
  }
  // Level 0 discovery as another host process reads it.
  Discovery Discover() {
    return Need(Device(std::make_unique<opalsim::LocalTransport>(world, device_, mbr)).Discover());
  }
  // The data keys of every range, global first.
  std::vector<uint64_t> Keys() {
    std::vector<uint64_t> keys;
    for (const opalsim::Range& range : drive().ranges) keys.push_back(range.dataKey);
    return keys;
  }
  // Ownership taken (SID "sid-pw"), Locking SP active, User1 and User2
  // enabled with passwords (User3 has one but stays disabled), range 1
  // granted to User1 as the kernel writes it and read-locked, so that both
  // locking and unlocking it change the drive.
  Sim& Own() {
    TakeOwnership();
    Need(ActivateLockingSp(*Must(kSidWho)));
    auto admin = Must(kAdmin1Who);
    for (const Who* user : {&kUser1Who, &kUser2Who, &kUser3Who}) {
      Need(SetPin(*admin, CpinUserUid(static_cast<unsigned>(*user->authority - kUsers)), B(user->password)));
      Need(SetEnabled(*admin, *user->authority, user != &kUser3Who));
    }
    const BooleanExpr kernel = {AceTerm::Authority(UserUid(1)), AceTerm::Authority(UserUid(1)),
                                AceTerm::Operator(BooleanOp::kOr)};
    Need(WriteAce(*admin, AceSetRdLockedUid(1), kernel));
    Need(WriteAce(*admin, AceSetWrLockedUid(1), kernel));
    Need(admin->Set(RangeUid(1), {{column::kReadLocked, Value::UInt(1)}}));
    return *this;
  }

  World world;
  std::string mbr;
  std::unique_ptr<Device> host;

 private:
  std::string device_;
};

// Bytes from blank-separated hex pairs; "F0*3" repeats a byte.
inline Bytes Hex(const std::string& text) {
  Bytes out;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const size_t star = word.find('*');
    out.insert(out.end(), star == std::string::npos ? 1 : std::stoul(word.substr(star + 1)),
               static_cast<uint8_t>(std::stoul(word.substr(0, 2), nullptr, 16)));
  }
  return out;
}

inline Bytes StartSessionPayload(const Who& who, uint32_t hsn = 105) {
  StartSessionArgs args{hsn, who.sp, true, {}, who.authority};
  if (who.authority) args.challenge = B(who.password);
  return EncodeCall(kSessionManager, kMethodStartSession, EncodeStartSession(args));
}

// The drive's side reached directly, below the host library: IF-SEND of any
// bytes, and the answer as the next IF-RECV finds it.
struct Raw {
  explicit Raw(Sim& sim) : sim(sim) {}
  // The answer's payload (empty for an empty ComPacket).
  Bytes Send(const Bytes& ifSend, size_t receive = 2048) {
    opalsim::TperSend(sim.drive(), connection, sim.mbr, kProtocolTcg, 0x1000, ifSend);
    Bytes out;
    opalsim::TperReceive(sim.drive(), connection, kProtocolTcg, 0x1000, receive, out);
    Result<ComPacket> packet = Unframe(out);
    if (!packet) throw std::runtime_error("the drive sent a malformed ComPacket: " + packet.error().message);
    last = *packet;
    return packet->payload;
  }
  Bytes Send(uint32_t tsn, uint32_t hsn, const Bytes& payload) {
    ComPacket packet;
    packet.comId = 0x1000;
    packet.tsn = tsn;
    packet.hsn = hsn;
    packet.payload = payload;
    return Send(PadToBlock(Frame(packet)));
  }
  // A session as who, with host session number hsn; its TSN.
  uint32_t Start(const Who& who = kAnyone, uint32_t hsn = 105) {
    const Message sync = Need(DecodeMessage(Send(0, 0, StartSessionPayload(who, hsn))));
    if (sync.arguments.size() != 2) throw std::runtime_error("no SyncSession");
    return static_cast<uint32_t>(sync.arguments[1].uinteger());
  }

  Sim& sim;
  opalsim::Connection connection;
  ComPacket last;
};

// The status of an answer payload; -1 for an empty ComPacket, -2 for a
// payload that is no message.
inline int StatusOf(const Bytes& payload) {
  if (payload.empty()) return -1;
  Result<Message> message = DecodeMessage(payload);
  return message ? message->status : -2;
}

}  // namespace opalsim_test

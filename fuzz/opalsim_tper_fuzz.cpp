// The emulated drive's TPer on hostile host traffic. The input is a series of
// records: an op byte, a 2-byte length, then that many bytes. The op's low
// two bits say what the bytes are: a whole IF-SEND (0), a token payload the
// harness frames for the session manager (1) or for the newest open session
// (2), or the size of an IF-RECV (3). An IF-RECV of 2048 bytes follows every
// IF-SEND. The drive starts owned, as a client leaves it (SID and Admin1
// "sid-pw", User1 "user1-pw" granted range 1), so sessions open and calls
// reach the methods.
//
// Checked: every answer fills exactly the buffer asked for, every non-empty
// answer is a well-formed ComPacket whose payload is a message, and the drive
// afterwards still survives its state file's text form unchanged.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "local_transport.h"
#include "packet.h"
#include "tables.h"

using namespace opal;

namespace {

std::string mbrPath;
opalsim::World owned;

void Require(bool condition) {
  if (!condition) std::abort();
}

template <typename T>
T Need(Result<T> result) {
  Require(result.ok());
  return std::move(*result);
}

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

// The owned drive, made the way a client makes it.
void Own() {
  owned.drives.push_back(opalsim::NewDrive("/dev/nvme0", "ZEP NV2000 1TB", "2B2QEXM7", "PSID", 8, true));
  owned.drives[0].settings.mbrSize = 1 << 16;  // keeps the MBR file small
  Device device(std::make_unique<opalsim::LocalTransport>(owned, "/dev/nvme0", mbrPath));
  auto as = [&](Uid sp, std::optional<Uid> who, std::optional<Bytes> pin) {
    return Need(Session::Start(device, sp, who, std::move(pin)));
  };
  const Bytes msid = Need(ReadMsid(*as(kAdminSp, std::nullopt, std::nullopt)));
  Need(SetPin(*as(kAdminSp, kSid, msid), kCpinSid, Text("sid-pw")));
  Need(ActivateLockingSp(*as(kAdminSp, kSid, Text("sid-pw"))));
  auto admin = as(kLockingSp, kAdmin1, Text("sid-pw"));
  Need(SetPin(*admin, CpinUserUid(1), Text("user1-pw")));
  Need(SetEnabled(*admin, UserUid(1), true));
  for (Uid ace : {AceSetRdLockedUid(1), AceSetWrLockedUid(1)}) {
    Need(WriteAce(*admin, ace, {AceTerm::Authority(UserUid(1))}));
  }
}

void Receive(opalsim::Drive& drive, opalsim::Connection& connection, size_t length) {
  Bytes out;
  Require(opalsim::TperReceive(drive, connection, kProtocolTcg, 0x1000, length, out));
  Require(out.size() == length);
  if (length < kComPacketHeaderSize) return;
  Result<ComPacket> packet = Unframe(out);
  Require(packet.ok());
  if (!packet->empty) Require(DecodeMessage(packet->payload).ok());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  mbrPath = "/tmp/opalsim-tper-fuzz-mbr-" + std::to_string(getpid());
  std::atexit([] { opalsim::ClearMbr(mbrPath); });
  Own();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  opalsim::World world = owned;
  opalsim::Drive& drive = world.drives[0];
  opalsim::Connection connection;
  opalsim::ClearMbr(mbrPath);
  for (size_t at = 0; at + 3 <= size;) {
    const uint8_t op = data[at] & 3;
    const size_t length = std::min<size_t>(size - at - 3, size_t{data[at + 1]} << 8 | data[at + 2]);
    const Bytes bytes(data + at + 3, data + at + 3 + length);
    at += 3 + length;
    if (op == 3) {
      Receive(drive, connection, length == 0 ? 0 : length * 16);
      continue;
    }
    Bytes sent = bytes;
    if (op != 0) {
      ComPacket packet;
      packet.comId = 0x1000;
      if (op == 2 && !connection.sessions.empty()) {
        packet.tsn = connection.sessions.back().tsn;
        packet.hsn = connection.sessions.back().hsn;
      }
      packet.payload = bytes;
      sent = PadToBlock(Frame(packet));
    }
    Require(opalsim::TperSend(drive, connection, mbrPath, kProtocolTcg, 0x1000, sent));
    Receive(drive, connection, 2048);
  }
  const std::string text = opalsim::Serialize(world);
  Result<opalsim::World> again = opalsim::ParseWorld(text);
  Require(again.ok() && opalsim::Serialize(*again) == text);
  return 0;
}

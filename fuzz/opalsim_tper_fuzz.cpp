// The emulated drive's TPer on hostile host traffic. The input is a series of
// records: an op byte, a 2-byte length, then that many bytes. The op's low
// two bits say what the bytes are: a whole IF-SEND (0), a token payload the
// harness frames for the session manager (1) or for the newest open session
// (2), or the size of an IF-RECV (3). An IF-RECV of 2048 bytes follows every
// IF-SEND. The drive starts owned, as clients leave it, so sessions open and
// calls reach the methods.
//
// Checked: every answer fills exactly the buffer asked for, every non-empty
// answer is a well-formed ComPacket whose payload is a message, and the drive
// afterwards reads back from its state file's text form unchanged.
#include <cstdlib>

#include "../tests/opalsim/opalsim_testing.h"

using namespace opalsim_test;

namespace {

void Require(bool condition) { if (!condition) std::abort(); }

void Receive(Drive& drive, opalsim::Connection& connection, size_t length) {
  Bytes out;
  Require(opalsim::TperReceive(drive, connection, kProtocolTcg, 0x1000, length, out) && out.size() == length);
  Result<ComPacket> packet = Unframe(out);
  Require(length < kComPacketHeaderSize || (packet.ok() && (packet->empty || DecodeMessage(packet->payload).ok())));
}

Sim owned;  // its MBR file goes with it at exit

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  owned.Own().Setting("mbr-size 65536");  // keeps the MBR file small
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  World world = owned.world;
  Drive& drive = world.drives[0];
  opalsim::Connection connection;
  opalsim::ClearMbr(owned.mbr);
  for (size_t at = 0; at + 3 <= size;) {
    const uint8_t op = data[at] & 3;
    const size_t length = std::min<size_t>(size - at - 3, size_t{data[at + 1]} << 8 | data[at + 2]);
    const Bytes bytes(data + at + 3, data + at + 3 + length);
    at += 3 + length;
    const auto last = op == 2 && !connection.sessions.empty() ? connection.sessions.back() : opalsim::OpenSession{};
    const ComPacket packet{0x1000, 0, 0, 0, last.tsn, last.hsn, 0, 0, false, bytes};
    const Bytes sent = op == 0 ? bytes : PadToBlock(Frame(packet));
    if (op != 3) Require(opalsim::TperSend(drive, connection, owned.mbr, kProtocolTcg, 0x1000, sent));
    Receive(drive, connection, op == 3 ? length * 16 : 2048);
  }
  const std::string text = opalsim::Serialize(world);
  Require(opalsim::Serialize(Need(opalsim::ParseWorld(text))) == text);
  return 0;
}

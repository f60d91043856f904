// The owned drive below the host library, as ComPackets: whole answers,
// byte for byte, where clients read tokens by position, the settings that
// change them, and hostile input, which gets an error (or nothing), changes
// nothing and leaves the drive serving.
#include <gtest/gtest.h>

#include <sstream>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

// Bytes from blank-separated hex pairs; "F0*3" repeats a byte.
Bytes Hex(const std::string& text) {
  Bytes out;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const size_t star = word.find('*');
    out.insert(out.end(), star == std::string::npos ? 1 : std::stoul(word.substr(star + 1)),
               static_cast<uint8_t>(std::stoul(word.substr(0, 2), nullptr, 16)));
  }
  return out;
}

Bytes StartSession(const Who& who) {
  StartSessionArgs args{105, who.sp, true, {}, who.authority};
  if (who.authority) args.challenge = B(who.password);
  return EncodeCall(kSessionManager, kMethodStartSession, EncodeStartSession(args));
}

// An IF-SEND of a ComPacket in a session of who (none: the session manager)
// and the answer the next IF-RECV finds.
struct Wire {
  explicit Wire(Sim& sim) : sim(sim) {}
  ComPacket Send(const Bytes& payload, size_t patchAt = 0, uint32_t patch = 0) {
    ComPacket packet;
    packet.comId = 0x1000;
    packet.tsn = tsn;
    packet.hsn = tsn == 0 ? 0 : 105;
    packet.payload = payload;
    Bytes sent = PadToBlock(Frame(packet)), out;
    if (patchAt != 0) WriteBe(sent.data() + patchAt, patch, 4);
    opalsim::TperSend(sim.drive(), connection, sim.mbr, kProtocolTcg, 0x1000, sent);
    opalsim::TperReceive(sim.drive(), connection, kProtocolTcg, 0x1000, 2048, out);
    return Need(Unframe(out));
  }
  void Start(const Who& who) {
    tsn = static_cast<uint32_t>(Need(DecodeMessage(Send(StartSession(who)).payload)).arguments.at(1).uinteger());
  }
  Sim& sim;
  uint32_t tsn = 0;
  opalsim::Connection connection;
};

const std::string ok = " F9 F0 00 00 00 F1", no = "F0 F1 F9 F0 0C 00 00 F1", sm = "F8 A8 00*7 FF A8 00*6 FF ";
const std::string getMsid = "F8 A8 00 00 00 0B 00 00 84 02 A8 00*3 06 00*3 16 F0 F0 F1 F1" + ok;

TEST(Wire, Answers) {
  const Who kLocking{kLockingSp, std::nullopt, ""};
  const std::string range1 = "F8 A8 00 00 08 02 00 03 00 01 A8 00*3 06 00*3 ", on = "A8 00*3 06 00*3 ";
  const std::string mbr = "F8 A8 00 00 08 04 00*4 " + on + "16 F0 F0 F2 01 00 F3 F2 02 ";
  struct Case {
    const char* name;
    const Who* who;
    std::string sent, answer;
    const char* setting = "";
    size_t patchAt = 0;
    uint32_t patch = 0;
  } cases[] = {
      {"SyncSession: HSN echoed, TSN 4096", nullptr, sm + "02 F0 81 69 A8 00 00 02 05 00*3 01 01 F1" + ok,
       sm + "03 F0 81 69 82 10 00 F1" + ok},
      {"stray end of session", nullptr, "FA", ""},
      {"stray end of session, answering drive", nullptr, "FA", "FA", "stray-end-session answer"},
      {"wrong password", nullptr, "", "F0 F1 F9 F0 01 00 00 F1"},
      {"wrong password, SyncSession shape", nullptr, "", sm + "03 F0 F1 F9 F0 01 00 00 F1", "failed-start sync"},
      {"range columns 3 to 8", &kAdmin1Who, range1 + "16 F0 F0 F2 03 03 F3 F2 04 08 F3 F1 F1" + ok,
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 01 F3 F2 08 00 F3 F1 F1" + ok},
      {"setupLockingRange's Set", &kAdmin1Who,
       range1 + "17 F0 F2 01 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 00 F3" +
           " F2 08 00 F3 F1 F3 F1" + ok,
       "F0 F1" + ok},
      {"ActiveKey", &kAdmin1Who, range1 + "16 F0 F0 F2 03 0A F3 F2 04 0A F3 F1 F1" + ok,
       "F0 F0 F2 0A A8 00 00 08 06 00 03 00 01 F3 F1 F1" + ok},
      {"MaxRanges", &kLocking, "F8 A8 00 00 08 01 00*3 01 " + on + "16 F0 F0 F2 03 04 F3 F2 04 04 F3 F1 F1" + ok,
       "F0 F0 F2 04 08 F3 F1 F1" + ok},
      {"Locking SP life cycle", &kAnyone, "F8 A8 00 00 02 05 00*3 02 " + on + "16 F0 F0 F2 03 06 F3 F2 04 06 F3 F1 F1" +
       ok, "F0 F0 F2 06 09 F3 F1 F1" + ok},
      {"GetACL of range 1's Set", &kLocking, "F8 A8 00 00 00 07 00*4 " + on + "0D F0 A8 00 00 08 02 00 03 00 01 " +
       on + "17 F1" + ok, "F0 F0 A8 00 00 00 08 00 03 F0 01 A8 00 00 00 08 00 03 E0 01 A8 00 00 00 08 00 03 E8 01 F1 F1" + ok},
      {"Next with a huge count", &kAnyone, "F8 A8 00 00 00 0B 00*4 " + on + "08 F0 F2 01 88 FF*8 F3 F1" + ok,
       "F0 F0 A8 00 00 00 0B 00 00 00 01 A8 00 00 00 0B 00 00 84 02 A8 00 00 00 0B 00 01 FF 01 F1 F1" + ok},
      {"end of session", &kSidWho, "FA", "FA"},
      {"ComPacket length past the buffer", &kAnyone, getMsid, no, "", 16, 0x7FFFFFFF},
      {"packet length past its ComPacket", &kAnyone, getMsid, no, "", 40, 0x10000},
      {"subpacket length past its packet", &kAnyone, getMsid, no, "", 52, 0x10000},
      {"subpacket length zero", &kAnyone, getMsid, no, "", 52, 0},
      {"ComPacket for another ComID", &kAnyone, getMsid, "", "", 4, 0x20000000},
      {"session that does not exist", nullptr, getMsid, no, "", 20, 4242},
      {"HSN of no session", &kAnyone, getMsid, no, "", 24, 0x41},
      {"lists nested 5000 deep", &kAnyone, "F8 A8 00 00 00 0B 00 00 84 02 " + on + "16 F0*5000 F1*5000" + ok, no},
      {"lists never closed", nullptr, "F0*4000", no},
      {"a response where a call belongs", nullptr, "F0 F1" + ok, no},
      {"Get sent to the session manager", nullptr, "F8 A8 00*7 FF " + on + "16 F0 F1" + ok, no},
      {"StartSession with a short SPID", nullptr, sm + "02 F0 81 69 A4 00 00 02 05 01 F1" + ok, no},
      {"Properties with a number for the host list", nullptr, sm + "01 F0 F2 00 05 F3 F1" + ok,
       sm + "01 F0 F1 F9 F0 0C 00 00 F1"},
      {"object that does not exist", &kAnyone, "F8 A8 00 00 AB CD 00*3 01 " + on + "16 F0 F1" + ok, no},
      {"Set with Values not a list", &kAnyone, "F8 A8 00*3 0B 00 00 84 02 " + on + "17 F0 F2 01 05 F3 F1" + ok, no},
      {"Get with the columns reversed", &kAnyone, "F8 A8 00*3 0B 00 00 84 02 " + on +
       "16 F0 F0 F2 03 05 F3 F2 04 03 F3 F1 F1" + ok, no},
      {"MBR rows past the table", &kLocking, mbr + "88 FF*8 F3 F1 F1" + ok, no},
      {"MBR rows more than the host takes", &kLocking, mbr + "83 01 00 00 F3 F1 F1" + ok, "F0 F1 F9 F0 11 00 00 F1"},
      {"Random of 1000 bytes", &kAnyone, "F8 A8 00*7 01 A8 00*3 06 00 00 06 01 F0 82 03 E8 F1" + ok, no},
      {"GetACL of numbers", &kAnyone, "F8 A8 00 00 00 07 00*4 " + on + "0D F0 01 02 F1" + ok, no},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    Wire wire{sim.Own().Setting(c.setting)};
    if (c.who != nullptr) wire.Start(*c.who);
    const std::string before = opalsim::Serialize(sim.world);
    const Bytes sent = c.sent.empty() ? StartSession({kAdminSp, kSid, "wrong"}) : Hex(c.sent);
    const Bytes answer = wire.Send(sent, c.patchAt, c.patch).payload;
    EXPECT_EQ(answer, Hex(c.answer));
    if (c.answer == no || c.answer.empty()) { EXPECT_EQ(opalsim::Serialize(sim.world), before); }
    wire.tsn = 0;
    EXPECT_EQ(Need(DecodeMessage(wire.Send(StartSession(kAnyone)).payload)).status, 0) << "still serving";
  }
}

// Properties with an empty list: the drive's properties, MaxComPacketSize
// before MaxIndTokenSize (where clients stop reading), and the host's
// defaults echoed.
TEST(Wire, PropertiesWithAnEmptyList) {
  Sim sim;
  const Message reply = Need(DecodeMessage(Wire{sim}.Send(Hex(sm + "01 F0 F1" + ok)).payload));
  ASSERT_EQ(reply.arguments.size(), 2u);
  std::vector<std::string> names;
  for (const auto& [name, value] : Need(DecodePropertiesReply(reply.arguments))) names.push_back(name);
  EXPECT_LT(std::find(names.begin(), names.end(), "MaxComPacketSize"),
            std::find(names.begin(), names.end(), "MaxIndTokenSize"));
  EXPECT_EQ(PropertyOr(Need(DecodePropertiesCall({reply.arguments[1]})), "MaxComPacketSize", 0), 2048u);
}

}  // namespace
}  // namespace opalsim_test

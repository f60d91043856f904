// The drive below the host library: the session manager's quirks that
// clients depend on, and hostile ComPackets and token streams, each of which
// must get an error (or nothing) and leave the drive as it was.
#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

const char kSmuid[] = "A8 00 00 00 00 00 00 00 FF ";
const char kStatusOk[] = " F9 F0 00 00 00 F1";
const char kGetMsid[] =
    "F8 A8 00 00 00 0B 00 00 84 02 A8 00 00 00 06 00 00 00 16 F0 F0 F2 03 03 F3 F2 04 03 F3 F1 F1 F9 F0 00 00 00 F1";

TEST(SessionManager, AnswersBySetting) {
  struct Case {
    const char* name;
    const char* setting;
    const char* value;
    Bytes sent;  // with TSN 0
    const char* answer;
  } cases[] = {
      {"stray end of session", "stray-end-session", "empty", Hex("FA"), ""},
      {"stray end of session, answering drive", "stray-end-session", "answer", Hex("FA"), "FA"},
      {"wrong password, bare status", "failed-start", "status", StartSessionPayload({kAdminSp, kSid, "x"}),
       "F0 F1 F9 F0 01 00 00 F1"},
      {"wrong password, SyncSession shape", "failed-start", "sync", StartSessionPayload({kAdminSp, kSid, "x"}),
       "F8 A8 00 00 00 00 00 00 00 FF A8 00 00 00 00 00 00 FF 03 F0 F1 F9 F0 01 00 00 F1"},
      {"inactive Locking SP", "inactive-sp-status", "12", StartSessionPayload({kLockingSp, kAdmin1, "x"}),
       "F0 F1 F9 F0 0C 00 00 F1"},
      {"inactive Locking SP, other status", "inactive-sp-status", "5", StartSessionPayload({kLockingSp, kAdmin1, "x"}),
       "F0 F1 F9 F0 05 00 00 F1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    std::string reason;
    ASSERT_TRUE(opalsim::ApplySetting(sim.drive().settings, c.setting, c.value, reason)) << reason;
    Raw raw(sim);
    EXPECT_EQ(raw.Send(0, 0, c.sent), Hex(c.answer));
    EXPECT_EQ(raw.last.comId, 0x1000);
    EXPECT_EQ(raw.Send(0, 0, Hex("FA")), Hex(c.answer[0] == 'F' && c.sent == Hex("FA") ? "FA" : ""))
        << "the end of session a client sends after a refused start";
  }
}

// Whole answers, byte for byte, to calls as clients make them (those that
// read tokens by position need them so), each in a new session as who.
TEST(SessionManager, ExactAnswers) {
  const std::string ok = kStatusOk, range2 = "F8 A8 00 00 08 02 00 03 00 02 A8 00 00 00 06 00 00 00 ";
  const std::string sync = std::string("F8 ") + kSmuid + "A8 00*6 FF 03 F0 ";
  struct Case {
    const char* name;
    const Who* who;  // none: sent to the session manager
    std::string sent, answer;
  } cases[] = {
      {"SyncSession: HSN echoed, TSN 4096", nullptr, "", sync + "81 69 82 10 00 F1" + ok},
      {"another host's session: TSN 4097", nullptr, "HSN 41", sync + "81 41 82 10 01 F1" + ok},
      {"MaxRanges", &kAdmin1Who, "F8 A8 00 00 08 01 00*3 01 A8 00*3 06 00*3 16 F0 F0 F2 03 04 F3 F2 04 04 F3 F1 F1" +
       ok,
       "F0 F0 F2 04 08 F3 F1 F1" + ok},
      {"setupLockingRange's Set", &kAdmin1Who,
       range2 + "17 F0 F2 01 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 00 F3" +
           " F2 08 00 F3 F1 F3 F1" + ok,
       "F0 F1" + ok},
      {"range columns 3 to 8", &kAdmin1Who, range2 + "16 F0 F0 F2 03 03 F3 F2 04 08 F3 F1 F1" + ok,
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 00 F3 F2 08 00 F3 F1 F1" + ok},
      {"ActiveKey", &kAdmin1Who, range2 + "16 F0 F0 F2 03 0A F3 F2 04 0A F3 F1 F1" + ok,
       "F0 F0 F2 0A A8 00 00 08 06 00 03 00 02 F3 F1 F1" + ok},
      {"Locking SP life cycle", &kSidWho,
       "F8 A8 00 00 02 05 00*3 02 A8 00*3 06 00*3 16 F0 F0 F2 03 06 F3 F2 04 06 F3 F1 F1" + ok,
       "F0 F0 F2 06 09 F3 F1 F1" + ok},
      {"end of session", &kSidWho, "FA", "FA"},
  };
  Sim sim;
  Raw raw(sim.Own());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.who == nullptr) {
      EXPECT_EQ(raw.Send(0, 0, StartSessionPayload(kAnyone, c.sent.empty() ? 105 : 0x41)), Hex(c.answer));
    } else {
      EXPECT_EQ(raw.Send(raw.Start(*c.who), 105, Hex(c.sent)), Hex(c.answer));
      EXPECT_EQ(raw.last.hsn, 105u);
    }
  }
  EXPECT_EQ(StatusOf(raw.Send(4097, 105, Hex(kGetMsid))), kInvalidParameter) << "TSN of one session, HSN of another";
  EXPECT_EQ(StatusOf(raw.Send(4097, 0x41, Hex(kGetMsid))), 0);
}

// Level 0 discovery: the header's Length is the rest of the data, and the
// features are TPer, Locking, Geometry and Opal 2 (with its ComID), no Opal 1.
TEST(SessionManager, Discovery) {
  Sim sim;
  Bytes data;
  opalsim::Connection host;
  ASSERT_TRUE(opalsim::TperReceive(sim.drive(), host, kProtocolTcg, kDiscoveryComId, 2048, data));
  const size_t end = ReadBe(data.data(), 4) + 4;
  std::vector<uint32_t> codes;
  for (size_t at = kDiscoveryHeaderSize; at + 4 <= end; at += 4 + data[at + 3]) codes.push_back(ReadBe(&data[at], 2));
  EXPECT_EQ(codes, (std::vector<uint32_t>{0x0001, 0x0002, 0x0003, 0x0203}));
  EXPECT_TRUE(std::all_of(data.begin() + static_cast<long>(end), data.end(), [](uint8_t b) { return b == 0; }));
  EXPECT_EQ(Need(DecodeDiscovery(data.data(), data.size())).opal2->baseComId, 0x1000);
}

// Properties with an empty list: the drive's properties, MaxComPacketSize
// before MaxIndTokenSize (where clients stop reading), and the default host
// properties echoed.
TEST(SessionManager, PropertiesWithAnEmptyList) {
  Sim sim;
  const Bytes properties = Hex(std::string("F8 ") + kSmuid + "A8 00*6 FF 01 F0 F1" + kStatusOk);
  const Message reply = Need(DecodeMessage(Raw(sim).Send(0, 0, properties)));
  ASSERT_EQ(reply.arguments.size(), 2u);
  std::vector<std::string> names;
  for (const auto& [name, value] : Need(DecodePropertiesReply(reply.arguments))) names.push_back(name);
  EXPECT_LT(std::find(names.begin(), names.end(), "MaxComPacketSize"),
            std::find(names.begin(), names.end(), "MaxIndTokenSize"));
  EXPECT_EQ(PropertyOr(Need(DecodePropertiesCall({reply.arguments[1]})), "MaxComPacketSize", 0), 2048u);
}

// Revert and RevertSP end their session themselves; a refused RevertSP does
// not.
TEST(SessionManager, RevertsCloseTheirSession) {
  struct Case {
    const char* name;
    const Who& who;
    Uid object, method;
    bool globalLocked;
    int status;
  } cases[] = {
      {"Revert", kSidWho, kAdminSp, kMethodRevert, false, 0},
      {"PSID Revert", kPsidWho, kAdminSp, kMethodRevert, false, 0},
      {"RevertSP", kAdmin1Who, kThisSp, kMethodRevertSp, false, 0},
      {"refused RevertSP", kAdmin1Who, kThisSp, kMethodRevertSp, true, kFailStatus},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own();
    if (c.globalLocked) Need(sim.Must(kAdmin1Who)->Set(RangeUid(0), {{7, Value::UInt(1)}, {8, Value::UInt(1)}}));
    Raw raw(sim);
    const uint32_t tsn = raw.Start(c.who);
    std::vector<Value> arguments;
    if (c.method == kMethodRevertSp) arguments.push_back(Value::Named(param::kKeepGlobalRangeKey, Value::UInt(1)));
    EXPECT_EQ(StatusOf(raw.Send(tsn, 105, EncodeCall(c.object, c.method, arguments))), c.status);
    EXPECT_EQ(raw.Send(tsn, 105, Hex("FA")), Hex(c.status == 0 ? "" : "FA"));
  }
}

// Each row is sent on a fresh owned drive: the drive must answer with an
// error (or nothing), change nothing, and still open a session afterwards.
TEST(HostileInput, ErrorsNeverCrashes) {
  // kRaw: the payload is the whole IF-SEND; kNoSession: a TSN never handed out.
  enum Where { kManager, kAdminSession, kLockingSession, kNoSession, kRaw };
  struct Case {
    const char* name;
    Where where;
    std::string payload;  // hex
    size_t patchAt = 0;   // a 4-byte header field overwritten, 0 for none
    uint32_t patch = 0;
    int status = kInvalidParameter;  // -1: an empty ComPacket
  };
  const std::string ok = kStatusOk, sm = std::string("F8 ") + kSmuid + "A8 00*6 FF ";
  const std::string get = "F8 A8 00 00 00 0B 00 00 84 02 A8 00 00 00 06 00 00 00 16 ", good = get + "F0 F0 F1 F1" + ok;
  const std::string mbrGet = "F8 A8 00 00 08 04 00 00 00 00 A8 00 00 00 06 00 00 00 16 F0 F0 F2 01 ";
  const std::string on = "F8 A8 00*7 01 A8 00 00 00 06 00 00 ";  // a method on ThisSP
  const Case cases[] = {
      {"empty IF-SEND", kRaw, ""},
      {"a block of zeros", kRaw, "00*512"},
      {"ComPacket length past the buffer", kAdminSession, good, 16, 0x7FFFFFFF},
      {"packet length past its ComPacket", kAdminSession, good, 40, 0x10000},
      {"subpacket length past its packet", kAdminSession, good, 52, 0x10000},
      {"subpacket length zero", kAdminSession, good, 52, 0},
      {"ComPacket for another ComID", kAdminSession, good, 4, 0x20000000, -1},
      {"session that does not exist", kNoSession, good},
      {"truncated medium atom", kAdminSession, get + "F0 D0"},
      {"truncated long atom", kAdminSession, get + "F0 E2 00 01"},
      {"atom past the data", kAdminSession, get + "F0 D0 40 01 02 F1" + ok},
      {"integer wider than 64 bits", kAdminSession, get + "F0 89 01*9 F1" + ok},
      {"reserved token byte", kAdminSession, get + "F0 E7 F1" + ok},
      {"lists nested 5000 deep", kAdminSession, get + "F0*5000 F1*5000" + ok},
      {"names nested 5000 deep", kAdminSession, get + "F2*5000 01 F3*5000" + ok},
      {"lists never closed", kManager, "F0*4000"},
      {"unbalanced end of list", kAdminSession, "F1 F1 F9"},
      {"call without a status list", kAdminSession, get + "F0 F0 F1 F1"},
      {"call inside a list", kAdminSession, "F0 F8 F1" + ok},
      {"a response where a call belongs", kManager, "F0 F1" + ok},
      {"Get sent to the session manager", kManager, "F8 " + std::string(kSmuid) + "A8 00*3 06 00*3 16 F0 F1" + ok},
      {"StartSession with a short SPID", kManager, sm + "02 F0 81 69 A4 00 00 02 05 01 F1" + ok},
      {"StartSession with a signed HSN", kManager, sm + "02 F0 7F A8 00 00 02 05 00 00 00 01 01 F1" + ok},
      {"StartSession with a numeric challenge", kManager,
       sm + "02 F0 81 69 A8 00 00 02 05 00 00 00 01 01 F2 00 05 F3 F2 03 A8 00 00 00 09 00 00 00 06 F3 F1" + ok},
      {"Properties with a number for the host list", kManager, sm + "01 F0 F2 00 05 F3 F1" + ok},
      {"object that does not exist", kAdminSession, "F8 A8 00 00 AB CD 00*3 01 A8 00*3 06 00*3 16 F0 F1" + ok},
      {"Set with Values not a list", kAdminSession, "F8 A8 00*3 0B 00 00 84 02 A8 00*3 06 00*3 17 F0 F2 01 05 F3 F1" +
       ok},
      {"Get with a text column", kAdminSession, get + "F0 F0 F2 03 A1 41 F3 F1 F1" + ok},
      {"Get with the columns reversed", kAdminSession, get + "F0 F0 F2 03 05 F3 F2 04 03 F3 F1 F1" + ok},
      {"MBR rows past the table", kLockingSession, mbrGet + "00 F3 F2 02 88 FF*8 F3 F1 F1" + ok},
      {"MBR rows more than the host takes", kLockingSession, mbrGet + "00 F3 F2 02 83 01 00 00 F3 F1 F1" + ok, 0, 0,
       0x11},
      {"Random of 1000 bytes", kAdminSession, on + "06 01 F0 82 03 E8 F1" + ok},
      {"Authenticate without an authority", kAdminSession, on + "00 1C F0 F1" + ok},
      {"GetACL of numbers", kAdminSession, "F8 A8 00 00 00 07 00*4 A8 00 00 00 06 00 00 00 0D F0 01 02 F1" + ok},
      {"Next with a huge count", kAdminSession, "F8 A8 00 00 00 09 00*4 A8 00*3 06 00*3 08 F0 F2 01 88 FF*8 F3 F1" + ok,
       0, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own();
    Raw raw(sim);
    ComPacket packet;
    packet.comId = 0x1000;
    const Who anyone{c.where == kLockingSession ? kLockingSp : kAdminSp, {}, ""};
    if (c.where == kAdminSession || c.where == kLockingSession) packet.tsn = raw.Start(anyone);
    if (c.where == kNoSession) packet.tsn = 4242;
    packet.hsn = c.where == kManager ? 0 : 105;
    packet.payload = Hex(c.payload);
    Bytes sent = c.where == kRaw ? Hex(c.payload) : PadToBlock(Frame(packet));
    if (c.patchAt != 0) WriteBe(sent.data() + c.patchAt, c.patch, 4);
    const std::string before = opalsim::Serialize(sim.world);
    EXPECT_EQ(StatusOf(raw.Send(sent)), c.status);
    EXPECT_EQ(opalsim::Serialize(sim.world), before);
    EXPECT_EQ(Need(DecodeMessage(raw.Send(0, 0, StartSessionPayload(kAnyone)))).status, 0) << "the drive still serves";
  }
}

}  // namespace
}  // namespace opalsim_test

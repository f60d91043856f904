// The host side against a scripted drive: discovery and Properties once,
// sessions and their numbers, polling, method status, and the calls each
// Opal operation sends. A UID is written as A8 and its 8 bytes in one group.
#include <gtest/gtest.h>

#include <deque>
#include <functional>

#include "opal_testing.h"
#include "packet.h"
#include "tables.h"

namespace {

// A drive answering from a script, each answer padded or cut to the length
// asked for, and logging each transfer: "IF-RECV protocol ComID length", and
// for an IF-SEND also "[the packet's ComID, TSN, HSN]".
struct FakeTransport : Transport {
  std::deque<Bytes> script;
  std::vector<std::string> log;
  std::vector<Bytes> payloads;  // of every IF-SEND

  Result<Identity> Identify() override { return Fail("not scripted"); }
  Status Send(uint8_t protocol, uint16_t comId, const Bytes& data) override {
    const ComPacket p = Unframe(data) ? *Unframe(data) : ComPacket();
    char line[96];
    std::snprintf(line, sizeof line, "IF-SEND %u %04X %zu [%04X TSN %u HSN %u]", protocol, comId, data.size(), p.comId,
                  p.tsn, p.hsn);
    log.push_back(line), payloads.push_back(p.payload);
    return Ok();
  }
  Result<Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    char line[48];
    log.push_back((std::snprintf(line, sizeof line, "IF-RECV %u %04X %zu", protocol, comId, length), line));
    if (script.empty()) return Fail("the script has no more answers");
    Bytes answer = script.front();
    script.pop_front();
    answer.resize(length, 0);
    return answer;
  }
  DeviceKind kind() const override { return DeviceKind::kNvme; }
};

const std::string kSm = " A8 00000000000000FF ", kStatusOk = " F9 F0 00 00 00 F1", kOk = "F0 F1" + kStatusOk;
const std::string kRefused = "F0 F1 F9 F0 01 00 00 F1";

// A ComPacket on ComID 0x1000 carrying payload.
Bytes Reply(const Bytes& payload) { return Frame(ComPacket{0x1000, 0, 0, 0, 0, 0, 0, 0, false, payload}); }
Bytes Reply(const std::string& hex) { return Reply(H(hex)); }
Bytes Sync(uint64_t hsn, uint64_t tsn, Uid method = kMethodSyncSession) {
  return Reply(EncodeManagerCall(method, {Value::UInt(hsn), Value::UInt(tsn)}, 0));
}

// An Opal 2 drive on ComID 0x1000.
struct Drive {
  FakeTransport* fake = new FakeTransport;
  Device device{std::unique_ptr<Transport>(fake)};

  explicit Drive(const Bytes& startAnswer, const Bytes& propertiesAnswer = Reply(kOk)) {
    fake->script = {Discovered("0203 10 10 1000 0001" + std::string(24, '0')), propertiesAnswer, startAnswer};
  }
  // A session on the Locking SP as Admin1.
  Result<std::unique_ptr<Session>> Open() { return Session::Start(device, kLockingSp, kAdmin1, H("\"debug\"")); }
};

}  // namespace

TEST(SessionTest, APacketGoesToTheDrivesComIdWithTheSessionsNumbersAndWaitsForItsAnswer) {
  Drive drive(Sync(1, 4096));
  Result<std::unique_ptr<Session>> session = drive.Open();
  ASSERT_TRUE(session.ok() && drive.device.Discover().ok()) << session.error().message;  // discovery done already
  // Not ready, then a larger buffer asked for (in whole blocks), then the answer.
  drive.fake->script = {FrameEmpty(0x1000, 1), FrameEmpty(0x1000, 5000, 5000), Reply("FA")};
  EXPECT_TRUE((*session)->End().ok());
  session->reset();  // already ended: nothing more is sent
  EXPECT_EQ(Hex(drive.fake->payloads.back()), "FA");
  const std::string manager = "IF-SEND 1 1000 512 [1000 TSN 0 HSN 0]", receive = "IF-RECV 1 1000 2048";
  const std::string inSession = "IF-SEND 1 1000 512 [1000 TSN 4096 HSN 1]";
  EXPECT_EQ(drive.fake->log, (std::vector<std::string>{"IF-RECV 1 0001 2048", manager, receive, manager, receive,
                                                       inSession, receive, receive, "IF-RECV 1 1000 5120"}));
}

TEST(SessionTest, PropertiesAreTriedOnceAndARefusedStartCarriesTheDrivesStatus) {
  // The drive's limits, named in capitals: names compare ignoring case.
  const Bytes limits =
      Reply(EncodeManagerCall(kMethodProperties, EncodePropertiesReply({{"MAXCOMPACKETSIZE", 65536}}, {}), 0));
  struct Case { const char* name; Bytes start; int status; Bytes properties; int propertiesStatus = 0; } cases[] = {
      {"a session", Sync(1, 4096), 0, limits},
      {"Properties refused", Sync(1, 4096), 0, Reply(kRefused), 0x01},
      {"Properties answered without the drive's list", Sync(1, 4096), 0, Reply(kOk), Error::kNoStatus},
      {"Properties not answered", Sync(1, 4096), 0, FrameEmpty(0x1000), Error::kNoStatus},
      {"StartSession refused", Reply(EncodeResponse({}, 0x01)), 0x01, limits},
      {"SyncSession-shaped refusal", Reply("F8" + kSm + "A8 000000000000FF03 F0 F1 F9 F0 12 00 00 F1"), 0x12, limits},
      {"another host's session number", Sync(2, 4096), Error::kNoStatus, limits},
      {"TSN 0", Sync(1, 0), Error::kNoStatus, limits},
      {"a call other than SyncSession", Sync(1, 4096, kMethodProperties), Error::kNoStatus, limits},
      {"a plain response", Reply(EncodeResponse({Value::UInt(1), Value::UInt(4096)}, 0)), Error::kNoStatus, limits},
      {"StartSession not answered", FrameEmpty(0x1000), Error::kNoStatus, limits},
      {"an answer larger than a host takes", FrameEmpty(0x1000, 1 << 24, 1 << 24), Error::kNoStatus, limits},
  };
  // Properties with the host's limits, then StartSession.
  const std::vector<Bytes> sent = {
      H("F8" + kSm + "A8 000000000000FF01 F0 F2 00 F0 F2 D0 10 \"MaxComPacketSize\" 82 08 00 F3 F2 AD \"MaxPacketSize\""
        "82 07 EC F3 F2 AF \"MaxIndTokenSize\" 82 07 C8 F3 F2 AA \"MaxPackets\" 01 F3 F2 AD \"MaxSubpackets\" 01 F3"
        "F2 AA \"MaxMethods\" 01 F3 F1 F3 F1" + kStatusOk),
      H("F8" + kSm + "A8 000000000000FF02 F0 01 A8 0000020500000002 01 F2 00 D0 05 \"debug\" F3"
        "F2 03 A8 0000000900010001 F3 F1" + kStatusOk)};
  for (const Case& c : cases) {
    Drive drive(c.start, c.properties);
    drive.fake->script.push_back(Sync(1, 4096));  // what a host that asked again would get
    Result<std::unique_ptr<Session>> session = drive.Open();
    const Status properties = drive.device.ExchangeProperties();  // done already
    EXPECT_EQ(session.ok() ? 0 : session.error().status, c.status) << c.name << ": " << session.error().message;
    EXPECT_EQ(properties.ok() ? 0 : properties.error().status, c.propertiesStatus) << c.name;
    EXPECT_EQ(drive.device.MaxPayload() > 60000, properties.ok()) << c.name << ": only the drive's limits raise ours";
    EXPECT_EQ(drive.fake->payloads, sent) << c.name;
  }
}

TEST(SessionTest, EachOperationSendsItsKnownCallAndARefusalCarriesTheDrivesStatus) {
  using Op = std::function<Status(Session&)>;
  auto expect = [](const auto& r, auto ok) { return !r ? Status(r.error()) : ok(*r) ? Ok() : Fail("read wrongly"); };
  auto is = [](auto want) { return [want](const auto& got) { return got == want; }; };
  const Op lock = [](Session& s) { return s.Set(RangeUid(1), {{column::kReadLocked, Value::Bool(true)}}); };
  const Op revertSp = [](Session& s) { return RevertLockingSp(s, true); };
  const std::string getOf = " A8 0000000600000016 F0 F0 F2 03 ", setOf = " A8 0000000600000017 F0 F2 01 F0 ";
  const std::string user = "F2 A4 00000C05 A8 000000090003000", orTerm = " F2 A4 0000040E 01 F3 ";
  // sent: the call, before its status list; answer: the drive's (success when not given); sends: the payloads the
  // host sent in all (with Properties and StartSession), so 4 for a session the host ended, 3 for one the drive ended.
  struct Case { const char* name; Op op; std::string sent, answer = kOk; int status = 0; size_t sends = 4; } cases[] = {
      {"new SID PIN", [](Session& s) { return SetPin(s, kCpinSid, H("\"debug\"")); },
       "F8 A8 0000000B00000001" + setOf + "F2 03 D0 05 \"debug\" F3 F1 F3 F1"},
      {"Activate", ActivateLockingSp, "F8 A8 0000020500000002 A8 0000000600000203 F0 F1"},
      {"Range1 read", [&](Session& s) { return expect(ReadRange(s, 1), [](const RangeInfo& r) {
         return r.start == 2048 && r.length == 4096 && r.readLockEnabled && !r.writeLockEnabled && !r.readLocked &&
                r.writeLocked; }); }, "F8 A8 0000080200030001" + getOf + "03 F3 F2 04 08 F3 F1 F1",
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 01 F3 F2 06 00 F3 F2 07 00 F3 F2 08 01 F3 F1 F1" + kStatusOk},
      {"Range1 ActiveKey", [&](Session& s) { return expect(ReadActiveKey(s, 1), is(Aes256KeyUid(1))); },
       "F8 A8 0000080200030001" + getOf + "0A F3 F2 04 0A F3 F1 F1",
       "F0 F0 F2 0A A8 0000080600030001 F3 F1 F1" + kStatusOk},
      {"rekey", [](Session& s) { return GenKey(s, Aes256KeyUid(1)); },
       "F8 A8 0000080600030001 A8 0000000600000010 F0 F1"},
      {"User1 enabled", [](Session& s) { return SetEnabled(s, UserUid(1), true); },
       "F8 A8 0000000900030001" + setOf + "F2 05 01 F3 F1 F3 F1"},
      {"User1 OR User1 may read-lock Range1",
       [](Session& s) { return WriteAce(s, AceSetRdLockedUid(1), AnyOf({UserUid(1), UserUid(1)})); },
       "F8 A8 000000080003E001" + setOf + "F2 03 F0 " + user + "1 F3 " + user + "1 F3" + orTerm + "F1 F3 F1 F3 F1"},
      {"who may read-lock Range1",
       [&](Session& s) { return expect(ReadAce(s, AceSetRdLockedUid(1)), is(AnyOf({UserUid(2), UserUid(3)}))); },
       "F8 A8 000000080003E001" + getOf + "03 F3 F2 04 03 F3 F1 F1",
       "F0 F0 F2 03 F0 " + user + "2 F3 " + user + "3 F3" + orTerm + "F1 F3 F1 F1" + kStatusOk},
      {"MBR chunk", [](Session& s) { return WriteMbr(s, 0, H("\"0123456789ABCDEF\"")); },
       "F8 A8 0000080400000000 A8 0000000600000017 F0 F2 00 00 F3 F2 01 E2 00 00 10 \"0123456789ABCDEF\" F3 F1"},
      {"RevertSP keeping the global range's key", revertSp,
       "F8 A8 0000000000000001 A8 0000000600000011 F0 F2 83 06 00 00 01 F3 F1", kOk, 0, 3},
      {"Revert", RevertTper, "F8 A8 0000020500000001 A8 0000000600000202 F0 F1", kOk, 0, 3},
      {"RevertSP refused leaves the session open", revertSp, "", "F0 F1 F9 F0 3F 00 00 F1", 0x3F},
      {"Revert refused: the drive closes the session all the same", RevertTper, "", kRefused, 0x01, 3},
      {"Get answered with something other than columns", [&](Session& s) { return expect(s.Get(kMbrControl, 1, 2),
         [](const auto&) { return true; }); }, "", "F0 05 F1" + kStatusOk, Error::kNoStatus},
      {"Set refused", lock, "", "F0 F1 F9 F0 0C 00 00 F1", 0x0C},
      {"answered with a call", lock, "", "F8" + kSm + "A8 000000000000FF03 F0 F1" + kStatusOk, Error::kNoStatus},
      {"answered by end of session", lock, "", "FA", Error::kNoStatus, 3},
  };
  for (const Case& c : cases) {
    Drive drive(Sync(1, 4096));
    Result<std::unique_ptr<Session>> session = drive.Open();
    ASSERT_TRUE(session.ok()) << c.name;
    drive.fake->script = {Reply(c.answer), Reply("FA")};
    const Status done = c.op(**session);
    EXPECT_EQ(done.ok() ? 0 : done.error().status, c.status) << c.name << ": " << done.error().message;
    const Bytes call = drive.fake->payloads.back();
    EXPECT_TRUE(c.sent.empty() || call == H(c.sent + kStatusOk)) << c.name << ": sent " << Hex(call);
    session->reset();  // ends the session unless the drive ended it
    EXPECT_EQ(drive.fake->payloads.size(), c.sends) << c.name;
  }
}

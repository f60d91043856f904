// The host side against a scripted drive: discovery and Properties once,
// sessions and their numbers, method status, polling, and the calls each
// Opal operation sends.
#include <gtest/gtest.h>

#include <algorithm>

#include "opal_testing.h"
#include "tables.h"

using namespace opal;
using opaltest::FakeTransport;
using opaltest::Fixed;
using opaltest::H;
using opaltest::Hex;
using Answer = FakeTransport::Answer;

namespace {

const std::string kSm = " A8 00 00 00 00 00 00 00 FF ";
const std::string kStatusOk = " F9 F0 00 00 00 F1";
const std::string kOk = "F0 F1" + kStatusOk;

Bytes Framed(const Bytes& payload) {
  ComPacket packet;
  packet.comId = 0x1000;
  packet.payload = payload;
  return Frame(packet);
}
Answer Reply(const std::string& hex) { return Fixed(Framed(H(hex))); }
Answer NotReady(uint32_t outstanding, uint32_t minTransfer) {
  return Fixed(FrameEmpty(0x1000, outstanding, minTransfer));
}

// An answer to StartSession made from the host session number it carried.
Answer Echo(std::function<Bytes(uint64_t hsn)> make) {
  return [=](const Bytes& sent) {
    Result<Message> call = DecodeMessage(sent);
    Result<StartSessionArgs> args = call ? DecodeStartSession(call->arguments) : Result<StartSessionArgs>(Fail(""));
    return Framed(make(args ? args->hostSession : 0));
  };
}
Answer Sync(uint64_t tsn, uint64_t skew = 0) {
  return Echo([=](uint64_t hsn) {
    return EncodeManagerCall(kMethodSyncSession, {Value::UInt(hsn + skew), Value::UInt(tsn)}, 0);
  });
}

// An Opal 2 drive on ComID 0x1000 that offers 64 KiB ComPackets.
struct Drive {
  FakeTransport* fake = new FakeTransport;
  Device device{std::unique_ptr<Transport>(fake)};

  void Ready(const Answer& startAnswer) {
    Discovery discovery;
    discovery.opal2 = SscFeature{0x1000, 1};
    fake->script = {Fixed(EncodeDiscovery(discovery)),
                    Reply("F8" + kSm + "A8 00 00 00 00 00 00 FF 01 F0 F0 F2 D0 10 \"MaxComPacketSize\" 84 00 01 00 00"
                          "F3 F2 AF \"MaxIndTokenSize\" 84 00 00 FF C8 F3 F1 F2 00 F0 F1 F3 F1" + kStatusOk),
                    startAnswer};
  }
  // A session on the Locking SP as Admin1 with TSN 4096.
  std::unique_ptr<Session> Open() {
    Ready(Sync(4096));
    Result<std::unique_ptr<Session>> session = Session::Start(device, kLockingSp, kAdmin1, H("\"debug\""));
    return session ? std::move(*session) : nullptr;
  }
};

template <typename T, typename Check>
Status Expect(Result<T> read, Check check) {
  if (!read) return read.error();
  return check(*read) ? Ok() : Fail("read the wrong value");
}

}  // namespace

TEST(SessionTest, DiscoveryAndPropertiesComeOnceThenEveryPacketCarriesTheTsn) {
  Drive drive;
  std::unique_ptr<Session> session = drive.Open();
  ASSERT_TRUE(session);
  EXPECT_TRUE(drive.device.Discover().ok() && drive.device.ExchangeProperties().ok());  // both done already
  const std::vector<FakeTransport::Transfer>& sent = drive.fake->sent;
  const std::vector<FakeTransport::Transfer>& received = drive.fake->received;
  ASSERT_TRUE(received.size() == 3 && sent.size() == 2);
  EXPECT_TRUE(received[0].protocol == 1 && received[0].comId == 0x0001 && received[0].length == 2048);
  Result<ComPacket> properties = Unframe(sent[0].data);
  ASSERT_TRUE(properties.ok()) << properties.error().message;
  EXPECT_EQ(Hex(properties->payload),
            Hex(H("F8" + kSm + "A8 00 00 00 00 00 00 FF 01 F0 F2 00 F0 F2 D0 10 \"MaxComPacketSize\" 82 08 00 F3"
                  "F2 AD \"MaxPacketSize\" 82 07 EC F3 F2 AF \"MaxIndTokenSize\" 82 07 C8 F3 F2 AA \"MaxPackets\" 01 F3"
                  "F2 AD \"MaxSubpackets\" 01 F3 F2 AA \"MaxMethods\" 01 F3 F1 F3 F1" + kStatusOk)));
  EXPECT_FALSE(drive.device.propertiesFailed());
  EXPECT_EQ(PropertyOr(drive.device.tperProperties(), "maxcompacketsize", 0), 65536u);
  EXPECT_GT(drive.device.MaxPayload(), 60000u) << "the drive's larger limit sizes the payloads";
  Result<Message> start = DecodeMessage(drive.fake->SentPayload());
  ASSERT_TRUE(start.ok() && start->invoking == kSessionManager && start->method == kMethodStartSession);
  Result<StartSessionArgs> args = DecodeStartSession(start->arguments);
  ASSERT_TRUE(args.ok()) << args.error().message;
  EXPECT_TRUE(args->sp == kLockingSp && args->write && args->authority == kAdmin1 &&
              args->challenge == Bytes({'d', 'e', 'b', 'u', 'g'}));

  drive.fake->script = {Reply(kOk), Reply("FA")};
  EXPECT_TRUE(session->Set(kMbrControl, {{column::kMbrDone, Value::Bool(true)}}).ok());
  EXPECT_TRUE(session->End().ok());
  session.reset();  // already ended: nothing more is sent
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(Hex(drive.fake->SentPayload()), "FA");
  for (size_t i = 0; i < sent.size(); ++i) {
    Result<ComPacket> packet = Unframe(sent[i].data);
    EXPECT_TRUE(sent[i].protocol == 1 && sent[i].comId == 0x1000 && sent[i].length == 512) << "packet " << i;
    ASSERT_TRUE(packet.ok() && packet->comId == 0x1000) << "packet " << i;
    EXPECT_EQ(packet->tsn, i < 2 ? 0u : 4096u) << "packet " << i;
    EXPECT_EQ(packet->hsn, i < 2 ? 0u : args->hostSession) << "packet " << i;
  }
}

TEST(SessionTest, AFailedPropertiesExchangeIsTriedOnceAndSessionsGoOnWithTheDefaultLimits) {
  struct Case { const char* name; Answer answer; int status; } cases[] = {
      {"refused", Reply("F0 F1 F9 F0 01 00 00 F1"), 0x01},
      {"answered without the drive's properties", Reply(kOk), Error::kNoStatus},
      {"nothing pending", NotReady(0, 0), Error::kNoStatus},
  };
  for (const Case& c : cases) {
    Drive drive;
    drive.Ready(Sync(4096));
    drive.fake->script[1] = c.answer;
    Result<std::unique_ptr<Session>> first = Session::Start(drive.device, kAdminSp);
    ASSERT_TRUE(first.ok()) << c.name << ": " << first.error().message;
    EXPECT_TRUE(drive.device.propertiesFailed()) << c.name;
    EXPECT_EQ(drive.device.ExchangeProperties().error().status, c.status) << c.name;
    EXPECT_LE(drive.device.MaxPayload(), 2048u) << c.name;
    drive.fake->script = {Sync(4097)};
    EXPECT_TRUE(Session::Start(drive.device, kLockingSp, kAdmin1, H("\"debug\"")).ok()) << c.name;
    const auto properties = std::count_if(drive.fake->sent.begin(), drive.fake->sent.end(), [](const auto& sent) {
      Result<ComPacket> packet = Unframe(sent.data);
      Result<Message> message = packet ? DecodeMessage(packet->payload) : Result<Message>(Fail("not framed"));
      return message && message->kind == Message::Kind::kCall && message->method == kMethodProperties;
    });
    EXPECT_EQ(properties, 1) << c.name;
  }
}

TEST(SessionTest, RefusedOrMalformedStartIsAnError) {
  struct Case { const char* name; Answer answer; int status; } cases[] = {
      {"bare status list", Reply("F0 F1 F9 F0 01 00 00 F1"), 0x01},
      {"SyncSession-shaped refusal", Reply("F8" + kSm + "A8 00 00 00 00 00 00 FF 03 F0 F1 F9 F0 12 00 00 F1"), 0x12},
      {"another host's session number", Sync(4096, 1), Error::kNoStatus},
      {"TSN 0", Sync(0), Error::kNoStatus},
      {"a response instead of SyncSession",
       Echo([](uint64_t hsn) { return EncodeResponse({Value::UInt(hsn), Value::UInt(4096)}, 0); }), Error::kNoStatus},
      {"a call other than SyncSession", Echo([](uint64_t hsn) {
         return EncodeManagerCall(kMethodProperties, {Value::UInt(hsn), Value::UInt(4096)}, 0); }), Error::kNoStatus},
      {"nothing pending", NotReady(0, 0), Error::kNoStatus},
  };
  for (const Case& c : cases) {
    Drive drive;
    drive.Ready(c.answer);
    Result<std::unique_ptr<Session>> session = Session::Start(drive.device, kAdminSp);
    ASSERT_FALSE(session.ok()) << c.name;
    EXPECT_EQ(session.error().status, c.status) << c.name << ": " << session.error().message;
  }
}

TEST(SessionTest, MethodStatusReachesTheCaller) {
  auto get = [](Session& s) { return Expect(s.Get(RangeUid(1), 7, 8), [](auto& got) { return got.size() == 2; }); };
  auto set = [](Session& s) { return s.Set(RangeUid(1), {{column::kReadLocked, Value::Bool(true)}}); };
  struct Case { const char* name; std::function<Status(Session&)> call; std::string answer; int status; } cases[] = {
      {"Get answered", get, "F0 F0 F2 07 00 F3 F2 08 01 F3 F1 F1" + kStatusOk, 0},
      {"Get refused", get, "F0 F1 F9 F0 01 00 00 F1", 0x01},
      {"Set answered", set, kOk, 0},
      {"Set refused", set, "F0 F1 F9 F0 0C 00 00 F1", 0x0C},
      {"Get answered with something other than columns", get, "F0 05 F1" + kStatusOk, Error::kNoStatus},
      {"answer without a status list", set, "F0 F1 F9", Error::kNoStatus},
      {"answered by end of session", set, "FA", Error::kNoStatus},
      {"answered with a call", set, "F8" + kSm + "A8 00 00 00 00 00 00 FF 03 F0 F1" + kStatusOk, Error::kNoStatus},
      {"RevertSP refused leaves the session open", [](Session& s) { return RevertLockingSp(s, true); },
       "F0 F1 F9 F0 3F 00 00 F1", 0x3F},
  };
  for (const Case& c : cases) {
    Drive drive;
    std::unique_ptr<Session> session = drive.Open();
    ASSERT_TRUE(session) << c.name;
    const size_t before = drive.fake->sent.size();
    drive.fake->script = {Reply(c.answer), Reply("FA")};
    const Status done = c.call(*session);
    EXPECT_EQ(done.ok() ? 0 : done.error().status, c.status) << c.name << ": " << done.error().message;
    session.reset();  // ends the session, unless the drive did
    EXPECT_EQ(drive.fake->sent.size() - before, c.answer == "FA" ? 1u : 2u) << c.name;
  }
}

TEST(DeviceTest, PollsWhileTheDriveIsNotReadyAndGrowsTheBufferWhenAsked) {
  struct Case { const char* name; std::vector<Answer> answers; std::vector<size_t> lengths; bool ok; } cases[] = {
      {"ready at once", {Reply(kOk)}, {2048}, true},
      {"not ready twice", {NotReady(1, 0), NotReady(1, 0), Reply(kOk)}, {2048, 2048, 2048}, true},
      {"needs a larger buffer", {NotReady(5000, 5000), Reply(kOk)}, {2048, 5120}, true},
      {"nothing pending", {NotReady(0, 0)}, {2048}, false},
      {"asks for more than a host takes", {NotReady(1 << 30, 1 << 30)}, {2048}, false},
  };
  for (const Case& c : cases) {
    Drive drive;
    drive.Ready(Reply(kOk));
    ASSERT_TRUE(drive.device.Discover().ok()) << c.name;
    drive.fake->script.assign(c.answers.begin(), c.answers.end());
    drive.fake->received.clear();
    EXPECT_EQ(drive.device.Exchange(0, 0, EncodeEndOfSession()).ok(), c.ok) << c.name;
    std::vector<size_t> lengths;
    for (const auto& receive : drive.fake->received) lengths.push_back(receive.length);
    EXPECT_EQ(lengths, c.lengths) << c.name;
  }
}

TEST(OperationsTest, EachSendsItsKnownCall) {
  const std::string get = " A8 00 00 00 06 00 00 00 16 F0 F0 F2 03 ", set = " A8 00 00 00 06 00 00 00 17 F0 F2 01 F0 ";
  const std::string range1 = "F8 A8 00 00 08 02 00 03 00 01", ace = "F2 A4 00 00 0C 05 A8 00 00 00 09 ";
  const std::string orTerm = "F2 A4 00 00 04 0E 01 F3";
  auto is = [](auto want) { return [want](const auto& got) { return got == want; }; };
  auto eitherOf = [](Uid a, Uid b) { return AnyOf({a, b}); };
  struct Case { const char* name; std::function<Status(Session&)> op; std::string call, answer; bool closes; }
  cases[] = {
      {"new SID PIN", [](Session& s) { return SetPin(s, kCpinSid, {'d', 'e', 'b', 'u', 'g'}); },
       "F8 A8 00 00 00 0B 00 00 00 01" + set + "F2 03 D0 05 \"debug\" F3 F1 F3 F1", kOk, false},
      {"Activate", ActivateLockingSp, "F8 A8 00 00 02 05 00 00 00 02 A8 00 00 00 06 00 00 02 03 F0 F1", kOk, false},
      {"Range1 read", [&](Session& s) { return Expect(ReadRange(s, 1), [](const RangeInfo& r) {
         return r.start == 2048 && r.length == 4096 && r.readLockEnabled && !r.writeLockEnabled && !r.readLocked &&
                r.writeLocked; }); },
       range1 + get + "03 F3 F2 04 08 F3 F1 F1",
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 01 F3 F2 06 00 F3 F2 07 00 F3 F2 08 01 F3 F1 F1", false},
      {"Range1 start, length and flags", [](Session& s) { return s.Set(RangeUid(1), {{3, Value::UInt(2048)},
         {4, Value::UInt(4096)}, {5, Value::UInt(0)}, {6, Value::UInt(0)}, {7, Value::UInt(0)}, {8, Value::UInt(0)}});
       },
       range1 + set + "F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 00 F3 F2 08 00 F3 F1 F3 F1",
       kOk, false},
      {"Range1 ActiveKey", [&](Session& s) { return Expect(ReadActiveKey(s, 1), is(Aes256KeyUid(1))); },
       range1 + get + "0A F3 F2 04 0A F3 F1 F1", "F0 F0 F2 0A A8 00 00 08 06 00 03 00 01 F3 F1 F1", false},
      {"rekey", [](Session& s) { return GenKey(s, Aes256KeyUid(1)); },
       "F8 A8 00 00 08 06 00 03 00 01 A8 00 00 00 06 00 00 00 10 F0 F1", kOk, false},
      {"User1 enabled", [](Session& s) { return SetEnabled(s, UserUid(1), true); },
       "F8 A8 00 00 00 09 00 03 00 01" + set + "F2 05 01 F3 F1 F3 F1", kOk, false},
      {"User1 OR User1 may read-lock Range1",
       [&](Session& s) { return WriteAce(s, AceSetRdLockedUid(1), eitherOf(UserUid(1), UserUid(1))); },
       "F8 A8 00 00 00 08 00 03 E0 01" + set + "F2 03 F0 " + ace + "00 03 00 01 F3 " + ace + "00 03 00 01 F3 " +
       orTerm + " F1 F3 F1 F3 F1", kOk, false},
      {"who may read-lock Range1",
       [&](Session& s) { return Expect(ReadAce(s, AceSetRdLockedUid(1)), is(eitherOf(kAdmin1, UserUid(2)))); },
       "F8 A8 00 00 00 08 00 03 E0 01" + get + "03 F3 F2 04 03 F3 F1 F1",
       "F0 F0 F2 03 F0 " + ace + "00 01 00 01 F3 " + ace + "00 03 00 02 F3 " + orTerm + " F1 F3 F1 F1", false},
      {"MBR chunk", [](Session& s) { return WriteMbr(s, 0, H("\"0123456789ABCDEF\"")); },
       "F8 A8 00 00 08 04 00 00 00 00 A8 00 00 00 06 00 00 00 17 F0 F2 00 00 F3"
       "F2 01 E2 00 00 10 \"0123456789ABCDEF\" F3 F1",
       kOk, false},
      {"RevertSP keeping the global range's key", [](Session& s) { return RevertLockingSp(s, true); },
       "F8 A8 00 00 00 00 00 00 00 01 A8 00 00 00 06 00 00 00 11 F0 F2 83 06 00 00 01 F3 F1", kOk, true},
      {"Revert", RevertTper, "F8 A8 00 00 02 05 00 00 00 01 A8 00 00 00 06 00 00 02 02 F0 F1", kOk, true},
  };
  for (const Case& c : cases) {
    Drive drive;
    std::unique_ptr<Session> session = drive.Open();
    ASSERT_TRUE(session) << c.name;
    const size_t before = drive.fake->sent.size();
    drive.fake->script = {Reply(c.answer == kOk ? kOk : c.answer + kStatusOk), Reply("FA")};
    const Status done = c.op(*session);
    EXPECT_TRUE(done.ok()) << c.name << ": " << done.error().message;
    EXPECT_EQ(Hex(drive.fake->SentPayload()), Hex(H(c.call + kStatusOk))) << c.name;
    session.reset();  // ends the session unless the drive closed it
    EXPECT_EQ(drive.fake->sent.size() - before, c.closes ? 1u : 2u) << c.name;
  }
}

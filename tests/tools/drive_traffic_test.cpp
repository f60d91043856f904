// What the tools send: how many exchanges each command costs, that the
// read-only commands and the refused sessions never send a write, and how a
// drive that answers nothing, garbage or too much is reported.
#include "tool_cases.h"
#include "tper.h"
#include "uids.h"

namespace tooltest {
namespace {

struct TrafficCase {
  const char* name;
  std::vector<std::string> argv;
  int exchanges;
  bool readOnly;
};

void PrintTo(const TrafficCase& c, std::ostream* os) { *os << c.name; }

// Every command on an owned drive with 8 ranges and 8 users, whose range 1
// is granted to User1 (password "u1").
const TrafficCase kTraffic[] = {
    {"SedutilScan", Sedutil({"--scan"}), 0, true},
    {"SedutilQuery", Sedutil({"--query", kSda}), 1, true},
    {"SedutilListLockingRanges", Sedutil({"--listLockingRanges", kPassword, kSda}), 13, true},
    {"SedutilWrongPassword", Sedutil({"--listLockingRanges", "wrong", kSda}), 2, true},
    {"SedutilSetupLockingRange", Sedutil({"--setupLockingRange", "1", "8", "8", kPassword, kSda}), 6, false},
    {"SedutilSetLockingRange", Sedutil({"--setLockingRange", "1", "LK", kPassword, kSda}), 4, false},
    {"SedutilEnableLockingRange", Sedutil({"--enableLockingRange", "1", kPassword, kSda}), 4, false},
    {"SedutilEnableUser", Sedutil({"--enableUser", kPassword, "User0002", kSda}), 4, false},
    {"SedutilSetPassword", Sedutil({"--setPassword", kPassword, "User0002", "x", kSda}), 4, false},
    {"SedutilSetMbrEnable", Sedutil({"--setMBREnable", "off", kPassword, kSda}), 4, false},
    {"SedutilSetMbrDone", Sedutil({"--setMBRDone", "off", kPassword, kSda}), 4, false},
    {"SedutilRevertNoErase", Sedutil({"--revertNoErase", kPassword, kSda}), 3, false},
    {"SedutilRevertTper", Sedutil({"--revertTPer", kPassword, kSda}), 3, false},
    {"SedutilPsidRevert", Sedutil({"--yesIreallywanttoERASEALLmydatausingthePSID", kSdaPsid, kSda}), 3, false},
    {"LantivoScan", Lantivo({"--scan"}), 0, true},
    {"LantivoEnableLockingRange", Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}), 4, false},
    {"LantivoSetLockingRangeAsUser", Lantivo({"--setLockingRange", "1", "Y", "Y", "u1", kSda, "User1"}), 4, false},
    {"LantivoAddAce", Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User2"}), 7, false},
    {"LantivoAddAceAlreadyThere", Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User1"}), 5, true},
    {"LantivoDeleteAce", Lantivo({"--Delete_AllUser_ACE_Locking_range", kSda, kPassword, "1"}), 5, false},
    {"LantivoListAce", Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "1"}), 5, true},
    {"LantivoListUserStatus", Lantivo({"--ListUserStatus", kPassword, kSda}), 11, true},
    {"LantivoWrongPassword", Lantivo({"--ListUserStatus", "wrong", kSda}), 2, true},
};

bool Writes(opal::Uid method) {
  return method != opal::kMethodGet && method != opal::kMethodProperties && method != opal::kMethodStartSession;
}

class Traffic : public testing::TestWithParam<TrafficCase> {};

TEST_P(Traffic, EachCommandCostsItsExchangesAndReadsNeverWrite) {
  Bench bench;
  Own(bench.Drive());
  bench.Drive().users[0] = {true, {{'u', '1'}, 0}};
  bench.Drive().aces[opal::AceSetRdLockedUid(1)] = opal::AnyOf({opal::kAdmins, opal::UserUid(1)});
  bench.Drive().aces[opal::AceSetWrLockedUid(1)] = opal::AnyOf({opal::kAdmins, opal::UserUid(1)});
  Ran ran = bench.Run(GetParam().argv);
  EXPECT_EQ(GetParam().exchanges, ran.traffic.sends) << testing::PrintToString(ran.err);
  const bool wrote = std::any_of(ran.traffic.methods.begin(), ran.traffic.methods.end(), Writes);
  EXPECT_EQ(!GetParam().readOnly, wrote);
  // One discovery per device, then one answer fetched per exchange.
  const int devices = GetParam().argv[1] == "--scan" || GetParam().argv[2] == "--scan" ? 2 : 1;
  EXPECT_EQ(devices + GetParam().exchanges, ran.traffic.receives);
}

INSTANTIATE_TEST_SUITE_P(Commands, Traffic, testing::ValuesIn(kTraffic),
                         [](const testing::TestParamInfo<TrafficCase>& info) { return info.param.name; });

TEST(TrafficOfSetup, InitialSetupAndAnImageLoadUseOneSessionPerAuthority) {
  Bench bench;
  Ran setup = bench.Run(Sedutil({"--initialSetup", kPassword, kSda}));
  ASSERT_EQ(0, setup.status);
  // Properties; MSID read (3); SID: password, life cycle, Activate (5);
  // Admin1: global range, shadow MBR (4).
  EXPECT_EQ(13, setup.traffic.sends);
  EXPECT_EQ(3, std::count(setup.traffic.methods.begin(), setup.traffic.methods.end(), opal::kMethodStartSession));
  bench.WriteFile("pba.img", std::string(200000, 'x'));
  Ran load = bench.Run(Sedutil({"--loadPBAimage", kPassword, "{dir}/pba.img", kSda}));
  ASSERT_EQ(0, load.status);
  // Properties, session, four chunks of 61334 bytes, end.
  EXPECT_EQ(7, load.traffic.sends);
}

TEST(TrafficOfRefusals, NoWriteFollowsARefusedSession) {
  const std::vector<std::vector<std::string>> commands = {
      Sedutil({"--setupLockingRange", "1", "8", "8", "wrong", kSda}), Sedutil({"--revertNoErase", "wrong", kSda}),
      Sedutil({"--loadPBAimage", "wrong", "{dir}/pba.img", kSda}), Sedutil({"--initialSetup", "wrong", kSda}),
      Lantivo({"--Add_ACE_Locking_range", kSda, "wrong", "1", "User1"}),
      Lantivo({"--setLockingRange", "1", "Y", "Y", "wrong", kSda, "User1"})};
  for (const std::vector<std::string>& argv : commands) {
    Bench bench;
    Own(bench.Drive(), "right");
    bench.WriteFile("pba.img", "image");
    Ran ran = bench.Run(argv);
    EXPECT_NE(0, ran.status);
    EXPECT_FALSE(std::any_of(ran.traffic.methods.begin(), ran.traffic.methods.end(), Writes))
        << testing::PrintToString(argv);
  }
}

// --- Hostile drives --------------------------------------------------------------------

// A drive that identifies and answers discovery as an Opal 2 drive, then
// answers every IF-RECV on its session ComID with what `answer` makes.
class HostileTransport : public opal::Transport {
 public:
  explicit HostileTransport(std::function<opal::Result<opal::Bytes>(size_t length)> answer)
      : answer_(std::move(answer)) {}
  opal::Result<opal::Identity> Identify() override { return opal::Identity{"KVX 480GB", "SERIAL", "FW"}; }
  opal::Status Send(uint8_t, uint16_t, const opal::Bytes&) override { return opal::Ok(); }
  opal::Result<opal::Bytes> Receive(uint8_t, uint16_t comId, size_t length) override {
    if (comId == opal::kDiscoveryComId) {
      opal::Bytes data = opal::EncodeDiscovery(opalsim::DiscoveryOf(opalsim::NewDrive(kSda, "m", "f", "p", 8, true)));
      data.resize(length, 0);
      return data;
    }
    return answer_(length);
  }
  opal::DeviceKind kind() const override { return opal::DeviceKind::kSata; }

 private:
  std::function<opal::Result<opal::Bytes>(size_t)> answer_;
};

struct HostileCase {
  const char* name;
  std::function<opal::Result<opal::Bytes>(size_t)> answer;
  const char* said;  // what the error line must say
};

opal::Bytes Framed(const opal::Bytes& payload) {
  opal::ComPacket packet;
  packet.comId = 0x1000;
  packet.payload = payload;
  return opal::Frame(packet);
}

const HostileCase kHostile[] = {
    {"Nothing", [](size_t n) { return opal::Bytes(n, 0); }, "empty answer"},
    {"Garbage", [](size_t n) { return opal::Bytes(n, 0xA5); }, "malformed answer"},
    {"TooMuch", [](size_t) { return opal::FrameEmpty(0x1000, 1u << 30, 1u << 30); }, "too large"},
    {"ATransportError", [](size_t) -> opal::Result<opal::Bytes> { return opal::Fail("Security Receive failed: EIO"); },
     "Security Receive failed"},
    {"TokensThatNeverClose", [](size_t) { return Framed(opal::Bytes(300, 0xF0)); }, "malformed answer"},
};

TEST(HostileDrive, EveryCommandThatStartsASessionSaysWhatWentWrongAndNamesTheDevice) {
  const std::vector<std::vector<std::string>> commands = {
      Sedutil({"--query", kSda}),
      Sedutil({"--listLockingRanges", kPassword, kSda}),
      Sedutil({"--initialSetup", kPassword, kSda}),
      Sedutil({"--setLockingRange", "1", "LK", kPassword, kSda}),
      Lantivo({"--ListUserStatus", kPassword, kSda}),
      Lantivo({"--setLockingRange", "1", "Y", "Y", kPassword, kSda}),
      Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "1"})};
  for (const HostileCase& hostile : kHostile) {
    for (const std::vector<std::string>& argv : commands) {
      std::ostringstream out, err;
      veltrak_opal::Environment env{
          [&](const std::string&) -> opal::Result<std::unique_ptr<opal::Transport>> {
            return std::unique_ptr<opal::Transport>(std::make_unique<HostileTransport>(hostile.answer));
          },
          [] { return std::vector<std::string>{}; }, [] { return opal::AllowTpm::kSet; }, out, err};
      const int status = veltrak_opal::Main(argv[0], std::vector<std::string>(argv.begin() + 1, argv.end()), env);
      const std::string where = std::string(hostile.name) + " " + argv[2];
      const std::vector<std::string> errLines = SplitLines(err.str());
      const bool named = std::any_of(errLines.begin(), errLines.end(), [&](const std::string& line) {
        return line.find("/dev/sda") != std::string::npos && line.find(hostile.said) != std::string::npos;
      });
      ExpectNoSuccessPhrase(errLines);
      if (argv[2] == "--query") {
        // Only Properties goes past discovery, and sedutil says no more of its failure.
        EXPECT_EQ(std::vector<std::string>{"Properties exchange failed"}, errLines) << where;
        EXPECT_EQ(0, status) << where << ": the discovery report stands, as sedutil's does";
      } else {
        EXPECT_TRUE(named) << where << "\n" << err.str();
        EXPECT_NE(0, status) << where;
        EXPECT_EQ(std::string::npos, out.str().find("success")) << where;
        EXPECT_EQ(std::string::npos, out.str().find("complete")) << where;
      }
    }
  }
}

}  // namespace
}  // namespace tooltest

namespace tooltest {
namespace {

// --- A later step refused ------------------------------------------------------------

struct LaterStepCase {
  const char* name;
  std::function<void(Bench&)> setup;
  std::vector<std::string> argv;
  int refusedExchange;
  std::vector<std::string> outLines;  // printed before the failure
  std::string stateSaid;              // the line saying what the drive is left with holds this
  std::function<void(Bench&)> after;
};

const LaterStepCase kLaterSteps[] = {
    {"RekeyAfterTheAddressWasSet", Owned, Sedutil({"--setupLockingRange", "1", "2048", "4096", kPassword, kSda}), 5,
     {}, "/dev/sda: range 1 was moved to block 2048 for 4096 blocks, unlocked, but keeps its old key",
     [](Bench& b) { EXPECT_EQ(2048u, b.Drive().ranges[1].start); }},
    {"ActivationAfterOwnership", nullptr, Sedutil({"--initialSetup", kPassword, kSda}), 8, {"takeOwnership complete"},
     "/dev/sda: the SID password is now the new password; the Locking SP was left as it was",
     [](Bench& b) { EXPECT_FALSE(b.Drive().LockingActive()); }},
    {"ShadowMbrAfterTheGlobalRange", nullptr, Sedutil({"--initialSetup", kPassword, kSda}), 12,
     {"takeOwnership complete", "Locking SP Activate Complete", "LockingRange0 disabled ", "LockingRange0 set to RW"},
     "the shadow MBR was left off", [](Bench& b) { EXPECT_TRUE(b.Drive().LockingActive() && !b.Drive().mbrEnable); }},
    {"SecondImageChunk",
     [](Bench& b) {
       Own(b.Drive());
       b.WriteFile("pba.img", std::string(130000, 'i'));
     },
     Sedutil({"--loadPBAimage", kPassword, "{dir}/pba.img", kSda}), 4,
     {"Writing PBA to /dev/sda", "61334 of 130000 47% blk=61334 \r"},
     "/dev/sda: 61334 of 130000 bytes of the image are in the shadow MBR; the image there is incomplete", nullptr},
    {"WriteLockEntryAfterTheReadLockEntry", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User1"}),
     6, {}, "the read-lock access entry of range 1 was already changed to Admins User1 OR; the write-lock entry",
     [](Bench& b) { EXPECT_EQ(0u, b.Drive().aces.count(opal::AceSetWrLockedUid(1))); }},
};

void PrintTo(const LaterStepCase& c, std::ostream* os) { *os << c.name; }

class LaterStep : public testing::TestWithParam<LaterStepCase> {};

TEST_P(LaterStep, SaysWhichStepFailedAndWhatTheDriveIsLeftWith) {
  const LaterStepCase& c = GetParam();
  Bench bench;
  if (c.setup) c.setup(bench);
  bench.refusedExchange = c.refusedExchange;
  const Ran ran = bench.Run(c.argv);
  EXPECT_NE(0, ran.status);
  EXPECT_EQ(c.outLines, ran.out);
  EXPECT_TRUE(std::any_of(ran.err.begin(), ran.err.end(),
                          [&](const std::string& line) { return line.find(c.stateSaid) != std::string::npos; }))
      << testing::PrintToString(ran.err);
  ExpectNoSuccessPhrase(ran.err);
  if (c.after) c.after(bench);
}

INSTANTIATE_TEST_SUITE_P(Commands, LaterStep, testing::ValuesIn(kLaterSteps),
                         [](const testing::TestParamInfo<LaterStepCase>& info) { return info.param.name; });

}  // namespace
}  // namespace tooltest

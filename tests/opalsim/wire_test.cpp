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
  for (std::string w; words >> w;) {
    out.insert(out.end(), w.size() > 2 ? std::stoul(w.substr(3)) : 1, static_cast<uint8_t>(std::stoul(w, nullptr, 16)));
  }
  return out;
}

// Sends payload in a ComPacket of the session with TSN tsn that the host
// library opened (0: to the session manager) and returns the answer's
// payload; patchAt names a 4-byte header field to overwrite with patch.
Bytes Send(Sim& sim, uint32_t tsn, const Bytes& payload, size_t patchAt, uint32_t patch) {
  Bytes sent = PadToBlock(Frame(ComPacket{0x1000, 0, 0, 0, tsn, tsn == 0 ? 0u : 1u, 0, 0, false, payload}));
  if (patchAt != 0) WriteBe(sent.data() + patchAt, patch, 4);
  Need(sim.host->transport().Send(kProtocolTcg, 0x1000, sent));
  return Need(Unframe(Need(sim.host->transport().Receive(kProtocolTcg, 0x1000, 2048)))).payload;
}

// Each row sends one ComPacket to a fresh owned drive, in a session of who
// (none: to the session manager); an error answer must leave the drive as it
// was, and the drive must then still open sessions.
TEST(Wire, Answers) {
  const Who kLocking{kLockingSp, std::nullopt, ""};
  // Pieces of payloads: the end of a call, a refusal, the session manager and
  // a method UID but for its last byte, a Get of C_PIN_MSID.
  const std::string ok = " F9 F0 00 00 00 F1", no = "F0 F1 F9 F0 0C 00 00 F1", sm = "F8 A8 00*7 FF A8 00*6 FF ";
  const std::string on = "A8 00*3 06 00*3 ", get = "F8 A8 00 00 00 0B 00 00 84 02 " + on + "16 ";
  const std::string getMsid = get + "F0 F0 F1 F1" + ok, range1 = "F8 A8 00 00 08 02 00 03 00 01 " + on;
  const std::string mbr = "F8 A8 00 00 08 04 00*4 " + on + "16 F0 F0 F2 01 00 F3 F2 02 ";
  const std::string wrongSid =
      sm + "02 F0 81 69 A8 00 00 02 05 00*3 01 01 F2 00 A1 78 F3 F2 03 A8 00*3 09 00*3 06 F3 F1" + ok;
  struct Case { const char* name; const Who* who; std::string sent, answer; const char* setting = "";
                size_t patchAt = 0; uint32_t patch = 0; };
  const Case cases[] = {
      {"SyncSession: HSN echoed, TSN 4096", nullptr, sm + "02 F0 81 69 A8 00 00 02 05 00*3 01 01 F1" + ok,
       sm + "03 F0 81 69 82 10 00 F1" + ok},
      {"stray end of session", nullptr, "FA", ""},
      {"stray end of session, answering drive", nullptr, "FA", "FA", "stray-end-session answer"},
      {"wrong password", nullptr, wrongSid, "F0 F1 F9 F0 01 00 00 F1"},
      {"wrong password, SyncSession shape", nullptr, wrongSid, sm + "03 F0 F1 F9 F0 01 00 00 F1", "failed-start sync"},
      {"range columns 3 to 8", &kAdmin1Who, range1 + "16 F0 F0 F2 03 03 F3 F2 04 08 F3 F1 F1" + ok,
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 01 F3 F2 08 00 F3 F1 F1" + ok},
      {"ActiveKey", &kAdmin1Who, range1 + "16 F0 F0 F2 03 0A F3 F2 04 0A F3 F1 F1" + ok,
       "F0 F0 F2 0A A8 00 00 08 06 00 03 00 01 F3 F1 F1" + ok},
      {"MaxRanges", &kLocking, "F8 A8 00 00 08 01 00*3 01 " + on + "16 F0 F0 F2 03 04 F3 F2 04 04 F3 F1 F1" + ok,
       "F0 F0 F2 04 08 F3 F1 F1" + ok},
      {"Locking SP life cycle", &kAnyone, "F8 A8 00 00 02 05 00*3 02 " + on + "16 F0 F0 F2 03 06 F3 F2 04 06 F3 F1 F1" +
       ok, "F0 F0 F2 06 09 F3 F1 F1" + ok},
      {"an ACE's expression, User1 OR User1", &kAdmin1Who,
       "F8 A8 00 00 00 08 00 03 E0 01 " + on + "16 F0 F0 F2 03 03 F3 F2 04 03 F3 F1 F1" + ok,
       "F0 F0 F2 03 F0 F2 A4 00 00 0C 05 A8 00*3 09 00 03 00 01 F3 F2 A4 00 00 0C 05 A8 00*3 09 00 03 00 01 F3 "
       "F2 A4 00 00 04 0E 01 F3 F1 F3 F1 F1" + ok},
      {"GetACL of range 1's Set", &kLocking, "F8 A8 00 00 00 07 00*4 " + on + "0D F0 A8 00 00 08 02 00 03 00 01 " + on +
       "17 F1" + ok, "F0 F0 A8 00 00 00 08 00 03 F0 01 A8 00 00 00 08 00 03 E0 01 A8 00*3 08 00 03 E8 01 F1 F1" + ok},
      {"end of session", &kSidWho, "FA", "FA"},
      {"ComPacket length past the buffer", &kAnyone, getMsid, no, "", 16, 0x7FFFFFFF},
      {"ComPacket for another ComID", &kAnyone, getMsid, "", "", 4, 0x20000000},
      {"session that does not exist", nullptr, getMsid, no, "", 20, 4242},
      {"HSN of no session", &kAnyone, getMsid, no, "", 24, 0x41},
      {"Properties with a number for the host list", nullptr, sm + "01 F0 F2 00 05 F3 F1" + ok,
       sm + "01 F0 F1 F9 F0 0C 00 00 F1"},
      {"object that does not exist", &kAnyone, "F8 A8 00 00 AB CD 00*3 01 " + on + "16 F0 F1" + ok, no},
      {"Get with the columns reversed", &kAnyone, get + "F0 F0 F2 03 05 F3 F2 04 03 F3 F1 F1" + ok, no},
      {"MBR rows past the table", &kLocking, mbr + "88 FF*8 F3 F1 F1" + ok, no},
      {"MBR rows more than the host takes", &kLocking, mbr + "83 01 00 00 F3 F1 F1" + ok, "F0 F1 F9 F0 11 00 00 F1"},
      {"Random of 1000 bytes", &kAnyone, "F8 A8 00*7 01 A8 00*3 06 00 00 06 01 F0 82 03 E8 F1" + ok, no},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Sim sim;
    sim.Own().Setting(c.setting);
    auto session = c.who == nullptr ? nullptr : sim.Must(*c.who);
    const std::string before = opalsim::Serialize(sim.world);
    EXPECT_EQ(Send(sim, c.who == nullptr ? 0 : 4096, Hex(c.sent), c.patchAt, c.patch), Hex(c.answer));
    if (c.answer == no || c.answer.empty()) { EXPECT_EQ(opalsim::Serialize(sim.world), before); }
    EXPECT_EQ(Code(sim.Open(kAnyone)), 0) << "still serving";
  }
}

}  // namespace
}  // namespace opalsim_test

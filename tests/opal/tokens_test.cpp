// Atoms, framing and whole messages against the bytes drives and hosts are
// known to exchange.
#include <gtest/gtest.h>

#include "ace.h"
#include "method.h"
#include "opal_testing.h"
#include "packet.h"

TEST(AtomTest, ValuesGoOutInTheirShortestFormAndEveryFormIsRead) {
  auto U = [](uint64_t n) { return Value::UInt(n); };
  auto S = [](int64_t n) { return Value::Int(n); };
  auto B = [](size_t size) { return Value::Blob(Bytes(size, 0)); };
  auto Z = [](size_t size) { return Hex(Bytes(size, 0)); };
  // written = false: a form a drive may send that the host never writes.
  struct Case { const char* name; Value value; std::string wire; bool written = true; } cases[] = {
      {"tiny 63", U(63), "3F"}, {"short 64", U(64), "81 40"}, {"short 255", U(255), "81 FF"},
      {"short 256", U(256), "82 01 00"}, {"short 65535", U(65535), "82 FF FF"}, {"65536", U(65536), "84 00010000"},
      {"2^32-1", U(0xFFFFFFFF), "84 FFFFFFFF"}, {"2^32", U(0x100000000), "88 0000000100000000"},
      {"tiny -1", S(-1), "7F"}, {"tiny -32", S(-32), "60"}, {"tiny 31", S(31), "5F"}, {"signed -33", S(-33), "91 DF"},
      {"signed -129", S(-129), "92 FF7F"}, {"int64 min", S(INT64_MIN), "98 8000000000000000"},
      {"empty string", B(0), "A0"}, {"15 short", B(15), "AF" + Z(15)}, {"16 medium", B(16), "D010" + Z(16)},
      {"2047 medium", B(2047), "D7FF" + Z(2047)}, {"2048 long", B(2048), "E2000800" + Z(2048)},
      {"empty atoms around", U(5), "FF 05 FF", false}, {"unsigned of no bytes", U(0), "80", false},
      {"three-byte unsigned", U(0x060000), "83 060000", false}, {"medium unsigned", U(0x1234), "C002 1234", false},
      {"long signed", S(-256), "E1000002 FF00", false}, {"five-byte signed", S(-4294967296), "95 FF00000000", false},
      {"string with the S bit", Value::Text("abc"), "B3 \"abc\"", false},
  };
  for (const Case& c : cases) {
    EXPECT_TRUE(!c.written || Encode(c.value) == H(c.wire)) << c.name << ": " << Hex(Encode(c.value));
    Result<std::vector<Item>> read = Decode(H(c.wire));
    EXPECT_TRUE(read.ok() && read->size() == 1 && (*read)[0].value == c.value) << c.name;
  }
}

TEST(FrameTest, PayloadsArePaddedToFourBytesAndTransfersToWholeBlocks) {
  struct Case { const char* name; size_t payload, packetLength, transfer; } cases[] = {
      {"end of session", 1, 16, 512}, {"four bytes, no padding", 4, 16, 512},
      {"exactly one block", 456, 468, 512}, {"one byte past a block", 457, 472, 1024},
  };
  for (const Case& c : cases) {
    const Bytes transfer = PadToBlock(Frame(ComPacket{0, 0, 0, 0, 0, 0, 0, 0, false, Bytes(c.payload, 0xF9)}));
    EXPECT_TRUE(ReadBe(&transfer[40], 4) == c.packetLength && transfer.size() == c.transfer) << c.name;
  }
  // StartSession to the Locking SP as Admin1 with password "debug", host session 105, on ComID 0x1000.
  const Bytes payload = EncodeCall(kSessionManager, kMethodStartSession,
                                   EncodeStartSession({105, kLockingSp, true, H("\"debug\""), kAdmin1}));
  EXPECT_EQ(Hex(Frame(ComPacket{0x1000, 0, 0, 0, 0, 0, 0, 0, false, payload})),
            Hex(H("00000000 1000 0000 00000000 00000000 00000064 00000000 00000000 00000000 0000 0000 00000000 0000004C"
                  "000000000000 0000 0000003D F8 A8 00000000000000FF A8 000000000000FF02 F0 81 69 A8 0000020500000002"
                  "01 F2 00 D0 05 \"debug\" F3 F2 03 A8 0000000900010001 F3 F1 F9 F0 00 00 00 F1 00 00 00")));
}

TEST(AceTest, OnlyPlainAlternativesGiveTheirAuthorities) {
  auto who = [](const std::string& uid) { return "F2 A4 00000C05 A8 00000009" + uid + " F3 "; };
  const std::string admins = who("00000002"), user1 = who("00030001"), op = "F2 A4 0000040E ";
  struct Case { const char* name; std::string hex; std::vector<Uid> anyOf; } cases[] = {
      {"one authority", "F0 " + admins + "F1", {kAdmins}},
      {"a b OR c OR", "F0 " + admins + user1 + op + "01 F3 " + who("00030003") + op + "01 F3 F1",
       {kAdmins, UserUid(1), UserUid(3)}},
      {"a a OR names a once", "F0 " + user1 + user1 + op + "01 F3 F1", {UserUid(1)}},
      {"a b AND", "F0 " + admins + user1 + op + "00 F3 F1", {}}, {"a NOT", "F0 " + admins + op + "02 F3 F1", {}},
      {"OR of one operand", "F0 " + admins + op + "01 F3 F1", {}},
      {"two operands without an operator", "F0 " + admins + user1 + "F1", {}},
  };
  for (const Case& c : cases) {
    Result<std::vector<Item>> items = Decode(H(c.hex));
    Result<BooleanExpr> expr = items && items->size() == 1 ? DecodeBooleanExpr((*items)[0].value) : Fail("tokens");
    ASSERT_TRUE(expr.ok()) << c.name << ": " << expr.error().message;
    EXPECT_EQ(Hex(Encode(EncodeBooleanExpr(*expr))), Hex(H(c.hex))) << c.name;
    Result<std::vector<Uid>> anyOf = AuthoritiesOfAnyOf(*expr);
    EXPECT_EQ(anyOf.ok() ? anyOf.value() : std::vector<Uid>{}, c.anyOf) << c.name;
  }
  // Alternatives are written as "a b OR c OR": each authority after the first followed by its OR.
  EXPECT_EQ(Hex(Encode(EncodeBooleanExpr(AnyOf({kAdmins, UserUid(1), UserUid(3)})))), Hex(H(cases[1].hex)));
}

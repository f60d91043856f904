// Atoms, framing and whole messages against the bytes drives and hosts are
// known to exchange.
#include <gtest/gtest.h>

#include <algorithm>

#include "ace.h"
#include "method.h"
#include "opal_testing.h"

using namespace opal;
using opaltest::Cat;
using opaltest::H;
using opaltest::Hex;

namespace {

// A payload's top-level items in words: the same for two encodings of the
// same tokens even when their atom forms differ.
std::string Meaning(const Bytes& payload) {
  Result<std::vector<Item>> items = Decode(payload);
  if (!items) return "error: " + items.error().message;
  std::string out;
  for (const Item& item : *items) out += (item.isControl ? Hex({uint8_t(item.control)}) : Describe(item.value)) + " ";
  return out;
}

Value Column(uint64_t column, uint64_t value) { return Value::Named(column, Value::UInt(value)); }

}  // namespace

TEST(AtomTest, EachValueIsWrittenInItsFormAndReadBack) {
  struct Case { const char* name; Value value; Bytes wire; } cases[] = {
      {"tiny 0", Value::UInt(0), H("00")},
      {"tiny 63", Value::UInt(63), H("3F")},
      {"short 64", Value::UInt(64), H("81 40")},
      {"short 255", Value::UInt(255), H("81 FF")},
      {"short 256", Value::UInt(256), H("82 01 00")},
      {"short 65535", Value::UInt(65535), H("82 FF FF")},
      {"short 65536 takes four bytes", Value::UInt(65536), H("84 00 01 00 00")},
      {"short 2^32-1", Value::UInt(0xFFFFFFFF), H("84 FF FF FF FF")},
      {"short 2^32 takes eight bytes", Value::UInt(0x100000000), H("88 00 00 00 01 00 00 00 00")},
      {"signed tiny -1", Value::Int(-1), H("7F")},
      {"signed tiny -32", Value::Int(-32), H("60")},
      {"signed tiny 31", Value::Int(31), H("5F")},
      {"signed short -33", Value::Int(-33), H("91 DF")},
      {"signed short -129", Value::Int(-129), H("92 FF 7F")},
      {"signed short int64 min", Value::Int(INT64_MIN), H("98 80 00 00 00 00 00 00 00")},
      {"empty string", Value::Text(""), H("A0")},
      {"string of 15 is short", Value::Blob(Bytes(15, 'x')), Cat(H("AF"), Bytes(15, 'x'))},
      {"string of 16 is medium", Value::Text("MaxComPacketSize"), H("D0 10 \"MaxComPacketSize\"")},
      {"string of 2047", Value::Blob(Bytes(2047, 'y')), Cat(H("D7 FF"), Bytes(2047, 'y'))},
      {"string of 2048 is long", Value::Blob(Bytes(2048, 'z')), Cat(H("E2 00 08 00"), Bytes(2048, 'z'))},
      {"UID", Value::Ref(kLockingSp), H("A8 00 00 02 05 00 00 00 02")},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Hex(Encode(c.value)), Hex(c.wire)) << c.name;
    Result<std::vector<Item>> read = Decode(c.wire);
    EXPECT_TRUE(read.ok() && read->size() == 1 && (*read)[0].value == c.value) << c.name;
  }
}

TEST(AtomTest, OtherFormsADriveMaySendAreRead) {
  struct Case { const char* name; const char* wire; Value value; } cases[] = {
      {"three-byte short unsigned", "83 06 00 00", Value::UInt(0x060000)},
      {"short unsigned without bytes", "80", Value::UInt(0)},
      {"medium unsigned", "C0 02 12 34", Value::UInt(0x1234)},
      {"long signed", "E1 00 00 02 FF 00", Value::Int(-256)},
      {"eight-byte signed -1", "98 FF FF FF FF FF FF FF FF", Value::Int(-1)},
      {"five-byte signed", "95 FF 00 00 00 00", Value::Int(-4294967296)},
      {"short string with the S bit", "B3 61 62 63", Value::Text("abc")},
      {"long string of two bytes", "E2 00 00 02 61 62", Value::Text("ab")},
      {"empty atoms around a value", "FF 05 FF", Value::UInt(5)},
  };
  for (const Case& c : cases) {
    Result<std::vector<Item>> read = Decode(H(c.wire));
    EXPECT_TRUE(read.ok() && read->size() == 1 && (*read)[0].value == c.value) << c.name << ": " << Meaning(H(c.wire));
  }
}

TEST(AtomTest, NestedValuesSurviveARoundTrip) {
  Value deepest = Value::Int(-5);
  for (size_t i = 1; i < kMaxDepth; ++i) deepest = Value::List({deepest});  // kMaxDepth deep in the outer list
  const Value tree = Value::List({Value::Named(1, Value::List({Column(3, 2048), Column(4, UINT64_MAX)})),
                                  Value::Name(Value::List({}), Value::Named(9, Value::Blob(Bytes(70000, 7)))),
                                  Value::Named(0x060000, Value::Ref(kAdmin1)), Value::Int(INT64_MAX), deepest});
  Result<std::vector<Item>> read = Decode(Encode(tree));
  EXPECT_TRUE(read.ok() && read->size() == 1 && (*read)[0].value == tree);
}

TEST(FrameTest, HeadersCountThePaddedPayloadAndTransfersAreWholeBlocks) {
  struct Case { const char* name; size_t payload, packet, comPacket, message, transfer; } cases[] = {
      {"end of session", 1, 16, 40, 60, 512},
      {"four bytes, no padding", 4, 16, 40, 60, 512},
      {"StartSession with a password", 61, 76, 100, 120, 512},
      {"exactly one block", 456, 468, 492, 512, 512},
      {"one byte past a block", 457, 472, 496, 516, 1024},
      {"a full MBR chunk", 61376, 61388, 61412, 61432, 61440},
  };
  for (const Case& c : cases) {
    ComPacket packet;
    packet.comId = 0x1000;
    packet.tsn = 4096;
    packet.hsn = 105;
    for (size_t i = 0; i < c.payload; ++i) packet.payload.push_back(static_cast<uint8_t>(i | 1));
    const Bytes message = Frame(packet), transfer = PadToBlock(message);
    ASSERT_EQ(message.size(), c.message) << c.name;
    EXPECT_EQ((std::vector<size_t>{ReadBe(&message[16], 4), ReadBe(&message[40], 4), ReadBe(&message[52], 4),
                                   transfer.size()}),
              (std::vector<size_t>{c.comPacket, c.packet, c.payload, c.transfer})) << c.name;
    EXPECT_TRUE(std::all_of(transfer.begin() + 56 + c.payload, transfer.end(), [](uint8_t b) { return b == 0; }));
    Result<ComPacket> back = Unframe(transfer);
    EXPECT_TRUE(back.ok() && back->payload == packet.payload && back->comId == 0x1000 && back->tsn == 4096 &&
                back->hsn == 105) << c.name;
  }
}

TEST(FrameTest, StartSessionAsAdmin1GoesOutAsKnown) {
  const Bytes payload = H("F8 A8 00 00 00 00 00 00 00 FF A8 00 00 00 00 00 00 FF 02 F0 81 69 A8 00 00 02 05 00 00 00 02"
                          "01 F2 00 D0 05 \"debug\" F3 F2 03 A8 00 00 00 09 00 01 00 01 F3 F1 F9 F0 00 00 00 F1");
  const Bytes expected = Cat(H("00000000 1000 0000 00000000 00000000 00000064 00000000 00000000 00000000 0000 0000"
                               "00000000 0000004C 000000000000 0000 0000003D"), Cat(payload, H("00 00 00")));
  ComPacket packet;
  packet.comId = 0x1000;
  packet.payload = EncodeCall(kSessionManager, kMethodStartSession,
                              EncodeStartSession({105, kLockingSp, true, Bytes{'d', 'e', 'b', 'u', 'g'}, kAdmin1}));
  const Bytes transfer = PadToBlock(Frame(packet));
  ASSERT_EQ(transfer.size(), 512u);
  EXPECT_EQ(Hex(Bytes(transfer.begin(), transfer.begin() + 120)), Hex(expected));
  EXPECT_EQ(Meaning(packet.payload), Meaning(payload)) << "the drive must at least read the same call";
}

TEST(MessageTest, DriveAndHostMessagesMatchTheirKnownBytes) {
  struct Case { const char* name; Bytes built; const char* wire; } cases[] = {
      {"SyncSession handing out TSN 4096",
       EncodeManagerCall(kMethodSyncSession, {Value::UInt(105), Value::UInt(4096)}, 0),
       "F8 A8 00 00 00 00 00 00 00 FF A8 00 00 00 00 00 00 FF 03 F0 81 69 82 10 00 F1 F9 F0 00 00 00 F1"},
      {"refused StartSession", EncodeResponse({}, 1), "F0 F1 F9 F0 01 00 00 F1"},
      {"Range1's start and length, flags clear",
       EncodeResponse({Value::List({Column(3, 2048), Column(4, 4096), Column(5, 0), Column(6, 0), Column(7, 0),
                                    Column(8, 0)})}, 0),
       "F0 F0 F2 03 82 08 00 F3 F2 04 82 10 00 F3 F2 05 00 F3 F2 06 00 F3 F2 07 00 F3 F2 08 00 F3 F1 F1"
       "F9 F0 00 00 00 F1"},
      {"Admins alone", Encode(EncodeBooleanExpr(AnyOf({kAdmins}))),
       "F0 F2 A4 00 00 0C 05 A8 00 00 00 09 00 00 00 02 F3 F1"},
      {"Admins User1 OR User3 OR", Encode(EncodeBooleanExpr(AnyOf({kAdmins, UserUid(1), UserUid(3)}))),
       "F0 F2 A4 00 00 0C 05 A8 00 00 00 09 00 00 00 02 F3 F2 A4 00 00 0C 05 A8 00 00 00 09 00 03 00 01 F3"
       "F2 A4 00 00 04 0E 01 F3 F2 A4 00 00 0C 05 A8 00 00 00 09 00 03 00 03 F3 F2 A4 00 00 04 0E 01 F3 F1"},
  };
  for (const Case& c : cases) EXPECT_EQ(Hex(c.built), Hex(H(c.wire))) << c.name;
}

TEST(AceTest, OnlyPlainAlternativesGiveTheirAuthorities) {
  const std::string admins = "F2 A4 00 00 0C 05 A8 00 00 00 09 00 00 00 02 F3 ", op = "F2 A4 00 00 04 0E ";
  const std::string user1 = "F2 A4 00 00 0C 05 A8 00 00 00 09 00 03 00 01 F3 ";
  struct Case { const char* name; std::string hex; bool decodes; std::vector<Uid> anyOf; } cases[] = {
      {"one authority", "F0 " + admins + "F1", true, {kAdmins}},
      {"a b OR", "F0 " + admins + user1 + op + "01 F3 F1", true, {kAdmins, UserUid(1)}},
      {"a a OR names a once", "F0 " + user1 + user1 + op + "01 F3 F1", true, {UserUid(1)}},
      {"a b AND", "F0 " + admins + user1 + op + "00 F3 F1", true, {}},
      {"a NOT", "F0 " + admins + op + "02 F3 F1", true, {}},
      {"OR of one operand", "F0 " + admins + op + "01 F3 F1", true, {}},
      {"two operands without an operator", "F0 " + admins + user1 + "F1", true, {}},
      {"operator 3", "F0 " + admins + op + "03 F3 F1", false, {}},
      {"authority that is no UID", "F0 F2 A4 00 00 0C 05 A4 00 00 00 09 F3 F1", false, {}},
      {"item of an unknown name", "F0 F2 A4 00 00 0C 06 A8 00 00 00 09 00 00 00 02 F3 F1", false, {}},
      {"item that is no name", "F0 A8 00 00 00 09 00 00 00 02 F1", false, {}},
  };
  for (const Case& c : cases) {
    Result<std::vector<Item>> items = Decode(H(c.hex));
    ASSERT_TRUE(items.ok() && items->size() == 1) << c.name;
    Result<BooleanExpr> expr = DecodeBooleanExpr((*items)[0].value);
    ASSERT_EQ(expr.ok(), c.decodes) << c.name;
    if (!expr) continue;
    EXPECT_EQ(Hex(Encode(EncodeBooleanExpr(*expr))), Hex(H(c.hex))) << c.name;
    Result<std::vector<Uid>> anyOf = AuthoritiesOfAnyOf(*expr);
    EXPECT_EQ(anyOf.ok() ? anyOf.value() : std::vector<Uid>{}, c.anyOf) << c.name;
  }
}

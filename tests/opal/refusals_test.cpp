// Input every decoder must refuse with an Error: no crash, no read outside
// the buffer (each case sits in a heap block of exactly its size, so the
// sanitizer build catches a read past it).
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "ace.h"
#include "discovery.h"
#include "method.h"
#include "opal_testing.h"
#include "packet.h"

static std::string Repeat(const std::string& hex, size_t times) { return times ? hex + Repeat(hex, times - 1) : ""; }

// Headers with these ComPacket, Packet and SubPacket lengths, cut to size bytes.
static std::string Framed(uint32_t comPacket, uint32_t packet, uint32_t subPacket, size_t size = 120) {
  Bytes data(std::max<size_t>(size, 56), 0x01);
  WriteBe(&data[16], comPacket, 4), WriteBe(&data[40], packet, 4), WriteBe(&data[52], subPacket, 4);
  return Hex(Bytes(data.begin(), data.begin() + size));
}

TEST(RefusalTest, MalformedInputIsAnErrorAtEveryLayer) {
  // Whether a layer accepts the bytes.
  using Layer = bool (*)(const uint8_t* data, size_t size);
  const Layer kTokens = [](const uint8_t* d, size_t n) { return Decode(d, n).ok(); };
  const Layer kFrame = [](const uint8_t* d, size_t n) { return Unframe(d, n).ok(); };
  const Layer kMessage = [](const uint8_t* d, size_t n) { return DecodeMessage(Bytes(d, d + n)).ok(); };
  const Layer kDiscovery = [](const uint8_t* d, size_t n) { return DecodeDiscovery(d, n).ok(); };
  const Layer kAce = [](const uint8_t* d, size_t n) {  // well-formed tokens, but no BooleanExpr
    Result<std::vector<Item>> items = Decode(d, n);
    return !items || items->size() != 1 || DecodeBooleanExpr((*items)[0].value).ok();
  };
  const size_t deeper = kMaxDepth + 1;
  const std::string uid = " A8 0000020500000001 ", ok = " F9 F0 00 00 00 F1";
  struct Case { const char* name; Layer layer; std::string hex; } cases[] = {
      {"lists one deeper than allowed", kTokens, Repeat("F0", deeper) + Repeat("F1", deeper)},
      {"medium length of 256", kTokens, "D1 00" + Repeat("61", 255)}, {"reserved token in a list", kTokens, "F0 F7 F1"},
      {"integer of 9 bytes", kTokens, "89 0000000000000000 01"}, {"end of list closing a name", kTokens, "F2 01 02 F1"},
      {"long string past the end", kTokens, "E2 00 01 00 61"}, {"end of data inside a name", kTokens, "F2 01 F9 F3"},
      {"end of name closing a list", kTokens, "F0 01 F3"}, {"short string past the end", kTokens, "A5 61 62"},
      {"reserved atom header", kTokens, "E4 00 00 00"}, {"name of three", kTokens, "F2 01 02 03 F3"},
      {"call inside a list", kTokens, "F0 F8 F1"}, {"list closed twice", kTokens, "F0 F1 F1"},
      {"name of one item", kTokens, "F2 01 F3"}, {"long header cut", kTokens, "E2 00 00"},
      {"list not closed", kTokens, "F0 01"}, {"medium header cut", kTokens, "D0"}, {"reserved token", kTokens, "F4"},
      {"ComPacket too short for a packet", kFrame, Framed(35, 12, 1)}, {"Packet 2^32-1", kFrame, Framed(100, ~0u, 61)},
      {"ComPacket past the data", kFrame, Framed(100, 76, 61, 119)}, {"SubPacket 2^32-1", kFrame, Framed(100, 76, ~0u)},
      {"Packet past its ComPacket", kFrame, Framed(100, 77, 61)}, {"shorter than its header", kFrame, Repeat("00", 19)},
      {"SubPacket past its Packet", kFrame, Framed(100, 76, 65)}, {"ComPacket 2^32-1", kFrame, Framed(~0u, 76, 61)},
      {"SubPacket 0", kFrame, Framed(100, 76, 0)}, {"Packet 0", kFrame, Framed(100, 0, 0)},
      {"call on a seven-byte UID", kMessage, "F8 A7 00000205000001" + uid + "F0 F1" + ok},
      {"tokens after the status list", kMessage, "F0 F1" + ok + " F0 F1"}, {"no status list", kMessage, "F0 F1 F9"},
      {"results without end of data", kMessage, "F0 F1 F0 00 00 00 F1"}, {"only end of data", kMessage, "F9"},
      {"call without a method", kMessage, "F8" + uid + "F0 F1" + ok}, {"end of session and more", kMessage, "FA F0 F1"},
      {"status above 255", kMessage, "F0 F1 F9 F0 820100 00 00 F1"}, {"empty payload", kMessage, ""},
      {"a bare atom", kMessage, "05"},
      {"descriptor past the data", kDiscovery, Hex(Discovered("0203 10 10 1000 0001"))},
      {"discovery shorter than its header", kDiscovery, Repeat("00", 47)},
      {"descriptor header cut", kDiscovery, Hex(Discovered("0203 10"))},
      {"ACE item of an unknown name", kAce, "F0 F2 A4 00000C06 A8 0000000900000002 F3 F1"},
      {"ACE authority that is no UID", kAce, "F0 F2 A4 00000C05 A4 00000009 F3 F1"},
      {"ACE item that is no name", kAce, "F0 A8 0000000900000002 F1"},
      {"ACE operator 3", kAce, "F0 F2 A4 0000040E 03 F3 F1"},
  };
  for (const Case& c : cases) {
    const Bytes input = H(c.hex);
    std::unique_ptr<uint8_t[]> exact(new uint8_t[input.size()]);
    std::copy(input.begin(), input.end(), exact.get());
    EXPECT_FALSE(c.layer(exact.get(), input.size())) << c.name;
  }
  const Bytes limit = H(Repeat("F0", kMaxDepth) + Repeat("F1", kMaxDepth));
  EXPECT_TRUE(kTokens(limit.data(), limit.size())) << "at the limit itself, nesting is fine";
}

// Input every decoder must refuse with an Error: no crash, no read outside
// the buffer (each case sits in a heap block of exactly its size, so the
// sanitizer build catches a read past it).
#include <gtest/gtest.h>

#include <memory>

#include "discovery.h"
#include "method.h"
#include "opal_testing.h"

using namespace opal;
using opaltest::H;

namespace {

enum class Layer { kTokens, kFrame, kMessage, kDiscovery };

std::string Repeat(const std::string& hex, size_t times) {
  std::string out;
  for (size_t i = 0; i < times; ++i) out += hex;
  return out;
}

// Headers with these ComPacket, Packet and SubPacket lengths, cut to size bytes.
std::string Framed(uint32_t comPacket, uint32_t packet, uint32_t subPacket, size_t size) {
  Bytes data(std::max<size_t>(size, 56), 0x01);
  WriteBe(&data[16], comPacket, 4);
  WriteBe(&data[40], packet, 4);
  WriteBe(&data[52], subPacket, 4);
  data.resize(size);
  return opaltest::Hex(data);
}

// A discovery header whose Length covers the descriptor bytes that follow.
std::string Discovered(const std::string& descriptors) {
  Bytes data = H(Repeat("00", 48) + descriptors);
  WriteBe(data.data(), data.size() - 4, 4);
  return opaltest::Hex(data);
}

// The error a layer gives for input, or "" when it accepts it.
std::string Refusal(Layer layer, const Bytes& input) {
  std::unique_ptr<uint8_t[]> exact(new uint8_t[input.size()]);
  std::copy(input.begin(), input.end(), exact.get());
  auto error = [](const auto& result) { return result.ok() ? std::string() : result.error().message; };
  switch (layer) {
    case Layer::kTokens: return error(Decode(exact.get(), input.size()));
    case Layer::kFrame: return error(Unframe(exact.get(), input.size()));
    case Layer::kMessage: return error(DecodeMessage(input));
    case Layer::kDiscovery: return error(DecodeDiscovery(exact.get(), input.size()));
  }
  return "";
}

}  // namespace

TEST(RefusalTest, MalformedInputIsAnErrorAtEveryLayer) {
  const size_t kDeeper = kMaxDepth + 1;
  const std::string uid = " A8 00 00 02 05 00 00 00 01 ";
  struct Case { const char* name; Layer layer; std::string hex; } cases[] = {
      {"short string past the end", Layer::kTokens, "A5 61 62"},
      {"medium header cut", Layer::kTokens, "D0"},
      {"medium length counts both bytes", Layer::kTokens, "D1 00" + Repeat("61", 255)},
      {"long header cut", Layer::kTokens, "E2 00 00"},
      {"long string past the end", Layer::kTokens, "E2 00 01 00 61"},
      {"long length of 16 MiB", Layer::kTokens, "E2 FF FF FF 00"},
      {"reserved token F4", Layer::kTokens, "F4"},
      {"reserved token F5", Layer::kTokens, "F5"},
      {"reserved token F6", Layer::kTokens, "F6"},
      {"reserved token F7 in a list", Layer::kTokens, "F0 F7 F1"},
      {"reserved token FD", Layer::kTokens, "FD"},
      {"reserved token FE", Layer::kTokens, "FE"},
      {"reserved atom header E4", Layer::kTokens, "E4 00 00 00"},
      {"short integer of nine bytes", Layer::kTokens, "89 00 00 00 00 00 00 00 00 01"},
      {"medium integer of nine bytes", Layer::kTokens, "C0 09 00 00 00 00 00 00 00 00 01"},
      {"lists one deeper than allowed", Layer::kTokens, Repeat("F0", kDeeper) + Repeat("F1", kDeeper)},
      {"names one deeper than allowed", Layer::kTokens, Repeat("F2 01", kDeeper) + Repeat("02 F3", kDeeper)},
      {"lists 100000 deep, closed", Layer::kTokens, Repeat("F0", 100000) + Repeat("F1", 100000)},
      {"list not closed", Layer::kTokens, "F0 01"},
      {"list closed twice", Layer::kTokens, "F0 F1 F1"},
      {"end of list closing a name", Layer::kTokens, "F2 01 02 F1"},
      {"end of name closing a list", Layer::kTokens, "F0 01 F3"},
      {"name with one item", Layer::kTokens, "F2 01 F3"},
      {"name with three items", Layer::kTokens, "F2 01 02 03 F3"},
      {"call inside a list", Layer::kTokens, "F0 F8 F1"},
      {"end of data inside a name", Layer::kTokens, "F2 01 F9 F3"},
      {"shorter than a ComPacket header", Layer::kFrame, Repeat("00", 19)},
      {"ComPacket length past the data", Layer::kFrame, Framed(100, 76, 61, 119)},
      {"ComPacket length of 2^32-1", Layer::kFrame, Framed(0xFFFFFFFF, 76, 61, 120)},
      {"ComPacket too short for a packet", Layer::kFrame, Framed(35, 12, 1, 120)},
      {"Packet length 0", Layer::kFrame, Framed(100, 0, 0, 120)},
      {"Packet length past its ComPacket", Layer::kFrame, Framed(100, 77, 61, 120)},
      {"SubPacket length past its Packet", Layer::kFrame, Framed(100, 76, 65, 120)},
      {"Packet length of 2^32-1", Layer::kFrame, Framed(100, 0xFFFFFFFF, 61, 120)},
      {"SubPacket length of 2^32-1", Layer::kFrame, Framed(100, 76, 0xFFFFFFFF, 120)},
      {"SubPacket length 0", Layer::kFrame, Framed(100, 76, 0, 120)},
      {"empty payload", Layer::kMessage, ""},
      {"a bare atom", Layer::kMessage, "05"},
      {"only end of data", Layer::kMessage, "F9"},
      {"end of session and more", Layer::kMessage, "FA F0 F1"},
      {"results without end of data", Layer::kMessage, "F0 F1 F0 00 00 00 F1"},
      {"status list missing", Layer::kMessage, "F0 F1 F9"},
      {"status above 255", Layer::kMessage, "F0 F1 F9 F0 82 01 00 00 00 F1"},
      {"tokens after the status list", Layer::kMessage, "F0 F1 F9 F0 00 00 00 F1 F0 F1"},
      {"call without a method", Layer::kMessage, "F8" + uid + "F0 F1 F9 F0 00 00 00 F1"},
      {"call on a seven-byte UID", Layer::kMessage, "F8 A7 00 00 02 05 00 00 01" + uid + "F0 F1 F9 F0 00 00 00 F1"},
      {"discovery shorter than its header", Layer::kDiscovery, Repeat("00", 47)},
      {"descriptor header cut", Layer::kDiscovery, Discovered("0203 10")},
      {"descriptor past the data", Layer::kDiscovery, Discovered("0203 10 10 1000 0001")},
  };
  for (const Case& c : cases) EXPECT_NE(Refusal(c.layer, H(c.hex)), "") << c.name;
  // At the limit itself, nesting is fine.
  EXPECT_EQ(Refusal(Layer::kTokens, H(Repeat("F0", kMaxDepth) + Repeat("F1", kMaxDepth))), "");
}

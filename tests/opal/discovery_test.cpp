// Level 0 discovery: the header, each descriptor's fields at their offsets,
// and every flag at its bit.
#include <gtest/gtest.h>

#include "discovery.h"
#include "opal_testing.h"
#include "packet.h"

static std::string Zeros(size_t bytes) { return std::string(2 * bytes, '0'); }

TEST(DiscoveryTest, EveryFieldAndFlagIsReadAtItsPlaceAndWrittenBackThere) {
  // Any two bit positions differ in one of these patterns, so a flag read or
  // written at another bit than its own changes what comes back.
  for (unsigned p : {0x55, 0xAA, 0x33, 0xCC, 0x0F, 0xF0}) {
    auto flags = [p](unsigned defined) { return Hex({static_cast<uint8_t>(p & defined)}); };
    // Every descriptor this library knows, in the order it writes them: TPer,
    // Locking, Geometry, Enterprise, Opal 1, Single User, DataStore, Opal 2.
    const Bytes exact = Discovered(
        "0001 10 0C" + flags(0x5F) + Zeros(11) + "0002 10 0C" + flags(0x3F) + Zeros(11) +
        "0003 10 1C" + flags(1) + Zeros(7) + "00001000 0000000000000008 0000000100000007" +
        "0100 10 10 07FE 0002" + flags(1) + Zeros(11) + "0200 10 0C 0FFE 0001" + flags(1) + Zeros(7) +
        "0201 10 0C 00000009" + flags(7) + Zeros(7) + "0202 10 0C 0000 000A 00A00000 00000200" +
        "0203 10 10 1000 0001" + flags(1) + "0004 0009 FF 00" + Zeros(5));
    Bytes received = exact;
    received.resize(2048, 0);  // as one receive brings it
    Result<Discovery> d = DecodeDiscovery(received.data(), received.size());
    ASSERT_TRUE(d.ok() && d->Ssc()) << d.error().message;
    EXPECT_EQ(Hex(EncodeDiscovery(*d)), Hex(exact)) << "pattern " << p;
    EXPECT_TRUE(d->unknownFeatures + d->vendorFeatures == 0 && d->Ssc()->baseComId == 0x1000)
        << "the zero fill is no feature, and sessions go to the Opal 2 ComID, not Enterprise's or Opal 1's";
  }
}

TEST(DiscoveryTest, HeaderLengthBoundsTheDescriptorsRead) {
  Bytes data = Discovered("0001 10 0C 11" + Zeros(11) + "0002 10 0C 01" + Zeros(11) +
                          "C000 10 04 00000000 0404 10 00 0203 10 10 1000 0001" + Zeros(12));
  Result<Discovery> all = DecodeDiscovery(data.data(), data.size());
  EXPECT_TRUE(all && all->tper && all->locking && all->opal2 && all->vendorFeatures == 1 && all->unknownFeatures == 1);
  WriteBe(data.data(), 44 + 16 + 16, 4);  // Length covers TPer and Locking only
  Result<Discovery> cut = DecodeDiscovery(data.data(), data.size());
  EXPECT_TRUE(cut && cut->locking && !cut->opal2 && cut->vendorFeatures == 0);
}

// Level 0 discovery: the header, each descriptor's fields at their offsets,
// and every flag at its bit.
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "discovery.h"
#include "opal_testing.h"
#include "packet.h"

using namespace opal;
using opaltest::H;
using opaltest::Hex;

namespace {

std::string Zeros(size_t bytes) { return std::string(2 * bytes, '0'); }

// The 48-byte header (Length = total - 4, revision 1) and the descriptors.
Bytes WithHeader(const Bytes& descriptors) {
  Bytes out = opaltest::Cat(H("00000000 00000001" + Zeros(40)), descriptors);
  WriteBe(out.data(), out.size() - 4, 4);
  return out;
}

// Every descriptor by code, wherever it stands.
std::map<uint16_t, std::string> Descriptors(const Bytes& data) {
  std::map<uint16_t, std::string> out;
  for (size_t at = 48; at + 4 <= data.size(); at += 4 + data[at + 3]) {
    out[static_cast<uint16_t>(ReadBe(&data[at], 2))] = Hex(Bytes(&data[at], &data[at] + 4 + data[at + 3]));
  }
  return out;
}

template <typename T>
T& Use(std::optional<T>& feature) {
  if (!feature) feature.emplace();
  return *feature;
}

}  // namespace

TEST(DiscoveryTest, EveryFieldIsReadAtItsOffsetAndWrittenBackThere) {
  Bytes data = WithHeader(H("0001 10 0C 11" + Zeros(11) +                        // TPer: Sync, Streaming
                            "0002 10 0C 09" + Zeros(11) +                        // Locking: supported, encryption
                            "0003 10 1C 01" + Zeros(7) + "00001000 0000000000000008 0000000100000007" +
                            "0100 10 10 07FE 0002 01" + Zeros(11) +              // Enterprise
                            "0200 10 0C 0FFE 0001" + Zeros(8) +                  // Opal 1
                            "0201 10 0C 00000009 05" + Zeros(7) +                // Single User: Any, Policy
                            "0202 10 0C 0000 000A 00A00000 00000200" +           // DataStore
                            "0203 10 10 1000 0001 00 0004 0009 FF 00" + Zeros(5)));  // Opal 2
  const Bytes exact = data;
  data.resize(2048, 0);  // as one 2048-byte receive brings it
  Result<Discovery> d = DecodeDiscovery(data.data(), data.size());
  ASSERT_TRUE(d.ok()) << d.error().message;
  ASSERT_TRUE(d->tper && d->locking && d->geometry && d->enterprise && d->opal1 && d->singleUser && d->dataStore &&
              d->opal2);
  EXPECT_TRUE(d->geometry->logicalBlockSize == 4096 && d->geometry->alignmentGranularity == 8 &&
              d->geometry->lowestAlignedLba == 0x100000007);
  EXPECT_TRUE(d->enterprise->baseComId == 0x07FE && d->enterprise->numComIds == 2 && d->enterprise->rangeCrossing);
  EXPECT_TRUE(d->opal1->baseComId == 0x0FFE && d->opal1->numComIds == 1);
  EXPECT_EQ(d->singleUser->lockingObjects, 9u);
  EXPECT_TRUE(d->dataStore->maxTables == 10 && d->dataStore->maxSize == 0xA00000 && d->dataStore->alignment == 512);
  EXPECT_TRUE(d->opal2->baseComId == 0x1000 && d->opal2->numComIds == 1 && !d->opal2->rangeCrossing &&
              d->opal2->lockingAdmins == 4 && d->opal2->lockingUsers == 9 && d->opal2->initialPin == 0xFF &&
              d->opal2->revertedPin == 0);
  ASSERT_NE(d->Ssc(), nullptr);
  EXPECT_EQ(d->Ssc()->baseComId, 0x1000) << "sessions go to the Opal 2 ComID";
  EXPECT_EQ(d->unknownFeatures + d->vendorFeatures, 0);

  const Bytes written = EncodeDiscovery(*d);
  EXPECT_EQ(Hex(Bytes(written.begin(), written.begin() + 48)), Hex(Bytes(exact.begin(), exact.begin() + 48)));
  EXPECT_EQ(Descriptors(written), Descriptors(exact));
}

TEST(DiscoveryTest, EachFlagHasItsOwnBit) {
  using Flags = std::vector<bool*>;  // in bit order; null for a bit without a flag
  struct Case { const char* name; const char* head; size_t at; std::function<Flags(Discovery&)> flags; } cases[] = {
      {"TPer", "0001 10 0C", 4, [](Discovery& d) { auto& f = Use(d.tper);
         return Flags{&f.sync, &f.async, &f.ackNak, &f.bufferManagement, &f.streaming, nullptr, &f.comIdManagement}; }},
      {"Locking", "0002 10 0C", 4, [](Discovery& d) { auto& f = Use(d.locking);
         return Flags{&f.supported, &f.enabled, &f.locked, &f.mediaEncryption, &f.mbrEnabled, &f.mbrDone}; }},
      {"Geometry", "0003 10 1C", 4, [](Discovery& d) { return Flags{&Use(d.geometry).align}; }},
      {"Enterprise", "0100 10 10", 8, [](Discovery& d) { return Flags{&Use(d.enterprise).rangeCrossing}; }},
      {"Single User", "0201 10 0C", 8, [](Discovery& d) { auto& f = Use(d.singleUser);
         return Flags{&f.any, &f.all, &f.policy}; }},
      {"Opal 2", "0203 10 10", 8, [](Discovery& d) { return Flags{&Use(d.opal2).rangeCrossing}; }},
  };
  for (const Case& c : cases) {
    Discovery none;
    for (size_t bit = 0; bit < c.flags(none).size(); ++bit) {
      if (c.flags(none)[bit] == nullptr) continue;
      Bytes descriptor = H(c.head);
      descriptor.resize(4 + descriptor[3], 0);
      descriptor[c.at] = static_cast<uint8_t>(1u << bit);
      const Bytes data = WithHeader(descriptor);
      Result<Discovery> read = DecodeDiscovery(data.data(), data.size());
      ASSERT_TRUE(read.ok()) << c.name << ": " << read.error().message;
      const Flags flags = c.flags(*read);
      for (size_t other = 0; other < flags.size(); ++other) {
        EXPECT_TRUE(!flags[other] || *flags[other] == (other == bit)) << c.name << " bit " << bit << " as " << other;
      }
      Discovery alone;
      *c.flags(alone)[bit] = true;
      EXPECT_EQ(Descriptors(EncodeDiscovery(alone)), Descriptors(data)) << c.name << " bit " << bit;
    }
  }
}

TEST(DiscoveryTest, HeaderLengthBoundsTheDescriptorsRead) {
  const Bytes all = WithHeader(H("0001 10 0C 11" + Zeros(11) + "0002 10 0C 01" + Zeros(11) +
                                 "C000 10 04 00000000 0404 10 00 0203 10 10 1000 0001" + Zeros(12)));
  Result<Discovery> d = DecodeDiscovery(all.data(), all.size());
  ASSERT_TRUE(d.ok()) << d.error().message;
  EXPECT_TRUE(d->tper && d->locking && d->opal2 && d->vendorFeatures == 1 && d->unknownFeatures == 1);
  Bytes cut = all;
  WriteBe(cut.data(), 44 + 16 + 16, 4);  // Length covers TPer and Locking only
  Result<Discovery> shorter = DecodeDiscovery(cut.data(), cut.size());
  ASSERT_TRUE(shorter.ok()) << shorter.error().message;
  EXPECT_TRUE(shorter->locking && !shorter->opal2 && shorter->Ssc() == nullptr && shorter->vendorFeatures == 0);
}

#include "discovery.h"

#include "packet.h"

namespace opal {

const SscFeature* Discovery::Ssc() const {
  if (opal2) return &*opal2;
  if (opal1) return &*opal1;
  if (enterprise) return &*enterprise;
  return nullptr;
}

namespace {

uint8_t Bit(bool flag, int bit) { return flag ? static_cast<uint8_t>(1u << bit) : 0; }
bool BitAt(const Bytes& d, size_t at, int bit) { return at < d.size() && (d[at] >> bit & 1); }
uint64_t FieldAt(const Bytes& d, size_t at, size_t width) {
  if (at + width > d.size()) return 0;
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) value = value << 8 | d[at + i];
  return value;
}

// One descriptor: code, version 1, data length, then the data after the
// 4-byte header (the descriptor's offsets count from its start).
void Descriptor(Bytes& out, uint16_t code, Bytes descriptor) {
  WriteBe(descriptor.data(), code, 2);
  descriptor[2] = 0x10;
  descriptor[3] = static_cast<uint8_t>(descriptor.size() - 4);
  out.insert(out.end(), descriptor.begin(), descriptor.end());
}

Bytes SscDescriptor(const SscFeature& f, size_t size) {
  Bytes d(size, 0);
  WriteBe(&d[4], f.baseComId, 2);
  WriteBe(&d[6], f.numComIds, 2);
  d[8] = Bit(f.rangeCrossing, 0);
  return d;
}

SscFeature DecodeSsc(const Bytes& d, bool opal2) {
  SscFeature f;
  f.baseComId = static_cast<uint16_t>(FieldAt(d, 4, 2));
  f.numComIds = static_cast<uint16_t>(FieldAt(d, 6, 2));
  f.rangeCrossing = BitAt(d, 8, 0);
  if (opal2) {
    f.lockingAdmins = static_cast<uint16_t>(FieldAt(d, 9, 2));
    f.lockingUsers = static_cast<uint16_t>(FieldAt(d, 11, 2));
    f.initialPin = static_cast<uint8_t>(FieldAt(d, 13, 1));
    f.revertedPin = static_cast<uint8_t>(FieldAt(d, 14, 1));
  }
  return f;
}

void DecodeDescriptor(Discovery& out, uint16_t code, const Bytes& d) {
  switch (code) {
    case kFeatureTper:
      out.tper = TperFeature{BitAt(d, 4, 0), BitAt(d, 4, 1), BitAt(d, 4, 2), BitAt(d, 4, 3), BitAt(d, 4, 4),
                             BitAt(d, 4, 6)};
      break;
    case kFeatureLocking:
      out.locking = LockingFeature{BitAt(d, 4, 0), BitAt(d, 4, 1), BitAt(d, 4, 2), BitAt(d, 4, 3), BitAt(d, 4, 4),
                                   BitAt(d, 4, 5)};
      break;
    case kFeatureGeometry:
      out.geometry = GeometryFeature{BitAt(d, 4, 0), static_cast<uint32_t>(FieldAt(d, 12, 4)), FieldAt(d, 16, 8),
                                     FieldAt(d, 24, 8)};
      break;
    case kFeatureEnterprise:
      out.enterprise = DecodeSsc(d, false);
      break;
    case kFeatureOpal1:
      out.opal1 = DecodeSsc(d, false);
      break;
    case kFeatureOpal2:
      out.opal2 = DecodeSsc(d, true);
      break;
    case kFeatureSingleUser:
      out.singleUser = SingleUserFeature{static_cast<uint32_t>(FieldAt(d, 4, 4)), BitAt(d, 8, 0), BitAt(d, 8, 1),
                                         BitAt(d, 8, 2)};
      break;
    case kFeatureDataStore:
      out.dataStore = DataStoreFeature{static_cast<uint16_t>(FieldAt(d, 6, 2)),
                                       static_cast<uint32_t>(FieldAt(d, 8, 4)),
                                       static_cast<uint32_t>(FieldAt(d, 12, 4))};
      break;
    default:
      ++(code >= 0xC000 ? out.vendorFeatures : out.unknownFeatures);
  }
}

}  // namespace

Bytes EncodeDiscovery(const Discovery& f) {
  Bytes out(kDiscoveryHeaderSize, 0);
  WriteBe(&out[4], 1, 4);  // data structure revision
  if (f.tper) {
    Bytes d(16, 0);
    const TperFeature& t = *f.tper;
    d[4] = Bit(t.sync, 0) | Bit(t.async, 1) | Bit(t.ackNak, 2) | Bit(t.bufferManagement, 3) |
           Bit(t.streaming, 4) | Bit(t.comIdManagement, 6);
    Descriptor(out, kFeatureTper, d);
  }
  if (f.locking) {
    Bytes d(16, 0);
    const LockingFeature& l = *f.locking;
    d[4] = Bit(l.supported, 0) | Bit(l.enabled, 1) | Bit(l.locked, 2) | Bit(l.mediaEncryption, 3) |
           Bit(l.mbrEnabled, 4) | Bit(l.mbrDone, 5);
    Descriptor(out, kFeatureLocking, d);
  }
  if (f.geometry) {
    Bytes d(32, 0);
    d[4] = Bit(f.geometry->align, 0);
    WriteBe(&d[12], f.geometry->logicalBlockSize, 4);
    WriteBe(&d[16], f.geometry->alignmentGranularity, 8);
    WriteBe(&d[24], f.geometry->lowestAlignedLba, 8);
    Descriptor(out, kFeatureGeometry, d);
  }
  if (f.enterprise) Descriptor(out, kFeatureEnterprise, SscDescriptor(*f.enterprise, 20));
  if (f.opal1) Descriptor(out, kFeatureOpal1, SscDescriptor(*f.opal1, 16));
  if (f.singleUser) {
    Bytes d(16, 0);
    WriteBe(&d[4], f.singleUser->lockingObjects, 4);
    d[8] = Bit(f.singleUser->any, 0) | Bit(f.singleUser->all, 1) | Bit(f.singleUser->policy, 2);
    Descriptor(out, kFeatureSingleUser, d);
  }
  if (f.dataStore) {
    Bytes d(16, 0);
    WriteBe(&d[6], f.dataStore->maxTables, 2);
    WriteBe(&d[8], f.dataStore->maxSize, 4);
    WriteBe(&d[12], f.dataStore->alignment, 4);
    Descriptor(out, kFeatureDataStore, d);
  }
  if (f.opal2) {
    Bytes d = SscDescriptor(*f.opal2, 20);
    WriteBe(&d[9], f.opal2->lockingAdmins, 2);
    WriteBe(&d[11], f.opal2->lockingUsers, 2);
    d[13] = f.opal2->initialPin;
    d[14] = f.opal2->revertedPin;
    Descriptor(out, kFeatureOpal2, d);
  }
  WriteBe(&out[0], out.size() - 4, 4);
  return out;
}

Result<Discovery> DecodeDiscovery(const uint8_t* data, size_t size) {
  if (size < kDiscoveryHeaderSize) return Fail("discovery data shorter than its header");
  const uint64_t length = ReadBe(data, 4);
  const size_t end = length > size - 4 ? size : static_cast<size_t>(length) + 4;
  Discovery out;
  // As drives are read in practice: the first descriptor even when the
  // header's Length is short, and a descriptor that runs past Length whole,
  // so long as it lies inside the data.
  size_t at = kDiscoveryHeaderSize;
  do {
    if (size - at < 4) {
      if (at < end) return Fail("feature descriptor header cut short");
      break;
    }
    const uint16_t code = static_cast<uint16_t>(ReadBe(data + at, 2));
    const size_t total = 4 + size_t{data[at + 3]};
    if (total > size - at) return Fail("feature descriptor runs past the discovery data");
    DecodeDescriptor(out, code, Bytes(data + at, data + at + total));
    at += total;
  } while (at < end);
  return out;
}

}  // namespace opal

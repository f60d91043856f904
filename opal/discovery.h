// Level 0 Discovery: the 48-byte header and the feature descriptors that say
// what a drive is (TPer, Locking, Geometry, the Opal 2 / Opal 1 / Enterprise
// SSCs, Single User Mode, DataStore). Encoding is the drive's side, decoding
// the host's.
#pragma once

#include <cstdint>
#include <optional>

#include "tokens.h"

namespace opal {

constexpr uint16_t kFeatureTper = 0x0001;
constexpr uint16_t kFeatureLocking = 0x0002;
constexpr uint16_t kFeatureGeometry = 0x0003;
constexpr uint16_t kFeatureEnterprise = 0x0100;
constexpr uint16_t kFeatureOpal1 = 0x0200;
constexpr uint16_t kFeatureSingleUser = 0x0201;
constexpr uint16_t kFeatureDataStore = 0x0202;
constexpr uint16_t kFeatureOpal2 = 0x0203;
constexpr size_t kDiscoveryHeaderSize = 48;

struct TperFeature {
  bool sync = false, async = false, ackNak = false, bufferManagement = false, streaming = false,
       comIdManagement = false;
};

struct LockingFeature {
  bool supported = false, enabled = false, locked = false, mediaEncryption = false, mbrEnabled = false,
       mbrDone = false;
};

struct GeometryFeature {
  bool align = false;
  uint32_t logicalBlockSize = 0;
  uint64_t alignmentGranularity = 0;
  uint64_t lowestAlignedLba = 0;
};

// The SSC descriptors share their first fields; the Opal 2 one has more.
struct SscFeature {
  uint16_t baseComId = 0;
  uint16_t numComIds = 0;
  bool rangeCrossing = false;
  uint16_t lockingAdmins = 0;  // Opal 2 only
  uint16_t lockingUsers = 0;   // Opal 2 only
  uint8_t initialPin = 0;      // Opal 2 only
  uint8_t revertedPin = 0;     // Opal 2 only
};

struct SingleUserFeature {
  uint32_t lockingObjects = 0;
  bool any = false, all = false, policy = false;
};

struct DataStoreFeature {
  uint16_t maxTables = 0;
  uint32_t maxSize = 0;
  uint32_t alignment = 0;
};

struct Discovery {
  std::optional<TperFeature> tper;
  std::optional<LockingFeature> locking;
  std::optional<GeometryFeature> geometry;
  std::optional<SscFeature> enterprise, opal1, opal2;
  std::optional<SingleUserFeature> singleUser;
  std::optional<DataStoreFeature> dataStore;
  int unknownFeatures = 0;  // codes below 0xC000 that this library does not know
  int vendorFeatures = 0;   // codes from 0xC000 on

  // The SSC whose ComID sessions use: Opal 2, else Opal 1, else Enterprise;
  // none for a drive that is not a TCG storage device.
  const SscFeature* Ssc() const;
};

// The discovery data of a drive, header Length = total - 4.
Bytes EncodeDiscovery(const Discovery& discovery);
// Reads the header and every descriptor inside its Length; a descriptor that
// runs past the data is an error.
Result<Discovery> DecodeDiscovery(const uint8_t* data, size_t size);

}  // namespace opal

// SATA encodings, both directions: the ATA PASS-THROUGH CDBs that carry
// IDENTIFY DEVICE, TRUSTED RECEIVE and TRUSTED SEND over SG_IO, and the
// strings of the IDENTIFY data (byte-swapped ATA words).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tokens.h"

namespace opal {

constexpr uint8_t kAtaPassThrough12 = 0xA1;
constexpr uint8_t kAtaPassThrough16 = 0x85;
constexpr uint8_t kAtaIdentifyDevice = 0xEC;
constexpr uint8_t kAtaTrustedReceive = 0x5C;
constexpr uint8_t kAtaTrustedSend = 0x5E;
constexpr size_t kAtaIdentifySize = 512;

using AtaCdb = std::array<uint8_t, 12>;

// ATA PASS-THROUGH(12) for IDENTIFY DEVICE (512 bytes in).
AtaCdb AtaIdentifyCdb();
// ATA PASS-THROUGH(12) for TRUSTED SEND or RECEIVE of length bytes (a
// multiple of 512) on protocol and ComID.
AtaCdb AtaTrustedCdb(bool send, uint8_t protocol, uint16_t comId, size_t length);

// A pass-through CDB (12- or 16-byte form) as the drive reads it.
struct AtaCommand {
  uint8_t command = 0;
  uint8_t protocol = 0;  // the Features field
  uint16_t comId = 0;
  size_t length = 0;  // bytes
  bool toDevice = false;
};
Result<AtaCommand> DecodeAtaCdb(const uint8_t* cdb, size_t size);

// Model (40), serial (20) and firmware (8) characters, padded with blanks as
// the drive reports them.
struct Identity {
  std::string model, serial, firmware;
};
// IDENTIFY DEVICE data of a drive that supports the trusted computing
// feature set, with blocks as its 48-bit capacity.
Bytes EncodeAtaIdentify(const Identity& identity, uint64_t blocks);
// The strings of IDENTIFY DEVICE data; an all-zero buffer is not ATA.
Result<Identity> DecodeAtaIdentify(const Bytes& data);

// text cut or blank-padded to width.
std::string Padded(const std::string& text, size_t width);
// text without trailing blanks and NULs.
std::string Trimmed(const std::string& text);

}  // namespace opal

#include "ata.h"

#include <algorithm>

namespace opal {

namespace {

// Field offsets of IDENTIFY DEVICE data, in bytes.
constexpr size_t kSerialAt = 20, kFirmwareAt = 46, kModelAt = 54;

void PutAtaString(Bytes& data, size_t at, const std::string& text, size_t width) {
  const std::string padded = Padded(text, width);
  for (size_t i = 0; i < width; i += 2) {
    data[at + i] = static_cast<uint8_t>(padded[i + 1]);
    data[at + i + 1] = static_cast<uint8_t>(padded[i]);
  }
}

std::string GetAtaString(const Bytes& data, size_t at, size_t width) {
  std::string text(width, ' ');
  for (size_t i = 0; i < width; i += 2) {
    text[i] = static_cast<char>(data[at + i + 1]);
    text[i + 1] = static_cast<char>(data[at + i]);
  }
  return text;
}

void PutWord(Bytes& data, size_t word, uint16_t value) {
  data[2 * word] = static_cast<uint8_t>(value);
  data[2 * word + 1] = static_cast<uint8_t>(value >> 8);
}

}  // namespace

std::string Padded(const std::string& text, size_t width) {
  std::string out = text.substr(0, width);
  out.resize(width, ' ');
  return out;
}

std::string Trimmed(const std::string& text) {
  const size_t end = text.find_last_not_of(std::string(" \0", 2));
  return end == std::string::npos ? "" : text.substr(0, end + 1);
}

AtaCdb AtaIdentifyCdb() { return {kAtaPassThrough12, 0x08, 0x0E, 0x00, 0x01, 0, 0, 0, 0, kAtaIdentifyDevice, 0, 0}; }

AtaCdb AtaTrustedCdb(bool send, uint8_t protocol, uint16_t comId, size_t length) {
  const size_t blocks = length / 512;
  // PIO Data-Out (5) or Data-In (4); length in sectors of the count field,
  // direction bit set for data from the device.
  return {kAtaPassThrough12,
          static_cast<uint8_t>(send ? 0x0A : 0x08),
          static_cast<uint8_t>(send ? 0x06 : 0x0E),
          protocol,
          static_cast<uint8_t>(blocks & 0xFF),
          static_cast<uint8_t>(blocks >> 8 & 0xFF),
          static_cast<uint8_t>(comId & 0xFF),
          static_cast<uint8_t>(comId >> 8),
          0,
          send ? kAtaTrustedSend : kAtaTrustedReceive,
          0,
          0};
}

Result<AtaCommand> DecodeAtaCdb(const uint8_t* cdb, size_t size) {
  AtaCommand out;
  size_t count = 0, lengthHigh = 0;
  if (size >= 12 && cdb[0] == kAtaPassThrough12) {
    out.protocol = cdb[3];
    count = cdb[4];
    lengthHigh = cdb[5];
    out.comId = static_cast<uint16_t>(cdb[6] | cdb[7] << 8);
    out.command = cdb[9];
  } else if (size >= 16 && cdb[0] == kAtaPassThrough16) {
    out.protocol = cdb[4];
    count = cdb[6];
    lengthHigh = cdb[8];
    out.comId = static_cast<uint16_t>(cdb[10] | cdb[12] << 8);
    out.command = cdb[14];
  } else {
    return Fail("not an ATA PASS-THROUGH command");
  }
  out.toDevice = (cdb[2] & 0x08) == 0;
  out.length = (count | lengthHigh << 8) * 512;
  if (out.command == kAtaIdentifyDevice) out.length = kAtaIdentifySize;
  return out;
}

Bytes EncodeAtaIdentify(const Identity& identity, uint64_t blocks) {
  Bytes data(kAtaIdentifySize, 0);
  PutWord(data, 0, 0x0040);  // fixed ATA device
  PutAtaString(data, kSerialAt, identity.serial, 20);
  PutAtaString(data, kFirmwareAt, identity.firmware, 8);
  PutAtaString(data, kModelAt, identity.model, 40);
  PutWord(data, 48, 0x4001);  // trusted computing feature set supported
  PutWord(data, 83, 0x4400);  // 48-bit addresses
  for (int w = 0; w < 4; ++w) PutWord(data, 100 + w, static_cast<uint16_t>(blocks >> (16 * w)));
  return data;
}

Result<Identity> DecodeAtaIdentify(const Bytes& data) {
  if (data.size() < kAtaIdentifySize) return Fail("IDENTIFY data too short");
  if (std::all_of(data.begin(), data.end(), [](uint8_t b) { return b == 0; })) return Fail("no IDENTIFY data");
  return Identity{GetAtaString(data, kModelAt, 40), GetAtaString(data, kSerialAt, 20),
                  GetAtaString(data, kFirmwareAt, 8)};
}

}  // namespace opal

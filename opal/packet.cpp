#include "packet.h"

#include <algorithm>

namespace opal {

uint32_t ReadBe(const uint8_t* at, size_t width) {
  uint32_t value = 0;
  for (size_t i = 0; i < width; ++i) value = value << 8 | at[i];
  return value;
}

void WriteBe(uint8_t* at, uint64_t value, size_t width) {
  for (size_t i = width; i > 0; --i, value >>= 8) at[i - 1] = static_cast<uint8_t>(value);
}

Bytes Frame(const ComPacket& packet) {
  const size_t payload = packet.payload.size();
  const size_t padded = (payload + 3) / 4 * 4;
  Bytes out(kHeadersSize + padded, 0);
  uint8_t* p = out.data();
  WriteBe(p + 4, packet.comId, 2);
  WriteBe(p + 6, packet.comIdExtension, 2);
  WriteBe(p + 8, packet.outstandingData, 4);
  WriteBe(p + 12, packet.minTransfer, 4);
  WriteBe(p + 16, kPacketHeaderSize + kSubPacketHeaderSize + padded, 4);
  WriteBe(p + 20, packet.tsn, 4);
  WriteBe(p + 24, packet.hsn, 4);
  WriteBe(p + 28, packet.seqNumber, 4);
  WriteBe(p + 40, kSubPacketHeaderSize + padded, 4);
  WriteBe(p + 50, packet.subPacketKind, 2);
  WriteBe(p + 52, payload, 4);
  std::copy(packet.payload.begin(), packet.payload.end(), out.begin() + kHeadersSize);
  return out;
}

Bytes FrameEmpty(uint16_t comId, uint32_t outstandingData, uint32_t minTransfer) {
  Bytes out(kComPacketHeaderSize, 0);
  WriteBe(out.data() + 4, comId, 2);
  WriteBe(out.data() + 8, outstandingData, 4);
  WriteBe(out.data() + 12, minTransfer, 4);
  return out;
}

Bytes PadToBlock(Bytes bytes, size_t block) {
  const size_t blocks = bytes.empty() ? 1 : (bytes.size() + block - 1) / block;
  bytes.resize(blocks * block, 0);
  return bytes;
}

Result<ComPacket> Unframe(const uint8_t* data, size_t size) {
  if (size < kComPacketHeaderSize) return Fail("response shorter than a ComPacket header");
  ComPacket packet;
  packet.comId = static_cast<uint16_t>(ReadBe(data + 4, 2));
  packet.comIdExtension = static_cast<uint16_t>(ReadBe(data + 6, 2));
  packet.outstandingData = ReadBe(data + 8, 4);
  packet.minTransfer = ReadBe(data + 12, 4);
  const uint32_t comPacketLength = ReadBe(data + 16, 4);
  if (comPacketLength == 0) {
    packet.empty = true;
    return packet;
  }
  if (comPacketLength > size - kComPacketHeaderSize) return Fail("ComPacket length runs past the data");
  if (comPacketLength < kPacketHeaderSize + kSubPacketHeaderSize) return Fail("ComPacket too short for a packet");
  packet.tsn = ReadBe(data + 20, 4);
  packet.hsn = ReadBe(data + 24, 4);
  packet.seqNumber = ReadBe(data + 28, 4);
  const uint32_t packetLength = ReadBe(data + 40, 4);
  if (packetLength < kSubPacketHeaderSize || packetLength > comPacketLength - kPacketHeaderSize) {
    return Fail("packet length does not fit its ComPacket");
  }
  packet.subPacketKind = static_cast<uint16_t>(ReadBe(data + 50, 2));
  const uint32_t subPacketLength = ReadBe(data + 52, 4);
  if (subPacketLength > packetLength - kSubPacketHeaderSize) return Fail("subpacket length does not fit its packet");
  if (subPacketLength == 0) return Fail("subpacket without payload");
  packet.payload.assign(data + kHeadersSize, data + kHeadersSize + subPacketLength);
  return packet;
}

}  // namespace opal

// ComPacket / Packet / SubPacket framing: the 56 bytes of headers in front
// of a token payload, and the padding after it. Unframing checks every
// length against the buffer it came in, so a hostile header cannot make a
// reader leave it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tokens.h"

namespace opal {

constexpr size_t kComPacketHeaderSize = 20;
constexpr size_t kPacketHeaderSize = 24;
constexpr size_t kSubPacketHeaderSize = 12;
constexpr size_t kHeadersSize = kComPacketHeaderSize + kPacketHeaderSize + kSubPacketHeaderSize;  // 56
// IF-SEND transfers are whole blocks of this size, zero-filled.
constexpr size_t kTransferBlock = 512;

struct ComPacket {
  uint16_t comId = 0;
  uint16_t comIdExtension = 0;
  uint32_t outstandingData = 0;
  uint32_t minTransfer = 0;
  uint32_t tsn = 0;
  uint32_t hsn = 0;
  uint32_t seqNumber = 0;
  uint16_t subPacketKind = 0;
  // True for a ComPacket that carries no packet (Length 0): the drive had
  // nothing to say, or wants a larger buffer (outstandingData/minTransfer).
  bool empty = false;
  Bytes payload;
};

// Headers, payload and zero padding to a multiple of 4 bytes.
Bytes Frame(const ComPacket& packet);
// A ComPacket header with Length 0: nothing pending.
Bytes FrameEmpty(uint16_t comId, uint32_t outstandingData = 0, uint32_t minTransfer = 0);
// bytes zero-filled up to a multiple of block (at least one block).
Bytes PadToBlock(Bytes bytes, size_t block = kTransferBlock);

// Reads the one packet and subpacket of a ComPacket. Every length must lie
// inside size; only SubPacket Length bytes of payload are taken.
Result<ComPacket> Unframe(const uint8_t* data, size_t size);
inline Result<ComPacket> Unframe(const Bytes& bytes) { return Unframe(bytes.data(), bytes.size()); }

// Big-endian helpers shared by the binary layouts of this library.
uint32_t ReadBe(const uint8_t* at, size_t width);
void WriteBe(uint8_t* at, uint64_t value, size_t width);

}  // namespace opal

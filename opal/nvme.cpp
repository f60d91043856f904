#include "nvme.h"

#include <cstring>

namespace opal {

namespace {

constexpr size_t kSerialAt = 4, kModelAt = 24, kFirmwareAt = 64, kOacsAt = 256;

void PutString(Bytes& data, size_t at, const std::string& text, size_t width) {
  const std::string padded = Padded(text, width);
  std::memcpy(&data[at], padded.data(), width);
}

std::string GetString(const Bytes& data, size_t at, size_t width) {
  return std::string(reinterpret_cast<const char*>(&data[at]), width);
}

}  // namespace

nvme_passthru_cmd NvmeIdentifyCommand(void* buffer, uint32_t timeoutMs) {
  nvme_passthru_cmd command{};
  command.opcode = kNvmeIdentify;
  command.addr = reinterpret_cast<uintptr_t>(buffer);
  command.data_len = kNvmeIdentifySize;
  command.cdw10 = 1;  // CNS 1: the controller
  command.timeout_ms = timeoutMs;
  return command;
}

nvme_passthru_cmd NvmeSecurityCommand(bool send, uint8_t protocol, uint16_t comId, void* buffer, uint32_t length,
                                      uint32_t timeoutMs) {
  nvme_passthru_cmd command{};
  command.opcode = send ? kNvmeSecuritySend : kNvmeSecurityReceive;
  command.addr = reinterpret_cast<uintptr_t>(buffer);
  command.data_len = length;
  command.cdw10 = uint32_t{protocol} << 24 | uint32_t{comId} << 8;
  command.cdw11 = length;
  command.timeout_ms = timeoutMs;
  return command;
}

NvmeSecurity DecodeNvmeSecurity(const nvme_passthru_cmd& command) {
  return NvmeSecurity{static_cast<uint8_t>(command.cdw10 >> 24), static_cast<uint16_t>(command.cdw10 >> 8 & 0xFFFF),
                      command.cdw11};
}

Bytes EncodeNvmeIdentify(const Identity& identity, bool security) {
  Bytes data(kNvmeIdentifySize, 0);
  PutString(data, kSerialAt, identity.serial, 20);
  PutString(data, kModelAt, identity.model, 40);
  PutString(data, kFirmwareAt, identity.firmware, 8);
  data[kOacsAt] = security ? 0x01 : 0x00;
  return data;
}

Result<Identity> DecodeNvmeIdentify(const Bytes& data) {
  if (data.size() < kNvmeIdentifySize) return Fail("Identify data too short");
  return Identity{GetString(data, kModelAt, 40), GetString(data, kSerialAt, 20), GetString(data, kFirmwareAt, 8)};
}

}  // namespace opal

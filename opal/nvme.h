// NVMe encodings, both directions: the admin passthrough commands Identify
// Controller, Security Send and Security Receive, and the strings of the
// Identify Controller data.
#pragma once

#include <linux/nvme_ioctl.h>

#include <cstdint>

#include "ata.h"

namespace opal {

constexpr uint8_t kNvmeIdentify = 0x06;
constexpr uint8_t kNvmeSecuritySend = 0x81;
constexpr uint8_t kNvmeSecurityReceive = 0x82;
constexpr size_t kNvmeIdentifySize = 4096;
// The NVMe status a controller answers for a field it does not support.
constexpr int kNvmeInvalidField = 0x0002;

nvme_passthru_cmd NvmeIdentifyCommand(void* buffer, uint32_t timeoutMs);
nvme_passthru_cmd NvmeSecurityCommand(bool send, uint8_t protocol, uint16_t comId, void* buffer, uint32_t length,
                                      uint32_t timeoutMs);

// Protocol and ComID of a Security Send or Receive (cdw10), and its length
// (cdw11).
struct NvmeSecurity {
  uint8_t protocol = 0;
  uint16_t comId = 0;
  uint32_t length = 0;
};
NvmeSecurity DecodeNvmeSecurity(const nvme_passthru_cmd& command);

// Identify Controller data (serial 4..23, model 24..63, firmware 64..71,
// OACS bit 0 when Security Send/Receive are supported).
Bytes EncodeNvmeIdentify(const Identity& identity, bool security);
Result<Identity> DecodeNvmeIdentify(const Bytes& data);

}  // namespace opal

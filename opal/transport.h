// The transport: IF-SEND and IF-RECV (and the device's identity) on a Linux
// block or NVMe device. Two implementations: NVMe through the admin
// passthrough ioctl, SATA through SG_IO with ATA PASS-THROUGH. Every transfer
// carries a time limit, so a drive that never answers cannot hang a tool.
#pragma once

#include <memory>
#include <string>

#include "ata.h"
#include "tokens.h"

namespace opal {

// Each transfer's time limit, for the kernel to enforce: a minute, since a Revert or GenKey may keep a drive busy
// for seconds, and a transfer aborted mid-erase leaves the operator not knowing what the drive did.
constexpr uint32_t kTransferTimeoutMs = 60000;

enum class DeviceKind { kNvme, kSata, kUnknown };
// /dev/nvme... is NVMe (controller or namespace node), /dev/s... SATA.
DeviceKind KindOfPath(const std::string& path);

// How the kernel's libata.allow_tpm flag reads on this host: SATA trusted
// commands pass only while it is set.
enum class AllowTpm { kSet, kNotSet, kUnreadable };

class Transport {
 public:
  virtual ~Transport() = default;
  virtual Result<Identity> Identify() = 0;
  // IF-SEND of data (a whole number of 512-byte blocks).
  virtual Status Send(uint8_t protocol, uint16_t comId, const Bytes& data) = 0;
  // IF-RECV of length bytes.
  virtual Result<Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) = 0;
  virtual DeviceKind kind() const = 0;
};

// Opens path read-write as the transport its name calls for. The error
// names the device and the reason (missing, not permitted, unknown kind).
Result<std::unique_ptr<Transport>> OpenTransport(const std::string& path);

// The libata.allow_tpm flag of this host (SATA only).
AllowTpm ReadAllowTpm();

// Implementations, for OpenTransport.
std::unique_ptr<Transport> MakeNvmeTransport(int fd);
std::unique_ptr<Transport> MakeSataTransport(int fd);

}  // namespace opal

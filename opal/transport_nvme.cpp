// NVMe: Identify, Security Send and Security Receive as admin commands
// through NVME_IOCTL_ADMIN_CMD, on the controller or a namespace node.
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "nvme.h"
#include "transport.h"

namespace opal {

namespace {

class NvmeTransport : public Transport {
 public:
  explicit NvmeTransport(int fd) : fd_(fd) {}
  ~NvmeTransport() override { close(fd_); }

  Result<Identity> Identify() override {
    Bytes data(kNvmeIdentifySize, 0);
    nvme_passthru_cmd command = NvmeIdentifyCommand(data.data(), kTransferTimeoutMs);
    Status done = Run(command, "Identify");
    if (!done) return done.error();
    return DecodeNvmeIdentify(data);
  }

  Status Send(uint8_t protocol, uint16_t comId, const Bytes& data) override {
    Bytes copy = data;  // the command wants a writable buffer
    nvme_passthru_cmd command = NvmeSecurityCommand(true, protocol, comId, copy.data(),
                                                    static_cast<uint32_t>(copy.size()), kTransferTimeoutMs);
    return Run(command, "Security Send");
  }

  Result<Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    Bytes data(length, 0);
    nvme_passthru_cmd command =
        NvmeSecurityCommand(false, protocol, comId, data.data(), static_cast<uint32_t>(length), kTransferTimeoutMs);
    Status done = Run(command, "Security Receive");
    if (!done) return done.error();
    return data;
  }

  DeviceKind kind() const override { return DeviceKind::kNvme; }

 private:
  Status Run(nvme_passthru_cmd& command, const char* what) {
    const int rc = ioctl(fd_, NVME_IOCTL_ADMIN_CMD, &command);
    if (rc < 0) return Fail(std::string(what) + " failed: " + std::strerror(errno));
    if (rc > 0) return Fail(std::string(what) + " failed: NVMe status " + std::to_string(rc));
    return Ok();
  }

  int fd_;
};

}  // namespace

std::unique_ptr<Transport> MakeNvmeTransport(int fd) { return std::make_unique<NvmeTransport>(fd); }

}  // namespace opal

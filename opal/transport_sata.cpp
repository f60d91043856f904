// SATA: IDENTIFY DEVICE, TRUSTED SEND and TRUSTED RECEIVE as ATA
// PASS-THROUGH(12) commands through SG_IO.
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "transport.h"

namespace opal {

namespace {

// The sense key of fixed (0x70/0x71) or descriptor (0x72/0x73) sense data;
// 0 when there is none.
int SenseKey(const uint8_t* sense, size_t length) {
  if (length < 3) return 0;
  const uint8_t format = sense[0] & 0x7F;
  if (format == 0x72 || format == 0x73) return sense[1] & 0x0F;
  if (format == 0x70 || format == 0x71) return sense[2] & 0x0F;
  return 0;
}

constexpr int kIllegalRequest = 0x05;

class SataTransport : public Transport {
 public:
  explicit SataTransport(int fd) : fd_(fd) {}
  ~SataTransport() override { close(fd_); }

  Result<Identity> Identify() override {
    Bytes data(kAtaIdentifySize, 0);
    Status done = Run(AtaIdentifyCdb(), data.data(), data.size(), SG_DXFER_FROM_DEV, "IDENTIFY DEVICE");
    if (!done) return done.error();
    return DecodeAtaIdentify(data);
  }

  Status Send(uint8_t protocol, uint16_t comId, const Bytes& data) override {
    Bytes copy = data;
    return Run(AtaTrustedCdb(true, protocol, comId, copy.size()), copy.data(), copy.size(), SG_DXFER_TO_DEV,
               "TRUSTED SEND");
  }

  Result<Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    Bytes data(length, 0);
    Status done =
        Run(AtaTrustedCdb(false, protocol, comId, length), data.data(), length, SG_DXFER_FROM_DEV, "TRUSTED RECEIVE");
    if (!done) return done.error();
    return data;
  }

  DeviceKind kind() const override { return DeviceKind::kSata; }

 private:
  Status Run(AtaCdb cdb, uint8_t* buffer, size_t length, int direction, const char* what) {
    uint8_t sense[32] = {};
    sg_io_hdr_t header{};
    header.interface_id = 'S';
    header.dxfer_direction = direction;
    header.cmd_len = static_cast<unsigned char>(cdb.size());
    header.mx_sb_len = sizeof sense;
    header.dxfer_len = static_cast<unsigned int>(length);
    header.dxferp = buffer;
    header.cmdp = cdb.data();
    header.sbp = sense;
    header.timeout = kTransferTimeoutMs;
    if (ioctl(fd_, SG_IO, &header) < 0) return Fail(std::string(what) + " failed: " + std::strerror(errno));
    const int key = SenseKey(sense, header.sb_len_wr);
    if (key == 0 && header.status == 0 && header.host_status == 0) return Ok();
    std::string message = std::string(what) + " failed";
    if (key == kIllegalRequest && cdb[9] != kAtaIdentifyDevice) {
      message += ": the kernel refused the trusted command";
      if (ReadAllowTpm() != AllowTpm::kSet) message += " (set the kernel parameter libata.allow_tpm=1)";
    } else if (key != 0) {
      message += ": sense key " + std::to_string(key);
    } else {
      message += ": SCSI status " + std::to_string(header.status);
    }
    return Fail(message);
  }

  int fd_;
};

}  // namespace

std::unique_ptr<Transport> MakeSataTransport(int fd) { return std::make_unique<SataTransport>(fd); }

}  // namespace opal

#include "transport.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace opal {

DeviceKind KindOfPath(const std::string& path) {
  if (path.rfind("/dev/nvme", 0) == 0) return DeviceKind::kNvme;
  if (path.rfind("/dev/s", 0) == 0) return DeviceKind::kSata;
  return DeviceKind::kUnknown;
}

Result<std::unique_ptr<Transport>> OpenTransport(const std::string& path) {
  const DeviceKind kind = KindOfPath(path);
  if (kind == DeviceKind::kUnknown) return Fail(path + ": not an NVMe (/dev/nvme...) or SATA (/dev/s...) device");
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) {
    const int error = errno;
    std::string message = path + ": cannot open: " + std::strerror(error);
    if (error == EACCES || error == EPERM) message += " (run as root)";
    return Fail(message);
  }
  return kind == DeviceKind::kNvme ? MakeNvmeTransport(fd) : MakeSataTransport(fd);
}

AllowTpm ReadAllowTpm() {
  FILE* file = std::fopen("/sys/module/libata/parameters/allow_tpm", "r");
  if (file == nullptr) return AllowTpm::kUnreadable;
  const int first = std::fgetc(file);
  std::fclose(file);
  // A file that opens but is empty is read as the flag not set, as sedutil reads it.
  return first == '1' ? AllowTpm::kSet : AllowTpm::kNotSet;
}

}  // namespace opal

// A small client of the emulated drive, built on the protocol library, that
// the system tests run under the preload library:
//   client DEVICE [setup]
// prints what fstat says the node is opened read-only, the identity, and
// Level 0's locking state; setup then takes ownership, activates, and sets up
// range 1 locked, re-keying it.
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <stdexcept>

#include "tables.h"

using namespace opal;

template <typename T>
T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}
Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

int main(int argc, char** argv) {
  struct stat st {};
  const int fd = argc > 1 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
  if (fd < 0 || fstat(fd, &st) != 0) return std::printf("open: failed\n"), 1;
  std::printf("%s\n", S_ISBLK(st.st_mode) ? "block" : S_ISCHR(st.st_mode) ? "character" : "other");
  try {
    Device device(KindOfPath(argv[1]) == DeviceKind::kNvme ? MakeNvmeTransport(fd) : MakeSataTransport(fd));
    const Identity identity = Need(device.Identify());
    std::printf("%s %s\n", Trimmed(identity.model).c_str(), Trimmed(identity.firmware).c_str());
    const LockingFeature locking = *Need(device.Discover()).locking;
    std::printf("locking enabled %d, locked %d\n", locking.enabled, locking.locked);
    if (argc > 2) {
      const Bytes msid = Need(ReadMsid(*Need(Session::Start(device, kAdminSp))));
      Need(SetPin(*Need(Session::Start(device, kAdminSp, kSid, msid)), kCpinSid, B("sid-pw")));
      Need(ActivateLockingSp(*Need(Session::Start(device, kAdminSp, kSid, B("sid-pw")))));
      auto admin = Need(Session::Start(device, kLockingSp, kAdmin1, B("sid-pw")));
      std::vector<std::pair<uint64_t, Value>> columns = {{3, Value::UInt(2048)}, {4, Value::UInt(4096)}};
      for (uint64_t column = 5; column <= 8; ++column) columns.emplace_back(column, Value::UInt(1));
      Need(admin->Set(RangeUid(1), columns));
      Need(GenKey(*admin, Need(ReadActiveKey(*admin, 1))));
    }
  } catch (const std::exception& error) {
    return std::printf("%s\n", error.what()), 1;
  }
}

// A small client of the emulated drive, built on the protocol library, that
// the system tests run under the preload library:
//   client DEVICE [setup]
// prints what fstat says the node is, opened read-only, the identity, and
// Level 0's locking state; setup then takes ownership, activates, and locks
// the global range.
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <stdexcept>

#include "tables.h"

using namespace opal;

template <typename T> T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}

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
    if (argc < 3) return 0;
    const Bytes msid = Need(ReadMsid(*Need(Session::Start(device, kAdminSp)))), pin = {'p', 'w'};
    Need(SetPin(*Need(Session::Start(device, kAdminSp, kSid, msid)), kCpinSid, pin));
    Need(ActivateLockingSp(*Need(Session::Start(device, kAdminSp, kSid, pin))));
    const Value yes = Value::UInt(1);
    auto admin = Need(Session::Start(device, kLockingSp, kAdmin1, pin));
    Need(admin->Set(kLockingGlobalRange, {{5, yes}, {6, yes}, {7, yes}, {8, yes}}));
  } catch (const std::exception& error) {
    return std::printf("%s\n", error.what()), 1;
  }
}

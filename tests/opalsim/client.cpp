// A small client of the emulated drive, built on the protocol library and run
// under the preload library by the system tests.
//   client setup DEVICE     takes ownership, activates, sets up range 1 for
//                           User1 and locks it as User1: a line per step
//   client discover DEVICE  discovery through the node opened read-only,
//                           and what fstat says the node is
#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <functional>
#include <stdexcept>

#include "tables.h"

using namespace opal;

namespace {

template <typename T>
T Need(Result<T> result) {
  if (!result) throw std::runtime_error(result.error().message);
  return std::move(*result);
}
Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

int Setup(const char* path) {
  Device device(Need(OpenTransport(path)));
  auto as = [&](Uid sp, Uid authority, const std::string& pin) {
    return Need(Session::Start(device, sp, authority, B(pin)));
  };
  const BooleanExpr user1 = {AceTerm::Authority(UserUid(1))};
  const std::pair<const char*, std::function<void()>> steps[] = {
      {"discovery", [&] { Need(device.Discover()); }},
      {"take-ownership",
       [&] {
         const Bytes msid = Need(ReadMsid(*Need(Session::Start(device, kAdminSp))));
         Need(SetPin(*Need(Session::Start(device, kAdminSp, kSid, msid)), kCpinSid, B("sid-pw")));
       }},
      {"activate", [&] { Need(ActivateLockingSp(*as(kAdminSp, kSid, "sid-pw"))); }},
      {"range",
       [&] {
         auto admin = as(kLockingSp, kAdmin1, "sid-pw");
         Need(admin->Set(RangeUid(1), {{3, Value::UInt(2048)}, {4, Value::UInt(4096)}, {5, Value::UInt(1)},
                                       {6, Value::UInt(1)}}));
         Need(GenKey(*admin, Need(ReadActiveKey(*admin, 1))));
       }},
      {"user",
       [&] {
         auto admin = as(kLockingSp, kAdmin1, "sid-pw");
         Need(SetPin(*admin, CpinUserUid(1), B("user1-pw")));
         Need(SetEnabled(*admin, UserUid(1), true));
       }},
      {"grant",
       [&] {
         auto admin = as(kLockingSp, kAdmin1, "sid-pw");
         for (Uid ace : {AceSetRdLockedUid(1), AceSetWrLockedUid(1)}) Need(WriteAce(*admin, ace, user1));
       }},
      {"lock",
       [&] {
         Need(as(kLockingSp, UserUid(1), "user1-pw")->Set(RangeUid(1), {{7, Value::UInt(1)}, {8, Value::UInt(1)}}));
       }},
  };
  int failed = 0;
  for (const auto& [name, run] : steps) {
    try {
      run();
      std::printf("%s: ok\n", name);
    } catch (const std::exception& error) {
      std::printf("%s: %s\n", name, error.what());
      ++failed;
    }
  }
  return failed == 0 ? 0 : 1;
}

int Discover(const char* path) {
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  struct stat st {};
  if (fd < 0 || fstat(fd, &st) != 0) return std::printf("open: failed\n"), 1;
  std::printf("node: %s\n", S_ISBLK(st.st_mode) ? "block" : S_ISCHR(st.st_mode) ? "character" : "other");
  Device device(KindOfPath(path) == DeviceKind::kNvme ? MakeNvmeTransport(fd) : MakeSataTransport(fd));
  Result<Identity> identity = device.Identify();
  if (identity) {
    std::printf("model: %s, firmware: %s\n", Trimmed(identity->model).c_str(), Trimmed(identity->firmware).c_str());
  }
  Result<Discovery> found = device.Discover();
  if (!found) return std::printf("discovery: %s\n", found.error().message.c_str()), 1;
  return std::printf("locking enabled: %d, locked: %d\n", found->locking->enabled, found->locking->locked), 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string verb = argc == 3 ? argv[1] : "";
  if (verb == "setup") return Setup(argv[2]);
  if (verb == "discover") return Discover(argv[2]);
  std::fprintf(stderr, "usage: client setup|discover DEVICE\n");
  return 2;
}

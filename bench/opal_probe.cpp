// opal_probe DEVICE PASSWORD [take]: the least a client does with a drive:
// discovery, Properties, an Admin1 session with one Get (MaxRanges), end of
// session. With "take" it first takes ownership of a factory-new drive
// (SID and Admin1 get PASSWORD). Prints the round trips it made.
#include <cstdio>
#include <string>

#include "tables.h"

namespace {

int Failed(const char* step, const opal::Error& error) {
  std::fprintf(stderr, "opal_probe: %s: %s\n", step, error.message.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: opal_probe DEVICE PASSWORD [take]\n");
    return 2;
  }
  const opal::Bytes password(argv[2], argv[2] + std::string(argv[2]).size());
  auto transport = opal::OpenTransport(argv[1]);
  if (!transport) return Failed("open", transport.error());
  opal::Device device(std::move(*transport));
  if (argc > 3 && std::string(argv[3]) == "take") {
    auto anonymous = opal::Session::Start(device, opal::kAdminSp);
    if (!anonymous) return Failed("anonymous session", anonymous.error());
    auto msid = opal::ReadMsid(**anonymous);
    if (!msid) return Failed("MSID", msid.error());
    (*anonymous)->End();
    auto sid = opal::Session::Start(device, opal::kAdminSp, opal::kSid, *msid);
    if (!sid) return Failed("SID session", sid.error());
    if (auto set = opal::SetPin(**sid, opal::kCpinSid, password); !set) return Failed("SID PIN", set.error());
    if (auto on = opal::ActivateLockingSp(**sid); !on) return Failed("activate", on.error());
  }
  auto admin = opal::Session::Start(device, opal::kLockingSp, opal::kAdmin1, password);
  if (!admin) return Failed("Admin1 session", admin.error());
  auto ranges = opal::ReadMaxRanges(**admin);
  if (!ranges) return Failed("MaxRanges", ranges.error());
  if (auto end = (*admin)->End(); !end) return Failed("end of session", end.error());
  std::printf("%llu ranges, %d round trips\n", static_cast<unsigned long long>(*ranges), device.roundTrips());
  return 0;
}

// The locking-range refresh on arbitrary sedutil --listLockingRanges output,
// in range mode and in partition mode. The first byte chooses the mode.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QuietTerminal();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const unsigned partitions = data[0] % 4;
  const std::string prefix = (data[0] & 0x10) ? "/dev/nvme0n1" : "/dev/sdb";
  DiskInfo disk = EnabledDrive(0, partitions, prefix);
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  RecordingRunner runner({text}, true);
  AllowDesignedEnds([&] {
    disk.UpdateLockingRangesStatus();
    size_t headers = 0;
    for (size_t at = text.find("Begin"); at != std::string::npos; at = text.find("Begin", at + 1)) ++headers;
    unsigned named = 0;
    for (const LockingRangeInfo& range : disk.GetLRInfo()) {
      if (!range.GetAlias().empty()) {
        if (range.GetIndex() == 0) std::abort();
        ++named;
      }
    }
    if (disk.GetLRInfo().size() > headers || named > partitions) std::abort();
  });
  return 0;
}

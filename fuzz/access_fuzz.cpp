// The access-right listing on arbitrary Lantivo --list_User_ACE_Locking_range
// output. The first byte chooses the number of ranges and partitions; the
// rest, cut at 0x1e bytes, is the output of one list command after another.
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
  const unsigned ranges = 1 + data[0] % 12;
  const unsigned partitions = (data[0] >> 4) % 4;
  const std::string prefix = (data[0] & 0x80) ? "/dev/nvme0n1" : "/dev/sdb";
  const DiskInfo disk = EnabledDrive(ranges, partitions, prefix);
  RecordingRunner runner(Records(data + 1, size - 1), true);
  AllowDesignedEnds([&] { disk.ListAccessRight(); });
  if (runner.commands.size() > ranges) std::abort();
  return 0;
}

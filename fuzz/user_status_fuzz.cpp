// The user status listing on arbitrary Lantivo output: the access lists of
// every range, then --ListUserStatus. The first byte chooses the number of
// ranges (beyond the nine columns of the access matrix too); the rest, cut
// at 0x1e bytes, is the output of one command after another.
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
  const unsigned ranges = data[0] % 13;
  const DiskInfo disk = EnabledDrive(ranges, 0, "");
  RecordingRunner runner(Records(data + 1, size - 1), true);
  if (!disk.ListUserStatus() || runner.commands.size() != ranges + 1u) std::abort();
  for (const auto& row : apply_table) {
    for (int mark : row) {
      if (mark != 0 && mark != 1) std::abort();
    }
  }
  return 0;
}

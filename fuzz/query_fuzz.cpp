// The Opal flags refresh on arbitrary sedutil --query output.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QuietTerminal();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  RecordingRunner runner({text}, true);
  DiskInfo disk("/dev/sda", "KVX 480GB", "SBFK71F3", "2");
  AllowDesignedEnds([&] {
    const bool found = disk.UpdateOPALStatus();
    // Without the header line nothing may change.
    if (found != (text.find("Locking function") != std::string::npos)) std::abort();
    if (!found && (disk.GetOPALSupport() || disk.GetOPALEnable() || disk.GetOPALLocked())) std::abort();
  });
  return 0;
}

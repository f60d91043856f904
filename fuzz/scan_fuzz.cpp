// The start-up scan on arbitrary sedutil --scan output.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "fuzz_support.h"
#include "main.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  QuietTerminal();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  RecordingRunner runner({text}, true);
  // A "/dev/nvme" path without a digit after it ends the scan by design.
  bool ended = true;
  AllowDesignedEnds([&] {
    ScanDisks();
    ended = false;
  });
  if (ended) return 0;
  if (runner.commands.size() != 1 || DiskCount != static_cast<int>(DiskList.size()) ||
      SelectedDisk != DiskList.data()) {
    std::abort();
  }
  // Only lines naming "/dev" somewhere can hold a drive, one each at most.
  size_t device_lines = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) device_lines += line.find("/dev") != std::string::npos;
  if (DiskList.size() > device_lines) std::abort();
  for (const DiskInfo& disk : DiskList) {
    const std::string model = disk.GetDeviceName();
    if (model.rfind("KVX", 0) != 0 && model.rfind("ZEP", 0) != 0) std::abort();
  }
  return 0;
}

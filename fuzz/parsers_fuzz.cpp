// One libFuzzer target per parser of tool output, chosen at build time
// (FUZZ_<target>): the tests' recording runner answers Veltrak's command
// lines with the fuzz data, so each parser runs in-process as in the
// program. The conversion errors with which Veltrak ends by design on
// numbers it reads without a guard are accepted as outcomes; anything else
// that goes wrong, or a failed check, aborts.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "main.h"
#include "recording_runner.h"

namespace {

// Fails the run unless ok.
void Check(bool ok) {
  if (!ok) std::abort();
}

// The fuzz data cut at every record separator byte (0x1e): one tool output
// per record, for operations that run several commands.
[[maybe_unused]] std::vector<std::string> Records(const std::string& data) {
  std::vector<std::string> records;
  std::istringstream in(data);
  for (std::string record; std::getline(in, record, '\x1e');) records.push_back(record);
  return records;
}

// An Opal-enabled drive with its admin password held and ranges locking
// ranges, the first partitions of them named after partitions of prefix.
[[maybe_unused]] DiskInfo EnabledDrive(unsigned ranges, unsigned partitions, const std::string& prefix) {
  DiskInfo disk = OwnedDrive();
  disk.Set2Parted(partitions != 0);
  disk.SetPrefixName(prefix);
  disk.SetBlockNum(partitions);
  std::vector<RangeEntry> listing;
  for (unsigned i = 0; i < ranges; ++i) listing.push_back({i, 2048LL * i, 2048, true, false, true, false});
  RecordingRunner runner({RangesText(listing)});
  Check(disk.UpdateLockingRangesStatus() && disk.GetLRInfo().size() == ranges);
  return disk;
}

#if defined(FUZZ_parse_items)
// Appends one delim, cuts at each leftmost whole occurrence of it, scanning
// on after it, and keeps the non-empty pieces that a delim ended.
std::vector<std::string> Reference(const std::string& source, const std::string& delim) {
  std::vector<std::string> items;
  std::string text = source.empty() ? "" : source + delim, piece;
  for (size_t p = 0; p < text.size(); ++p) {
    if (text.compare(p, delim.size(), delim) != 0) {
      piece += text[p];
      continue;
    }
    if (!piece.empty()) items.push_back(piece);
    piece.clear();
    p += delim.size() - 1;
  }
  return items;
}
#endif

// The parser under test on the fuzz data; where the parser depends on the
// drive, the first byte, first, chooses it.
void Parse(const std::string& data, [[maybe_unused]] unsigned first) {
#if defined(FUZZ_parse_items)
  // Every delimiter the program splits at, against a plain reading of the rule.
  for (const std::string delim : {" ", "  ", ",", "can access Locking Range"}) Check(ParseItems(data, delim) == Reference(data, delim));
#elif defined(FUZZ_scan)
  RecordingRunner runner({data});
  ScanDisks();
  Check(runner.commands.size() == 1 && DiskCount == static_cast<int>(DiskList.size()) && SelectedDisk == DiskList.data());
  for (const DiskInfo& disk : DiskList) Check(disk.GetDeviceName().rfind("KVX", 0) == 0 || disk.GetDeviceName().rfind("ZEP", 0) == 0);
#elif defined(FUZZ_query)
  RecordingRunner runner({data});
  DiskInfo disk("/dev/sda", "KVX 480GB", "SBFK71F3", "2");
  const bool found = disk.UpdateOPALStatus();
  // Without the header line nothing may change.
  Check(found == (data.find("Locking function") != std::string::npos));
  Check(found || !(disk.GetOPALSupport() || disk.GetOPALEnable() || disk.GetOPALLocked()));
#elif defined(FUZZ_ranges)
  if (data.empty()) return;
  DiskInfo disk = EnabledDrive(0, first % 4, (first & 0x10) ? "/dev/nvme0n1" : "/dev/sdb");
  RecordingRunner runner({data.substr(1)});
  disk.UpdateLockingRangesStatus();
  size_t headers = 0;
  for (size_t at = data.find("Begin"); at != std::string::npos; at = data.find("Begin", at + 1)) ++headers;
  Check(disk.GetLRInfo().size() <= headers);
  for (const LockingRangeInfo& range : disk.GetLRInfo()) Check(range.GetAlias().empty() || range.GetIndex() != 0);
#elif defined(FUZZ_access)
  // The rest, cut at 0x1e bytes, answers one list command after another.
  if (data.empty()) return;
  const unsigned ranges = 1 + first % 12;
  const DiskInfo disk = EnabledDrive(ranges, (first >> 4) % 4, (first & 0x80) ? "/dev/nvme0n1" : "/dev/sdb");
  RecordingRunner runner(Records(data.substr(1)));
  disk.ListAccessRight();
  Check(runner.commands.size() <= ranges);
#elif defined(FUZZ_user_status)
  // The access lists of up to 12 ranges (beyond the nine columns of the
  // matrix too), then the status list, cut the same way.
  if (data.empty()) return;
  const unsigned ranges = first % 13;
  const DiskInfo disk = EnabledDrive(ranges, 0, "");
  RecordingRunner runner(Records(data.substr(1)));
  Check(disk.ListUserStatus() && runner.commands.size() == ranges + 1u);
#endif
}

}  // namespace

// The parsers print their findings and some pause for a key: standard output
// goes to /dev/null and every pause gets its keys (NUL bytes) from /dev/zero,
// since the end of input would end the program.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Check(std::freopen("/dev/null", "w", stdout) != nullptr && std::freopen("/dev/zero", "r", stdin) != nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    Parse(std::string(reinterpret_cast<const char*>(data), size), size == 0 ? 0 : data[0]);
  } catch (const std::out_of_range&) {
  } catch (const std::invalid_argument&) {
  }
  return 0;
}

// What every fuzz target shares: the tests' recording runner answers with the
// fuzz data instead of the shell; a quiet terminal; and a drive brought into
// the state in which the parser under test runs.
#pragma once

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "recording_runner.h"

// The parsers print their findings and some pause for a key: send standard
// output to /dev/null and give every pause its keys (NUL bytes), since the
// end of input would end the program.
inline void QuietTerminal() {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  if (std::freopen("/dev/zero", "r", stdin) == nullptr) std::abort();
}

// The fuzz data cut at every record separator byte (0x1e): one tool output
// per record, for operations that run several commands.
inline std::vector<std::string> Records(const uint8_t* data, size_t size) {
  std::vector<std::string> records(1);
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == 0x1e) {
      records.emplace_back();
    } else {
      records.back().push_back(static_cast<char>(data[i]));
    }
  }
  return records;
}

// Runs step, accepting as an outcome only the two conversion errors with
// which the program ends by design on numbers it reads without a guard.
template <typename Step>
void AllowDesignedEnds(Step step) {
  try {
    step();
  } catch (const std::out_of_range&) {
  } catch (const std::invalid_argument&) {
  }
}

// An Opal-enabled drive with its admin password held and `ranges` locking
// ranges (0 to ranges - 1), the first `partitions` of them named after
// partitions of prefix: the state in which the access listings run.
inline DiskInfo EnabledDrive(unsigned ranges, unsigned partitions, const std::string& prefix) {
  DiskInfo disk = OwnedDrive();
  if (partitions != 0) {
    disk.Set2Parted(true);
    disk.SetPrefixName(prefix);
    disk.SetBlockNum(partitions);
  }
  std::vector<RangeEntry> listing;
  for (unsigned i = 0; i < ranges; ++i) listing.push_back({i, 2048LL * i, 2048, true, false, true, false});
  RecordingRunner runner({RangesText("/dev/sda", listing)});
  if (!disk.GetOPALEnable() || !disk.UpdateLockingRangesStatus() || disk.GetLRInfo().size() != ranges) {
    std::abort();  // the fixture itself is wrong
  }
  return disk;
}

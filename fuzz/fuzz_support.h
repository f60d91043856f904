// What every fuzz target shares: a command runner that answers with the fuzz
// data instead of the shell, a quiet terminal, and a drive brought into the
// state in which the parser under test runs.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "utils.h"

// Answers every tool command line with the next queued output; once the
// queue holds a single output, that one repeats.
class ScriptedRunner : public CommandRunner {
 public:
  explicit ScriptedRunner(std::deque<std::string> outputs) : outputs_(std::move(outputs)) {
    previous_ = SetCommandRunner(this);
  }
  ~ScriptedRunner() override { SetCommandRunner(previous_); }
  ScriptedRunner(const ScriptedRunner&) = delete;
  ScriptedRunner& operator=(const ScriptedRunner&) = delete;

  std::string Run(const std::string&) override {
    ++calls;
    if (outputs_.empty()) return "";
    std::string output = outputs_.front();
    if (outputs_.size() > 1) outputs_.pop_front();
    return output;
  }

  size_t calls = 0;

 private:
  std::deque<std::string> outputs_;
  CommandRunner* previous_ = nullptr;
};

// The parsers print their findings and some pause for a key: send standard
// output to /dev/null and let every read of standard input meet its end.
inline void QuietTerminal() {
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  if (std::freopen("/dev/null", "r", stdin) == nullptr) std::abort();
}

// The fuzz data cut at every record separator byte (0x1e): one tool output
// per record, for operations that run several commands.
inline std::deque<std::string> Records(const uint8_t* data, size_t size) {
  std::deque<std::string> records(1);
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
  DiskInfo disk("/dev/sda", "KVX 480GB", "SBFK71F3", "2");
  disk.SetAdmin1Pwd("pw");
  if (partitions != 0) {
    disk.Set2Parted(true);
    disk.SetPrefixName(prefix);
    disk.SetBlockNum(partitions);
  }
  std::string listing = "Locking Range Configuration for /dev/sda\n";
  for (unsigned i = 0; i < ranges; ++i) {
    listing += "LR" + std::to_string(i) + " Begin " + std::to_string(2048 * i) + " for 2048\n" +
               "            RLKEna = Y  WLKEna = N  RLocked = Y  WLocked = N \n";
  }
  ScriptedRunner runner({
      "Locking function (0x0002)\n"
      "    Locked = N, LockingEnabled = Y, LockingSupported = Y, MBRDone = Y\n",
      listing,
  });
  if (!disk.UpdateOPALStatus() || !disk.GetOPALEnable() || !disk.UpdateLockingRangesStatus() ||
      disk.GetLRInfo().size() != ranges) {
    std::abort();  // the fixture itself is wrong
  }
  return disk;
}

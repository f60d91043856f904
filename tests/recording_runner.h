// A stand-in for the shell: records every child process the program asks
// for (tool command lines, shell commands, "clear") and answers the first two
// with scripted output, in call order; tool output in the tools' shapes; and
// a drive whose Opal state was read through the runner.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "utils.h"

class RecordingRunner : public CommandRunner {
 public:
  // replies: what the first commands print, in order; later ones print nothing.
  explicit RecordingRunner(std::vector<std::string> replies = {})
      : previous_(SetCommandRunner(this)), replies_(replies.begin(), replies.end()) {}
  ~RecordingRunner() override { SetCommandRunner(previous_); }

  std::string Run(const std::string& queryCmd) override { return Next(queryCmd); }
  bool RunShell(const std::string& cmd, std::string& result) override {
    result = Next(cmd);
    return true;
  }
  bool Clear() override {
    commands.push_back("clear");
    return clears;
  }

  std::vector<std::string> commands;
  bool clears = true;  // whether "clear" could be started

 private:
  std::string Next(const std::string& command) {
    commands.push_back(command);
    if (replies_.empty()) return "";
    const std::string reply = replies_.front();
    replies_.pop_front();
    return reply;
  }

  CommandRunner* previous_;
  std::deque<std::string> replies_;
};

inline const char* YN(bool flag) { return flag ? "Y" : "N"; }

// sedutil's "--query": the Locking function block between its neighbours.
inline std::string QueryText(bool locked, bool enabled, bool supported = true) {
  return std::string("TPer function (0x0001)\n    ACKNAK = N, ASYNC = N. Streaming = Y, SYNC = Y\n") +
         "Locking function (0x0002)\n    Locked = " + YN(locked) + ", LockingEnabled = " + YN(enabled) +
         ", LockingSupported = " + YN(supported) + ", MBRDone = N, MBREnabled = N, MediaEncrypt = Y\n" +
         "Geometry function (0x0003)\n    Align = Y, Alignment Granularity = 8 (4096), Logical Block size = 512\n";
}

struct RangeEntry {
  unsigned index;
  long long start, length;
  bool rlkena = false, wlkena = false, rlocked = false, wlocked = false;
};

// sedutil's "--listLockingRanges": a header, then a header and a flags line per range.
inline std::string RangesText(const std::vector<RangeEntry>& ranges) {
  std::string text = "Locking Range Configuration for /dev/sda\n";
  for (const RangeEntry& r : ranges) {
    text += "LR" + std::to_string(r.index) + " Begin " + std::to_string(r.start) + " for " +
            std::to_string(r.length) + "\n            RLKEna = " + YN(r.rlkena) + "  WLKEna = " + YN(r.wlkena) +
            "  RLocked = " + YN(r.rlocked) + "  WLocked = " + YN(r.wlocked) + " \n";
  }
  return text;
}

// The drive at device as a query left it: Opal version from version ("No":
// none), enabled unless enabled is false, locked if locked; with password as
// the admin password.
inline DiskInfo OwnedDrive(const std::string& device = "/dev/sda", const std::string& password = "pw",
                           const std::string& version = "2", bool enabled = true, bool locked = false) {
  RecordingRunner query({QueryText(locked, enabled)});
  DiskInfo disk(device, "KVX 480GB", "F1", version);
  disk.UpdateOPALStatus();
  disk.SetAdmin1Pwd(password);
  return disk;
}

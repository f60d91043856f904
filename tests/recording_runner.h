// A stand-in for the shell: records every child process the program asks
// for (tool command lines, shell commands, "clear") and answers the first two
// with scripted output, in call order; and a drive whose Opal state was read
// through it.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "DiskInfo.h"
#include "tool_text.h"
#include "utils.h"

class RecordingRunner : public CommandRunner {
 public:
  // replies: the texts the first commands print, in order. With repeatLast
  // the last of them answers every later command too; else those print nothing.
  explicit RecordingRunner(std::vector<std::string> replies = {}, bool repeatLast = false)
      : previous_(SetCommandRunner(this)), replies_(replies.begin(), replies.end()), repeatLast_(repeatLast) {}
  ~RecordingRunner() override { SetCommandRunner(previous_); }
  RecordingRunner(const RecordingRunner&) = delete;
  RecordingRunner& operator=(const RecordingRunner&) = delete;

  // Queues the text the next unanswered command prints; commands beyond the
  // queue print nothing.
  RecordingRunner& Reply(std::string output) {
    replies_.push_back(std::move(output));
    return *this;
  }

  std::string Run(const std::string& queryCmd) override {
    commands.push_back(queryCmd);
    return NextReply();
  }
  bool RunShell(const std::string& cmd, std::string& result) override {
    commands.push_back(cmd);
    result = NextReply();
    return true;
  }
  bool Clear() override {
    commands.push_back("clear");
    return clears;
  }

  std::vector<std::string> commands;
  bool clears = true;  // whether "clear" could be started

 private:
  std::string NextReply() {
    if (replies_.empty()) return "";
    if (repeatLast_ && replies_.size() == 1) return replies_.front();
    std::string output = std::move(replies_.front());
    replies_.pop_front();
    return output;
  }

  CommandRunner* previous_;
  std::deque<std::string> replies_;
  bool repeatLast_;
};

// The drive at device as a query left it: Opal version from version ("No":
// none), enabled unless enabled is false, locked if locked; with password as
// the admin password and "sid" as the SID password.
inline DiskInfo OwnedDrive(const std::string& device = "/dev/sda", const std::string& password = "pw",
                           const std::string& version = "2", bool enabled = true, bool locked = false) {
  RecordingRunner query({QueryText(device, locked, enabled)});
  DiskInfo disk(device, "KVX 480GB", "F1", version);
  disk.UpdateOPALStatus();
  disk.SetAdmin1Pwd(password);
  disk.SetSIDPwd("sid");
  return disk;
}

// A stand-in for the shell: records every tool command line handed to
// GetCmdResponse and answers with scripted output, in call order.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "utils.h"

class RecordingRunner : public CommandRunner {
 public:
  RecordingRunner() : previous_(SetCommandRunner(this)) {}
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
    if (replies_.empty()) return "";
    std::string output = std::move(replies_.front());
    replies_.pop_front();
    return output;
  }

  std::vector<std::string> commands;

 private:
  CommandRunner* previous_;
  std::deque<std::string> replies_;
};

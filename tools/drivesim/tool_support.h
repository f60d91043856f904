// What the two tool interfaces share: running a call against the saved
// state, finding a command in a table, the injected failure, the scan lines.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "drive.h"

// Exit status when the state file is missing, damaged or cannot be written.
constexpr int kStateUnusable = 2;

// Loads the state, lets act answer the call and writes the state back only
// when act changed it. Problems with the file go to standard error.
int WithState(const std::function<int(SimState&)>& act);

bool EqualsIgnoringCase(const std::string& a, const std::string& b);

// text followed by blanks up to width characters; longer text stays whole.
std::string Padded(const std::string& text, std::size_t width);

// One entry of a tool's command table; Call is the tool's view of a call.
template <typename Call>
struct Command {
  const char* name;  // as typed after "--", in any case
  std::size_t operands;
  int (*run)(Call&);
  bool moreAllowed = false;  // operands is then the least number

  bool Takes(std::size_t count) const { return count == operands || (moreAllowed && count > operands); }
};

template <typename Call, std::size_t N>
const Command<Call>* FindCommand(const Command<Call> (&table)[N], const std::string& typed) {
  for (const Command<Call>& command : table) {
    if (EqualsIgnoringCase(typed, std::string("--") + command.name)) return &command;
  }
  return nullptr;
}

// True, once, when `drivesim fail-next` asked for this command (or any) to
// fail: the caller then refuses the session as if the password were wrong.
bool TakeInjectedFailure(SimState& state, const std::string& command);

// The scan's device lines: path in 10 columns, the Opal version flags, the
// model in 40 columns and the firmware in 8, in device order.
std::vector<std::string> ScanLines(const SimState& state);

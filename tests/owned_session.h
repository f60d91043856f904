// Sessions on one owned drive, /dev/sda, whose admin password "pw" is
// entered first (action 11), so that every action of the full menu is
// offered to the keystrokes that follow kLogin.
#pragma once

#include <string>
#include <vector>

#include "session_harness.h"
#include "tool_text.h"

const ScanEntry kOwnedDrive{"/dev/sda", "2", "KVX 480GB", "SBFK71F3"};

// Action 11 with the password "pw", confirmed, and the key for its pause.
const std::string kLogin = "11\npw\ny\n\n";

// Scripts the scan, an enabled drive and its range listing under "pw".
inline Session& OwnedDrive(Session& s, const std::vector<RangeEntry>& ranges) {
  s.On("sedutil-cli", "-n --scan", ScanText({kOwnedDrive}))
      .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, true))
      .On("sedutil-cli", "-n --listLockingRanges pw /dev/sda", RangesText("/dev/sda", ranges));
  return s;
}

// LR0 (global), LR1 at 2048 for 4096 and LR2 at 8192 for 8192.
inline std::vector<RangeEntry> ThreeRanges() {
  return {{0, 0, 0}, {1, 2048, 4096, true, true, true, true}, {2, 8192, 8192, false, true, false, true}};
}

// The tool calls made after the password check, leaving out the scan and
// the query of every menu.
inline std::vector<std::string> CallsAfterLogin(const Session& s) {
  std::vector<std::string> calls;
  for (const std::string& call : s.Calls()) {
    if (call == "sedutil-cli -n --scan" || call.rfind("sedutil-cli -n --query ", 0) == 0) continue;
    calls.push_back(call);
  }
  if (!calls.empty()) calls.erase(calls.begin());  // the password check
  return calls;
}

// What the action chosen at the menu-th menu printed (menu 1 is the first).
inline std::string ActionOutput(const Session& s, size_t menu) {
  const std::vector<std::string> screens = ScreensOf(s.screen);
  if (menu >= screens.size()) return "<no menu " + std::to_string(menu) + ">";
  const std::string prompt = "Enter action number: ";
  const size_t at = screens[menu].find(prompt);
  return at == std::string::npos ? "<no prompt>" : screens[menu].substr(at + prompt.size());
}

const std::string kPause = "\nEnter any key to continue...";

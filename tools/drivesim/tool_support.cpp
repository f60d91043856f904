#include "tool_support.h"

#include <algorithm>
#include <cctype>
#include <iostream>

#include "state_file.h"

int WithState(const std::function<int(SimState&)>& act) {
  SimState state;
  std::string error;
  if (!LoadState(state, error)) {
    std::cerr << "drivesim: " << error << "\n";
    return kStateUnusable;
  }
  const std::string before = StateText(state);
  const int status = act(state);
  if (StateText(state) != before && !SaveState(state, error)) {
    std::cerr << "drivesim: " << error << "\n";
    return kStateUnusable;
  }
  return status;
}

bool EqualsIgnoringCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

bool TakeInjectedFailure(SimState& state, const std::string& command) {
  if (state.failNext != "*" && !EqualsIgnoringCase(state.failNext, command)) return false;
  state.failNext.clear();
  return true;
}

namespace {

// Blank, "1", "2", "E" columns framed by blanks, as the version column reads.
std::string VersionColumn(const Drive& drive) {
  if (!SupportsOpal(drive)) return " No  ";
  const bool one = drive.opal.find('1') != std::string::npos;
  const bool two = drive.opal.find('2') != std::string::npos;
  return std::string(" ") + (one ? '1' : ' ') + (two ? '2' : ' ') + "  ";
}

}  // namespace

std::vector<std::string> ScanLines(const SimState& state) {
  std::vector<const Drive*> drives;
  for (const Drive& drive : state.drives) drives.push_back(&drive);
  std::sort(drives.begin(), drives.end(), [](const Drive* a, const Drive* b) { return a->device < b->device; });
  std::vector<std::string> lines;
  for (const Drive* drive : drives) {
    lines.push_back(Padded(drive->device, 10) + VersionColumn(*drive) + Padded(drive->model, 40) + " " +
                    Padded(drive->firmware, 8));
  }
  return lines;
}

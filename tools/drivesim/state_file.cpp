#include "state_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

const char* const kStateFileName = "drivesim.state";

namespace {

const char* const kHeader =
    "# drivesim state: the simulated drives, one [device] section each.\n"
    "# Written by drivesim after every change; `drivesim show` prints it readably.\n";

std::string RangeText(const LockingRange& range) {
  std::ostringstream text;
  text << "start " << range.start << " length " << range.length << " RLKEna " << YesNo(range.readLockEnabled)
       << " WLKEna " << YesNo(range.writeLockEnabled) << " RLocked " << YesNo(range.readLocked) << " WLocked "
       << YesNo(range.writeLocked) << " key " << range.dataKey << " ace";
  for (int user : range.ace) text << " User" << user;
  return text.str();
}

void WriteDrive(std::ostream& out, const Drive& drive) {
  out << "\n[" << drive.device << "]\n"
      << "opal = " << drive.opal << "\n"
      << "model = " << drive.model << "\n"
      << "firmware = " << drive.firmware << "\n"
      << "serial = " << drive.serial << "\n"
      << "blocks = " << drive.blocks << "\n"
      << "psid = " << drive.psid << "\n"
      << "msid = " << drive.msid << "\n"
      << "sid_password = " << drive.sidPassword << "\n"
      << "locking_sp = " << (drive.lockingActive ? "active" : "inactive") << "\n"
      << "admin1_password = " << drive.admin1Password << "\n"
      << "mbr_enable = " << YesNo(drive.mbrEnable) << "\n"
      << "mbr_done = " << YesNo(drive.mbrDone) << "\n"
      << "pba_image = " << drive.pbaImage << "\n"
      << "pba_size = " << drive.pbaSize << "\n";
  for (int r = 0; r < kRangeCount; ++r) out << "lr" << r << " = " << RangeText(drive.ranges[r]) << "\n";
  for (int u = 0; u < kUserCount; ++u) {
    const User& user = drive.users[u];
    out << "user" << u + 1 << " = " << (user.enabled ? "enabled" : "disabled") << "\n"
        << "user" << u + 1 << "_password = " << user.password << "\n";
  }
}

// Reading: a damaged file stops the parse at its first fault.
struct StateFault {
  std::string message;
};

[[noreturn]] void Fault(int line, const std::string& message) {
  throw StateFault{"line " + std::to_string(line) + ": " + message};
}

struct Entry {
  std::string value;
  int line;
};

// The "key = value" lines of one section; decoding takes keys out, so what
// is left at the end is unknown.
class Section {
 public:
  explicit Section(int line) : line_(line) {}

  void Add(const std::string& key, const std::string& value, int line) {
    if (!entries_.emplace(key, Entry{value, line}).second) Fault(line, "'" + key + "' given twice");
  }

  Entry Take(const std::string& key) {
    auto found = entries_.find(key);
    if (found == entries_.end()) Fault(line_, "this section lacks '" + key + "'");
    Entry entry = found->second;
    entries_.erase(found);
    return entry;
  }

  int line() const { return line_; }

  void ExpectEmpty() const {
    if (!entries_.empty()) Fault(entries_.begin()->second.line, "unknown key '" + entries_.begin()->first + "'");
  }

 private:
  int line_;
  std::map<std::string, Entry> entries_;
};

uint64_t NumberOf(const std::string& text, int line) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
    Fault(line, "'" + text + "' is not a number");
  }
  errno = 0;
  const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
  if (errno == ERANGE) Fault(line, "'" + text + "' is too large");
  return value;
}

bool ChoiceOf(const std::string& text, const char* yes, const char* no, int line) {
  if (text == yes) return true;
  if (text != no) Fault(line, std::string("expected ") + yes + " or " + no + ", found '" + text + "'");
  return false;
}

bool FlagOf(const Entry& entry) { return ChoiceOf(entry.value, "Y", "N", entry.line); }

int UserNumberOf(const std::string& name, int line) {
  const int user = UserNumber(name);
  if (user == 0) Fault(line, "'" + name + "' is not a user from User1 to User9");
  return user;
}

// "start S length L RLKEna F WLKEna F RLocked F WLocked F key K ace [UserN...]"
LockingRange RangeOf(const Entry& entry) {
  std::istringstream words(entry.value);
  auto expect = [&](const char* label) {
    std::string word, value;
    if (!(words >> word >> value) || word != label) {
      Fault(entry.line, std::string("expected '") + label + "' and its value");
    }
    return value;
  };
  LockingRange range;
  range.start = NumberOf(expect("start"), entry.line);
  range.length = NumberOf(expect("length"), entry.line);
  range.readLockEnabled = ChoiceOf(expect("RLKEna"), "Y", "N", entry.line);
  range.writeLockEnabled = ChoiceOf(expect("WLKEna"), "Y", "N", entry.line);
  range.readLocked = ChoiceOf(expect("RLocked"), "Y", "N", entry.line);
  range.writeLocked = ChoiceOf(expect("WLocked"), "Y", "N", entry.line);
  range.dataKey = static_cast<unsigned>(NumberOf(expect("key"), entry.line));
  std::string word;
  if (!(words >> word) || word != "ace") Fault(entry.line, "expected 'ace' and the users that may lock the range");
  while (words >> word) range.ace.insert(UserNumberOf(word, entry.line));
  return range;
}

Drive DriveOf(const std::string& device, Section& section) {
  Drive drive;
  drive.device = device;
  const Entry opal = section.Take("opal");
  if (opal.value != "1" && opal.value != "2" && opal.value != "12" && opal.value != "No") {
    Fault(opal.line, "opal must be 1, 2, 12 or No");
  }
  drive.opal = opal.value;
  drive.model = section.Take("model").value;
  drive.firmware = section.Take("firmware").value;
  drive.serial = section.Take("serial").value;
  const Entry blocks = section.Take("blocks");
  drive.blocks = NumberOf(blocks.value, blocks.line);
  drive.psid = section.Take("psid").value;
  drive.msid = section.Take("msid").value;
  drive.sidPassword = section.Take("sid_password").value;
  const Entry locking = section.Take("locking_sp");
  drive.lockingActive = ChoiceOf(locking.value, "active", "inactive", locking.line);
  drive.admin1Password = section.Take("admin1_password").value;
  drive.mbrEnable = FlagOf(section.Take("mbr_enable"));
  drive.mbrDone = FlagOf(section.Take("mbr_done"));
  drive.pbaImage = section.Take("pba_image").value;
  const Entry pbaSize = section.Take("pba_size");
  drive.pbaSize = NumberOf(pbaSize.value, pbaSize.line);
  for (int r = 0; r < kRangeCount; ++r) drive.ranges[r] = RangeOf(section.Take("lr" + std::to_string(r)));
  for (int u = 0; u < kUserCount; ++u) {
    const std::string name = "user" + std::to_string(u + 1);
    const Entry enabled = section.Take(name);
    drive.users[u].enabled = ChoiceOf(enabled.value, "enabled", "disabled", enabled.line);
    drive.users[u].password = section.Take(name + "_password").value;
  }
  section.ExpectEmpty();
  return drive;
}

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

struct ParsedLines {
  Section global{1};
  std::vector<std::pair<std::string, Section>> drives;
};

// Values keep everything after "key = " (passwords may end in blanks); a
// value that an editor stripped to "key =" reads as empty.
ParsedLines SectionsOf(const std::string& text) {
  ParsedLines parsed;
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();  // saved by a DOS editor
    const std::string trimmed = Trimmed(line);
    if (trimmed.empty() || trimmed[0] == '#') continue;
    if (trimmed.front() == '[') {
      if (trimmed.back() != ']') Fault(number, "a section header ends with ']'");
      parsed.drives.emplace_back(trimmed.substr(1, trimmed.size() - 2), Section(number));
      continue;
    }
    const size_t equals = line.find('=');
    if (equals == std::string::npos) Fault(number, "expected 'key = value'");
    std::string value = line.substr(equals + 1);
    if (!value.empty() && value[0] == ' ') value.erase(0, 1);
    Section& section = parsed.drives.empty() ? parsed.global : parsed.drives.back().second;
    section.Add(Trimmed(line.substr(0, equals)), value, number);
  }
  return parsed;
}

void ParseInto(const std::string& text, SimState& state) {
  ParsedLines parsed = SectionsOf(text);
  state.failNext = parsed.global.Take("fail_next").value;
  parsed.global.ExpectEmpty();
  state.drives.clear();
  for (auto& [device, section] : parsed.drives) {
    if (!IsScannableDevice(device)) Fault(section.line(), "'" + device + "' is not /dev/sdX or /dev/nvmeN");
    if (FindDrive(state, device)) Fault(section.line(), device + " appears twice");
    state.drives.push_back(DriveOf(device, section));
  }
}

}  // namespace

std::string StateText(const SimState& state) {
  std::ostringstream out;
  out << kHeader << "fail_next = " << state.failNext << "\n";
  for (const Drive& drive : state.drives) WriteDrive(out, drive);
  return out.str();
}

bool ParseState(const std::string& text, SimState& state, std::string& error) {
  try {
    ParseInto(text, state);
    return true;
  } catch (const StateFault& fault) {
    error = fault.message;
    return false;
  }
}

bool LoadState(SimState& state, std::string& error) {
  std::ifstream file(kStateFileName, std::ios::binary);
  if (!file) {
    error = std::string("cannot read ") + kStateFileName + " (" + std::strerror(errno) +
            "); create the drives with `drivesim init`";
    return false;
  }
  std::ostringstream text;
  text << file.rdbuf();
  if (!ParseState(text.str(), state, error)) {
    error = std::string(kStateFileName) + " is damaged at " + error + "; mend it or start over with `drivesim reset`";
    return false;
  }
  return true;
}

bool SaveState(const SimState& state, std::string& error) {
  const std::string temporary = std::string(kStateFileName) + ".tmp";
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  if (!file) {
    error = "cannot create " + temporary + " (" + std::strerror(errno) + ")";
    return false;
  }
  file << StateText(state);
  file.close();
  if (!file) {
    error = "cannot write " + temporary + " (" + std::strerror(errno) + ")";
    std::remove(temporary.c_str());
    return false;
  }
  if (std::rename(temporary.c_str(), kStateFileName) != 0) {
    error = std::string("cannot replace ") + kStateFileName + " (" + std::strerror(errno) + ")";
    std::remove(temporary.c_str());
    return false;
  }
  return true;
}

bool IsScannableDevice(const std::string& device) {
  if (device.size() == 8 && device.compare(0, 7, "/dev/sd") == 0) return device[7] >= 'a' && device[7] <= 'z';
  const std::string nvme = "/dev/nvme";
  return device.size() > nvme.size() && device.compare(0, nvme.size(), nvme) == 0 &&
         device.find_first_not_of("0123456789", nvme.size()) == std::string::npos;
}

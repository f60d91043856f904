// opalsim: the administrator of the emulated drives. It makes the world
// (init), adds factory-new drives, shows every table of a drive in words,
// power-cycles drives, makes the next authentication fail, changes the
// per-drive behaviours in which real drives differ, and sets what the host's
// libata flag reads. The drives live in the file named by OPALSIM_STATE.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "access.h"
#include "world.h"

namespace opalsim {

namespace {

using Args = std::vector<std::string>;

constexpr int kRefused = 1;
constexpr int kUsage = 2;

const char kHelp[] =
    "usage: opalsim VERB [ARGUMENTS]   (the drives live in the file named by $OPALSIM_STATE)\n"
    "  init                                   a world with no drives\n"
    "  add DEVICE MODEL FIRMWARE PSID [--ranges N] [--users N] [--blocks N] [--no-opal]\n"
    "                                         a factory-new drive; /dev/nvmeN is NVMe, /dev/sdX SATA\n"
    "  show [DEVICE]                          every table of the drive(s), as words\n"
    "  power-cycle [DEVICE]                   reset type 0: LockOnReset locks, MBRDone clears\n"
    "  fail-next DEVICE [COUNT]               refuse the next COUNT (1) authentications\n"
    "  set DEVICE SETTING VALUE               how the drive behaves where drives differ\n"
    "  host allow-tpm 1|0|missing             what /sys/module/libata/parameters/allow_tpm holds\n"
    "  host real-disks hide|show              whether programs see this machine's own disks\n"
    "settings:\n";

int Usage(const std::string& problem) {
  std::cerr << "opalsim: " << problem << "\n" << "Try 'opalsim --help'.\n";
  return kUsage;
}

std::string PinText(const Bytes& pin) {
  if (pin.empty()) return "none";
  bool printable = true;
  for (uint8_t b : pin) printable = printable && b > 0x20 && b < 0x7F;
  if (printable) return "\"" + std::string(pin.begin(), pin.end()) + "\"";
  std::string hex = "0x";
  char digits[3];
  for (uint8_t b : pin) {
    std::snprintf(digits, sizeof digits, "%02X", b);
    hex += digits;
  }
  return hex;
}

const char* YN(bool flag) { return flag ? "Y" : "N"; }

std::string NumberList(const std::vector<uint64_t>& numbers) {
  if (numbers.empty()) return "-";
  std::string text;
  for (uint64_t n : numbers) text += (text.empty() ? "" : ",") + std::to_string(n);
  return text;
}

std::string AuthorityWord(Uid uid) {
  if (uid == opal::kAnybody) return "Anybody";
  if (uid == opal::kAdmins) return "Admins";
  if (uid == opal::kUsers) return "Users";
  if (uid >= opal::kAdmin1 && uid < opal::kAdmin1 + 4) return "Admin" + std::to_string(uid - opal::kAdmin1 + 1);
  if (uid >= opal::kUser1 && uid < opal::kUser1 + 255) return "User" + std::to_string(uid - opal::kUser1 + 1);
  char hex[19];
  std::snprintf(hex, sizeof hex, "0x%016llX", static_cast<unsigned long long>(uid));
  return hex;
}

// An expression as the drive stores it, postfix: "Admins User1 OR".
std::string ExprWords(const BooleanExpr& expr) {
  static const char* kOps[] = {"AND", "OR", "NOT"};
  std::string text;
  for (const opal::AceTerm& term : expr) {
    text += (text.empty() ? "" : " ") +
            (term.isOperator ? std::string(kOps[static_cast<int>(term.op)]) : AuthorityWord(term.authority));
  }
  return text.empty() ? "(nobody)" : text;
}

std::string Tries(const Drive& drive, const Credential& c) {
  return "tries " + std::to_string(c.tries) + "/" + std::to_string(drive.settings.tryLimit);
}

void ShowPeople(std::ostream& out, const Drive& drive, const std::vector<Authority>& people, const char* name) {
  for (size_t i = 0; i < people.size(); ++i) {
    const Authority& a = people[i];
    out << "  " << name << i + 1 << " " << (a.enabled ? "enabled" : "disabled") << ", password "
        << PinText(a.credential.pin) << ", " << Tries(drive, a.credential) << "\n";
  }
}

void Show(std::ostream& out, const StateFile& state, const Drive& d) {
  out << d.device << "  " << d.model << "  firmware " << d.firmware << "  serial " << d.serial << "\n"
      << "  " << (d.IsNvme() ? "NVMe" : "SATA") << ", " << (d.opal ? "Opal 2" : "no Opal") << ", " << d.blocks
      << " blocks, " << d.rangeCount << " ranges, " << d.userCount << " users\n";
  if (!d.opal) return;
  const bool owned = d.sid.pin != d.msid;
  out << "  MSID " << PinText(d.msid) << "\n"
      << "  PSID " << PinText(d.psid.pin) << ", " << Tries(d, d.psid) << "\n"
      << "  SID " << (owned ? "owned, password " + PinText(d.sid.pin) : std::string("not owned (password is the MSID)"))
      << ", " << Tries(d, d.sid) << "\n"
      << "  Locking SP " << (d.LockingActive() ? "active (Manufactured)" : "inactive (Manufactured-Inactive)") << "\n"
      << "  Locked " << YN(LockedBit(d)) << "\n"
      << "  MBR Enable " << YN(d.mbrEnable) << ", Done " << YN(d.mbrDone) << ", DoneOnReset "
      << NumberList(d.mbrDoneOnReset) << ", " << d.mbrWritten << " bytes written\n";
  ShowPeople(out, d, d.admins, "Admin");
  ShowPeople(out, d, d.users, "User");
  out << "  Range  Start       Length      RLE WLE RL  WL  LockOnReset  DataKey           Set_RdLocked / Set_WrLocked\n";
  for (unsigned n = 0; n < d.ranges.size(); ++n) {
    const Range& r = d.ranges[n];
    char row[160];
    std::snprintf(row, sizeof row, "  LR%-4u %-11llu %-11llu %-3s %-3s %-3s %-3s %-12s %016llx  ", n,
                  static_cast<unsigned long long>(r.start), static_cast<unsigned long long>(r.length),
                  YN(r.readLockEnabled), YN(r.writeLockEnabled), YN(r.readLocked), YN(r.writeLocked),
                  NumberList(r.lockOnReset).c_str(), static_cast<unsigned long long>(r.dataKey));
    out << row;
    if (AceExists(d, opal::kLockingSp, opal::AceSetRdLockedUid(n))) {
      out << ExprWords(AceExpression(d, opal::kLockingSp, opal::AceSetRdLockedUid(n))) << " / "
          << ExprWords(AceExpression(d, opal::kLockingSp, opal::AceSetWrLockedUid(n)));
    } else {
      out << "(no ACEs)";
    }
    out << "\n";
  }
  for (const auto& [uid, expr] : d.aces) {
    const bool perRange = [&] {
      for (unsigned n = 0; n < d.ranges.size(); ++n) {
        if (uid == opal::AceSetRdLockedUid(n) || uid == opal::AceSetWrLockedUid(n)) return true;
      }
      return false;
    }();
    if (!perRange) out << "  ACE " << AuthorityWord(uid) << " " << ExprWords(expr) << "\n";
  }
  out << "  Settings";
  for (const auto& [name, value] : SettingList(d.settings)) out << " " << name << "=" << value;
  out << "\n";
  if (d.failNext > 0) out << "  Next " << d.failNext << " authentication(s) fail\n";
  (void)state;
}

// Runs change on the drive named by device; false when there is none.
int ChangeDrive(const StateFile& state, const std::string& device, const std::function<std::string(Drive&)>& change) {
  std::string problem = "no emulated drive " + device;
  opal::Status saved = state.Update([&](World& world) {
    Drive* drive = world.Find(device);
    if (drive == nullptr) return false;
    problem = change(*drive);
    return problem.empty();
  });
  if (!saved) {
    std::cerr << "opalsim: " << saved.error().message << "\n";
    return kUsage;
  }
  if (!problem.empty()) {
    std::cerr << "opalsim: " << problem << "\n";
    return kRefused;
  }
  return 0;
}

int Init(const StateFile& state, const Args& args) {
  if (!args.empty()) return Usage("init takes no arguments");
  // A state that cannot be read is replaced all the same: init is the way
  // out of a damaged file.
  opal::Result<World> old = state.Read();
  if (old) {
    for (const Drive& drive : old->drives) ClearMbr(state.MbrPath(drive));
  }
  opal::Status saved = state.Replace(World{});
  if (!saved) std::cerr << "opalsim: " << saved.error().message << "\n";
  return saved ? 0 : kUsage;
}

bool ParseCount(const std::string& text, unsigned low, unsigned high, unsigned& out) {
  if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  out = static_cast<unsigned>(std::stoul(text));
  return out >= low && out <= high;
}

int Add(const StateFile& state, const Args& args) {
  if (args.size() < 4) return Usage("add needs DEVICE MODEL FIRMWARE PSID");
  const std::string device = DriveNode(args[0]);
  const NodeKind kind = KindOfNode(device);
  if (kind != NodeKind::kNvmeController && kind != NodeKind::kSata) {
    return Usage(args[0] + " is neither /dev/nvmeN nor /dev/sdX");
  }
  // The state file keeps each as the rest of a line, without its leading
  // blanks: anything else would not read back as typed (or not at all).
  auto storable = [](const std::string& text) {
    return !text.empty() && text[0] != ' ' &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= 0x20 && c < 0x7F; });
  };
  if (args[1].size() > 40 || args[2].size() > 8 || !storable(args[1]) || !storable(args[2])) {
    return Usage("the model takes 1 to 40 characters, the firmware 1 to 8, printable and not starting with a blank");
  }
  if (args[3].empty() || args[3].size() > 32) return Usage("the PSID takes 1 to 32 characters");
  unsigned ranges = 8, users = 8;
  bool opal = true;
  uint64_t blocks = 0;
  for (size_t i = 4; i < args.size(); ++i) {
    const bool hasValue = i + 1 < args.size();
    if (args[i] == "--no-opal") {
      opal = false;
    } else if (args[i] == "--ranges" && hasValue && ParseCount(args[i + 1], 1, 64, ranges)) {
      ++i;
    } else if (args[i] == "--users" && hasValue && ParseCount(args[i + 1], 1, 32, users)) {
      ++i;
    } else if (args[i] == "--blocks" && hasValue && args[i + 1].find_first_not_of("0123456789") == std::string::npos &&
               args[i + 1].size() < 19 && !args[i + 1].empty()) {
      blocks = std::stoull(args[++i]);
    } else {
      return Usage("unknown or incomplete option " + args[i]);
    }
  }
  bool exists = false;
  opal::Status saved = state.Update([&](World& world) {
    if (world.Find(device) != nullptr) {
      exists = true;
      return false;
    }
    Drive drive = NewDrive(device, args[1], args[2], args[3], ranges, opal);
    drive.userCount = users;
    if (blocks != 0) drive.blocks = blocks;
    ResetLockingSp(drive);
    ClearMbr(state.MbrPath(drive));
    world.drives.push_back(drive);
    return true;
  });
  if (!saved) {
    std::cerr << "opalsim: " << saved.error().message << "\n";
    return kUsage;
  }
  if (exists) {
    std::cerr << "opalsim: " << device << " is already emulated\n";
    return kRefused;
  }
  return 0;
}

int ShowVerb(const StateFile& state, const Args& args) {
  if (args.size() > 1) return Usage("show takes at most one DEVICE");
  opal::Result<World> world = state.Read();
  if (!world) {
    std::cerr << "opalsim: " << world.error().message << "\n";
    return kUsage;
  }
  std::ostringstream out;
  if (args.empty()) {
    out << "host allow-tpm " << world->allowTpm << ", real disks " << (world->hideRealDisks ? "hidden" : "shown")
        << "\n";
    for (const Drive& drive : world->drives) Show(out, state, drive);
  } else if (const Drive* drive = world->Find(args[0])) {
    Show(out, state, *drive);
  } else {
    std::cerr << "opalsim: no emulated drive " << args[0] << "\n";
    return kRefused;
  }
  std::cout << out.str();
  return 0;
}

int PowerCycleVerb(const StateFile& state, const Args& args) {
  if (args.size() > 1) return Usage("power-cycle takes at most one DEVICE");
  if (args.size() == 1) {
    return ChangeDrive(state, args[0], [](Drive& drive) {
      PowerCycle(drive);
      return std::string();
    });
  }
  opal::Status saved = state.Update([](World& world) {
    for (Drive& drive : world.drives) PowerCycle(drive);
    return true;
  });
  if (!saved) std::cerr << "opalsim: " << saved.error().message << "\n";
  return saved ? 0 : kUsage;
}

int FailNext(const StateFile& state, const Args& args) {
  unsigned count = 1;
  if (args.empty() || args.size() > 2 || (args.size() == 2 && !ParseCount(args[1], 1, 1000, count))) {
    return Usage("fail-next takes DEVICE and an optional COUNT from 1 to 1000");
  }
  return ChangeDrive(state, args[0], [count](Drive& drive) {
    drive.failNext += count;
    return std::string();
  });
}

int Set(const StateFile& state, const Args& args) {
  if (args.size() != 3) return Usage("set takes DEVICE SETTING VALUE");
  return ChangeDrive(state, args[0], [&](Drive& drive) {
    std::string reason;
    return ApplySetting(drive.settings, args[1], args[2], reason) ? std::string() : reason;
  });
}

int Host(const StateFile& state, const Args& args) {
  const bool allowTpm = args.size() == 2 && args[0] == "allow-tpm" &&
                        (args[1] == "1" || args[1] == "0" || args[1] == "missing");
  const bool realDisks = args.size() == 2 && args[0] == "real-disks" && (args[1] == "hide" || args[1] == "show");
  if (!allowTpm && !realDisks) return Usage("host takes allow-tpm 1|0|missing or real-disks hide|show");
  opal::Status saved = state.Update([&](World& world) {
    if (allowTpm) world.allowTpm = args[1];
    if (realDisks) world.hideRealDisks = args[1] == "hide";
    return true;
  });
  if (!saved) std::cerr << "opalsim: " << saved.error().message << "\n";
  return saved ? 0 : kUsage;
}

struct Verb {
  const char* name;
  int (*run)(const StateFile&, const Args&);
};

const Verb kVerbs[] = {{"init", Init},           {"add", Add},         {"show", ShowVerb}, {"power-cycle", PowerCycleVerb},
                       {"fail-next", FailNext}, {"set", Set},         {"host", Host}};

void Help() {
  std::cout << kHelp;
  for (const auto& [name, value] : SettingList(Settings{})) std::cout << "  " << name << " (default " << value << ")\n";
}

}  // namespace

int AdminMain(int argc, char** argv) {
  const Args words(argv + 1, argv + argc);
  if (words.empty() || words[0] == "--help" || words[0] == "-h") {
    Help();
    return words.empty() ? kUsage : 0;
  }
  const char* path = std::getenv("OPALSIM_STATE");
  if (path == nullptr || *path == '\0') return Usage("set OPALSIM_STATE to the state file of the emulated drives");
  const StateFile state(path);
  for (const Verb& verb : kVerbs) {
    if (words[0] == verb.name) return verb.run(state, Args(words.begin() + 1, words.end()));
  }
  return Usage("unknown verb " + words[0]);
}

}  // namespace opalsim

int main(int argc, char** argv) { return opalsim::AdminMain(argc, argv); }

// The sedutil face. Success lines go to standard output, errors to standard
// error; the exit status is the drive's method status (1 = NOT_AUTHORIZED)
// or 136 for a bad command line or disk, as the real tool sets them.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "interfaces.h"
#include "tool_support.h"

namespace {

constexpr int kNotAuthorized = 1;
constexpr int kInvalidParameter = 12;
constexpr int kGlobalRangeRefused = 129;
constexpr int kImageMissing = 132;
constexpr int kCommandLineError = 136;
constexpr uint64_t kPbaChunk = 16384;

struct Call {
  SimState& state;
  const char* command;
  std::vector<std::string> operands;
  bool hashed;  // without -n the tool hashes every password it is given
  Drive* drive = nullptr;  // the disk named by the last operand, if any

  const std::string& device() const { return operands.back(); }

  // What the drive compares: the typed password cut to 32 bytes, or its hash.
  std::string Secret(const std::string& typed) const {
    return hashed ? "hashed(" + typed + ")" : typed.substr(0, kPasswordLimit);
  }
};

enum class Authority { kSid, kAdmin1, kPsid };

int RefuseSession(const char* status, int code) {
  std::cerr << "method status code " << status << "\n"
            << "Session start failed rc = " << code << "\n"
            << "One or more header fields have 0 length\n"
            << "EndSession Failed\n";
  return code;
}

// 0 when the drive accepts secret for who; otherwise the refusal is printed
// and its exit status returned. Admin1 lives in the Locking SP, which is
// not there until ownership is taken.
int StartSession(Call& call, const Drive& drive, Authority who, const std::string& secret) {
  if (TakeInjectedFailure(call.state, call.command)) return RefuseSession("NOT_AUTHORIZED", kNotAuthorized);
  if (who == Authority::kAdmin1 && !drive.lockingActive) {
    return RefuseSession("INVALID_PARAMETER", kInvalidParameter);
  }
  const std::string& expected =
      who == Authority::kSid ? drive.sidPassword : who == Authority::kAdmin1 ? drive.admin1Password : drive.psid;
  return secret == expected ? 0 : RefuseSession("NOT_AUTHORIZED", kNotAuthorized);
}

int StartAdmin1Session(Call& call, const Drive& drive, const std::string& typed) {
  return StartSession(call, drive, Authority::kAdmin1, call.Secret(typed));
}

int MethodFailed(const char* command) {
  std::cerr << "method status code INVALID_PARAMETER\n" << command << " Failed \n";
  return kInvalidParameter;
}

// The drive behind the call's last operand, or null after the tool's
// complaint: a path it cannot open, or a disk without Opal.
Drive* OpenDrive(Call& call) {
  Drive* drive = FindDrive(call.state, call.device());
  if (!drive) {
    std::cerr << "You do not have permission to access the raw disk in write mode\n"
              << "Perhaps you might try sudo to run as root\n";
  }
  if (!drive || !SupportsOpal(*drive)) {
    std::cerr << "Invalid or unsupported disk " << call.device() << "\n";
    return nullptr;
  }
  return drive;
}

// Range numbers are read with atoi, so junk reads as range 0.
int RangeNumber(const std::string& typed) { return std::atoi(typed.c_str()); }

bool IsRange(int number) { return number >= 0 && number < kRangeCount; }

// ON/OFF operand: 1 for ON, 0 for OFF, -1 for anything else.
int OnOff(const std::string& typed) {
  if (EqualsIgnoringCase(typed, "ON")) return 1;
  if (EqualsIgnoringCase(typed, "OFF")) return 0;
  return -1;
}

int InvalidOperand(const Call& call, const std::string& typed) {
  std::cerr << "Invalid argument " << typed << " for --" << call.command << "\n";
  return kCommandLineError;
}

// --- commands ------------------------------------------------------------

int Scan(Call& call) {
  std::cout << "Scanning for Opal compliant disks\n";
  for (const std::string& line : ScanLines(call.state)) std::cout << line << "\n";
  std::cout << "No more disks present ending scan\n";
  return 0;
}

void PrintOpalFeature(const Drive& drive) {
  if (drive.opal.find('1') != std::string::npos) {
    std::cout << "OPAL 1.0 function (0x0200)\n"
              << "    Base comID = 0x1000, comIDs = 1\n";
  }
  if (drive.opal.find('2') != std::string::npos) {
    std::cout << "OPAL 2.0 function (0x0203)\n"
              << "    Base comID = 0x1000, Initial PIN = 0x00, Reverted PIN = 0x00, comIDs = 1\n"
              << "    Locking Admins = 4, Locking Users = 9, Range Crossing = N\n";
  }
}

int Query(Call& call) {
  const Drive* drive = call.drive;
  std::cout << "\n"
            << drive->device << (IsNvme(*drive) ? " NVMe " : " ATA ") << Padded(drive->model, 40) << " "
            << Padded(drive->firmware, 8) << " " << Padded(drive->serial, 20) << "\n"
            << "TPer function (0x0001)\n"
            << "    ACKNAK = N, ASYNC = N. BufferManagement = N, comIDManagement  = N, Streaming = Y, SYNC = Y\n"
            << "Locking function (0x0002)\n"
            << "    Locked = " << YesNo(IsLocked(*drive)) << ", LockingEnabled = " << YesNo(drive->lockingActive)
            << ", LockingSupported = Y, MBRDone = " << YesNo(drive->mbrDone)
            << ", MBREnabled = " << YesNo(drive->mbrEnable) << ", MediaEncrypt = Y\n"
            << "Geometry function (0x0003)\n"
            << "    Align = Y, Alignment Granularity = 8 (4096), Logical Block size = 512, Lowest Aligned LBA = 0\n";
  PrintOpalFeature(*drive);
  return 0;
}

int ListLockingRanges(Call& call) {
  const Drive* drive = call.drive;
  if (int refused = StartAdmin1Session(call, *drive, call.operands[0])) return refused;
  std::cout << "Locking Range Configuration for " << drive->device << "\n";
  for (int r = 0; r < kRangeCount; ++r) {
    const LockingRange& range = drive->ranges[r];
    std::cout << "LR" << r << " Begin " << range.start << " for " << range.length << "\n"
              << "            RLKEna = " << YesNo(range.readLockEnabled)
              << "  WLKEna = " << YesNo(range.writeLockEnabled) << "  RLocked = " << YesNo(range.readLocked)
              << "  WLocked = " << YesNo(range.writeLocked) << " \n";
  }
  return 0;
}

int InitialSetup(Call& call) {
  Drive* drive = call.drive;
  // Taking ownership authenticates SID with the factory MSID.
  if (int refused = StartSession(call, *drive, Authority::kSid, drive->msid)) {
    std::cerr << "takeOwnership failed\n"
              << "Initial setup failed - unable to take ownership\n";
    return refused;
  }
  TakeOwnership(*drive, call.Secret(call.operands[0]));
  std::cout << "takeOwnership complete\n"
            << "Locking SP Activate Complete\n"
            << "LockingRange0 disabled \n"
            << "LockingRange0 set to RW\n"
            << "MBRDone set on \n"
            << "MBRDone set on \n"
            << "MBREnable set on \n"
            << "Initial setup of TPer complete on " << drive->device << "\n";
  return 0;
}

int SetupLockingRange(Call& call) {
  Drive* drive = call.drive;
  const int number = RangeNumber(call.operands[0]);
  if (number == 0) {
    std::cerr << "global locking range cannot be changed\n";
    return kGlobalRangeRefused;
  }
  if (int refused = StartAdmin1Session(call, *drive, call.operands[3])) return refused;
  const uint64_t start = std::strtoull(call.operands[1].c_str(), nullptr, 10);
  const uint64_t length = std::strtoull(call.operands[2].c_str(), nullptr, 10);
  if (!IsRange(number) || !RangeAddressFits(*drive, number, start, length)) return MethodFailed("setupLockingRange");
  LockingRange& range = drive->ranges[number];
  ++range.dataKey;
  range.start = start;
  range.length = length;
  range.readLockEnabled = range.writeLockEnabled = range.readLocked = range.writeLocked = false;
  std::cout << "LockingRange" << number << " reKeyed \n"
            << "LockingRange" << number << " starting block " << start << " for " << length
            << " blocks configured as unlocked range\n";
  return 0;
}

int SetLockingRange(Call& call) {
  Drive* drive = call.drive;
  const std::string& mode = call.operands[1];
  const bool rw = EqualsIgnoringCase(mode, "RW"), ro = EqualsIgnoringCase(mode, "RO");
  if (!rw && !ro && !EqualsIgnoringCase(mode, "LK")) return InvalidOperand(call, mode);
  if (int refused = StartAdmin1Session(call, *drive, call.operands[2])) return refused;
  const int number = RangeNumber(call.operands[0]);
  if (!IsRange(number)) return MethodFailed("setLockingRange");
  LockingRange& range = drive->ranges[number];
  range.readLocked = !rw && !ro;  // RO sets the write lock only
  range.writeLocked = !rw;
  std::cout << "LockingRange" << number << " set to " << (rw ? "RW" : ro ? "RO" : "LK") << "\n";
  return 0;
}

int SwitchLocking(Call& call, bool enable) {
  Drive* drive = call.drive;
  if (int refused = StartAdmin1Session(call, *drive, call.operands[1])) return refused;
  const int number = RangeNumber(call.operands[0]);
  if (!IsRange(number)) return MethodFailed(call.command);
  drive->ranges[number].readLockEnabled = enable;
  drive->ranges[number].writeLockEnabled = enable;
  std::cout << "LockingRange" << number << (enable ? " enabled ReadLocking,WriteLocking" : " disabled ") << "\n";
  return 0;
}

int EnableLockingRange(Call& call) { return SwitchLocking(call, true); }
int DisableLockingRange(Call& call) { return SwitchLocking(call, false); }

// "User<n>" read with atoi after "User" (so User0003 is User3); null for
// any other name or a user the drive does not have.
User* UserNamed(Drive& drive, const std::string& name) {
  if (name.compare(0, 4, "User") != 0) return nullptr;
  const int number = std::atoi(name.c_str() + 4);
  return number >= 1 && number <= kUserCount ? &drive.users[number - 1] : nullptr;
}

int EnableUser(Call& call) {
  Drive* drive = call.drive;
  if (int refused = StartAdmin1Session(call, *drive, call.operands[0])) return refused;
  const std::string& name = call.operands[1];
  User* user = UserNamed(*drive, name);
  if (!user) return MethodFailed("enableUser");
  user->enabled = true;
  std::cout << name << " has been enabled \n";
  return 0;
}

int SetPassword(Call& call) {
  Drive* drive = call.drive;
  if (int refused = StartAdmin1Session(call, *drive, call.operands[0])) return refused;
  const std::string& name = call.operands[1];
  const std::string secret = call.Secret(call.operands[2]);
  if (name == "Admin1") {
    drive->admin1Password = secret;
  } else if (User* user = UserNamed(*drive, name)) {
    user->password = secret;
  } else {
    return MethodFailed("setPassword");
  }
  std::cout << name << " password changed\n";
  return 0;
}

int RevertNoErase(Call& call) {
  Drive* drive = call.drive;
  if (int refused = StartAdmin1Session(call, *drive, call.operands[0])) return refused;
  RevertLockingSp(*drive);
  std::cout << "Revert LockingSP complete\n";
  return 0;
}

int RevertTPer(Call& call) {
  Drive* drive = call.drive;
  if (int refused = StartSession(call, *drive, Authority::kSid, call.Secret(call.operands[0]))) return refused;
  RevertTper(*drive, Erase::kIfLockingActive);
  std::cout << "revertTper completed successfully\n";
  return 0;
}

int PsidRevert(Call& call) {
  Drive* drive = call.drive;
  if (int refused = StartSession(call, *drive, Authority::kPsid, call.operands[0])) return refused;
  RevertTper(*drive, Erase::kAlways);
  std::cout << "revertTper completed successfully\n";
  return 0;
}

// Enabling or disabling the shadow MBR sets its done flag on first.
int SetMbrEnable(Call& call) {
  Drive* drive = call.drive;
  const int on = OnOff(call.operands[0]);
  if (on < 0) return InvalidOperand(call, call.operands[0]);
  if (int refused = StartAdmin1Session(call, *drive, call.operands[1])) return refused;
  drive->mbrDone = true;
  drive->mbrEnable = on;
  std::cout << "MBRDone set on \n"
            << "MBREnable set " << (on ? "on" : "off") << " \n";
  return 0;
}

int SetMbrDone(Call& call) {
  Drive* drive = call.drive;
  const int on = OnOff(call.operands[0]);
  if (on < 0) return InvalidOperand(call, call.operands[0]);
  if (int refused = StartAdmin1Session(call, *drive, call.operands[1])) return refused;
  drive->mbrDone = on;
  std::cout << "MBRDone set " << (on ? "on" : "off") << " \n";
  return 0;
}

// Progress records share one line, each ended by a carriage return.
void PrintPbaProgress(uint64_t size) {
  uint64_t block = 0;
  for (uint64_t done = 0; done < size; ++block) {
    done = std::min(size, done + kPbaChunk);
    std::cout << done << " of " << size << " " << done * 100 / size << "% blk=" << block << " \r";
  }
  std::cout << "\n";
}

int LoadPbaImage(Call& call) {
  Drive* drive = call.drive;
  const std::string& file = call.operands[1];
  std::ifstream image(file, std::ios::binary | std::ios::ate);
  // A directory opens as a stream whose end lies at 2^63 - 1: only a regular
  // file (or a link to one) is an image.
  std::error_code not_a_file;
  if (!image || !std::filesystem::is_regular_file(file, not_a_file)) {
    std::cerr << "Unable to open PBA image file " << file << "\n";
    return kImageMissing;
  }
  const uint64_t size = static_cast<uint64_t>(image.tellg());
  if (int refused = StartAdmin1Session(call, *drive, call.operands[0])) return refused;
  std::cout << "Writing PBA to " << drive->device << "\n";
  PrintPbaProgress(size);
  std::cout << "PBA image  " << file << " written to " << drive->device << "\n";
  drive->pbaImage = file;
  drive->pbaSize = size;
  return 0;
}

const Command<Call> kCommands[] = {
    {"scan", 0, Scan},
    {"query", 1, Query},
    {"listLockingRanges", 2, ListLockingRanges},
    {"initialSetup", 2, InitialSetup},
    {"setupLockingRange", 5, SetupLockingRange},
    {"setLockingRange", 4, SetLockingRange},
    {"enableLockingRange", 3, EnableLockingRange},
    {"disableLockingRange", 3, DisableLockingRange},
    {"enableUser", 3, EnableUser},
    {"setPassword", 4, SetPassword},
    {"revertNoErase", 2, RevertNoErase},
    {"revertTPer", 2, RevertTPer},
    {"yesIreallywanttoERASEALLmydatausingthePSID", 2, PsidRevert},
    {"setMBREnable", 3, SetMbrEnable},
    {"setMBRDone", 3, SetMbrDone},
    {"loadPBAimage", 3, LoadPbaImage},
};

}  // namespace

int SedutilMain(const std::vector<std::string>& args) {
  size_t next = 0;
  bool hashed = true;
  for (; next < args.size() && args[next] == "-n"; ++next) hashed = false;
  if (next == args.size()) {
    std::cerr << "Usage: sedutil-cli [-n] --<command> <operands>\n";
    return kCommandLineError;
  }
  const Command<Call>* command = FindCommand(kCommands, args[next]);
  if (!command) {
    std::cerr << "Invalid command line argument " << args[next] << "\n";
    return kCommandLineError;
  }
  std::vector<std::string> operands(args.begin() + next + 1, args.end());
  if (!command->Takes(operands.size())) {
    std::cerr << "Incorrect number of paramaters for --" << command->name << " command\n";
    return kCommandLineError;
  }
  return WithState([&](SimState& state) {
    Call call{state, command->name, operands, hashed};
    if (!operands.empty() && !(call.drive = OpenDrive(call))) return kCommandLineError;
    return command->run(call);
  });
}

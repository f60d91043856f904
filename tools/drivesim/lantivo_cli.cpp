// The Lantivo face. Every line of a lock-state or access-list change holds
// "success" when it worked; any failure prints one line without it, on
// standard error, so a caller that demands "success" on every line fails.
#include <iostream>

#include "interfaces.h"
#include "tool_support.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 64;

struct Call {
  SimState& state;
  const char* command;
  std::vector<std::string> operands;
};

bool Fail(const std::string& why) {
  std::cerr << "Lantivo: " << why << "\n";
  return false;
}

Drive* OpenDrive(Call& call, const std::string& device) {
  Drive* drive = FindDrive(call.state, device);
  if (!drive) {
    Fail("cannot open " + device);
  } else if (!SupportsOpal(*drive)) {
    Fail(device + " does not support Opal");
    drive = nullptr;
  }
  return drive;
}

bool Authenticate(Call& call, const Drive& drive, const std::string& password) {
  if (!drive.lockingActive) return Fail("the Locking SP of " + drive.device + " is not activated");
  if (TakeInjectedFailure(call.state, call.command) || password.substr(0, kPasswordLimit) != drive.admin1Password) {
    return Fail("Admin1 authentication failed on " + drive.device);
  }
  return true;
}

// The drive at device, opened and authenticated with password; null after
// the failure line.
Drive* Session(Call& call, const std::string& device, const std::string& password) {
  Drive* drive = OpenDrive(call, device);
  return drive && Authenticate(call, *drive, password) ? drive : nullptr;
}

// Range 0 to 8 written in decimal, else -1 after the failure line.
int RangeNumber(const std::string& typed) {
  if (typed.size() == 1 && typed[0] >= '0' && typed[0] < '0' + kRangeCount) return typed[0] - '0';
  Fail("no locking range " + typed + " (0 to 8)");
  return -1;
}

// "Y" or "N" (any case) into flag; false after the failure line.
bool LockFlag(const std::string& typed, bool& flag) {
  if (!EqualsIgnoringCase(typed, "Y") && !EqualsIgnoringCase(typed, "N")) {
    return Fail("lock flag " + typed + " is not Y or N");
  }
  flag = EqualsIgnoringCase(typed, "Y");
  return true;
}

// User1 to User9, else 0 after the failure line.
int KnownUser(const std::string& name) {
  const int user = UserNumber(name);
  if (user == 0) Fail("no user " + name + " (User1 to User9)");
  return user;
}

void Succeeded(int range, const std::string& what) {
  std::cout << "Locking Range " << range << ": " << what << " success\n";
}

// --- commands ------------------------------------------------------------

int Scan(Call& call) {
  std::cout << "Lantivo scan for Opal drives\n";
  for (const std::string& line : ScanLines(call.state)) std::cout << line << "\n";
  return 0;
}

// I P R|W|RW D: switches read and/or write locking of range I.
int SwitchLocking(Call& call, bool enable) {
  const std::string& kind = call.operands[2];
  const bool read = EqualsIgnoringCase(kind, "R") || EqualsIgnoringCase(kind, "RW");
  const bool write = EqualsIgnoringCase(kind, "W") || EqualsIgnoringCase(kind, "RW");
  if (!read && !write) {
    Fail("locking kind " + kind + " is not R, W or RW");
    return kFailed;
  }
  const int number = RangeNumber(call.operands[0]);
  if (number < 0) return kFailed;
  Drive* drive = Session(call, call.operands[3], call.operands[1]);
  if (!drive) return kFailed;
  LockingRange& range = drive->ranges[number];
  const std::string flag = enable ? " = Y" : " = N";
  if (read) {
    range.readLockEnabled = enable;
    Succeeded(number, "ReadLockEnabled" + flag);
  }
  if (write) {
    range.writeLockEnabled = enable;
    Succeeded(number, "WriteLockEnabled" + flag);
  }
  return 0;
}

int EnableLockingRange(Call& call) { return SwitchLocking(call, true); }
int DisableLockingRange(Call& call) { return SwitchLocking(call, false); }

// I R W P D: sets the read and write lock of range I, each Y or N.
int SetLockingRange(Call& call) {
  bool readLocked = false, writeLocked = false;
  const int number = RangeNumber(call.operands[0]);
  if (number < 0 || !LockFlag(call.operands[1], readLocked) || !LockFlag(call.operands[2], writeLocked)) return kFailed;
  Drive* drive = Session(call, call.operands[4], call.operands[3]);
  if (!drive) return kFailed;
  drive->ranges[number].readLocked = readLocked;
  drive->ranges[number].writeLocked = writeLocked;
  Succeeded(number, std::string("ReadLocked = ") + (readLocked ? "Y" : "N"));
  Succeeded(number, std::string("WriteLocked = ") + (writeLocked ? "Y" : "N"));
  return 0;
}

// D P I User<n>...: lets the users lock range I too.
int AddAce(Call& call) {
  std::set<int> users;
  for (size_t k = 3; k < call.operands.size(); ++k) {
    const int user = KnownUser(call.operands[k]);
    if (user == 0) return kFailed;
    users.insert(user);
  }
  const int number = RangeNumber(call.operands[2]);
  if (number < 0) return kFailed;
  Drive* drive = Session(call, call.operands[0], call.operands[1]);
  if (!drive) return kFailed;
  drive->ranges[number].ace.insert(users.begin(), users.end());
  Succeeded(number, std::to_string(users.size()) + " user(s) added to the access list");
  return 0;
}

// D P I: leaves range I to Admin1 alone.
int DeleteAllUserAce(Call& call) {
  const int number = RangeNumber(call.operands[2]);
  if (number < 0) return kFailed;
  Drive* drive = Session(call, call.operands[0], call.operands[1]);
  if (!drive) return kFailed;
  drive->ranges[number].ace.clear();
  Succeeded(number, "all users removed from the access list");
  return 0;
}

// D P I: one line naming who may lock range I, Admin1 first.
int ListUserAce(Call& call) {
  const int number = RangeNumber(call.operands[2]);
  if (number < 0) return kFailed;
  const Drive* drive = Session(call, call.operands[0], call.operands[1]);
  if (!drive) return kFailed;
  std::cout << "Admin1";
  for (int user : drive->ranges[number].ace) std::cout << " User" << user;
  std::cout << " can access Locking Range " << number << "\n";
  return 0;
}

// P D: the password comes first here.
int ListUserStatus(Call& call) {
  const Drive* drive = Session(call, call.operands[1], call.operands[0]);
  if (!drive) return kFailed;
  for (int u = 0; u < kUserCount; ++u) {
    std::cout << "User" << u + 1 << " : " << (drive->users[u].enabled ? "Enabled" : "Disabled") << "\n";
  }
  return 0;
}

const Command<Call> kCommands[] = {
    {"scan", 0, Scan},
    {"enableLockingRange", 4, EnableLockingRange},
    {"disableLockingRange", 4, DisableLockingRange},
    {"setLockingRange", 5, SetLockingRange},
    {"Add_ACE_Locking_range", 3, AddAce, true},
    {"Delete_AllUser_ACE_Locking_range", 3, DeleteAllUserAce},
    {"list_User_ACE_Locking_range", 3, ListUserAce},
    {"ListUserStatus", 2, ListUserStatus},
};

}  // namespace

int LantivoMain(const std::vector<std::string>& args) {
  const Command<Call>* command = args.empty() ? nullptr : FindCommand(kCommands, args[0]);
  if (!command) {
    std::cerr << "Lantivo: unknown command " << (args.empty() ? "(none)" : args[0]) << "\n";
    return kUsage;
  }
  std::vector<std::string> operands(args.begin() + 1, args.end());
  if (!command->Takes(operands.size())) {
    std::cerr << "Lantivo: wrong number of operands for --" << command->name << "\n";
    return kUsage;
  }
  return WithState([&](SimState& state) {
    Call call{state, command->name, operands};
    return command->run(call);
  });
}

// The drivesim face: sets up the simulated drives and shows them whole, so
// an operator (or a test) can see what a tool command really changed.
#include <fstream>
#include <iomanip>
#include <iostream>

#include "interfaces.h"
#include "state_file.h"
#include "tool_support.h"

namespace {

constexpr int kUsage = 64;
constexpr int kRefused = 1;
constexpr uint64_t kDefaultBlocks = 976773168;  // 500 GB of 512-byte blocks

const char* const kUsageText =
    "usage: drivesim init [--empty]   create drivesim.state with the demo drives (or none)\n"
    "       drivesim reset            put the demo drives back as init made them\n"
    "       drivesim add DEV VER MODEL FIRMWARE PSID [BLOCKS]\n"
    "                                 add a factory-new drive; VER is 1, 2, 12 or No\n"
    "       drivesim show [DEV]       print the whole state of every drive (or of DEV)\n"
    "       drivesim fail-next [--COMMAND]\n"
    "                                 refuse the next authenticated tool call (of COMMAND)\n"
    "                                 as if its password were wrong\n"
    "Run it in the directory that holds drivesim.state; link it as sedutil-cli and\n"
    "Lantivo there to answer the tools' command lines.\n";

int Usage() {
  std::cerr << kUsageText;
  return kUsage;
}

int Refuse(const std::string& why) {
  std::cerr << "drivesim: " << why << "\n";
  return kRefused;
}

// The owned drive of the demo: one locked range that User1 may unlock.
Drive OwnedZepDrive() {
  Drive drive = FactoryDrive("/dev/nvme0", "2", "ZEP NV2000 1TB", "2B2QEXM7", "ZQ7K2M9X4B1N8C3V6L5P0R2T7Y9W4S1D",
                             1953525168);
  TakeOwnership(drive, "Zep2024");
  LockingRange& range = drive.ranges[1];
  range.start = 2048;
  range.length = 409600;
  range.readLockEnabled = range.writeLockEnabled = range.readLocked = range.writeLocked = true;
  range.dataKey = 2;  // re-keyed when it was set up
  range.ace = {1};
  drive.users[0] = User{true, "User1pw"};
  drive.pbaImage = "PBA.img";
  drive.pbaSize = 1048576;
  return drive;
}

// A factory-new KVX drive whose PSID is the one Veltrak has built in, a
// ZEP drive already owned, and a drive of a maker Veltrak does not take.
SimState DemoState() {
  SimState state;
  state.drives.push_back(
      FactoryDrive("/dev/sda", "2", "KVX 480GB", "SBFK71F3", "80213657490812736459018273645091", 937703088));
  state.drives.push_back(OwnedZepDrive());
  state.drives.push_back(FactoryDrive("/dev/sdb", "12", "Quellon QS500 500GB", "EMT01B6Q",
                                      "QL5R8T2W6Y0U4I9O3P7A1S5D8F2G6H0J", kDefaultBlocks));
  return state;
}

int Save(const SimState& state) {
  std::string error;
  return SaveState(state, error) ? 0 : Refuse(error);
}

int Init(const std::vector<std::string>& args) {
  const bool empty = args.size() == 2 && args[1] == "--empty";
  if (args.size() > 2 || (args.size() == 2 && !empty)) return Usage();
  if (std::ifstream(kStateFileName)) {
    return Refuse(std::string(kStateFileName) + " already exists; `drivesim reset` replaces it");
  }
  return Save(empty ? SimState{} : DemoState());
}

int Reset(const std::vector<std::string>& args) { return args.size() == 1 ? Save(DemoState()) : Usage(); }

// Why a drive cannot be added as given, or "" when it can.
std::string AddProblem(SimState& state, const std::vector<std::string>& args) {
  const std::string &device = args[1], &version = args[2], &model = args[3], &firmware = args[4], &psid = args[5];
  if (!IsScannableDevice(device)) return device + ": the scan knows only /dev/sd[a-z] and /dev/nvmeN";
  if (FindDrive(state, device)) return device + " is already there";
  if (version != "1" && version != "2" && version != "12" && version != "No") return "VER is 1, 2, 12 or No";
  if (model.empty() || model.size() > 40) return "a model name has 1 to 40 characters";
  if (firmware.empty() || firmware.size() > 8) return "a firmware revision has 1 to 8 characters";
  if (psid.size() != 32 || psid.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ") != std::string::npos) {
    return "a PSID is 32 digits and capital letters";
  }
  if (args.size() == 7 &&
      (args[6].empty() || args[6].size() > 18 || args[6].find_first_not_of("0123456789") != std::string::npos)) {
    return "BLOCKS is a number of 512-byte blocks";
  }
  return "";
}

int Add(const std::vector<std::string>& args) {
  if (args.size() != 6 && args.size() != 7) return Usage();
  return WithState([&](SimState& state) {
    const std::string problem = AddProblem(state, args);
    if (!problem.empty()) return Refuse(problem);
    const uint64_t blocks = args.size() == 7 ? std::stoull(args[6]) : kDefaultBlocks;
    state.drives.push_back(FactoryDrive(args[1], args[2], args[3], args[4], args[5], blocks));
    return 0;
  });
}

void ShowRanges(const Drive& drive) {
  std::cout << "  Range  Start        Length       RLKEna  WLKEna  RLocked  WLocked  Key  May lock\n";
  for (int r = 0; r < kRangeCount; ++r) {
    const LockingRange& range = drive.ranges[r];
    std::cout << "  LR" << r << "    " << std::left << std::setw(12) << range.start << " " << std::setw(12)
              << range.length << " " << std::setw(7) << YesNo(range.readLockEnabled) << " " << std::setw(7)
              << YesNo(range.writeLockEnabled) << " " << std::setw(8) << YesNo(range.readLocked) << " "
              << std::setw(8) << YesNo(range.writeLocked) << " " << std::setw(4) << range.dataKey << " Admin1";
    for (int user : range.ace) std::cout << " User" << user;
    std::cout << "\n";
  }
}

void ShowUsers(const Drive& drive) {
  for (int u = 0; u < kUserCount; ++u) {
    const User& user = drive.users[u];
    std::cout << "  User" << u + 1 << "  " << (user.enabled ? "enabled " : "disabled") << "  "
              << (user.password.empty() ? "no password" : "password " + user.password) << "\n";
  }
}

void ShowDrive(const Drive& drive) {
  std::cout << drive.device << ": " << drive.model << ", firmware " << drive.firmware << ", serial " << drive.serial
            << ", Opal " << drive.opal << ", " << drive.blocks << " blocks\n"
            << "  PSID            " << drive.psid << "\n"
            << "  Owner (SID)     "
            << (IsOwned(drive) ? "taken, password " + drive.sidPassword : "not taken, factory MSID " + drive.msid)
            << "\n"
            << "  Locking SP      "
            << (drive.lockingActive ? "active, Admin1 password " + drive.admin1Password : std::string("inactive"))
            << "\n"
            << "  Locked          " << YesNo(IsLocked(drive)) << "\n"
            << "  Shadow MBR      MBREnable " << YesNo(drive.mbrEnable) << ", MBRDone " << YesNo(drive.mbrDone) << "\n"
            << "  Pre-boot image  "
            << (drive.pbaImage.empty() ? "none" : drive.pbaImage + " (" + std::to_string(drive.pbaSize) + " bytes)")
            << "\n";
  ShowRanges(drive);
  ShowUsers(drive);
}

int Show(const std::vector<std::string>& args) {
  if (args.size() > 2) return Usage();
  return WithState([&](SimState& state) {
    if (args.size() == 2 && !FindDrive(state, args[1])) return Refuse("no drive " + args[1]);
    for (const Drive& drive : state.drives) {
      if (args.size() == 1 || drive.device == args[1]) ShowDrive(drive);
    }
    if (!state.failNext.empty()) std::cout << "Next authenticated call to fail: " << state.failNext << "\n";
    return 0;
  });
}

int FailNext(const std::vector<std::string>& args) {
  if (args.size() > 2) return Usage();
  std::string command = "*";
  if (args.size() == 2) {
    const size_t start = args[1].find_first_not_of('-');
    if (start == std::string::npos) return Usage();
    command = args[1].substr(start);
  }
  return WithState([&](SimState& state) {
    state.failNext = command;
    return 0;
  });
}

struct AdminCommand {
  const char* name;
  int (*run)(const std::vector<std::string>&);
};

const AdminCommand kCommands[] = {
    {"init", Init}, {"reset", Reset}, {"add", Add}, {"show", Show}, {"fail-next", FailNext},
};

}  // namespace

int AdminMain(const std::vector<std::string>& args) {
  for (const AdminCommand& command : kCommands) {
    if (!args.empty() && args[0] == command.name) return command.run(args);
  }
  return Usage();
}

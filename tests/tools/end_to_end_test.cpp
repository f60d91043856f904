// The built veltrak-opal, started under its two names in a working
// directory, on emulated NVMe and SATA drives reached through the real
// ioctls of the emulator's preload library; `opalsim show` confirms each
// change at protocol level.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Result {
  std::string out, err;
  int status = -1;
};

std::string Slurp(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

bool Holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// A working directory with the two tool links and an emulated world of
// /dev/nvme0 and /dev/sda, factory new.
class Workplace {
 public:
  Workplace() {
    char pattern[] = "/tmp/veltrak-opal-e2e-XXXXXX";
    dir_ = mkdtemp(pattern);
    symlink(VELTRAK_OPAL_BINARY, (dir_ + "/sedutil-cli").c_str());
    symlink(VELTRAK_OPAL_BINARY, (dir_ + "/Lantivo").c_str());
    Admin("init");
    Admin("add /dev/nvme0 'ZEP NV2000 1TB' 2B2QEXM7 PSIDNVME0PSIDNVME0PSIDNVME0PSIDN");
    Admin("add /dev/sda 'KVX 480GB' SBFK71F3 PSIDSDA0PSIDSDA0PSIDSDA0PSIDSDA0");
  }
  ~Workplace() { std::system(("rm -rf '" + dir_ + "'").c_str()); }

  // A tool in the working directory, as Veltrak starts it.
  Result Tool(const std::string& line) {
    return Shell("LD_PRELOAD='" OPALSIM_PRELOAD "' ASAN_OPTIONS=verify_asan_link_order=0 ./" + line);
  }
  Result Admin(const std::string& line) { return Shell("'" OPALSIM_BINARY "' " + line); }

 private:
  Result Shell(const std::string& line) {
    std::fflush(stdout);
    const std::string command = "cd '" + dir_ + "' && OPALSIM_STATE='" + dir_ + "/state' " + line + " >out 2>err";
    const int raw = std::system(command.c_str());
    Result result;
    result.out = Slurp(dir_ + "/out");
    result.err = Slurp(dir_ + "/err");
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return result;
  }

  std::string dir_;
};

// One step of a walk-through: a command and what its output must hold.
struct Step {
  const char* name;
  std::string command;  // "D" stands for the device
  int status;
  std::vector<std::string> outHolds;
  std::vector<std::string> showHolds;  // in `opalsim show D` afterwards
};

std::string ForDevice(std::string text, const std::string& device) {
  for (size_t at; (at = text.find("{D}")) != std::string::npos;) text.replace(at, 3, device);
  return text;
}

const std::vector<Step> kWalkThrough = {
    {"ScanListsBothDrives", "sedutil-cli -n --scan", 0,
     {"/dev/nvme0  2  ZEP NV2000 1TB  ", "/dev/sda    2  KVX 480GB  "}, {}},
    {"QueryOfAFactoryDrive", "sedutil-cli -n --query {D}", 0,
     {"Locked = N, LockingEnabled = N, LockingSupported = Y"}, {"Locking SP inactive"}},
    {"Ownership", "sedutil-cli -n --initialSetup debug {D}", 0,
     {"takeOwnership complete", "Initial setup of TPer complete on {D}"},
     {"SID owned, password \"debug\"", "Locking SP active", "MBR Enable Y, Done Y"}},
    {"RangeAddress", "sedutil-cli -n --setupLockingRange 1 2048 4096 debug {D}", 0, {"LockingRange1 reKeyed "},
     {"LR1    2048        4096        N   N   N   N"}},
    {"ReadOnlyModeSwitches", "Lantivo --enableLockingRange 1 debug W {D}", 0, {"success"},
     {"LR1    2048        4096        N   Y   N   N"}},
    {"ReadOnlyModeLock", "Lantivo --setLockingRange 1 N Y debug {D}", 0, {"success"},
     {"LR1    2048        4096        N   Y   N   Y"}},
    {"UserEnabled", "sedutil-cli -n --enableUser debug User0001 {D}", 0, {"User0001 has been enabled "},
     {"User1 enabled"}},
    {"UserPassword", "sedutil-cli -n --setPassword debug User0001 u1pw {D}", 0, {"User0001 password changed"},
     {"User1 enabled, password \"u1pw\""}},
    {"RangeGranted", "Lantivo --Add_ACE_Locking_range {D} debug 1 User1", 0, {"success"},
     {"Admins User1 OR / Admins User1 OR"}},
    {"AccessList", "Lantivo --list_User_ACE_Locking_range {D} debug 1", 0,
     {"Admin1 User1 can access Locking Range 1\n"}, {}},
    {"LockingEnabled", "Lantivo --enableLockingRange 1 debug RW {D}", 0, {"success"},
     {"LR1    2048        4096        Y   Y   N   Y"}},
    {"TheGrantedUserLocks", "Lantivo --setLockingRange 1 Y Y u1pw {D} User1", 0, {"success"},
     {"LR1    2048        4096        Y   Y   Y   Y"}},
    {"AnotherUserCannot", "Lantivo --setLockingRange 1 N N debug {D} User2", 1, {},
     {"LR1    2048        4096        Y   Y   Y   Y"}},
    {"RangeView", "sedutil-cli -n --listLockingRanges debug {D}", 0,
     {"LR1 Begin 2048 for 4096\n            RLKEna = Y  WLKEna = Y  RLocked = Y  WLocked = Y \n"}, {}},
    {"UserStatus", "Lantivo --ListUserStatus debug {D}", 0, {"User1 : Enabled\nUser2 : Disabled\n"}, {}},
    {"RemoveUsers", "Lantivo --Delete_AllUser_ACE_Locking_range {D} debug 1", 0, {"success"},
     {"Admins / Admins"}},
};

TEST(EndToEnd, VeltraksWalkThroughOnNvmeAndSata) {
  for (const char* device : {"/dev/nvme0", "/dev/sda"}) {
    Workplace place;
    for (const Step& step : kWalkThrough) {
      const Result result = place.Tool(ForDevice(step.command, device));
      EXPECT_EQ(step.status, result.status) << device << " " << step.name << "\n" << result.err;
      for (const std::string& part : step.outHolds) {
        EXPECT_TRUE(Holds(result.out, ForDevice(part, device))) << device << " " << step.name << "\n" << result.out;
      }
      if (step.showHolds.empty()) continue;
      const Result show = place.Admin(std::string("show ") + device);
      for (const std::string& part : step.showHolds) {
        EXPECT_TRUE(Holds(show.out, part)) << device << " " << step.name << ": show lacks " << part << "\n" << show.out;
      }
    }
  }
}

TEST(EndToEnd, PasswordCheckAfterAFailedAuthenticationAndWhenLockedOut) {
  Workplace place;
  ASSERT_EQ(0, place.Tool("sedutil-cli -n --initialSetup debug /dev/sda").status);
  ASSERT_EQ(0, place.Admin("fail-next /dev/sda").status);
  Result refused = place.Tool("sedutil-cli -n --listLockingRanges debug /dev/sda");
  EXPECT_EQ(1, refused.status);
  EXPECT_EQ("method status code NOT_AUTHORIZED\nSession start failed rc = 1\n"
            "One or more header fields have 0 length\nEndSession Failed\n",
            refused.err);
  EXPECT_TRUE(Holds(place.Tool("sedutil-cli -n --listLockingRanges debug /dev/sda").out, "LR8 Begin"));
  for (int i = 0; i < 5; ++i) place.Tool("sedutil-cli -n --listLockingRanges wrong /dev/sda");
  Result lockedOut = place.Tool("Lantivo --ListUserStatus debug /dev/sda");
  EXPECT_EQ(1, lockedOut.status);
  EXPECT_TRUE(Holds(lockedOut.err, "locked out")) << lockedOut.err;
  ASSERT_EQ(0, place.Admin("power-cycle /dev/sda").status);
  EXPECT_EQ(0, place.Tool("Lantivo --ListUserStatus debug /dev/sda").status);
}

TEST(EndToEnd, AKernelThatBlocksSataTrustedCommandsIsNamed) {
  Workplace place;
  ASSERT_EQ(0, place.Admin("host allow-tpm 0").status);
  Result sedutil = place.Tool("sedutil-cli -n --query /dev/sda");
  EXPECT_EQ(136, sedutil.status);
  EXPECT_EQ("The Kernel flag libata.allow_tpm is not set correctly\n"
            "Please see the readme note about setting the libata.allow_tpm \n"
            "Invalid or unsupported disk /dev/sda\n",
            sedutil.err);
  Result lantivo = place.Tool("Lantivo --ListUserStatus debug /dev/sda");
  EXPECT_EQ(3, lantivo.status);
  EXPECT_TRUE(Holds(lantivo.err, "libata.allow_tpm=1")) << lantivo.err;
  // NVMe does not pass through libata: the unowned drive answers as such.
  Result nvme = place.Tool("Lantivo --ListUserStatus debug /dev/nvme0");
  EXPECT_EQ(1, nvme.status);
  EXPECT_FALSE(Holds(nvme.err, "libata")) << nvme.err;
}

TEST(EndToEnd, UnderAnyOtherNameTheProgramOnlyExplains) {
  Workplace place;
  EXPECT_EQ(136, place.Tool("sedutil-cli").status);
  EXPECT_EQ(2, place.Tool("Lantivo").status);
  std::fflush(stdout);
  const int raw = std::system("'" VELTRAK_OPAL_BINARY "' --scan >/dev/null 2>&1");
  EXPECT_EQ(2, WEXITSTATUS(raw));
}

}  // namespace

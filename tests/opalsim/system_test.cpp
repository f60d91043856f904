// The emulator as programs meet it: the opalsim command, and unmodified
// programs (ls, stat, cat, and a client built on the protocol library) run
// under the preload library, reaching the drives through the real NVMe and
// SG_IO ioctl encodings.
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <regex>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

struct Ran {
  int exit;
  std::string output;  // stdout and stderr
};

Ran Shell(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("popen");
  std::string output;
  char buffer[4096];
  for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, got);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

class System : public ::testing::Test {
 protected:
  void SetUp() override {
    char dir[] = "/tmp/opalsim-system-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    dir_ = dir;
    env_ = "OPALSIM_STATE=" + dir_ + "/state ";
  }
  void TearDown() override { Shell("rm -rf " + dir_); }
  Ran Admin(const std::string& arguments) { return Shell(env_ + OPALSIM_ADMIN " " + arguments); }
  // A program under the preload library; a sanitized client must accept a
  // library loaded before its runtime.
  Ran Preloaded(const std::string& command) {
    return Shell(env_ + "LD_PRELOAD=" OPALSIM_PRELOAD " ASAN_OPTIONS=verify_asan_link_order=0 " + command);
  }
  void AddDrives() {
    ASSERT_EQ(Admin("init").exit, 0);
    ASSERT_EQ(Admin("add /dev/nvme0 'ZEP NV2000 1TB' 2B2QEXM7 PSIDPSIDPSIDPSIDPSIDPSIDPSID0001").exit, 0);
    ASSERT_EQ(Admin("add /dev/sdb 'KVX 480GB' SBFK71F3 PSIDPSIDPSIDPSIDPSIDPSIDPSID0002").exit, 0);
  }
  std::string dir_, env_;
};

TEST_F(System, ClientSetupThroughIoctls) {
  AddDrives();
  for (const char* device : {"/dev/nvme0", "/dev/sdb"}) {
    SCOPED_TRACE(device);
    const std::regex keyOfRange1(R"(LR1 .* ([0-9a-f]{16})  )");
    std::smatch before, after;
    const std::string factory = Admin(std::string("show ") + device).output;
    ASSERT_TRUE(std::regex_search(factory, before, keyOfRange1)) << factory;
    const Ran client = Preloaded(OPALSIM_CLIENT " setup " + std::string(device));
    EXPECT_EQ(client.exit, 0);
    EXPECT_EQ(client.output,
              "discovery: ok\ntake-ownership: ok\nactivate: ok\nrange: ok\nuser: ok\ngrant: ok\nlock: ok\n");
    const std::string shown = Admin(std::string("show ") + device).output;
    for (const char* line : {R"(SID owned, password "sid-pw")", "Locking SP active (Manufactured)", "Locked Y",
                             R"(Admin1 enabled, password "sid-pw")", R"(User1 enabled, password "user1-pw")",
                             "User2 disabled"}) {
      EXPECT_NE(shown.find(line), std::string::npos) << line << " in\n" << shown;
    }
    EXPECT_TRUE(std::regex_search(shown, std::regex(R"(LR1 +2048 +4096 +Y +Y +Y +Y +0 +[0-9a-f]{16}  User1 / User1)")))
        << shown;
    ASSERT_TRUE(std::regex_search(shown, after, keyOfRange1));
    EXPECT_NE(after[1], before[1]) << "range 1 re-keyed";
  }
  // The namespace node, opened read-only, reaches the drive set up above.
  EXPECT_EQ(Preloaded(OPALSIM_CLIENT " discover /dev/nvme0n1").output,
            "node: block\nmodel: ZEP NV2000 1TB, firmware: 2B2QEXM7\nlocking enabled: 1, locked: 1\n");
}

TEST_F(System, DeviceNodes) {
  AddDrives();
  const std::string listing = Preloaded("ls /dev").output;
  for (const char* name : {"\nnvme0\n", "\nsdb\n", "\nnull\n"}) {
    EXPECT_NE(("\n" + listing).find(name), std::string::npos) << name;
  }
  EXPECT_EQ(Preloaded("stat -c %F /dev/nvme0 /dev/nvme0n1 /dev/sdb /dev/null").output,
            "character special file\nblock special file\nblock special file\ncharacter special file\n");
  // Paths that are not emulated drives go to the real system, even with the
  // real disks hidden (this machine may have none to hide).
  ASSERT_EQ(Admin("host real-disks hide").exit, 0);
  EXPECT_NE(Preloaded("ls /dev/nvme7 /dev/nvme0n2 /dev/sdc").exit, 0);
  std::ofstream(dir_ + "/plain") << "plain text\n";
  EXPECT_EQ(Preloaded("cat " + dir_ + "/plain").output, "plain text\n");
  EXPECT_EQ(Preloaded(OPALSIM_CLIENT " discover /dev/nvme7").output, "open: failed\n");
  EXPECT_EQ(Preloaded(OPALSIM_CLIENT " discover /dev/sdb").output,
            "node: block\nmodel: KVX 480GB, firmware: SBFK71F3\nlocking enabled: 0, locked: 0\n");
}

TEST_F(System, AllowTpmHostSetting) {
  struct Case {
    const char* setting;
    const char* flag;  // what reading the libata flag prints
    bool trusted;      // whether SATA trusted commands pass
  } cases[] = {{"1", "1\n", true}, {"0", "0\n", false}, {"missing", "", true}};
  AddDrives();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.setting);
    ASSERT_EQ(Admin(std::string("host allow-tpm ") + c.setting).exit, 0);
    const Ran flag = Preloaded("cat /sys/module/libata/parameters/allow_tpm");
    EXPECT_EQ(flag.exit == 0, *c.flag != '\0');
    if (flag.exit == 0) { EXPECT_EQ(flag.output, c.flag); }
    const Ran sata = Preloaded(OPALSIM_CLIENT " discover /dev/sdb");
    EXPECT_EQ(sata.exit == 0, c.trusted) << sata.output;
    EXPECT_EQ(Preloaded(OPALSIM_CLIENT " discover /dev/nvme0").exit, 0) << "NVMe does not depend on libata";
  }
}

// Every verb, in the order an administrator would use them, with its exit
// status and a piece of what it prints.
TEST_F(System, AdminCommand) {
  struct Case {
    const char* arguments;
    int exit;
    const char* prints;
  } cases[] = {
      {"--help", 0, "usage: opalsim VERB"},
      {"", 2, "usage: opalsim VERB"},
      {"init", 0, ""},
      {"show", 0, "host allow-tpm 1"},
      {"add /dev/nvme0 'ZEP NV2000 1TB' 2B2QEXM7 PSID1 --ranges 4 --users 2", 0, ""},
      {"add /dev/nvme0 X Y Z", 1, "already emulated"},
      {"add /dev/nvme0n1 X Y Z", 1, "already emulated"},
      {"add /dev/hda X Y Z", 2, "neither"},
      {"add /dev/sdb X Y Z --ranges 0", 2, "--ranges"},
      {"add /dev/sdb 'KVX 480GB' SBFK71F3 PSID2 --no-opal --blocks 1000", 0, ""},
      {R"x(add /dev/sdc "$(printf 'KVX\nend')" F P)x", 2, "model"},
      {"add /dev/sdc ' KVX' F P", 2, "model"},
      {"show /dev/sdb", 0, "SATA, no Opal, 1000 blocks"},
      {"show /dev/nvme0", 0, "4 ranges, 2 users"},
      {"show /dev/sdc", 1, "no emulated drive /dev/sdc"},
      {"set /dev/nvme0 try-limit 3", 0, ""},
      {"show /dev/nvme0n1", 0, "tries 0/3"},
      {"set /dev/nvme0 try-limit lots", 1, "cannot be lots"},
      {"set /dev/nvme0 colour blue", 1, "unknown setting colour"},
      {"set /dev/nvme0 try-limit", 2, "set takes"},
      {"fail-next /dev/nvme0 2", 0, ""},
      {"show /dev/nvme0", 0, "Next 2 authentication(s) fail"},
      {"fail-next /dev/nvme0 0", 2, "COUNT"},
      {"fail-next", 2, "fail-next takes"},
      {"power-cycle /dev/nvme0", 0, ""},
      {"power-cycle", 0, ""},
      {"power-cycle /dev/sdc", 1, "no emulated drive"},
      {"host allow-tpm missing", 0, ""},
      {"show", 0, "host allow-tpm missing"},
      {"host allow-tpm 2", 2, "host takes"},
      {"host real-disks hide", 0, ""},
      {"show", 0, "real disks hidden"},
      {"host real-disks maybe", 2, "host takes"},
      {"frobnicate", 2, "unknown verb frobnicate"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.arguments);
    const Ran ran = Admin(c.arguments);
    EXPECT_EQ(ran.exit, c.exit) << ran.output;
    EXPECT_NE(ran.output.find(c.prints), std::string::npos) << ran.output;
  }
  EXPECT_EQ(Shell("env -u OPALSIM_STATE " OPALSIM_ADMIN " show").exit, 2);
  std::ofstream(dir_ + "/state") << "opalsim-state 1\nallow-tpm 1\ndrive /dev/sda\nmodel X\nblocks many\n";
  const Ran damaged = Admin("show");
  EXPECT_EQ(damaged.exit, 2);
  EXPECT_NE(damaged.output.find("line 5: "), std::string::npos) << damaged.output;
}

}  // namespace
}  // namespace opalsim_test

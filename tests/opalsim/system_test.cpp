// The emulator as programs meet it, row by row in one shared world: the
// opalsim command ($A) with its exit statuses, and unmodified programs (ls,
// stat, cat and the client $C, built on the protocol library) run under the
// preload library ($P), reaching the drives through the real NVMe and SG_IO
// ioctl encodings.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace {

TEST(System, Session) {
  char dir[] = "/tmp/opalsim-system-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string prefix = std::string("cd ") + dir + " && exec 2>&1 && export OPALSIM_STATE=$PWD/state LC_ALL=C A=" +
                             OPALSIM_ADMIN " C=" OPALSIM_CLIENT " P='env LD_PRELOAD=" OPALSIM_PRELOAD
                             " ASAN_OPTIONS=verify_asan_link_order=0' && ";
  struct Case {
    const char* command;
    int exit;
    const char* prints;
  } cases[] = {
      {"$A --help", 0, "usage: opalsim VERB"},
      {"$A", 2, "usage: opalsim VERB"},
      {"$A show", 2, "/state"},
      {"$A init && $A show", 0, "host allow-tpm 1, real disks shown"},
      {"$A add /dev/nvme0 'ZEP NV2000 1TB' 2B2QEXM7 PSID1 --users 2 && $A show /dev/nvme0n1", 0, "8 ranges, 2 users"},
      {"$A add /dev/sdb 'KVX 480GB' SBFK71F3 PSID2 --ranges 4", 0, ""},
      {"$A add /dev/sdd K F P --no-opal --blocks 1000 && $A show /dev/sdd", 0, "SATA, no Opal, 1000 blocks"},
      {"$A add /dev/nvme0n1 X Y Z", 1, "already emulated"},
      {"$A add /dev/hda X Y Z", 2, "neither"},
      {"$A add /dev/sdc X Y Z --ranges 0", 2, "--ranges"},
      {R"x($A add /dev/sdc "$(printf 'KVX\nend')" F P)x", 2, "model"},
      {"$A add /dev/sdc ' KVX' F P", 2, "model"},
      {"$A show /dev/sdc", 1, "no emulated drive /dev/sdc"},
      {"$P ls /dev | grep -x -e null -e nvme0 -e nvme0n1 -e sdb", 0, "null\nnvme0\nnvme0n1\nsdb\n"},
      {"$P stat -c %F /dev/nvme0 /dev/nvme0n1 /dev/sdb /dev/null", 0,
       "character special file\nblock special file\nblock special file\ncharacter special file\n"},
      {"$P $C /dev/nvme0 setup && $P $C /dev/nvme0n1", 0,
       "character\nZEP NV2000 1TB 2B2QEXM7\nlocking enabled 0, locked 0\nblock\nZEP NV2000 1TB 2B2QEXM7\nlocking enabled 1, locked 1\n"},
      {"$P $C /dev/sdb setup && $P $C /dev/sdb", 0,
       "block\nKVX 480GB SBFK71F3\nlocking enabled 0, locked 0\nblock\nKVX 480GB SBFK71F3\nlocking enabled 1, locked 1\n"},
      {"$A show /dev/sdb", 0, "SID owned, password \"sid-pw\", tries 0/5\n  Locking SP active (Manufactured)\n  Locked Y\n"},
      {"$A show /dev/sdb", 0, "  LR1    2048        4096        Y   Y   Y   Y   0 "},
      {"$A host allow-tpm 0 && $P cat /sys/module/libata/parameters/allow_tpm && $P $C /dev/sdb", 1,
       "0\nblock\nKVX 480GB SBFK71F3\n"},
      {"$P $C /dev/nvme0", 0, "locked 1\n"},
      {"$A host allow-tpm missing && $P $C /dev/sdb && $P cat /sys/module/libata/parameters/allow_tpm", 1,
       "locked 1\ncat: /sys/module/libata/parameters/allow_tpm: No such file"},
      {"$A host real-disks hide && $A show", 0, "host allow-tpm missing, real disks hidden"},
      {"$P ls /dev/nvme7 /dev/nvme0n2 /dev/sdc", 2, "cannot access"},
      {"echo plain text >plain && $P cat plain", 0, "plain text\n"},
      {"$P $C /dev/nvme7", 1, "open: failed\n"},
      {"$A set /dev/nvme0 try-limit 3 && $A show /dev/nvme0", 0, "tries 0/3"},
      {"$A set /dev/nvme0 try-limit lots", 1, "cannot be lots"},
      {"$A set /dev/nvme0 colour blue", 1, "unknown setting colour"},
      {"$A set /dev/nvme0 try-limit", 2, "set takes"},
      {"$A fail-next /dev/nvme0 2 && $A show /dev/nvme0", 0, "Next 2 authentication(s) fail"},
      {"$A fail-next /dev/nvme0 0", 2, "COUNT"},
      {"$A fail-next", 2, "fail-next takes"},
      {"$A power-cycle /dev/nvme0 && $A power-cycle", 0, ""},
      {"$A power-cycle /dev/sdc", 1, "no emulated drive"},
      {"$A host allow-tpm 2", 2, "host takes"},
      {"$A frobnicate", 2, "unknown verb frobnicate"},
      // Writers and readers at once: none may lose another's change or see
      // half a file.
      {"for w in 1 2 3 4; do (for i in $(seq 25); do $A fail-next /dev/sdb; done) & done; for i in $(seq 50); do "
       "$A show >/dev/null || exit 3; done; wait; $A show /dev/sdb | grep -q 'Next 100 authentication'", 0, ""},
      {R"(printf 'opalsim-state 1\ndrive /dev/sda\nmodel X\nblocks many\n' >state && $A show)", 2, "line 4: "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    FILE* shell = popen((prefix + c.command).c_str(), "r");
    std::string output;
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, shell)) > 0;) output.append(buffer, got);
    const int status = pclose(shell);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, c.exit) << output;
    EXPECT_NE(output.find(c.prints), std::string::npos) << output;
  }
  EXPECT_EQ(system(("rm -rf " + std::string(dir)).c_str()), 0);
}

}  // namespace

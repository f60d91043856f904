// The emulator as programs meet it: the state file every process shares, the
// opalsim command, and unmodified programs under the preload library.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

// The state file's text form: an owned drive reads back as written, and a
// damaged file is refused naming the line at fault.
TEST(StateFile, TextForm) {
  // The first `find` becomes `replace`; the error must name the line where
  // `marker` stands in the replacement (or else first stands in the file).
  struct Case { const char* name; std::string find, replace, marker; };
  const Case cases[] = {
      {"wrong magic", "opalsim-state 1", "opalsim-state 2", "opalsim"},
      {"unknown key", "opal yes", "opal yes\ncolour blue", "colour"},
      {"extra word", "opal yes", "opal yes please", "opal"},
      {"bad number", "blocks 976773168", "blocks 97x", "blocks"},
      {"number beyond 64 bits", "generation 0", "generation 18446744073709551616", "generation"},
      {"flag neither 0 nor 1", "admin 1 1", "admin 1 2", "admin 1"},
      {"PIN of 33 bytes", "psid ", "psid 0000", "psid"},
      {"range lines out of order", "range 1 ", "range 2 ", "range 2"},
      {"one range line short", "ranges 8", "ranges 9", "end\n"},
      {"unknown operator in an ACE", "NOT,AND", "NOT,XOR", "NOT,XOR"},
      {"the same drive by its namespace", "end\n", "end\ndrive /dev/nvme0n1\nend\n", "drive /dev/nvme0n1"},
      {"missing end", "\nend\n", "\n", "drive "},
  };
  Sim sim;
  sim.Own().Setting("failed-start sync").drive().users[1].credential.pin = {0x00, 0xFF, 0x20};
  const std::string good = opalsim::Serialize(sim.world);
  ASSERT_EQ(opalsim::Serialize(Need(opalsim::ParseWorld(good))), good);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string text = good;
    const size_t at = text.find(c.find), inside = c.replace.find(c.marker);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, c.find.size(), c.replace);
    const size_t marker = inside != std::string::npos ? at + inside : text.find(c.marker);
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(marker), '\n');
    const Result<World> parsed = opalsim::ParseWorld(text);
    ASSERT_FALSE(parsed);
    EXPECT_EQ(parsed.error().message.rfind("line " + std::to_string(line) + ": ", 0), 0u) << parsed.error().message;
  }
}

// Row by row in one shared world: the opalsim command ($A) with its exit
// statuses, and unmodified programs (ls, stat, cat and the client $C, built
// on the protocol library) run under the preload library ($P), reaching the
// drives through the real NVMe and SG_IO ioctl encodings.
TEST(System, Session) {
  char dir[] = "/tmp/opalsim-system-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string prefix = std::string("cd ") + dir + " && exec 2>&1 && export OPALSIM_STATE=$PWD/state LC_ALL=C A=" +
                             OPALSIM_ADMIN " C=" OPALSIM_CLIENT " P='env LD_PRELOAD=" OPALSIM_PRELOAD
                             " ASAN_OPTIONS=verify_asan_link_order=0' && ";
  struct Case { const char* command; int exit; const char* prints; };
  const Case cases[] = {
      {"$A --help", 0, "usage: opalsim VERB"},
      {"$A", 2, "usage: opalsim VERB"},
      {"env -u OPALSIM_STATE $A show", 2, "set OPALSIM_STATE"},
      {"$A init && $A show", 0, "host allow-tpm 1, real disks shown"},
      {"$A add /dev/nvme0 ZEP 2B2QEXM7 PSID1 --users 2 && $A show /dev/nvme0n1", 0, "8 ranges, 2 users"},
      {"$A add /dev/sdb 'KVX 480GB' SBFK71F3 PSID2 --ranges 4", 0, ""},
      {"$A add /dev/sdd K F P --no-opal --blocks 1000 && $A show /dev/sdd", 0, "SATA, no Opal, 1000 blocks"},
      {"$A add /dev/nvme0n1 X Y Z", 1, "already emulated"},
      {"$A add /dev/hda X Y Z", 2, "neither"},
      {"$A add /dev/sdc X Y Z --ranges 0", 2, "--ranges"},
      {R"x($A add /dev/sdc "$(printf 'KVX\nend')" F P)x", 2, "model"},
      {"$P ls /dev | grep -x -e null -e nvme0 -e nvme0n1 -e sdb", 0, "null\nnvme0\nnvme0n1\nsdb\n"},
      {"$P stat -c %F /dev/nvme0 /dev/nvme0n1 /dev/sdb /dev/null", 0,
       "character special file\nblock special file\nblock special file\ncharacter special file\n"},
      {"$P $C /dev/nvme0 setup && $P $C /dev/nvme0n1", 0,
       "character\nZEP 2B2QEXM7\nlocking enabled 0, locked 0\nblock\nZEP 2B2QEXM7\nlocking enabled 1, locked 1\n"},
      {"$P $C /dev/sdb setup && $A show /dev/sdb | grep -e ' SID' -e '  Locked' -e LR0", 0,
       "block\nKVX 480GB SBFK71F3\nlocking enabled 0, locked 0\n  SID owned, password \"pw\", tries 0/5\n"
       "  Locked Y\n  LR0    0           0           Y   Y   Y   Y   0 "},
      {"$A host allow-tpm 0 && $P cat /sys/module/libata/parameters/allow_tpm && $P $C /dev/nvme0 && $P $C /dev/sdb",
       1, "0\ncharacter\nZEP 2B2QEXM7\nlocking enabled 1, locked 1\nblock\nKVX 480GB SBFK71F3\n"},
      {"$A host allow-tpm missing && $P $C /dev/sdb && $P cat /sys/module/libata/parameters/allow_tpm", 1,
       "locked 1\ncat: /sys/module/libata/parameters/allow_tpm: No such file"},
      {"$A host real-disks hide && $A show | head -1 && $P ls /dev/nvme7 /dev/nvme0n2 /dev/sdc", 2,
       "host allow-tpm missing, real disks hidden\nls: cannot access"},
      {"echo plain text >plain && $P cat plain && $P $C /dev/nvme7", 1, "plain text\nopen: failed\n"},
      {"$A set /dev/nvme0 try-limit 3 && $A show /dev/nvme0", 0, "tries 0/3"},
      {"$A set /dev/nvme0 try-limit lots", 1, "cannot be lots"},
      {"$A set /dev/nvme0 try-limit", 2, "set takes"},
      {"$A fail-next /dev/nvme0 2 && $A show /dev/nvme0", 0, "Next 2 authentication(s) fail"},
      {"$A fail-next /dev/nvme0 0", 2, "COUNT"},
      {"$A power-cycle /dev/nvme0 && $A power-cycle && $A power-cycle /dev/sdc", 1, "no emulated drive /dev/sdc"},
      {"$A host allow-tpm 2", 2, "host takes"},
      {"$A frobnicate", 2, "unknown verb frobnicate"},
      // Writers and readers at once: none may lose another's change or see
      // half a file.
      {"for w in 1 2 3 4; do (for i in $(seq 25); do $A fail-next /dev/sdb; done) & done; for i in $(seq 50); do $A "
       "show >/dev/null || t=1; done; wait; [ -z \"$t\" ] && $A show /dev/sdb | grep -q 'Next 100 auth'", 0, ""},
      {R"(printf 'opalsim-state 1\ndrive /dev/sda\nmodel X\nblocks many\n' >state && $A show)", 2, "line 4: "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    FILE* shell = popen((prefix + c.command).c_str(), "r");
    std::string output(1 << 16, '\0');
    output.resize(fread(&output[0], 1, output.size(), shell));
    const int status = pclose(shell);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, c.exit) << output;
    EXPECT_NE(output.find(c.prints), std::string::npos) << output;
  }
  EXPECT_EQ(system(("rm -rf " + std::string(dir)).c_str()), 0);
}

}  // namespace
}  // namespace opalsim_test

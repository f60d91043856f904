// The state file every process shares: damaged files are refused with the
// line at fault, the text form keeps a drive whole, and concurrent writers
// lose nothing.
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

size_t LineAt(const std::string& text, size_t position) {
  return 1 + static_cast<size_t>(std::count(text.begin(), text.begin() + static_cast<long>(position), '\n'));
}

TEST(StateFile, DamagedFilesNameTheLine) {
  // The first `find` of a good file becomes `replace`; the error must name
  // the line where `marker` stands in the replacement (or, when it is not
  // there, its first line in the file).
  struct Case {
    const char* name;
    std::string find, replace, marker;
  } cases[] = {
      {"wrong magic", "opalsim-state 1", "opalsim-state 2", "opalsim"},
      {"empty file", "", "", ""},
      {"unknown key", "opal yes\n", "opal yes\ncolour blue\n", "colour"},
      {"bad number", "blocks 976773168", "blocks 97x", "blocks"},
      {"missing value", "blocks 976773168", "blocks", "blocks"},
      {"extra word", "opal yes", "opal yes please", "opal"},
      {"number beyond 64 bits", "generation 0", "generation 99999999999999999999", "generation"},
      {"flag neither 0 nor 1", "admin 1 0", "admin 1 2", "admin 1"},
      {"odd hex PIN", "sid ", "sid a", "sid"},
      {"PIN of 33 bytes", "psid ", "psid 0000", "psid"},
      {"life cycle neither 8 nor 9", "life-cycle 8", "life-cycle 7", "life-cycle"},
      {"unknown setting", "set try-limit", "set try-harder", "set try"},
      {"setting value out of its words", "set failed-start status", "set failed-start maybe", "set"},
      {"allow-tpm neither 1, 0 nor missing", "allow-tpm 1", "allow-tpm yes", "allow-tpm"},
      {"range lines out of order", "range 1 ", "range 2 ", "range 2"},
      {"user lines out of order", "user 2 ", "user 3 ", "user 3"},
      {"one range line short", "ranges 8", "ranges 9", "end\n"},
      {"bad operator in an ACE", "mbr ", "ace 000000080003e001 0000000900000002,XOR\nmbr ", "ace"},
      {"duplicate drive by its namespace", "end\n", "end\ndrive /dev/nvme0n1\nend\n", "drive /dev/nvme0n1"},
      {"entry outside a drive", "end\n", "end\nmodel X\n", "model X"},
      {"device that is not a drive node", "drive /dev/nvme0", "drive /dev/hda", "end\n"},
      {"missing end", "\nend\n", "\n", "drive "},
  };
  Sim sim;
  const std::string good = opalsim::Serialize(sim.world);
  ASSERT_TRUE(opalsim::ParseWorld(good));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string text = c.find.empty() ? c.replace : good;
    size_t line = 1;
    if (!c.find.empty()) {
      const size_t at = text.find(c.find);
      ASSERT_NE(at, std::string::npos);
      text.replace(at, c.find.size(), c.replace);
      const size_t inside = c.replace.find(c.marker);
      line = LineAt(text, inside != std::string::npos ? at + inside : text.find(c.marker));
    }
    const Result<World> parsed = opalsim::ParseWorld(text);
    ASSERT_FALSE(parsed);
    EXPECT_EQ(parsed.error().message.rfind("line " + std::to_string(line) + ": ", 0), 0u) << parsed.error().message;
  }
}

TEST(StateFile, TextFormKeepsEverything) {
  Sim sim;
  sim.Own();
  Need(sim.Must(kAdmin1Who)->Set(RangeUid(1), {{3, Value::UInt(2048)}, {4, Value::UInt(4096)}, {9, Value::List({})}}));
  Need(SetPin(*sim.Must(kAdmin1Who), CpinUserUid(2), {0x00, 0xFF, 0x20}));
  Need(WriteAce(*sim.Must(kAdmin1Who), AceGetRangeUid(1), {AceTerm::Authority(kAdmin1), AceTerm::Authority(UserUid(1)),
                                                           AceTerm::Operator(BooleanOp::kNot),
                                                           AceTerm::Operator(BooleanOp::kAnd)}));
  EXPECT_EQ(Code(sim.Open(kUser1Who, std::string("wrong"))), kNotAuthorized);
  sim.drive().failNext = 1;
  sim.drive().settings.failedStartShape = "sync";
  sim.world.allowTpm = "missing";
  sim.world.drives.push_back(opalsim::NewDrive("/dev/sdb", "KVX 480GB", "SBFK71F3", "PSID2", 2, false));
  const std::string text = opalsim::Serialize(sim.world);
  sim.world = Need(opalsim::ParseWorld(text));
  EXPECT_EQ(opalsim::Serialize(sim.world), text);
  // The drive read back behaves as the one written.
  EXPECT_EQ(Code(sim.Open(kUser1Who)), kNotAuthorized) << "the pending forced failure";
  EXPECT_EQ(Code(sim.Open(kUser2Who, std::string("\x00\xFF\x20", 3))), 0);
  EXPECT_EQ(Need(sim.Must(kUser1Who)->Get(RangeUid(1), 3, 4)).count(3), 0u) << "Admin1 AND NOT User1";
  EXPECT_EQ(Need(ReadRange(*sim.Must(kAdmin1Who), 1)).length, 4096u);
  EXPECT_EQ(sim.drive().users[0].credential.tries, 0u) << "reset by the success";
}

// Writers in several processes each add one to a counter many times; none
// may lose another's change, and no reader may see half a file.
TEST(StateFile, ConcurrentWritersLoseNothing) {
  char dir[] = "/tmp/opalsim-state-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const opalsim::StateFile state(std::string(dir) + "/state");
  ASSERT_TRUE(state.Update([](World& world) {
    world.drives.push_back(opalsim::NewDrive("/dev/sda", "KVX", "1", "P", 1, true));
    return true;
  }, true));
  constexpr int kWriters = 4, kIncrements = 60;
  std::vector<pid_t> children;
  for (int i = 0; i < kWriters; ++i) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      int failures = 0;
      for (int n = 0; n < kIncrements; ++n) {
        failures += !state.Update([](World& world) { return ++world.drives[0].failNext, true; });
      }
      _exit(failures == 0 ? 0 : 1);
    }
    children.push_back(pid);
  }
  int torn = 0;
  for (int n = 0; n < 100; ++n) torn += !state.Read();
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(Need(state.Read()).drives[0].failNext, uint64_t{kWriters * kIncrements});
  for (const char* leftover : {"/state", "/state.lock"}) std::remove((dir + std::string(leftover)).c_str());
  rmdir(dir);
}

}  // namespace
}  // namespace opalsim_test

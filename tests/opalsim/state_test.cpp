// The state file's text form: an owned drive reads back as written, and a
// damaged file is refused naming the line at fault.
#include <gtest/gtest.h>

#include "opalsim_testing.h"

namespace opalsim_test {
namespace {

TEST(StateFile, TextForm) {
  // The first `find` becomes `replace`; the error must name the line where
  // `marker` stands in the replacement (or else first stands in the file).
  struct Case {
    const char* name;
    std::string find, replace, marker;
  } cases[] = {
      {"wrong magic", "opalsim-state 1", "opalsim-state 2", "opalsim"},
      {"unknown key", "opal yes\n", "opal yes\ncolour blue\n", "colour"},
      {"bad number", "blocks 976773168", "blocks 97x", "blocks"},
      {"extra word", "opal yes", "opal yes please", "opal"},
      {"number beyond 64 bits", "generation 0", "generation 18446744073709551616", "generation"},
      {"flag neither 0 nor 1", "admin 1 1", "admin 1 2", "admin 1"},
      {"odd hex PIN", "sid ", "sid a", "sid"},
      {"PIN of 33 bytes", "psid ", "psid 0000", "psid"},
      {"life cycle neither 8 nor 9", "life-cycle 9", "life-cycle 7", "life-cycle"},
      {"unknown setting", "set try-limit", "set try-harder", "set try"},
      {"allow-tpm neither 1, 0 nor missing", "allow-tpm missing", "allow-tpm yes", "allow-tpm"},
      {"range lines out of order", "range 1 ", "range 2 ", "range 2"},
      {"one range line short", "ranges 8", "ranges 9", "end\n"},
      {"unknown operator in an ACE", "NOT,AND", "NOT,XOR", "NOT,XOR"},
      {"the same drive by its namespace", "end\n", "end\ndrive /dev/nvme0n1\nend\n", "drive /dev/nvme0n1"},
      {"entry outside a drive", "end\n", "end\nmodel X\n", "model X"},
      {"device that is not a drive node", "drive /dev/nvme0", "drive /dev/hda", "end\n"},
      {"missing end", "\nend\n", "\n", "drive "},
  };
  Sim sim;
  sim.Own().Setting("failed-start sync").drive().users[1].credential.pin = {0x00, 0xFF, 0x20};
  sim.drive().failNext = 1;
  sim.world.allowTpm = "missing";
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

}  // namespace
}  // namespace opalsim_test

// Hostile operators: sessions on the drive simulator fed random and
// adversarial answers (random words, huge and negative numbers, bytes that
// are no text, words of 100 kB, input ending at every prompt). Each must end
// on its own within seconds, with status 0 and no sanitizer report.
//
// Answers reach the shell unquoted, so every generated word keeps to
// characters that mean nothing to it: no ; & | $ ` < > ( ) { } \ ' " * ? [ ]
// ! # ~ ^ and no slash, so nothing can run a command or name a file outside
// the session's own temporary directory.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "drivesim_sandbox.h"

namespace {

namespace fs = std::filesystem;

const std::string kWordCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_+=,.:@%";

// Bytes that are no text yet inert to the shell: control characters other
// than the blanks and line ends, DEL, and everything above ASCII.
std::string BinaryBytes() {
  std::string bytes;
  for (int b = 0; b < 256; ++b) {
    const bool blank = b == '\t' || b == '\n' || b == '\v' || b == '\f' || b == '\r' || b == ' ';
    if (b < 0x20 ? !blank : b >= 0x7f) bytes.push_back(static_cast<char>(b));
  }
  return bytes;
}

bool ShellSafe(const std::string& input) {
  for (char c : input) {
    if (std::string(";&|$`<>(){}\\'\"*?[]!#~^/").find(c) != std::string::npos) return false;
  }
  return true;
}

struct Outcome {
  int status;
  std::string screen;
};

// One session of the built veltrak on the simulator's demo drives (an owned
// ZEP drive with password Zep2024, a factory-new KVX drive, a drive of
// another maker), in a directory of its own with stand-ins for clear, sudo
// and dmidecode first on the PATH.
Outcome RunOnSimulator(const std::string& input) {
  SimSandbox sim;
  if (sim.Run("./drivesim init").status != 0) return {-2, "drivesim init failed"};
  const fs::path bin = sim.dir() + "/bin";
  fs::create_directory(bin);
  const std::pair<const char*, const char*> stand_ins[] = {
      {"clear", "#!/bin/sh\necho '[clear]'\n"},
      {"sudo", "#!/bin/sh\nexec \"$@\"\n"},
      {"dmidecode", "#!/bin/sh\necho 'System Information'\necho '\tUUID: 4C4C4544-0042-3510-8052-B4C04F4B4E32'\n"},
  };
  for (const auto& [name, script] : stand_ins) {
    std::ofstream(bin / name) << script;
    fs::permissions(bin / name, fs::perms::owner_all, fs::perm_options::add);
  }
  sim.Write(".input", input);
  const std::string command = "cd '" + sim.dir() + "' && PATH='" + bin.string() +
                              "':\"$PATH\" timeout 10 '" VELTRAK_BINARY "' < .input > .screen 2>&1";
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, sim.Read(".screen")};
}

// Printable for a failure message: bytes that are no text as \xNN, long
// words cut short.
std::string Shown(const std::string& text, size_t limit = 600) {
  std::string shown;
  for (unsigned char c : text.substr(0, limit)) {
    if (c == '\n' || (c >= 0x20 && c < 0x7f)) {
      shown.push_back(static_cast<char>(c));
    } else {
      static const char* hex = "0123456789abcdef";
      shown += std::string("\\x") + hex[c >> 4] + hex[c & 15];
    }
  }
  return text.size() > limit ? shown + "... (" + std::to_string(text.size()) + " bytes)" : shown;
}

void ExpectCleanEnd(const std::string& input, const std::string& what) {
  ASSERT_TRUE(ShellSafe(input)) << what;
  const Outcome out = RunOnSimulator(input);
  const bool sanitizer = out.screen.find("ERROR: AddressSanitizer") != std::string::npos ||
                         out.screen.find("ERROR: LeakSanitizer") != std::string::npos ||
                         out.screen.find("runtime error:") != std::string::npos;
  EXPECT_TRUE(out.status == 0 && !sanitizer)
      << what << ": status " << out.status << (out.status == 124 ? " (did not end within 10 s)" : "")
      << "\ninput:\n" << Shown(input) << "\nend of screen:\n"
      << Shown(out.screen.size() > 3000 ? out.screen.substr(out.screen.size() - 3000) : out.screen, 3000);
}

// Answers drawn from what a careless or hostile operator might type.
class HostileInput {
 public:
  explicit HostileInput(uint32_t seed) : random_(seed) {}

  std::string Answer() {
    static const std::vector<std::string> huge = {"2147483647", "2147483648", "4294967295", "4294967296",
                                                  "99999999999", "18446744073709551616",
                                                  "999999999999999999999999999999"};
    static const std::vector<std::string> negative = {"-1", "-2", "-8", "-9", "-2147483648", "-2147483649",
                                                      "-99999999999", "-0"};
    static const std::vector<std::string> odd = {"3abc", "1,2,3", "1,,2,", ",", "0,9,10", "1,1,1", "+5",
                                                 "0x10", "1e3", "007", "Y", "y", "N", "n", "yes", "default",
                                                 "PBA.img", "PBA_flash.img", "Zep2024", "-", "--scan"};
    const int kind = Pick(100);
    if (kind < 30) return std::to_string(Pick(19));
    if (kind < 45) return odd[Pick(odd.size())];
    if (kind < 60) return Word(1 + Pick(12));
    if (kind < 68) return huge[Pick(huge.size())];
    if (kind < 76) return negative[Pick(negative.size())];
    if (kind < 86) return Binary(1 + Pick(40));
    if (kind < 90) return Word(1000 + Pick(100000));
    if (kind < 95) return "";  // an empty line: only a pause takes it
    return Word(1 + Pick(5)) + " " + Word(1 + Pick(5));  // two words on a line
  }

  // An action number, mostly one the menus offer.
  std::string Action() {
    static const std::vector<int> offered = {1, 2, 3, 3, 4, 5, 6, 7, 8, 9, 11, 11, 12, 13, 14, 15, 16, 17};
    return Pick(10) == 0 ? Answer() : std::to_string(offered[Pick(offered.size())]);
  }

  // A session: sometimes first the password of the owned drive or the other
  // drive taken into ownership, so the whole menu is open, then actions
  // each followed by a few hostile answers.
  std::string Session() {
    std::string input;
    switch (Pick(4)) {
      case 0: input = "11\nZep2024\nY\n\n"; break;
      case 1: input = "1\n1\n2\nSecret1\nY\n\n"; break;
      default: break;
    }
    const int actions = 1 + Pick(8);
    for (int a = 0; a < actions; ++a) {
      input += Action() + "\n";
      const int answers = Pick(7);
      for (int k = 0; k < answers; ++k) input += Answer() + (Pick(8) == 0 ? " " : "\n");
    }
    // Most sessions run into the end of their input; some leave by action 0.
    if (Pick(3) == 0) input += "\n\n0\n";
    return input;
  }

 private:
  size_t Pick(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }

  std::string Word(size_t length) {
    std::string word;
    for (size_t i = 0; i < length; ++i) word.push_back(kWordCharacters[Pick(kWordCharacters.size())]);
    return word;
  }

  std::string Binary(size_t length) {
    static const std::string bytes = BinaryBytes();
    std::string word;
    for (size_t i = 0; i < length; ++i) word.push_back(bytes[Pick(bytes.size())]);
    return word;
  }

  std::mt19937 random_;
};

// The README's first session: a new drive taken into ownership, a range
// given an address and a mode, a user enabled and granted the range, the
// access listing, the exit. One answer per line; empty lines answer pauses.
const std::vector<std::string> kWalkthrough = {
    "1", "1", "2", "Secret1", "Y", "", "5", "1", "2048", "409600", "", "4", "1", "2",
    "1", "",  "6", "1", "UserPw1", "N", "", "8", "1", "1", "Y", "", "7", "", "0",
};

}  // namespace

TEST(HostileSessionTest, GeneratedWordsStayInertToTheShell) {
  HostileInput hostile(1);
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(ShellSafe(hostile.Session()));
  ASSERT_FALSE(ShellSafe("a;b"));  // the check itself sees a separator
}

TEST(HostileSessionTest, RandomSessionsEndCleanly) {
  for (uint32_t seed = 0; seed < 120; ++seed) {
    HostileInput hostile(seed);
    ExpectCleanEnd(hostile.Session(), "random session, seed " + std::to_string(seed));
  }
}

// Every single answer hostile, at every prompt of one path through the
// screens, with the rest of the path kept as it was.
TEST(HostileSessionTest, EachPromptOfTheWalkthroughTakesAHostileAnswer) {
  // The path itself must go through the screens, or the variations below
  // would test nothing but the exit.
  std::string path;
  for (const std::string& answer : kWalkthrough) path += answer + "\n";
  const Outcome plain = RunOnSimulator(path);
  ASSERT_EQ(plain.status, 0);
  for (const char* step : {"Enable OPAL OK", "Set done", "Enable User1 OK!!", "Set Priviledge OK!!",
                           "Access Right of Locking Range  1 :     Admin1  User1"}) {
    ASSERT_NE(plain.screen.find(step), std::string::npos) << step << "\n" << Shown(plain.screen, 5000);
  }
  HostileInput hostile(7);
  for (size_t at = 0; at + 1 < kWalkthrough.size(); ++at) {
    std::string input;
    for (size_t k = 0; k < kWalkthrough.size(); ++k) input += (k == at ? hostile.Answer() : kWalkthrough[k]) + "\n";
    ExpectCleanEnd(input, "hostile answer at position " + std::to_string(at));
  }
}

// The input ends at every prompt: after each answer, and in the middle of
// one (no final newline).
TEST(HostileSessionTest, InputEndingAtEveryPromptEndsCleanly) {
  std::string input;
  for (size_t k = 0; k + 1 < kWalkthrough.size(); ++k) {
    ExpectCleanEnd(input, "input ending after " + std::to_string(k) + " answers");
    input += kWalkthrough[k] + "\n";
    if (kWalkthrough[k].size() > 1) {
      ExpectCleanEnd(input.substr(0, input.size() - 2), "input ending inside answer " + std::to_string(k));
    }
  }
}

// Answers that stress one thing each, at the screens that read numbers,
// lists and passwords.
TEST(HostileSessionTest, ExtremeAnswersAtTheOpenMenuEndCleanly) {
  const std::string open = "11\nZep2024\nY\n\n";
  const Outcome opened = RunOnSimulator(open + "0\n");
  ASSERT_NE(opened.screen.find("Password correct"), std::string::npos) << Shown(opened.screen, 5000);
  const std::string huge = std::string(100000, '9');
  const std::string long_word = std::string(100000, 'p');
  const std::string list(50000, ',');
  const std::vector<std::string> answers = {huge, "-" + huge, long_word, list, "1," + list + "9",
                                            BinaryBytes(), std::string(1000, '\x01')};
  for (const std::string& answer : answers) {
    for (const char* action : {"4", "5", "6", "8", "9", "15", "17"}) {
      // The answer at the first prompt of the action, then at the next ones.
      ExpectCleanEnd(open + action + "\n" + answer + "\n" + answer + "\n" + answer + "\n\n0\n",
                     std::string("action ") + action + " with an answer of " + std::to_string(answer.size()) +
                         " bytes");
    }
  }
}

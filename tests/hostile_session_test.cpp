// Hostile operators: sessions in the emulated world, over our drive tools, fed random and
// adversarial answers (random words, huge and negative numbers, bytes that
// are no text, words of 100 kB, input ending anywhere). Each must end on its
// own, with status 0 and no sanitizer report.
//
// Answers reach the shell unquoted, so every generated word keeps to
// characters that mean nothing to it: no ; & | $ ` < > ( ) { } \ ' " * ? [ ]
// ! # ~ ^ and no slash, so nothing can run a command or name a file outside
// the session's own temporary directory. A guard refuses any other input
// before it is run.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "emulated_world.h"

namespace {

const std::string kWordCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_+=,.:@%";
const std::string kShellSpecial = ";&|$`<>(){}\\'\"*?[]!#~^/";
// Bytes that are no text yet inert to the shell: control characters other
// than the blanks and line ends, DEL, and everything above ASCII.
const std::string kBinaryBytes = [] {
  std::string bytes;
  for (int b = 0; b < 256; ++b) if (b < 0x20 ? !std::isspace(b) : b >= 0x7f) bytes.push_back(static_cast<char>(b));
  return bytes;
}();
// Huge, negative and malformed numbers, and words that some prompt takes.
const std::vector<std::string> kOddWords = {
    "2147483647", "2147483648", "4294967295", "4294967296", "99999999999", "18446744073709551616",
    "999999999999999999999999999999", "-1", "-2", "-8", "-9", "-2147483648", "-2147483649", "-99999999999",
    "-0", "3abc", "1,2,3", "1,,2,", ",", "0,9,10", "1,1,1", "+5", "0x10", "1e3", "007", "Y", "y", "N", "n",
    "yes", "default", "PBA.img", "PBA_flash.img", "Zep2024", "-", "--scan"};
// Answers of 100 kB, or made only of separators or of bytes that are no text.
const std::vector<std::string> kExtremes = {std::string(100000, '9'), "-" + std::string(100000, '9'),
                                            std::string(100000, 'p'), std::string(50000, ','), kBinaryBytes,
                                            "1," + std::string(50000, ',') + "9", std::string(1000, '\1')};

// What a careless or hostile operator might type, drawn from a seed.
struct HostileInput {
  std::mt19937 random;

  size_t Pick(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); }
  std::string Draw(const std::string& alphabet, size_t length) {
    std::string word(length, ' ');
    for (char& c : word) c = alphabet[Pick(alphabet.size())];
    return word;
  }
  std::string Answer() {
    const size_t kind = Pick(20);
    if (kind < 6) return std::to_string(Pick(19));
    if (kind < 13) return kOddWords[Pick(kOddWords.size())];
    if (kind < 16) return Draw(kWordCharacters, 1 + Pick(12));
    if (kind < 18) return Draw(kBinaryBytes, 1 + Pick(40));
    if (kind < 19) return Pick(2) ? Draw(kWordCharacters, 1000 + Pick(100000)) : kExtremes[Pick(kExtremes.size())];
    return Pick(2) ? "" : Draw(kWordCharacters, 1 + Pick(5)) + " " + Draw(kWordCharacters, 1 + Pick(5));
  }
  // Maybe first the password of the owned drive or a new drive taken into
  // ownership, so the whole menu is open; then action numbers from 1 to 17,
  // now and then an answer instead, each followed by a few answers. Most
  // sessions run into the end of their input; some leave by action 0.
  std::string Session() {
    std::string input = Pick(2) ? "" : Pick(2) ? "11\nZep2024\nY\n\n" : "1\n1\n2\nSecret1\nY\n\n";
    for (size_t actions = 1 + Pick(8); actions > 0; --actions) {
      input += (Pick(10) ? std::to_string(1 + Pick(17)) : Answer()) + "\n";
      for (size_t k = Pick(7); k > 0; --k) input += Answer() + (Pick(8) ? "\n" : " ");
    }
    return Pick(3) ? input : input + "\n\n0\n";
  }
};

// Runs the built veltrak in the demo's emulated world (an owned ZEP drive
// with password Zep2024, a factory-new KVX drive, a drive of another maker, a
// KVX drive with 16 ranges) with a silent clear; expects it to end by itself
// with status 0 (124: it hung) and no sanitizer report, from Veltrak or from
// the tools it ran.
std::string ExpectCleanEnd(const std::string& input, const std::string& what) {
  if (input.find_first_of(kShellSpecial) != std::string::npos) throw std::logic_error("unsafe input: " + what);
  const EmulatedWorld world;
  const EmulatedWorld::Result out = world.Veltrak(input);
  const std::string& screen = out.output;
  const bool report = screen.find("Sanitizer") != screen.npos || screen.find("runtime error:") != screen.npos;
  EXPECT_TRUE(out.status == 0 && !report) << what << ": status " << out.status << ", the screen ends "
      << testing::PrintToString(screen.substr(std::max<size_t>(screen.size(), 3000) - 3000));
  return out.output;
}

// The README's first session, one answer per line, empty lines for pauses:
// a new drive taken into ownership, a range given an address and a mode, a
// user enabled and granted the range, the access listing, the exit.
const std::string kWalkthrough = "1\n1\n2\nSecret1\nY\n\n" "5\n1\n2048\n409600\n\n" "4\n1\n2\n1\n\n"
                                 "6\n1\nUserPw1\nN\n\n" "8\n1\n1\nY\n\n" "7\n\n" "0\n";
// Every line but the last, the exit.
const size_t kWalkthroughPrompts = std::count(kWalkthrough.begin(), kWalkthrough.end(), '\n') - 1;
const std::string kOpenMenu = "11\nZep2024\nY\n\n";  // the owned drive's password

// Each case runs a few sessions by count, so that no case takes long even
// under the sanitizers on a busy machine.
class RandomSessions : public testing::TestWithParam<uint32_t> {};
class WalkthroughPrompt : public testing::TestWithParam<size_t> {};
class ExtremeAnswer : public testing::TestWithParam<size_t> {};

}  // namespace

TEST(HostileSessionTest, GeneratedInputKeepsToBytesInertToTheShell) {
  ASSERT_EQ((kWordCharacters + kBinaryBytes).find_first_of(kShellSpecial + " \t\n\v\f\r"), std::string::npos);
  for (const std::string& word : kOddWords) ASSERT_EQ(word.find_first_of(kShellSpecial), std::string::npos) << word;
  EXPECT_THROW(ExpectCleanEnd("1\na;b\n", "a command separator"), std::logic_error);
}

// The paths varied below must go through the screens, or their variations
// would test only the exit.
TEST(HostileSessionTest, ThePathsVariedGoThroughTheScreens) {
  const std::string screen = ExpectCleanEnd(kWalkthrough, "the walkthrough");
  for (const char* step : {"Enable OPAL OK", "Set done", "Enable User1 OK!!", "Set Priviledge OK!!",
                           "Access Right of Locking Range  1 :     Admin1  User1"}) {
    EXPECT_NE(screen.find(step), std::string::npos) << step << "\n" << testing::PrintToString(screen);
  }
  EXPECT_NE(ExpectCleanEnd(kOpenMenu + "0\n", "the open menu").find("Password correct"), std::string::npos);
}

TEST_P(RandomSessions, EndCleanly) {
  for (uint32_t seed = GetParam(); seed < GetParam() + 10; ++seed) {
    ExpectCleanEnd(HostileInput{std::mt19937(seed)}.Session(), "seed " + std::to_string(seed));
  }
}
INSTANTIATE_TEST_SUITE_P(HostileSession, RandomSessions, testing::Range(0u, 120u, 10u));

// The answer at one prompt of the walkthrough replaced, the rest kept.
TEST_P(WalkthroughPrompt, TakesAHostileAnswer) {
  std::istringstream lines(kWalkthrough);
  std::string input, line;
  for (size_t n = 0; std::getline(lines, line); ++n) {
    input += (n == GetParam() ? HostileInput{std::mt19937(n)}.Answer() : line) + "\n";
  }
  ExpectCleanEnd(input, "hostile answer at line " + std::to_string(GetParam() + 1));
}
INSTANTIATE_TEST_SUITE_P(HostileSession, WalkthroughPrompt, testing::Range(size_t{0}, kWalkthroughPrompts));

// One extreme answer at the first prompts of the disk selection and of each
// screen of the open menu that reads a number, a list, a password or a name.
TEST_P(ExtremeAnswer, EndsCleanlyAtEveryScreen) {
  const std::string& a = kExtremes[GetParam()];
  for (const std::string action : {"1", "4", "5", "6", "8", "9", "15", "17"}) {
    ExpectCleanEnd(kOpenMenu + action + "\n" + a + "\n" + a + "\n" + a + "\n\n0\n",
                   "action " + action + ", answer " + testing::PrintToString(a.substr(0, 20)));
  }
}
INSTANTIATE_TEST_SUITE_P(HostileSession, ExtremeAnswer, testing::Range(size_t{0}, kExtremes.size()));

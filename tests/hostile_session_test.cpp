// Hostile operators: sessions in the emulated world, over our drive tools,
// fed random and adversarial answers (huge and negative numbers, bytes that
// are no text, words of 100 kB, input ending anywhere). Each must end on its
// own, with status 0 and no sanitizer report from Veltrak or the tools.
//
// Answers reach the shell unquoted, so every generated word keeps to
// characters that mean nothing to it (no ; & | $ ` < > ( ) { } \ ' " * ? [ ]
// ! # ~ ^ and no slash); ExpectCleanEnd refuses any other input.
#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <sstream>
#include <stdexcept>

#include "emulated_world.h"

namespace {

const std::string kWordCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_+=,.:@%";
// Control characters other than blanks and line ends, DEL, everything above ASCII.
const std::string kBinaryBytes = [] {
  std::string bytes;
  for (int b = 1; b < 256; ++b) if (b < 0x20 ? !std::isspace(b) : b >= 0x7f) bytes.push_back(static_cast<char>(b));
  return bytes;
}();
const std::vector<std::string> kOddWords = {"2147483648", "4294967296", "18446744073709551616", "-1", "-9",
                                            "-2147483649", "3abc", "1,,2,", ",", "0,9,10", "+5", "0x10", "Y",
                                            "yes", "default", "PBA_flash.img", "Zep2024", "--scan"};
const std::vector<std::string> kExtremes = {std::string(100000, '9'), "-" + std::string(100000, '9'),
                                            std::string(100000, 'p'), std::string(50000, ','), kBinaryBytes};

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
    const size_t kind = Pick(10);
    if (kind < 3) return std::to_string(Pick(19));
    if (kind < 6) return kOddWords[Pick(kOddWords.size())];
    if (kind < 8) return Draw(kind == 6 ? kWordCharacters : kBinaryBytes, 1 + Pick(12));
    return kind == 8 ? kExtremes[Pick(kExtremes.size())] : "";
  }
  // Maybe an open menu first (the owned drive's password, or a new drive
  // taken into ownership); then actions, each followed by a few answers.
  // Most sessions run into the end of their input.
  std::string Session() {
    std::string input = Pick(2) ? "" : Pick(2) ? "11\nZep2024\nY\n\n" : "1\n1\n2\nSecret1\nY\n\n";
    for (size_t actions = 1 + Pick(8); actions > 0; --actions) {
      input += (Pick(10) ? std::to_string(1 + Pick(17)) : Answer()) + "\n";
      for (size_t k = Pick(7); k > 0; --k) input += Answer() + (Pick(8) ? "\n" : " ");
    }
    return Pick(3) ? input : input + "\n\n0\n";
  }
};

std::string ExpectCleanEnd(const std::string& input, const std::string& what) {
  if (input.find_first_of(";&|$`<>(){}\\'\"*?[]!#~^/") != std::string::npos) throw std::logic_error(what);
  const EmulatedWorld::Result out = EmulatedWorld().Veltrak(input);
  const bool report = out.output.find("Sanitizer") != std::string::npos ||
                      out.output.find("runtime error:") != std::string::npos;
  EXPECT_TRUE(out.status == 0 && !report) << what << ": status " << out.status << ", the screen ends "
      << testing::PrintToString(out.output.substr(std::max<size_t>(out.output.size(), 3000) - 3000));
  return out.output;
}

// Each case runs a few sessions, bounded by count.
class RandomSessions : public testing::TestWithParam<uint32_t> {};
class WalkthroughPrompt : public testing::TestWithParam<size_t> {};
class ExtremeAnswer : public testing::TestWithParam<size_t> {};

}  // namespace

TEST_P(RandomSessions, EndCleanly) {
  for (uint32_t seed = GetParam(); seed < GetParam() + 8; ++seed) {
    ExpectCleanEnd(HostileInput{std::mt19937(seed)}.Session(), "seed " + std::to_string(seed));
  }
}
INSTANTIATE_TEST_SUITE_P(HostileSession, RandomSessions, testing::Range(0u, 48u, 8u));

// The README's first session (which readme_test checks goes through every
// screen) with the answer at one of its lines replaced.
TEST_P(WalkthroughPrompt, TakesAHostileAnswer) {
  std::istringstream lines(kReadmeSession);
  std::string input, line;
  for (size_t n = 0; std::getline(lines, line); ++n) {
    input += (n == GetParam() ? HostileInput{std::mt19937(n)}.Answer() : line) + "\n";
  }
  ExpectCleanEnd(input, "hostile answer at line " + std::to_string(GetParam() + 1));
}
INSTANTIATE_TEST_SUITE_P(HostileSession, WalkthroughPrompt,
                         testing::Range(size_t{0}, size_t(std::count(kReadmeSession.begin(), kReadmeSession.end(), '\n'))));

// An extreme answer at the first prompts of the screens that read a number,
// a list, a password or a name, on the owned drive's open menu.
TEST_P(ExtremeAnswer, EndsCleanlyAtEveryScreen) {
  const std::string& a = kExtremes[GetParam()];
  for (const std::string action : {"1", "4", "5", "6", "8", "9", "15", "17"}) {
    const std::string screen = ExpectCleanEnd("11\nZep2024\nY\n\n" + action + "\n" + a + "\n" + a + "\n" + a +
                                              "\n\n0\n", "action " + action);
    EXPECT_NE(std::string::npos, screen.find("Password correct")) << "the menu never opened";
  }
}
INSTANTIATE_TEST_SUITE_P(HostileSession, ExtremeAnswer, testing::Range(size_t{0}, kExtremes.size()));

// The operator's first session in README.md, run as the README tells it in
// the demo's emulated world: every line of a screen excerpt must appear in
// the session's screen, in order (a prompt's line may end with the answer
// typed to it, which the screen does not show), and every command of a shell
// excerpt must print the lines shown under it.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "emulated_world.h"

namespace {

// Step 10 of the guide, after kReadmeSession: a revert.
const std::string kRevert = "1\n1\n" "11\nSecret1\ny\n\n" "16\ny\n\n" "0\n";
constexpr int kRevertStep = 10;

// Finds line from at on, whole or as a prompt (ending in ": ", "? " or two
// blanks) followed by the answer typed to it.
bool FindInOrder(const std::string& screen, const std::string& line, size_t& at) {
  const std::string prompt = std::regex_replace(line, std::regex("(: |\\? |  )[^ ]+$"), "$1");
  for (const std::string& part : {line, prompt}) {
    const size_t found = screen.find(part, at);
    if (found != std::string::npos) return at = found + part.size(), true;
  }
  return false;
}

void ExpectInOrder(const std::string& screen, const std::vector<std::string>& lines, const std::string& where) {
  size_t at = 0;
  for (const std::string& line : lines) {
    EXPECT_TRUE(line.empty() || FindInOrder(screen, line, at)) << where << ": \"" << line << "\"\n" << screen;
  }
}

TEST(Readme, TheFirstSessionShowsWhatTheDemoDoes) {
  const EmulatedWorld world;
  std::string screen = world.Veltrak(kReadmeSession).output;
  std::ifstream readme(VELTRAK_SOURCE_DIR "/README.md");
  bool inSection = false, inBlock = false, shell = false;
  int step = 0, blocks = 0;
  std::string command;  // the shell excerpt's command now checked
  std::vector<std::string> lines;
  auto check = [&] {
    ExpectInOrder(shell ? world.Run(command).output : screen, lines, "step " + std::to_string(step) + " " + command);
    lines.clear();
  };
  const std::regex item("^([0-9]+)\\. ");
  std::smatch number;
  for (std::string line; std::getline(readme, line);) {
    if (line.rfind("### ", 0) == 0) inSection = line == "### A first session on the emulated drives";
    if (!inSection) continue;
    const std::string text = line.compare(0, 3, "   ") == 0 ? line.substr(3) : line;
    if (text.rfind("```", 0) == 0) {
      if (inBlock) check();
      inBlock = !inBlock;
      shell = text == "```sh";
      command.clear();
      blocks += inBlock;
    } else if (inBlock && shell && text.rfind("$ ", 0) == 0) {
      if (!command.empty()) check();
      command = text.substr(2);
    } else if (inBlock) {
      lines.push_back(text);
    } else if (std::regex_search(line, number, item) && (step = std::stoi(number[1])) == kRevertStep) {
      screen = world.Veltrak(kRevert).output;
      EXPECT_NE(std::string::npos, screen.find("Disable ok !")) << screen;
    }
  }
  EXPECT_GE(blocks, 10) << "the guide's first session was not found in README.md";
  EXPECT_EQ(kRevertStep, step) << "the guide's steps changed";
}

}  // namespace

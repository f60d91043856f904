// The operator's first session in README.md, run as the README tells it in
// the demo's emulated world: every line of every screen excerpt must appear
// in the session's screen, in order (a prompt line may end with the answer
// typed to it, which the screen does not show), and every command of a shell
// excerpt must print the lines shown under it. So the guide and the program
// cannot drift apart.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "emulated_world.h"

namespace {

// The session's answers, up to step 9 and for step 10, empty lines for the
// pauses.
const std::string kFirstSession = "1\n1\n" "2\nSecret1\nY\n\n" "5\n1\n2048\n409600\n\n" "4\n1\n2\n1\n\n" "3\n\n"
                                  "6\n1\nUserPw1\nN\n\n" "8\n1\n1\nY\n\n" "7\n\n" "0\n";
const std::string kRevert = "1\n1\n" "11\nSecret1\ny\n\n" "16\ny\n\n" "0\n";
constexpr int kRevertStep = 10;

struct Excerpt {
  int step;    // the numbered step it belongs to
  bool shell;  // a ```sh block: commands and what they print
  std::vector<std::string> lines;
};

// The fenced blocks of the guide's first session, without the indentation
// of the list they stand in.
std::vector<Excerpt> Excerpts() {
  std::ifstream readme(VELTRAK_SOURCE_DIR "/README.md");
  std::vector<Excerpt> excerpts;
  bool inSection = false, inBlock = false;
  int step = 0;
  const std::regex item("^([0-9]+)\\. ");
  std::smatch number;
  for (std::string line; std::getline(readme, line);) {
    if (line.rfind("### ", 0) == 0) inSection = line == "### A first session on the emulated drives";
    if (!inSection) continue;
    const size_t fence = line.find("```");
    if (fence != std::string::npos) {
      if (!inBlock) excerpts.push_back({step, line.compare(fence, 5, "```sh") == 0, {}});
      inBlock = !inBlock;
    } else if (inBlock) {
      excerpts.back().lines.push_back(line.size() > 3 && line.compare(0, 3, "   ") == 0 ? line.substr(3) : line);
    } else if (std::regex_search(line, number, item)) {
      step = std::stoi(number[1]);
    }
  }
  return excerpts;
}

// Finds the line from at on: whole, or as a prompt whose answer (its last
// word) was typed and is not on the screen. Moves at past it.
bool FindInOrder(const std::string& screen, const std::string& line, size_t& at) {
  size_t found = screen.find(line, at);
  size_t length = line.size();
  const size_t blank = line.find_last_of(' ');
  if (found == std::string::npos && blank != std::string::npos) {
    found = screen.find(line.substr(0, blank + 1), at);
    length = blank + 1;
  }
  if (found == std::string::npos) return false;
  at = found + length;
  return true;
}

void ExpectLinesInOrder(const std::string& screen, const std::vector<std::string>& lines, const std::string& where) {
  size_t at = 0;
  for (const std::string& line : lines) {
    if (line.empty()) continue;
    EXPECT_TRUE(FindInOrder(screen, line, at)) << where << ": not found in order: \"" << line << "\"\n" << screen;
  }
}

TEST(Readme, TheFirstSessionShowsWhatTheDemoDoes) {
  const EmulatedWorld world;
  const std::vector<Excerpt> excerpts = Excerpts();
  ASSERT_GE(excerpts.size(), 10u) << "the guide's first session was not found in README.md";
  std::string screen = world.Veltrak(kFirstSession).output;
  bool reverted = false;
  for (const Excerpt& excerpt : excerpts) {
    const std::string where = "README step " + std::to_string(excerpt.step);
    if (excerpt.step >= kRevertStep && !reverted) {
      screen = world.Veltrak(kRevert).output;
      reverted = true;
      EXPECT_NE(std::string::npos, screen.find("Disable ok !")) << screen;
    }
    if (!excerpt.shell) {
      ExpectLinesInOrder(screen, excerpt.lines, where);
      continue;
    }
    // Each "$ command" and the lines it must print.
    std::string command;
    std::vector<std::string> printed;
    auto check = [&] {
      if (!command.empty()) ExpectLinesInOrder(world.Run(command).output, printed, where + ", " + command);
      printed.clear();
    };
    for (const std::string& line : excerpt.lines) {
      if (line.rfind("$ ", 0) == 0) {
        check();
        command = line.substr(2);
      } else {
        printed.push_back(line);
      }
    }
    check();
  }
  EXPECT_TRUE(reverted) << "the guide's step " << kRevertStep << " (the revert) was not found";
}

}  // namespace

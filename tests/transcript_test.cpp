// Transcript tests: every tests/transcripts/<group>/<case>.t is a keystroke
// script run through the real program beside fake tools; the whole screen,
// the tool calls and the exit status must equal the text in the file. The
// format is described in tests/transcripts/README.md.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "session_harness.h"

namespace fs = std::filesystem;

namespace {

// The line after a section's last line when that line has no newline.
const std::string kNoFinalNewline = "\\ no final newline\n";

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// The headers of the expected sections.
const std::regex kExpected("(full-)?screen|calls|status( .*)?");

// Reads the input and the expected sections of file into t, by kind, and
// registers its tools, and those of the fixtures it uses, with s. Returns
// the file without its expected sections.
std::string Load(const fs::path& file, Session& s, std::map<std::string, std::string>& t) {
  EXPECT_TRUE(fs::is_regular_file(file)) << file;
  std::istringstream text(Slurp(file));
  std::vector<std::pair<std::string, std::string>> sections;  // header without "--- ", content
  std::string head;
  for (std::string line; std::getline(text, line);) {
    if (line.compare(0, 4, "--- ") == 0) {
      sections.emplace_back(line.substr(4), "");
    } else if (!sections.empty()) {
      sections.back().second += line + "\n";
    }
    if (sections.empty() || !std::regex_match(sections.back().first, kExpected)) head += line + "\n";
  }
  for (auto& [header, body] : sections) {
    const size_t cut = body.size() - kNoFinalNewline.size();
    if (body.size() > kNoFinalNewline.size() && body.compare(cut, std::string::npos, kNoFinalNewline) == 0)
      body.resize(cut - 1);
    std::istringstream words(header);
    std::string kind, name, pattern;
    std::getline(words >> kind >> name >> std::ws, pattern);
    if (std::regex_match(kind, kExpected) || kind == "input") {
      t[kind] = kind == "status" ? name + "\n" : body;
    } else if (kind == "use") {
      Load(file.parent_path().parent_path() / "fixtures" / (name + ".tools"), s, t);
    } else if (kind == "tool") {
      s.On(name, pattern, body);
    } else {
      ADD_FAILURE() << file << ": unknown section \"" << header << "\"";
    }
  }
  return head;
}

// Each menu, from the fake clear's marker through the action prompt, becomes
// one line naming the drive and the action numbers offered.
std::string MenusAbbreviated(const std::string& screen) {
  static const std::regex kDrive(" File Descriptor: (.*)"), kOffer("\n   ([0-9]+)\\. ");
  const std::string clear = "[clear]\n", prompt = "Enter action number: ";
  std::string out;
  size_t done = 0;
  for (size_t at, end; (at = screen.find(clear, done)) != std::string::npos &&
                       (end = screen.find(prompt, at)) != std::string::npos;
       done = end + prompt.size()) {
    const std::string menu = screen.substr(at, end - at);
    std::smatch drive;
    std::regex_search(menu, drive, kDrive);
    out += screen.substr(done, at - done) + "[menu " + drive[1].str() + ":";
    for (std::sregex_iterator it(menu.begin(), menu.end(), kOffer), last; it != last; ++it)
      out += " " + (*it)[1].str();
    out += "]\n";
  }
  return out + screen.substr(done);
}

// "diff -u" of the expected and the actual text.
std::string Diff(const Session& s, const std::string& expected, const std::string& actual) {
  std::ofstream(s.dir() + "/.expected", std::ios::binary) << expected;
  std::ofstream(s.dir() + "/.actual", std::ios::binary) << actual;
  const std::string diff =
      "cd '" + s.dir() + "' && diff -u --label expected --label actual .expected .actual";
  return std::system((diff + " > .diff").c_str()) == -1 ? "(no diff)" : Slurp(s.dir() + "/.diff");
}

class TranscriptTest : public testing::TestWithParam<std::string> {};

TEST_P(TranscriptTest, Matches) {
  const fs::path file = fs::path(VELTRAK_TRANSCRIPTS) / GetParam();
  Session s;
  std::map<std::string, std::string> t;
  const std::string head = Load(file, s, t);
  s.Run(t["input"]);
  const bool full = t.count("full-screen") > 0;
  const std::pair<std::string, std::string> actual[] = {
      {full ? "full-screen" : "screen", full ? s.screen : MenusAbbreviated(s.screen)},
      {"calls", s.Calls()},
      {"status", std::to_string(s.exit_status) + "\n"}};
  std::ofstream update;  // open only when the expected sections are to be rewritten
  if (std::getenv("VELTRAK_TRANSCRIPTS_UPDATE") != nullptr)
    update.open(file, std::ios::binary), update << head;
  for (const auto& [kind, text] : actual) {
    const bool raw = text.empty() || text.back() == '\n';
    if (update.is_open()) {
      update << "--- " << kind << (kind == "status" ? " " : "\n") << text
             << (raw ? "" : "\n" + kNoFinalNewline);
    } else {
      EXPECT_TRUE(t.count(kind) > 0 && t[kind] == text)
          << file << ": section \"" << kind << (t.count(kind) > 0 ? "\" differs\n" : "\" is missing\n")
          << Diff(s, t[kind], text);
    }
  }
}

// Every .t file under the transcript directory, named after its path:
// "owner/flash-lock.t" runs as owner_flash_lock.
std::vector<std::string> AllCases() {
  std::vector<std::string> cases;
  for (const auto& entry : fs::recursive_directory_iterator(VELTRAK_TRANSCRIPTS)) {
    if (entry.path().extension() == ".t") cases.push_back(fs::relative(entry, VELTRAK_TRANSCRIPTS).string());
  }
  std::sort(cases.begin(), cases.end());
  return cases;
}

std::string CaseName(const testing::TestParamInfo<std::string>& info) {
  return std::regex_replace(fs::path(info.param).replace_extension().string(), std::regex("[^A-Za-z0-9]"),
                            "_");
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Transcripts, TranscriptTest, testing::ValuesIn(AllCases()), CaseName);

// Transcript tests: every tests/transcripts/<group>/<case>.t is a keystroke
// script run through the real program beside fake tools; its screen, with
// the tool calls where they were made, and its exit status must equal the
// text in the file. The format is described in tests/transcripts/README.md.
#include <gtest/gtest.h>

#include <regex>

#include "session_harness.h"

namespace {

// Each menu, with the query of its drive just before it, becomes one line
// naming the drive and the action numbers offered.
std::string Shortened(const std::string& screen) {
  static const std::regex kMenu("(\\$ sedutil-cli -n --query (\\S+)\n)?\\[clear\\]\n[\\s\\S]*?Enter action number: ");
  static const std::regex kDrive(" File Descriptor: (.*)"), kOffer("\n   ([0-9]+)\\. ");
  std::string out;
  size_t done = 0;
  for (std::sregex_iterator it(screen.begin(), screen.end(), kMenu), end; it != end; ++it) {
    const std::string menu = it->str();
    std::smatch drive;
    std::regex_search(menu, drive, kDrive);
    const bool queried = (*it)[2] == drive[1].str();
    out += screen.substr(done, it->position() - done) + ((*it)[1].matched && !queried ? (*it)[1].str() : "") +
           (queried ? "[menu " : "[unqueried menu ") + drive[1].str() + ":";
    for (std::sregex_iterator n(menu.begin(), menu.end(), kOffer), last; n != last; ++n) out += " " + (*n)[1].str();
    out += "]\n";
    done = it->position() + it->length();
  }
  return out + screen.substr(done);
}

class TranscriptTest : public testing::TestWithParam<std::string> {};

TEST_P(TranscriptTest, Matches) {
  const fs::path file = fs::path(VELTRAK_TRANSCRIPTS) / GetParam();
  Session s;
  std::map<std::string, std::string> t = s.Load(file);
  s.Run(t["input"]);
  const std::string screen = Shortened(s.screen), status = std::to_string(s.exit_status);
  if (std::getenv("VELTRAK_TRANSCRIPTS_UPDATE") != nullptr) {  // rewrite the expected text from this run
    const std::string text = Slurp(file);
    std::ofstream(file) << text.substr(0, text.find("--- screen\n")) << "--- screen\n" << screen
                        << (status == "0" ? "" : "--- status " + status + "\n");
    return;
  }
  EXPECT_EQ(t["screen"], screen);
  EXPECT_EQ(t.count("status") ? t["status"] : "0", status);
}

// Every .t file under the transcript directory, named after its path:
// "owner/enable-opal.t" runs as owner_enable_opal.
std::vector<std::string> AllCases() {
  std::vector<std::string> cases;
  for (const auto& entry : fs::recursive_directory_iterator(VELTRAK_TRANSCRIPTS)) {
    if (entry.path().extension() == ".t") cases.push_back(fs::relative(entry, VELTRAK_TRANSCRIPTS).string());
  }
  std::sort(cases.begin(), cases.end());
  return cases;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Transcripts, TranscriptTest, testing::ValuesIn(AllCases()),
                         [](const testing::TestParamInfo<std::string>& info) {
                           return std::regex_replace(fs::path(info.param).replace_extension().string(),
                                                     std::regex("[^A-Za-z0-9]"), "_");
                         });

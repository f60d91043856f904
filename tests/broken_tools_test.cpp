// Tools that misbehave: missing, not executable, silent, flooding, printing
// endless lines, leaving the last line open, or speaking only on standard
// error. Whatever they print is text without the phrases Veltrak looks for,
// so each place that reads them gives its designed answer for such text, and
// nothing hangs or corrupts memory. Numbers that Veltrak converts without a
// guard end it through the uncaught conversion error, and nothing worse.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "session_harness.h"
#include "tool_text.h"

namespace {

namespace fs = std::filesystem;

enum class Install { kScript, kMissing, kNotExecutable };

struct Breakage {
  const char* name;
  Install install;
  std::string output;       // shell commands printing the broken output
  std::string first_line;   // what Veltrak reads as its first line ("" for none)
};

const std::string kHundredKiB(100 * 1024, 'x');

// Every way of breaking; the two install kinds only apply to a whole tool.
const std::vector<Breakage>& Breakages() {
  static const std::vector<Breakage> all = {
      {"missing", Install::kMissing, "", "not found"},
      {"not executable", Install::kNotExecutable, "", "Permission denied"},
      {"printing nothing", Install::kScript, ":", ""},
      {"printing megabytes", Install::kScript,
       "yes 'tool output without a phrase' | head -c 8388608", "tool output without a phrase"},
      {"printing lines of 100 kB", Install::kScript,
       "for i in 1 2 3; do head -c 102400 /dev/zero | tr '\\0' x; echo; done", kHundredKiB},
      {"never ending its last line", Install::kScript, "printf 'output cut short'", "output cut short"},
      {"writing only to standard error", Install::kScript, "echo 'Invalid or unsupported disk' >&2",
       "Invalid or unsupported disk"},
  };
  return all;
}

void WriteScript(const Session& s, const std::string& tool, const std::string& body, bool executable = true) {
  const fs::path path = s.dir() + "/" + tool;
  std::ofstream(path, std::ios::binary) << "#!/bin/sh\n" << body << "\n";
  if (executable) fs::permissions(path, fs::perms::owner_all, fs::perm_options::add);
}

// Installs tool as the breakage whole.
void InstallBroken(const Session& s, const std::string& tool, const Breakage& b) {
  if (b.install == Install::kMissing) return;
  WriteScript(s, tool, b.install == Install::kScript ? b.output : "echo never runs",
              b.install == Install::kScript);
}

// A here-document printing text exactly, for the commands that still work.
std::string Print(const std::string& text) { return "cat <<'END_OF_TEXT'\n" + text + "END_OF_TEXT\n"; }

const std::string kScan = ScanText({{"/dev/sda", "2", "KVX 480GB", "SBFK71F3"}});

// A sedutil that answers the scan, and the query with `query` unless it is
// empty, and breaks on every other command.
void InstallSedutil(const Session& s, const std::string& query, const Breakage& b) {
  WriteScript(s, "sedutil-cli",
              "case \"$2\" in\n"
              "--scan)\n" + Print(kScan) + ";;\n" +
                  (query.empty() ? "" : "--query)\n" + Print(query) + ";;\n") +
                  "*)\n" + b.output + "\n;;\nesac");
}

void ExpectNoSanitizerReport(const Session& s) {
  EXPECT_EQ(s.screen.find("ERROR: AddressSanitizer"), std::string::npos);
  EXPECT_EQ(s.screen.find("ERROR: LeakSanitizer"), std::string::npos);
  EXPECT_EQ(s.screen.find("runtime error:"), std::string::npos);
}

bool Holds(const std::string& screen, const std::string& text) { return screen.find(text) != std::string::npos; }

}  // namespace

TEST(BrokenToolsTest, BrokenScanFindsNoDisks) {
  for (const Breakage& b : Breakages()) {
    SCOPED_TRACE(b.name);
    Session s;
    InstallBroken(s, "sedutil-cli", b);
    s.Run("0\n");
    EXPECT_EQ(s.exit_status, 255);
    const std::string end = "No disks found\n";
    ASSERT_GE(s.screen.size(), end.size());
    EXPECT_EQ(s.screen.substr(s.screen.size() - end.size()), end);
    ExpectNoSanitizerReport(s);
  }
}

TEST(BrokenToolsTest, ScanTextIsReadWhateverStreamOrLineEndCarriesIt) {
  const std::string device_line = "/dev/sda    2  KVX 480GB                                SBFK71F3";
  // Standard error is folded into the text; a last line without its newline
  // still counts; a model of 100 kB is a model like any other.
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"printf '%s\\n' '" + device_line + "' >&2", "KVX 480GB"},
      {"printf 'Scanning\\n%s' '" + device_line + "'", "KVX 480GB"},
      {"printf '/dev/sda    2  KVX%s  F1\\n' '" + kHundredKiB + "'", "KVX" + kHundredKiB},
  };
  for (const auto& [script, model] : cases) {
    SCOPED_TRACE(script.substr(0, 60));
    Session s;
    WriteScript(s, "sedutil-cli", script);
    s.Run("0\n");
    EXPECT_EQ(s.exit_status, 0);
    EXPECT_TRUE(Holds(s.screen, " Model Name:      " + model + "\n"));
    ExpectNoSanitizerReport(s);
  }
}

// The query and the take-ownership step both meet text without their
// phrases: the flags keep their start values and ownership says nothing.
TEST(BrokenToolsTest, BrokenQueryAndSetupLeaveTheDriveAsItWas) {
  for (const Breakage& b : Breakages()) {
    if (b.install != Install::kScript) continue;
    SCOPED_TRACE(b.name);
    Session s;
    InstallSedutil(s, "", b);
    s.Run("2\nsecret\nY\n\n0\n");
    EXPECT_EQ(s.exit_status, 0);
    EXPECT_TRUE(Holds(s.screen,
                      " OPAL Support:    Not Support\n OPAL Enable:     Disable\n OPAL Locked:     No\n"));
    EXPECT_TRUE(Holds(s.screen, "   3.  Flash Lock\n"));
    EXPECT_TRUE(Holds(s.screen, "Are you sure to use this password? (Y/N): \nEnter any key to continue..."));
    EXPECT_FALSE(Holds(s.screen, "Enable OPAL OK"));
    EXPECT_FALSE(Holds(s.screen, "Enable OPAL FAIL"));
    ExpectNoSanitizerReport(s);
  }
}

// Only "EndSession Failed" makes the range listing fail, so any other text
// passes the admin password check.
TEST(BrokenToolsTest, BrokenRangeListingPassesThePasswordCheck) {
  for (const Breakage& b : Breakages()) {
    if (b.install != Install::kScript) continue;
    SCOPED_TRACE(b.name);
    Session s;
    InstallSedutil(s, QueryText("/dev/sda", true, true), b);
    s.Run("11\nsecret\nY\n\n0\n");
    EXPECT_EQ(s.exit_status, 0);
    EXPECT_TRUE(Holds(s.screen, "Password correct\n"));
    EXPECT_TRUE(Holds(s.screen, "   3.  Look up Locking Range\n"));
    ExpectNoSanitizerReport(s);
  }
}

// The access listing reports the first line that is not an access line and
// stops; an empty output lists nothing.
TEST(BrokenToolsTest, BrokenCompanionToolIsReportedByTheAccessListing) {
  for (const Breakage& b : Breakages()) {
    SCOPED_TRACE(b.name);
    Session s;
    WriteScript(s, "sedutil-cli",
                "case \"$2\" in\n"
                "--scan)\n" + Print(kScan) + ";;\n"
                "--query)\n" + Print(QueryText("/dev/sda", false, true)) + ";;\n"
                "--listLockingRanges)\n" + Print(RangesText("/dev/sda", {{0, 0, 0}, {1, 2048, 4096}})) +
                ";;\nesac");
    InstallBroken(s, "Lantivo", b);
    s.Run("11\nsecret\nY\n\n7\n\n\n\n\n0\n");
    EXPECT_EQ(s.exit_status, 0);
    EXPECT_TRUE(Holds(s.screen, "Password correct\n"));
    const std::string error = "list lockingranges error: ";
    if (b.first_line.empty()) {
      EXPECT_FALSE(Holds(s.screen, error));
      EXPECT_FALSE(Holds(s.screen, "\nAccess Right of"));
    } else {
      const size_t at = s.screen.find(error);
      ASSERT_NE(at, std::string::npos);
      const std::string reported = s.screen.substr(at + error.size(), s.screen.find('\n', at) - at - error.size());
      if (b.install == Install::kScript) {
        EXPECT_EQ(reported, b.first_line);
      } else {
        EXPECT_TRUE(Holds(reported, "./Lantivo: " + b.first_line)) << reported;
      }
      // One report, then the listing stops.
      EXPECT_EQ(s.screen.find(error, at + 1), std::string::npos);
    }
    ExpectNoSanitizerReport(s);
  }
}

TEST(BrokenToolsTest, UnguardedNumbersEndTheProgramByTheConversionError) {
  struct Case {
    const char* name;
    std::string scan, query, ranges, input, error;
  } cases[] = {
      {"range start beyond 32 bits", kScan, QueryText("/dev/sda", true, true),
       "LR0 Begin 0 for 0\n            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n"
       "LR1 Begin 99999999999 for 8\n",
       "11\nsecret\nY\n", "std::out_of_range"},
      {"range length not a number", kScan, QueryText("/dev/sda", true, true), "LR1 Begin 0 for x\n",
       "11\nsecret\nY\n", "std::invalid_argument"},
      {"range name shorter than its prefix", kScan, QueryText("/dev/sda", true, true), "L Begin 0 for 8\n",
       "11\nsecret\nY\n", "std::out_of_range"},
      {"NVMe path without a digit", "/dev/nvmeX  2  ZEP NV2000 1TB  2B2QEXM7\n", "", "", "", "std::invalid_argument"},
      {"flags line shorter than its keys", kScan, "Locking function (0x0002)\n    Locked = Y\n", "", "0\n",
       "std::out_of_range"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Session s;
    WriteScript(s, "sedutil-cli",
                "case \"$2\" in\n--scan)\n" + Print(c.scan) + ";;\n--query)\n" + Print(c.query) +
                    ";;\n--listLockingRanges)\n" + Print(c.ranges) + ";;\nesac");
    s.Run(c.input);
    EXPECT_EQ(s.exit_status, 134);  // SIGABRT, as the shell reports it
    EXPECT_TRUE(Holds(s.screen, "terminate called after throwing an instance of '" + c.error + "'")) << s.screen;
    EXPECT_FALSE(Holds(s.screen, "Password correct"));
    ExpectNoSanitizerReport(s);
  }
}

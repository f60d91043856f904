// Tools that misbehave: missing, not executable, silent, flooding, printing
// lines of 100 kB, leaving the last line open, or speaking only on standard
// error. Whatever they print is text without the phrases Veltrak looks for,
// so each place that reads them gives its designed answer for such text, and
// nothing hangs or corrupts memory. Numbers that Veltrak converts without a
// guard end it through the uncaught conversion error, and nothing worse.
#include <gtest/gtest.h>

#include "recording_runner.h"
#include "session_harness.h"

namespace {

const std::string kHundredKiB(100 * 1024, 'x');

// A way to break: the script (none: the file is missing), whether it may run,
// and the first line of its output as the access listing reports it (for a
// tool that cannot run, the shell's message).
struct Breakage { const char* name; const char* script; bool executable; std::string first_line; };
const Breakage kBreakages[] = {
    {"missing", nullptr, true, "sh: 1: ./Lantivo: not found"},
    {"not executable", "echo never runs", false, "sh: 1: ./Lantivo: Permission denied"},
    {"printing nothing", ":", true, ""},
    {"printing megabytes", "yes 'output without a phrase' | head -c 8388608", true, "output without a phrase"},
    {"printing lines of 100 kB", "for i in 1 2 3; do printf '%102400s\\n'; done | tr ' ' x", true, kHundredKiB},
    {"never ending its last line", "printf 'output cut short'", true, "output cut short"},
    {"writing only to standard error", "echo 'Invalid or unsupported disk' >&2", true, "Invalid or unsupported disk"}};

// A script line printing text; for no text, one handing the call to ./broken.
std::string Reply(const std::string& text) { return text.empty() ? "exec ./broken" : "printf '%s' '" + text + "'"; }

// A place that reads a tool: the file that breaks (a tool, or ./broken
// standing for sedutil's commands that are not scripted; none: nothing
// breaks), sedutil's scan script, query and range listing, the input, the
// exit status, texts shown and texts never shown.
struct Place { const char* name; const char* broken; std::string scan, query, ranges, input; int status;
               std::vector<std::string> shown, hidden = {}; };

}  // namespace

TEST(BrokenToolsTest, EveryBreakageAtEveryPlaceGetsTheAnswerForTextWithoutItsPhrases) {
  const std::string drive = "/dev/sda    2  KVX 480GB" + std::string(32, ' ') + "SBFK71F3";
  const std::string scan = Reply(drive + "\n"), open = "11\nsecret\nY\n";
  const std::string locked = QueryText(true, true), end = "terminate called after throwing an instance of 'std::";
  const Place places[] = {
      {"the scan finds no drive", "sedutil-cli", "", "", "", "0\n", 255, {"No disks found\n"}},
      {"the flags keep their start values, and taking ownership says nothing", "broken", scan, "", "",
       "2\nsecret\nY\n\n0\n", 0, {" OPAL Support:    Not Support\n OPAL Enable:     Disable\n OPAL Locked:     No\n",
       "   3.  Flash Lock\n", "Are you sure to use this password? (Y/N): \nEnter any key to continue..."},
       {"Enable OPAL OK", "Enable OPAL FAIL"}},
      {"only EndSession Failed fails the password's range listing", "broken", scan, locked, "", open + "\n0\n", 0,
       {"Password correct\n", "   3.  Look up Locking Range\n"}},
      {"the access listing reports the first line that is no access line, once, and stops", "Lantivo", scan,
       QueryText(false, true), RangesText({{0, 0, 0}, {1, 2048, 4096}}), open + "\n7\n\n\n\n\n0\n", 0,
       {"Password correct\n"}, {"\nAccess Right of"}},
      // Numbers converted without a guard.
      {"range start beyond 32 bits", "", scan, locked, "LR1 Begin 99999999999 for 8\n", open, 134,
       {end + "out_of_range'"}, {"Password correct"}},
      {"device number no number", "", Reply("/dev/nvmeX  2  ZEP NV2000 1TB  2B2QEXM7\n"), "", "", "", 134,
       {end + "invalid_argument'"}},
      {"flags line shorter than its keys", "", scan, "Locking function (0x0002)\n    Locked = Y\n", "", "0\n", 134,
       {end + "out_of_range'"}},
  };
  for (const Place& p : places) {
    for (const Breakage& b : kBreakages) {
      SCOPED_TRACE(std::string(p.name) + " (broken: " + p.broken + "), " + b.name);
      Session s;
      if (p.broken != std::string("sedutil-cli")) {
        s.Write("sedutil-cli", "#!/bin/sh\ncase \"$2\" in\n--scan) " + p.scan + ";;\n--query) " + Reply(p.query) +
                                   ";;\n--listLockingRanges) " + Reply(p.ranges) + ";;\n*) exec ./broken;;\nesac\n", true);
      }
      if (*p.broken && b.script) s.Write(p.broken, "#!/bin/sh\n" + std::string(b.script) + "\n", b.executable);
      s.Run(p.input);
      std::vector<std::string> shown = p.shown, hidden = p.hidden;
      hidden.insert(hidden.end(), {"Sanitizer", "runtime error:"});
      // The access listing reports the broken tool's first line, or nothing when it has none.
      const std::string report = "lockingranges error: " + b.first_line + (b.first_line.empty() ? "" : "\n");
      if (p.broken == std::string("Lantivo")) (b.first_line.empty() ? hidden : shown).push_back(report);
      EXPECT_EQ(s.exit_status, p.status) << s.screen.substr(s.screen.size() - std::min<size_t>(s.screen.size(), 999));
      for (const std::string& text : shown) EXPECT_NE(s.screen.find(text), std::string::npos) << text.substr(0, 99);
      for (const std::string& text : hidden) EXPECT_EQ(s.screen.find(text), std::string::npos) << text;
      EXPECT_EQ(s.screen.find("lockingranges error"), s.screen.rfind("lockingranges error"));  // one report at most
      if (!*p.broken) break;  // nothing breaks: once is enough
    }
  }
}

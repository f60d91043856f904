// A command-line case: the world before, the command, the exact lines on
// each stream, the exit status, and what the drive holds after.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tool_bench.h"

namespace tooltest {

struct ToolCase {
  const char* name;
  std::function<void(Bench&)> setup;  // may be empty: the factory-new world
  std::vector<std::string> argv;
  std::vector<std::string> out;
  // Exact lines; one starting with "~" stands for a line holding the rest.
  std::vector<std::string> err;
  int status;
  std::function<void(Bench&)> after;  // may be empty
};

inline void PrintTo(const ToolCase& c, std::ostream* os) { *os << c.name; }

inline std::string CaseName(const testing::TestParamInfo<ToolCase>& info) { return info.param.name; }

inline void ExpectLines(const std::vector<std::string>& expected, const std::vector<std::string>& actual,
                        const char* stream) {
  ASSERT_EQ(expected.size(), actual.size()) << stream << ":\n" << testing::PrintToString(actual);
  for (size_t i = 0; i < expected.size(); ++i) {
    if (!expected[i].empty() && expected[i][0] == '~') {
      EXPECT_NE(actual[i].find(expected[i].substr(1)), std::string::npos) << stream << " line " << i;
    } else {
      EXPECT_EQ(expected[i], actual[i]) << stream << " line " << i;
    }
  }
}

inline Ran RunCase(Bench& bench, const ToolCase& c) {
  if (c.setup) c.setup(bench);
  Ran ran = bench.Run(c.argv);
  ExpectLines(c.out, ran.out, "stdout");
  ExpectLines(c.err, ran.err, "stderr");
  EXPECT_EQ(c.status, ran.status);
  if (c.after) c.after(bench);
  return ran;
}

// Error lines must never read as success to Veltrak.
inline void ExpectNoSuccessPhrase(const std::vector<std::string>& errorLines) {
  for (const std::string& line : errorLines) {
    for (const std::string& phrase : VeltrakSuccessPhrases()) {
      EXPECT_EQ(line.find(phrase), std::string::npos) << "\"" << line << "\" holds \"" << phrase << "\"";
    }
  }
}

// Drive set-ups the tables share.
inline void Owned(Bench& b) { Own(b.Drive()); }
inline void OwnedLockedOut(Bench& b) {
  Own(b.Drive());
  b.Drive().admins[0].credential.tries = b.Drive().settings.tryLimit;
}
inline void OwnedFailNext(Bench& b) {
  Own(b.Drive());
  b.Drive().failNext = 1;
}
inline void OwnedSixteenRanges(Bench& b) {
  b.world.drives[0] = opalsim::NewDrive(kSda, "KVX 480GB", "SBFK71F3", kSdaPsid, 16, true);
  Own(b.Drive());
}
inline void NoOpal(Bench& b) { b.world.drives[0] = opalsim::NewDrive(kSda, "KVX 480GB", "SBFK71F3", kSdaPsid, 8, false); }

}  // namespace tooltest

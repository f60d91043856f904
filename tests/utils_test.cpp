#include "utils.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Items = std::vector<std::string>;

TEST(ParseItemsTest, SplitsAtEveryDelimiterTheProgramUses) {
  struct Case {
    std::string source, delim;
    Items expected;
  } cases[] = {
      {"", ",", {}},
      {"1,,2,", ",", {"1", "2"}},
      {",,", ",", {}},
      {"LR1 Begin 0 for 8", " ", {"LR1", "Begin", "0", "for", "8"}},
      {"  leading and  trailing  ", " ", {"leading", "and", "trailing"}},
      {"/dev/sda    2  Model X  FW1", "  ", {"/dev/sda", "2", "Model X", "FW1"}},
      // An odd run of blanks leaves one blank at the front of the next item.
      {"a   b", "  ", {"a", " b"}},
      {"a b", "  ", {"a b"}},
      {"Admin1 User1 can access Locking Range 1", "can access Locking Range", {"Admin1 User1 ", " 1"}},
      // The phrase is matched whole, never as a set of characters.
      {"can access Locking Rang", "can access Locking Range", {"can access Locking Rang"}},
      {"can access Locking Range 3", "can access Locking Range", {" 3"}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ParseItems(c.source, c.delim), c.expected) << "'" << c.source << "' at '" << c.delim << "'";
  }
}

TEST(FlagAfterTest, OnlyCapitalYRightAfterTheKeyIsTrue) {
  EXPECT_TRUE(FlagAfter("    Locked = Y, LockingEnabled = N", "Locked = "));
  EXPECT_FALSE(FlagAfter("    Locked = N, LockingEnabled = Y", "Locked = "));
  EXPECT_FALSE(FlagAfter("RLKEna = y", "RLKEna = "));
  EXPECT_FALSE(FlagAfter("RLKEna =  Y", "RLKEna = "));
  // The key at the very end of the line: nothing follows, so false.
  EXPECT_FALSE(FlagAfter("RLKEna = ", "RLKEna = "));
  // An absent key examines the character at key length - 1.
  EXPECT_TRUE(FlagAfter("abY", "XYZ"));
  EXPECT_THROW(FlagAfter("ab", "XYZW"), std::out_of_range);
}

TEST(LineReadersTest, StopAtTheFirstMatchAndEchoUpToIt) {
  std::stringstream output("one\ntwo match\nthree match\n");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(ReadUntilLineWith(output, "match", Echo::kShow));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "one\ntwo match\n");
  std::string rest;
  std::getline(output, rest);
  EXPECT_EQ(rest, "three match");

  std::stringstream silent("no\nphrase\n");
  testing::internal::CaptureStdout();
  EXPECT_FALSE(ReadUntilLineWith(silent, "match", Echo::kSilent));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(LineReadersTest, EveryLineMustHoldThePhrase) {
  std::stringstream empty("");
  EXPECT_TRUE(EveryLineHolds(empty, "success"));
  std::stringstream all("a success\nsuccess b");
  EXPECT_TRUE(EveryLineHolds(all, "success"));
  std::stringstream banner("Lantivo v2\nsuccess\n");
  EXPECT_FALSE(EveryLineHolds(banner, "success"));
  std::stringstream blank("success\n\n");
  EXPECT_FALSE(EveryLineHolds(blank, "success"));
}

TEST(CommandRunnerTest, CapturesEverythingTheShellPrints) {
  // A line far longer than any read buffer, and no final newline.
  const std::string long_line(100000, 'x');
  EXPECT_EQ(GetExecutedResult(("printf '%s' " + long_line).c_str()), long_line);
  EXPECT_EQ(GetExecutedResult("printf 'a\\nb'"), "a\nb");
  EXPECT_EQ(GetExecutedResult("echo hidden >&2"), "");
}

TEST(CommandRunnerTest, ResponseFoldsStandardErrorInAndReadsFromTheStart) {
  std::stringstream response = GetCmdResponse("{ echo out; echo err >&2; printf last; }");
  std::vector<std::string> lines;
  for (std::string line; std::getline(response, line);) lines.push_back(line);
  EXPECT_EQ(lines, (Items{"out", "err", "last"}));
}

TEST(CommandRunnerTest, ShellErrorsArriveAsText) {
  std::stringstream response = GetCmdResponse("./no-such-tool --scan ");
  EXPECT_NE(response.str().find("no-such-tool"), std::string::npos);
}

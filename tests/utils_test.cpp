#include "utils.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

using Items = std::vector<std::string>;

TEST(ParseItemsTest, SplitsAtEveryDelimiterTheProgramUses) {
  struct Case { std::string source, delim; Items expected; } cases[] = {
      {"", ",", {}},
      {"1,,2,", ",", {"1", "2"}},
      {"  LR1 Begin  0 for 8 ", " ", {"LR1", "Begin", "0", "for", "8"}},
      {"/dev/sda    2  Model X  FW1", "  ", {"/dev/sda", "2", "Model X", "FW1"}},
      {"a   b", "  ", {"a", " b"}},  // an odd run of blanks leaves one in front of the next item
      {"Admin1 User1 can access Locking Range 1", "can access Locking Range", {"Admin1 User1 ", " 1"}},
      {"can access Locking Rang", "can access Locking Range", {"can access Locking Rang"}},  // whole only
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ParseItems(c.source, c.delim), c.expected) << "'" << c.source << "' at '" << c.delim << "'";
  }
}

TEST(FlagAfterTest, OnlyCapitalYRightAfterTheKeyIsTrue) {
  struct Case { std::string line, key; bool expected; } cases[] = {
      {"    Locked = Y, LockingEnabled = N", "Locked = ", true},
      {"RLKEna = y", "RLKEna = ", false},
      {"RLKEna =  Y", "RLKEna = ", false},
      {"RLKEna = ", "RLKEna = ", false},  // nothing after the key
      {"abY", "XYZ", true},               // an absent key reads the character at key length - 1
  };
  for (const Case& c : cases) EXPECT_EQ(FlagAfter(c.line, c.key), c.expected) << c.line;
  EXPECT_THROW(FlagAfter("ab", "XYZW"), std::out_of_range);
}

TEST(CommandRunnerTest, CapturesOutputWholeAndFoldsStandardErrorIntoResponses) {
  const std::string long_line(100000, 'x');  // far longer than any read buffer, no final newline
  EXPECT_EQ(GetExecutedResult(("echo hidden >&2; printf '%s\\nb' " + long_line).c_str()), long_line + "\nb");
  std::stringstream response = GetCmdResponse("{ echo out; echo err >&2; printf last; }");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(response), {}), "out\nerr\nlast");
  EXPECT_NE(GetCmdResponse("./no-such-tool --scan ").str().find("no-such-tool"), std::string::npos);
  // The flash lock's UUID command keeps its standard error out of the result.
  std::string uuid;
  EXPECT_TRUE(shellCmd("echo err >&2; echo out", uuid));
  EXPECT_EQ(uuid, "out\n");
}

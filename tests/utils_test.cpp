// The command runner through the real shell, and the flag test of the tools'
// "Key = Y" listings.
#include "utils.h"

#include <gtest/gtest.h>

#include <iterator>

TEST(CommandRunnerTest, CapturesOutputWholeAndFoldsStandardErrorIntoResponses) {
  const std::string long_line(100000, 'x');  // far longer than any read buffer, no final newline
  EXPECT_EQ(GetExecutedResult(("echo hidden >&2; printf '%s\\nb' " + long_line).c_str()), long_line + "\nb");
  std::stringstream response = GetCmdResponse("{ echo out; echo err >&2; printf last; }");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(response), {}), "out\nerr\nlast");
  // The flash lock's UUID command keeps its standard error out of the result.
  std::string uuid;
  EXPECT_TRUE(shellCmd("echo err >&2; echo out", uuid));
  EXPECT_EQ(uuid, "out\n");
}

TEST(FlagAfterTest, OnlyCapitalYRightAfterTheKeyIsTrue) {
  struct Case { std::string line; bool expected; } cases[] = {
      {"    Locked = Y, LockingEnabled = N", true}, {"Locked = y", false}, {"Locked =  Y", false}, {"Locked = ", false}};
  for (const Case& c : cases) EXPECT_EQ(FlagAfter(c.line, "Locked = "), c.expected) << c.line;
}

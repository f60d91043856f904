// The end of input is never an answer: for every prompt of every screen, a
// session whose input ends there stops at that prompt with status 0, and
// nothing has been sent to a drive but what the answers before it asked for.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "session_harness.h"
#include "tool_text.h"

namespace {

using Calls = std::vector<std::string>;

// A prompt as the screen ends with it, the answer typed to it, and the calls
// that change a drive which that answer sends.
struct Step { std::string prompt, answer; Calls sends = {}; };
// A screen: the keys that reach it, then its prompts in order.
struct Screen { const char* name; std::string keys; std::vector<Step> steps; };
void PrintTo(const Screen& screen, std::ostream* out) { *out << screen.name; }

const std::string kPause = "\nEnter any key to continue...";
const std::string kOpen = "11\npw\ny\n\n";  // the admin password of /dev/sda: the whole menu
const std::string kFactory = "1\n1\n";      // selects /dev/sdb, not yet owned
const std::string kSed = "sedutil-cli -n ", kLan = "Lantivo ";

const Screen kScreens[] = {
    {"Menu", "", {{"Enter action number: ", "1"}, {"Select a disk by number: ", "0"}}},
    {"AdminPassword", "11\n",
     {{"Please enter your admin password (w/o space): ", "pw"}, {"(Y/N): ", "y"}, {"Password correct\n" + kPause, ""}}},
    {"EnableOpal", kFactory + "2\n",
     {{"Please enter your admin password (w/o space): ", "new"},
      {"Are you sure to use this password? (Y/N): ", "y", {kSed + "--initialSetup new /dev/sdb"}},
      {"Enable OPAL OK\n" + kPause, ""}}},
    {"FlashLock", kFactory + "3\n",
     {{"Are you sure to flash lock(Y/N)?\n", "y",
       {kSed + "--initialSetup 000011 /dev/sdb", kLan + "--enableLockingRange 0 000011 RW /dev/sdb",
        kLan + "--setLockingRange 0 Y Y 000011 /dev/sdb", kSed + "--setMBRDone OFF 000011 /dev/sdb",
        kSed + "--loadPBAimage 000011 PBA_flash.img /dev/sdb", kSed + "--setMBRDone ON 000011 /dev/sdb"}},
      {"Please poweroff \n", ""}}},
    {"RangeView", kOpen + "3\n", {{"=\n" + kPause, ""}}},
    {"RangeState", kOpen + "4\n",
     {{"others:exit  ", "1"}, {"Read and Write LocK)? ", "2"},
      {"(1: enable; others: diasble)? ", "1",
       {kLan + "--disableLockingRange 1 pw R /dev/sda", kLan + "--enableLockingRange 1 pw W /dev/sda",
        kLan + "--setLockingRange 1 N Y pw /dev/sda"}},
      {kPause, ""}}},
    {"RangeAddress", kOpen + "5\n",
     {{"others: exit  ", "1"}, {"Where should this LR begin (align 8)? ", "2048"},
      {"What is this LR's length (align 8)? ", "4096", {kSed + "--setupLockingRange 1 2048 4096 pw /dev/sda"}},
      {"Set done\n" + kPause, ""}}},
    {"UserPassword", kOpen + "6\n",
     {{"Which User you want to setup (1 ~ 9)? ", "1"},
      {"Please enter User1's password (w/o space): ", "secret",
       {kSed + "--enableUser pw User0001 /dev/sda", kSed + "--setPassword pw User0001 secret /dev/sda"}},
      {"Do you want to continue setting user's password? (Y/N)\n", "n"}, {kPause, ""}}},
    {"AccessRights", kOpen + "7\n", {{"Locking Range  2 :     Admin1\n" + kPause, ""}}},
    {"Grant", kOpen + "8\n",
     {{"Which Locking Range you want to setup (0 ~ 8)? ", "1"},
      {"Please enter which users to give lock privilege (e.g. 1,2,3 ): ", "1,2"},
      {"Are you sure to give them priviledge? (Y/N): ", "y",
       {kLan + "--Add_ACE_Locking_range /dev/sda pw 1 User1 User2"}},
      {kPause, ""}}},
    {"RemoveUsers", kOpen + "9\n",
     {{"Which Locking Range you want to setup (0~8)?\n", "1",
       {kLan + "--Delete_AllUser_ACE_Locking_range /dev/sda pw 1"}},
      {"Do you want to continue removing? (Y/N)\n", "n"}, {kPause, ""}}},
    {"MbrEnable", kOpen + "13\n",
     {{"Enable(Y) or Disable(N) ?  ", "y", {kSed + "--setMBREnable ON pw /dev/sda"}}, {kPause, ""}}},
    {"MbrDone", kOpen + "14\n",
     {{"SetMBRDone ON(Y)  or  OFF(N) ?  ", "y", {kSed + "--setMBRDone ON pw /dev/sda"}}, {kPause, ""}}},
    {"Image", kOpen + "15\n",
     {{"Enter image name/path ( or key 'default' ):   ", "default", {kSed + "--loadPBAimage pw PBA.img /dev/sda"}},
      {kPause, ""}}},
    {"Revert", kOpen + "16\n",
     {{"Are you sure to disable? (Y/N): ", "y",
       {kSed + "--disableLockingRange 0 pw /dev/sda", kSed + "--revertNoErase pw /dev/sda",
        kSed + "--revertTPer pw /dev/sda"}},
      {"Disable ok !\n" + kPause, ""}}},
    {"Erase", "17\n",
     {{"Please enter your PSID (w/o space): ", "XQJ"},
      {"Are you sure this is your PSID? (Y/N): ", "y",
       {kSed + "--yesIreallywanttoERASEALLmydatausingthePSID 80213657490812736459018273645091 /dev/sda"}},
      {"Erase All Data FAIL\n" + kPause, ""}}},
};

// The calls that only read: the scan, the query, the listings, the UUID.
const std::regex kReadOnly("sudo dmidecode|.* --(scan|query|listLockingRanges|list_User_ACE_Locking_range|"
                           "ListUserStatus)( .*)?");

// /dev/sda owned with password pw and three ranges, /dev/sdb not yet owned
// until its ownership is taken; every other change succeeds.
void ScriptTools(Session& s) {
  s.On("sedutil-cli", "-n --scan",
       ScanText({{"/dev/sda", "2", "KVX 480GB", "F1"}, {"/dev/sdb", "2", "KVX 960GB", "F1"}}))
      .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, true))
      .On("sedutil-cli", "-n --query /dev/sdb", QueryText("/dev/sdb", false, false))
      .On("sedutil-cli", "-n --query /dev/sdb", QueryText("/dev/sdb", false, true))
      .On("sedutil-cli", "-n --listLockingRanges pw /dev/sda",
          RangesText("/dev/sda", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}))
      .On("sedutil-cli", "-n --initialSetup *", "takeOwnership complete\n")
      .On("sedutil-cli", "-n --setupLockingRange *", "LockingRange1 reKeyed \n")
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw 1", "Admin1 User1 can access Locking Range 1\n")
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw *", "Admin1 can access Locking Range 2\n")
      .On("Lantivo", "*", "success\n")
      .On("sudo", "dmidecode", "\tUUID: 0000-11\n");
}

class EndOfInputTest : public testing::TestWithParam<Screen> {};

TEST_P(EndOfInputTest, EndsTheProgramAtEachPromptAndSendsNothingMore) {
  const Screen& screen = GetParam();
  std::string input = screen.keys;
  Calls sent;
  for (const Step& step : screen.steps) {
    SCOPED_TRACE("input ending at \"" + step.prompt + "\"");
    Session s;
    ScriptTools(s);
    s.Run(input);
    EXPECT_EQ(s.exit_status, 0);
    const size_t size = s.screen.size(), end = size - std::min(size, step.prompt.size());
    EXPECT_EQ(s.screen.substr(end), step.prompt)
        << "the screen ends " << testing::PrintToString(s.screen.substr(size - std::min<size_t>(size, 300)));
    Calls changes;
    std::istringstream calls(s.Calls());
    for (std::string call; std::getline(calls, call);) {
      if (!std::regex_match(call, kReadOnly)) changes.push_back(call);
    }
    EXPECT_EQ(changes, sent);
    input += step.answer + "\n";
    sent.insert(sent.end(), step.sends.begin(), step.sends.end());
  }
}

INSTANTIATE_TEST_SUITE_P(EveryScreen, EndOfInputTest, testing::ValuesIn(kScreens),
                         [](const testing::TestParamInfo<Screen>& info) { return std::string(info.param.name); });

}  // namespace

// Whole sessions of the real program in one scripted world
// (transcripts/fixtures/world.tools), each judged by the end of its screen
// and by the calls that change a drive: the end of input at every prompt of
// every screen, which ends the program there without sending anything that
// no answer asked for; and the answers that each screen refuses or reads its
// own way.
#include <gtest/gtest.h>

#include <regex>

#include "session_harness.h"

namespace {

using Calls = std::vector<std::string>;

const std::string kPause = "\nEnter any key to continue...", kOpen = "11\npw\ny\n\n";  // the whole menu of /dev/sda
const std::string kFactory = "1\n1\n";  // selects /dev/sdb, not yet owned
const std::string kUuid = "4C4C4544004235108052B4c04f384d32", kPsid = "80213657490812736459018273645091";
const std::string kErase = "--yesIreallywanttoERASEALLmydatausingthePSID ", kEraseFailed = "Erase All Data FAIL\n" + kPause;
const std::string kWrongIndex = "Wrong index choosen!!\n" + kPause, kGranted = "Set Priviledge OK!!\n\n" + kPause;

// Command lines as the fake tools log them: sedutil's on /dev/sd<drive>.
std::string Sed(const std::string& operands, const std::string& drive = "a") {
  return "sedutil-cli -n " + operands + " /dev/sd" + drive;
}
std::string Lan(const std::string& operands) { return "Lantivo " + operands; }

// Runs the program on input: the screen, without the tools' calls, must end
// with end, and the calls that change a drive must be sends.
void ExpectSession(const std::string& input, const std::string& end, const Calls& sends) {
  static const std::regex kCall("\\$ (sedutil-cli|Lantivo|sudo) .*\n"),
      kReadOnly("sudo dmidecode|.* --(scan|query|listLockingRanges|list_User_ACE_Locking_range|ListUserStatus)( .*)?");
  Session s;
  s.Load(fs::path(VELTRAK_TRANSCRIPTS) / "fixtures" / "world.tools");
  s.Run(input);
  EXPECT_EQ(s.exit_status, 0);
  const std::string screen = std::regex_replace(s.screen, kCall, "");
  EXPECT_EQ(screen.substr(screen.size() - std::min(screen.size(), end.size())), end)
      << "the screen ends " << testing::PrintToString(screen.substr(screen.size() - std::min<size_t>(screen.size(), 300)));
  Calls changes;
  std::istringstream calls(s.Calls());
  for (std::string call; std::getline(calls, call);) {
    if (!std::regex_match(call, kReadOnly)) changes.push_back(call);
  }
  EXPECT_EQ(changes, sends);
}

// A prompt as the screen ends with it, the answer typed to it, and the calls
// that change a drive which that answer sends.
struct Step { std::string prompt, answer; Calls sends = {}; };
// A screen: the keys that reach it, then its prompts in order.
struct Screen { const char* name; std::string keys; std::vector<Step> steps; };

const Screen kScreens[] = {
    {"Menu", "", {{"Enter action number: ", "1"}, {"Select a disk by number: ", "0"}}},
    {"AdminPassword", "11\n",
     {{"Please enter your admin password (w/o space): ", "pw"},
      {"Your password is: pw\nAre you sure this is your admin password? (Y/N): ", "y"}, {"Password correct\n" + kPause, ""}}},
    {"EnableOpal", kFactory + "2\n",
     {{"Please enter your admin password (w/o space): ", "new"},
      {"Your password is: new\nAre you sure to use this password? (Y/N): ", "y", {Sed("--initialSetup new", "b")}},
      {"Enable OPAL OK\n" + kPause, ""}}},
    // The password is the machine's UUID without hyphens; the global range's
    // refusal to lock is reported and the steps go on.
    {"FlashLock", kFactory + "3\n",
     {{"Are you sure to flash lock(Y/N)?\n", "y",
       {Sed("--initialSetup " + kUuid, "b"), Lan("--enableLockingRange 0 " + kUuid + " RW /dev/sdb"),
        Sed("--setMBRDone OFF " + kUuid, "b"), Sed("--loadPBAimage " + kUuid + " PBA_flash.img", "b"),
        Sed("--setMBRDone ON " + kUuid, "b")}},
      {"Enable OPAL OK\nSetLockingRange Error\nMBRDone set \nPlease wait...   \nWriting PBA to /dev/sda\n"
       "PBA image  written to /dev/sda\nMBRDone set \n\nPlease poweroff \n", ""}}},
    {"RangeView", kOpen + "3\n", {{"=\n" + kPause, ""}}},
    {"RangeState", kOpen + "4\n",
     {{"Which Locking Range you want to setup (0 ~ 9)? others:exit  ", "1"},
      {"Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write LocK)? ", "2"},
      {"Enable or disable Locking Range (1: enable; others: diasble)? ", "1",
       {Lan("--disableLockingRange 1 pw R /dev/sda"), Lan("--enableLockingRange 1 pw W /dev/sda"),
        Lan("--setLockingRange 1 N Y pw /dev/sda")}},
      {kPause, ""}}},
    // Lines are shown up to the one that reports the range re-keyed.
    {"RangeAddress", kOpen + "5\n",
     {{"Which LR you want to setup (1 ~ 9)?  others: exit  ", "1"}, {"Where should this LR begin (align 8)? ", "2048"},
      {"What is this LR's length (align 8)? ", "4096", {Sed("--setupLockingRange 1 2048 4096 pw")}},
      {"(align 8)? LockingRange1 reKeyed \nSet done\n" + kPause, ""}}},
    {"UserPassword", kOpen + "6\n",
     {{"Which User you want to setup (1 ~ 9)? ", "1"},
      {"Please enter User1's password (w/o space): ", "secret",
       {Sed("--enableUser pw User0001"), Sed("--setPassword pw User0001 secret")}},
      {"The password is: secret\nUser0001 has been enabled \nEnable User1 OK!!\nSet User1 password OK!!\n\n"
       "Do you want to continue setting user's password? (Y/N)\n", "n"},
      {kPause, ""}}},
    {"AccessRights", kOpen + "7\n", {{"Locking Range  2 :     Admin1\n" + kPause, ""}}},
    {"Grant", kOpen + "8\n",
     {{"Which Locking Range you want to setup (0 ~ 8)? ", "1"},
      {"Please enter which users to give lock privilege (e.g. 1,2,3 ): ", "1,2"},
      {"Are you sure to give them priviledge? (Y/N): ", "y", {Lan("--Add_ACE_Locking_range /dev/sda pw 1 User1 User2")}},
      {kPause, ""}}},
    {"RemoveUsers", kOpen + "9\n",
     {{"Which Locking Range you want to setup (0~8)?\n", "1", {Lan("--Delete_AllUser_ACE_Locking_range /dev/sda pw 1")}},
      {"Do you want to continue removing? (Y/N)\n", "n"}, {kPause, ""}}},
    // The shadow MBR's switch hides the tool's lines; its done flag and the image show them.
    {"MbrEnable", kOpen + "13\n",
     {{"Enable(Y) or Disable(N) ?  ", "y", {Sed("--setMBREnable ON pw")}}, {"Disable(N) ?  " + kPause, ""}}},
    {"MbrDone", kOpen + "14\n",
     {{"SetMBRDone ON(Y)  or  OFF(N) ?  ", "y", {Sed("--setMBRDone ON pw")}}, {"MBRDone set \n" + kPause, ""}}},
    {"Image", kOpen + "15\n",
     {{"Enter image name/path ( or key 'default' ):   ", "default", {Sed("--loadPBAimage pw PBA.img")}},
      {"Please wait...   \nWriting PBA to /dev/sda\nPBA image  written to /dev/sda\n" + kPause, ""}}},
    {"Revert", kOpen + "16\n",
     {{"Are you sure to disable? (Y/N): ", "y",
       {Sed("--disableLockingRange 0 pw"), Sed("--revertNoErase pw"), Sed("--revertTPer pw")}},
      {"Disable ok !\n" + kPause, ""}}},
    // Offered before the admin password; a warning line before the tool's
    // report of success makes the erase fail.
    {"Erase", "17\n",
     {{"Please enter your PSID (w/o space): ", "XQJ"},
      {"Your PSID is: " + kPsid + "\nAre you sure this is your PSID? (Y/N): ", "y", {Sed(kErase + kPsid)}}, {kEraseFailed, ""}}},
};

class EndOfInput : public testing::TestWithParam<Screen> {};

TEST_P(EndOfInput, EndsTheProgramAtEachPromptAndSendsNothingMore) {
  std::string input = GetParam().keys;
  Calls sent;
  for (const Step& step : GetParam().steps) {
    SCOPED_TRACE("input ending at \"" + step.prompt + "\"");
    ExpectSession(input, step.prompt, sent);
    input += step.answer + "\n";
    sent.insert(sent.end(), step.sends.begin(), step.sends.end());
  }
}

INSTANTIATE_TEST_SUITE_P(EveryScreen, EndOfInput, testing::ValuesIn(kScreens),
                         [](const testing::TestParamInfo<Screen>& info) { return std::string(info.param.name); });

// The keys of a whole session (its input ends at the last pause), the end of
// its screen and the calls that change a drive.
struct Answer { const char* name; std::string keys, end; Calls sends = {}; };

const Answer kAnswers[] = {
    {"ActionBeyondInt", "99999999999\n", "Enter action number: Unsupported action\n"},
    // Only a number that names a drive selects it.
    {"DiskCountKeepsTheSelection", kFactory + "1\n2\n17\nXQJ\ny\n", kEraseFailed, {Sed(kErase + kPsid, "b")}},
    {"NegativeDiskKeepsTheSelection", kFactory + "1\n-1\n17\nXQJ\ny\n", kEraseFailed, {Sed(kErase + kPsid, "b")}},
    // A wrong admin password is reported and forgotten, so 11 is offered again.
    {"AdminPasswordWrong", "11\nbad\ny\n", "(Y/N): Password wrong, please try again\n" + kPause},
    {"AdminPasswordWrongIsForgotten", "11\nbad\ny\n\n11\n", "Please enter your admin password (w/o space): "},
    {"FlashLockDeclined", kFactory + "3\nn\n", "(Y/N)?\n" + kPause},
    // Action 4 takes ranges of the list, modes 1, 2 and anything else, and
    // acts only for the enable answer 1.
    {"StateRangePastTheList", kOpen + "4\n10\n", "others:exit  " + kWrongIndex},
    {"StateEnableOtherThanOne", kOpen + "4\n1\n1\n2\n", "diasble)? " + kPause},
    {"StateLeadingDigitsAndReadWrite", kOpen + "4\n3x\n1abc\n1\n", "diasble)? " + kPause,
     {Lan("--disableLockingRange 3 pw RW /dev/sda"), Lan("--setLockingRange 3 N N pw /dev/sda")}},
    {"StateWordsAreRangeZeroAndLock", kOpen + "4\nabc\nx\n1\n", "diasble)? " + kPause,
     {Lan("--enableLockingRange 0 pw RW /dev/sda"), Lan("--setLockingRange 0 Y Y pw /dev/sda")}},
    {"StateStopsAtARefusal", kOpen + "4\n2\n2\n1\n", "diasble)? SetLockingRange Error\n" + kPause,
     {Lan("--disableLockingRange 2 pw R /dev/sda"), Lan("--enableLockingRange 2 pw W /dev/sda")}},
    // Action 5: ranges 1 to the last, start and length widened with their sign.
    {"AddressGlobalRange", kOpen + "5\n0\n", "others: exit  " + kWrongIndex},
    {"AddressRangePastTheList", kOpen + "5\n10\n", "others: exit  " + kWrongIndex},
    {"AddressSignWidenedAndNonNumbersZero", kOpen + "5\n2x\n-8\n2147483648\n", "Set done\n" + kPause,
     {Sed("--setupLockingRange 2 18446744073709551608 0 pw")}},
    {"AddressRefused", kOpen + "5\n1\n3\n5\n", "setupLockingRange Failed \nSetupLockingRange Error\n" + kPause,
     {Sed("--setupLockingRange 1 3 5 pw")}},
    // Action 6: users 1 to 9, while the answer is Y or y; a password is set
    // even when enabling its user failed.
    {"UserZero", kOpen + "6\n0\n", "(1 ~ 9)? " + kWrongIndex},
    {"UserTen", kOpen + "6\n10\n", "(1 ~ 9)? " + kWrongIndex},
    {"UsersWhileYes", kOpen + "6\n3abc\ns3cret\nY\n9\nnine\nn\n",
     "The password is: nine\nmethod status code NOT_AUTHORIZED\nEnable User9 fail!!\nSet User9 password fail!!\n\n"
     "Do you want to continue setting user's password? (Y/N)\n" + kPause,
     {Sed("--enableUser pw User0003"), Sed("--setPassword pw User0003 s3cret"), Sed("--enableUser pw User0009"),
      Sed("--setPassword pw User0009 nine")}},
    // Action 8: ranges 0 to 8 whatever the drive has, users 0 to 9.
    {"GrantRangeNine", kOpen + "8\n9\n", "(0 ~ 8)? Wrong locking range choosen!!\n" + kPause},
    {"GrantRangeEight", kOpen + "8\n8\n9\ny\n", kGranted, {Lan("--Add_ACE_Locking_range /dev/sda pw 8 User9")}},
    {"GrantUserTen", kOpen + "8\n1\n10\n", "Only support User1 ~ User9!!\n" + kPause},
    {"GrantUserWord", kOpen + "8\n1\n1,b,99\n", "Wrong user list input!!\n" + kPause},
    {"GrantLeadingDigitsRepeatsAndEmptyPieces", kOpen + "8\nx\n2x,0,,1,1,\ny\n", kGranted,
     {Lan("--Add_ACE_Locking_range /dev/sda pw 0 User2 User0 User1 User1")}},
    {"GrantNeedsExactlyY", kOpen + "8\n1\n1\nyes\n", "(Y/N): \n" + kPause},
    {"GrantTakesOneWord", kOpen + "8\n1\n1, 2\n", "result:  User1 \nAre you sure to give them priviledge? (Y/N): \n" + kPause},
    // Action 9: ranges of the list, while the answer is Y or y; the removal
    // itself refuses range 9, and range 10 is past the list.
    {"RemoveRangeNineSendsNothing", kOpen + "9\n9\nn\n", "(Y/N)\n" + kPause},
    {"RemoveWhileYes", kOpen + "9\n1\nY\nx\ny\n10\n", "(0~8)?\n" + kWrongIndex,
     {Lan("--Delete_AllUser_ACE_Locking_range /dev/sda pw 1"), Lan("--Delete_AllUser_ACE_Locking_range /dev/sda pw 0")}},
    {"MbrEnableOffUnlessY", kOpen + "13\nyes\n", "Disable(N) ?  " + kPause, {Sed("--setMBREnable OFF pw")}},
    {"MbrDoneOffUnlessY", kOpen + "14\nN\n", "OFF(N) ?  MBRDone set \n" + kPause, {Sed("--setMBRDone OFF pw")}},
    {"ImageDefaultOnlySoWritten", kOpen + "15\nDefault\n", "written to /dev/sda\n" + kPause, {Sed("--loadPBAimage pw Default")}},
    // The pause takes " i" of the rest, and "mage.img" at the action prompt ends the program.
    {"ImageFirstWordOnly", kOpen + "15\nmy image.img\n", "Enter action number: ", {Sed("--loadPBAimage pw my")}},
    {"RevertNeedsExactlyY", kOpen + "16\nyes\n", "disable? (Y/N): " + kPause},
    {"EraseOk", "17\nABCDEFGHIJKLMNOPQRSTUVWXYZ012345\ny\n", "Erase All Data OK\n" + kPause,
     {Sed(kErase + "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345")}},
    {"EraseKeywordIsUppercase", "17\nxqj\ny\n", "PSID length is wrong\n" + kPause},
    {"ErasePsidOf33", "17\n" + std::string(33, 'A') + "\ny\n", "PSID length is wrong\n" + kPause},
    {"EraseNeedsYes", "17\nXQJ\nN\n", "PSID? (Y/N): " + kPause},
};

class Answers : public testing::TestWithParam<Answer> {};

TEST_P(Answers, EndTheScreenAndSendWhatTheyAskFor) { ExpectSession(GetParam().keys, GetParam().end, GetParam().sends); }

INSTANTIATE_TEST_SUITE_P(EveryScreen, Answers, testing::ValuesIn(kAnswers),
                         [](const testing::TestParamInfo<Answer>& info) { return std::string(info.param.name); });

}  // namespace

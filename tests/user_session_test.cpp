// Whole sessions of the user password screen (6).
#include <gtest/gtest.h>

#include "owned_session.h"

namespace {

using Calls = std::vector<std::string>;

// Every range lists Admin1 and User1, so User1's status shows all three.
Session& WithUsers(Session& s) {
  OwnedDrive(s, ThreeRanges())
      .On("Lantivo", "--list_User_ACE_Locking_range *", "Admin1 User1 can access Locking Range 1\n")
      .On("Lantivo", "--ListUserStatus pw /dev/sda", "User1 : Enabled\nUser2 : Disabled\n");
  return s;
}

const std::string kUserStatus =
    "User1 : Enabled, LR0 LR1 LR2 \nUser2 : Disabled, N/A\n----------------------------\n";

const Calls kStatusCalls{"Lantivo --list_User_ACE_Locking_range /dev/sda pw 0",
                         "Lantivo --list_User_ACE_Locking_range /dev/sda pw 1",
                         "Lantivo --list_User_ACE_Locking_range /dev/sda pw 2",
                         "Lantivo --ListUserStatus pw /dev/sda"};

const std::string kWhichUser = "Which User you want to setup (1 ~ 9)? ";
const std::string kContinue = "\nDo you want to continue setting user's password? (Y/N)\n";

}  // namespace

TEST(UserSessionTest, EnablesUsersAndSetsTheirPasswordsUntilNo) {
  Session s;
  WithUsers(s)
      .On("sedutil-cli", "-n --enableUser pw User0003 /dev/sda", "User0003 has been enabled \nnot shown\n")
      .On("sedutil-cli", "-n --setPassword pw User0003 s3cret /dev/sda", "User0003 password changed\n")
      .On("sedutil-cli", "-n --enableUser pw User0009 /dev/sda", kWrongPasswordText)
      .On("sedutil-cli", "-n --setPassword pw User0009 nine /dev/sda", kWrongPasswordText);
  s.Run(kLogin + "6\n3abc\ns3cret\ny\n9\nnine\nn\n\n");
  EXPECT_EQ(ActionOutput(s, 2),
            kUserStatus + kWhichUser +
                "Please enter User3's password (w/o space): The password is: s3cret\n"
                "User0003 has been enabled \nEnable User3 OK!!\nSet User3 password OK!!\n" +
                kContinue + kWhichUser +
                "Please enter User9's password (w/o space): The password is: nine\n" + kWrongPasswordText +
                "Enable User9 fail!!\nSet User9 password fail!!\n" + kContinue + kPause);
  // The users are listed once, and User9's password is set although
  // enabling it failed.
  Calls expected = kStatusCalls;
  for (const char* call : {"sedutil-cli -n --enableUser pw User0003 /dev/sda",
                           "sedutil-cli -n --setPassword pw User0003 s3cret /dev/sda",
                           "sedutil-cli -n --enableUser pw User0009 /dev/sda",
                           "sedutil-cli -n --setPassword pw User0009 nine /dev/sda"}) {
    expected.push_back(call);
  }
  EXPECT_EQ(CallsAfterLogin(s), expected);
}

TEST(UserSessionTest, RefusesUserNumbersOutsideOneToTheSupportedCount) {
  for (const std::string user : {"0", "-1", "10", "abc", "4294967297", ""}) {
    Session s;
    WithUsers(s);
    s.Run(kLogin + "6\n" + user + (user.empty() ? "" : "\n\n"));
    EXPECT_EQ(ActionOutput(s, 2), kUserStatus + kWhichUser + "Wrong index choosen!!\n" + kPause) << user;
    EXPECT_EQ(CallsAfterLogin(s), kStatusCalls) << user;
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(UserSessionTest, InputEndingAfterTheUserNumberSetsAnEmptyPassword) {
  Session s;
  WithUsers(s).On("sedutil-cli", "-n --enableUser pw User0002 /dev/sda", "User0002 has been enabled \n");
  s.Run(kLogin + "6\n2\n");
  EXPECT_EQ(ActionOutput(s, 2),
            kUserStatus + kWhichUser +
                "Please enter User2's password (w/o space): The password is: \n"
                "User0002 has been enabled \nEnable User2 OK!!\nSet User2 password fail!!\n" +
                kContinue + kPause);
  Calls expected = kStatusCalls;
  expected.push_back("sedutil-cli -n --enableUser pw User0002 /dev/sda");
  expected.push_back("sedutil-cli -n --setPassword pw User0002 /dev/sda");  // the shell drops the empty word
  EXPECT_EQ(CallsAfterLogin(s), expected);
  EXPECT_EQ(s.exit_status, 0);
}

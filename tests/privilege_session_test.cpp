// Whole sessions of the privilege screens: the access list (7), granting
// the lock privilege (8) and removing all users (9).
#include <gtest/gtest.h>

#include "owned_session.h"

namespace {

using Calls = std::vector<std::string>;

Session& WithAccessLists(Session& s, const std::vector<RangeEntry>& ranges = ThreeRanges()) {
  OwnedDrive(s, ranges)
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw 0", "Admin1 can access Locking Range 0\n")
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw 1",
          "Admin1 User1 User3 can access Locking Range 1\n");
  return s;
}

// The access list of the three ranges; range 2's list is empty.
const std::string kAccessList =
    "\nAccess Right of Locking Range  0 :     Admin1\n"
    "Access Right of Locking Range  1 :     Admin1  User1  User3\n";

Calls AccessListCalls(int ranges = 3) {
  Calls calls;
  for (int i = 0; i < ranges; ++i)
    calls.push_back("Lantivo --list_User_ACE_Locking_range /dev/sda pw " + std::to_string(i));
  return calls;
}

Calls Concat(Calls first, const Calls& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const std::string kWhichRange = "Which Locking Range you want to setup (0 ~ 8)? ";
const std::string kWhichUsers = "Please enter which users to give lock privilege (e.g. 1,2,3 ): ";
const std::string kConfirm = "Are you sure to give them priviledge? (Y/N): ";

}  // namespace

TEST(PrivilegeSessionTest, AccessListIsShownThenPaused) {
  Session s;
  WithAccessLists(s);
  s.Run(kLogin + "7\n\n");
  EXPECT_EQ(ActionOutput(s, 2), kAccessList + kPause);
  EXPECT_EQ(CallsAfterLogin(s), AccessListCalls());
}

TEST(PrivilegeSessionTest, MalformedAccessLineStopsTheListWithItsOwnPause) {
  Session s;
  OwnedDrive(s, ThreeRanges())
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw 0", "Admin1 can access Locking Range 0\n")
      .On("Lantivo", "--list_User_ACE_Locking_range /dev/sda pw 1", "method status code NOT_AUTHORIZED\n");
  s.Run(kLogin + "7\nab\n");
  EXPECT_EQ(ActionOutput(s, 2),
            "\nAccess Right of Locking Range  0 :     Admin1\n"
            "list lockingranges error: method status code NOT_AUTHORIZED\n" +
                kPause + kPause);
  EXPECT_EQ(CallsAfterLogin(s), AccessListCalls(2));
  EXPECT_EQ(ScreensOf(s.screen).size(), 4u);
}

TEST(PrivilegeSessionTest, GrantBuildsTheUserListFromTheAnswer) {
  struct Case {
    std::string range, users, text, grant;
  } cases[] = {
      {"2", "1,3", "User1 User3 ", "2 User1 User3"},
      {"x", "2x", "User2 ", "0 User2"},  // a non-number is range 0
      {"8", "9", "User9 ", "8 User9"},   // 8 is allowed whatever the drive has
      {"0", "0", "User0 ", "0 User0"},
      {"1", "1,1", "User1 User1 ", "1 User1 User1"},
      {"1", ",", "", "1"},
      {"99999999999", "1,,2,", "User1 User2 ", "0 User1 User2"},
  };
  for (const Case& c : cases) {
    Session s;
    WithAccessLists(s).On("Lantivo", "--Add_ACE_Locking_range *", "ACE added\n");
    s.Run(kLogin + "8\n" + c.range + "\n" + c.users + "\ny\n\n");
    EXPECT_EQ(ActionOutput(s, 2), kAccessList + "\n\n" + kWhichRange + kWhichUsers +
                                      "The user list is: result:  " + c.text + "\n" + kConfirm +
                                      "Set Priviledge OK!!\n\n" + kPause)
        << c.range << " " << c.users;
    EXPECT_EQ(CallsAfterLogin(s),
              Concat(AccessListCalls(), {"Lantivo --Add_ACE_Locking_range /dev/sda pw " + c.grant}))
        << c.range << " " << c.users;
  }
}

TEST(PrivilegeSessionTest, GrantRefusesBadRangesAndUsers) {
  struct Case {
    std::string answers, shown;
  } cases[] = {
      {"9\n", kWhichRange + "Wrong locking range choosen!!\n"},
      {"-1\n", kWhichRange + "Wrong locking range choosen!!\n"},
      {"1\n10\n", kWhichRange + kWhichUsers + "Only support User1 ~ User9!!\n"},
      {"1\n1,-1\n", kWhichRange + kWhichUsers + "Only support User1 ~ User9!!\n"},
      {"1\na\n", kWhichRange + kWhichUsers + "Wrong user list input!!\n"},
      {"1\n1,b,99\n", kWhichRange + kWhichUsers + "Wrong user list input!!\n"},
  };
  for (const Case& c : cases) {
    Session s;
    WithAccessLists(s);
    s.Run(kLogin + "8\n" + c.answers + "\n");
    EXPECT_EQ(ActionOutput(s, 2), kAccessList + "\n\n" + c.shown + kPause) << c.answers;
    EXPECT_EQ(CallsAfterLogin(s), AccessListCalls()) << c.answers;
  }
}

TEST(PrivilegeSessionTest, GrantWithoutAYesChangesNothing) {
  struct Case {
    std::string rest, text;
  } cases[] = {
      {"1,2\nn\n\n", "User1 User2 "}, {"1,2\nyes\n\n", "User1 User2 "},
      {"1, 2\n\n", "User1 "},  // the blank ends the list; "2" answers the question
      {"1,2\n", "User1 User2 "},      {"", ""},
  };
  for (const Case& c : cases) {
    Session s;
    WithAccessLists(s);
    s.Run(kLogin + "8\n1\n" + c.rest);
    EXPECT_EQ(ActionOutput(s, 2), kAccessList + "\n\n" + kWhichRange + kWhichUsers +
                                      "The user list is: result:  " + c.text + "\n" + kConfirm + "\n" +
                                      kPause)
        << c.rest;
    EXPECT_EQ(CallsAfterLogin(s), AccessListCalls()) << c.rest;
    EXPECT_EQ(s.exit_status, 0);
  }
}

namespace {

const std::string kWhichToClear = "Which Locking Range you want to setup (0~8)?\n";
const std::string kRemoved =
    "remove done\n\n" + kAccessList + "\n\nDo you want to continue removing? (Y/N)\n";
const Calls kRefresh{"sedutil-cli -n --listLockingRanges pw /dev/sda"};

Calls RemovalCalls(const std::string& range) {
  return Concat({"Lantivo --Delete_AllUser_ACE_Locking_range /dev/sda pw " + range}, AccessListCalls());
}

}  // namespace

TEST(PrivilegeSessionTest, RemoveRepeatsWhileTheAnswerIsYes) {
  Session s;
  WithAccessLists(s);
  s.Run(kLogin + "9\n1\ny\n2\nY\nx\nN\n\n");
  EXPECT_EQ(ActionOutput(s, 2),
            kWhichToClear + kRemoved + kWhichToClear + kRemoved + kWhichToClear + kRemoved + kPause);
  // The ranges are read once; a non-number clears range 0.
  EXPECT_EQ(CallsAfterLogin(s),
            Concat(Concat(Concat(kRefresh, RemovalCalls("1")), RemovalCalls("2")), RemovalCalls("0")));
}

TEST(PrivilegeSessionTest, RemoveRefusesRangesPastTheDrivesList) {
  for (const std::string answers : {"3\n", "-1\n", "9\n", "1\ny\n8\n"}) {
    Session s;
    WithAccessLists(s);
    s.Run(kLogin + "9\n" + answers + "\n");
    const bool second = answers.size() > 3;
    EXPECT_EQ(ActionOutput(s, 2),
              (second ? kWhichToClear + kRemoved : "") + kWhichToClear + "Wrong index choosen!!\n" + kPause)
        << answers;
    EXPECT_EQ(CallsAfterLogin(s), second ? Concat(kRefresh, RemovalCalls("1")) : kRefresh) << answers;
  }
}

TEST(PrivilegeSessionTest, RemoveOnRangeNineIsAcceptedButSentNowhere) {
  // A drive with ten ranges accepts 9; the removal itself refuses it.
  std::vector<RangeEntry> ranges;
  for (unsigned i = 0; i < 10; ++i) ranges.push_back({i, 0, 0});
  Session s;
  WithAccessLists(s, ranges);
  s.Run(kLogin + "9\n9\nn\n\n");
  EXPECT_EQ(ActionOutput(s, 2), kWhichToClear + kRemoved + kPause);
  EXPECT_EQ(CallsAfterLogin(s), Concat(kRefresh, AccessListCalls(10)));
}

TEST(PrivilegeSessionTest, RemoveWithInputEndedClearsRangeZeroOnce) {
  Session s;
  WithAccessLists(s);
  s.Run(kLogin + "9\n");
  EXPECT_EQ(ActionOutput(s, 2), kWhichToClear + kRemoved + kPause);
  EXPECT_EQ(CallsAfterLogin(s), Concat(kRefresh, RemovalCalls("0")));
  EXPECT_EQ(s.exit_status, 0);
}

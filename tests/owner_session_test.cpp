// Whole sessions of owner set-up (2), the flash lock (3 on a drive not yet
// enabled) and the admin password (11).
#include <gtest/gtest.h>

#include <algorithm>

#include "owned_session.h"

namespace {

using Calls = std::vector<std::string>;

const char* kInitialSetupOk =
    "takeOwnership complete\n"
    "Locking SP Activate Complete\n"
    "LockingRange0 disabled \n"
    "Initial setup of TPer complete on /dev/sda\n";

const std::string kTakeOwnershipFailed =
    std::string(kWrongPasswordText) +
    "takeOwnership failed\nInitial setup failed - unable to take ownership\n";

// A factory drive: Opal 2, not enabled. Later queries answer with the queue
// given, the last repeating.
Session& FactoryDrive(Session& s, const std::vector<bool>& enabledAfter = {}) {
  s.On("sedutil-cli", "-n --scan", ScanText({kOwnedDrive}))
      .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, false));
  for (bool enabled : enabledAfter)
    s.On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, enabled));
  return s;
}

const std::string kFullMenu =
    "=================================================\n"
    "|                  Veltrak v1.1.20051           |\n"
    "=================================================\n"
    " File Descriptor: /dev/sda\n"
    " Model Name:      KVX 480GB\n"
    " Firmware Version:     SBFK71F3\n"
    " OPAL Version:    2\n"
    " OPAL Support:    Support\n"
    " OPAL Enable:     Enable\n"
    " OPAL Locked:     No\n"
    "\n"
    " Action:\n"
    "   0.  Exit\n"
    "   1.  Select Disk\n"
    "\n"
    "   3.  Look up Locking Range\n"
    "   4.  Set State of Locking Range\n"
    "   5.  Set Address of Locking Range\n"
    "\n"
    "   6.  Set User's Password\n"
    "\n"
    "   7.  Check Access Right of Locking Range\n"
    "   8.  Set Previleges to Locking Range\n"
    "   9.  Remove All Users from Locking Range\n"
    "\n"
    "   13. Set MBR Enable or not\n"
    "   14. Set/Unset MBR\n"
    "   15. Load Pre-Boot Authorization Image\n"
    "\n"
    "   16. Disable OPAL (revert)\n"
    "   17. Erase All Data\n"
    "\n"
    "-------------------------------------------------\n"
    "Enter action number: ";

const std::string kPasswordPrompt = "Please enter your admin password (w/o space): ";

const std::string kConfirmNewPassword = "Are you sure to use this password? (Y/N): ";

std::string AskedNewPassword(const std::string& password) {
  return kPasswordPrompt + "Your password is: " + password + "\n" + kConfirmNewPassword;
}

}  // namespace

TEST(OwnerSessionTest, EnableOpalAsksUntilYesThenTakesOwnership) {
  Session s;
  FactoryDrive(s, {true});
  s.On("sedutil-cli", "-n --initialSetup third /dev/sda", kInitialSetupOk)
      .On("sedutil-cli", "-n --listLockingRanges third /dev/sda", RangesText("/dev/sda", ThreeRanges()));
  s.Run("2\nfirst\nn\nsecond\nyes\nthird\ny\n\n");
  EXPECT_EQ(ActionOutput(s, 1), AskedNewPassword("first") + AskedNewPassword("second") +
                                    AskedNewPassword("third") + "Enable OPAL OK\n" + kPause);
  EXPECT_EQ(s.CallsOf("sedutil-cli"),
            (Calls{"-n --scan", "-n --query /dev/sda", "-n --initialSetup third /dev/sda",
                   "-n --query /dev/sda", "-n --listLockingRanges third /dev/sda", "-n --query /dev/sda"}));
  // The password is held, so the next menu is the full one.
  const std::vector<std::string> screens = ScreensOf(s.screen);
  ASSERT_EQ(screens.size(), 3u);
  EXPECT_EQ(screens[2], kFullMenu);
  EXPECT_EQ(s.exit_status, 0);
}

TEST(OwnerSessionTest, EnableOpalVerdictComesFromTheFirstLineWithAPhrase) {
  struct Case {
    std::string output, message;
    bool owned;
  } cases[] = {
      {kTakeOwnershipFailed, "Enable OPAL FAIL\n", false},
      {"Invalid or unsupported disk /dev/sda\n", "", false},
      {"", "", false},
      // "complete" is looked for first on each line.
      {"takeOwnership failed or takeOwnership complete\n", "Enable OPAL OK\n", true},
      {"takeOwnership failed\ntakeOwnership complete\n", "Enable OPAL FAIL\n", false},
  };
  for (const Case& c : cases) {
    Session s;
    FactoryDrive(s, {c.owned});
    s.On("sedutil-cli", "-n --initialSetup pw /dev/sda", c.output);
    s.Run("2\npw\nY\n\n");
    EXPECT_EQ(ActionOutput(s, 1), AskedNewPassword("pw") + c.message + kPause) << c.output;
    const Calls expected = c.owned ? Calls{"-n --initialSetup pw /dev/sda", "-n --query /dev/sda",
                                           "-n --listLockingRanges pw /dev/sda"}
                                   : Calls{"-n --initialSetup pw /dev/sda"};
    Calls calls = s.CallsOf("sedutil-cli");
    calls.erase(calls.begin(), calls.begin() + 2);  // scan, first query
    calls.pop_back();                               // query of the next menu
    EXPECT_EQ(calls, expected) << c.output;
  }
}

TEST(OwnerSessionTest, EnableOpalEndsTheProgramWhenInputDiesBeforeAYes) {
  for (const std::string input : {"2\n", "2\npw\n", "2\npw\nn\nagain\n"}) {
    Session s;
    FactoryDrive(s);
    s.Run(input);
    EXPECT_EQ(s.exit_status, 0) << input;
    EXPECT_EQ(s.screen.substr(s.screen.size() - kConfirmNewPassword.size()), kConfirmNewPassword) << input;
    EXPECT_EQ(s.CallsOf("sedutil-cli"), (Calls{"-n --scan", "-n --query /dev/sda"})) << input;
  }
}

TEST(OwnerSessionTest, FlashLockBindsTheDriveToThisMachineAndEnds) {
  Session s;
  FactoryDrive(s, {true});
  s.On("sudo", "dmidecode",
       "# dmidecode 3.4\nSystem Information\n\tManufacturer: Maker\n"
       "\tUUID: 4c4c4544-0042-3510-8052-b4c04f384d32\n\tSKU Number: 0\n")
      .On("sedutil-cli", "-n --initialSetup 4c4c4544004235108052b4c04f384d32 /dev/sda", kInitialSetupOk)
      .On("sedutil-cli", "-n --setMBRDone OFF 4c4c4544004235108052b4c04f384d32 /dev/sda",
          "MBRDone set off \n")
      .On("sedutil-cli", "-n --loadPBAimage *", "Writing PBA to /dev/sda\nPBA image  PBA_flash.img written\n")
      .On("sedutil-cli", "-n --setMBRDone ON *", "MBRDone set on \n")
      .On("Lantivo", "*", "LockingRange0 success\n");
  s.Run("3\ny\n\n");
  const std::string password = "4c4c4544004235108052b4c04f384d32";
  EXPECT_EQ(
      ActionOutput(s, 1),
      "Are you sure to flash lock(Y/N)?\nEnable OPAL OK\nMBRDone set off \nPlease wait...   \n"
      "Writing PBA to /dev/sda\nPBA image  PBA_flash.img written\nMBRDone set on \n\nPlease poweroff \n");
  EXPECT_EQ(s.Calls(), (Calls{"sedutil-cli -n --scan", "sedutil-cli -n --query /dev/sda", "sudo dmidecode",
                              "sedutil-cli -n --initialSetup " + password + " /dev/sda",
                              "sedutil-cli -n --query /dev/sda",
                              "sedutil-cli -n --listLockingRanges " + password + " /dev/sda",
                              "Lantivo --enableLockingRange 0 " + password + " RW /dev/sda",
                              "Lantivo --setLockingRange 0 Y Y " + password + " /dev/sda",
                              "sedutil-cli -n --setMBRDone OFF " + password + " /dev/sda",
                              "sedutil-cli -n --loadPBAimage " + password + " PBA_flash.img /dev/sda",
                              "sedutil-cli -n --setMBRDone ON " + password + " /dev/sda"}));
  EXPECT_EQ(ScreensOf(s.screen).size(), 2u);  // no menu after the power-off request
  EXPECT_EQ(s.exit_status, 0);
}

TEST(OwnerSessionTest, FlashLockGoesOnAfterFailuresAndStillEnds) {
  {  // Locking the global range fails: reported, the image is still loaded.
    Session s;
    FactoryDrive(s, {true});
    s.On("sudo", "dmidecode", "\tUUID: 0000-11\n")
        .On("sedutil-cli", "-n --initialSetup 000011 /dev/sda", kInitialSetupOk)
        .On("Lantivo", "--enableLockingRange *", "LockingRange0 success\n")
        .On("Lantivo", "--setLockingRange *", "NOT_AUTHORIZED\n");
    s.Run("3\nY\n");
    EXPECT_EQ(ActionOutput(s, 1),
              "Are you sure to flash lock(Y/N)?\nEnable OPAL OK\nSetLockingRange Error\nPlease wait...   \n"
              "\nPlease poweroff \n");
    EXPECT_EQ(s.CallsOf("sedutil-cli").back(), "-n --setMBRDone ON 000011 /dev/sda");
    EXPECT_EQ(s.exit_status, 0);
  }
  {  // Take-ownership fails: the drive stays not enabled, so the later
     // steps have nothing to act on, yet the program asks for power-off.
    Session s;
    FactoryDrive(s);
    s.On("sudo", "dmidecode", "\tUUID: 0000-11\n")
        .On("sedutil-cli", "-n --initialSetup *", kTakeOwnershipFailed);
    s.Run("3\ny\n\n");
    EXPECT_EQ(ActionOutput(s, 1),
              "Are you sure to flash lock(Y/N)?\nEnable OPAL FAIL\nPlease wait...   \n\nPlease poweroff \n");
    EXPECT_EQ(s.Calls(), (Calls{"sedutil-cli -n --scan", "sedutil-cli -n --query /dev/sda", "sudo dmidecode",
                                "sedutil-cli -n --initialSetup 000011 /dev/sda"}));
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(OwnerSessionTest, FlashLockPasswordIsTheLastWordOfTheUuidOutput) {
  struct Case {
    std::string dmidecode, initial_setup;
  } cases[] = {
      {"\tUUID: 4C4C4544-0042\n", "-n --initialSetup 4C4C45440042 /dev/sda"},
      // A blank after the UUID leaves only the newline, which is cut off.
      {"\tUUID: 4C4C4544-0042 \n", "-n --initialSetup /dev/sda"},
      {"\tUUID: aaaa-1111\n\tUUID: bbbb-2222\n", "-n --initialSetup bbbb2222 /dev/sda"},
      // Nothing at all: the password is empty and is still sent.
      {"", "-n --initialSetup /dev/sda"},
      {"no match here\n", "-n --initialSetup /dev/sda"},
  };
  for (const Case& c : cases) {
    Session s;
    FactoryDrive(s);
    s.On("sudo", "dmidecode", c.dmidecode);
    s.Run("3\ny\n\n");
    const Calls calls = s.CallsOf("sedutil-cli");
    ASSERT_EQ(calls.size(), 3u) << c.dmidecode;
    EXPECT_EQ(calls[2], c.initial_setup) << c.dmidecode;
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(OwnerSessionTest, DecliningTheFlashLockRunsOnlyTheUuidLookup) {
  for (const std::string answer : {"n\n\n", "N\n\n", "yes\n\n", "Yy\n\n", ""}) {
    Session s;
    FactoryDrive(s);
    s.On("sudo", "dmidecode", "\tUUID: 0000-11\n");
    s.Run("3\n" + answer);
    EXPECT_EQ(ActionOutput(s, 1), "Are you sure to flash lock(Y/N)?\n" + kPause) << answer;
    EXPECT_EQ(s.Calls(), (Calls{"sedutil-cli -n --scan", "sedutil-cli -n --query /dev/sda", "sudo dmidecode",
                                "sedutil-cli -n --query /dev/sda"}))
        << answer;
    EXPECT_EQ(ScreensOf(s.screen).size(), 3u) << answer;  // back to the menu
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(OwnerSessionTest, CorrectAdminPasswordOpensTheFullMenu) {
  Session s;
  OwnedDrive(s, ThreeRanges());
  s.Run(kLogin);
  EXPECT_EQ(ActionOutput(s, 1), kPasswordPrompt +
                                    "Your password is: pw\nAre you sure this is your admin password? (Y/N): "
                                    "Password correct\n" +
                                    kPause);
  const std::vector<std::string> screens = ScreensOf(s.screen);
  ASSERT_EQ(screens.size(), 3u);
  EXPECT_EQ(screens[2], kFullMenu);
  EXPECT_EQ(s.CallsOf("sedutil-cli"), (Calls{"-n --scan", "-n --query /dev/sda",
                                             "-n --listLockingRanges pw /dev/sda", "-n --query /dev/sda"}));
}

TEST(OwnerSessionTest, RefusedOrUnconfirmedAdminPasswordIsForgotten) {
  struct Case {
    std::string input, typed, verdict;
    Calls listings;
  } cases[] = {
      {"11\nbad\ny\n\n",
       "bad",
       "Password wrong, please try again\n",
       {"-n --listLockingRanges bad /dev/sda"}},
      {"11\npw\nn\n\n", "pw", "", {}},
      {"11\npw\nyes\n\n", "pw", "", {}},
      {"11\npw\n", "pw", "", {}},  // input ends at the confirmation
      {"11\n", "", "", {}},
  };
  for (const Case& c : cases) {
    Session s;
    s.On("sedutil-cli", "-n --listLockingRanges bad /dev/sda",
         RangesText("/dev/sda", {{0, 0, 0}}) + kWrongPasswordText);
    OwnedDrive(s, ThreeRanges());
    s.Run(c.input);
    EXPECT_EQ(ActionOutput(s, 1), kPasswordPrompt + "Your password is: " + c.typed +
                                      "\nAre you sure this is your admin password? (Y/N): " + c.verdict +
                                      kPause)
        << c.input;
    Calls calls = s.CallsOf("sedutil-cli");
    calls.erase(std::remove(calls.begin(), calls.end(), "-n --query /dev/sda"), calls.end());
    Calls expected{"-n --scan"};
    expected.insert(expected.end(), c.listings.begin(), c.listings.end());
    EXPECT_EQ(calls, expected) << c.input;
    // Without a held password the next menu offers 11 again.
    const std::vector<std::string> screens = ScreensOf(s.screen);
    ASSERT_EQ(screens.size(), 3u) << c.input;
    EXPECT_NE(screens[2].find("   11. Set Admin1 / SID Password\n   17. Erase All Data\n"),
              std::string::npos);
    EXPECT_EQ(s.exit_status, 0);
  }
}

// Whole sessions of the shadow-MBR switches (13, 14), the pre-boot image
// (15), the revert (16) and the PSID erase (17).
#include <gtest/gtest.h>

#include "owned_session.h"

namespace {

using Calls = std::vector<std::string>;

const std::string kDefaultPsid = "80213657490812736459018273645091";

}  // namespace

TEST(MbrEraseSessionTest, OnlyYesSwitchesOn) {
  struct Case {
    std::string action, prompt, option;
  } screens[] = {
      {"13", "Enable(Y) or Disable(N) ?  ", "--setMBREnable"},
      {"14", "SetMBRDone ON(Y)  or  OFF(N) ?  ", "--setMBRDone"},
  };
  for (const Case& c : screens) {
    for (const std::string answer : {"Y", "y", "N", "n", "x", "yes", ""}) {
      Session s;
      OwnedDrive(s, ThreeRanges())
          .On("sedutil-cli", "-n --setMBREnable *", "MBRDone set on \nMBREnable set \n")
          .On("sedutil-cli", "-n --setMBRDone *", "MBRDone set \n");
      s.Run(kLogin + c.action + "\n" + answer + (answer.empty() ? "" : "\n\n"));
      const bool on = answer == "Y" || answer == "y";
      // Only the done flag's tool output is shown.
      const std::string shown = c.action == "14" ? "MBRDone set \n" : "";
      EXPECT_EQ(ActionOutput(s, 2), c.prompt + shown + kPause) << c.action << " " << answer;
      EXPECT_EQ(CallsAfterLogin(s),
                Calls{"sedutil-cli -n " + c.option + (on ? " ON" : " OFF") + " pw /dev/sda"})
          << c.action << " " << answer;
    }
  }
}

TEST(MbrEraseSessionTest, ImageNameIsPassedWithDefaultStandingForPbaImg) {
  struct Case {
    std::string answer, sent;
  } cases[] = {
      {"default\n", "PBA.img"},
      {"Default\n", "Default"},
      {"/boot/pba.img\n", "/boot/pba.img"},
      {"my image.img\n", "my"},  // one word only
      {"", ""},                  // input ended: an empty name
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges())
        .On("sedutil-cli", "-n --loadPBAimage *",
            "Writing PBA to /dev/sda\nPBA image  written to /dev/sda\n");
    s.Run(kLogin + "15\n" + c.answer + "\n");
    EXPECT_EQ(ActionOutput(s, 2),
              "Enter image name/path ( or key 'default' ):   Please wait...   \n"
              "Writing PBA to /dev/sda\nPBA image  written to /dev/sda\n" +
                  kPause)
        << c.answer;
    const std::string image = c.sent.empty() ? "" : c.sent + " ";
    EXPECT_EQ(CallsAfterLogin(s), Calls{"sedutil-cli -n --loadPBAimage pw " + image + "/dev/sda"})
        << c.answer;
  }
}

TEST(MbrEraseSessionTest, RevertRunsItsThreeCommandsOnlyAfterAYes) {
  for (const std::string answer : {"y", "Y", "n", "N", "yes", ""}) {
    Session s;
    OwnedDrive(s, ThreeRanges()).On("sedutil-cli", "-n --revertTPer *", kWrongPasswordText);
    s.Run(kLogin + "16\n" + answer + "\n\n");
    const bool yes = answer == "Y" || answer == "y";
    EXPECT_EQ(ActionOutput(s, 2),
              "Are you sure to disable? (Y/N): " + std::string(yes ? "Disable ok !\n" : "") + kPause)
        << answer;
    const Calls reverted{"sedutil-cli -n --disableLockingRange 0 pw /dev/sda",
                         "sedutil-cli -n --revertNoErase pw /dev/sda",
                         "sedutil-cli -n --revertTPer pw /dev/sda"};
    EXPECT_EQ(CallsAfterLogin(s), yes ? reverted : Calls{}) << answer;
  }
}

TEST(MbrEraseSessionTest, EraseSendsAConfirmedPsidOfThirtyTwoCharacters) {
  struct Case {
    std::string psid, shown, first_line, verdict;
  } cases[] = {
      {"XQJ", kDefaultPsid, "revertTper completed successfully", "Erase All Data OK\n"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZ012345", "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345",
       "method status code NOT_AUTHORIZED", "Erase All Data FAIL\n"},
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges())
        .On("sedutil-cli", "-n --yesIreallywanttoERASEALLmydatausingthePSID *",
            c.first_line + "\nrevertTper completed successfully\n");
    s.Run(kLogin + "17\n" + c.psid + "\ny\n\n");
    EXPECT_EQ(ActionOutput(s, 2), "Please enter your PSID (w/o space): Your PSID is: " + c.shown +
                                      "\nAre you sure this is your PSID? (Y/N): " + c.verdict + kPause)
        << c.psid;
    EXPECT_EQ(CallsAfterLogin(s),
              Calls{"sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID " + c.shown + " /dev/sda"})
        << c.psid;
  }
}

TEST(MbrEraseSessionTest, EraseRefusesOtherLengthsOnlyAfterTheConfirmation) {
  struct Case {
    std::string answers, shown, verdict;
  } cases[] = {
      {"xqj\ny\n", "xqj", "PSID length is wrong\n"},
      {"XQJX\nY\n", "XQJX", "PSID length is wrong\n"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456\ny\n", "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456",
       "PSID length is wrong\n"},
      {"XQJ\nN\n", kDefaultPsid, ""},
      {"XQJ\n", kDefaultPsid, ""},  // input ends at the confirmation
      {"", "", ""},
  };
  for (const Case& c : cases) {
    Session s;
    OwnedDrive(s, ThreeRanges());
    s.Run(kLogin + "17\n" + c.answers);
    EXPECT_EQ(ActionOutput(s, 2), "Please enter your PSID (w/o space): Your PSID is: " + c.shown +
                                      "\nAre you sure this is your PSID? (Y/N): " + c.verdict + kPause)
        << c.answers;
    EXPECT_EQ(CallsAfterLogin(s), Calls{}) << c.answers;
    EXPECT_EQ(s.exit_status, 0);
  }
}

TEST(MbrEraseSessionTest, EraseIsOfferedWithoutTheAdminPassword) {
  Session s;
  OwnedDrive(s, ThreeRanges())
      .On("sedutil-cli", "-n --yesIreallywanttoERASEALLmydatausingthePSID *",
          "revertTper completed successfully\n");
  s.Run("17\nXQJ\ny\n\n");
  EXPECT_EQ(ActionOutput(s, 1), "Please enter your PSID (w/o space): Your PSID is: " + kDefaultPsid +
                                    "\nAre you sure this is your PSID? (Y/N): Erase All Data OK\n" + kPause);
  EXPECT_EQ(s.CallsOf("sedutil-cli")[2],
            "-n --yesIreallywanttoERASEALLmydatausingthePSID " + kDefaultPsid + " /dev/sda");
}

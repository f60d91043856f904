// Whole sessions of the start-up, the menu and disk selection.
#include <gtest/gtest.h>

#include "session_harness.h"
#include "tool_text.h"

namespace {

const ScanEntry kKvx{"/dev/sda", "2", "KVX 480GB", "SBFK71F3"};
const ScanEntry kZep{"/dev/nvme0", "2", "ZEP NV2000 1TB", "2B2QEXM7"};

const std::string kBanner =
    "=================================================\n"
    "|                  Veltrak v1.1.20051           |\n"
    "=================================================\n";

std::string Summary(const std::string& device, const std::string& model, const std::string& firmware,
                    const std::string& version, const std::string& support, const std::string& enable,
                    const std::string& locked) {
  return " File Descriptor: " + device + "\n Model Name:      " + model +
         "\n Firmware Version:     " + firmware + "\n OPAL Version:    " + version +
         "\n OPAL Support:    " + support + "\n OPAL Enable:     " + enable +
         "\n OPAL Locked:     " + locked + "\n\n Action:\n   0.  Exit\n   1.  Select Disk\n";
}

const std::string kRule = "-------------------------------------------------\n";

}  // namespace

TEST(MainSessionTest, NoAcceptedDriveEndsWith255) {
  Session s;
  s.On("sedutil-cli", "-n --scan", ScanText({{"/dev/sdb", "12", "Other Maker 500GB", "EMT01B6Q"}}));
  s.Run("");
  EXPECT_EQ(s.exit_status, 255);
  EXPECT_EQ(s.screen, "/dev/sdb\tOther Maker 500GB\tEMT01B6Q\t\t 12\nNo disks found\n");
}

TEST(MainSessionTest, MissingToolMeansNoDisks) {
  Session s;  // no ./sedutil-cli at all: the shell's complaint is parsed
  s.Run("");
  EXPECT_EQ(s.exit_status, 255);
  EXPECT_NE(s.screen.find("No disks found\n"), std::string::npos);
}

TEST(MainSessionTest, DriveNotYetOwnedShowsTheWholeScreenExactly) {
  Session s;
  s.On("sedutil-cli", "-n --scan", ScanText({kKvx}))
      .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, false));
  s.Run("0\n");
  EXPECT_EQ(s.exit_status, 0);
  EXPECT_EQ(s.screen, "/dev/sda\tKVX 480GB\tSBFK71F3\t\t2\n[clear]\n" + kBanner +
                          Summary("/dev/sda", "KVX 480GB", "SBFK71F3", "2", "Support", "Disable", "No") +
                          "   2.  Initial this OPAL Device and Set Admin Password (Enable OPAL)\n"
                          "   3.  Flash Lock\n" +
                          kRule + "Enter action number: ");
  EXPECT_EQ(s.Calls(), (std::vector<std::string>{"sedutil-cli -n --scan", "sedutil-cli -n --query /dev/sda"}));
}

TEST(MainSessionTest, DriveWithoutOpalOffersOnlyExitAndSelection) {
  Session s;
  s.On("sedutil-cli", "-n --scan", ScanText({{"/dev/sda", "No", "KVX HDD", "CC45"}}));
  s.Run("2\n");
  EXPECT_EQ(s.exit_status, 0);
  EXPECT_NE(s.screen.find(Summary("/dev/sda", "KVX HDD", "CC45", "0", "Not Support", "Disable", "No") + kRule +
                          "Enter action number: Unsupported action\n"),
            std::string::npos);
  EXPECT_EQ(s.CallsOf("sedutil-cli"), std::vector<std::string>{"-n --scan"});  // never queried
}

TEST(MainSessionTest, OwnedDriveWithoutPasswordOffersTheAdminPassword) {
  for (bool locked : {true, false}) {
    Session s;
    s.On("sedutil-cli", "-n --scan", ScanText({kKvx}))
        .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", locked, true));
    s.Run("5\n");  // a range action, not offered without the password
    EXPECT_EQ(s.exit_status, 0);
    const std::string eleven =
        locked ? "   11. Enter Admin1 / SID Password\n" : "   11. Set Admin1 / SID Password\n";
    EXPECT_NE(s.screen.find(Summary("/dev/sda", "KVX 480GB", "SBFK71F3", "2", "Support", "Enable",
                                    locked ? "Yes" : "No") +
                            eleven + "   17. Erase All Data\n\n" + kRule +
                            "Enter action number: Unsupported action\n"),
              std::string::npos)
        << s.screen;
  }
}

TEST(MainSessionTest, DeadInputEndsTheProgramAtTheActionPrompt) {
  for (const std::string input : {"", "abc\n", "99999999999\n", "1\nxyz\n"}) {
    Session s;
    s.On("sedutil-cli", "-n --scan", ScanText({kKvx, kZep}));
    s.Run(input);
    EXPECT_EQ(s.exit_status, 0) << input;
    EXPECT_EQ(s.screen.find("Unsupported action"), std::string::npos) << input;
    EXPECT_EQ(s.screen.substr(s.screen.size() - 21), "Enter action number: ") << input;
  }
}

TEST(MainSessionTest, UnofferedNumbersEndTheProgram) {
  for (const std::string input : {"10\n", "-1\n", "18\n"}) {
    Session s;
    s.On("sedutil-cli", "-n --scan", ScanText({kKvx}));
    s.Run(input);
    EXPECT_EQ(s.exit_status, 0);
    EXPECT_EQ(s.screen.substr(s.screen.size() - 19), "Unsupported action\n") << input;
  }
}

TEST(MainSessionTest, SelectingADriveSwitchesTheMenu) {
  Session s;
  s.On("sedutil-cli", "-n --scan", ScanText({kKvx, kZep}))
      .On("sedutil-cli", "-n --query /dev/sda", QueryText("/dev/sda", false, false))
      .On("sedutil-cli", "-n --query /dev/nvme0", QueryText("/dev/nvme0", false, true));
  // Drive 1, then numbers that name no drive (2, -1, huge), then back to 0.
  s.Run("1\n1\n1\n2\n1\n-1\n1\n99999999999\n");
  const std::vector<std::string> screens = ScreensOf(s.screen);
  ASSERT_EQ(screens.size(), 6u);
  EXPECT_NE(screens[1].find("Flash Lock\n" + kRule +
                            "Enter action number:  * Disk list:\n"
                            "    0. /dev/sda, KVX 480GB\n"
                            "    1. /dev/nvme0, ZEP NV2000 1TB\n"
                            "Select a disk by number: "),
            std::string::npos);
  EXPECT_NE(screens[2].find(" File Descriptor: /dev/nvme0\n"), std::string::npos);
  EXPECT_NE(screens[3].find(" File Descriptor: /dev/nvme0\n"), std::string::npos);
  EXPECT_NE(screens[4].find(" File Descriptor: /dev/nvme0\n"), std::string::npos);
  // The huge number failed the read: it kept the drive, then the dead
  // input ended the program at the next prompt.
  EXPECT_NE(screens[5].find(" File Descriptor: /dev/nvme0\n"), std::string::npos);
  EXPECT_EQ(s.exit_status, 0);
}

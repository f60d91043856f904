// The drive simulator through its command lines: the rules a real drive
// keeps, the tools' exact words, and the state file's robustness.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "drivesim_sandbox.h"

namespace {

const std::string kWrongPassword =
    "method status code NOT_AUTHORIZED\n"
    "Session start failed rc = 1\n"
    "One or more header fields have 0 length\n"
    "EndSession Failed\n";
const std::string kKvxPsid = "80213657490812736459018273645091";
const std::string kZepPsid = "ZQ7K2M9X4B1N8C3V6L5P0R2T7Y9W4S1D";

// True when some line of text lacks "success", the companion tool's sign
// of a failure.
bool SomeLineLacksSuccess(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find("success") == std::string::npos) return true;
  }
  return false;
}

class Drivesim : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, sim.Run("./drivesim init").status); }

  SimSandbox::Result Sed(const std::string& args) const { return sim.Run("./sedutil-cli -n " + args); }
  SimSandbox::Result Lantivo(const std::string& args) const { return sim.Run("./Lantivo " + args); }

  // /dev/sda, the factory-new drive of the demo, taken with password pw1.
  void OwnSda() const { ASSERT_EQ(0, Sed("--initialSetup pw1 /dev/sda").status); }

  // The flags line that the range listing prints under LR<range>.
  std::string ListedFlags(int range) const {
    const std::string listing = Sed("--listLockingRanges pw1 /dev/sda").output;
    const size_t header = listing.find("LR" + std::to_string(range) + " Begin");
    const size_t flags = listing.find('\n', header) + 1;
    return listing.substr(flags, listing.find('\n', flags) - flags);
  }

  SimSandbox sim;
};

TEST_F(Drivesim, ScanPrintsTheToolsColumnsInDeviceOrder) {
  EXPECT_EQ(
      "Scanning for Opal compliant disks\n"
      "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7\n"
      "/dev/sda    2  KVX 480GB                                SBFK71F3\n"
      "/dev/sdb   12  Quellon QS500 500GB                      EMT01B6Q\n"
      "No more disks present ending scan\n",
      Sed("--scan").output);
}

TEST_F(Drivesim, OwnershipIsTakenOnceAndLeavesTheGlobalRangeOpenAndTheShadowMbrOn) {
  const SimSandbox::Result first = Sed("--initialSetup pw1 /dev/sda");
  EXPECT_EQ(0, first.status);
  EXPECT_EQ(
      "takeOwnership complete\nLocking SP Activate Complete\nLockingRange0 disabled \nLockingRange0 set to RW\n"
      "MBRDone set on \nMBRDone set on \nMBREnable set on \nInitial setup of TPer complete on /dev/sda\n",
      first.output);
  const SimSandbox::Result again = Sed("--initialSetup pw2 /dev/sda");
  EXPECT_EQ(1, again.status);
  EXPECT_EQ(kWrongPassword + "takeOwnership failed\nInitial setup failed - unable to take ownership\n", again.output);

  EXPECT_TRUE(Shows(sim, "/dev/sda", "taken, password pw1\n"));
  EXPECT_NE(std::string::npos, Sed("--query /dev/sda")
                                   .output.find("    Locked = N, LockingEnabled = Y, LockingSupported = Y, "
                                                "MBRDone = Y, MBREnabled = Y, MediaEncrypt = Y\n"));
  EXPECT_EQ("            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N ", ListedFlags(0));
}

TEST_F(Drivesim, EveryAuthenticatedCommandRefusesAWrongSecretAndChangesNothing) {
  OwnSda();
  sim.Write("PBA.img", "image");
  const std::string before = sim.Read("drivesim.state");
  for (const char* args : {"--listLockingRanges bad /dev/sda", "--setupLockingRange 1 0 8 bad /dev/sda",
                           "--setLockingRange 1 LK bad /dev/sda", "--enableLockingRange 1 bad /dev/sda",
                           "--disableLockingRange 0 bad /dev/sda", "--enableUser bad User0001 /dev/sda",
                           "--setPassword bad User0001 new /dev/sda", "--revertNoErase bad /dev/sda",
                           "--revertTPer bad /dev/sda", "--setMBREnable ON bad /dev/sda",
                           "--setMBRDone OFF bad /dev/sda", "--loadPBAimage bad PBA.img /dev/sda",
                           "--yesIreallywanttoERASEALLmydatausingthePSID 00000000000000000000000000000000 /dev/sda"}) {
    SCOPED_TRACE(args);
    const SimSandbox::Result refused = Sed(args);
    EXPECT_EQ(kWrongPassword, refused.output);
    EXPECT_EQ(1, refused.status);
  }
  EXPECT_EQ(before, sim.Read("drivesim.state"));
}

TEST_F(Drivesim, PasswordsAreCutTo32BytesWithDashNAndHashedWithoutIt) {
  ASSERT_EQ(0, Sed("--initialSetup 0123456789abcdef0123456789abcdefTAIL /dev/sda").status);
  EXPECT_EQ(0, Sed("--listLockingRanges 0123456789abcdef0123456789abcdefOTHER /dev/sda").status);
  EXPECT_EQ(kWrongPassword, sim.Run("./sedutil-cli --listLockingRanges 0123456789abcdef0123456789abcdef /dev/sda").output);
}

TEST_F(Drivesim, BadCommandLinesAndDisksAreRefusedBeforeAnySession) {
  OwnSda();
  sim.Run("./drivesim add /dev/sdc No 'Old HDD' CC45 ABCDEFGHIJKLMNOPQRSTUVWXYZ012345");
  const std::string noDisk =
      "You do not have permission to access the raw disk in write mode\nPerhaps you might try sudo to run as root\n"
      "Invalid or unsupported disk /dev/sdz\n";
  const struct {
    const char* args;
    std::string output;
  } cases[] = {
      // An empty password vanishes in the shell, leaving one operand short.
      {"--initialSetup /dev/sda", "Incorrect number of paramaters for --initialSetup command\n"},
      {"--frobnicate /dev/sda", "Invalid command line argument --frobnicate\n"},
      {"--setLockingRange 1 XX pw1 /dev/sda", "Invalid argument XX for --setLockingRange\n"},
      {"--setMBREnable maybe pw1 /dev/sda", "Invalid argument maybe for --setMBREnable\n"},
      {"--listLockingRanges pw1 /dev/sdz", noDisk},
      {"--query /dev/sdc", "Invalid or unsupported disk /dev/sdc\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args);
    const SimSandbox::Result refused = Sed(c.args);
    EXPECT_EQ(c.output, refused.output);
    EXPECT_EQ(136, refused.status);
  }
  EXPECT_EQ("MBRDone set off \n", Sed("--SETMBRDONE off pw1 /dev/sda").output);
  EXPECT_EQ("LockingRange1 set to LK\n", Sed("--setlockingrange 1 lk pw1 /dev/sda").output);
}

TEST_F(Drivesim, SetupLockingRangeRekeysAndRefusesAddressesADriveWouldRefuse) {
  OwnSda();
  EXPECT_EQ("LockingRange1 reKeyed \nLockingRange1 starting block 2048 for 4096 blocks configured as unlocked range\n",
            Sed("--setupLockingRange 1 2048 4096 pw1 /dev/sda").output);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "LR1 2048 4096 N N N N 2 Admin1\n"));

  const std::string before = sim.Read("drivesim.state");
  const SimSandbox::Result global = Sed("--setupLockingRange 0 0 8 pw1 /dev/sda");
  EXPECT_EQ("global locking range cannot be changed\n", global.output);
  EXPECT_EQ(129, global.status);
  for (const char* address : {"2 2050 8", "2 4096 8", "2 0 8192", "2 937703080 16", "2 0 18446744073709551608"}) {
    SCOPED_TRACE(address);
    const SimSandbox::Result refused = Sed(std::string("--setupLockingRange ") + address + " pw1 /dev/sda");
    EXPECT_EQ("method status code INVALID_PARAMETER\nsetupLockingRange Failed \n", refused.output);
    EXPECT_EQ(12, refused.status);
  }
  EXPECT_EQ(before, sim.Read("drivesim.state"));
}

TEST_F(Drivesim, SedutilLockCommandsSetTheirFlags) {
  OwnSda();
  EXPECT_EQ("LockingRange1 enabled ReadLocking,WriteLocking\n", Sed("--enableLockingRange 1 pw1 /dev/sda").output);
  EXPECT_EQ("LockingRange1 set to RO\n", Sed("--setLockingRange 1 RO pw1 /dev/sda").output);
  EXPECT_EQ("            RLKEna = Y  WLKEna = Y  RLocked = N  WLocked = Y ", ListedFlags(1));
  EXPECT_EQ("LockingRange1 disabled \n", Sed("--disableLockingRange 1 pw1 /dev/sda").output);
  EXPECT_EQ("            RLKEna = N  WLKEna = N  RLocked = N  WLocked = Y ", ListedFlags(1));
}

// The companion tool's command sequences for each protection mode, applied
// one after the other so each starts from the previous mode.
TEST_F(Drivesim, ProtectionModesThroughTheCompanionToolEndInTheirFlags) {
  OwnSda();
  const struct {
    const char* mode;
    std::vector<std::string> commands;
    const char* flags;
    const char* locked;
  } modes[] = {
      {"LK",
       {"--enableLockingRange 1 pw1 RW /dev/sda", "--setLockingRange 1 Y Y pw1 /dev/sda"},
       "            RLKEna = Y  WLKEna = Y  RLocked = Y  WLocked = Y ",
       "Locked = Y"},
      {"RO",
       {"--disableLockingRange 1 pw1 R /dev/sda", "--enableLockingRange 1 pw1 W /dev/sda",
        "--setLockingRange 1 N Y pw1 /dev/sda"},
       "            RLKEna = N  WLKEna = Y  RLocked = N  WLocked = Y ",
       "Locked = Y"},
      {"RW",
       {"--disableLockingRange 1 pw1 RW /dev/sda", "--setLockingRange 1 N N pw1 /dev/sda"},
       "            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N ",
       "Locked = N"},
  };
  for (const auto& mode : modes) {
    SCOPED_TRACE(mode.mode);
    for (const std::string& command : mode.commands) {
      const SimSandbox::Result done = Lantivo(command);
      EXPECT_EQ(0, done.status) << command;
      EXPECT_FALSE(done.output.empty()) << command;
      EXPECT_FALSE(SomeLineLacksSuccess(done.output)) << done.output;
    }
    EXPECT_EQ(mode.flags, ListedFlags(1));
    EXPECT_NE(std::string::npos, Sed("--query /dev/sda").output.find(mode.locked));
  }
}

TEST_F(Drivesim, CompanionToolFailuresPrintALineWithoutSuccessAndChangeNothing) {
  const SimSandbox::Result factory = Lantivo("--setLockingRange 0 Y Y pw1 /dev/sda");
  EXPECT_TRUE(SomeLineLacksSuccess(factory.output)) << "no Locking SP before ownership";
  OwnSda();
  const std::string before = sim.Read("drivesim.state");
  for (const char* args :
       {"--setLockingRange 9 Y Y pw1 /dev/sda", "--setLockingRange 1 Y maybe pw1 /dev/sda",
        "--enableLockingRange 1 pw1 X /dev/sda", "--disableLockingRange 1 bad RW /dev/sda",
        "--enableLockingRange 1 pw1 RW /dev/sdz", "--Add_ACE_Locking_range /dev/sda pw1 1 User1 User0",
        "--list_User_ACE_Locking_range /dev/sda bad 1", "--ListUserStatus bad /dev/sda"}) {
    SCOPED_TRACE(args);
    const SimSandbox::Result failed = Lantivo(args);
    EXPECT_NE(0, failed.status);
    EXPECT_TRUE(SomeLineLacksSuccess(failed.output)) << failed.output;
  }
  EXPECT_EQ(before, sim.Read("drivesim.state"));
}

TEST_F(Drivesim, AccessListsNameAdmin1FirstAndGrowUntilCleared) {
  OwnSda();
  const std::string list1 = "--list_User_ACE_Locking_range /dev/sda pw1 1";
  EXPECT_EQ(0, Lantivo("--Add_ACE_Locking_range /dev/sda pw1 1 User3 User1").status);
  EXPECT_EQ("Admin1 User1 User3 can access Locking Range 1\n", Lantivo(list1).output);
  EXPECT_EQ(0, Lantivo("--Add_ACE_Locking_range /dev/sda pw1 1 User2 User3").status);
  EXPECT_EQ("Admin1 User1 User2 User3 can access Locking Range 1\n", Lantivo(list1).output);
  EXPECT_EQ("Admin1 can access Locking Range 2\n", Lantivo("--list_User_ACE_Locking_range /dev/sda pw1 2").output);
  EXPECT_EQ(0, Lantivo("--Delete_AllUser_ACE_Locking_range /dev/sda pw1 1").status);
  EXPECT_EQ("Admin1 can access Locking Range 1\n", Lantivo(list1).output);
}

TEST_F(Drivesim, UsersAreNamedUser000NBySedutilAndUserNByTheCompanionTool) {
  OwnSda();
  EXPECT_EQ("User0003 has been enabled \n", Sed("--enableUser pw1 User0003 /dev/sda").output);
  EXPECT_EQ("User0005 password changed\n", Sed("--setPassword pw1 User0005 secret5 /dev/sda").output);
  for (const char* nobody : {"User0000", "User0010", "Guest1"}) {
    EXPECT_EQ("method status code INVALID_PARAMETER\nenableUser Failed \n",
              Sed(std::string("--enableUser pw1 ") + nobody + " /dev/sda").output);
  }
  const std::string status = Lantivo("--ListUserStatus pw1 /dev/sda").output;
  EXPECT_EQ(
      "User1 : Disabled\nUser2 : Disabled\nUser3 : Enabled\nUser4 : Disabled\nUser5 : Disabled\n"
      "User6 : Disabled\nUser7 : Disabled\nUser8 : Disabled\nUser9 : Disabled\n",
      status);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "User5 disabled password secret5\n"));
}

TEST_F(Drivesim, RevertsKeepOrEraseDataAsADriveDoes) {
  OwnSda();
  ASSERT_EQ(0, Sed("--setupLockingRange 1 2048 4096 pw1 /dev/sda").status);
  EXPECT_EQ("Revert LockingSP complete\n", Sed("--revertNoErase pw1 /dev/sda").output);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "LR0 0 0 N N N N 1 Admin1\n")) << "the global range keeps its key";
  EXPECT_TRUE(Shows(sim, "/dev/sda", "LR1 0 0 N N N N 3 Admin1\n"));
  EXPECT_NE(std::string::npos, Sed("--query /dev/sda").output.find("LockingEnabled = N"));
  EXPECT_EQ(1, Sed("--initialSetup pw2 /dev/sda").status) << "SID is still owned";

  EXPECT_EQ("revertTper completed successfully\n", Sed("--revertTPer pw1 /dev/sda").output);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "LR0 0 0 N N N N 1 Admin1\n LR1 0 0 N N N N 3 Admin1\n"))
      << "nothing left to erase once the Locking SP was reverted";
  EXPECT_TRUE(Shows(sim, "/dev/sda", "not taken, factory MSID"));
  EXPECT_EQ(0, Sed("--initialSetup pw2 /dev/sda").status);
  EXPECT_EQ(0, Sed("--revertTPer pw2 /dev/sda").status);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "LR0 0 0 N N N N 2 Admin1\n")) << "reverting an active drive erases it";
}

TEST_F(Drivesim, PsidRevertTakesOnlyTheDrivesOwnPsidAndErasesEverything) {
  EXPECT_EQ(kWrongPassword, Sed("--yesIreallywanttoERASEALLmydatausingthePSID " + kKvxPsid + " /dev/nvme0").output);
  const SimSandbox::Result erased = Sed("--yesIreallywanttoERASEALLmydatausingthePSID " + kZepPsid + " /dev/nvme0");
  EXPECT_EQ("revertTper completed successfully\n", erased.output);
  for (const char* factory : {"LR0 0 0 N N N N 2 Admin1\n LR1 0 0 N N N N 3 Admin1\n", "not taken, factory MSID",
                              "Locking SP inactive\n", "MBREnable N, MBRDone N\n", "Pre-boot image none\n",
                              "User1 disabled no password\n"}) {
    EXPECT_TRUE(Shows(sim, "/dev/nvme0", factory));
  }
}

TEST_F(Drivesim, ShadowMbrFlagsAndThePreBootImage) {
  OwnSda();
  EXPECT_EQ("MBRDone set on \nMBREnable set off \n", Sed("--setMBREnable OFF pw1 /dev/sda").output);
  EXPECT_EQ("MBRDone set off \n", Sed("--setMBRDone OFF pw1 /dev/sda").output);
  EXPECT_NE(std::string::npos, Sed("--query /dev/sda").output.find("MBRDone = N, MBREnabled = N"));

  sim.Write("PBA.img", std::string(40000, 'p'));
  EXPECT_EQ(
      "Writing PBA to /dev/sda\n"
      "16384 of 40000 40% blk=0 \r32768 of 40000 81% blk=1 \r40000 of 40000 100% blk=2 \r\n"
      "PBA image  PBA.img written to /dev/sda\n",
      Sed("--loadPBAimage pw1 PBA.img /dev/sda").output);
  EXPECT_TRUE(Shows(sim, "/dev/sda", "Pre-boot image PBA.img (40000 bytes)\n"));

  const SimSandbox::Result missing = Sed("--loadPBAimage pw1 gone.img /dev/sda");
  EXPECT_EQ("Unable to open PBA image file gone.img\n", missing.output);
  EXPECT_EQ(132, missing.status);
}

TEST_F(Drivesim, FailNextRefusesOneMatchingAuthenticationOnly) {
  OwnSda();
  ASSERT_EQ(0, sim.Run("./drivesim fail-next --setLockingRange").status);
  EXPECT_EQ(0, Lantivo("--enableLockingRange 1 pw1 RW /dev/sda").status) << "another command is not refused";
  EXPECT_TRUE(SomeLineLacksSuccess(Lantivo("--setLockingRange 1 Y Y pw1 /dev/sda").output));
  EXPECT_EQ(0, Lantivo("--setLockingRange 1 Y Y pw1 /dev/sda").status) << "only once";

  ASSERT_EQ(0, sim.Run("./drivesim fail-next").status);
  EXPECT_EQ(kWrongPassword, Sed("--listLockingRanges pw1 /dev/sda").output);
  EXPECT_EQ(0, Sed("--listLockingRanges pw1 /dev/sda").status);
}

TEST_F(Drivesim, StateIsReplacedThroughATemporaryFileAndKeptWhenThatFails) {
  OwnSda();
  const std::string before = sim.Read("drivesim.state");
  std::filesystem::create_directory(sim.dir() + "/drivesim.state.tmp");
  const SimSandbox::Result blocked = Sed("--setMBRDone OFF pw1 /dev/sda");
  EXPECT_EQ(2, blocked.status);
  EXPECT_NE(std::string::npos, blocked.output.find("drivesim: cannot create drivesim.state.tmp"));
  EXPECT_EQ(before, sim.Read("drivesim.state"));

  std::filesystem::remove(sim.dir() + "/drivesim.state.tmp");
  EXPECT_EQ(0, Sed("--setMBRDone OFF pw1 /dev/sda").status);
  EXPECT_NE(before, sim.Read("drivesim.state"));
  EXPECT_FALSE(std::filesystem::exists(sim.dir() + "/drivesim.state.tmp"));
}

TEST_F(Drivesim, PasswordsWithBlanksSurviveTheStateFile) {
  OwnSda();
  ASSERT_EQ(0, sim.Run("./sedutil-cli -n --setPassword pw1 Admin1 ' two words ' /dev/sda").status);
  EXPECT_EQ(0, sim.Run("./sedutil-cli -n --listLockingRanges ' two words ' /dev/sda").status);
  EXPECT_EQ(1, sim.Run("./sedutil-cli -n --listLockingRanges ' two words' /dev/sda").status);
}

TEST_F(Drivesim, DamagedOrMissingStateIsReportedNotTrustedByEveryFace) {
  const std::string good = sim.Read("drivesim.state");
  auto replaced = [&](const std::string& from, const std::string& to) {
    return std::regex_replace(good, std::regex(from), to, std::regex_constants::format_first_only);
  };
  const struct {
    const char* fault;
    std::string text;
  } damaged[] = {
      {"cut short", good.substr(0, good.size() / 2)},
      {"not a flag", replaced("mbr_done = N", "mbr_done = maybe")},
      {"key missing", replaced("\nlr3 = [^\n]*", "")},
      {"unknown key", replaced("\nopal = ", "\ncolour = blue\nopal = ")},
      {"not a number", replaced("start 0 length", "start x length")},
      {"no such user", replaced("ace\n", "ace User12\n")},
      {"drive twice", good + good.substr(good.find("[/dev/sda]"))},
      {"not a line", replaced("\nopal", "\njunk\nopal")},
  };
  for (const auto& d : damaged) {
    SCOPED_TRACE(d.fault);
    sim.Write("drivesim.state", d.text);
    for (const char* face : {"./sedutil-cli -n --scan", "./Lantivo --scan", "./drivesim show"}) {
      const SimSandbox::Result refused = sim.Run(face);
      EXPECT_EQ(2, refused.status) << face;
      EXPECT_TRUE(std::regex_search(refused.output, std::regex("^drivesim: drivesim.state is damaged at line [0-9]+: ")))
          << refused.output;
    }
    EXPECT_EQ(d.text, sim.Read("drivesim.state"));
  }
  std::filesystem::remove(sim.dir() + "/drivesim.state");
  const SimSandbox::Result missing = sim.Run("./sedutil-cli -n --scan");
  EXPECT_EQ(2, missing.status);
  EXPECT_NE(std::string::npos, missing.output.find("cannot read drivesim.state"));
}

}  // namespace

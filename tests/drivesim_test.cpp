// The drive simulator through its command lines: the rules a real drive
// keeps, the tools' exact words, and the state file's robustness. What a
// whole Veltrak session does to a drive is in drivesim_session_test.cpp.
#include <gtest/gtest.h>

#include <vector>

#include "drivesim_sandbox.h"

namespace {

const std::string kWrongPassword = "method status code NOT_AUTHORIZED\nSession start failed rc = 1\n"
                                   "One or more header fields have 0 length\nEndSession Failed\n";
const std::string kOwnSda = "S --initialSetup pw1 /dev/sda > /dev/null";
const std::string kRange1 = "S --setupLockingRange 1 2048 4096 pw1 /dev/sda";

// A command line (see SimSandbox::Run) and its exit status and whole output;
// "show DEVICE" stands for SimSandbox::Shown, which must give the output.
struct Step { std::string command; int status; std::string output; };

class Drivesim : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, sim.Run("./drivesim init").status); }

  void Play(const std::vector<Step>& steps) const {
    for (const Step& step : steps) {
      SCOPED_TRACE(step.command);
      const SimSandbox::Result result =
          step.command.rfind("show ", 0) == 0 ? sim.Shown(step.command.substr(5), step.output) : sim.Run(step.command);
      EXPECT_EQ(step.output, result.output);
      EXPECT_EQ(step.status, result.status);
    }
  }

  SimSandbox sim;
};

TEST_F(Drivesim, OwnershipIsTakenOnceAndItsPasswordGuardsTheShadowMbr) {
  Play({
      {"S --scan | grep sdb", 0, "/dev/sdb   12  Quellon QS500 500GB                      EMT01B6Q\n"},
      {"S --initialSetup pw1 /dev/sda", 0,
       "takeOwnership complete\nLocking SP Activate Complete\nLockingRange0 disabled \nLockingRange0 set to RW\n"
       "MBRDone set on \nMBRDone set on \nMBREnable set on \nInitial setup of TPer complete on /dev/sda\n"},
      {"S --initialSetup pw2 /dev/sda", 1,
       kWrongPassword + "takeOwnership failed\nInitial setup failed - unable to take ownership\n"},
      {"S --query /dev/sda | grep MBRDone && S --listLockingRanges pw1 /dev/sda | grep -A1 LR8", 0,
       "    Locked = N, LockingEnabled = Y, LockingSupported = Y, MBRDone = Y, MBREnabled = Y, MediaEncrypt = Y\n"
       "LR8 Begin 0 for 0\n            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n"},
      {"S --SETMBRDONE off pw1 /dev/sda", 0, "MBRDone set off \n"},
      {"S --setMBREnable OFF pw1 /dev/sda", 0, "MBRDone set on \nMBREnable set off \n"},
      {"show /dev/sda", 0, "Shadow MBR MBREnable N, MBRDone Y\n"},
      {"head -c 40000 /dev/zero > PBA.img && S --loadPBAimage pw1 PBA.img /dev/sda", 0,
       "Writing PBA to /dev/sda\n16384 of 40000 40% blk=0 \r32768 of 40000 81% blk=1 \r40000 of 40000 100% blk=2 \r\n"
       "PBA image  PBA.img written to /dev/sda\n"},
      // The drive keeps 32 bytes, blanks and all; without -n the tool hashes.
      {"S --setPassword pw1 Admin1 ' 23456789abcdef0123456789abcdef TAIL' /dev/sda", 0, "Admin1 password changed\n"},
      {"S --listLockingRanges ' 23456789abcdef0123456789abcdef OTHER' /dev/sda > /dev/null", 0, ""},
      {"./sedutil-cli --listLockingRanges ' 23456789abcdef0123456789abcdef ' /dev/sda", 1, kWrongPassword},
  });
}

TEST_F(Drivesim, RefusedCommandsPrintTheToolsErrorAndChangeNothing) {
  const std::string invalid = "method status code INVALID_PARAMETER\n";
  std::vector<Step> steps = {
      {kOwnSda + " && " + kRange1 + " > /dev/null && echo image > PBA.img && ./drivesim add /dev/sdc No 'Old HDD' "
       "CC45 ABCDEFGHIJKLMNOPQRSTUVWXYZ012345 && cp drivesim.state .before", 0, ""},
      {"S --initialSetup /dev/sda", 136, "Incorrect number of paramaters for --initialSetup command\n"},  // no password
      {"S --frobnicate /dev/sda", 136, "Invalid command line argument --frobnicate\n"},
      {"S --setLockingRange 1 XX pw1 /dev/sda", 136, "Invalid argument XX for --setLockingRange\n"},
      {"S --setMBREnable maybe pw1 /dev/sda", 136, "Invalid argument maybe for --setMBREnable\n"},
      {"S --query /dev/sdc", 136, "Invalid or unsupported disk /dev/sdc\n"},  // no Opal
      {"S --query /dev/sdz", 136, "You do not have permission to access the raw disk in write mode\n"
                                  "Perhaps you might try sudo to run as root\nInvalid or unsupported disk /dev/sdz\n"},
      {"S --listLockingRanges pw1 /dev/sdb", 12,  // no Admin1 before ownership
       invalid + "Session start failed rc = 12\nOne or more header fields have 0 length\nEndSession Failed\n"},
      {"S --setupLockingRange 0 0 8 pw1 /dev/sda", 129, "global locking range cannot be changed\n"},
      {"S --loadPBAimage pw1 gone.img /dev/sda", 132, "Unable to open PBA image file gone.img\n"},
      {"S --loadPBAimage pw1 . /dev/sda", 132, "Unable to open PBA image file .\n"},
      {"L --setLockingRange 0 Y Y pw1 /dev/sdb", 1, "Lantivo: the Locking SP of /dev/sdb is not activated\n"},
      {"L --setLockingRange 1 N N bad /dev/sda", 1, "Lantivo: Admin1 authentication failed on /dev/sda\n"},
      {"L --setLockingRange 9 Y Y pw1 /dev/sda", 1, "Lantivo: no locking range 9 (0 to 8)\n"},
      {"L --setLockingRange 1 Y maybe pw1 /dev/sda", 1, "Lantivo: lock flag maybe is not Y or N\n"},
      {"L --enableLockingRange 1 pw1 X /dev/sda", 1, "Lantivo: locking kind X is not R, W or RW\n"},
      {"L --enableLockingRange 1 pw1 RW /dev/sdz", 1, "Lantivo: cannot open /dev/sdz\n"},
      {"L --Add_ACE_Locking_range /dev/sda pw1 1 User1 User0", 1, "Lantivo: no user User0 (User1 to User9)\n"},
      // An injected failure refuses the next authentication (of one command).
      {"./drivesim fail-next --setLockingRange && S --listLockingRanges pw1 /dev/sda > /dev/null && "
       "L --setLockingRange 1 N N pw1 /dev/sda", 1, "Lantivo: Admin1 authentication failed on /dev/sda\n"},
      {"./drivesim fail-next && S --listLockingRanges pw1 /dev/sda", 1, kWrongPassword},
  };
  // Misaligned, inside range 1, around it, past the end, wrapping around.
  for (const char* at : {"8196 8", "4096 8", "0 8192", "937703080 16", "0 18446744073709551608"}) {
    steps.push_back({"S --setupLockingRange 2 " + std::string(at) + " pw1 /dev/sda", 12,
                     invalid + "setupLockingRange Failed \n"});
  }
  for (const char* user : {"User0000", "User0010", "Guest1"}) {
    steps.push_back({"S --enableUser pw1 " + std::string(user) + " /dev/sda", 12, invalid + "enableUser Failed \n"});
  }
  for (const char* args : {"--listLockingRanges bad", "--setupLockingRange 1 0 8 bad", "--setLockingRange 1 LK bad",
                           "--enableLockingRange 1 bad", "--disableLockingRange 0 bad", "--enableUser bad User0001",
                           "--setPassword bad User0001 new", "--revertNoErase bad", "--revertTPer bad",
                           "--setMBREnable ON bad", "--setMBRDone OFF bad", "--loadPBAimage bad PBA.img",
                           "--yesIreallywanttoERASEALLmydatausingthePSID 00000000000000000000000000000000"}) {
    steps.push_back({"S " + std::string(args) + " /dev/sda", 1, kWrongPassword});
  }
  steps.push_back({"cmp drivesim.state .before", 0, ""});
  Play(steps);
}

// Veltrak sets the modes with the companion tool (see the session test);
// sedutil's RO sets the write lock only.
TEST_F(Drivesim, RangesAreRekeyedLockedAndSharedWithUsers) {
  Play({
      {kOwnSda + " && " + kRange1, 0,
       "LockingRange1 reKeyed \nLockingRange1 starting block 2048 for 4096 blocks configured as unlocked range\n"},
      {"S --enableLockingRange 1 pw1 /dev/sda", 0, "LockingRange1 enabled ReadLocking,WriteLocking\n"},
      {"S --setLockingRange 1 RO pw1 /dev/sda", 0, "LockingRange1 set to RO\n"},
      {"show /dev/sda", 0, "Locked Y\nLR1 2048 4096 Y Y N Y 2 Admin1\n"},
      {"S --setlockingrange 1 lk pw1 /dev/sda", 0, "LockingRange1 set to LK\n"},
      {"show /dev/sda", 0, "LR1 2048 4096 Y Y Y Y 2 Admin1\n"},
      {"S --setLockingRange 1 RW pw1 /dev/sda", 0, "LockingRange1 set to RW\n"},
      {"S --disableLockingRange 1 pw1 /dev/sda", 0, "LockingRange1 disabled \n"},
      {"show /dev/sda", 0, "Locked N\nLR1 2048 4096 N N N N 2 Admin1\n"},
      // Access lists: Admin1 first, then the users in order; sedutil names
      // users User000N, the companion tool UserN.
      {"L --Add_ACE_Locking_range /dev/sda pw1 1 User3 User1", 0,
       "Locking Range 1: 2 user(s) added to the access list success\n"},
      {"L --Add_ACE_Locking_range /dev/sda pw1 1 User2 User3 > /dev/null", 0, ""},
      {"L --list_User_ACE_Locking_range /dev/sda pw1 1", 0, "Admin1 User1 User2 User3 can access Locking Range 1\n"},
      {"L --list_User_ACE_Locking_range /dev/sda pw1 2", 0, "Admin1 can access Locking Range 2\n"},
      {"S --enableUser pw1 User0003 /dev/sda", 0, "User0003 has been enabled \n"},
      {"S --setPassword pw1 User0005 secret5 /dev/sda", 0, "User0005 password changed\n"},
      {"L --ListUserStatus pw1 /dev/sda | grep -v Disabled", 0, "User3 : Enabled\n"},
      {"show /dev/sda", 0, "User3 enabled no password\nUser5 disabled password secret5\n"},
  });
}

TEST_F(Drivesim, RevertsKeepOrEraseDataAsADriveDoesAndPsidRevertErasesEverything) {
  const std::string reverted = "revertTper completed successfully\n";
  const std::string psid = "S --yesIreallywanttoERASEALLmydatausingthePSID ";
  Play({
      {kOwnSda + " && " + kRange1 + " > /dev/null && S --revertNoErase pw1 /dev/sda", 0, "Revert LockingSP complete\n"},
      {"S --revertTPer pw1 /dev/sda", 0, reverted},  // SID kept its password
      {kOwnSda + " && S --revertTPer pw1 /dev/sda", 0, reverted},
      {psid + "80213657490812736459018273645091 /dev/sda", 0, reverted},
      // Range 1 lost its key to each Locking SP revert; the global range its
      // own only when the Locking SP was active, and always to PSID revert.
      {"show /dev/sda", 0,
       "Owner (SID) not taken, factory MSID 107E937C4F701A33\nLocking SP inactive\nLR0 0 0 N N N N 3 Admin1\n"
       "LR1 0 0 N N N N 4 Admin1\n"},
      {psid + "80213657490812736459018273645091 /dev/nvme0", 1, kWrongPassword},
      {psid + "ZQ7K2M9X4B1N8C3V6L5P0R2T7Y9W4S1D /dev/nvme0", 0, reverted},
      {"show /dev/nvme0", 0,
       "Owner (SID) not taken, factory MSID BBA48AC1E263B53A\nShadow MBR MBREnable N, MBRDone N\nPre-boot image none\n"
       "LR0 0 0 N N N N 2 Admin1\nLR1 0 0 N N N N 3 Admin1\nUser1 disabled no password\n"},
  });
}

// The state is written to a temporary file that then replaces it.
TEST_F(Drivesim, TheStateFileIsReplacedWholeAndNotTrustedWhenDamaged) {
  Play({
      {"mkdir drivesim.state.tmp && S --setMBRDone OFF Zep2024 /dev/nvme0 > /dev/null", 2,
       "drivesim: cannot create drivesim.state.tmp (Is a directory)\n"},
      {"show /dev/nvme0", 0, "Shadow MBR MBREnable Y, MBRDone Y\n"},
      {"rmdir drivesim.state.tmp && S --setMBRDone OFF Zep2024 /dev/nvme0 && test ! -e drivesim.state.tmp", 0,
       "MBRDone set off \n"},
      {"show /dev/nvme0", 0, "Shadow MBR MBREnable Y, MBRDone N\n"},
  });
  const std::string good = sim.Read("drivesim.state");
  const struct { std::string from, to, fault; } damages[] = {
      {"\nopal", "\njunk\nopal", "line 6: expected 'key = value'"},
      {"\nopal = ", "\ncolour = blue\nopal = ", "line 6: unknown key 'colour'"},
      {"\nuser9_password = \n", "\n", "line 5: this section lacks 'user9_password'"},
      {"mbr_done = N", "mbr_done = maybe", "line 17: expected Y or N, found 'maybe'"},
      {"start 0 length", "start x length", "line 20: 'x' is not a number"},
      {"ace\n", "ace User12\n", "line 20: 'User12' is not a user from User1 to User9"},
      {"[/dev/sdb]", "[/dev/sda]", "line 91: /dev/sda appears twice"},
  };
  for (const auto& damage : damages) {
    std::string text = good;
    sim.Write("drivesim.state", text.replace(text.find(damage.from), damage.from.size(), damage.to));
    const std::string report =
        "drivesim: drivesim.state is damaged at " + damage.fault + "; mend it or start over with `drivesim reset`\n";
    Play({{"S --scan", 2, report}, {"L --scan", 2, report}, {"./drivesim show", 2, report}});
    EXPECT_EQ(text, sim.Read("drivesim.state"));
  }
  Play({{"rm drivesim.state && S --scan", 2, "drivesim: cannot read drivesim.state (No such file or directory); "
                                              "create the drives with `drivesim init`\n"}});
}

}  // namespace

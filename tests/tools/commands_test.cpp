// Both tools against emulated drives, in-process: every command that reaches a drive under each condition an operator
// meets, then the paths only some commands walk.
#include <gtest/gtest.h>

#include <cstring>

#include "drive_access.h"
#include "sedutil_format.h"
#include "tool_bench.h"

namespace tooltest {
namespace {

// A command line run in a world (Bench's words), and what it must do: both streams exactly ('*' standing for any
// text), the exit status, the exchanges with the drive (-1: any), and the state that changes (name=new; a media key
// by its name alone).
struct Case { const char *name, *world, *line; int status, sends; std::string out, err; const char* changes; };

// Runs a case, checking also that a successful command writes exactly when it changes the drive, and that no error
// line holds a phrase Veltrak reads as success.
Ran Check(const Case& c) {
  Bench bench(c.world);
  const auto before = bench.State();
  const Ran ran = bench.Run(c.line);
  std::string changes;
  for (const auto& [name, value] : bench.State()) {
    if (before.at(name) != value) changes += (changes.empty() ? "" : " ") + name + (value[0] == '#' ? "" : "=" + value);
  }
  const std::string where = std::string(c.name) + " (" + c.line + ")";
  EXPECT_TRUE(Matches(Replace(c.out, "{dir}", bench.dir).c_str(), ran.out.c_str())) << where << "\n" << ran.out;
  EXPECT_TRUE(Matches(Replace(c.err, "{dir}", bench.dir).c_str(), ran.err.c_str())) << where << "\n" << ran.err;
  EXPECT_EQ(c.status, ran.status) << where;
  EXPECT_TRUE(c.sends < 0 || c.sends == ran.sends) << where << ": sends " << ran.sends;
  EXPECT_EQ(c.changes, changes) << where;
  EXPECT_TRUE(c.status != 0 || (ran.writes > 0) == !changes.empty()) << where << ": writes " << ran.writes;
  for (const char* phrase : {"success", "Begin", "reKeyed", "set to ", "enabled ReadLocking,WriteLocking", "disabled",
                             "has been enabled", "password changed", "takeOwnership complete", "LockingSupported = ",
                             "can access Locking Range", "Locking function", "RLKEna = "}) {
    EXPECT_EQ(std::string::npos, ran.err.find(phrase)) << where << " says " << phrase;
  }
  return ran;
}

// Each command on a working drive (out nullptr: not on one already owned): its exchanges, output and changes; and the
// lines sedutil adds after a refused session (more).
struct Command { const char* line; int sends; const char *out, *changes, *more; };

// A revert leaves the Locking SP as the factory did, with every media key replaced but, on a revert of the Locking SP
// alone, the global range's.
const char* const kRevertedSp = "ace16=Admins/Admins/ k1 k10 k11 k12 k13 k14 k15 k16 k2 k3 k4 k5 k6 k7 k8 k9 mbr=NN0 "
                                "r15=0/0/NNNN r16=0/0/NNNN sp=off u1=- u2=-";
const char* const kRevertedTper = "ace16=Admins/Admins/ k0 k1 k10 k11 k12 k13 k14 k15 k16 k2 k3 k4 k5 k6 k7 k8 k9 "
                                  "mbr=NN0 r15=0/0/NNNN r16=0/0/NNNN sid=msid sp=off u1=- u2=-";
const Command kCommands[] = {
    {"S --listLockingRanges P D", 21, "Locking Range Configuration for /dev/sda\nLR0 Begin 0 for 0\n            RLKEna "
     "= N  WLKEna = N  RLocked = N  WLocked = N \n*\nLR15 Begin 8 for 8\n            RLKEna = Y  WLKEna = N  RLocked "
     "= Y  WLocked = N \nLR16 Begin 64 for 8\n            RLKEna = Y  WLKEna = N  RLocked = Y  WLocked = N \n", "", ""},
    {"S --setupLockingRange 15 16 32 P D", 6, "LockingRange15 reKeyed \nLockingRange15 starting block 16 for 32 blocks "
     "configured as unlocked range\n", "k15 r15=16/32/NNNN", ""},
    {"S --setLockingRange 15 ro P D", 4, "LockingRange15 set to RO\n", "r15=8/8/YNNY", ""},
    {"S --enableLockingRange 15 P D", 4, "LockingRange15 enabled ReadLocking,WriteLocking\n", "r15=8/8/YYYN", ""},
    {"S --disableLockingRange 15 P D", 4, "LockingRange15 disabled \n", "r15=8/8/NNYN", ""},
    {"S --enableUser P User0003 D", 4, "User0003 has been enabled \n", "u3=+", "Unable to enable user User0003\n"},
    {"S --setPassword P User0003 0123456789abcdef0123456789ABCDEFxyz D", 4, "User0003 password changed\n",
     "u3=-0123456789abcdef0123456789ABCDEF", ""},
    {"S --revertNoErase P D", 3, "Revert LockingSP complete\n", kRevertedSp, "Start session failed\n"},
    {"S --revertTPer P D", 3, "revertTper completed successfully\n", kRevertedTper, ""},
    {"S --yesIreallywanttoERASEALLmydatausingthePSID K D", 3, "revertTper completed successfully\n", kRevertedTper, ""},
    {"S --setMBREnable off P D", 4, "MBRDone set on \nMBREnable set off \n", "mbr=NY0",
     "Unable to set setMBRDone on\nunable to set MBRDone\n"},
    {"S --setMBRDone on P D", 4, "MBRDone set on \n", "mbr=YY0", "Unable to set setMBRDone on\n"},
    {"S --loadPBAimage P {dir}/pba.img D", 4, "Writing PBA to /dev/sda\n5000 of 5000 100% blk=61334 \r\nPBA image  "
     "{dir}/pba.img written to /dev/sda\n", "mbr=YN5000", ""},
    {"S --initialSetup P D", 0, nullptr, nullptr,  // see InitialSetup below
     "takeOwnership failed\nInitial setup failed - unable to take ownership\n"},
    {"L --enableLockingRange 16 P RW D", 4, "Locking Range 16: ReadLockEnabled = Y, WriteLockEnabled = Y: success\n",
     "r16=64/8/YYYN", ""},
    {"L --disableLockingRange 16 P R D", 4, "Locking Range 16: ReadLockEnabled = N: success\n", "r16=64/8/NNYN", ""},
    {"L --setLockingRange 16 N Y P D", 4, "Locking Range 16: ReadLocked = N, WriteLocked = Y as Admin1: success\n",
     "r16=64/8/YNNY", ""},
    {"L --Add_ACE_Locking_range D P 16 User1 User2", 7, "Locking Range 16: may be locked and unlocked by Admins User1 "
     "OR User3 OR User2 OR: success\n", "ace16=Admins,User1,OR,User3,OR,User2,OR/Admins,User1,OR,User3,OR,User2,OR/",
     ""},
    {"L --Delete_AllUser_ACE_Locking_range D P 16", 5, "Locking Range 16: users removed, only the administrators may "
     "lock it: success\n", "ace16=Admins/Admins/", ""},
    {"L --list_User_ACE_Locking_range D P 16", 5, "Admin1 User1 User3 can access Locking Range 16\n", "", ""},
    {"L --ListUserStatus P D", 11, "User1 : Enabled\nUser2 : Enabled\nUser3 : Disabled\nUser4 : Disabled\nUser5 : "
     "Disabled\nUser6 : Disabled\nUser7 : Disabled\nUser8 : Disabled\n", "", ""},
};

// Each tool's exit status and standard error under a condition, {more} standing for the command's more.
struct Condition { std::string name, world; int sedutilExit, lantivoExit; std::string sedutilErr, lantivoErr; };
const std::string kRefused = "\nOne or more header fields have 0 length\nEndSession Failed\n{more}";
// Passwords go to the drive cut to 32 bytes.
const std::string kWorks = "16 own=0123456789abcdef0123456789ABCDEF P=0123456789abcdef0123456789ABCDEFtail grant=16 "
                           "r15=8/8/YNYN r16=64/8/YNYN undone img=5000";
const Condition kConditions[] = {
    {"Works", kWorks + " noaccess tpm0", 0, 0, kNoPermission + kFlagNotSet + kNoPermission + kFlagNotSet, ""},
    {"RefusesTheFirstCall", kWorks + " refuse=3", 63, 1, "method status code FAIL\n*",
     "Lantivo: /dev/sda: *failed: the drive answered FAIL\n"},
    {"WrongPassword", "own img=5000 P=wrong K=WRONGPSIDWRONGPSIDWRONGPSIDWRONG", 1, 1,
     "method status code NOT_AUTHORIZED\nSession start failed rc = 1" + kRefused,
     "Lantivo: /dev/sda refused Admin1: wrong password, or Admin1 is not enabled\n"},
    {"LockedOut", "own lockout img=5000", 18, 1,
     "method status code AUTHORITY_LOCKED_OUT\nSession start failed rc = 18" + kRefused,
     "Lantivo: Admin1 is locked out of /dev/sda after too many wrong passwords; power-cycle the drive\n"},
    {"NoOpal", "noopal tpm0 img=5000", 136, 3, kFlagNotSet + "Invalid or unsupported disk /dev/sda\n",
     "Lantivo: /dev/sda is not an Opal drive: *(the kernel may be blocking * boot with libata.allow_tpm=1)\n"},
    {"MissingDevice", "own img=5000 D=/dev/nvme9", 136, 3, kNoPermission + "Invalid or unsupported disk /dev/nvme9\n",
     "Lantivo: /dev/nvme9: cannot open: No such file or directory\n"},
    {"AnswersGarbage", "own img=5000 garbage", 137, 1, "Properties exchange failed\n/dev/sda: *malformed answer*",
     "Lantivo: /dev/sda: *malformed answer*"},
};

TEST(ConditionMatrix, EveryCommandUnderEveryCondition) {
  for (const Condition& c : kConditions) {
    for (const Command& m : kCommands) {
      // A refused first call never reads as done: nothing on standard output, nothing changed. (An image load says
      // that it starts before its first chunk is refused.)
      const bool works = c.sedutilExit == 0, refused = c.sedutilExit == 63, sedutil = m.line[0] == 'S';
      if ((works && m.out == nullptr) || (refused && std::strstr(m.line, "PBA"))) continue;
      const Ran ran = Check({c.name.c_str(), c.world.c_str(), m.line, sedutil ? c.sedutilExit : c.lantivoExit,
                             works ? m.sends : -1, works ? m.out : "",
                             Replace(sedutil ? c.sedutilErr : c.lantivoErr, "{more}", m.more), works ? m.changes : ""});
      EXPECT_TRUE(works || refused || ran.writes == 0) << c.name << ": " << m.line;
    }
  }
}

const std::string kScan = "Scanning for Opal compliant disks\n/dev/nvme0  2  ZEP NV2000 1TB                           "
                          "2B2QEXM7\n/dev/sda    2  KVX 480GB                                SBFK71F3\n/dev/sdb   No  "
                          "Other HDD                                CC45    \n/dev/sdc   No   \n";
const Case kCases[] = {
    {"ScanWarningsComeFirst", "tpm0 fold", "S --scan", 0, 0,
     kFlagNotSet + kFlagNotSet + kNoPermission + kScan + "No more disks present ending scan\n", "", ""},
    {"Query", "own r1=0/8/YNYN undone", "S --query D", 0, 1, "\n/dev/sda ATA KVX 480GB *\nLocking function (0x0002)\n"
     "    Locked = Y, LockingEnabled = Y, LockingSupported = Y, MBRDone = N, MBREnabled = Y, MediaEncrypt = Y\n*Range "
     "Crossing = N\n\nTPer Properties: \n  MaxComPacketSize = 65536\n*", "", ""},
    {"QueryWithoutProperties", "refuse=1", "S --query D", 0, 1, "\n/dev/sda ATA KVX 480GB*Range Crossing = N\n",
     "Properties exchange failed\n", ""},
    {"GlobalRangeWithoutSession", "own refuse=1", "S --setupLockingRange 0 0 8 P D", 129, 1, "",
     "Properties exchange failed\nglobal locking range cannot be changed\n", ""},
    {"DirectoryAsImage", "own", "S --loadPBAimage P {dir} D", 132, 1, "", "Unable to open PBA image file {dir}\n", ""},
    {"AnImageInThreeChunks", "own img=130000", "S --loadPBAimage P {dir}/pba.img D", 0, 6, "Writing PBA to /dev/sda\n"
     "61334 of 130000 47% blk=61334 \r122668 of 130000 94% blk=61334 \r130000 of 130000 100% blk=61334 \r\nPBA image  "
     "{dir}/pba.img written to /dev/sda\n", "", "mbr=YY130000"},
    {"InitialSetup", "", "S --initialSetup P D", 0, 13, "takeOwnership complete\nLocking SP Activate Complete\n"
     "LockingRange0 disabled \nLockingRange0 set to RW\nMBRDone set on \nMBRDone set on \nMBREnable set on \nInitial "
     "setup of TPer complete on /dev/sda\n", "", "mbr=YY0 sid=debug sp=on"},
    {"InitialSetupOfAnActiveDrive", "own=msid", "S --initialSetup P D", 133, 8, "takeOwnership complete\n", "Locking "
     "SP lifecycle is not Manufactured-Inactive\nInitial setup failed - unable to activate LockingSP\n/dev/sda: the "
     "SID password is now the new password; the Locking SP was left as it was\n", "sid=debug"},
    {"RekeyRefused", "own refuse=5", "S --setupLockingRange 1 2048 4096 P D", 63, 6, "", "method status code FAIL\n"
     "rekeyLockingRange Failed \nsetupLockingRange Unable to reKey Locking range -- Possible security issue \n"
     "/dev/sda: range 1 was moved to block 2048 for 4096 blocks, unlocked, but keeps its old*", "r1=2048/4096/NNNN"},
    {"WriteLockEntryRefused", "own refuse=6", "L --Add_ACE_Locking_range D P 1 User1", 1, 7, "", "Lantivo: /dev/sda: "
     "writing the write-lock access entry of locking range 1 failed: the drive answered FAIL\nLantivo: /dev/sda: the "
     "read-lock access entry of range 1 was already changed to Admins User1 OR*", "ace1=Admins,User1,OR/Admins/"},
    {"WriteLockingAlone", "own", "L --enableLockingRange 2 P W D", 0, 4, "Locking Range 2: WriteLockEnabled = Y: "
     "success\n", "", "r2=0/0/NYNN"},
    {"GrantingAUserAlreadyThereWritesNothing", "own grant=1", "L --Add_ACE_Locking_range D P 1 User3", 0, 5,
     "Locking Range 1: may be locked and unlocked by Admins User1 OR User3 OR: success\n", "", ""},
    {"ARangeTheDriveLacks", "own", "L --enableLockingRange 9 P RW D", 1, 5, "",
     "Lantivo: /dev/sda: * 9 failed: the drive answered INVALID_PARAMETER (the drive has locking ranges 0 to 8)\n", ""},
    {"GrantingAUserTheDriveLacks", "", "L --Add_ACE_Locking_range D P 1 User9", 1, 0, "",
     "Lantivo: /dev/sda has no User9: its users are User1 to User8\n", ""},
    {"AGrantedUserLocks", "own grant=1", "L --setLockingRange 1 Y Y u1 D User1", 0, 4,
     "Locking Range 1: ReadLocked = Y, WriteLocked = Y as User1: success\n", "", "r1=0/0/NNYY"},
};

// Command lines refused before any device is touched: sedutil's 136, the companion tool's 2.
const char* const kRefusedLines[][3] = {
    {"Range16", "S --setupLockingRange 16 0 8 P D", "Invalid Locking Range (0-15) 16\n"},
    {"LockingState", "S --setLockingRange 1 XX P D", "Invalid locking state <ro|rw|lk> XX\n"},
    {"RangeWithLeadingZero", "S --setLockingRange 01 LK P D", "Invalid Locking Range (0-15) 01\n"},
    {"OperandCount", "S --listlockingranges D", "Incorrect number of paramaters for --listlockingranges command\n"},
    {"UnknownCommand", "S --printDefaultPassword D", "Invalid command line argument --printDefaultPassword\n*"},
    {"NoDashN", "sedutil-cli --scan", "usage: sedutil-cli -n <command> <operands>*"},
    {"Hda", "S --query /dev/hda", "DtaDevOS::init ERROR - unknown drive type\nInvalid or unsupported disk /dev/hda\n"},
    {"LockingKind", "L --enableLockingRange 1 P X D", "Lantivo: the locking kind must be R, W or RW\n"},
};

TEST(Commands, EachPrintsItsLinesAndLeavesTheDriveAsExpected) {
  for (const Case& c : kCases) Check(c);
  for (const auto& r : kRefusedLines) Check({r[0], "", r[1], *r[1] == 'L' ? 2 : 136, 0, "", r[2], ""});
}

using namespace veltrak_opal;
using opal::UserUid;

// The pure parts, fed what no emulated drive shows: other SSCs and features, the administrators first in a grant,
// whatever the entry held, and everyone once; an access line sorted, naming each once.
TEST(Lines, ScanOfEverySscGrantsAndAccess) {
  opal::Discovery every;
  every.opal1 = every.opal2 = every.enterprise = opal::SscFeature{};
  const opal::Identity nul{std::string("ZEP\0x", 5), "S", "FW"};  // a NUL ends the model
  EXPECT_EQ("/dev/nvme10 12E ZEP FW      ", sedutil::ScanLine("/dev/nvme10", &every, &nul));
  every.singleUser = opal::SingleUserFeature{9, true, false, true};
  every.dataStore = opal::DataStoreFeature{10, 10485760, 1};
  EXPECT_NE(std::string::npos, sedutil::QueryReport("/dev/nvme10", nul, every).find("SingleUser function (0x0201)\n    "
            "ALL = N, ANY = Y, Policy = Y, Locking Objects = 9\nDataStore function (0x0202)\n    Max Tables = 10, Max "
            "Size Tables = 10485760, Table size alignment = 1\n"));
  EXPECT_EQ("Admins User4 OR User1 OR", lantivo::Describe(lantivo::Granted({UserUid(4)}, {UserUid(1), UserUid(4)})));
  EXPECT_EQ("Admins User4 OR", lantivo::Describe(lantivo::Granted({UserUid(4), opal::kAdmins}, {})));
  EXPECT_EQ("Admin1 Admin2 User1 User3 User10 can access Locking Range 15",
            lantivo::AccessLine(15, opal::AnyOf({opal::kAdmins, UserUid(10), UserUid(1)}),
                                opal::AnyOf({UserUid(3), opal::kAdmin1, opal::AdminUid(2), UserUid(1)})));
}

// sedutil reads user ids with atoi; the companion tool reads names strictly.
TEST(OperatorNames, AsEachToolReadsThem) {
  EXPECT_EQ(opal::kUsers, SedutilPrincipal("User0000")->authority);
  EXPECT_EQ(UserUid(1), SedutilPrincipal("User257")->authority);
  EXPECT_FALSE(SedutilPrincipal("user1") || SedutilPrincipal("Bob"));
  for (const char* bad : {"User0", "User256", "User", "User3x", "user3", "Users", "Admin0", " User1"}) {
    EXPECT_FALSE(StrictPrincipal(bad)) << bad;
  }
}

}  // namespace
}  // namespace tooltest

// The companion tool, command line by command line, against emulated
// drives: success lines that hold "success", failures on standard error that
// never do, exit statuses, and the drive's locking columns and ACEs after.
#include "lantivo_format.h"
#include "tool_cases.h"
#include "uids.h"

namespace tooltest {
namespace {

using opal::BooleanExpr;

opalsim::Range& R(Bench& b, unsigned n) { return b.Drive().ranges[n]; }

BooleanExpr Ace(Bench& b, opal::Uid (*uid)(unsigned), unsigned range) {
  auto found = b.Drive().aces.find(uid(range));
  return found == b.Drive().aces.end() ? opalsim::DefaultAce(b.Drive(), uid(range)) : found->second;
}
std::string ReadLockAce(Bench& b, unsigned range) {
  return veltrak_opal::lantivo::Describe(Ace(b, opal::AceSetRdLockedUid, range));
}
std::string WriteLockAce(Bench& b, unsigned range) {
  return veltrak_opal::lantivo::Describe(Ace(b, opal::AceSetWrLockedUid, range));
}
void SetLockAces(Bench& b, unsigned range, const BooleanExpr& expr) {
  b.Drive().aces[opal::AceSetRdLockedUid(range)] = expr;
  b.Drive().aces[opal::AceSetWrLockedUid(range)] = expr;
}

// Owned, User1 enabled with password "u1", and User1 and User3 granted
// range 1.
void Granted(Bench& b) {
  Own(b.Drive());
  b.Drive().users[0].enabled = true;
  b.Drive().users[0].credential.pin = {'u', '1'};
  b.Drive().users[1].enabled = true;
  b.Drive().users[1].credential.pin = {'u', '2'};
  SetLockAces(b, 1, opal::AnyOf({opal::kAdmins, opal::UserUid(1), opal::UserUid(3)}));
}

const ToolCase kCases[] = {
    {"ScanListsTheDrives", nullptr, Lantivo({"--scan"}),
     {"Lantivo: drives seen in /dev", "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
      "/dev/sda    2  KVX 480GB                                SBFK71F3", "Lantivo: end of the list"},
     {}, 0, nullptr},

    // --- lock switches ---------------------------------------------------------------
    {"EnableReadAndWriteLocking", Owned, Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}),
     {"Locking Range 1: ReadLockEnabled = Y, WriteLockEnabled = Y: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLockEnabled && R(b, 1).writeLockEnabled && !R(b, 1).writeLocked); }},
    {"EnableWriteLockingOnly", Owned, Lantivo({"--enableLockingRange", "2", kPassword, "W", kSda}),
     {"Locking Range 2: WriteLockEnabled = Y: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(!R(b, 2).readLockEnabled && R(b, 2).writeLockEnabled); }},
    {"DisableReadLockingOfTheGlobalRange",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 0).readLockEnabled = R(b, 0).writeLockEnabled = true;
     },
     Lantivo({"--disableLockingRange", "0", kPassword, "R", kSda}), {"Locking Range 0: ReadLockEnabled = N: success"},
     {}, 0, [](Bench& b) { EXPECT_TRUE(!R(b, 0).readLockEnabled && R(b, 0).writeLockEnabled); }},
    {"LockSwitchesOfRangeSixteen", OwnedSixteenRanges, Lantivo({"--enableLockingRange", "16", kPassword, "RW", kSda}),
     {"Locking Range 16: ReadLockEnabled = Y, WriteLockEnabled = Y: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 16).readLockEnabled); }},
    {"LockSwitchesOfARangeTheDriveLacks", Owned, Lantivo({"--enableLockingRange", "9", kPassword, "RW", kSda}), {},
     {"~the drive answered INVALID_PARAMETER (the drive has locking ranges 0 to 8)"}, 1, nullptr},
    {"LockSwitchesOfAnUnknownKind", Owned, Lantivo({"--enableLockingRange", "1", kPassword, "X", kSda}), {},
     {"Lantivo: the locking kind must be R, W or RW"}, 2, nullptr},
    {"LockSwitchesOfANegativeRange", Owned, Lantivo({"--disableLockingRange", "-1", kPassword, "RW", kSda}), {},
     {"~the range must be a number"}, 2, nullptr},
    {"LockSwitchesWithAWrongPassword", Owned, Lantivo({"--enableLockingRange", "1", "wrong", "RW", kSda}), {},
     {"Lantivo: /dev/sda refused Admin1: wrong password, or Admin1 is not enabled"}, 1,
     [](Bench& b) { EXPECT_FALSE(R(b, 1).readLockEnabled); }},
    {"LockSwitchesWhenLockedOut", OwnedLockedOut, Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}), {},
     {"Lantivo: Admin1 is locked out of /dev/sda after too many wrong passwords; power-cycle the drive"}, 1, nullptr},
    {"LockSwitchesWhenTheDriveFailsTheNextAuthentication", OwnedFailNext,
     Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}), {}, {"~refused Admin1: wrong password"}, 1, nullptr},
    {"LockSwitchesOfAFactoryDrive", nullptr, Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}), {},
     {"~is the drive owned and its locking activated?"}, 1, nullptr},
    {"LockSwitchesOfAMissingDevice", nullptr, Lantivo({"--enableLockingRange", "1", kPassword, "RW", "/dev/sdz"}), {},
     {"Lantivo: /dev/sdz: cannot open: No such file or directory"}, 3, nullptr},
    {"LockSwitchesOfADriveWithoutOpal", NoOpal, Lantivo({"--enableLockingRange", "1", kPassword, "RW", kSda}), {},
     {"~Lantivo: /dev/sda is not an Opal drive"}, 3, nullptr},

    // --- lock and unlock ---------------------------------------------------------------
    {"LockAsAdmin1", Owned, Lantivo({"--setLockingRange", "1", "Y", "Y", kPassword, kSda}),
     {"Locking Range 1: ReadLocked = Y, WriteLocked = Y as Admin1: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLocked && R(b, 1).writeLocked && !R(b, 1).readLockEnabled); }},
    {"WriteLockOnly",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 1).readLocked = true;
     },
     Lantivo({"--setLockingRange", "1", "N", "Y", kPassword, kSda}),
     {"Locking Range 1: ReadLocked = N, WriteLocked = Y as Admin1: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(!R(b, 1).readLocked && R(b, 1).writeLocked); }},
    {"AGrantedUserLocksWithItsOwnPassword", Granted, Lantivo({"--setLockingRange", "1", "Y", "Y", "u1", kSda, "User1"}),
     {"Locking Range 1: ReadLocked = Y, WriteLocked = Y as User1: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLocked && R(b, 1).writeLocked); }},
    {"AnotherUserCannotLockTheRange", Granted, Lantivo({"--setLockingRange", "1", "Y", "Y", "u2", kSda, "User2"}), {},
     {"Lantivo: /dev/sda: locking or unlocking of locking range 1 failed: the drive answered NOT_AUTHORIZED"}, 1,
     [](Bench& b) { EXPECT_FALSE(R(b, 1).readLocked || R(b, 1).writeLocked); }},
    {"AGrantedUserCannotLockAnotherRange", Granted, Lantivo({"--setLockingRange", "2", "Y", "Y", "u1", kSda, "User1"}),
     {}, {"~locking or unlocking of locking range 2 failed: the drive answered NOT_AUTHORIZED"}, 1, nullptr},
    {"AUserWithAWrongPassword", Granted, Lantivo({"--setLockingRange", "1", "Y", "Y", "u2", kSda, "User1"}), {},
     {"Lantivo: /dev/sda refused User1: wrong password, or User1 is not enabled"}, 1, nullptr},
    {"AnUnknownAuthority", Granted, Lantivo({"--setLockingRange", "1", "Y", "Y", "u1", kSda, "Bob"}), {},
     {"~the last operand must name Admin1 or a user"}, 2, nullptr},
    {"ALockFlagThatIsNeitherYNorN", Owned, Lantivo({"--setLockingRange", "1", "Y", "yes", kPassword, kSda}), {},
     {"Lantivo: each lock flag must be Y or N"}, 2, nullptr},
    {"LockRangeSixteen", OwnedSixteenRanges, Lantivo({"--setLockingRange", "16", "Y", "N", kPassword, kSda}),
     {"Locking Range 16: ReadLocked = Y, WriteLocked = N as Admin1: success"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 16).readLocked); }},

    // --- granting ranges ---------------------------------------------------------------
    {"GrantTwoUsers", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User1", "User3"}),
     {"Locking Range 1: may be locked and unlocked by Admins User1 OR User3 OR: success"}, {}, 0,
     [](Bench& b) {
       EXPECT_EQ("Admins User1 OR User3 OR", ReadLockAce(b, 1));
       EXPECT_EQ("Admins User1 OR User3 OR", WriteLockAce(b, 1));
       EXPECT_EQ("Admins", ReadLockAce(b, 2));
     }},
    {"GrantKeepsTheUsersAlreadyThere",
     [](Bench& b) {
       Own(b.Drive());
       SetLockAces(b, 2, opal::AnyOf({opal::kAdmins, opal::UserUid(2)}));
     },
     Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "2", "User1", "User2"}),
     {"Locking Range 2: may be locked and unlocked by Admins User2 OR User1 OR: success"}, {}, 0,
     [](Bench& b) { EXPECT_EQ("Admins User2 OR User1 OR", WriteLockAce(b, 2)); }},
    {"GrantPutsTheAdministratorsBackBeforeAUserOnlyEntry",
     [](Bench& b) {
       Own(b.Drive());
       SetLockAces(b, 1, {opal::AceTerm::Authority(opal::UserUid(4)), opal::AceTerm::Authority(opal::UserUid(4)),
                          opal::AceTerm::Operator(opal::BooleanOp::kOr)});
     },
     Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User1"}),
     {"Locking Range 1: may be locked and unlocked by Admins User4 OR User1 OR: success"}, {}, 0, nullptr},
    {"GrantRefusesAnEntryThatIsNotAPlainList",
     [](Bench& b) {
       Own(b.Drive());
       b.Drive().aces[opal::AceSetWrLockedUid(1)] = {opal::AceTerm::Authority(opal::kAdmins),
                                                     opal::AceTerm::Authority(opal::UserUid(2)),
                                                     opal::AceTerm::Operator(opal::BooleanOp::kAnd)};
     },
     Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User1"}), {},
     {"~the write-lock access entry of range 1 reads \"Admins User2 AND\", which is not a plain list"}, 1,
     [](Bench& b) {
       EXPECT_EQ("Admins", ReadLockAce(b, 1)) << "nothing may be half-written";
       EXPECT_EQ("Admins User2 AND", WriteLockAce(b, 1));
     }},
    {"GrantAUserTheDriveLacks", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "User9"}), {},
     {"Lantivo: /dev/sda has no User9: its users are User1 to User8"}, 1, nullptr},
    {"GrantSomethingThatIsNotAUser", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1", "Admin2"}), {},
     {"Lantivo: users must be named User1, User2, ..."}, 2, nullptr},
    {"GrantWithoutUsers", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "1"}), {},
     {"Lantivo: wrong number of operands for --Add_ACE_Locking_range", "~usage: Lantivo"}, 2, nullptr},
    {"GrantWithAWrongPassword", Owned, Lantivo({"--Add_ACE_Locking_range", kSda, "wrong", "1", "User1"}), {},
     {"~refused Admin1"}, 1, [](Bench& b) { EXPECT_EQ("Admins", ReadLockAce(b, 1)); }},
    {"GrantRangeSixteen", OwnedSixteenRanges, Lantivo({"--Add_ACE_Locking_range", kSda, kPassword, "16", "User2"}),
     {"Locking Range 16: may be locked and unlocked by Admins User2 OR: success"}, {}, 0,
     [](Bench& b) { EXPECT_EQ("Admins User2 OR", ReadLockAce(b, 16)); }},
    {"RemoveEveryUser", Granted, Lantivo({"--Delete_AllUser_ACE_Locking_range", kSda, kPassword, "1"}),
     {"Locking Range 1: users removed, only the administrators may lock it: success"}, {}, 0,
     [](Bench& b) { EXPECT_EQ("Admins", ReadLockAce(b, 1) + (WriteLockAce(b, 1) == "Admins" ? "" : "!")); }},
    {"RemoveWithAWrongPassword", Granted, Lantivo({"--Delete_AllUser_ACE_Locking_range", kSda, "wrong", "1"}), {},
     {"~refused Admin1"}, 1, [](Bench& b) { EXPECT_EQ("Admins User1 OR User3 OR", ReadLockAce(b, 1)); }},

    // --- listings ---------------------------------------------------------------------
    {"ListAGrantedRange", Granted, Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "1"}),
     {"Admin1 User1 User3 can access Locking Range 1"}, {}, 0, nullptr},
    {"ListARangeOfTheAdministratorsAlone", Granted, Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "0"}),
     {"Admin1 can access Locking Range 0"}, {}, 0, nullptr},
    {"ListNamesUsersOfEitherEntryOnce",
     [](Bench& b) {
       Own(b.Drive());
       b.Drive().aces[opal::AceSetRdLockedUid(3)] = opal::AnyOf({opal::kAdmins, opal::UserUid(5), opal::UserUid(2)});
       b.Drive().aces[opal::AceSetWrLockedUid(3)] = opal::AnyOf({opal::UserUid(2), opal::UserUid(7)});
     },
     Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "3"}), {"Admin1 User2 User5 User7 can access Locking Range 3"},
     {}, 0, nullptr},
    {"ListARangeTheDriveLacks", Owned, Lantivo({"--list_User_ACE_Locking_range", kSda, kPassword, "9"}), {},
     {"~(the drive has locking ranges 0 to 8)"}, 1, nullptr},
    {"ListWithAWrongPassword", Owned, Lantivo({"--list_User_ACE_Locking_range", kSda, "wrong", "1"}), {},
     {"~refused Admin1"}, 1, nullptr},
    {"UserStatusOfEveryUser", Granted, Lantivo({"--ListUserStatus", kPassword, kSda}),
     {"User1 : Enabled", "User2 : Enabled", "User3 : Disabled", "User4 : Disabled", "User5 : Disabled",
      "User6 : Disabled", "User7 : Disabled", "User8 : Disabled"},
     {}, 0, nullptr},
    {"UserStatusWithAWrongPassword", Owned, Lantivo({"--ListUserStatus", "wrong", kSda}), {}, {"~refused Admin1"}, 1,
     nullptr},
    {"UserStatusWhenLockedOut", OwnedLockedOut, Lantivo({"--ListUserStatus", kPassword, kSda}), {},
     {"~locked out"}, 1, nullptr},
    {"UserStatusOfAMissingDevice", nullptr, Lantivo({"--ListUserStatus", kPassword, "/dev/nvme7"}), {},
     {"~/dev/nvme7: cannot open"}, 3, nullptr},
    {"UserStatusOnNvme", [](Bench& b) { Own(b.Drive(kNvme)); }, Lantivo({"--ListUserStatus", kPassword, kNvme}),
     {"User1 : Disabled", "User2 : Disabled", "User3 : Disabled", "User4 : Disabled", "User5 : Disabled",
      "User6 : Disabled", "User7 : Disabled", "User8 : Disabled"},
     {}, 0, nullptr},

    // --- the command line itself ------------------------------------------------------
    {"UnknownCommand", nullptr, Lantivo({"--eraseEverything", kSda}), {},
     {"Lantivo: unknown command", "~usage: Lantivo"}, 2, nullptr},
};

class LantivoTool : public testing::TestWithParam<ToolCase> {};

TEST_P(LantivoTool, AnswersInItsWordsAndLeavesTheDriveAsExpected) {
  Bench bench;
  const ToolCase& c = GetParam();
  if (c.err.size() == 2 && c.err[1].rfind("~usage", 0) == 0) {
    Ran ran = bench.Run(c.argv);
    ASSERT_GT(ran.err.size(), 2u);
    ran.err.resize(2);
    ExpectLines(c.err, ran.err, "stderr");
    EXPECT_EQ(c.status, ran.status);
    return;
  }
  Ran ran = RunCase(bench, c);
  ExpectNoSuccessPhrase(ran.err);
  // Veltrak judges a lock-state command by every line holding "success".
  const bool lockState = c.argv[1].find("LockingRange") != std::string::npos;
  if (lockState && ran.status == 0) {
    for (const std::string& line : ran.out) EXPECT_NE(line.find("success"), std::string::npos) << line;
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, LantivoTool, testing::ValuesIn(kCases), CaseName);

}  // namespace
}  // namespace tooltest

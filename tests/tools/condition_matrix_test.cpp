// Every command that reaches a drive, of both tools, under each condition an
// operator meets: wrong password, locked out, a drive with 16 ranges (its
// last range), a drive without Opal, a missing device.
#include "tool_cases.h"

namespace tooltest {
namespace {

// {P} password, {D} device, {R} range, {S} PSID.
const std::vector<std::vector<std::string>> kSedutil = {
    {"--listLockingRanges", "{P}", "{D}"}, {"--setupLockingRange", "{R}", "8", "8", "{P}", "{D}"},
    {"--setLockingRange", "{R}", "LK", "{P}", "{D}"}, {"--enableLockingRange", "{R}", "{P}", "{D}"},
    {"--disableLockingRange", "{R}", "{P}", "{D}"}, {"--enableUser", "{P}", "User0001", "{D}"},
    {"--setPassword", "{P}", "User0001", "x", "{D}"}, {"--revertNoErase", "{P}", "{D}"}, {"--revertTPer", "{P}", "{D}"},
    {"--yesIreallywanttoERASEALLmydatausingthePSID", "{S}", "{D}"}, {"--setMBREnable", "on", "{P}", "{D}"},
    {"--setMBRDone", "on", "{P}", "{D}"}, {"--loadPBAimage", "{P}", "{dir}/pba.img", "{D}"},
    {"--initialSetup", "{P}", "{D}"}};
const std::vector<std::vector<std::string>> kLantivo = {
    {"--enableLockingRange", "{R}", "{P}", "RW", "{D}"}, {"--disableLockingRange", "{R}", "{P}", "R", "{D}"},
    {"--setLockingRange", "{R}", "Y", "Y", "{P}", "{D}"}, {"--Add_ACE_Locking_range", "{D}", "{P}", "{R}", "User1"},
    {"--Delete_AllUser_ACE_Locking_range", "{D}", "{P}", "{R}"}, {"--list_User_ACE_Locking_range", "{D}", "{P}", "{R}"},
    {"--ListUserStatus", "{P}", "{D}"}};

struct Condition {
  const char* name;
  void (*setup)(Bench&);
  const char *password, *psid, *device, *sedutilRange, *lantivoRange;
  int sedutilStatus;
  std::vector<std::string> sedutilErrHead;  // the first stderr lines
  int lantivoStatus;
  const char* lantivoSaid;
};

void LockedOutEverywhere(Bench& b) {
  OwnedLockedOut(b);
  b.Drive().sid.tries = b.Drive().psid.tries = b.Drive().settings.tryLimit;
}

const Condition kConditions[] = {
    {"WrongPassword", Owned, "wrong", "WRONGPSIDWRONGPSIDWRONGPSIDWRONG", kSda, "1", "1", 1,
     {"method status code NOT_AUTHORIZED", "Session start failed rc = 1", "One or more header fields have 0 length",
      "EndSession Failed"},
     1, "refused Admin1: wrong password"},
    {"LockedOut", LockedOutEverywhere, kPassword, kSdaPsid, kSda, "1", "1", 18,
     {"method status code AUTHORITY_LOCKED_OUT", "Session start failed rc = 18"}, 1, "locked out"},
    {"NoOpal", NoOpal, kPassword, kSdaPsid, kSda, "1", "1", 136, {"Invalid or unsupported disk /dev/sda"}, 3,
     "is not an Opal drive"},
    {"MissingDevice", Owned, kPassword, kSdaPsid, "/dev/sdz", "1", "1", 136,
     {"You do not have permission to access the raw disk in write mode"}, 3, "/dev/sdz: cannot open"},
    {"SixteenRangesLastRange", OwnedSixteenRanges, kPassword, kSdaPsid, kSda, "15", "16", 0, {}, 0, nullptr},
};

std::vector<std::string> Fill(std::vector<std::string> args, const Condition& c, bool sedutil) {
  for (std::string& arg : args) {
    if (arg == "{P}") arg = c.password;
    if (arg == "{S}") arg = c.psid;
    if (arg == "{D}") arg = c.device;
    if (arg == "{R}") arg = sedutil ? c.sedutilRange : c.lantivoRange;
  }
  return sedutil ? Sedutil(args) : Lantivo(args);
}

TEST(ConditionMatrix, EveryCommandUnderEveryCondition) {
  for (const Condition& c : kConditions) {
    for (bool sedutil : {true, false}) {
      for (const std::vector<std::string>& command : sedutil ? kSedutil : kLantivo) {
        if (sedutil && command[0] == "--initialSetup" && c.sedutilStatus == 0) continue;  // needs a factory drive
        Bench bench;
        c.setup(bench);
        bench.WriteFile("pba.img", "image");
        const std::vector<std::string> argv = Fill(command, c, sedutil);
        const Ran ran = bench.Run(argv);
        const std::string where = std::string(c.name) + " " + testing::PrintToString(argv);
        ExpectNoSuccessPhrase(ran.err);
        if (sedutil) {
          EXPECT_EQ(c.sedutilStatus, ran.status) << where << testing::PrintToString(ran.err);
          ASSERT_GE(ran.err.size(), c.sedutilErrHead.size()) << where;
          EXPECT_EQ(c.sedutilErrHead, std::vector<std::string>(ran.err.begin(), ran.err.begin() + c.sedutilErrHead.size()))
              << where;
        } else {
          EXPECT_EQ(c.lantivoStatus, ran.status) << where << testing::PrintToString(ran.err);
          if (c.lantivoSaid != nullptr) {
            ASSERT_EQ(1u, ran.err.size()) << where;
            EXPECT_NE(std::string::npos, ran.err[0].find(c.lantivoSaid)) << where << ran.err[0];
          }
        }
        if (c.sedutilStatus != 0) {
          EXPECT_TRUE(ran.out.empty()) << where << testing::PrintToString(ran.out);
        }
      }
    }
  }
}

}  // namespace
}  // namespace tooltest

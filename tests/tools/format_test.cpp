// The pure parts of the two tools, fed literal values: sedutil's lines with
// their odd spots, the companion tool's lines and access expressions, and
// the names operators type for users, ranges and devices.
#include <gtest/gtest.h>

#include "drive_access.h"
#include "lantivo_format.h"
#include "sedutil_format.h"
#include "uids.h"

namespace veltrak_opal {
namespace {

TEST(SedutilLines, ScanLinesKeepTheirColumns) {
  const opal::Identity kvx{"KVX 480GB", "S", "SBFK71F3"};
  opal::Discovery opal2;
  opal2.opal2 = opal::SscFeature{};
  opal::Discovery everything = opal2;
  everything.opal1 = everything.enterprise = opal::SscFeature{};
  const opal::Identity nul{std::string("ZEP\0junk", 8), "S", "FW"};
  struct Row {
    const char* name;
    std::string path;
    const opal::Discovery* discovery;
    const opal::Identity* identity;
    std::string line;
  } rows[] = {
      {"Opal2", "/dev/sda", &opal2, &kvx, "/dev/sda    2  KVX 480GB                                SBFK71F3"},
      // A 10-character path meets the flags with no blank between.
      {"EverySsc", "/dev/nvme0", &everything, &kvx, "/dev/nvme0 12E KVX 480GB                                SBFK71F3"},
      {"NoSsc", "/dev/sdb", nullptr, &kvx, "/dev/sdb   No  KVX 480GB                                SBFK71F3"},
      {"Unidentified", "/dev/sdc", nullptr, nullptr, "/dev/sdc   No   "},
      {"LongPath", "/dev/nvme10", &opal2, &kvx, "/dev/nvme10  2  KVX 480GB                                SBFK71F3"},
      {"NulEndsTheModel", "/dev/sda", &opal2, &nul, "/dev/sda    2  ZEP FW      "},
  };
  for (const Row& row : rows) EXPECT_EQ(row.line, sedutil::ScanLine(row.path, row.discovery, row.identity)) << row.name;
}

TEST(SedutilLines, QueryReportPrintsEveryFeatureInFixedOrder) {
  opal::Discovery d;
  d.opal2 = opal::SscFeature{0x1000, 1, false, 4, 9, 0, 0};
  d.tper = opal::TperFeature{true, true, false, true, true, false};
  d.locking = opal::LockingFeature{true, true, false, true, true, false};
  d.geometry = opal::GeometryFeature{false, 4096, 2, 7};
  d.enterprise = opal::SscFeature{0x07FE, 26, true};
  d.opal1 = opal::SscFeature{0x0ABC, 2};
  d.singleUser = opal::SingleUserFeature{9, true, false, true};
  d.dataStore = opal::DataStoreFeature{10, 10485760, 1};
  d.unknownFeatures = 3;
  EXPECT_EQ("\n"
            "/dev/nvme0 NVMe M                                        F        S                   \n"
            "TPer function (0x0001)\n"
            "    ACKNAK = N, ASYNC = Y, BufferManagement = Y, comIDManagement  = N, Streaming = Y, SYNC = Y\n"
            "Locking function (0x0002)\n"
            "    Locked = N, LockingEnabled = Y, LockingSupported = Y, MBRDone = N, MBREnabled = Y, MediaEncrypt = Y\n"
            "Geometry function (0x0003)\n"
            "    Align = N, Alignment Granularity = 2 (8192), Logical Block size = 4096, Lowest Aligned LBA = 7\n"
            "Enterprise function (0x0100)\n"
            "    Range crossing = Y, Base comID = 0x07fe, comIDs = 1a\n"
            "Opal V1.0 function (0x0200)\n"
            "Base comID = 0x0abc, comIDs = 2\n"
            "SingleUser function (0x0201)\n"
            "    ALL = N, ANY = Y, Policy = Y, Locking Objects = 9\n"
            "DataStore function (0x0202)\n"
            "    Max Tables = 10, Max Size Tables = 10485760, Table size alignment = 1\n"
            "OPAL 2.0 function (0x0203)\n"
            "    Base comID = 0x1000, Initial PIN = 0x00, Reverted PIN = 0x00, comIDs = 1\n"
            "    Locking Admins = 4, Locking Users = 9, Range Crossing = N\n"
            "**** 3 **** Unknown function codes IGNORED \n",
            sedutil::QueryReport("/dev/nvme0", opal::Identity{"M", "S", "F"}, d));
}

// Properties start at tokens 5, 9, 13 (TPer) and 21 (host, after the end of
// the list at 17 and HostProperties at 18); breaks follow tokens 0, 6, 12,
// 18, 24 and 30.
TEST(SedutilLines, PropertiesBreakAtEverySixthToken) {
  EXPECT_EQ("\nTPer Properties: \n"
            "  MaxComPacketSize = 2048\n"
            "  MaxPacketSize = 2028\n"
            "  MaxIndTokenSize = 1992"
            "\nHost Properties: \n\n"
            "  MaxComPacketSize = 2048\n\n",
            sedutil::PropertiesBlock({{"MaxComPacketSize", 2048}, {"MaxPacketSize", 2028}, {"MaxIndTokenSize", 1992}},
                                     {{"MaxComPacketSize", 2048}}));
}

TEST(SedutilLines, RangeLinesAndFailureLines) {
  EXPECT_EQ((std::vector<std::string>{"LR12 Begin 18446744073709551615 for 8",
                                      "            RLKEna = Y  WLKEna = N  RLocked = N  WLocked = Y "}),
            sedutil::RangeLines(12, opal::RangeInfo{UINT64_MAX, 8, true, false, false, true}));
  EXPECT_EQ((std::vector<std::string>{"method status code SP_BUSY", "Session start failed rc = 3",
                                      "One or more header fields have 0 length", "EndSession Failed"}),
            sedutil::SessionFailureLines(3, "unused"));
  EXPECT_EQ((std::vector<std::string>{"/dev/sda: garbage", "Session start failed rc = 137",
                                      "One or more header fields have 0 length", "EndSession Failed"}),
            sedutil::SessionFailureLines(-1, "/dev/sda: garbage"));
  EXPECT_EQ("method status code Unknown status code", sedutil::CallFailureLine(2, "unused"));
}

using lantivo::AccessLine;
using lantivo::Describe;
using lantivo::Granted;
using opal::AceTerm;
using opal::BooleanOp;
using opal::UserUid;

TEST(LantivoLines, AccessExpressionsInWords) {
  EXPECT_EQ("Admins User1 OR User3 OR", Describe(opal::AnyOf({opal::kAdmins, UserUid(1), UserUid(3)})));
  EXPECT_EQ("Admin1 User2 AND NOT", Describe({AceTerm::Authority(opal::kAdmin1), AceTerm::Authority(UserUid(2)),
                                              AceTerm::Operator(BooleanOp::kAnd), AceTerm::Operator(BooleanOp::kNot)}));
  EXPECT_EQ("(empty)", Describe({}));
  EXPECT_EQ("Anybody 0x0000000900000999", Describe({AceTerm::Authority(opal::kAnybody), AceTerm::Authority(0x0000000900000999)}));
}

TEST(LantivoLines, GrantingKeepsTheAdministratorsFirstAndEveryoneOnce) {
  struct Row {
    const char* name;
    std::vector<opal::Uid> listed, added;
    const char* expected;
  } rows[] = {
      {"Default", {opal::kAdmins}, {UserUid(1), UserUid(3)}, "Admins User1 OR User3 OR"},
      {"UsersAlreadyThere", {opal::kAdmins, UserUid(2)}, {UserUid(2), UserUid(1)}, "Admins User2 OR User1 OR"},
      {"AdminsMissing", {UserUid(4)}, {UserUid(1)}, "Admins User4 OR User1 OR"},
      {"AdminsLater", {UserUid(4), opal::kAdmins}, {}, "Admins User4 OR"},
      {"RepeatedAdds", {opal::kAdmins}, {UserUid(5), UserUid(5)}, "Admins User5 OR"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.expected, Describe(Granted(row.listed, row.added))) << row.name;
}

TEST(LantivoLines, AccessLineNamesAdmin1FirstThenEachOtherAuthorityOnce) {
  const opal::BooleanExpr admins = opal::AnyOf({opal::kAdmins});
  EXPECT_EQ("Admin1 can access Locking Range 0", AccessLine(0, admins, admins));
  EXPECT_EQ("Admin1 User1 User3 User10 can access Locking Range 15",
            AccessLine(15, opal::AnyOf({opal::kAdmins, UserUid(10), UserUid(1)}),
                       opal::AnyOf({UserUid(3), opal::kAdmin1, UserUid(1)})));
  EXPECT_EQ("Admin1 Admin2 User1 can access Locking Range 2",
            AccessLine(2, opal::AnyOf({UserUid(1), opal::AdminUid(2)}), {}));
  EXPECT_EQ("User4 : Enabled", lantivo::UserStatusLine(4, true));
  EXPECT_EQ("User12 : Disabled", lantivo::UserStatusLine(12, false));
}

TEST(OperatorNames, SedutilReadsUserIdsWithAtoi) {
  struct Row {
    const char* id;
    std::optional<opal::Uid> authority;
    opal::Uid credential;
  } rows[] = {
      {"User0001", UserUid(1), 0x0000000B00030001}, {"User9", UserUid(9), 0x0000000B00030009},
      {"User0000", opal::kUsers, 0x0000000B00030000}, {"User257", UserUid(1), 0x0000000B00030001},
      {"Userx", opal::kUsers, 0x0000000B00030000},   {"Admin1", opal::kAdmin1, 0x0000000B00010001},
      {"user1", std::nullopt, 0},                     {"Bob", std::nullopt, 0},
  };
  for (const Row& row : rows) {
    std::optional<Principal> principal = SedutilPrincipal(row.id);
    ASSERT_EQ(row.authority.has_value(), principal.has_value()) << row.id;
    if (!principal) continue;
    EXPECT_EQ(*row.authority, principal->authority) << row.id;
    EXPECT_EQ(row.credential, principal->credential) << row.id;
  }
}

TEST(OperatorNames, TheCompanionToolReadsNamesStrictly) {
  EXPECT_EQ(UserUid(3), StrictPrincipal("User3")->authority);
  EXPECT_EQ(UserUid(255), StrictPrincipal("User255")->authority);
  EXPECT_EQ(opal::AdminUid(2), StrictPrincipal("Admin2")->authority);
  for (const char* bad : {"User0", "User256", "User", "User3x", "User-1", "user3", "Users", "Admin0", " User1"}) {
    EXPECT_FALSE(StrictPrincipal(bad).has_value()) << bad;
  }
  EXPECT_EQ(0u, *RangeNumber("0"));
  EXPECT_EQ(255u, *RangeNumber("255"));
  for (const char* bad : {"", "256", "-1", "1a", "+1", "1000"}) EXPECT_FALSE(RangeNumber(bad).has_value()) << bad;
  EXPECT_EQ("Admin4", AuthorityName(opal::AdminUid(4)));
  EXPECT_EQ("Users", AuthorityName(opal::kUsers));
}

TEST(OperatorNames, ScansListControllersAndWholeSataDisksInByteOrder) {
  EXPECT_EQ((std::vector<std::string>{"/dev/nvme0", "/dev/nvme10", "/dev/nvme2", "/dev/sda", "/dev/sdz"}),
            ScannedPaths({"sdz", "nvme2", "sda1", "nvme0n1", "sdaa", "nvme10", "nvme100", "null", "sda", "nvme0",
                          "sda", "sdA", "nvme"}));
  EXPECT_EQ((std::vector<uint8_t>(32, 'x')), PasswordBytes(std::string(40, 'x')));
  EXPECT_TRUE(PasswordBytes("").empty());
}

}  // namespace
}  // namespace veltrak_opal

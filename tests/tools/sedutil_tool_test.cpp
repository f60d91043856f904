// The sedutil-compatible tool, command line by command line, against
// emulated drives: the exact lines sedutil 1.20 prints on each stream, its
// exit statuses, and what the drive holds afterwards.
#include "tool_cases.h"
#include "uids.h"

namespace tooltest {
namespace {

std::vector<std::string> Refusal(const std::string& status, int rc) {
  return {"method status code " + status, "Session start failed rc = " + std::to_string(rc),
          "One or more header fields have 0 length", "EndSession Failed"};
}
const std::vector<std::string> kWrongPassword = Refusal("NOT_AUTHORIZED", 1);

template <typename... More>
std::vector<std::string> Then(std::vector<std::string> lines, More... more) {
  (lines.push_back(more), ...);
  return lines;
}

const std::string kFlagsClear = "            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N ";

// The listing of a drive whose ranges 0..last are all empty and clear.
std::vector<std::string> EmptyListing(unsigned last) {
  std::vector<std::string> lines = {"Locking Range Configuration for /dev/sda"};
  for (unsigned i = 0; i <= last; ++i) {
    lines.push_back("LR" + std::to_string(i) + " Begin 0 for 0");
    lines.push_back(kFlagsClear);
  }
  return lines;
}

const std::vector<std::string> kNoPermission = {"You do not have permission to access the raw disk in write mode",
                                                "Perhaps you might try sudo to run as root"};
const std::vector<std::string> kMissingDevice = Then(kNoPermission, "Invalid or unsupported disk /dev/sdz");

const std::vector<std::string> kFlagNotSet = {"The Kernel flag libata.allow_tpm is not set correctly",
                                              "Please see the readme note about setting the libata.allow_tpm "};
const std::vector<std::string> kFlagUnreadable = {"Unable to verify Kernel flag libata.allow_tpm "};
std::vector<std::string> Twice(const std::vector<std::string>& lines) {
  std::vector<std::string> both = lines;
  both.insert(both.end(), lines.begin(), lines.end());
  return both;
}

opalsim::Range& R(Bench& b, unsigned n) { return b.Drive().ranges[n]; }
std::string Pin(const opalsim::Credential& c) { return std::string(c.pin.begin(), c.pin.end()); }

const ToolCase kCases[] = {
    // --- scan and query -------------------------------------------------------------
    {"ScanListsOpalControllersAndSataDisksInByteOrder",
     [](Bench& b) {
       b.world.drives.push_back(opalsim::NewDrive("/dev/sdb", "Other HDD", "CC45", kSdaPsid, 8, false));
     },
     Sedutil({"--scan"}),
     {"Scanning for Opal compliant disks", "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
      "/dev/sda    2  KVX 480GB                                SBFK71F3",
      "/dev/sdb   No  Other HDD                                CC45    ", "No more disks present ending scan"},
     {}, 0, nullptr},
    {"ScanOfADiskThatCannotBeOpened", [](Bench& b) { b.devNames.push_back("sdc"); }, Sedutil({"--scan"}),
     {"Scanning for Opal compliant disks", "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
      "/dev/sda    2  KVX 480GB                                SBFK71F3", "/dev/sdc   No   ",
      "No more disks present ending scan"},
     kNoPermission, 0, nullptr},
    {"QueryOfAMissingDevice", nullptr, Sedutil({"--query", "/dev/sdz"}), {}, kMissingDevice, 136, nullptr},
    {"QueryOfAnyMissingSlashDevSPathIsSata", nullptr, Sedutil({"--query", "/dev/sg0"}), {},
     Then(kNoPermission, "Invalid or unsupported disk /dev/sg0"), 136, nullptr},
    {"SataRefusedByAccessIsOpenedAllTheSame",
     [](Bench& b) {
       Own(b.Drive());
       b.noAccess = {kSda};
     },
     Sedutil({"--revertTPer", kPassword, kSda}), {"revertTper completed successfully"}, Twice(kNoPermission), 0,
     nullptr},
    {"SataThatAccessAllowsButThatWillNotOpen", [](Bench& b) { b.noOpen = {kSda}; }, Sedutil({"--query", kSda}), {},
     {"Invalid or unsupported disk /dev/sda"}, 136, nullptr},
    {"NvmeIsNeverAskedAboutAccess",
     [](Bench& b) {
       Own(b.Drive(kNvme));
       b.noAccess = {kNvme};
     },
     Sedutil({"--revertTPer", kPassword, kNvme}), {"revertTper completed successfully"}, {}, 0, nullptr},
    {"NvmeThatWillNotOpen", [](Bench& b) { b.noOpen = {kNvme}; }, Sedutil({"--query", kNvme}), {},
     Then(kNoPermission, "Invalid or unsupported disk /dev/nvme0"), 136, nullptr},
    {"QueryOfAnUnknownKindOfDevice", nullptr, Sedutil({"--query", "/dev/hda"}), {},
     {"DtaDevOS::init ERROR - unknown drive type", "Invalid or unsupported disk /dev/hda"}, 136, nullptr},
    {"QueryOfADriveWithoutOpal", NoOpal, Sedutil({"--query", kSda}), {}, {"Invalid or unsupported disk /dev/sda"}, 136,
     nullptr},

    // --- listLockingRanges: Veltrak's password check ---------------------------------
    {"ListOfAFactoryDriveRefusedAsInactive", nullptr, Sedutil({"--listLockingRanges", kPassword, kSda}), {},
     Refusal("INVALID_PARAMETER", 12), 12, nullptr},
    {"ListWithTheRightPassword", Owned, Sedutil({"--listLockingRanges", kPassword, kSda}), EmptyListing(8), {}, 0,
     nullptr},
    {"ListWithAWrongPassword", Owned, Sedutil({"--listLockingRanges", "wrong", kSda}), {}, kWrongPassword, 1,
     [](Bench& b) { EXPECT_EQ(1u, b.Drive().admins[0].credential.tries); }},
    {"ListWhenLockedOut", OwnedLockedOut, Sedutil({"--listLockingRanges", kPassword, kSda}), {},
     Refusal("AUTHORITY_LOCKED_OUT", 18), 18, nullptr},
    {"ListWhenTheDriveFailsTheNextAuthentication", OwnedFailNext, Sedutil({"--listLockingRanges", kPassword, kSda}), {},
     kWrongPassword, 1, nullptr},
    {"ListOfSixteenRanges", OwnedSixteenRanges, Sedutil({"--listLockingRanges", kPassword, kSda}), EmptyListing(16), {},
     0, nullptr},
    {"ListShowsEachRangesAddressAndFlags",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 1) = {2048, 4096, true, true, false, true, {0}, 1};
     },
     Sedutil({"--listLockingRanges", kPassword, kSda}),
     [] {
       std::vector<std::string> lines = EmptyListing(8);
       lines[3] = "LR1 Begin 2048 for 4096";
       lines[4] = "            RLKEna = Y  WLKEna = Y  RLocked = N  WLocked = Y ";
       return lines;
     }(),
     {}, 0, nullptr},
    {"ListOfAMissingDevice", nullptr, Sedutil({"--listLockingRanges", kPassword, "/dev/sdz"}), {}, kMissingDevice, 136,
     nullptr},
    {"ListOfADriveWithoutOpal", NoOpal, Sedutil({"--listLockingRanges", kPassword, kSda}), {},
     {"Invalid or unsupported disk /dev/sda"}, 136, nullptr},
    {"ListOnNvme", [](Bench& b) { Own(b.Drive(kNvme)); }, Sedutil({"--listLockingRanges", kPassword, kNvme}),
     [] {
       std::vector<std::string> lines = EmptyListing(8);
       lines[0] = "Locking Range Configuration for /dev/nvme0";
       return lines;
     }(),
     {}, 0, nullptr},

    // --- setupLockingRange -----------------------------------------------------------
    {"SetupPlacesTheRangeAndReplacesItsKey",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 1) = {0, 0, true, true, true, true, {0}, 77};
     },
     Sedutil({"--setupLockingRange", "1", "2048", "4096", kPassword, kSda}),
     {"LockingRange1 reKeyed ", "LockingRange1 starting block 2048 for 4096 blocks configured as unlocked range"}, {}, 0,
     [](Bench& b) {
       const opalsim::Range& r = R(b, 1);
       EXPECT_EQ(2048u, r.start);
       EXPECT_EQ(4096u, r.length);
       EXPECT_FALSE(r.readLockEnabled || r.writeLockEnabled || r.readLocked || r.writeLocked);
       EXPECT_NE(77u, r.dataKey);
     }},
    {"SetupOfTheGlobalRangeIsRefusedWithoutASession", Owned,
     Sedutil({"--setupLockingRange", "0", "0", "8", kPassword, kSda}), {}, {"global locking range cannot be changed"},
     129, nullptr},
    {"SetupOfARangeTheDriveLacks", Owned, Sedutil({"--setupLockingRange", "9", "2048", "4096", kPassword, kSda}), {},
     {"method status code INVALID_PARAMETER", "setupLockingRange Failed "}, 12,
     [](Bench& b) { EXPECT_EQ(0u, R(b, 1).length); }},
    {"SetupOfRangeTwelveOnASixteenRangeDrive", OwnedSixteenRanges,
     Sedutil({"--setupLockingRange", "12", "8", "16", kPassword, kSda}),
     {"LockingRange12 reKeyed ", "LockingRange12 starting block 8 for 16 blocks configured as unlocked range"}, {}, 0,
     [](Bench& b) { EXPECT_EQ(8u, R(b, 12).start); }},
    {"SetupOverlappingAnotherRange",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 2) = {2048, 4096, false, false, false, false, {0}, 5};
     },
     Sedutil({"--setupLockingRange", "1", "4096", "8", kPassword, kSda}), {},
     {"method status code INVALID_PARAMETER", "setupLockingRange Failed "}, 12, nullptr},
    {"SetupWithAWrongPassword", Owned, Sedutil({"--setupLockingRange", "1", "2048", "4096", "wrong", kSda}), {},
     kWrongPassword, 1, [](Bench& b) { EXPECT_EQ(0u, R(b, 1).length); }},
    {"SetupOfRangeSixteenIsAnOptionError", Owned, Sedutil({"--setupLockingRange", "16", "0", "8", kPassword, kSda}),
     {}, {"Invalid Locking Range (0-15) 16"}, 136, nullptr},
    {"SetupOfARangeWithALeadingZeroIsAnOptionError", Owned,
     Sedutil({"--setupLockingRange", "01", "0", "8", kPassword, kSda}), {}, {"Invalid Locking Range (0-15) 01"}, 136,
     nullptr},

    // --- setLockingRange, enable and disable ---------------------------------------
    {"SetLockingRangeLocked", Owned, Sedutil({"--setLockingRange", "1", "LK", kPassword, kSda}),
     {"LockingRange1 set to LK"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLocked && R(b, 1).writeLocked && !R(b, 1).readLockEnabled); }},
    {"SetLockingRangeReadOnlyInLowerCase",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 2).readLocked = true;
     },
     Sedutil({"--setLockingRange", "2", "ro", kPassword, kSda}), {"LockingRange2 set to RO"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(!R(b, 2).readLocked && R(b, 2).writeLocked); }},
    {"SetLockingRangeReadWrite",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 0).readLocked = R(b, 0).writeLocked = true;
     },
     Sedutil({"--setLockingRange", "0", "RW", kPassword, kSda}), {"LockingRange0 set to RW"}, {}, 0,
     [](Bench& b) { EXPECT_FALSE(R(b, 0).readLocked || R(b, 0).writeLocked); }},
    {"SetLockingRangeWithABadState", Owned, Sedutil({"--setLockingRange", "1", "XX", kPassword, kSda}), {},
     {"Invalid locking state <ro|rw|lk> XX"}, 136, nullptr},
    {"SetLockingRangeWithAWrongPassword", Owned, Sedutil({"--setLockingRange", "1", "LK", "wrong", kSda}), {},
     kWrongPassword, 1, [](Bench& b) { EXPECT_FALSE(R(b, 1).readLocked); }},
    {"SetLockingRangeOfARangeTheDriveLacks", Owned, Sedutil({"--setLockingRange", "9", "LK", kPassword, kSda}), {},
     {"method status code INVALID_PARAMETER", "setLockingRange Failed "}, 12, nullptr},
    {"EnableLockingRange", Owned, Sedutil({"--enableLockingRange", "1", kPassword, kSda}),
     {"LockingRange1 enabled ReadLocking,WriteLocking"}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLockEnabled && R(b, 1).writeLockEnabled && !R(b, 1).readLocked); }},
    {"DisableTheGlobalRange",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 0).readLockEnabled = R(b, 0).writeLockEnabled = R(b, 0).readLocked = true;
     },
     Sedutil({"--disableLockingRange", "0", kPassword, kSda}), {"LockingRange0 disabled "}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(!R(b, 0).readLockEnabled && !R(b, 0).writeLockEnabled && R(b, 0).readLocked); }},
    {"EnableLockingRangeWithAWrongPassword", Owned, Sedutil({"--enableLockingRange", "1", "wrong", kSda}), {},
     kWrongPassword, 1, nullptr},
    {"DisableLockingRangeOfARangeTheDriveLacks", Owned, Sedutil({"--disableLockingRange", "15", kPassword, kSda}), {},
     {"method status code INVALID_PARAMETER", "configureLockingRange Failed "}, 12, nullptr},

    // --- users -------------------------------------------------------------------------
    {"EnableUserOne", Owned, Sedutil({"--enableUser", kPassword, "User0001", kSda}), {"User0001 has been enabled "}, {},
     0, [](Bench& b) { EXPECT_TRUE(b.Drive().users[0].enabled && !b.Drive().users[1].enabled); }},
    {"EnableUserNumberedWithoutZeros", Owned, Sedutil({"--enableUser", kPassword, "User8", kSda}),
     {"User8 has been enabled "}, {}, 0, [](Bench& b) { EXPECT_TRUE(b.Drive().users[7].enabled); }},
    {"EnableTheUsersClassIsRefusedByTheDrive", Owned, Sedutil({"--enableUser", kPassword, "User0000", kSda}), {},
     {"method status code NOT_AUTHORIZED", "Unable to enable user User0000"}, 1, nullptr},
    {"EnableAUserOfAnotherName", Owned, Sedutil({"--enableUser", kPassword, "Bob", kSda}), {},
     {"Invalid Userid Bob", "Unable to find user Bob in Authority Table"}, 131, nullptr},
    {"EnableUserWithAWrongPassword", Owned, Sedutil({"--enableUser", "wrong", "User0001", kSda}), {},
     Then(kWrongPassword, "Unable to enable user User0001"), 1,
     [](Bench& b) { EXPECT_FALSE(b.Drive().users[0].enabled); }},
    {"EnableUserWithTwoOperandsIsAnOptionError", Owned, Sedutil({"--enableUser", kPassword, kSda}), {},
     {"Incorrect number of paramaters for --enableUser command"}, 136, nullptr},
    {"SetPasswordOfADisabledUser", Owned, Sedutil({"--setPassword", kPassword, "User0002", "secret", kSda}),
     {"User0002 password changed"}, {}, 0, [](Bench& b) { EXPECT_EQ("secret", Pin(b.Drive().users[1].credential)); }},
    {"SetPasswordCutsTheNewPasswordTo32Bytes", Owned,
     Sedutil({"--setPassword", kPassword, "User0001", "0123456789abcdef0123456789ABCDEFxyz", kSda}),
     {"User0001 password changed"}, {}, 0,
     [](Bench& b) { EXPECT_EQ("0123456789abcdef0123456789ABCDEF", Pin(b.Drive().users[0].credential)); }},
    {"SetPasswordOfTheUsersClass", Owned, Sedutil({"--setPassword", kPassword, "User0000", "secret", kSda}), {},
     {"method status code INVALID_PARAMETER", "Set Failed ", "Unable to set user User0000 new password "}, 12, nullptr},
    {"SetPasswordWithAWrongPassword", Owned, Sedutil({"--setPassword", "wrong", "User0001", "secret", kSda}), {},
     kWrongPassword, 1, [](Bench& b) { EXPECT_TRUE(b.Drive().users[0].credential.pin.empty()); }},
    {"AdminPasswordsAreCutTo32BytesToo",
     [](Bench& b) { Own(b.Drive(), "0123456789abcdef0123456789ABCDEF"); },
     Sedutil({"--enableLockingRange", "1", "0123456789abcdef0123456789ABCDEFtail", kSda}),
     {"LockingRange1 enabled ReadLocking,WriteLocking"}, {}, 0, nullptr},

    // --- reverts -------------------------------------------------------------------------
    {"RevertNoEraseKeepsTheGlobalKey",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 0).dataKey = 41;
       R(b, 1).dataKey = 42;
     },
     Sedutil({"--revertNoErase", kPassword, kSda}), {"Revert LockingSP complete"}, {}, 0,
     [](Bench& b) {
       EXPECT_EQ(opal::kManufacturedInactive, b.Drive().lifeCycle);
       EXPECT_EQ(41u, R(b, 0).dataKey);
       EXPECT_NE(42u, R(b, 1).dataKey);
     }},
    {"RevertNoEraseRefusedWhileTheGlobalRangeIsLocked",
     [](Bench& b) {
       Own(b.Drive());
       R(b, 0).readLocked = R(b, 0).writeLocked = true;
     },
     Sedutil({"--revertNoErase", kPassword, kSda}), {}, {"method status code FAIL", "Command failed"}, 63,
     [](Bench& b) { EXPECT_TRUE(b.Drive().LockingActive()); }},
    {"RevertNoEraseWithAWrongPassword", Owned, Sedutil({"--revertNoErase", "wrong", kSda}), {},
     Then(kWrongPassword, "Start session failed"), 1, nullptr},
    {"RevertTperWithTheSidPassword", Owned, Sedutil({"--revertTPer", kPassword, kSda}),
     {"revertTper completed successfully"}, {}, 0,
     [](Bench& b) {
       EXPECT_EQ(b.Drive().msid, b.Drive().sid.pin);
       EXPECT_FALSE(b.Drive().LockingActive());
     }},
    {"RevertTperWithAWrongPassword", Owned, Sedutil({"--revertTPer", "wrong", kSda}), {}, kWrongPassword, 1,
     [](Bench& b) { EXPECT_TRUE(b.Drive().LockingActive()); }},
    {"PsidRevertOfAnOwnedDrive", Owned, Sedutil({"--yesIreallywanttoERASEALLmydatausingthePSID", kSdaPsid, kSda}),
     {"revertTper completed successfully"}, {}, 0,
     [](Bench& b) { EXPECT_EQ(b.Drive().msid, b.Drive().sid.pin); }},
    {"PsidRevertWithAWrongPsid", Owned,
     Sedutil({"--yesIreallywanttoERASEALLmydatausingthePSID", "ABCDEFGHABCDEFGHABCDEFGHABCDEFGH", kSda}), {},
     kWrongPassword, 1, [](Bench& b) { EXPECT_TRUE(b.Drive().LockingActive()); }},
    {"PsidRevertOnNvme", [](Bench& b) { Own(b.Drive(kNvme)); },
     Sedutil({"--yesIreallywanttoERASEALLmydatausingthePSID", kNvmePsid, kNvme}), {"revertTper completed successfully"},
     {}, 0, [](Bench& b) { EXPECT_FALSE(b.Drive(kNvme).LockingActive()); }},

    // --- shadow MBR and the pre-boot image -------------------------------------------
    {"MbrEnableOffSetsDoneToo",
     [](Bench& b) {
       Own(b.Drive());
       b.Drive().mbrDone = false;
     },
     Sedutil({"--setMBREnable", "OFF", kPassword, kSda}), {"MBRDone set on ", "MBREnable set off "}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(!b.Drive().mbrEnable && b.Drive().mbrDone); }},
    {"MbrEnableOn",
     [](Bench& b) {
       Own(b.Drive());
       b.Drive().mbrEnable = b.Drive().mbrDone = false;
     },
     Sedutil({"--setMBREnable", "on", kPassword, kSda}), {"MBRDone set on ", "MBREnable set on "}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(b.Drive().mbrEnable && b.Drive().mbrDone); }},
    {"MbrEnableWithAWrongPassword", Owned, Sedutil({"--setMBREnable", "OFF", "wrong", kSda}), {},
     Then(kWrongPassword, "Unable to set setMBRDone on", "unable to set MBRDone"), 1,
     [](Bench& b) { EXPECT_TRUE(b.Drive().mbrEnable); }},
    {"MbrEnableWithABadValue", Owned, Sedutil({"--setMBREnable", "yes", kPassword, kSda}), {},
     {"Invalid setMBREnable argument not <on|off> yes"}, 136, nullptr},
    {"MbrDoneOff", Owned, Sedutil({"--setMBRDone", "OFF", kPassword, kSda}), {"MBRDone set off "}, {}, 0,
     [](Bench& b) { EXPECT_TRUE(b.Drive().mbrEnable && !b.Drive().mbrDone); }},
    {"MbrDoneWithAWrongPassword", Owned, Sedutil({"--setMBRDone", "on", "wrong", kSda}), {},
     Then(kWrongPassword, "Unable to set setMBRDone on"), 1, nullptr},
    {"MbrDoneWithABadValue", Owned, Sedutil({"--setMBRDone", "1", kPassword, kSda}), {},
     {"Invalid setMBRDone argument not <on|off> 1"}, 136, nullptr},
    {"LoadAnImageInThreeChunks",
     [](Bench& b) {
       Own(b.Drive());
       std::string image(130000, '\0');
       for (size_t i = 0; i < image.size(); ++i) image[i] = static_cast<char>(i * 7 + i / 251);
       b.WriteFile("pba.img", image);
     },
     Sedutil({"--loadPBAimage", kPassword, "{dir}/pba.img", kSda}),
     {"Writing PBA to /dev/sda",
      "61334 of 130000 47% blk=61334 \r122668 of 130000 94% blk=61334 \r130000 of 130000 100% blk=61334 \r",
      "~written to /dev/sda"},
     {}, 0,
     [](Bench& b) {
       opal::Result<opal::Bytes> mbr = opalsim::ReadMbr(b.MbrPath(kSda), 0, 130001);
       ASSERT_TRUE(mbr.ok());
       for (size_t i : {size_t{0}, size_t{61333}, size_t{61334}, size_t{129999}}) {
         EXPECT_EQ(static_cast<uint8_t>(i * 7 + i / 251), (*mbr)[i]) << "byte " << i;
       }
       EXPECT_EQ(0, (*mbr)[130000]);
     }},
    {"LoadAMissingImage", Owned, Sedutil({"--loadPBAimage", kPassword, "{dir}/none.img", kSda}), {},
     {"~Unable to open PBA image file /tmp/"}, 132, nullptr},
    {"LoadADirectoryAsAnImage", Owned, Sedutil({"--loadPBAimage", kPassword, "{dir}", kSda}), {},
     {"~Unable to open PBA image file /tmp/"}, 132, nullptr},
    {"LoadAnImageWithAWrongPassword",
     [](Bench& b) {
       Own(b.Drive());
       b.WriteFile("pba.img", "image");
     },
     Sedutil({"--loadPBAimage", "wrong", "{dir}/pba.img", kSda}), {}, kWrongPassword, 1, nullptr},

    // --- initialSetup -------------------------------------------------------------------
    {"InitialSetupOfAFactoryDrive", nullptr, Sedutil({"--initialSetup", kPassword, kSda}),
     {"takeOwnership complete", "Locking SP Activate Complete", "LockingRange0 disabled ", "LockingRange0 set to RW",
      "MBRDone set on ", "MBRDone set on ", "MBREnable set on ", "Initial setup of TPer complete on /dev/sda"},
     {}, 0,
     [](Bench& b) {
       const opalsim::Drive& d = b.Drive();
       EXPECT_EQ("debug", Pin(d.sid));
       EXPECT_EQ("debug", Pin(d.admins[0].credential));
       EXPECT_TRUE(d.LockingActive() && d.mbrEnable && d.mbrDone);
     }},
    {"InitialSetupOfAnOwnedDrive", Owned, Sedutil({"--initialSetup", "other", kSda}), {},
     Then(kWrongPassword, "takeOwnership failed", "Initial setup failed - unable to take ownership"), 1,
     [](Bench& b) { EXPECT_EQ("debug", Pin(b.Drive().sid)); }},
    {"InitialSetupWhenTheLockingSpIsAlreadyActive", [](Bench& b) { opalsim::Activate(b.Drive()); },
     Sedutil({"--initialSetup", kPassword, kSda}), {"takeOwnership complete"},
     {"Locking SP lifecycle is not Manufactured-Inactive", "Initial setup failed - unable to activate LockingSP",
      "~/dev/sda: the SID password is now the new password"},
     133, [](Bench& b) { EXPECT_EQ("debug", Pin(b.Drive().sid)); }},
    {"InitialSetupOfADriveWithoutOpal", NoOpal, Sedutil({"--initialSetup", kPassword, kSda}), {},
     {"Invalid or unsupported disk /dev/sda"}, 136, nullptr},
    {"InitialSetupOnNvme", nullptr, Sedutil({"--initialSetup", kPassword, kNvme}),
     {"takeOwnership complete", "Locking SP Activate Complete", "LockingRange0 disabled ", "LockingRange0 set to RW",
      "MBRDone set on ", "MBRDone set on ", "MBREnable set on ", "Initial setup of TPer complete on /dev/nvme0"},
     {}, 0, [](Bench& b) { EXPECT_TRUE(b.Drive(kNvme).LockingActive()); }},

    // --- the host's libata flag: a warning each time a SATA drive identifies ---------
    {"FlagNotSetWarnsForBothOpensOfADrive",
     [](Bench& b) {
       Own(b.Drive());
       b.allowTpm = opal::AllowTpm::kNotSet;
     },
     Sedutil({"--revertTPer", kPassword, kSda}), {"revertTper completed successfully"}, Twice(kFlagNotSet), 0, nullptr},
    {"FlagUnreadableWarnsForBothOpensOfADrive",
     [](Bench& b) {
       Own(b.Drive());
       b.allowTpm = opal::AllowTpm::kUnreadable;
     },
     Sedutil({"--revertTPer", kPassword, kSda}), {"revertTper completed successfully"}, Twice(kFlagUnreadable), 0,
     nullptr},
    {"FlagNotSetIsNoMatterOnNvme",
     [](Bench& b) {
       Own(b.Drive(kNvme));
       b.allowTpm = opal::AllowTpm::kNotSet;
     },
     Sedutil({"--revertTPer", kPassword, kNvme}), {"revertTper completed successfully"}, {}, 0, nullptr},
    {"FlagNotSetWarnsOnceForADriveWithoutOpal",
     [](Bench& b) {
       NoOpal(b);
       b.allowTpm = opal::AllowTpm::kNotSet;
     },
     Sedutil({"--query", kSda}), {}, Then(kFlagNotSet, "Invalid or unsupported disk /dev/sda"), 136, nullptr},
    {"FlagNotSetWarnsOncePerSataDriveOfAScan",
     [](Bench& b) {
       b.world.drives.push_back(opalsim::NewDrive("/dev/sdb", "Other HDD", "CC45", kSdaPsid, 8, false));
       b.allowTpm = opal::AllowTpm::kNotSet;
     },
     Sedutil({"--scan"}),
     {"Scanning for Opal compliant disks", "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
      "/dev/sda    2  KVX 480GB                                SBFK71F3",
      "/dev/sdb   No  Other HDD                                CC45    ", "No more disks present ending scan"},
     Twice(kFlagNotSet), 0, nullptr},
    {"ScanLinesComeAfterEveryWarningWhenFolded",
     [](Bench& b) {
       b.allowTpm = opal::AllowTpm::kUnreadable;
       b.foldStreams = true;
     },
     Sedutil({"--scan"}),
     Then(kFlagUnreadable, "Scanning for Opal compliant disks",
          "/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
          "/dev/sda    2  KVX 480GB                                SBFK71F3", "No more disks present ending scan"),
     {}, 0, nullptr},

    // --- a refused Properties exchange: said during the set-up, then defaults ----------
    {"PropertiesRefusedIsSaidAfterBothOpensAndBeforeTheCommand",
     [](Bench& b) {
       Own(b.Drive());
       b.allowTpm = opal::AllowTpm::kUnreadable;
       b.refusedExchange = 1;
       b.foldStreams = true;
     },
     Sedutil({"--setLockingRange", "1", "LK", kPassword, kSda}),
     Then(Twice(kFlagUnreadable), "Properties exchange failed", "LockingRange1 set to LK"), {}, 0,
     [](Bench& b) { EXPECT_TRUE(R(b, 1).readLocked && R(b, 1).writeLocked); }},
    {"PropertiesRefusedBeforeACommandWithoutSession",
     [](Bench& b) {
       Own(b.Drive());
       b.refusedExchange = 1;
     },
     Sedutil({"--setupLockingRange", "0", "0", "8", kPassword, kSda}), {},
     {"Properties exchange failed", "global locking range cannot be changed"}, 129, nullptr},
    {"PropertiesRefusedLeavesTheDefaultImageChunks",
     [](Bench& b) {
       Own(b.Drive());
       b.WriteFile("pba.img", std::string(4000, 'i'));
       b.refusedExchange = 1;
     },
     Sedutil({"--loadPBAimage", kPassword, "{dir}/pba.img", kSda}),
     {"Writing PBA to /dev/sda",
      "1840 of 4000 46% blk=1840 \r3680 of 4000 92% blk=1840 \r4000 of 4000 100% blk=1840 \r", "~written to /dev/sda"},
     {"Properties exchange failed"}, 0, nullptr},

    // --- the command line itself ---------------------------------------------------------
    {"CommandNamesIgnoreCase", Owned, Sedutil({"--ENABLELOCKINGRANGE", "3", kPassword, kSda}),
     {"LockingRange3 enabled ReadLocking,WriteLocking"}, {}, 0, nullptr},
    {"WrongOperandCountIsReportedAsTyped", nullptr, Sedutil({"--listlockingranges", kSda}), {},
     {"Incorrect number of paramaters for --listlockingranges command"}, 136, nullptr},
    {"UnknownCommand", nullptr, Sedutil({"--printDefaultPassword", kSda}), {},
     {"Invalid command line argument --printDefaultPassword",
      "sedutil-cli: only Veltrak's commands are answered; see veltrak-opal(8)"},
     136, nullptr},
};

class SedutilTool : public testing::TestWithParam<ToolCase> {};

TEST_P(SedutilTool, PrintsWhatSedutilPrintsAndLeavesTheDriveAsExpected) {
  Bench bench;
  Ran ran = RunCase(bench, GetParam());
  ExpectNoSuccessPhrase(ran.err);
}

INSTANTIATE_TEST_SUITE_P(Cases, SedutilTool, testing::ValuesIn(kCases), CaseName);

// Lines of the usage error: any other way of starting the tool.
TEST(SedutilToolUsage, EverythingButDashNAndACommandIsAUsageError) {
  const std::vector<std::vector<std::string>> lines = {
      {"sedutil-cli"}, {"sedutil-cli", "--scan"}, {"sedutil-cli", "-n"}, {"sedutil-cli", "-v", "-n", "--scan"},
      {"sedutil-cli", "--query", "/dev/sda"}};
  for (const std::vector<std::string>& argv : lines) {
    Bench bench;
    Ran ran = bench.Run(argv);
    EXPECT_EQ(136, ran.status) << testing::PrintToString(argv);
    EXPECT_TRUE(ran.out.empty());
    ASSERT_FALSE(ran.err.empty());
    EXPECT_EQ(0u, ran.err[0].find("usage: sedutil-cli -n")) << ran.err[0];
    EXPECT_EQ(0, ran.traffic.receives) << "no device may be touched";
  }
}

TEST(SedutilToolQuery, ReportsTheDiscoveryAndThenTheProperties) {
  Bench bench;
  Own(bench.Drive());
  bench.Drive().ranges[1] = {0, 8, true, true, true, false, {0}, 1};
  Ran ran = bench.Run(Sedutil({"--query", kSda}));
  ASSERT_EQ(0, ran.status);
  ASSERT_GT(ran.out.size(), 14u);
  const std::vector<std::string> head(ran.out.begin(), ran.out.begin() + 12);
  EXPECT_EQ((std::vector<std::string>{
                "", "/dev/sda ATA KVX 480GB                                SBFK71F3 " + bench.Drive().serial + "    ",
                "TPer function (0x0001)",
                "    ACKNAK = N, ASYNC = N. BufferManagement = N, comIDManagement  = N, Streaming = Y, SYNC = Y",
                "Locking function (0x0002)",
                "    Locked = Y, LockingEnabled = Y, LockingSupported = Y, MBRDone = Y, MBREnabled = Y, MediaEncrypt = Y",
                "Geometry function (0x0003)",
                "    Align = Y, Alignment Granularity = 8 (4096), Logical Block size = 512, Lowest Aligned LBA = 0",
                "OPAL 2.0 function (0x0203)",
                "    Base comID = 0x1000, Initial PIN = 0x00, Reverted PIN = 0x00, comIDs = 1",
                "    Locking Admins = 4, Locking Users = 8, Range Crossing = N", ""}),
            head);
  EXPECT_EQ("TPer Properties: ", ran.out[12]);
  EXPECT_EQ("  MaxComPacketSize = 65536", ran.out[13]);
  EXPECT_TRUE(ran.err.empty());
}

TEST(SedutilToolQuery, ARefusedPropertiesExchangeIsSaidBeforeTheReportWhichEndsWithoutProperties) {
  Bench answered;
  const std::vector<std::string> report = answered.Run(Sedutil({"--query", kSda})).out;
  const auto properties = std::find(report.begin(), report.end(), "TPer Properties: ");
  ASSERT_NE(report.end(), properties);
  Bench refused;
  refused.refusedExchange = 1;
  refused.foldStreams = true;
  const Ran ran = refused.Run(Sedutil({"--query", kSda}));
  EXPECT_EQ(0, ran.status);
  // The empty line before "TPer Properties: " belongs to the Properties block.
  std::vector<std::string> expected(report.begin(), properties - 1);
  expected.insert(expected.begin(), "Properties exchange failed");
  EXPECT_EQ(expected, ran.out);
}

}  // namespace
}  // namespace tooltest

// One self-encrypting drive: what the tools last said about it, the passwords
// typed for it in this run, and every operation on it. Each operation is one
// or a fixed sequence of tool command lines run through GetCmdResponse; its
// verdict is read from the tool's text only, never from an exit status.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "LockingRangeInfo.h"
#include "utils.h"

// Every drive command line starts with one of the two tools, run from the
// working directory.
inline const std::string kSedutil = "./sedutil-cli -n ";
inline const std::string kLantivo = "./Lantivo ";

// One partition's bounds, as decimal strings.
struct L_Part {
  std::string start;
  std::string end;
  std::string sectors;
};

// User-by-range access marks gathered by ListUserStatus: row r is the r-th
// name of a range's access list, column c the range at position c of m_LR.
// Shared by all drives; entries only ever go from 0 to 1 during a run.
constexpr int kApplyTableRows = 10;
constexpr int kApplyTableColumns = 9;
extern int apply_table[kApplyTableRows][kApplyTableColumns];

class DiskInfo {
 public:
  DiskInfo() = default;
  // FD, DN, FW: device path, model, firmware; OPALVer: the scan's version
  // column (text that is not a number means no Opal). Throws
  // std::invalid_argument for a "/dev/nvme" path not followed by a digit.
  DiskInfo(const std::string& FD, const std::string& DN, const std::string& FW,
           const std::string& OPALVer);

  std::string GetFileDescriptor() const { return m_FileDescriptor; }
  std::string GetDeviceName() const { return m_DeviceName; }
  std::string GetFirmware() const { return m_Firmware; }
  std::string GetAdmin1Pwd() const { return m_Admin1Pwd; }
  std::string GetPrefix() const { return m_PrefixDevice; }
  uint32_t GetOPALVer() const { return m_OPALVer; }
  bool GetOPALSupport() const { return m_OPALSupport; }
  bool GetOPALEnable() const { return m_OPALEnable; }
  bool GetOPALLocked() const { return m_OPALLocked; }
  uint32_t GetDriveIndex() const { return m_DriveIndex; }
  uint32_t GetSupportedUserSize() const { return m_SupportedUserSize; }
  bool GetParted() const { return m_Partitioned; }
  uint32_t GetBlockNum() const { return part_number; }
  std::vector<LockingRangeInfo> GetLRInfo() const { return m_LR; }
  std::array<L_Part, 10> GetLBA() const { return m_parts; }

  void SetAdmin1Pwd(const std::string& admin1Pwd) { m_Admin1Pwd = admin1Pwd; }
  void SetSIDPwd(const std::string& sidPwd) { m_SIDPwd = sidPwd; }
  // Partition mode. Nothing in the program switches it on yet, but every
  // reader of these fields honours both modes.
  void Set2Parted(bool parted) { m_Partitioned = parted; }
  void SetPrefixName(std::string prefix) { m_PrefixDevice = std::move(prefix); }
  void SetBlockNum(uint32_t number) { part_number = number; }
  // Records partition index's first and last sector; an index outside the
  // ten entries is ignored.
  void SetupLBA(uint32_t index, std::string start, std::string end);

  // The sedutil command line of operation (the option and any operands
  // before the password) on this drive: it ends with password and the device.
  std::string SedutilLine(const std::string& operation, const std::string& password) const;

  // --- Status refresh ---
  // Re-reads LockingSupported, LockingEnabled and Locked from the query.
  // True when the flags line was found (or the drive has no Opal); false when
  // the output has no "Locking function" line, flags unchanged.
  bool UpdateOPALStatus();
  // Rebuilds m_LR from the range listing (needs m_Admin1Pwd). True unless the
  // listing holds "EndSession Failed" (ranges before it are kept) or a range
  // header is malformed (reported, paused, m_LR emptied). Does nothing and
  // reports true when Opal is absent or not enabled.
  bool UpdateLockingRangesStatus();

  // --- Locking ranges through sedutil. All report true, running nothing,
  // when Opal is absent or not enabled; else true at the first output line
  // holding "LockingRange<index>" + the operation's phrase. ---
  bool SetupLockingRange(uint32_t index, uint64_t startLocation, uint64_t length);
  bool SetLockingRangeStatus(uint32_t index, const std::string& status);
  bool EnableLockingRange(uint32_t index, bool enable);

  // Puts range index into protection mode "RW", "RO" or "LK" through the
  // companion tool's command sequence; acts only when enable is 1. False when
  // a command printed a line without "success" (later commands not run).
  bool SetLockingRangeStatus_TCG_V2_5(uint32_t index, const std::string& status, uint32_t enable);

  // --- Users (named "User000" + number on the command line) ---
  // True at the output line holding "has been enabled" (lines echoed up to
  // it). Prints "WTF" and reports true when Opal is absent or not enabled;
  // reports true without running anything for a user above 9.
  bool EnableUser(uint32_t index);
  // True at an output line holding "password changed"; false for a user
  // above 9; true, silently, when Opal is absent or not enabled.
  bool SetUserPwd(uint32_t index, const std::string& password);

  // --- Access-control entries through the companion tool ---
  // Grants the users ("User1 User3 " form) the lock privilege on a range;
  // the tool's answer is discarded and the result is always true.
  bool SetPrevilege2LR(uint32_t index, std::string users);
  // Removes every user from a range. False only for a range above 8; true
  // without running anything when Opal is absent or not enabled.
  bool RemoveAllUserFromLR(uint32_t index);
  // Placeholders of the drive's interface; they do nothing and report true.
  bool ListAccessSetting() const;
  bool SetAccessSetting(uint32_t index, bool enable, std::vector<uint32_t>& users);

  // --- Ownership, revert and erase (no Opal-state guard) ---
  // Global range off, revert without erase, TPer revert; always true.
  bool DisableOPAL();
  // TPer revert with the SID password, output shown; always true.
  bool RevertSSD();
  // PSID revert, erasing everything. True only when the first output line
  // holds "successfully".
  bool EraseAllData(const std::string& yourPSID);

  // --- Shadow MBR and pre-boot image. Inverted sense, kept on purpose:
  // true when nothing was sent (Opal absent or not enabled), false once the
  // command has run, whatever it printed. ---
  bool EnableMBR();
  bool DisableMBR();
  bool SetMBR();    // done flag on; output shown
  bool UnSetMBR();  // done flag off; output shown
  // Loads an image file ("default" stands for "PBA.img"); output shown.
  bool LoadImage(std::string file);

  // Shows the companion tool's scan; always true.
  bool OPAL_ScanResult();

  // --- Listings through the companion tool ---
  // Prints who may access each range. False after a line that does not split
  // in two around "can access Locking Range" (reported, paused).
  bool ListAccessRight() const;
  // Marks apply_table from every range's access list, then prints each user
  // status line with the ranges of its row. Always true.
  bool ListUserStatus() const;

 private:
  [[maybe_unused]] bool m_address_already = false;  // set at construction, read by nothing
  std::string m_FileDescriptor;
  std::string m_DeviceName;
  std::string m_Firmware;
  uint32_t m_OPALVer = 0;  // 0: no Opal support
  bool m_OPALSupport = false;
  bool m_OPALEnable = false;
  bool m_OPALLocked = false;
  bool m_Partitioned = false;
  std::string m_PrefixDevice;
  uint32_t part_number = 0;
  std::array<L_Part, 10> m_parts{};
  uint32_t m_DriveIndex = 0;
  std::string m_Admin1Pwd;
  std::string m_SIDPwd;
  uint32_t m_SupportedUserSize = 9;
  std::vector<LockingRangeInfo> m_LR;

  // True when the drive has no Opal or Opal is not enabled: most operations
  // then report success without running anything.
  bool OpalInactive() const { return m_OPALVer == 0 || !m_OPALEnable; }
  // The device name of partition number in partition mode: the prefix, "p"
  // for NVMe names, then the number ("/dev/sdb1", "/dev/nvme0n1p1").
  std::string PartitionName(int64_t number) const;
  // The shadow-MBR family's shape: true, sending nothing, when Opal is
  // inactive; else runs command and reports false whatever it printed.
  bool RunShadowMBRCommand(const std::string& command, Echo echo);
  // The companion tool's access-list command for one range.
  std::string AccessListCommand(uint32_t range) const;
};

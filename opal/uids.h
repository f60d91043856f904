// The names of the TCG Storage world as this library uses them: UIDs of the
// session manager, SPs, methods, authorities, credentials, tables and access
// control entries; column and parameter numbers; method status codes and
// life cycle states. Each constant carries the name the TCG documents use, so
// it can be read against them line by line. A UID is written as its 8 bytes.
#pragma once

#include <cstdint>

#include "tokens.h"

namespace opal {

// --- Session manager and SPs -------------------------------------------------
constexpr Uid kSessionManager = 0x00000000000000FF;  // SMUID
constexpr Uid kThisSp = 0x0000000000000001;
constexpr Uid kAdminSp = 0x0000020500000001;
constexpr Uid kLockingSp = 0x0000020500000002;
constexpr Uid kEnterpriseLockingSp = 0x0000020500010001;

// --- Methods -----------------------------------------------------------------
constexpr Uid kMethodProperties = 0x000000000000FF01;
constexpr Uid kMethodStartSession = 0x000000000000FF02;
constexpr Uid kMethodSyncSession = 0x000000000000FF03;
constexpr Uid kMethodCloseSession = 0x000000000000FF06;
constexpr Uid kMethodNext = 0x0000000600000008;
constexpr Uid kMethodGetAcl = 0x000000060000000D;
constexpr Uid kMethodGenKey = 0x0000000600000010;
constexpr Uid kMethodRevertSp = 0x0000000600000011;
constexpr Uid kMethodGet = 0x0000000600000016;
constexpr Uid kMethodSet = 0x0000000600000017;
constexpr Uid kMethodAuthenticate = 0x000000060000001C;
constexpr Uid kMethodRevert = 0x0000000600000202;
constexpr Uid kMethodActivate = 0x0000000600000203;
constexpr Uid kMethodRandom = 0x0000000600000601;

// --- Authorities (Authority table) ---------------------------------------------
constexpr Uid kAuthorityTable = 0x0000000900000000;
constexpr Uid kAnybody = 0x0000000900000001;
constexpr Uid kAdmins = 0x0000000900000002;  // class
constexpr Uid kMakers = 0x0000000900000003;  // class
constexpr Uid kSid = 0x0000000900000006;
constexpr Uid kAdminSpAdmin1 = 0x0000000900000201;  // Admin SP Admin1..4
constexpr Uid kPsid = 0x000000090001FF01;
constexpr Uid kAdmin1 = 0x0000000900010001;  // Locking SP Admin1..4
constexpr Uid kUsers = 0x0000000900030000;   // class
constexpr Uid kUser1 = 0x0000000900030001;   // Locking SP User1..N

constexpr Uid AdminUid(unsigned n) { return kAdmin1 - 1 + n; }
constexpr Uid UserUid(unsigned n) { return kUsers + n; }

// --- Credentials (C_PIN table) ---------------------------------------------------
constexpr Uid kCpinTable = 0x0000000B00000000;
constexpr Uid kCpinSid = 0x0000000B00000001;  // not the SID's UID with 09 -> 0B
constexpr Uid kCpinMsid = 0x0000000B00008402;
constexpr Uid kCpinAdminSpAdmin1 = 0x0000000B00000201;
constexpr Uid kCpinPsid = 0x0000000B0001FF01;
constexpr Uid kCpinAdmin1 = 0x0000000B00010001;
constexpr Uid kCpinUser1 = 0x0000000B00030001;

constexpr Uid CpinAdminUid(unsigned n) { return kCpinAdmin1 - 1 + n; }
constexpr Uid CpinUserUid(unsigned n) { return kCpinUser1 - 1 + n; }

// --- Locking SP tables -----------------------------------------------------------
constexpr Uid kLockingInfo = 0x0000080100000001;
constexpr Uid kLockingTable = 0x0000080200000000;
constexpr Uid kLockingGlobalRange = 0x0000080200000001;
constexpr Uid kMbrControl = 0x0000080300000001;
constexpr Uid kMbrTable = 0x0000080400000000;
constexpr Uid kAes128GlobalRangeKey = 0x0000080500000001;
constexpr Uid kAes256GlobalRangeKey = 0x0000080600000001;
constexpr Uid kDataStore = 0x0000100100000000;
constexpr Uid kAccessControlTable = 0x0000000700000000;

// Range 0 is the global range; range N (1..255) is 00 00 08 02 00 03 00 NN.
constexpr Uid RangeUid(unsigned n) { return n == 0 ? kLockingGlobalRange : 0x0000080200030000 + n; }
constexpr Uid Aes256KeyUid(unsigned n) { return n == 0 ? kAes256GlobalRangeKey : 0x0000080600030000 + n; }

// --- Access control entries (ACE table) --------------------------------------------
constexpr Uid kAceTable = 0x0000000800000000;
constexpr Uid kAceAnybody = 0x0000000800000001;
constexpr Uid kAceAdmin = 0x0000000800000002;
constexpr Uid kAceAceGetAll = 0x0000000800038000;
constexpr Uid kAceAceSetBooleanExpression = 0x0000000800038001;
constexpr Uid kAceAuthorityGetAll = 0x0000000800039000;
constexpr Uid kAceAuthoritySetEnabled = 0x0000000800039001;
constexpr Uid kAceCpinAdminsGetAllNoPin = 0x000000080003A000;
constexpr Uid kAceCpinAdminsSetPin = 0x000000080003A001;
constexpr Uid kAceCpinUser1SetPin = 0x000000080003A801;
constexpr Uid kAceK_Aes256GlobalRangeGenKey = 0x000000080003B800;
constexpr Uid kAceLockingGlobalRangeGetRangeStartToActiveKey = 0x000000080003D000;
constexpr Uid kAceLockingGlobalRangeSetRdLocked = 0x000000080003E000;
constexpr Uid kAceLockingGlobalRangeSetWrLocked = 0x000000080003E800;
constexpr Uid kAceLockingGlblRngAdminsSet = 0x000000080003F000;
constexpr Uid kAceLockingAdminsRangeStartToLor = 0x000000080003F001;
constexpr Uid kAceMbrControlAdminsSet = 0x000000080003F800;
constexpr Uid kAceMbrControlSetDoneToDor = 0x000000080003F801;
constexpr Uid kAceDataStoreGetAll = 0x000000080003FC00;
constexpr Uid kAceDataStoreSetAll = 0x000000080003FC01;

// The per-range ACEs: range 0 is the global range's row, range N adds N.
constexpr Uid AceSetRdLockedUid(unsigned n) { return kAceLockingGlobalRangeSetRdLocked + n; }
constexpr Uid AceSetWrLockedUid(unsigned n) { return kAceLockingGlobalRangeSetWrLocked + n; }
constexpr Uid AceGetRangeUid(unsigned n) { return kAceLockingGlobalRangeGetRangeStartToActiveKey + n; }
constexpr Uid AceGenKeyUid(unsigned n) { return kAceK_Aes256GlobalRangeGenKey + n; }
constexpr Uid AceCpinUserSetPinUid(unsigned n) { return kAceCpinUser1SetPin - 1 + n; }

// --- Columns -------------------------------------------------------------------------
namespace column {
// Locking table
constexpr uint64_t kRangeStart = 3, kRangeLength = 4, kReadLockEnabled = 5, kWriteLockEnabled = 6,
                   kReadLocked = 7, kWriteLocked = 8, kLockOnReset = 9, kActiveKey = 10;
// LockingInfo
constexpr uint64_t kMaxRanges = 4;
// Authority
constexpr uint64_t kEnabled = 5;
// C_PIN
constexpr uint64_t kPin = 3, kCharSet = 4, kTryLimit = 5, kTries = 6, kPersistence = 7;
// ACE
constexpr uint64_t kBooleanExpr = 3, kAceColumns = 4;
// MBRControl
constexpr uint64_t kMbrEnable = 1, kMbrDone = 2, kMbrDoneOnReset = 3;
// SP
constexpr uint64_t kLifeCycleState = 6;
}  // namespace column

// --- Parameter names ---------------------------------------------------------------
namespace param {
constexpr uint64_t kHostChallenge = 0, kHostSigningAuthority = 3;  // StartSession
constexpr uint64_t kStartRow = 1, kStartColumn = 3, kEndColumn = 4;  // Get's cell block
constexpr uint64_t kWhere = 0, kValues = 1;                          // Set
constexpr uint64_t kHostProperties = 0;                              // Properties
constexpr uint64_t kKeepGlobalRangeKey = 0x060000;                   // RevertSP
}  // namespace param

// The 4-byte names of a BooleanExpr's items.
constexpr uint32_t kHalfUidAuthorityObjectRef = 0x00000C05;
constexpr uint32_t kHalfUidBooleanAce = 0x0000040E;
enum class BooleanOp : uint8_t { kAnd = 0, kOr = 1, kNot = 2 };

// --- Method status codes ---------------------------------------------------------------
enum class MethodStatus : uint8_t {
  kSuccess = 0x00,
  kNotAuthorized = 0x01,
  kSpBusy = 0x03,
  kSpFailed = 0x04,
  kSpDisabled = 0x05,
  kSpFrozen = 0x06,
  kNoSessionsAvailable = 0x07,
  kUniquenessConflict = 0x08,
  kInsufficientSpace = 0x09,
  kInsufficientRows = 0x0A,
  kInvalidFunction = 0x0B,
  kInvalidParameter = 0x0C,
  kInvalidReference = 0x0D,
  kTperMalfunction = 0x0F,
  kTransactionFailure = 0x10,
  kResponseOverflow = 0x11,
  kAuthorityLockedOut = 0x12,
  kFail = 0x3F,
};

// The name a status code is printed with ("NOT_AUTHORIZED"); "Unknown
// status code" for codes without one.
const char* StatusName(int status);

// --- Life cycle states of an SP ---------------------------------------------------------
constexpr uint64_t kIssued = 0, kManufacturedInactive = 8, kManufactured = 9;

// --- Protocols and ComIDs ----------------------------------------------------------------
constexpr uint8_t kProtocolInfo = 0x00;  // supported protocol list
constexpr uint8_t kProtocolTcg = 0x01;
constexpr uint16_t kDiscoveryComId = 0x0001;

}  // namespace opal

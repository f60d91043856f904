#include "access.h"

#include <algorithm>

namespace opalsim {

using namespace opal;

namespace {

constexpr Columns kAll{};
constexpr Columns kNoPin{0, 255, true};
constexpr Columns Only(uint64_t first, uint64_t last) { return Columns{first, last, false}; }

// The fixed ACEs of the Locking SP beside the changeable ones.
const Uid kLockingFixedAces[] = {kAceAnybody,
                                 kAceAdmin,
                                 kAceAceGetAll,
                                 kAceAceSetBooleanExpression,
                                 kAceAuthorityGetAll,
                                 kAceAuthoritySetEnabled,
                                 kAceCpinAdminsGetAllNoPin,
                                 kAceCpinAdminsSetPin,
                                 kAceLockingGlblRngAdminsSet,
                                 kAceLockingAdminsRangeStartToLor,
                                 kAceMbrControlAdminsSet};
const Uid kAdminSpAces[] = {kAceAnybody, kAceAdmin, kAceCpinSidGetNoPin, kAceCpinSidSetPin, kAceSpSid, kAceSpPsid};

bool IsOneOf(Uid uid, Uid first, unsigned count) { return uid >= first && uid < first + count; }

bool IsAuthorityRow(const Drive& drive, Uid sp, Uid uid) {
  if (sp == kAdminSp) {
    return uid == kAnybody || uid == kAdmins || uid == kMakers || uid == kSid || uid == kPsid ||
           IsOneOf(uid, kAdminSpAdmin1, 4);
  }
  return uid == kAnybody || uid == kAdmins || uid == kUsers || IsOneOf(uid, kAdmin1, 4) ||
         IsOneOf(uid, kUser1, drive.userCount);
}

// Listing a Locking SP table's rows (Next) is for its administrators.
bool IsListedTable(Uid object) {
  return object == kAuthorityTable || object == kCpinTable || object == kLockingTable || object == kAceTable;
}

std::vector<Grant> LockingSpAcl(const Drive& drive, Uid object, Uid method) {
  const bool get = method == kMethodGet, set = method == kMethodSet;
  if (IsListedTable(object)) return method == kMethodNext ? std::vector<Grant>{{kAceAdmin, kAll}} : std::vector<Grant>{};
  if (object == kThisSp) {
    if (method == kMethodRevertSp) return {{kAceAdmin, kAll}};
    if (method == kMethodAuthenticate || method == kMethodRandom) return {{kAceAnybody, kAll}};
    return {};
  }
  if (object == kAccessControlTable) return method == kMethodGetAcl ? std::vector<Grant>{{kAceAnybody, kAll}} : std::vector<Grant>{};
  if (object == kLockingInfo || object == kMbrTable || object == kMbrControl) {
    if (get) return {{kAceAnybody, kAll}};
    if (set && object == kMbrTable) return {{kAceAdmin, kAll}};
    if (set && object == kMbrControl) return {{kAceMbrControlAdminsSet, Only(1, 3)}, {kAceMbrControlSetDoneToDor, Only(2, 3)}};
    return {};
  }
  for (unsigned n = 0; n <= drive.rangeCount; ++n) {
    if (object == Aes256KeyUid(n)) return method == kMethodGenKey ? std::vector<Grant>{{AceGenKeyUid(n), kAll}} : std::vector<Grant>{};
    if (object != RangeUid(n)) continue;
    if (get) return {{kAceAnybody, Only(0, 2)}, {AceGetRangeUid(n), Only(3, 10)}};
    if (!set) return {};
    std::vector<Grant> acl = {n == 0 ? Grant{kAceLockingGlblRngAdminsSet, Only(5, 9)}
                                     : Grant{kAceLockingAdminsRangeStartToLor, Only(3, 9)}};
    if (AceExists(drive, kLockingSp, AceSetRdLockedUid(n))) {
      acl.push_back({AceSetRdLockedUid(n), Only(7, 7)});
      acl.push_back({AceSetWrLockedUid(n), Only(8, 8)});
    }
    return acl;
  }
  if (IsOneOf(object, kCpinAdmin1, 4) || IsOneOf(object, kCpinUser1, drive.userCount)) {
    if (get) return {{kAceCpinAdminsGetAllNoPin, kNoPin}};
    if (!set) return {};
    std::vector<Grant> acl = {{kAceCpinAdminsSetPin, Only(3, 3)}};
    if (IsOneOf(object, kCpinUser1, drive.userCount)) {
      acl.push_back({AceCpinUserSetPinUid(static_cast<unsigned>(object - kCpinUser1 + 1)), Only(3, 3)});
    }
    return acl;
  }
  if (IsAuthorityRow(drive, kLockingSp, object)) {
    if (get) return {{kAceAuthorityGetAll, kAll}};
    const bool person = IsOneOf(object, kAdmin1, 4) || IsOneOf(object, kUser1, drive.userCount);
    return set && person ? std::vector<Grant>{{kAceAuthoritySetEnabled, Only(5, 5)}} : std::vector<Grant>{};
  }
  if (AceExists(drive, kLockingSp, object)) {
    if (get) return {{kAceAceGetAll, kAll}};
    return set && AceChangeable(drive, object) ? std::vector<Grant>{{kAceAceSetBooleanExpression, Only(3, 3)}}
                                               : std::vector<Grant>{};
  }
  return {};
}

std::vector<Grant> AdminSpAcl(const Drive& drive, Uid object, Uid method) {
  const bool get = method == kMethodGet, set = method == kMethodSet;
  // The Admin SP's rows are readable by anybody, and so is their list.
  if (IsListedTable(object)) return method == kMethodNext ? std::vector<Grant>{{kAceAnybody, kAll}} : std::vector<Grant>{};
  if (object == kThisSp) {
    return method == kMethodAuthenticate || method == kMethodRandom ? std::vector<Grant>{{kAceAnybody, kAll}}
                                                                    : std::vector<Grant>{};
  }
  if (object == kAccessControlTable) return method == kMethodGetAcl ? std::vector<Grant>{{kAceAnybody, kAll}} : std::vector<Grant>{};
  if (object == kAdminSp || object == kLockingSp) {
    if (get) return {{kAceAnybody, kAll}};
    if (object == kAdminSp && method == kMethodRevert) return {{kAceSpSid, kAll}, {kAceSpPsid, kAll}};
    if (object == kLockingSp && method == kMethodActivate) return {{kAceSpSid, kAll}};
    return {};
  }
  if (object == kCpinMsid) return get ? std::vector<Grant>{{kAceAnybody, kAll}} : std::vector<Grant>{};
  if (object == kCpinSid || object == kCpinPsid) {
    if (get) return {{kAceCpinSidGetNoPin, kNoPin}};
    return set && object == kCpinSid ? std::vector<Grant>{{kAceCpinSidSetPin, Only(3, 3)}} : std::vector<Grant>{};
  }
  if (IsAuthorityRow(drive, kAdminSp, object)) return get ? std::vector<Grant>{{kAceAnybody, kAll}} : std::vector<Grant>{};
  if (AceExists(drive, kAdminSp, object)) return get ? std::vector<Grant>{{kAceAdmin, kAll}} : std::vector<Grant>{};
  return {};
}

// Whether an operand of an expression holds for the session.
bool Holds(const Drive& drive, Uid sp, const std::vector<Uid>& authorities, Uid operand) {
  auto any = [&](Uid first, unsigned count) {
    return std::any_of(authorities.begin(), authorities.end(), [&](Uid a) { return IsOneOf(a, first, count); });
  };
  if (operand == kAnybody) return true;
  if (operand == kAdmins) return sp == kLockingSp ? any(kAdmin1, 4) : any(kAdminSpAdmin1, 4);
  if (operand == kUsers) return sp == kLockingSp && any(kUser1, drive.userCount);
  return std::find(authorities.begin(), authorities.end(), operand) != authorities.end();
}

}  // namespace

bool AceChangeable(const Drive& drive, Uid ace) {
  const std::vector<Uid> changeable = ChangeableAces(drive);
  return std::find(changeable.begin(), changeable.end(), ace) != changeable.end();
}

bool AceExists(const Drive& drive, Uid sp, Uid ace) {
  if (sp == kAdminSp) return std::find(std::begin(kAdminSpAces), std::end(kAdminSpAces), ace) != std::end(kAdminSpAces);
  return std::find(std::begin(kLockingFixedAces), std::end(kLockingFixedAces), ace) != std::end(kLockingFixedAces) ||
         AceChangeable(drive, ace);
}

BooleanExpr AceExpression(const Drive& drive, Uid sp, Uid ace) {
  if (ace == kAceAnybody) return AnyOf({kAnybody});
  if (sp == kAdminSp) {
    if (ace == kAceSpPsid) return AnyOf({kPsid});
    if (ace == kAceSpSid || ace == kAceCpinSidSetPin) return AnyOf({kSid});
    return AnyOf({kAdmins, kSid});
  }
  auto changed = drive.aces.find(ace);
  if (changed != drive.aces.end()) return changed->second;
  return DefaultAce(drive, ace);
}

bool Satisfies(const Drive& drive, Uid sp, const std::vector<Uid>& authorities, const BooleanExpr& expr) {
  std::vector<bool> stack;
  for (const AceTerm& term : expr) {
    if (!term.isOperator) {
      stack.push_back(Holds(drive, sp, authorities, term.authority));
      continue;
    }
    const size_t operands = term.op == BooleanOp::kNot ? 1 : 2;
    if (stack.size() < operands) return false;
    const bool right = stack.back();
    stack.pop_back();
    if (term.op == BooleanOp::kNot) {
      stack.push_back(!right);
    } else {
      const bool left = stack.back();
      stack.back() = term.op == BooleanOp::kAnd ? (left && right) : (left || right);
    }
  }
  return stack.size() == 1 && stack.back();
}

std::vector<Grant> AccessControlList(const Drive& drive, Uid sp, Uid object, Uid method) {
  return sp == kAdminSp ? AdminSpAcl(drive, object, method) : LockingSpAcl(drive, object, method);
}

bool Permits(const Drive& drive, Uid sp, const std::vector<Uid>& authorities, Uid object, Uid method,
             uint64_t column) {
  for (const Grant& grant : AccessControlList(drive, sp, object, method)) {
    if (column != kAnyColumn && !grant.columns.Has(column)) continue;
    if (Satisfies(drive, sp, authorities, AceExpression(drive, sp, grant.ace))) return true;
  }
  return false;
}

}  // namespace opalsim

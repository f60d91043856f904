#include "tper.h"

#include <algorithm>
#include <map>
#include <optional>
#include <random>

#include "access.h"
#include "method.h"
#include "packet.h"
#include "world.h"

namespace opalsim {

using namespace opal;

namespace {

constexpr uint16_t kBaseComId = 0x1000;
constexpr size_t kMaxPin = 32;
constexpr uint64_t kAlignment = 8;
constexpr uint64_t kBlockSize = 512;

const Properties kTperProperties = {
    {"MaxComPacketSize", 65536}, {"MaxResponseComPacketSize", 65536}, {"MaxPacketSize", 65516},
    {"MaxPackets", 1},           {"MaxSubpackets", 1},                {"MaxMethods", 1},
    {"MaxSessions", 1},          {"MaxAuthentications", 2},           {"MaxTransactionLimit", 1},
    {"DefSessionTimeout", 0},    {"MaxIndTokenSize", 65480}};
const Properties kDefaultHostProperties = {{"MaxComPacketSize", 2048}, {"MaxPacketSize", 2028},
                                           {"MaxIndTokenSize", 1992},  {"MaxPackets", 1},
                                           {"MaxSubpackets", 1},       {"MaxMethods", 1}};

int Code(MethodStatus status) { return static_cast<int>(status); }

struct Reply {
  std::vector<Value> results;
  int status = 0;
  bool endsSession = false;
};

Reply Refuse(MethodStatus status) { return Reply{{}, Code(status), false}; }

bool IsOneOf(Uid uid, Uid first, unsigned count) { return uid >= first && uid < first + count; }

// --- What exists ------------------------------------------------------------------

// The range whose Locking row (or key) uid is, if any.
std::optional<unsigned> RangeOf(const Drive& drive, Uid uid, bool key) {
  for (unsigned n = 0; n <= drive.rangeCount; ++n) {
    if (uid == (key ? Aes256KeyUid(n) : RangeUid(n))) return n;
  }
  return std::nullopt;
}

// The rows a table of sp lists for Next.
std::vector<Uid> RowsOf(const Drive& drive, Uid sp, Uid table) {
  std::vector<Uid> rows;
  auto add = [&](Uid first, unsigned count) {
    for (unsigned i = 0; i < count; ++i) rows.push_back(first + i);
  };
  const bool admin = sp == kAdminSp;
  if (table == kAuthorityTable) {
    rows = {kAnybody, kAdmins};
    if (admin) {
      rows.insert(rows.end(), {kMakers, kSid});
      add(kAdminSpAdmin1, 4);
      rows.push_back(kPsid);
    } else {
      add(kAdmin1, 4);
      rows.push_back(kUsers);
      add(kUser1, drive.userCount);
    }
  } else if (table == kCpinTable) {
    if (admin) {
      rows = {kCpinSid, kCpinMsid, kCpinPsid};
    } else {
      add(kCpinAdmin1, 4);
      add(kCpinUser1, drive.userCount);
    }
  } else if (table == kLockingTable && !admin) {
    for (unsigned n = 0; n <= drive.rangeCount; ++n) rows.push_back(RangeUid(n));
  } else if (table == kAceTable) {
    for (Uid ace : {kAceAnybody, kAceAdmin}) rows.push_back(ace);
    if (!admin) {
      for (Uid ace : ChangeableAces(drive)) rows.push_back(ace);
    }
  }
  return rows;
}

bool IsTable(Uid uid) { return uid == kAuthorityTable || uid == kCpinTable || uid == kLockingTable || uid == kAceTable; }

bool Exists(const Drive& drive, Uid sp, Uid object) {
  if (object == kThisSp || object == kAccessControlTable || IsTable(object)) return true;
  if (!AccessControlList(drive, sp, object, kMethodGet).empty()) return true;
  return sp == kLockingSp && RangeOf(drive, object, true).has_value();
}

// --- Column values ---------------------------------------------------------------------

Value Flag(bool flag) { return Value::Bool(flag); }

Value NumberList(const std::vector<uint64_t>& numbers) {
  std::vector<Value> items;
  for (uint64_t n : numbers) items.push_back(Value::UInt(n));
  return Value::List(std::move(items));
}

std::string AuthorityName(Uid uid) {
  if (IsOneOf(uid, kAdmin1, 4)) return "Admin" + std::to_string(uid - kAdmin1 + 1);
  if (IsOneOf(uid, kUser1, 255)) return "User" + std::to_string(uid - kUser1 + 1);
  if (IsOneOf(uid, kAdminSpAdmin1, 4)) return "Admin" + std::to_string(uid - kAdminSpAdmin1 + 1);
  switch (uid) {
    case kAnybody: return "Anybody";
    case kAdmins: return "Admins";
    case kMakers: return "Makers";
    case kSid: return "SID";
    case kPsid: return "PSID";
    case kUsers: return "Users";
    default: return "";
  }
}

// The credential of a C_PIN row of sp; nullptr for none. MSID has none of
// its own: its PIN is the drive's MSID.
Credential* CredentialOf(Drive& drive, Uid sp, Uid cpin) {
  if (sp == kAdminSp) {
    if (cpin == kCpinSid) return &drive.sid;
    if (cpin == kCpinPsid) return &drive.psid;
    return nullptr;
  }
  if (IsOneOf(cpin, kCpinAdmin1, 4)) return &drive.admins[cpin - kCpinAdmin1].credential;
  if (IsOneOf(cpin, kCpinUser1, drive.userCount)) return &drive.users[cpin - kCpinUser1].credential;
  return nullptr;
}

// The person (not class) authority of the Locking SP that uid names.
Authority* PersonOf(Drive& drive, Uid uid) {
  if (IsOneOf(uid, kAdmin1, 4)) return &drive.admins[uid - kAdmin1];
  if (IsOneOf(uid, kUser1, drive.userCount)) return &drive.users[uid - kUser1];
  return nullptr;
}

// Every column of an object, by number.
std::map<uint64_t, Value> ColumnsOf(Drive& drive, Uid sp, Uid object) {
  std::map<uint64_t, Value> c;
  c[0] = Value::Ref(object);
  if (object == kAdminSp || object == kLockingSp) {
    c[1] = Value::Text(object == kAdminSp ? "Admin" : "Locking");
    c[column::kLifeCycleState] = Value::UInt(object == kAdminSp ? kManufactured : drive.lifeCycle);
    c[7] = Flag(false);
  } else if (object == kCpinMsid || CredentialOf(drive, sp, object) != nullptr) {
    const Credential* credential = CredentialOf(drive, sp, object);
    c[column::kPin] = Value::Blob(credential != nullptr ? credential->pin : drive.msid);
    c[column::kTryLimit] = Value::UInt(credential != nullptr ? drive.settings.tryLimit : 0);
    c[column::kTries] = Value::UInt(credential != nullptr ? credential->tries : 0);
    c[column::kPersistence] = Flag(drive.settings.triesPersist);
  } else if (!AuthorityName(object).empty() && object >> 32 == kAuthorityTable >> 32) {
    const bool isClass = object == kAdmins || object == kUsers || object == kMakers;
    c[1] = Value::Text(AuthorityName(object));
    c[3] = Flag(isClass);
    const Authority* person = PersonOf(drive, object);
    c[column::kEnabled] = Flag(person != nullptr ? person->enabled
                                                 : object != kMakers && !IsOneOf(object, kAdminSpAdmin1, 4));
  } else if (std::optional<unsigned> n = RangeOf(drive, object, false)) {
    const Range& r = drive.ranges[*n];
    c[1] = Value::Text(*n == 0 ? "Locking_GlobalRange" : "Locking_Range" + std::to_string(*n));
    c[column::kRangeStart] = Value::UInt(r.start);
    c[column::kRangeLength] = Value::UInt(r.length);
    c[column::kReadLockEnabled] = Flag(r.readLockEnabled);
    c[column::kWriteLockEnabled] = Flag(r.writeLockEnabled);
    c[column::kReadLocked] = Flag(r.readLocked);
    c[column::kWriteLocked] = Flag(r.writeLocked);
    c[column::kLockOnReset] = NumberList(r.lockOnReset);
    c[column::kActiveKey] = Value::Ref(Aes256KeyUid(*n));
  } else if (object == kLockingInfo) {
    const uint64_t values[] = {1, 1, drive.rangeCount, 0, 0, 1, kBlockSize, kAlignment, 0};
    for (uint64_t i = 0; i < 9; ++i) c[2 + i] = Value::UInt(values[i]);
  } else if (object == kMbrControl) {
    c[column::kMbrEnable] = Flag(drive.mbrEnable);
    c[column::kMbrDone] = Flag(drive.mbrDone);
    c[column::kMbrDoneOnReset] = NumberList(drive.mbrDoneOnReset);
  } else if (AceExists(drive, sp, object)) {
    c[column::kBooleanExpr] = EncodeBooleanExpr(AceExpression(drive, sp, object));
    c[column::kAceColumns] = Value::List({});
  }
  return c;
}

// --- Column changes ---------------------------------------------------------------------

bool AsFlag(const Value& value, bool& flag) {
  if (!value.IsUInt() || value.uinteger() > 1) return false;
  flag = value.uinteger() == 1;
  return true;
}

bool AsResetList(const Value& value, std::vector<uint64_t>& types) {
  if (!value.IsList()) return false;
  types.clear();
  for (const Value& item : value.items()) {
    if (!item.IsUInt() || item.uinteger() > 3) return false;
    types.push_back(item.uinteger());
  }
  return true;
}

// Whether a BooleanExpr is one the drive stores: a sound postfix expression
// of its own authorities within the operand limit.
bool StorableExpr(const Drive& drive, const BooleanExpr& expr) {
  size_t depth = 0, operands = 0;
  for (const AceTerm& term : expr) {
    if (!term.isOperator) {
      if (AuthorityName(term.authority).empty() || IsOneOf(term.authority, kAdminSpAdmin1, 4) ||
          term.authority == kSid || term.authority == kPsid || term.authority == kMakers ||
          (IsOneOf(term.authority, kUser1, 255) && !IsOneOf(term.authority, kUser1, drive.userCount))) {
        return false;
      }
      ++depth;
      ++operands;
    } else if (term.op == BooleanOp::kNot ? depth < 1 : depth < 2) {
      return false;
    } else if (term.op != BooleanOp::kNot) {
      --depth;
    }
  }
  return depth == 1 && operands <= drive.settings.aceOperands;
}

// Writes one column into drive (a copy, kept only if every column fits).
bool SetColumn(Drive& drive, Uid sp, Uid object, uint64_t number, const Value& value) {
  if (Credential* credential = CredentialOf(drive, sp, object)) {
    if (number != column::kPin || !value.IsBytes() || value.bytes().size() > kMaxPin) return false;
    credential->pin = value.bytes();
    return true;
  }
  if (Authority* person = PersonOf(drive, object)) return number == column::kEnabled && AsFlag(value, person->enabled);
  if (std::optional<unsigned> n = RangeOf(drive, object, false)) {
    Range& r = drive.ranges[*n];
    switch (number) {
      case column::kRangeStart:
      case column::kRangeLength:
        if (*n == 0 || !value.IsUInt()) return false;
        (number == column::kRangeStart ? r.start : r.length) = value.uinteger();
        return true;
      case column::kReadLockEnabled: return AsFlag(value, r.readLockEnabled);
      case column::kWriteLockEnabled: return AsFlag(value, r.writeLockEnabled);
      case column::kReadLocked: return AsFlag(value, r.readLocked);
      case column::kWriteLocked: return AsFlag(value, r.writeLocked);
      case column::kLockOnReset: return AsResetList(value, r.lockOnReset);
      default: return false;
    }
  }
  if (object == kMbrControl) {
    if (number == column::kMbrEnable) return AsFlag(value, drive.mbrEnable);
    if (number == column::kMbrDone) return AsFlag(value, drive.mbrDone);
    return number == column::kMbrDoneOnReset && AsResetList(value, drive.mbrDoneOnReset);
  }
  if (number == column::kBooleanExpr && AceChangeable(drive, object)) {
    Result<BooleanExpr> expr = DecodeBooleanExpr(value);
    if (!expr || !StorableExpr(drive, *expr)) return false;
    drive.aces[object] = *expr;
    return true;
  }
  return false;
}

// A range's address must be aligned, inside the drive and clear of the
// other ranges.
bool AddressFits(const Drive& drive, unsigned n) {
  const Range& r = drive.ranges[n];
  if (r.length == 0) return true;
  if (r.start % kAlignment != 0 || r.length % kAlignment != 0) return false;
  if (r.start >= drive.blocks || r.length > drive.blocks - r.start) return false;
  for (unsigned other = 1; other <= drive.rangeCount; ++other) {
    const Range& o = drive.ranges[other];
    if (other == n || o.length == 0) continue;
    if (r.start < o.start + o.length && o.start < r.start + r.length) return false;
  }
  return true;
}

// --- Methods -------------------------------------------------------------------------------

// The named parameters of a call (name number to value); positional ones
// stay in order in `positional`.
struct Parameters {
  std::vector<Value> positional;
  std::map<uint64_t, Value> named;
};

std::optional<Parameters> ParametersOf(const std::vector<Value>& arguments) {
  Parameters p;
  for (const Value& argument : arguments) {
    if (!argument.IsName()) {
      if (!p.named.empty()) return std::nullopt;
      p.positional.push_back(argument);
    } else if (!argument.name().IsUInt() || !p.named.emplace(argument.name().uinteger(), argument.value()).second) {
      return std::nullopt;
    }
  }
  return p;
}

// A cell block: the names 0..4 of Get's one list argument.
std::optional<std::map<uint64_t, Value>> CellBlockOf(const std::vector<Value>& arguments) {
  std::map<uint64_t, Value> cells;
  if (arguments.empty()) return cells;
  if (arguments.size() != 1 || !arguments[0].IsList()) return std::nullopt;
  std::optional<Parameters> p = ParametersOf(arguments[0].items());
  if (!p || !p->positional.empty()) return std::nullopt;
  for (const auto& [name, value] : p->named) {
    if (name > param::kEndColumn || !value.IsUInt()) return std::nullopt;
  }
  return p->named;
}

uint64_t Cell(const std::map<uint64_t, Value>& cells, uint64_t name, uint64_t fallback) {
  auto found = cells.find(name);
  return found == cells.end() ? fallback : found->second.uinteger();
}

class Methods {
 public:
  Methods(Drive& drive, Connection& connection, OpenSession& session, const std::string& mbrPath)
      : drive_(drive), connection_(connection), session_(session), mbrPath_(mbrPath) {}

  Reply Invoke(const Message& call) {
    const Uid object = call.invoking, method = call.method;
    if (!Exists(drive_, session_.sp, object)) return Refuse(MethodStatus::kInvalidParameter);
    if (method == kMethodGet) return Get(object, call.arguments);
    if (method == kMethodSet) return Set(object, call.arguments);
    if (!Permits(drive_, session_.sp, Authorities(), object, method)) return Refuse(MethodStatus::kNotAuthorized);
    if (method == kMethodNext) return Next(object, call.arguments);
    const bool changes = method == kMethodActivate || method == kMethodRevert || method == kMethodRevertSp ||
                         method == kMethodGenKey;
    if (changes && !session_.write) return Refuse(MethodStatus::kNotAuthorized);
    if (method == kMethodActivate) return Activate();
    if (method == kMethodRevert) return Revert();
    if (method == kMethodRevertSp) return RevertSp(call.arguments);
    if (method == kMethodGenKey) return GenKey(object);
    if (method == kMethodAuthenticate) return AuthenticateInSession(call.arguments);
    if (method == kMethodRandom) return Random(call.arguments);
    if (method == kMethodGetAcl) return GetAcl(call.arguments);
    return Refuse(MethodStatus::kNotAuthorized);
  }

 private:
  std::vector<Uid> Authorities() const { return session_.authorities; }
  bool Allowed(Uid object, Uid method, uint64_t column) const {
    return Permits(drive_, session_.sp, Authorities(), object, method, column);
  }

  Reply Get(Uid object, const std::vector<Value>& arguments) {
    if (!Allowed(object, kMethodGet, kAnyColumn)) return Refuse(MethodStatus::kNotAuthorized);
    std::optional<std::map<uint64_t, Value>> cells = CellBlockOf(arguments);
    if (!cells) return Refuse(MethodStatus::kInvalidParameter);
    if (object == kMbrTable) return GetMbr(*cells);
    if (cells->count(param::kStartRow) || cells->count(2)) return Refuse(MethodStatus::kInvalidParameter);
    const std::map<uint64_t, Value> columns = ColumnsOf(drive_, session_.sp, object);
    const uint64_t first = Cell(*cells, param::kStartColumn, 0);
    const uint64_t last = Cell(*cells, param::kEndColumn, columns.rbegin()->first);
    if (first > last || last > columns.rbegin()->first) return Refuse(MethodStatus::kInvalidParameter);
    std::vector<Value> cellsOut;
    for (const auto& [number, value] : columns) {
      if (number >= first && number <= last && Allowed(object, kMethodGet, number)) {
        cellsOut.push_back(Value::Named(number, value));
      }
    }
    return Reply{{Value::List(std::move(cellsOut))}, 0, false};
  }

  Reply GetMbr(const std::map<uint64_t, Value>& cells) {
    const uint64_t first = Cell(cells, param::kStartRow, 0);
    const uint64_t last = Cell(cells, 2, drive_.settings.mbrSize - 1);
    if (first > last || last >= drive_.settings.mbrSize) return Refuse(MethodStatus::kInvalidParameter);
    if (last - first + 1 > connection_.hostMaxComPacket) return Refuse(MethodStatus::kResponseOverflow);
    Result<Bytes> data = ReadMbr(mbrPath_, first, static_cast<size_t>(last - first + 1));
    if (!data) return Refuse(MethodStatus::kTperMalfunction);
    return Reply{{Value::Blob(*data)}, 0, false};
  }

  Reply Set(Uid object, const std::vector<Value>& arguments) {
    if (!session_.write) return Refuse(MethodStatus::kNotAuthorized);
    std::optional<Parameters> p = ParametersOf(arguments);
    if (!p || !p->positional.empty() || !p->named.count(param::kValues)) return Refuse(MethodStatus::kInvalidParameter);
    if (object == kMbrTable) return SetMbr(*p);
    const Value& values = p->named.at(param::kValues);
    std::optional<Parameters> columns = values.IsList() ? ParametersOf(values.items()) : std::nullopt;
    if (p->named.size() != 1 || !columns || !columns->positional.empty()) {
      return Refuse(MethodStatus::kInvalidParameter);
    }
    for (const auto& [number, value] : columns->named) {
      // The global range always spans the whole disk: its address is not
      // a column anyone may write, so asking is invalid, not unauthorized.
      if (object == kLockingGlobalRange && (number == column::kRangeStart || number == column::kRangeLength)) {
        return Refuse(MethodStatus::kInvalidParameter);
      }
      if (!Allowed(object, kMethodSet, number)) return Refuse(MethodStatus::kNotAuthorized);
    }
    Drive changed = drive_;
    for (const auto& [number, value] : columns->named) {
      if (!SetColumn(changed, session_.sp, object, number, value)) return Refuse(MethodStatus::kInvalidParameter);
    }
    std::optional<unsigned> range = RangeOf(changed, object, false);
    if (range && !AddressFits(changed, *range)) return Refuse(MethodStatus::kInvalidParameter);
    drive_ = std::move(changed);
    return Reply{};
  }

  Reply SetMbr(const Parameters& p) {
    if (!Allowed(kMbrTable, kMethodSet, kAnyColumn)) return Refuse(MethodStatus::kNotAuthorized);
    const Value& data = p.named.at(param::kValues);
    auto where = p.named.find(param::kWhere);
    const uint64_t offset = where == p.named.end() ? 0 : where->second.uinteger();
    if (!data.IsBytes() || (where != p.named.end() && !where->second.IsUInt()) || p.named.size() > 2 ||
        offset > drive_.settings.mbrSize || data.bytes().size() > drive_.settings.mbrSize - offset) {
      return Refuse(MethodStatus::kInvalidParameter);
    }
    if (!WriteMbr(mbrPath_, offset, data.bytes())) return Refuse(MethodStatus::kTperMalfunction);
    drive_.mbrWritten = std::max(drive_.mbrWritten, offset + data.bytes().size());
    return Reply{};
  }

  Reply Next(Uid table, const std::vector<Value>& arguments) {
    std::optional<Parameters> p = ParametersOf(arguments);
    if (!IsTable(table) || !p || !p->positional.empty()) return Refuse(MethodStatus::kInvalidParameter);
    const std::vector<Uid> rows = RowsOf(drive_, session_.sp, table);
    size_t from = 0;
    if (auto where = p->named.find(0); where != p->named.end()) {
      Uid after = 0;
      if (!where->second.AsUid(after)) return Refuse(MethodStatus::kInvalidParameter);
      auto found = std::find(rows.begin(), rows.end(), after);
      if (found == rows.end()) return Refuse(MethodStatus::kInvalidParameter);
      from = static_cast<size_t>(found - rows.begin()) + 1;
    }
    const uint64_t count = Cell(p->named, 1, rows.size());
    std::vector<Value> out;
    for (size_t i = from; i < rows.size() && out.size() < count; ++i) out.push_back(Value::Ref(rows[i]));
    return Reply{{Value::List(std::move(out))}, 0, false};
  }

  Reply Activate() {
    if (!drive_.LockingActive()) {
      opalsim::Activate(drive_);
      ClearMbr(mbrPath_);
    }
    return Reply{};
  }

  Reply Revert() {
    const bool byPsid = std::find(session_.authorities.begin(), session_.authorities.end(), kPsid) !=
                        session_.authorities.end();
    RevertTper(drive_, byPsid && drive_.settings.psidRevertErases);
    ClearMbr(mbrPath_);
    return Reply{{}, 0, true};
  }

  Reply RevertSp(const std::vector<Value>& arguments) {
    std::optional<Parameters> p = ParametersOf(arguments);
    if (!p || !p->positional.empty()) return Refuse(MethodStatus::kInvalidParameter);
    bool keep = false;
    auto found = p->named.find(param::kKeepGlobalRangeKey);
    if (found != p->named.end() && !AsFlag(found->second, keep)) return Refuse(MethodStatus::kInvalidParameter);
    if (keep && RevertSpRefused(drive_)) return Refuse(MethodStatus::kFail);
    RevertLockingSp(drive_, keep);
    ClearMbr(mbrPath_);
    return Reply{{}, 0, true};
  }

  Reply GenKey(Uid key) {
    NewKey(drive_.ranges[*RangeOf(drive_, key, true)]);
    return Reply{};
  }

  Reply AuthenticateInSession(const std::vector<Value>& arguments);
  Reply Random(const std::vector<Value>& arguments) {
    if (arguments.size() != 1 || !arguments[0].IsUInt() || arguments[0].uinteger() > 32) {
      return Refuse(MethodStatus::kInvalidParameter);
    }
    static std::mt19937_64 random{std::random_device{}()};
    Bytes bytes(arguments[0].uinteger());
    for (uint8_t& b : bytes) b = static_cast<uint8_t>(random());
    return Reply{{Value::Blob(bytes)}, 0, false};
  }

  Reply GetAcl(const std::vector<Value>& arguments) {
    Uid object = 0, method = 0;
    if (arguments.size() != 2 || !arguments[0].AsUid(object) || !arguments[1].AsUid(method)) {
      return Refuse(MethodStatus::kInvalidParameter);
    }
    std::vector<Value> aces;
    for (const Grant& grant : AccessControlList(drive_, session_.sp, object, method)) {
      aces.push_back(Value::Ref(grant.ace));
    }
    return Reply{{Value::List(std::move(aces))}, 0, false};
  }

  Drive& drive_;
  Connection& connection_;
  OpenSession& session_;
  const std::string& mbrPath_;
};

// --- Authentication ---------------------------------------------------------------------

// Checks challenge for authority in sp and counts a wrong one. SUCCESS,
// NOT_AUTHORIZED (wrong, disabled), AUTHORITY_LOCKED_OUT or
// INVALID_PARAMETER (no such authority, or a class).
MethodStatus Authenticate(Drive& drive, Uid sp, Uid authority, const std::optional<Bytes>& challenge) {
  if (authority == kAnybody) return MethodStatus::kSuccess;
  Credential* credential = nullptr;
  bool enabled = true;
  if (sp == kAdminSp) {
    if (authority == kSid) credential = &drive.sid;
    if (authority == kPsid) credential = &drive.psid;
    if (IsOneOf(authority, kAdminSpAdmin1, 4)) return MethodStatus::kNotAuthorized;
  } else if (Authority* person = PersonOf(drive, authority)) {
    credential = &person->credential;
    enabled = person->enabled;
  }
  if (credential == nullptr) return MethodStatus::kInvalidParameter;
  if (!enabled) return MethodStatus::kNotAuthorized;
  const uint64_t limit = drive.settings.tryLimit;
  if (limit > 0 && credential->tries >= limit) return MethodStatus::kAuthorityLockedOut;
  const bool forcedFailure = drive.failNext > 0;
  if (forcedFailure) --drive.failNext;
  if (forcedFailure || !challenge || *challenge != credential->pin) {
    ++credential->tries;
    return MethodStatus::kNotAuthorized;
  }
  credential->tries = 0;
  return MethodStatus::kSuccess;
}

Reply Methods::AuthenticateInSession(const std::vector<Value>& arguments) {
  std::optional<Parameters> p = ParametersOf(arguments);
  Uid authority = 0;
  if (!p || p->positional.size() != 1 || !p->positional[0].AsUid(authority)) {
    return Refuse(MethodStatus::kInvalidParameter);
  }
  std::optional<Bytes> challenge;
  if (auto found = p->named.find(0); found != p->named.end() && found->second.IsBytes()) {
    challenge = found->second.bytes();
  }
  const MethodStatus status = opalsim::Authenticate(drive_, session_.sp, authority, challenge);
  if (status == MethodStatus::kInvalidParameter || status == MethodStatus::kAuthorityLockedOut) {
    return Refuse(status);
  }
  if (status == MethodStatus::kSuccess) session_.authorities.push_back(authority);
  return Reply{{Value::Bool(status == MethodStatus::kSuccess)}, 0, false};
}

// --- The session manager and the ComPacket level -----------------------------------

class Tper {
 public:
  Tper(Drive& drive, Connection& connection, const std::string& mbrPath)
      : drive_(drive), connection_(connection), mbrPath_(mbrPath) {}

  void Receive(const Bytes& data) {
    Result<ComPacket> packet = Unframe(data);
    if (!packet || packet->empty || packet->comId != kBaseComId) {
      // Nothing to route the answer by: a bare error status.
      if (packet && !packet->empty && packet->comId != kBaseComId) return;
      Answer(0, 0, EncodeResponse({}, Code(MethodStatus::kInvalidParameter)));
      return;
    }
    Result<Message> message = DecodeMessage(packet->payload);
    if (packet->tsn == 0 && packet->hsn == 0) {
      Manager(message);
    } else {
      InSession(packet->tsn, packet->hsn, message);
    }
  }

 private:
  void Answer(uint32_t tsn, uint32_t hsn, Bytes payload) {
    ComPacket out;
    out.comId = kBaseComId;
    out.tsn = tsn;
    out.hsn = hsn;
    out.payload = std::move(payload);
    connection_.pending = Frame(out);
    if (connection_.pending.size() > std::max<uint64_t>(connection_.hostMaxComPacket, 2048)) {
      out.payload = EncodeResponse({}, Code(MethodStatus::kResponseOverflow));
      connection_.pending = Frame(out);
    }
    connection_.hasPending = true;
  }

  void Manager(const Result<Message>& message) {
    if (message && message->kind == Message::Kind::kEndOfSession) {
      // An end of session outside any session: most drives have nothing to
      // say, and the host's next IF-RECV finds an empty ComPacket.
      if (drive_.settings.strayEndOfSession == "answer") Answer(0, 0, EncodeEndOfSession());
      return;
    }
    if (!message || message->kind != Message::Kind::kCall || message->invoking != kSessionManager) {
      Answer(0, 0, EncodeResponse({}, Code(MethodStatus::kInvalidParameter)));
      return;
    }
    if (message->method == kMethodProperties) {
      Properties(message->arguments);
    } else if (message->method == kMethodStartSession) {
      StartSession(message->arguments);
    } else {
      Answer(0, 0, EncodeResponse({}, Code(MethodStatus::kInvalidParameter)));
    }
  }

  void Properties(const std::vector<Value>& arguments) {
    Result<opal::Properties> host = DecodePropertiesCall(arguments);
    if (!host) {
      Answer(0, 0, EncodeManagerCall(kMethodProperties, {}, Code(MethodStatus::kInvalidParameter)));
      return;
    }
    const opal::Properties echoed = host->empty() ? kDefaultHostProperties : *host;
    connection_.hostMaxComPacket = std::max<uint64_t>(2048, PropertyOr(echoed, "MaxComPacketSize", 2048));
    Answer(0, 0, EncodeManagerCall(kMethodProperties, EncodePropertiesReply(kTperProperties, echoed), 0));
  }

  void StartSession(const std::vector<Value>& arguments) {
    Result<StartSessionArgs> args = DecodeStartSession(arguments);
    int status = Code(MethodStatus::kInvalidParameter);
    if (args && (args->sp == kAdminSp || args->sp == kLockingSp)) {
      if (args->sp == kLockingSp && !drive_.LockingActive()) {
        status = drive_.settings.inactiveSpStatus;
      } else {
        status = Code(Authenticate(drive_, args->sp, args->authority.value_or(kAnybody), args->challenge));
      }
    }
    if (status != 0) {
      Answer(0, 0, drive_.settings.failedStartShape == "sync" ? EncodeManagerCall(kMethodSyncSession, {}, status)
                                                              : EncodeResponse({}, status));
      return;
    }
    OpenSession session;
    session.tsn = connection_.nextTsn++;
    session.hsn = args->hostSession;
    session.sp = args->sp;
    session.write = args->write;
    if (args->authority) session.authorities.push_back(*args->authority);
    session.generation = drive_.generation;
    connection_.sessions.push_back(session);
    Answer(0, 0, EncodeManagerCall(kMethodSyncSession, {Value::UInt(session.hsn), Value::UInt(session.tsn)}, 0));
  }

  void InSession(uint32_t tsn, uint32_t hsn, const Result<Message>& message) {
    std::vector<OpenSession>& sessions = connection_.sessions;
    auto open = std::find_if(sessions.begin(), sessions.end(), [&](const OpenSession& s) {
      return s.tsn == tsn && s.hsn == hsn && s.generation == drive_.generation;
    });
    const bool endOfSession = message && message->kind == Message::Kind::kEndOfSession;
    if (open == sessions.end()) {
      // A session this drive does not know (never opened, or ended by a
      // power cycle or a revert).
      if (!endOfSession) Answer(tsn, hsn, EncodeResponse({}, Code(MethodStatus::kInvalidParameter)));
      return;
    }
    if (endOfSession) {
      sessions.erase(open);
      Answer(tsn, hsn, EncodeEndOfSession());
      return;
    }
    if (!message || message->kind != Message::Kind::kCall) {
      Answer(tsn, hsn, EncodeResponse({}, Code(MethodStatus::kInvalidParameter)));
      return;
    }
    const Reply reply = Methods(drive_, connection_, *open, mbrPath_).Invoke(*message);
    Answer(tsn, hsn, EncodeResponse(reply.results, reply.status));
    if (reply.endsSession) sessions.erase(open);
  }

  Drive& drive_;
  Connection& connection_;
  const std::string& mbrPath_;
};

Bytes SupportedProtocols(bool opal) {
  Bytes list = opal ? Bytes{0x00, 0x01} : Bytes{0x00};
  Bytes out(8, 0);
  out[7] = static_cast<uint8_t>(list.size());
  out.insert(out.end(), list.begin(), list.end());
  return out;
}

}  // namespace

Discovery DiscoveryOf(const Drive& drive) {
  Discovery d;
  d.tper = TperFeature{true, false, false, false, true, false};
  d.locking = LockingFeature{true, drive.LockingActive(), LockedBit(drive), true,
                             drive.LockingActive() && drive.mbrEnable, drive.LockingActive() && drive.mbrDone};
  d.geometry = GeometryFeature{true, static_cast<uint32_t>(kBlockSize), kAlignment, 0};
  SscFeature opal2;
  opal2.baseComId = kBaseComId;
  opal2.numComIds = 1;
  opal2.lockingAdmins = 4;
  opal2.lockingUsers = static_cast<uint16_t>(drive.userCount);
  d.opal2 = opal2;
  return d;
}

bool TperSend(Drive& drive, Connection& connection, const std::string& mbrPath, uint8_t protocol, uint16_t comId,
              const Bytes& data) {
  if (!drive.opal || protocol != kProtocolTcg) return false;
  // Whatever was not fetched is superseded: only the answer to this
  // ComPacket (or nothing) is pending now.
  connection.pending.clear();
  connection.hasPending = false;
  if (comId != kBaseComId) return true;  // not a ComID of this drive: nothing comes of it
  Tper(drive, connection, mbrPath).Receive(data);
  return true;
}

bool TperReceive(const Drive& drive, Connection& connection, uint8_t protocol, uint16_t comId, size_t length,
                 Bytes& out) {
  if (protocol == kProtocolInfo) {
    out = SupportedProtocols(drive.opal);
  } else if (!drive.opal || protocol != kProtocolTcg) {
    return false;
  } else if (comId == kDiscoveryComId) {
    out = EncodeDiscovery(DiscoveryOf(drive));
  } else if (!connection.hasPending) {
    out = FrameEmpty(comId);
  } else if (connection.pending.size() > length) {
    // Too large for the host's buffer: say how much is waiting.
    const uint32_t size = static_cast<uint32_t>(connection.pending.size());
    out = FrameEmpty(comId, size, size);
  } else {
    out = std::move(connection.pending);
    connection.pending.clear();
    connection.hasPending = false;
  }
  out.resize(length, 0);
  return true;
}

}  // namespace opalsim

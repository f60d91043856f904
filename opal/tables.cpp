#include "tables.h"

namespace opal {

namespace {

// The one column of a Get, which must be there.
Result<Value> ReadColumn(Session& session, Uid object, uint64_t column) {
  Result<std::map<uint64_t, Value>> columns = session.Get(object, column, column);
  if (!columns) return columns.error();
  auto found = columns->find(column);
  if (found == columns->end()) return Fail("the drive left out column " + std::to_string(column));
  return found->second;
}

Result<uint64_t> ReadNumber(Session& session, Uid object, uint64_t column) {
  Result<Value> value = ReadColumn(session, object, column);
  if (!value) return value.error();
  if (!value->IsUInt()) return Fail("column " + std::to_string(column) + " is not a number");
  return value->uinteger();
}

Status Invoke(Session& session, Uid object, Uid method, const std::vector<Value>& arguments = {}) {
  Result<Message> reply = session.Call(object, method, arguments);
  if (!reply) return reply.error();
  return Ok();
}

}  // namespace

Result<Bytes> ReadMsid(Session& session) {
  Result<Value> pin = ReadColumn(session, kCpinMsid, column::kPin);
  if (!pin) return pin.error();
  if (!pin->IsBytes()) return Fail("the MSID is not a byte string");
  return pin->bytes();
}

Status SetPin(Session& session, Uid cpin, const Bytes& pin) {
  return session.Set(cpin, {{column::kPin, Value::MediumBlob(pin)}});
}

Result<uint64_t> ReadLifeCycle(Session& session, Uid sp) { return ReadNumber(session, sp, column::kLifeCycleState); }

Status ActivateLockingSp(Session& session) { return Invoke(session, kLockingSp, kMethodActivate); }

Result<uint64_t> ReadMaxRanges(Session& session) { return ReadNumber(session, kLockingInfo, column::kMaxRanges); }

Result<RangeInfo> ReadRange(Session& session, unsigned range) {
  Result<std::map<uint64_t, Value>> columns = session.Get(RangeUid(range), column::kRangeStart, column::kWriteLocked);
  if (!columns) return columns.error();
  uint64_t values[6];
  for (uint64_t c = column::kRangeStart; c <= column::kWriteLocked; ++c) {
    auto found = columns->find(c);
    if (found == columns->end() || !found->second.IsUInt()) return Fail("range columns missing or not numbers");
    values[c - column::kRangeStart] = found->second.uinteger();
  }
  return RangeInfo{values[0], values[1], values[2] != 0, values[3] != 0, values[4] != 0, values[5] != 0};
}

Result<Uid> ReadActiveKey(Session& session, unsigned range) {
  Result<Value> key = ReadColumn(session, RangeUid(range), column::kActiveKey);
  if (!key) return key.error();
  Uid uid = 0;
  if (!key->AsUid(uid)) return Fail("the ActiveKey is not a UID");
  return uid;
}

Status GenKey(Session& session, Uid key) { return Invoke(session, key, kMethodGenKey); }

Status RevertLockingSp(Session& session, bool keepGlobalRangeKey) {
  std::vector<Value> arguments;
  if (keepGlobalRangeKey) {
    // The parameter's name in three bytes, the form drives are known to receive.
    arguments.push_back(Value::Name(Value::UIntOfWidth(param::kKeepGlobalRangeKey, 3), Value::Bool(true)));
  }
  Status done = Invoke(session, kThisSp, kMethodRevertSp, arguments);
  if (done) session.ClosedByDrive();
  return done;
}

Status RevertTper(Session& session) {
  Status done = Invoke(session, kAdminSp, kMethodRevert);
  // A Revert that succeeds ends the session on the drive; after one refused, nothing more is sent in it either, and
  // the drive times it out.
  session.ClosedByDrive();
  return done;
}

Status WriteMbr(Session& session, uint64_t offset, const Bytes& data) {
  return Invoke(session, kMbrTable, kMethodSet, SetBytes(offset, data));
}

Result<bool> ReadEnabled(Session& session, Uid authority) {
  Result<uint64_t> enabled = ReadNumber(session, authority, column::kEnabled);
  if (!enabled) return enabled.error();
  return *enabled != 0;
}

Status SetEnabled(Session& session, Uid authority, bool enabled) {
  return session.Set(authority, {{column::kEnabled, Value::Bool(enabled)}});
}

Result<BooleanExpr> ReadAce(Session& session, Uid ace) {
  Result<Value> expr = ReadColumn(session, ace, column::kBooleanExpr);
  if (!expr) return expr.error();
  return DecodeBooleanExpr(*expr);
}

Status WriteAce(Session& session, Uid ace, const BooleanExpr& expr) {
  return session.Set(ace, {{column::kBooleanExpr, EncodeBooleanExpr(expr)}});
}

}  // namespace opal

#include "method.h"

#include <strings.h>

namespace opal {

namespace {

void PutStatusList(Encoder& e, int status) {
  e.Token(Control::kEndOfData).Token(Control::kStartList).UInt(static_cast<uint64_t>(status)).UInt(0).UInt(0);
  e.Token(Control::kEndList);
}

void PutList(Encoder& e, const std::vector<Value>& items) {
  e.Token(Control::kStartList);
  for (const Value& item : items) e.Put(item);
  e.Token(Control::kEndList);
}

bool IsControl(const Item& item, Control control) { return item.isControl && item.control == control; }

// The status of a status list item (F0 st 00 00 F1).
Result<int> StatusOf(const Item& item) {
  if (item.isControl || !item.value.IsList() || item.value.items().empty() || !item.value.items()[0].IsUInt() ||
      item.value.items()[0].uinteger() > 0xFF) {
    return Fail("method status list missing or malformed");
  }
  return static_cast<int>(item.value.items()[0].uinteger());
}

}  // namespace

Bytes EncodeCall(Uid invoking, Uid method, const std::vector<Value>& arguments) {
  Encoder e;
  e.Token(Control::kCall).Ref(invoking).Ref(method);
  PutList(e, arguments);
  PutStatusList(e, 0);
  return e.bytes();
}

Bytes EncodeResponse(const std::vector<Value>& results, int status) {
  Encoder e;
  PutList(e, results);
  PutStatusList(e, status);
  return e.bytes();
}

Bytes EncodeManagerCall(Uid method, const std::vector<Value>& arguments, int status) {
  Encoder e;
  e.Token(Control::kCall).Ref(kSessionManager).Ref(method);
  PutList(e, arguments);
  PutStatusList(e, status);
  return e.bytes();
}

Bytes EncodeEndOfSession() { return Encoder().Token(Control::kEndOfSession).bytes(); }

Result<Message> DecodeMessage(const Bytes& payload) {
  Result<std::vector<Item>> decoded = Decode(payload);
  if (!decoded) return decoded.error();
  const std::vector<Item>& items = *decoded;
  Message message;
  if (items.size() == 1 && IsControl(items[0], Control::kEndOfSession)) {
    message.kind = Message::Kind::kEndOfSession;
    return message;
  }
  size_t at = 0;
  if (!items.empty() && IsControl(items[0], Control::kCall)) {
    message.kind = Message::Kind::kCall;
    if (items.size() < 3 || items[1].isControl || items[2].isControl || !items[1].value.AsUid(message.invoking) ||
        !items[2].value.AsUid(message.method)) {
      return Fail("call without an invoking UID and a method UID");
    }
    at = 3;
  }
  if (items.size() != at + 3 || items[at].isControl || !items[at].value.IsList() ||
      !IsControl(items[at + 1], Control::kEndOfData)) {
    return Fail("message is not a list, End of Data and a status list");
  }
  Result<int> status = StatusOf(items[at + 2]);
  if (!status) return status.error();
  message.arguments = items[at].value.items();
  message.status = *status;
  return message;
}

std::vector<Value> GetColumns(uint64_t first, uint64_t last) {
  return {Value::List({Value::Named(param::kStartColumn, Value::UInt(first)),
                       Value::Named(param::kEndColumn, Value::UInt(last))})};
}

std::vector<Value> SetColumns(const std::vector<std::pair<uint64_t, Value>>& columns) {
  std::vector<Value> named;
  for (const auto& [number, value] : columns) named.push_back(Value::Named(number, value));
  return {Value::Named(param::kValues, Value::List(std::move(named)))};
}

std::vector<Value> SetBytes(uint64_t offset, const Bytes& data) {
  return {Value::Named(param::kWhere, Value::UInt(offset)), Value::Named(param::kValues, Value::LongBlob(data))};
}

Result<std::map<uint64_t, Value>> ColumnsOfResult(const Message& response) {
  if (response.arguments.size() != 1 || !response.arguments[0].IsList()) return Fail("Get result is not one list");
  std::map<uint64_t, Value> columns;
  for (const Value& cell : response.arguments[0].items()) {
    if (!cell.IsName() || !cell.name().IsUInt()) return Fail("Get result holds something other than columns");
    columns[cell.name().uinteger()] = cell.value();
  }
  return columns;
}

std::vector<Value> EncodeStartSession(const StartSessionArgs& args) {
  std::vector<Value> values = {Value::UInt(args.hostSession), Value::Ref(args.sp), Value::Bool(args.write)};
  // Challenges go out as medium atoms, as drives are known to receive passwords.
  if (args.challenge) values.push_back(Value::Named(param::kHostChallenge, Value::MediumBlob(*args.challenge)));
  if (args.authority) values.push_back(Value::Named(param::kHostSigningAuthority, Value::Ref(*args.authority)));
  return values;
}

Result<StartSessionArgs> DecodeStartSession(const std::vector<Value>& arguments) {
  StartSessionArgs args;
  if (arguments.size() < 3 || !arguments[0].IsUInt() || arguments[0].uinteger() > 0xFFFFFFFF ||
      !arguments[1].AsUid(args.sp) || !arguments[2].IsUInt()) {
    return Fail("StartSession without HostSessionID, SPID and Write");
  }
  args.hostSession = static_cast<uint32_t>(arguments[0].uinteger());
  args.write = arguments[2].uinteger() != 0;
  for (size_t i = 3; i < arguments.size(); ++i) {
    const Value& option = arguments[i];
    if (!option.IsName() || !option.name().IsUInt()) return Fail("StartSession option is not a name");
    const uint64_t name = option.name().uinteger();
    Uid authority = 0;
    if (name == param::kHostChallenge && option.value().IsBytes()) {
      args.challenge = option.value().bytes();
    } else if (name == param::kHostSigningAuthority && option.value().AsUid(authority)) {
      args.authority = authority;
    } else if (name == param::kHostChallenge || name == param::kHostSigningAuthority) {
      return Fail("StartSession option of the wrong kind");
    }  // other options (timeouts, exchange keys) are ignored
  }
  return args;
}

namespace {

Value PropertyList(const Properties& properties) {
  std::vector<Value> names;
  for (const auto& [name, value] : properties) names.push_back(Value::Name(Value::Text(name), Value::UInt(value)));
  return Value::List(std::move(names));
}

Result<Properties> PropertiesOf(const Value& list) {
  if (!list.IsList()) return Fail("properties are not a list");
  Properties properties;
  for (const Value& entry : list.items()) {
    if (!entry.IsName() || !entry.name().IsBytes() || !entry.value().IsUInt()) {
      return Fail("property is not a name with a number");
    }
    properties.emplace_back(entry.name().text(), entry.value().uinteger());
  }
  return properties;
}

}  // namespace

std::vector<Value> EncodePropertiesCall(const Properties& host) {
  if (host.empty()) return {};
  return {Value::Named(param::kHostProperties, PropertyList(host))};
}

std::vector<Value> EncodePropertiesReply(const Properties& tper, const Properties& host) {
  return {PropertyList(tper), Value::Named(param::kHostProperties, PropertyList(host))};
}

Result<Properties> DecodePropertiesCall(const std::vector<Value>& arguments) {
  if (arguments.empty()) return Properties{};
  if (arguments.size() != 1 || !arguments[0].IsName() || !arguments[0].name().IsUInt() ||
      arguments[0].name().uinteger() != param::kHostProperties) {
    return Fail("Properties takes only HostProperties");
  }
  return PropertiesOf(arguments[0].value());
}

Result<Properties> DecodePropertiesReply(const std::vector<Value>& arguments) {
  if (arguments.empty()) return Fail("Properties reply without the TPer's properties");
  return PropertiesOf(arguments[0]);
}

uint64_t PropertyOr(const Properties& properties, const std::string& name, uint64_t fallback) {
  for (const auto& [key, value] : properties) {
    if (strcasecmp(key.c_str(), name.c_str()) == 0) return value;
  }
  return fallback;
}

}  // namespace opal

// Method calls and their results as token payloads: the shapes of a host's
// call, a drive's response, the session manager's own messages
// (Properties, StartSession, SyncSession) and end of session, plus the
// argument forms of Get and Set.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tokens.h"
#include "uids.h"

namespace opal {

// One message of a session, decoded.
struct Message {
  enum class Kind { kCall, kResponse, kEndOfSession };
  Kind kind = Kind::kResponse;
  Uid invoking = 0;  // calls only
  Uid method = 0;    // calls only
  // The items of the call's parameter list, or of the response's result list.
  std::vector<Value> arguments;
  int status = 0;  // first element of the status list
};

// Call invoking.method(arguments), then End of Data and the status list
// (0 0 0), as a host sends it.
Bytes EncodeCall(Uid invoking, Uid method, const std::vector<Value>& arguments);
// A drive's answer to a call: the results, End of Data, status list.
Bytes EncodeResponse(const std::vector<Value>& results, int status);
// A session manager message from the drive (SyncSession, Properties): a call
// on the session manager with a status list.
Bytes EncodeManagerCall(Uid method, const std::vector<Value>& arguments, int status);
Bytes EncodeEndOfSession();

// Reads a payload as a call, a response or end of session. Anything else is
// an error.
Result<Message> DecodeMessage(const Bytes& payload);

// --- Argument forms ---------------------------------------------------------

// Get's cell block for columns first..last of an object row.
std::vector<Value> GetColumns(uint64_t first, uint64_t last);
// Set's Values parameter: the listed columns and their values.
std::vector<Value> SetColumns(const std::vector<std::pair<uint64_t, Value>>& columns);
// Set on a byte table: Where = offset, Values = the bytes.
std::vector<Value> SetBytes(uint64_t offset, const Bytes& data);

// The columns of a Get result: its one list of column=value names. Fails on
// any other shape.
Result<std::map<uint64_t, Value>> ColumnsOfResult(const Message& response);

// --- Session manager ---------------------------------------------------------

struct StartSessionArgs {
  uint32_t hostSession = 0;
  Uid sp = 0;
  bool write = true;
  std::optional<Bytes> challenge;
  std::optional<Uid> authority;
};
std::vector<Value> EncodeStartSession(const StartSessionArgs& args);
Result<StartSessionArgs> DecodeStartSession(const std::vector<Value>& arguments);

// TPer properties and host properties, name to value, in the order sent.
using Properties = std::vector<std::pair<std::string, uint64_t>>;
// Properties' one parameter: HostProperties = the host's list (may be empty).
std::vector<Value> EncodePropertiesCall(const Properties& host);
// The reply's arguments: the TPer's list, then HostProperties = host's.
std::vector<Value> EncodePropertiesReply(const Properties& tper, const Properties& host);
// The host properties of a Properties call (empty when none were sent).
Result<Properties> DecodePropertiesCall(const std::vector<Value>& arguments);
// The TPer's properties from a reply.
Result<Properties> DecodePropertiesReply(const std::vector<Value>& arguments);
// A property's value by name (compared ignoring case), or fallback.
uint64_t PropertyOr(const Properties& properties, const std::string& name, uint64_t fallback);

}  // namespace opal

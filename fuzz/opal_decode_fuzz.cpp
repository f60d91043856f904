// Arbitrary bytes through every decoder of the opal library that reads what
// a drive or a host sends: framing, tokens, messages and their argument
// forms, discovery, ACE expressions, ATA CDBs and identify data. Whatever
// decodes must also encode and decode again to the same thing.
#include <cstdint>
#include <cstdlib>

#include "ace.h"
#include "ata.h"
#include "discovery.h"
#include "method.h"
#include "nvme.h"
#include "packet.h"

using namespace opal;

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

void CheckValue(const Value& value) {
  (void)Describe(value);
  Result<std::vector<Item>> again = Decode(Encode(value));
  Require(again.ok() && again->size() == 1 && (*again)[0].value == value);
  Result<BooleanExpr> expr = DecodeBooleanExpr(value);
  if (!expr) return;
  Result<BooleanExpr> back = DecodeBooleanExpr(EncodeBooleanExpr(*expr));
  Require(back.ok() && *back == *expr);
  Result<std::vector<Uid>> anyOf = AuthoritiesOfAnyOf(*expr);
  if (anyOf) {
    Result<std::vector<Uid>> same = AuthoritiesOfAnyOf(AnyOf(*anyOf));
    Require(same.ok() && *same == *anyOf);
  }
}

void Payload(const Bytes& payload) {
  Result<std::vector<Item>> items = Decode(payload);
  if (items) {
    for (const Item& item : *items) {
      if (!item.isControl) CheckValue(item.value);
    }
  }
  Result<Message> message = DecodeMessage(payload);
  if (!message) return;
  (void)ColumnsOfResult(*message);
  if (message->kind == Message::Kind::kCall) {
    Result<Message> again = DecodeMessage(EncodeCall(message->invoking, message->method, message->arguments));
    Require(again.ok() && again->arguments == message->arguments && again->method == message->method);
  } else if (message->kind == Message::Kind::kResponse) {
    Result<Message> again = DecodeMessage(EncodeResponse(message->arguments, message->status));
    Require(again.ok() && again->arguments == message->arguments && again->status == message->status);
  }
  if (Result<StartSessionArgs> start = DecodeStartSession(message->arguments)) {
    Result<StartSessionArgs> again = DecodeStartSession(EncodeStartSession(*start));
    Require(again.ok() && again->hostSession == start->hostSession && again->sp == start->sp &&
            again->challenge == start->challenge && again->authority == start->authority);
  }
  if (Result<Properties> tper = DecodePropertiesReply(message->arguments)) {
    Result<Properties> again = DecodePropertiesReply(EncodePropertiesReply(*tper, {}));
    Require(again.ok() && *again == *tper);
  }
  (void)DecodePropertiesCall(message->arguments);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bytes bytes(data, data + size);
  // As a ComPacket, whose payload is a message; the same bytes as a payload.
  if (Result<ComPacket> packet = Unframe(data, size); packet && !packet->empty) {
    Result<ComPacket> again = Unframe(Frame(*packet));
    Require(again.ok() && again->payload == packet->payload && again->tsn == packet->tsn &&
            again->hsn == packet->hsn && again->comId == packet->comId);
    Payload(packet->payload);
  }
  Payload(bytes);
  // As discovery data: what decodes writes back to a fixed point.
  if (Result<Discovery> discovery = DecodeDiscovery(data, size)) {
    const Bytes written = EncodeDiscovery(*discovery);
    Result<Discovery> again = DecodeDiscovery(written.data(), written.size());
    Require(again.ok() && EncodeDiscovery(*again) == written);
  }
  // As a pass-through CDB, and as IDENTIFY data of either kind.
  (void)DecodeAtaCdb(data, size);
  (void)DecodeAtaIdentify(bytes);
  Bytes identify = bytes;
  identify.resize(kNvmeIdentifySize, 0);
  (void)DecodeNvmeIdentify(identify);
  return 0;
}

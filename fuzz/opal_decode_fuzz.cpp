// Arbitrary bytes through every decoder of the opal library that reads what
// a drive or a host sends: framing, tokens, messages and their argument
// forms, discovery, ACE expressions, ATA CDBs and identify data. Whatever
// decodes as a frame, a value, a message or discovery data must also encode
// and decode again to the same thing.
#include <cstdint>
#include <cstdlib>

#include "ace.h"
#include "ata.h"
#include "discovery.h"
#include "method.h"
#include "nvme.h"
#include "packet.h"

using namespace opal;

static void Require(bool condition) {
  if (!condition) std::abort();
}

static void Payload(const Bytes& payload) {
  Result<std::vector<Item>> items = Decode(payload);
  for (const Item& item : items ? *items : std::vector<Item>{}) {
    Result<std::vector<Item>> again = Decode(Encode(item.value));
    Require(item.isControl || (again && again->size() == 1 && (*again)[0].value == item.value));
    (void)Describe(item.value);
    if (Result<BooleanExpr> expr = DecodeBooleanExpr(item.value)) (void)AuthoritiesOfAnyOf(*expr);
  }
  Result<Message> m = DecodeMessage(payload);
  if (!m || m->kind == Message::Kind::kEndOfSession) return;
  const bool call = m->kind == Message::Kind::kCall;
  Result<Message> again = DecodeMessage(call ? EncodeCall(m->invoking, m->method, m->arguments)
                                             : EncodeResponse(m->arguments, m->status));
  Require(again && again->arguments == m->arguments && again->method == m->method &&
          (call || again->status == m->status));
  (void)ColumnsOfResult(*m), (void)DecodeStartSession(m->arguments);
  (void)DecodePropertiesCall(m->arguments), (void)DecodePropertiesReply(m->arguments);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bytes bytes(data, data + size);
  // As a ComPacket, whose payload is a message; the same bytes as a payload.
  if (Result<ComPacket> packet = Unframe(data, size); packet && !packet->empty) {
    Result<ComPacket> again = Unframe(Frame(*packet));
    Require(again && again->payload == packet->payload && again->tsn == packet->tsn && again->hsn == packet->hsn &&
            again->comId == packet->comId);
    Payload(packet->payload);
  }
  Payload(bytes);
  // As discovery data: what decodes writes back to a fixed point.
  if (Result<Discovery> discovery = DecodeDiscovery(data, size)) {
    const Bytes written = EncodeDiscovery(*discovery);
    Result<Discovery> again = DecodeDiscovery(written.data(), written.size());
    Require(again && EncodeDiscovery(*again) == written);
  }
  // As a pass-through CDB, and as IDENTIFY data of either kind.
  Bytes identify = bytes;
  identify.resize(kNvmeIdentifySize, 0);
  (void)DecodeAtaCdb(data, size), (void)DecodeAtaIdentify(bytes), (void)DecodeNvmeIdentify(identify);
  return 0;
}

#include "session.h"

#include <time.h>

#include <algorithm>

#include "packet.h"

namespace opal {

namespace {

// The host session number this library opens its sessions with.
constexpr uint32_t kHostSessionNumber = 1;
// What the host can take in one IF-RECV unless the drive asks for more, and
// the most it will ever take.
constexpr size_t kReceiveSize = 2048;
constexpr size_t kReceiveLimit = 1 << 20;
// A drive still working answers "not ready"; it is asked again this many
// times, waiting a little longer each time (about 30 s in all).
constexpr int kReadyPolls = 400;

// The host's limits, as the smallest drives expect them.
const Properties kHostProperties = {{"MaxComPacketSize", 2048}, {"MaxPacketSize", 2028},
                                    {"MaxIndTokenSize", 1992},  {"MaxPackets", 1},
                                    {"MaxSubpackets", 1},       {"MaxMethods", 1}};

void Pause(int poll) {
  const long micros = std::min(100000L, 100L << std::min(poll, 10));
  timespec wait{0, micros * 1000};
  nanosleep(&wait, nullptr);
}

Error StatusError(const std::string& what, int status) {
  return Fail(what + ": method status code " + StatusName(status), status);
}

}  // namespace

const Properties& HostProperties() { return kHostProperties; }

Device::Device(std::unique_ptr<Transport> transport) : transport_(std::move(transport)) {}

Result<Identity> Device::Identify() {
  if (!identity_) {
    Result<Identity> identity = transport_->Identify();
    if (!identity) return identity.error();
    identity_ = *identity;
  }
  return *identity_;
}

Result<Discovery> Device::Discover() {
  if (!discovery_) {
    Result<Bytes> data = transport_->Receive(kProtocolTcg, kDiscoveryComId, kReceiveSize);
    if (!data) return Fail("Level 0 discovery: " + data.error().message);
    Result<Discovery> discovery = DecodeDiscovery(data->data(), data->size());
    if (!discovery) return Fail("Level 0 discovery: " + discovery.error().message);
    if (discovery->Ssc() == nullptr) return Fail("no TCG storage subsystem in the Level 0 discovery");
    discovery_ = *discovery;
    comId_ = discovery_->Ssc()->baseComId;
  }
  return *discovery_;
}

Status Device::ExchangeProperties() {
  if (propertiesTried_) return propertiesError_ ? Status(*propertiesError_) : Ok();
  Result<Discovery> discovery = Discover();
  if (!discovery) return discovery.error();  // no ComID to send it on: not tried
  propertiesTried_ = true;
  Result<Message> reply = Exchange(0, 0, EncodeCall(kSessionManager, kMethodProperties,
                                                     EncodePropertiesCall(kHostProperties)));
  Result<Properties> properties = Fail("");
  if (!reply) {
    propertiesError_ = Fail("Properties: " + reply.error().message);
  } else if (reply->status != 0) {
    propertiesError_ = StatusError("Properties", reply->status);
  } else if (!(properties = DecodePropertiesReply(reply->arguments))) {
    propertiesError_ = Fail("Properties: " + properties.error().message);
  } else {
    tperProperties_ = *properties;
    return Ok();
  }
  return *propertiesError_;
}

size_t Device::MaxPayload() const {
  const size_t comPacket = PropertyOr(tperProperties_, "MaxComPacketSize", 2048);
  const size_t limit = std::min<size_t>(comPacket, kReceiveLimit);
  return limit > kHeadersSize + 3 ? limit - kHeadersSize - 3 : 0;
}

Result<Bytes> Device::ReceiveAnswer() {
  size_t size = kReceiveSize;
  for (int poll = 0; poll < kReadyPolls; ++poll) {
    Result<Bytes> data = transport_->Receive(kProtocolTcg, comId_, size);
    if (!data) return data.error();
    Result<ComPacket> packet = Unframe(*data);
    if (!packet) return Fail("malformed answer: " + packet.error().message);
    if (!packet->empty) return std::move(packet->payload);
    if (packet->minTransfer > size) {  // the answer needs a larger buffer
      if (packet->minTransfer > kReceiveLimit) return Fail("the drive's answer is too large");
      size = (packet->minTransfer + 511) / 512 * 512;
    } else if (packet->outstandingData == 0) {
      return Fail("the drive sent an empty answer");
    } else {
      Pause(poll);
    }
  }
  return Fail("the drive did not answer in time");
}

Result<Message> Device::Exchange(uint32_t tsn, uint32_t hsn, const Bytes& payload) {
  ComPacket packet;
  packet.comId = comId_;
  packet.tsn = tsn;
  packet.hsn = hsn;
  packet.payload = payload;
  ++roundTrips_;
  Status sent = transport_->Send(kProtocolTcg, comId_, PadToBlock(Frame(packet)));
  if (!sent) return sent.error();
  Result<Bytes> answer = ReceiveAnswer();
  if (!answer) return answer.error();
  Result<Message> message = DecodeMessage(*answer);
  if (!message) return Fail("malformed answer: " + message.error().message);
  return message;
}

Result<std::unique_ptr<Session>> Session::Start(Device& device, Uid sp, std::optional<Uid> authority,
                                                std::optional<Bytes> challenge) {
  Result<Discovery> discovery = device.Discover();
  if (!discovery) return discovery.error();
  // Drives that fail Properties may still open sessions; the default limits
  // then size the transfers.
  device.ExchangeProperties();
  StartSessionArgs args{kHostSessionNumber, sp, true, std::move(challenge), authority};
  Result<Message> reply =
      device.Exchange(0, 0, EncodeCall(kSessionManager, kMethodStartSession, EncodeStartSession(args)));
  if (!reply) return Fail("StartSession: " + reply.error().message);
  if (reply->status != 0) return StatusError("StartSession", reply->status);
  const std::vector<Value>& sync = reply->arguments;
  if (reply->kind != Message::Kind::kCall || reply->method != kMethodSyncSession || sync.size() < 2 ||
      !sync[0].IsUInt() || !sync[1].IsUInt() || sync[0].uinteger() != kHostSessionNumber ||
      sync[1].uinteger() == 0 || sync[1].uinteger() > 0xFFFFFFFF) {
    return Fail("StartSession: the drive did not answer with SyncSession for this host");
  }
  return std::unique_ptr<Session>(new Session(device, static_cast<uint32_t>(sync[1].uinteger()), kHostSessionNumber));
}

Session::~Session() {
  if (open_) End();
}

Result<Message> Session::Call(Uid invoking, Uid method, const std::vector<Value>& arguments) {
  if (!open_) return Fail("the session is closed");
  Result<Message> reply = device_.Exchange(tsn_, hsn_, EncodeCall(invoking, method, arguments));
  if (!reply) return reply.error();
  if (reply->kind == Message::Kind::kEndOfSession) {
    open_ = false;
    return Fail("the drive ended the session");
  }
  if (reply->kind != Message::Kind::kResponse) return Fail("the drive answered a call with a call");
  if (reply->status != 0) return StatusError("method refused", reply->status);
  return reply;
}

Result<std::map<uint64_t, Value>> Session::Get(Uid object, uint64_t first, uint64_t last) {
  Result<Message> reply = Call(object, kMethodGet, GetColumns(first, last));
  if (!reply) return reply.error();
  return ColumnsOfResult(*reply);
}

Status Session::Set(Uid object, const std::vector<std::pair<uint64_t, Value>>& columns) {
  Result<Message> reply = Call(object, kMethodSet, SetColumns(columns));
  if (!reply) return reply.error();
  return Ok();
}

Status Session::End() {
  if (!open_) return Ok();
  open_ = false;
  Result<Message> reply = device_.Exchange(tsn_, hsn_, EncodeEndOfSession());
  if (!reply) return reply.error();
  if (reply->kind != Message::Kind::kEndOfSession) return Fail("the drive did not end the session");
  return Ok();
}

}  // namespace opal

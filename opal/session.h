// The host side of sessions: a Device does discovery and the Properties
// exchange once each and carries messages to the drive and back; a Session
// is one StartSession .. end of session on an SP, in which methods are
// called. Every status list is checked here, in one place: a method the
// drive refused comes back as an Error carrying its status.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ata.h"
#include "discovery.h"
#include "method.h"
#include "transport.h"

namespace opal {

// The host's limits, sent in every Properties exchange.
const Properties& HostProperties();

class Device {
 public:
  explicit Device(std::unique_ptr<Transport> transport);

  // The drive's identity, read once.
  Result<Identity> Identify();
  // Level 0 discovery, read once. Fails for a drive without a TCG SSC.
  Result<Discovery> Discover();
  // The Properties exchange, tried once, after discovery; the drive's limits
  // size transfers. Its outcome is kept: a failure leaves the default limits
  // and does not stop sessions.
  Status ExchangeProperties();
  // Whether the exchange was tried and failed.
  bool propertiesFailed() const { return propertiesError_.has_value(); }
  const Properties& tperProperties() const { return tperProperties_; }

  // Sends payload in a ComPacket of session tsn/hsn (0/0: the session
  // manager) and returns the drive's answer, polling while it is not ready.
  Result<Message> Exchange(uint32_t tsn, uint32_t hsn, const Bytes& payload);

  // The largest token payload one ComPacket may carry to this drive.
  size_t MaxPayload() const;
  // How many IF-SEND / IF-RECV pairs this device has made.
  int roundTrips() const { return roundTrips_; }
  Transport& transport() { return *transport_; }

 private:
  Result<Bytes> ReceiveAnswer();

  std::unique_ptr<Transport> transport_;
  std::optional<Identity> identity_;
  std::optional<Discovery> discovery_;
  bool propertiesTried_ = false;
  std::optional<Error> propertiesError_;
  Properties tperProperties_;
  uint16_t comId_ = 0;
  int roundTrips_ = 0;
};

class Session {
 public:
  // Opens a read-write session on sp, as authority proven by challenge, or
  // anonymously (as Anybody) without an authority. A refusal is an Error
  // whose status is the drive's.
  static Result<std::unique_ptr<Session>> Start(Device& device, Uid sp, std::optional<Uid> authority = std::nullopt,
                                                std::optional<Bytes> challenge = std::nullopt);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Calls invoking.method(arguments); a status other than SUCCESS is an
  // Error carrying it.
  Result<Message> Call(Uid invoking, Uid method, const std::vector<Value>& arguments = {});
  // Columns first..last of an object.
  Result<std::map<uint64_t, Value>> Get(Uid object, uint64_t first, uint64_t last);
  // Sets the listed columns of an object in one call.
  Status Set(Uid object, const std::vector<std::pair<uint64_t, Value>>& columns);
  // Ends the session; the drive answers with end of session.
  Status End();
  // For methods after which the drive closes the session itself (Revert,
  // RevertSP): nothing more is sent in it.
  void ClosedByDrive() { open_ = false; }

 private:
  Session(Device& device, uint32_t tsn, uint32_t hsn) : device_(device), tsn_(tsn), hsn_(hsn) {}

  Device& device_;
  uint32_t tsn_;
  uint32_t hsn_;
  bool open_ = true;
};

}  // namespace opal

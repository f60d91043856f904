// An emulated drive reached in the same process, without ioctls: a
// Transport over a World held in memory. Tests of the tools use it to run
// whole commands against a drive they can look into directly.
#pragma once

#include <memory>
#include <string>

#include "nvme.h"
#include "tper.h"
#include "transport.h"
#include "world.h"

namespace opalsim {

class LocalTransport : public opal::Transport {
 public:
  // path names a drive of world; mbrPath is where its shadow MBR lives.
  LocalTransport(World& world, std::string path, std::string mbrPath)
      : world_(world), path_(std::move(path)), mbrPath_(std::move(mbrPath)) {}

  opal::Result<opal::Identity> Identify() override {
    const Drive* drive = world_.Find(path_);
    if (drive == nullptr) return opal::Fail(path_ + ": no such emulated drive");
    return opal::Identity{drive->model, drive->serial, drive->firmware};
  }
  opal::Status Send(uint8_t protocol, uint16_t comId, const opal::Bytes& data) override {
    Drive* drive = world_.Find(path_);
    if (drive == nullptr || !TperSend(*drive, connection_, mbrPath_, protocol, comId, data)) {
      return opal::Fail("IF-SEND refused");
    }
    return opal::Ok();
  }
  opal::Result<opal::Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    opal::Bytes out;
    const Drive* drive = world_.Find(path_);
    if (drive == nullptr || !TperReceive(*drive, connection_, protocol, comId, length, out)) {
      return opal::Fail("IF-RECV refused");
    }
    return out;
  }
  opal::DeviceKind kind() const override { return opal::KindOfPath(path_); }

 private:
  World& world_;
  std::string path_;
  std::string mbrPath_;
  Connection connection_;
};

}  // namespace opalsim

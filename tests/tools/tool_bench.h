// A bench for running veltrak-opal's commands in-process against emulated
// drives held in memory: the world can be set up and looked into directly,
// and every message sent to a drive is counted and decoded.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "local_transport.h"
#include "method.h"
#include "packet.h"
#include "tools.h"
#include "uids.h"
#include "world.h"

namespace tooltest {

constexpr const char* kPassword = "debug";
constexpr const char* kSda = "/dev/sda";
constexpr const char* kNvme = "/dev/nvme0";
constexpr const char* kSdaPsid = "PSIDSDA0PSIDSDA0PSIDSDA0PSIDSDA0";
constexpr const char* kNvmePsid = "PSIDNVME0PSIDNVME0PSIDNVME0PSIDN";

// What went to the drives during one command.
struct Traffic {
  int sends = 0;     // IF-SENDs: one per exchange
  int receives = 0;  // IF-RECVs, discovery included
  std::vector<opal::Uid> methods;  // of every call sent, session manager's included
};

// Passes everything to an emulated drive and records it.
class RecordingTransport : public opal::Transport {
 public:
  RecordingTransport(std::unique_ptr<opal::Transport> inner, Traffic& traffic)
      : inner_(std::move(inner)), traffic_(traffic) {}
  opal::Result<opal::Identity> Identify() override { return inner_->Identify(); }
  opal::Status Send(uint8_t protocol, uint16_t comId, const opal::Bytes& data) override {
    ++traffic_.sends;
    opal::Result<opal::ComPacket> packet = opal::Unframe(data);
    if (packet && !packet->empty) {
      opal::Result<opal::Message> message = opal::DecodeMessage(packet->payload);
      if (message && message->kind == opal::Message::Kind::kCall) traffic_.methods.push_back(message->method);
    }
    return inner_->Send(protocol, comId, data);
  }
  opal::Result<opal::Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    ++traffic_.receives;
    return inner_->Receive(protocol, comId, length);
  }
  opal::DeviceKind kind() const override { return inner_->kind(); }

 private:
  std::unique_ptr<opal::Transport> inner_;
  Traffic& traffic_;
};

// Passes exchanges to the emulated drive, except the chosen one (counted
// from 1), which the drive never sees and which is answered with status FAIL.
class RefusingTransport : public opal::Transport {
 public:
  RefusingTransport(std::unique_ptr<opal::Transport> inner, int refused)
      : inner_(std::move(inner)), refused_(refused) {}
  opal::Result<opal::Identity> Identify() override { return inner_->Identify(); }
  opal::Status Send(uint8_t protocol, uint16_t comId, const opal::Bytes& data) override {
    if (++sends_ == refused_) return opal::Ok();
    return inner_->Send(protocol, comId, data);
  }
  opal::Result<opal::Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    if (sends_ != refused_ || comId == opal::kDiscoveryComId) return inner_->Receive(protocol, comId, length);
    ++sends_;  // answered once
    opal::ComPacket packet;
    packet.comId = comId;
    packet.payload = opal::EncodeResponse({}, static_cast<int>(opal::MethodStatus::kFail));
    opal::Bytes data = opal::Frame(packet);
    data.resize(length, 0);
    return data;
  }
  opal::DeviceKind kind() const override { return inner_->kind(); }

 private:
  std::unique_ptr<opal::Transport> inner_;
  int refused_;
  int sends_ = 0;
};

struct Ran {
  std::vector<std::string> out, err;
  int status = -1;
  Traffic traffic;
};

inline std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The world of a test: a factory-new SATA drive /dev/sda and NVMe drive
// /dev/nvme0, 8 ranges and 8 users each, on a host whose libata flag is set.
class Bench {
 public:
  Bench() {
    char pattern[] = "/tmp/veltrak-opal-test-XXXXXX";
    dir_ = mkdtemp(pattern);
    world.drives.push_back(opalsim::NewDrive(kSda, "KVX 480GB", "SBFK71F3", kSdaPsid, 8, true));
    world.drives.push_back(opalsim::NewDrive(kNvme, "ZEP NV2000 1TB", "2B2QEXM7", kNvmePsid, 8, true));
  }
  ~Bench() {
    for (const opalsim::Drive& drive : world.drives) std::remove(MbrPath(drive.device).c_str());
    for (const std::string& file : files_) std::remove(file.c_str());
    rmdir(dir_.c_str());
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  opalsim::Drive& Drive(const std::string& path = kSda) { return *world.Find(path); }
  const std::string& dir() const { return dir_; }
  std::string MbrPath(const std::string& device) const { return dir_ + "/mbr-" + device.substr(5); }

  // A file in the bench's directory, removed with it.
  std::string WriteFile(const std::string& name, const std::string& content) {
    const std::string path = dir_ + "/" + name;
    FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(content.data(), 1, content.size(), file);
    std::fclose(file);
    files_.push_back(path);
    return path;
  }

  // Runs argv (argv[0] names the tool); "{dir}" in an operand stands for
  // the bench's directory.
  Ran Run(std::vector<std::string> argv) {
    for (std::string& arg : argv) {
      if (size_t at = arg.find("{dir}"); at != std::string::npos) arg.replace(at, 5, dir_);
    }
    Ran ran;
    std::ostringstream out, err;
    veltrak_opal::Environment env{
        [&](const std::string& path) -> opal::Result<std::unique_ptr<opal::Transport>> {
          if (world.Find(path) == nullptr) return opal::Fail(path + ": cannot open: No such file or directory");
          if (noOpen.count(path) != 0) return opal::Fail(path + ": cannot open: Device or resource busy");
          std::unique_ptr<opal::Transport> drive =
              std::make_unique<opalsim::LocalTransport>(world, path, MbrPath(opalsim::DriveNode(path)));
          if (refusedExchange > 0) drive = std::make_unique<RefusingTransport>(std::move(drive), refusedExchange);
          return std::unique_ptr<opal::Transport>(std::make_unique<RecordingTransport>(std::move(drive), ran.traffic));
        },
        [&] {
          std::vector<std::string> names = devNames;
          for (const opalsim::Drive& drive : world.drives) names.push_back(drive.device.substr(5));
          return names;
        },
        [&] { return allowTpm; }, out, foldStreams ? out : err,
        [&](const std::string& path) { return world.Find(path) != nullptr && noAccess.count(path) == 0; }};
    ran.status = veltrak_opal::Main(argv[0], std::vector<std::string>(argv.begin() + 1, argv.end()), env);
    ran.out = SplitLines(out.str());
    ran.err = SplitLines(err.str());
    return ran;
  }

  opalsim::World world;
  opal::AllowTpm allowTpm = opal::AllowTpm::kSet;
  // Standard error written into standard output, as under 2>&1.
  bool foldStreams = false;
  // Drives access(2) refuses, and drives whose open fails, though present.
  std::set<std::string> noAccess, noOpen;
  // The exchange of a command each drive answers with FAIL (1: Properties);
  // 0: none.
  int refusedExchange = 0;
  // Other entries of /dev beside the emulated drives.
  std::vector<std::string> devNames = {"null", "sda1", "nvme0n1", "sdaa", "tty0"};

 private:
  std::string dir_;
  std::vector<std::string> files_;
};

// A drive as --initialSetup leaves it: SID and Admin1 with password, the
// Locking SP active, the shadow MBR enabled and done.
inline void Own(opalsim::Drive& drive, const std::string& password = kPassword) {
  drive.sid.pin.assign(password.begin(), password.end());
  opalsim::Activate(drive);
  drive.mbrEnable = drive.mbrDone = true;
}

inline std::vector<std::string> Sedutil(std::vector<std::string> operands) {
  operands.insert(operands.begin(), {"sedutil-cli", "-n"});
  return operands;
}
inline std::vector<std::string> Lantivo(std::vector<std::string> operands) {
  operands.insert(operands.begin(), "Lantivo");
  return operands;
}

// The phrases Veltrak reads in the tools' output as a sign of success (or,
// for the listings, of data). None may ever stand in an error line.
inline const std::vector<std::string>& VeltrakSuccessPhrases() {
  static const std::vector<std::string> phrases = {
      "success", "Begin", "reKeyed", "set to ", "enabled ReadLocking,WriteLocking", "disabled",
      "has been enabled", "password changed", "takeOwnership complete", "can access Locking Range",
      "LockingSupported = ", "Locking function", "RLKEna = "};
  return phrases;
}

}  // namespace tooltest

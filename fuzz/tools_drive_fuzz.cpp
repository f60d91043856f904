// veltrak-opal's two tools against a hostile drive: every command runs
// in-process over a transport whose answers are the fuzz data.
//
// Data: byte 0 picks the command line, byte 1 bit 0 makes the discovery
// hostile too (else the drive discovers as a plain Opal 2 drive); the rest
// is a sequence of answers, each a 2-byte big-endian length and that many
// bytes, handed out one per IF-RECV. When the answers run out, or after a
// few IF-RECVs for one IF-SEND, the transport fails as a dead drive would.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "discovery.h"
#include "uids.h"
#include "tools.h"

namespace {

// Commands that talk to a drive, for both tools. "{img}" is a small image.
const std::vector<std::vector<std::string>> kCommands = {
    {"sedutil-cli", "-n", "--scan"},
    {"sedutil-cli", "-n", "--query", "/dev/sda"},
    {"sedutil-cli", "-n", "--listLockingRanges", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--setupLockingRange", "1", "2048", "4096", "pw", "/dev/nvme0"},
    {"sedutil-cli", "-n", "--setLockingRange", "1", "LK", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--enableLockingRange", "0", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--enableUser", "pw", "User0001", "/dev/sda"},
    {"sedutil-cli", "-n", "--setPassword", "pw", "User0002", "new", "/dev/sda"},
    {"sedutil-cli", "-n", "--revertNoErase", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--revertTPer", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--yesIreallywanttoERASEALLmydatausingthePSID", "PSID", "/dev/sda"},
    {"sedutil-cli", "-n", "--setMBREnable", "on", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--setMBRDone", "off", "pw", "/dev/sda"},
    {"sedutil-cli", "-n", "--loadPBAimage", "pw", "{img}", "/dev/sda"},
    {"sedutil-cli", "-n", "--initialSetup", "pw", "/dev/sda"},
    {"Lantivo", "--scan"},
    {"Lantivo", "--enableLockingRange", "1", "pw", "RW", "/dev/sda"},
    {"Lantivo", "--disableLockingRange", "2", "pw", "R", "/dev/sda"},
    {"Lantivo", "--setLockingRange", "1", "Y", "N", "pw", "/dev/sda", "User1"},
    {"Lantivo", "--Add_ACE_Locking_range", "/dev/sda", "pw", "1", "User1", "User3"},
    {"Lantivo", "--Delete_AllUser_ACE_Locking_range", "/dev/sda", "pw", "1"},
    {"Lantivo", "--list_User_ACE_Locking_range", "/dev/sda", "pw", "1"},
    {"Lantivo", "--ListUserStatus", "pw", "/dev/sda"},
};

// The answers left, shared by every device a command opens.
struct Script {
  const uint8_t* data;
  size_t size;
  bool hostileDiscovery;

  bool Next(opal::Bytes& answer, size_t length) {
    if (size < 2) return false;
    size_t n = static_cast<size_t>(data[0]) << 8 | data[1];
    data += 2;
    size -= 2;
    n = std::min(n, size);
    answer.assign(data, data + n);
    data += n;
    size -= n;
    answer.resize(length, 0);
    return true;
  }
};

opal::Bytes PlainDiscovery() {
  opal::Discovery d;
  d.tper = opal::TperFeature{true, false, false, false, true, false};
  d.locking = opal::LockingFeature{true, true, false, true, false, false};
  opal::SscFeature opal2;
  opal2.baseComId = 0x1000;
  opal2.numComIds = 1;
  opal2.lockingAdmins = 4;
  opal2.lockingUsers = 8;
  d.opal2 = opal2;
  return opal::EncodeDiscovery(d);
}

class FuzzTransport : public opal::Transport {
 public:
  explicit FuzzTransport(Script& script) : script_(script) {}
  opal::Result<opal::Identity> Identify() override { return opal::Identity{"KVX 480GB", "SERIAL", "FW"}; }
  opal::Status Send(uint8_t, uint16_t, const opal::Bytes&) override {
    receivesLeft_ = 4;
    return opal::Ok();
  }
  opal::Result<opal::Bytes> Receive(uint8_t, uint16_t comId, size_t length) override {
    opal::Bytes answer;
    if (comId == opal::kDiscoveryComId && !script_.hostileDiscovery) {
      answer = PlainDiscovery();
      answer.resize(length, 0);
      return answer;
    }
    if (receivesLeft_-- <= 0 || !script_.Next(answer, length)) return opal::Fail("Security Receive failed: EIO");
    return answer;
  }
  opal::DeviceKind kind() const override { return opal::DeviceKind::kSata; }

 private:
  Script& script_;
  int receivesLeft_ = 4;
};

std::string ImagePath() {
  static const std::string path = [] {
    const std::string name = "/tmp/tools_drive_fuzz-" + std::to_string(getpid()) + ".img";
    if (FILE* file = std::fopen(name.c_str(), "wb")) {
      const std::string image(5000, 'P');
      std::fwrite(image.data(), 1, image.size(), file);
      std::fclose(file);
    }
    return name;
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  std::vector<std::string> argv = kCommands[data[0] % kCommands.size()];
  for (std::string& arg : argv) {
    if (arg == "{img}") arg = ImagePath();
  }
  Script script{data + 2, size - 2, (data[1] & 1) != 0};
  std::ostringstream out, err;
  veltrak_opal::Environment env{
      [&](const std::string&) -> opal::Result<std::unique_ptr<opal::Transport>> {
        return std::unique_ptr<opal::Transport>(std::make_unique<FuzzTransport>(script));
      },
      [] { return std::vector<std::string>{"sda", "nvme0"}; }, [] { return opal::AllowTpm::kSet; }, out, err};
  veltrak_opal::Main(argv[0], std::vector<std::string>(argv.begin() + 1, argv.end()), env);
  return 0;
}

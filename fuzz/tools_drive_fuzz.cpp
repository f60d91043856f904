// veltrak-opal's two tools against a hostile drive, in-process on the tests' bench: owned emulated drives identify
// themselves and, unless bit 0 of byte 1 is set, discover; every other answer is the data. Byte 0 picks the command
// line; after byte 1 come the answers, each a 2-byte big-endian length and that many bytes, one per IF-RECV, the
// drive failing as a dead one would once they run out.
#include "tool_bench.h"

namespace {

const char* const kCommands[] = {
    "S --scan", "S --query D", "S --listLockingRanges P D", "S --setupLockingRange 1 2048 4096 P /dev/nvme0",
    "S --setLockingRange 1 LK P D", "S --enableLockingRange 0 P D", "S --enableUser P User0001 D",
    "S --setPassword P User0002 new D", "S --revertNoErase P D", "S --revertTPer P D",
    "S --yesIreallywanttoERASEALLmydatausingthePSID K D", "S --setMBREnable on P D", "S --setMBRDone off P D",
    "S --loadPBAimage P {dir}/pba.img D", "S --initialSetup P D", "L --scan", "L --enableLockingRange 1 P RW D",
    "L --disableLockingRange 2 P R D", "L --setLockingRange 1 Y N P D User1",
    "L --Add_ACE_Locking_range D P 1 User1 User3", "L --Delete_AllUser_ACE_Locking_range D P 1",
    "L --list_User_ACE_Locking_range D P 1", "L --ListUserStatus P D"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  static tooltest::Bench bench("own img=5000");  // the drives never see an exchange, so one bench serves every input
  const std::string line = kCommands[data[0] % (sizeof kCommands / sizeof *kCommands)];
  const bool hostileDiscovery = (data[1] & 1) != 0;
  data += 2;
  size -= 2;
  bench.forge = [&](int exchange) -> tooltest::Answer {
    if (exchange == 0 && !hostileDiscovery) return nullptr;
    return [&](size_t length) -> opal::Result<opal::Bytes> {
      if (size < 2) return opal::Fail("Security Receive failed: EIO");
      opal::Bytes answer(data + 2, data + 2 + std::min<size_t>(data[0] << 8 | data[1], size - 2));
      data += 2 + answer.size();
      size -= 2 + answer.size();
      answer.resize(length, 0);
      return answer;
    };
  };
  bench.Run(line);
  return 0;
}

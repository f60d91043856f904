// The built veltrak-opal started under its names in a working directory, on emulated drives reached through the real
// ioctls of the emulator's preload library; `opalsim show` confirms a change at protocol level.
#include <gtest/gtest.h>

#include "tool_bench.h"

namespace tooltest {
namespace {

TEST(EndToEnd, BothNamesThroughThePreloadLibrary) {
  Bench b("");  // for its directory
  const std::string script = "cd " + b.dir + " && export OPALSIM_STATE=state LD_PRELOAD=" OPALSIM_PRELOAD
                             " ASAN_OPTIONS=verify_asan_link_order=0 && for name in sedutil-cli Lantivo veltrak-opal; "
                             "do ln -s " VELTRAK_OPAL_BINARY " $name; done && (S=" OPALSIM_BINARY "; $S init && $S add "
      "/dev/nvme0 'ZEP NV2000 1TB' 2B2QEXM7 PSIDNVME0PSIDNVME0PSIDNVME0PSIDN && $S add /dev/sda 'KVX 480GB' SBFK71F3 "
      "PSIDSDA0PSIDSDA0PSIDSDA0PSIDSDA0 && ./sedutil-cli -n --scan && ./Lantivo --scan && ./sedutil-cli -n "
      "--initialSetup debug /dev/nvme0 && ./Lantivo --setLockingRange 1 Y Y debug /dev/nvme0 && $S show /dev/nvme0 && "
      "$S host allow-tpm 0 && ./sedutil-cli -n --query /dev/sda; echo \"exit $?\"; ./veltrak-opal --scan; echo \"exit "
      "$?\") >out 2>&1";
  ASSERT_EQ(0, std::system(script.c_str()));
  std::ifstream in(b.dir + "/out");
  const std::string out{std::istreambuf_iterator<char>(in), {}};
  EXPECT_TRUE(Matches("Scanning for Opal compliant disks\n/dev/nvme0  2  ZEP NV2000 1TB  *\n/dev/sda    2  KVX 480GB  *"
                      "Lantivo: drives seen in /dev\n*\nInitial setup of TPer complete on /dev/nvme0\nLocking Range 1: "
                      "ReadLocked = Y, WriteLocked = Y as Admin1: success\n*Locking SP active*\n  LR1    0           "
                      "0           N   N   Y   Y   *\nThe Kernel flag libata.allow_tpm is not set correctly\n*\n"
                      "Invalid or unsupported disk /dev/sda\nexit 136\nusage: veltrak-opal answers as sedutil-cli or "
                      "as Lantivo*\nexit 2\n",
                      out.c_str())) << out;
}

}  // namespace
}  // namespace tooltest

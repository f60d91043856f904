// One method round trip (a Get in an open Admin1 session): to an emulated
// drive in the same process, and through the real ioctls and the preload
// library when this runs under it (drive_bench.sh starts it so, with an owned
// /dev/nvme0 whose password is "bench").
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "local_transport.h"
#include "tables.h"

namespace {

const opal::Bytes kPassword = {'b', 'e', 'n', 'c', 'h'};

void RunGets(benchmark::State& state, opal::Device& device) {
  auto session = opal::Session::Start(device, opal::kLockingSp, opal::kAdmin1, kPassword);
  if (!session) {
    state.SkipWithError(session.error().message.c_str());
    return;
  }
  for (auto _ : state) {
    auto ranges = opal::ReadMaxRanges(**session);
    if (!ranges) state.SkipWithError(ranges.error().message.c_str());
    benchmark::DoNotOptimize(ranges);
  }
}

void BM_RoundTripInProcess(benchmark::State& state) {
  opalsim::World world;
  world.drives.push_back(opalsim::NewDrive("/dev/nvme0", "ZEP NV2000 1TB", "2B2QEXM7", "PSID", 8, true));
  opalsim::Drive& drive = world.drives.back();
  drive.sid.pin = kPassword;
  opalsim::Activate(drive);
  opal::Device device(std::make_unique<opalsim::LocalTransport>(world, "/dev/nvme0", "/dev/null"));
  RunGets(state, device);
}
BENCHMARK(BM_RoundTripInProcess);

void BM_RoundTripThroughPreload(benchmark::State& state) {
  if (std::getenv("OPALSIM_STATE") == nullptr) {
    state.SkipWithError("run under libopalsim.so with OPALSIM_STATE set (bench/drive_bench.sh)");
    return;
  }
  auto transport = opal::OpenTransport("/dev/nvme0");
  if (!transport) {
    state.SkipWithError(transport.error().message.c_str());
    return;
  }
  opal::Device device(std::move(*transport));
  RunGets(state, device);
}
BENCHMARK(BM_RoundTripThroughPreload);

}  // namespace

BENCHMARK_MAIN();

// Cost of the command runner and of every parser of tool output on outputs
// of 10, 1 000 and 100 000 lines, with the fitted complexity of each.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <streambuf>
#include <string>
#include <unistd.h>
#include <vector>

#include "DiskInfo.h"
#include "main.h"
#include "utils.h"

namespace {

// Answers every command line with the same text, as a tool would.
class CannedRunner : public CommandRunner {
 public:
  explicit CannedRunner(std::string output) : output_(std::move(output)), previous_(SetCommandRunner(this)) {}
  ~CannedRunner() override { SetCommandRunner(previous_); }
  std::string Run(const std::string&) override { return output_; }
  bool RunShell(const std::string&, std::string& result) override {
    result = output_;
    return true;
  }
  bool Clear() override { return true; }

 private:
  std::string output_;
  CommandRunner* previous_;
};

// Swallows what the parsers print while they are timed.
class NullBuffer : public std::streambuf {
 protected:
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

class MutedOutput {
 public:
  MutedOutput() : saved_(std::cout.rdbuf(&null_)) {}
  ~MutedOutput() { std::cout.rdbuf(saved_); }

 private:
  NullBuffer null_;
  std::streambuf* saved_;
};

std::string Repeat(const std::vector<std::string>& lines, int64_t count) {
  std::string text;
  for (int64_t i = 0; i < count; ++i) text += lines[i % lines.size()] + "\n";
  return text;
}

// An Opal-enabled drive with its password held and `ranges` locking ranges.
DiskInfo EnabledDrive(int ranges) {
  DiskInfo disk("/dev/sda", "KVX 480GB", "SBFK71F3", "2");
  disk.SetAdmin1Pwd("Secret1");
  std::string listing;
  for (int i = 0; i < ranges; ++i) {
    listing += "LR" + std::to_string(i) + " Begin 0 for 0\n            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N \n";
  }
  {
    CannedRunner query("Locking function (0x0002)\n    Locked = N, LockingEnabled = Y, LockingSupported = Y\n");
    disk.UpdateOPALStatus();
  }
  CannedRunner list(listing);
  disk.UpdateLockingRangesStatus();
  return disk;
}

void Sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10)->Arg(1000)->Arg(100000)->Complexity(benchmark::oN)->Unit(benchmark::kMicrosecond);
}

void Finish(benchmark::State& state) {
  state.SetComplexityN(state.range(0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The real runner: a shell, a child printing the output, the pipe read whole,
// then every line taken from the stream.
void BM_Runner(benchmark::State& state) {
  char path[] = "/tmp/veltrak-bench-output-XXXXXX";
  const int fd = mkstemp(path);
  if (fd < 0) {
    state.SkipWithError("mkstemp failed");
    return;
  }
  close(fd);
  std::ofstream(path) << Repeat({"/dev/sda    2  KVX 480GB                                SBFK71F3"}, state.range(0));
  const std::string command = std::string("cat ") + path;
  for (auto _ : state) {
    std::stringstream output = GetCmdResponse(command);
    size_t lines = 0;
    for (std::string line; std::getline(output, line);) ++lines;
    benchmark::DoNotOptimize(lines);
  }
  std::remove(path);
  Finish(state);
}
BENCHMARK(BM_Runner)->Apply(Sizes);

// ParseItems on every line of an output, at each delimiter the program uses.
template <int kDelimiter>
void BM_ParseItems(benchmark::State& state) {
  static const std::string delimiters[] = {" ", "  ", ",", "can access Locking Range"};
  static const std::string lines[] = {
      "LR1 Begin 2048 for 409600",
      "/dev/sda    2  KVX 480GB                                SBFK71F3",
      "1,2,3,4,5,6,7,8,9",
      "Admin1 User1 User3 can access Locking Range 1",
  };
  const std::string text = Repeat({lines[kDelimiter]}, state.range(0));
  for (auto _ : state) {
    std::istringstream output(text);
    size_t items = 0;
    for (std::string line; std::getline(output, line);) items += ParseItems(line, delimiters[kDelimiter]).size();
    benchmark::DoNotOptimize(items);
  }
  Finish(state);
}
BENCHMARK_TEMPLATE(BM_ParseItems, 0)->Name("BM_ParseItems/blank")->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_ParseItems, 1)->Name("BM_ParseItems/two_blanks")->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_ParseItems, 2)->Name("BM_ParseItems/comma")->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_ParseItems, 3)->Name("BM_ParseItems/access_phrase")->Apply(Sizes);

void BM_ScanDisks(benchmark::State& state) {
  CannedRunner runner(Repeat({"/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7",
                              "/dev/sda    2  KVX 480GB                                SBFK71F3",
                              "/dev/sdb   12  Other Maker 500GB                        EMT01B6Q",
                              "/dev/sdc   No  Other Maker HDD                          CC45    "},
                             state.range(0)));
  MutedOutput muted;
  for (auto _ : state) {
    ScanDisks();
    benchmark::DoNotOptimize(DiskCount);
  }
  DiskList.clear();
  Finish(state);
}
BENCHMARK(BM_ScanDisks)->Apply(Sizes);

// The flags line comes last, after every other feature line.
void BM_UpdateOPALStatus(benchmark::State& state) {
  CannedRunner runner(
      Repeat({"    Align = Y, Alignment Granularity = 8 (4096), Logical Block size = 512"}, state.range(0) - 2) +
      "Locking function (0x0002)\n    Locked = N, LockingEnabled = Y, LockingSupported = Y, MBRDone = Y\n");
  DiskInfo disk("/dev/sda", "KVX 480GB", "SBFK71F3", "2");
  for (auto _ : state) benchmark::DoNotOptimize(disk.UpdateOPALStatus());
  Finish(state);
}
BENCHMARK(BM_UpdateOPALStatus)->Apply(Sizes);

void BM_UpdateLockingRangesStatus(benchmark::State& state) {
  DiskInfo disk = EnabledDrive(0);
  CannedRunner runner(Repeat({"LR1 Begin 2048 for 409600",
                              "            RLKEna = Y  WLKEna = Y  RLocked = Y  WLocked = N "},
                             state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(disk.UpdateLockingRangesStatus());
  Finish(state);
}
BENCHMARK(BM_UpdateLockingRangesStatus)->Apply(Sizes);

// One range whose access list runs to the whole output.
void BM_ListAccessRight(benchmark::State& state) {
  const DiskInfo disk = EnabledDrive(1);
  CannedRunner runner(Repeat({"Admin1 User1 User3 can access Locking Range 0"}, state.range(0)));
  MutedOutput muted;
  for (auto _ : state) benchmark::DoNotOptimize(disk.ListAccessRight());
  Finish(state);
}
BENCHMARK(BM_ListAccessRight)->Apply(Sizes);

// Nine ranges as on a real drive; every output (access lists and the status
// listing) is the whole size.
void BM_ListUserStatus(benchmark::State& state) {
  const DiskInfo disk = EnabledDrive(9);
  CannedRunner runner(Repeat({"User1 User3 can access Locking Range 1"}, state.range(0)));
  MutedOutput muted;
  for (auto _ : state) benchmark::DoNotOptimize(disk.ListUserStatus());
  Finish(state);
}
BENCHMARK(BM_ListUserStatus)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();

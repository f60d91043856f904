# Thin wrapper around CMake. `make` builds (the tests too when GoogleTest is
# installed), `make test` builds and runs every test twice: once as shipped,
# once under AddressSanitizer and UBSan. The tests need GoogleTest: without it
# `make test` stops at once and says how to install it.
BUILD_DIR ?= build
ASAN_DIR  ?= build-asan
JOBS      ?= $(shell nproc)
CONFIGURE  = cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: all build test test-plain test-asan clean

all: build

build:
	$(CONFIGURE)
	cmake --build $(BUILD_DIR) -j$(JOBS)

test: test-plain test-asan fuzz

test-plain:
	$(CONFIGURE) -DVELTRAK_TESTS=ON
	cmake --build $(BUILD_DIR) -j$(JOBS)
	cd $(BUILD_DIR) && ctest --output-on-failure --no-tests=error -j$(JOBS)

test-asan:
	cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=Debug -DVELTRAK_SANITIZE=ON -DVELTRAK_TESTS=ON
	cmake --build $(ASAN_DIR) -j$(JOBS)
	cd $(ASAN_DIR) && ctest --output-on-failure --no-tests=error -j$(JOBS)

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR)

# `make package` builds the Debian package $(PKG_DIR)/veltrak_<version>_<arch>.deb
# in a tree of its own, without the tests. Needs dpkg-dev and file.
PKG_DIR ?= build-pkg

.PHONY: package clean-package

package:
	cmake -S . -B $(PKG_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELTRAK_TESTS=OFF
	cmake --build $(PKG_DIR) -j$(JOBS)
	cd $(PKG_DIR) && cpack -G DEB

clean: clean-package

clean-package:
	rm -rf $(PKG_DIR)

# `make demo` starts Veltrak in $(DEMO_DIR) on emulated drives, kept as the
# last run left them; `make demo-reset` makes the demo's drives anew. Only the
# program, its drive tools and the emulated drive are built for it.
DEMO_DIR ?= demo

.PHONY: demo demo-reset demo-build

demo-build:
	$(CONFIGURE)
	cmake --build $(BUILD_DIR) -j$(JOBS) --target veltrak veltrak-opal opalsim opalsim_preload

demo: demo-build
	tools/demo/prepare.sh $(DEMO_DIR) $(BUILD_DIR)
	tools/demo/run.sh $(DEMO_DIR) $(BUILD_DIR) $(abspath $(BUILD_DIR))/veltrak

demo-reset: demo-build
	tools/demo/world.sh $(DEMO_DIR) $(BUILD_DIR)
	tools/demo/prepare.sh $(DEMO_DIR) $(BUILD_DIR)

# `make fuzz` builds the libFuzzer targets with clang in $(FUZZ_DIR) and runs
# each on $(FUZZ_RUNS) inputs from the seed corpus in fuzz/corpus/.
FUZZ_DIR  ?= build-fuzz
FUZZ_RUNS ?= 20000

.PHONY: fuzz clean-fuzz

fuzz:
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELTRAK_FUZZ=ON -DVELTRAK_TESTS=OFF
	cmake --build $(FUZZ_DIR) -j$(JOBS) --target fuzzers
	fuzz/run.sh $(FUZZ_DIR) $(FUZZ_RUNS)

clean: clean-fuzz

clean-fuzz:
	rm -rf $(FUZZ_DIR)

# `make bench` builds the benchmarks in $(BENCH_DIR) (needs libbenchmark-dev)
# and runs them: the parsers on outputs of 10 to 100 000 lines, a whole
# session on emulated drives beside the bare command lines, each tool command
# with its round trips, and the emulated drive itself (bench/README.md).
BENCH_DIR  ?= build-bench
BENCH_RUNS ?= 30

.PHONY: bench clean-bench

bench:
	cmake -S . -B $(BENCH_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELTRAK_BENCH=ON -DVELTRAK_TESTS=OFF
	cmake --build $(BENCH_DIR) -j$(JOBS) --target veltrak veltrak-opal opalsim opalsim_preload parsers_bench \
	  measure popen_replay opal_bench opal_probe
	$(BENCH_DIR)/bench/parsers_bench
	bench/session_bench.sh $(BENCH_DIR) $(BENCH_RUNS)
	bench/tools_bench.sh $(BENCH_DIR) $(BENCH_RUNS)
	bench/drive_bench.sh $(BENCH_DIR)

clean: clean-bench

clean-bench:
	rm -rf $(BENCH_DIR)

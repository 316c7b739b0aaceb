# make test   set up, build with sanitizers (the benchmarks too, so that they keep
#             compiling), run the unit tests, the export check and every fuzz
#             target briefly (CTest's summary comes last)
# make bench  optimised build, then every benchmark
# make demo   the sample console behind a real web server, traps received beside it

SHELL := /bin/sh
JOBS ?= $(shell nproc)
TEST_DIR := build
BENCH_DIR := build-release
FUZZ_SECONDS ?= 8
PORT ?= 8080
TRAP_PORT ?= 10162

.PHONY: all deps build test bench demo clean

all: build

deps:
	@./tools/install-deps.sh

build: deps
	cmake -S . -B $(TEST_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
	  -DKX_SANITIZE=ON -DKX_FUZZ=ON -DKX_FUZZ_SECONDS=$(FUZZ_SECONDS) -DKX_BENCH=ON
	cmake --build $(TEST_DIR) -j $(JOBS)

test: build
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)

bench: deps
	cmake -S . -B $(BENCH_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DKX_BENCH=ON -DKX_TESTS=OFF
	cmake --build $(BENCH_DIR) -j $(JOBS)
	./tools/run-benchmarks.sh $(BENCH_DIR)/bench

demo: deps
	cmake -S . -B $(BENCH_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release \
	  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DKX_BENCH=ON -DKX_TESTS=OFF
	cmake --build $(BENCH_DIR) -j $(JOBS) --target console.cgi PeerScan.cgi inventory.cgi kxpage kxtrapreceive
	./tools/serve-console.sh $(BENCH_DIR)/console.cgi $(PORT) $(TRAP_PORT)

clean:
	rm -rf $(TEST_DIR) $(BENCH_DIR)

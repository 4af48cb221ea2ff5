# Sondrel: the everyday commands. See README.md.
BUILD        ?= build
BUILD_ASAN   ?= build-asan
BUILD_BENCH  ?= build-bench
JOBS         ?= $(shell nproc)
CMAKE_FLAGS  ?=

export SDL_VIDEODRIVER ?= offscreen
export SDL_AUDIODRIVER ?= dummy

.PHONY: all deps configure build run test test-sanitize bench clean

all: build

deps:
	@sh scripts/install-deps

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	cd $(BUILD)/bin && ./sondrel $(ARGS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

$(BUILD_ASAN)/CMakeCache.txt:
	cmake -S . -B $(BUILD_ASAN) -DCMAKE_BUILD_TYPE=Debug -DSONDREL_SANITIZE=ON -DSONDREL_BUILD_BENCH=OFF $(CMAKE_FLAGS)

test-sanitize: deps $(BUILD_ASAN)/CMakeCache.txt
	cmake --build $(BUILD_ASAN) -j $(JOBS)
	cd $(BUILD_ASAN) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
		ctest --output-on-failure -j $(JOBS)

$(BUILD_BENCH)/CMakeCache.txt:
	cmake -S . -B $(BUILD_BENCH) -DCMAKE_BUILD_TYPE=Release -DSONDREL_BUILD_TESTS=OFF $(CMAKE_FLAGS)

bench: deps $(BUILD_BENCH)/CMakeCache.txt
	cmake --build $(BUILD_BENCH) -j $(JOBS)
	$(BUILD_BENCH)/bin/sondrel-bench $(BENCH_ARGS)

clean:
	rm -rf $(BUILD) $(BUILD_ASAN) $(BUILD_BENCH)

# Sondrel: the everyday commands. See README.md.
BUILD        ?= build
BUILD_ASAN   ?= build-asan
BUILD_BENCH  ?= build-bench
BUILD_FUZZ   ?= build-fuzz
FUZZ_SECONDS ?= 30
JOBS         ?= $(shell nproc)
CMAKE_FLAGS  ?=
PREFIX       ?= /usr/local
ICON_SIZES   ?= 64 256

export SDL_VIDEODRIVER ?= offscreen
export SDL_AUDIODRIVER ?= dummy

.PHONY: all deps configure build run demo icon skin font gallery install test test-sanitize monkey bench fuzz clean

all: build

deps:
	@sh scripts/install-deps

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

# Starts the program on the demo song (or ARGS) with the real display and
# sound card: the headless drivers exported above are for the tests.
run: build
	env $(if $(filter file,$(origin SDL_VIDEODRIVER)),-u SDL_VIDEODRIVER) \
		$(if $(filter file,$(origin SDL_AUDIODRIVER)),-u SDL_AUDIODRIVER) \
		$(BUILD)/bin/sondrel $(or $(ARGS),data/demo.sdrltk)

# Rebuilds the committed demo song from tools/make_demo.cpp.
demo: build
	$(BUILD)/bin/make-demo data/demo.sdrltk

# Redraws the committed icons from tools/make_icon.cpp, one per size.
icon: build
	for size in $(ICON_SIZES); do \
		mkdir -p desktop/icons/$${size}x$${size}/apps && \
		$(BUILD)/bin/make-icon $$size desktop/icons/$${size}x$${size}/apps/sondrel.png || exit 1; \
	done

# Redraws the committed default skin (picture, skin file, theme) from tools/make_skin.cpp.
skin: build
	$(BUILD)/bin/make-skin data/skins

# Redraws the committed pattern grid font sheet from tools/make_font.cpp.
font: build
	$(BUILD)/bin/make-font data/modfont.png

# Draws every kind of widget with the shipped skin into $(BUILD)/gallery.png.
gallery: build
	$(BUILD)/bin/widget-gallery $(BUILD)/gallery.png

# Builds, then installs the programs, their runtime files, the desktop entry,
# the icons and the manual page below PREFIX (DESTDIR is honoured too).
install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The end-to-end monkey test with fresh seeds for SECONDS in all (each seed
# up to a minute); every seed is printed, and a failure says how to replay it.
SECONDS ?= 600
monkey: configure
	cmake --build $(BUILD) -j $(JOBS) --target e2e_tests sondrel
	SONDREL_MONKEY_FRESH_SECONDS=$(SECONDS) $(BUILD)/bin/e2e_tests --gtest_filter=MonkeyTest.FreshSeeds

$(BUILD_ASAN)/CMakeCache.txt:
	cmake -S . -B $(BUILD_ASAN) -DCMAKE_BUILD_TYPE=Debug -DSONDREL_SANITIZE=ON -DSONDREL_BUILD_BENCH=OFF $(CMAKE_FLAGS)

test-sanitize: deps $(BUILD_ASAN)/CMakeCache.txt
	cmake --build $(BUILD_ASAN) -j $(JOBS)
	cd $(BUILD_ASAN) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
		ctest --output-on-failure -j $(JOBS)

# The audio thread's tests under ThreadSanitizer.
.PHONY: test-tsan
build-tsan/CMakeCache.txt:
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DSONDREL_TSAN=ON -DSONDREL_BUILD_BENCH=OFF $(CMAKE_FLAGS)

test-tsan: deps build-tsan/CMakeCache.txt
	cmake --build build-tsan -j $(JOBS) --target sound_tests
	TSAN_OPTIONS=halt_on_error=1 build-tsan/bin/sound_tests --gtest_filter='AudioOutput*:ScopeRing*'

$(BUILD_BENCH)/CMakeCache.txt:
	cmake -S . -B $(BUILD_BENCH) -DCMAKE_BUILD_TYPE=Release -DSONDREL_BUILD_TESTS=OFF $(CMAKE_FLAGS)

bench: deps $(BUILD_BENCH)/CMakeCache.txt
	cmake --build $(BUILD_BENCH) -j $(JOBS)
	$(BUILD_BENCH)/bin/sondrel-bench $(BENCH_ARGS)

$(BUILD_FUZZ)/CMakeCache.txt:
	cmake -S . -B $(BUILD_FUZZ) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
		-DSONDREL_FUZZ=ON -DSONDREL_BUILD_TESTS=OFF -DSONDREL_BUILD_BENCH=OFF $(CMAKE_FLAGS)

# Builds the fuzzers with clang and runs each for FUZZ_SECONDS under AddressSanitizer.
fuzz: deps $(BUILD_FUZZ)/CMakeCache.txt
	cmake --build $(BUILD_FUZZ) -j $(JOBS) --target sondrel-fuzzers
	sh scripts/run-fuzzers $(BUILD_FUZZ) $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD) $(BUILD_ASAN) $(BUILD_BENCH) $(BUILD_FUZZ) build-tsan

# Quick start: `make demo` and `make test`. Both install what they need first.
BUILD   ?= build
PREFIX  ?= $(CURDIR)/dist
BUILD_TYPE ?= Release
CMAKE_FLAGS ?=

.PHONY: all setup configure build test demo install bench clean native-check fuzz

all: build

setup:
	@bash scripts/setup.sh

$(BUILD)/build.ninja: | setup
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake \
	  -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

configure: setup $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD)

test: build
	bash scripts/run-tests.sh $(BUILD)

demo: build
	bash scripts/demo.sh $(BUILD)

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

bench: build
	bash scripts/bench.sh $(BUILD)

# The algorithmic kernels built for the host under AddressSanitizer and
# UndefinedBehaviorSanitizer, with their bounded fuzz loops (also the third
# phase of `make test`).
NATIVE_BUILD ?= build-native
native-check: setup
	bash scripts/native-check.sh $(NATIVE_BUILD)

# libFuzzer programs (clang only), each run for FUZZ_SECONDS; not part of `make test`.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 20
fuzz: setup
	bash scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD) $(NATIVE_BUILD) $(FUZZ_BUILD)

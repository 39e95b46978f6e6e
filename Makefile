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

# The algorithmic kernels and the streams built for the host (32-bit x86, as
# wide as the target; NATIVE_BITS=64 for the host's width) under
# AddressSanitizer and UndefinedBehaviorSanitizer, with their bounded fuzz
# loops (also the third phase of `make test`).
NATIVE_BUILD ?= build-native
native-check: setup
	bash scripts/native-check.sh $(NATIVE_BUILD)

# libFuzzer programs (clang only, 32-bit), each run for FUZZ_SECONDS one after
# the other; FUZZ_TARGETS picks some (fuzz_stream fuzz_file ...). Not part of
# `make test`.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 20
FUZZ_TARGETS ?=
fuzz: setup
	bash scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

clean:
	rm -rf $(BUILD) $(NATIVE_BUILD) $(FUZZ_BUILD)

# Quick start: `make demo` and `make test`. Both install what they need first.
BUILD   ?= build
PREFIX  ?= $(CURDIR)/dist
BUILD_TYPE ?= Release
CMAKE_FLAGS ?=

.PHONY: all setup configure build test demo install bench bench-cairo clean native-check fuzz

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

# The outline geometry timed natively beside Cairo stroking the same polyline
# (an outside reference; needs libcairo2-dev, libcairo2-dev:i386 for the
# default 32-bit native build). Not part of `make test`.
bench-cairo:
	cmake -S native -B $(NATIVE_BUILD) -G Ninja -DCMAKE_CXX_COMPILER=g++
	cmake --build $(NATIVE_BUILD) -j2 --target stroke_bench
	$(NATIVE_BUILD)/stroke_bench
	@if grep -q 'cairo_stroke_bench:' $(NATIVE_BUILD)/build.ninja; then \
	  cmake --build $(NATIVE_BUILD) -j2 --target cairo_stroke_bench && $(NATIVE_BUILD)/cairo_stroke_bench; \
	else echo "bench-cairo: no cairo for this native build's width; Cairo's side skipped"; fi

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

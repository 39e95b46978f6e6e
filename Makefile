# Quick start: `make demo` and `make test`. Both install what they need first.
BUILD   ?= build
PREFIX  ?= $(CURDIR)/dist
BUILD_TYPE ?= Release
CMAKE_FLAGS ?=

.PHONY: all setup configure build test demo install bench clean

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

clean:
	rm -rf $(BUILD)

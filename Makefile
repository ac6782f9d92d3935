# Thin wrapper over CMake. `make demo` and `make test` install what is missing,
# configure and build first.
BUILD ?= build
BUILD_TYPE ?= Release
CMAKE_FLAGS ?=
JOBS ?= $(shell nproc)

FUZZ_SECONDS ?= 10

.PHONY: all deps deps-test deps-fuzz configure build demo test bench fuzz install clean
MAKEFLAGS += --no-print-directory

all: build

deps:
	@bash scripts/install-deps.sh

deps-test:
	@bash scripts/install-deps.sh --test

deps-fuzz:
	@bash scripts/install-deps.sh --fuzz

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	cd $(BUILD) && ./tools/zol demo

test: deps-test build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The file readers under libFuzzer with address and undefined-behaviour checks, each
# for FUZZ_SECONDS (build tree build-fuzz, clang).
fuzz: deps-fuzz
	@bash scripts/fuzz.sh $(FUZZ_SECONDS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b; done

install: build
	cmake --install $(BUILD) --prefix $(or $(PREFIX),/usr/local)

clean:
	rm -rf $(BUILD)

# Thin wrapper over CMake. `make demo` and `make test` install what is missing,
# configure and build first.
BUILD ?= build
BUILD_TYPE ?= Release
CMAKE_FLAGS ?=
JOBS ?= $(shell nproc)

.PHONY: all deps deps-test configure build demo test bench install clean
MAKEFLAGS += --no-print-directory

all: build

deps:
	@bash scripts/install-deps.sh

deps-test:
	@bash scripts/install-deps.sh --test

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	cd $(BUILD) && ./tools/zol demo

test: deps-test build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b; done

install: build
	cmake --install $(BUILD) --prefix $(or $(PREFIX),/usr/local)

clean:
	rm -rf $(BUILD)

# Quick start: `make demo` runs the desk host's demo, `make test` runs every test.
PRESET ?= default
BUILD_DIR := build

.PHONY: all deps configure build demo test bench format clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build --preset $(PRESET)

demo: build
	@$(BUILD_DIR)/bin/sysctrl-sim --log-level 3000 tools/sysctrl-sim/demo/*.sim

test: build
	@ctest --preset $(PRESET)

bench: build
	@$(BUILD_DIR)/bin/sysctrl-bench

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)

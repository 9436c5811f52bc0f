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

# The demo runs in a fresh root under build/, kept afterwards for its pictures.
DEMO_ROOT := $(BUILD_DIR)/demo

demo: build
	@rm -rf $(DEMO_ROOT)
	@$(BUILD_DIR)/bin/sysctrl-sim --root $(DEMO_ROOT) --log-level 3000 tools/sysctrl-sim/demo/*.sim
	@echo "The demo's test card capture is in $(DEMO_ROOT)/pictures/ (testcard.png)."

test: build
	@ctest --preset $(PRESET)

bench: build
	@$(BUILD_DIR)/bin/sysctrl-bench

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)

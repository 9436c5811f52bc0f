# Quick start: `make demo` runs the desk host's demo, `make test` runs every test.
# `make test-arm` builds and tests for armhf and arm64 under qemu-user; `make package` and
# `make package-arm` build the Debian packages (build*/packages/) and check them with lintian.
# `make test-fresh` checks the quick start on a fresh minimal Debian 12 root, as root and as a user
# (scripts/test-fresh-root.sh).
PRESET ?= default
BUILD_DIR := build
ARM_PRESETS := armhf arm64

.PHONY: all deps deps-arm configure build demo test test-fresh bench package test-arm package-arm \
	format clean

all: build

deps:
	@./scripts/install-deps.sh

deps-arm:
	@./scripts/install-deps.sh --arm

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build --preset $(PRESET)

# The demo runs in a fresh root under build/, kept afterwards for its pictures.
DEMO_ROOT := $(BUILD_DIR)/demo

demo: build
	@rm -rf $(DEMO_ROOT)
	@$(BUILD_DIR)/bin/sysctrl-sim --root $(DEMO_ROOT) --log-level 3000 tools/sysctrl-sim/demo/*.sim
	@echo "The demo ran to its end. Its lines with \"failed\", \"Error\" or \"ERROR\" are expected:"
	@echo "steps that fail on purpose, each announced by a \"# ---\" line before it that says \"expected\"."
	@echo "The demo's test card capture is in $(DEMO_ROOT)/pictures/ (testcard.png)."

test: build
	@ctest --preset $(PRESET)

test-fresh:
	@./scripts/test-fresh-root.sh

bench: build
	@$(BUILD_DIR)/bin/sysctrl-bench

# The packages of one build folder, made afresh (lintian checks every .deb in the folder), then
# checked: any lintian error or warning fails.
define make-packages
	@rm -rf $(1)/packages
	@cpack --config $(1)/CPackConfig.cmake
	@./scripts/check-packages.sh $(1)/packages
endef

package: build
	$(call make-packages,$(BUILD_DIR))

# One ARM target: configure (the sysroot is made on the first run), build, then test or package.
arm-%: deps-arm
	@cmake --preset $* >/dev/null
	@cmake --build --preset $*

test-arm-%: arm-%
	@ctest --preset $*

package-arm-%: arm-%
	$(call make-packages,build-$*)

test-arm: $(addprefix test-arm-,$(ARM_PRESETS))

package-arm: $(addprefix package-arm-,$(ARM_PRESETS))

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR) $(addprefix build-,$(ARM_PRESETS))

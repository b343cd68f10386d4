# The README's commands. Everything builds into build/.
BUILD_DIR := build
JOBS ?= $(shell nproc)
ARGS ?=
CMAKE_FLAGS ?=

.PHONY: all setup configure build run test benchmarks bench format clean

all: build

setup:
	@scripts/bootstrap

configure: setup
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

# Without a display, the window opens on a virtual one so that the command still works.
run: build
	@if [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then \
	    $(BUILD_DIR)/bin/palomet $(ARGS); \
	else \
	    echo "No display found: starting Palomet on a virtual X server (xvfb-run)."; \
	    xvfb-run -a $(BUILD_DIR)/bin/palomet $(ARGS); \
	fi

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS) --timeout 600

# Every benchmark and fuzz target, built but not run.
benchmarks: build
	@cmake --build $(BUILD_DIR) --target benchmarks -j $(JOBS)

bench: benchmarks
	@set -e; for b in $(BUILD_DIR)/bench/bench_*; do \
	    [ -f "$$b" ] && [ -x "$$b" ] || continue; echo "== $$b"; "$$b"; done

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)

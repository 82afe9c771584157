# The two quick-start commands (see README.md). Each installs what is missing,
# configures, builds and runs.

PACKAGES := cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev \
            g++-mingw-w64-i686 g++-mingw-w64-x86-64 gcc-multilib g++-multilib qemu-user \
            libcli11-dev \
            clang libclang-rt-14-dev \
            qemu-system-x86 linux-image-amd64 busybox-static cpio libhidapi-dev \
            udev util-linux wine wine64 libwine \
            python3-pytest mypy pkgconf \
            libcpp-httplib-dev chromium chromium-driver
# What `make demo` needs: a compiler, CMake, the command-line parser of pelmctl
# and the HTTP library of its web view.
DEMO_PACKAGES := cmake ninja-build g++ libcli11-dev libcpp-httplib-dev pkgconf
SUDO := $(if $(filter 0,$(shell id -u)),,sudo)
TEST_PRESETS := debug asan tsan

# Seconds each fuzzer runs in `make test` (four fuzzers).
FUZZ_SECONDS ?= 25

.PHONY: deps demo-deps test fuzz platform-checks vm-test wine-test demo bench clean

deps demo-deps:
	@missing=""; \
	for p in $(if $(filter demo-deps,$@),$(DEMO_PACKAGES),$(PACKAGES)); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  $(SUDO) apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq --no-install-recommends $$missing; \
	fi

test: deps
	@set -e; for p in $(TEST_PRESETS); do \
	  echo "=== $$p build ==="; \
	  cmake --preset $$p >/dev/null; \
	  cmake --build --preset $$p; \
	  ctest --preset $$p; \
	done
	@$(MAKE) --no-print-directory fuzz
	@$(MAKE) --no-print-directory platform-checks
	@$(MAKE) --no-print-directory vm-test
	@$(MAKE) --no-print-directory wine-test

# Every parser and decoder under libFuzzer with ASan and UBSan, each for a
# bounded time from its seed corpus in fuzz/corpus/.
fuzz:
	@echo "=== fuzz build ==="
	@cmake --preset fuzz >/dev/null && cmake --build --preset fuzz
	@fuzz/run_fuzzers.sh build/fuzz $(FUZZ_SECONDS)

# The builds for other targets and what proves them: a user's first release
# build (every target, warnings as errors at -O3), the Windows DLLs' export
# tables, the Linux shared library's, and both calling forms on 32-bit x86.
platform-checks:
	@echo "=== release build ==="
	@cmake --preset release >/dev/null && cmake --build --preset release
	@echo "=== PELMDEV.dll (32-bit Windows) ==="
	@cmake --preset win32 >/dev/null && cmake --build --preset win32
	@tests/exports/check_exports.sh dll build/win32/PELMDEV.dll tests/exports/expected_exports.txt
	@echo "=== PELMDEV.dll (64-bit Windows) ==="
	@cmake --preset win64 >/dev/null && cmake --build --preset win64
	@tests/exports/check_exports.sh dll64 build/win64/PELMDEV.dll tests/exports/expected_exports.txt
	@echo "=== libpelmdev.so (x86-64 Linux) ==="
	@tests/exports/check_exports.sh so build/debug/libpelmdev.so tests/exports/expected_exports.txt
	@echo "=== 32-bit x86 Linux: calling forms ==="
	@cmake --preset i386 >/dev/null && cmake --build --preset i386
	@tests/abi/run_calling_forms_check.sh build/i386/pelm_calling_forms_check

# The Linux backend on the real kernel HID stack: a VM whose panels are uhid
# devices and USB gadgets on dummy_hcd (under a minute under software
# emulation), then a desktop-like
# VM, with udevd and the project's rule, where the tests run as an ordinary
# user on panels the panel server makes (about twenty seconds).
vm-test:
	@echo "=== Linux backend in a VM with USB panels ==="
	@cmake --build --preset debug --target pelm_vm_tests
	@tests/vm/run build/debug/tests/vm/pelm_vm_tests --gtest_color=no
	@echo "=== Linux backend in a desktop VM: udevd, the udev rule, an ordinary user ==="
	@cmake --build --preset debug --target pelm_desktop_tests pelm-panel-server
	@testbed/vm/run-desktop --rule build/debug/70-pelmdev.rules --panel-server build/debug/testbed/pelm-panel-server \
	  build/debug/tests/desktop/pelm_desktop_tests --gtest_color=no

# Both DLLs as a Windows host runs them: under Wine in the desktop VM, on uhid
# panels the panel server makes; the 32-bit one under wine32 from an i386 root.
# The first run prepares and caches the root and the prefixes under
# /var/cache/pelmdev.
wine-test:
	@cmake --preset debug >/dev/null && cmake --build --preset debug --target pelm-panel-server
	@cmake --preset win32 >/dev/null && cmake --build --preset win32 --target PELMDEV pelm_wine_tests
	@cmake --preset win64 >/dev/null && cmake --build --preset win64 --target PELMDEV pelm_wine_tests
	@tests/wine/run build/debug/testbed/pelm-panel-server 32:build/win32 64:build/win64

demo: demo-deps
	@cmake --preset demo >/dev/null
	@cmake --build --preset demo --target pelmctl-sim
	@./build/demo/tools/pelmctl-sim list
	@./build/demo/tools/pelmctl-sim demo
	@echo "To watch and work the panels in a browser: ./build/demo/tools/pelmctl-sim demo --web"

# Benchmarks in an optimised build, about a minute: first on the simulated bus
# (a table, and the same as JSON beside the program), then input latency on the
# real kernel inside the test VM against a bare read loop and hidapi (a table,
# and its JSON beside the first).
BENCH_RESULTS := build/release/bench/results.json
VM_BENCH_RESULTS := build/release/bench/vm_results.json

bench: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target pelm_bench pelm_vm_latency
	@./build/release/bench/pelm_bench $(BENCH_RESULTS)
	@tests/vm/run build/release/bench/pelm_vm_latency > build/release/bench/vm_run.log; \
	  status=$$?; \
	  sed -n '/^Opening [0-9]* panels among [0-9]* foreign/,/^PELM-VM-BENCH/p' build/release/bench/vm_run.log | grep -v '^PELM-VM-BENCH'; \
	  sed -n 's/^PELM-VM-BENCH //p' build/release/bench/vm_run.log > $(VM_BENCH_RESULTS); \
	  [ $$status -eq 0 ] || { tail -n 20 build/release/bench/vm_run.log; exit $$status; }

clean:
	rm -rf build

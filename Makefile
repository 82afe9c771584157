# The two quick-start commands (see README.md). Each installs what is missing,
# configures, builds and runs.

PACKAGES := cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev
SUDO := $(if $(filter 0,$(shell id -u)),,sudo)
TEST_PRESETS := debug asan tsan

.PHONY: deps test demo bench clean

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
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

demo: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target pelm_demo
	@./build/release/tools/pelm_demo

clean:
	rm -rf build

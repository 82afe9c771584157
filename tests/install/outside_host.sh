#!/usr/bin/env bash
# Installs a build into a scratch root, then builds and runs the hosts in host/
# against it twice, as an outside project would: through find_package(pelmdev)
# and through pkg-config.
#   outside_host.sh BUILD_DIR "C_FLAGS" "LINKER_FLAGS"
# The flags are the build's own (a sanitizer build's hosts need its runtime).
set -euo pipefail
build=$1 cflags=${2:-} ldflags=${3:-}
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root prefix=/opt/pelmdev
installed=$root$prefix

step() { echo "--- $*"; }
fail() { echo "FAILED: $*" >&2; exit 1; }

step "install into $installed"
DESTDIR=$root cmake --install "$build" --prefix "$prefix" >"$scratch/install.log" ||
  { cat "$scratch/install.log"; fail "cmake --install"; }
libdir=$(cd "$installed" && dirname "$(find . -name libpelmdev.so -print -quit)")
for file in include/pelmdev/pelm_dev.h include/pelmdev/pelm_dev_ext.h include/pelmdev/pelm_sim.h \
            "$libdir/libpelmdev.so.0" "$libdir/libpelmdev-sim.so.0" "$libdir/pkgconfig/pelmdev.pc" \
            "$libdir/cmake/pelmdev/pelmdevConfig.cmake" bin/pelmctl bin/pelmctl-sim; do
  [ -e "$installed/$file" ] || fail "$file not installed"
done
[ -n "$(find "$root" -name 70-pelmdev.rules)" ] || fail "udev rule not installed"
soname=$(objdump -p "$installed/$libdir/libpelmdev.so" | awk '$1 == "SONAME" {print $2}')
[ "$soname" = libpelmdev.so.0 ] || fail "soname is '$soname', not libpelmdev.so.0"
"$installed/bin/pelmctl" --version >/dev/null || fail "installed pelmctl does not run"

run_hosts() {
  local dir=$1
  LD_LIBRARY_PATH=$installed/$libdir "$dir/host" || fail "host ($dir)"
  LD_LIBRARY_PATH=$installed/$libdir "$dir/sim_host" || fail "sim_host ($dir)"
}

step "find_package(pelmdev)"
cmake -S "$here/host" -B "$scratch/cmake-host" -G Ninja -DCMAKE_PREFIX_PATH="$installed" \
  -DCMAKE_C_FLAGS="$cflags" -DCMAKE_EXE_LINKER_FLAGS="$ldflags" >"$scratch/configure.log" ||
  { cat "$scratch/configure.log"; fail "configure with find_package"; }
cmake --build "$scratch/cmake-host" >"$scratch/build.log" || { cat "$scratch/build.log"; fail "build"; }
run_hosts "$scratch/cmake-host"

step "pkg-config"
export PKG_CONFIG_PATH=$installed/$libdir/pkgconfig PKG_CONFIG_SYSROOT_DIR=$root
mkdir -p "$scratch/pc-host"
for pair in host:pelmdev sim_host:pelmdev-sim; do
  program=${pair%%:*} package=${pair#*:}
  # shellcheck disable=SC2046,SC2086
  cc $cflags "$here/host/$program.c" -o "$scratch/pc-host/$program" $ldflags $(pkg-config --cflags --libs "$package") ||
    fail "cc $program.c with pkg-config $package"
done
run_hosts "$scratch/pc-host"
echo "outside hosts built and ran through find_package and pkg-config"

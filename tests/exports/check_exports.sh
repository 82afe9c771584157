#!/usr/bin/env bash
# Compares the names a built library exports with the documented list.
#   check_exports.sh dll PELMDEV.dll expected_exports.txt      (32-bit Windows)
#   check_exports.sh dll64 PELMDEV.dll expected_exports.txt    (64-bit Windows)
#   check_exports.sh so libpelmdev.so expected_exports.txt
#   check_exports.sh sim libpelmdev-sim.so expected_exports.txt pelm_sim.h
# The Linux libraries also export the hot-plug extension (PelmDevExt_*); the
# simulated one its control functions too, exactly those its header declares.
set -euo pipefail
kind=$1 binary=$2 expected=$3
case "$kind" in
  dll|dll64)
    objdump=i686-w64-mingw32-objdump
    [ "$kind" = dll64 ] && objdump=x86_64-w64-mingw32-objdump
    actual=$("$objdump" -p "$binary" |
               sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | sed -n 's/^\s*\[ *[0-9]*\] //p') ;;
  so) actual=$(nm -D --defined-only "$binary" | awk '{print $3}' | grep -v '^PelmDevExt_') ;;
  sim)
    exported=$(nm -D --defined-only "$binary" | awk '{print $3}')
    declared=$(grep -o 'PelmSim_[A-Za-z]*(' "$4" | tr -d '(' | sort -u)
    if ! diff <(printf '%s\n' "$declared") <(printf '%s\n' "$exported" | grep '^PelmSim_' | sort) >&2; then
      echo "$binary: control functions differ from those $4 declares (< missing, > extra)" >&2
      exit 1
    fi
    actual=$(printf '%s\n' "$exported" | grep -v '^PelmDevExt_\|^PelmSim_') ;;
  *) echo "unknown kind $kind" >&2; exit 2 ;;
esac
if diff <(sort "$expected") <(printf '%s\n' "$actual" | sort) >/tmp/export-diff.$$; then
  echo "$binary exports exactly the $(wc -l <"$expected") documented names"
  rm -f /tmp/export-diff.$$
else
  echo "$binary: exported names differ from $expected (< missing, > extra):" >&2
  cat /tmp/export-diff.$$ >&2
  rm -f /tmp/export-diff.$$
  exit 1
fi

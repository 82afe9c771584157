#!/usr/bin/env bash
# Runs the 32-bit calling-form check: natively where the kernel runs 32-bit x86
# programs, under qemu's user-mode emulation where it does not.
set -uo pipefail
check=$1
status=0
( "$check" ) 2>/dev/null || status=$?
# 126: the kernel could not execute it (no 32-bit support).
if [ "$status" -eq 126 ]; then
  exec qemu-i386 -L / "$check"
fi
exit "$status"

#!/usr/bin/env bash
# Runs the 32-bit calling-form check: natively where the kernel runs 32-bit x86
# programs, under qemu's user-mode emulation where it does not.
set -euo pipefail
check=$1
if "$check" 2>/dev/null; then exit 0; fi
status=$?
# 126: the kernel could not execute it (no 32-bit support); anything else is a failure.
if [ "$status" -ne 126 ] && [ "$status" -ne 127 ]; then "$check"; exit 1; fi
exec qemu-i386 -L / "$check"

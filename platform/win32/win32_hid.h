#pragma once
// The Windows HID library's headers, which mingw declares without C linkage of
// their own.

// clang-format off
#include <windows.h>
extern "C" {
#include <hidsdi.h>
#include <hidpi.h>
}
// clang-format on

"""Finds and loads the shared library and declares its functions to ctypes."""

from __future__ import annotations

import ctypes
import ctypes.util
import os
from typing import Any, Union

from ._tables import FAMILIES

PathLike = Union[str, "os.PathLike[str]"]

# What open() and Simulator() take for the library: these names, or a path.
REAL = "pelmdev"
SIMULATED = "sim"
# Environment variables that name each library's file ahead of the search.
LIBRARY_VARIABLES = {REAL: "PELMDEV_LIBRARY", SIMULATED: "PELMDEV_SIM_LIBRARY"}
_SONAMES = {REAL: "libpelmdev.so.0", SIMULATED: "libpelmdev-sim.so.0"}
_LINK_NAMES = {REAL: "pelmdev", SIMULATED: "pelmdev-sim"}

C_TYPES: dict[str, type] = {
    "int16_t": ctypes.c_int16, "uint8_t": ctypes.c_uint8, "uint16_t": ctypes.c_uint16,
    "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32, "char": ctypes.c_char,
}


class LibraryNotFoundError(OSError):
    """The shared library could not be found or loaded."""


class PresentPanel(ctypes.Structure):
    _fields_ = [("model_type", ctypes.c_int32), ("device_index", ctypes.c_int32),
                ("open_in_slot", ctypes.c_int32), ("open_status", ctypes.c_int32),
                ("os_error", ctypes.c_int32), ("device_path", ctypes.c_char * 260),
                ("node", ctypes.c_char * 64)]


class DeviceInfo2(ctypes.Structure):
    _pack_ = 1
    _fields_ = [("struct_size", ctypes.c_uint16), ("device_path", ctypes.c_char * 260),
                ("version_number", ctypes.c_uint16), ("serial_number", ctypes.c_char * 65),
                ("output_report_length", ctypes.c_uint16)]


ConnectCallback = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_int32, ctypes.c_int32)
InputCallback = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_int32, ctypes.c_void_p)
WakeupCallback = ctypes.CFUNCTYPE(None)

_u32, _i32, _p = ctypes.c_uint32, ctypes.c_int32, ctypes.POINTER
_CORE: dict[str, tuple[Any, list[Any]]] = {
    "PelmDev_Init": (_u32, [ctypes.c_void_p]),
    "PelmDev_Terminate": (_u32, []),
    "PelmDev_GetDeviceInfo2": (_i32, [_i32, _i32, _p(DeviceInfo2)]),
    "PelmDev_RegisterConnectCallback": (_u32, [ConnectCallback]),
    "PelmDev_UnregisterConnectCallback": (_u32, []),
    "PelmDev_RegisterInputCallback": (_u32, [InputCallback]),
    "PelmDev_UnregisterInputCallback": (_u32, []),
    "PelmDev_RegisterWakeupCallback": (_u32, [WakeupCallback, _i32]),
    "PelmDev_UnregisterWakeupCallback": (_u32, []),
    "PelmDevExt_EventDescriptor": (ctypes.c_int, []),
    "PelmDevExt_DispatchEvents": (_u32, []),
    "PelmDevExt_ListPresentPanels": (_i32, [_p(PresentPanel), _u32, _p(_u32)]),
}
_SIM: dict[str, tuple[Any, list[Any]]] = {
    "PelmSim_Plug": (_i32, [_i32, _i32]),
    "PelmSim_Unplug": (_i32, [_i32, _i32]),
    "PelmSim_InjectInput": (_i32, [_i32, _i32, _p(ctypes.c_uint8), _u32]),
    "PelmSim_LastReport": (_i32, [_i32, _i32, _i32, ctypes.c_uint8, _p(ctypes.c_uint8), _u32]),
    "PelmSim_DisplayText": (_i32, [_i32, _i32, _i32, ctypes.c_char_p, _u32]),
    "PelmSim_SetFault": (_i32, [_i32, _i32, _i32, _i32]),
    "PelmSim_Reset": (None, []),
    "PelmSim_Serve": (_i32, [_i32]),
}


def _parameter_type(kind: str, ctype: str) -> type:
    if kind == "in":
        return C_TYPES[ctype]
    if kind == "text":
        return ctypes.c_char_p
    return ctypes.POINTER(C_TYPES[ctype])


def _declare(library: ctypes.CDLL, functions: dict[str, tuple[Any, list[Any]]]) -> None:
    for name, (restype, argtypes) in functions.items():
        function = getattr(library, name)
        function.restype, function.argtypes = restype, argtypes


def _declare_models(library: ctypes.CDLL) -> None:
    for family, (_, operations) in FAMILIES.items():
        count = getattr(library, f"{family}_GetNumDevices")
        count.restype, count.argtypes = ctypes.c_uint32, []
        for operation, parameters in operations:
            function = getattr(library, f"{family}_{operation}")
            function.restype = ctypes.c_int32
            function.argtypes = [ctypes.c_int32] + [_parameter_type(kind, ctype) for kind, ctype, _ in parameters]


_loaded: dict[str, ctypes.CDLL] = {}


def _candidates(library: PathLike | None) -> list[str]:
    if library is not None and os.fspath(library) not in _SONAMES:
        return [os.fspath(library)]
    kind = REAL if library is None else os.fspath(library)
    named = os.environ.get(LIBRARY_VARIABLES[kind])
    found = ctypes.util.find_library(_LINK_NAMES[kind])
    return [name for name in (named, found, _SONAMES[kind]) if name]


def load(library: PathLike | None = None) -> ctypes.CDLL:
    """The library, loaded once per file and with every function declared.

    ``library`` is None or "pelmdev" for libpelmdev.so (real panels), "sim"
    for libpelmdev-sim.so (the simulated cockpit), or a path. For the two
    names, the environment variable PELMDEV_LIBRARY or PELMDEV_SIM_LIBRARY
    may name the file; else the system's library search finds it."""
    errors = []
    for candidate in _candidates(library):
        if candidate in _loaded:
            return _loaded[candidate]
        try:
            loaded = ctypes.CDLL(candidate)
        except OSError as error:
            errors.append(f"{candidate}: {error}")
            continue
        _declare(loaded, _CORE)
        _declare_models(loaded)
        if hasattr(loaded, "PelmSim_Plug"):
            _declare(loaded, _SIM)
        _loaded[candidate] = loaded
        return loaded
    raise LibraryNotFoundError(
        "cannot load the pelmdev library (" + "; ".join(errors) + "): install it (cmake --install, or the .deb), "
        "add its folder to LD_LIBRARY_PATH, or name the file: pelmdev.open(library=PATH) or "
        + " / ".join(LIBRARY_VARIABLES.values()))

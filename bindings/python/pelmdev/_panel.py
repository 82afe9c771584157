"""The base of every model's class: one panel, by its slot in an open cockpit."""

from __future__ import annotations

import ctypes
from typing import TYPE_CHECKING, NamedTuple

from .errors import check

if TYPE_CHECKING:
    from ._cockpit import Cockpit


class DeviceInfo(NamedTuple):
    path: str
    version_number: int
    serial_number: str
    # Set by the class-based models (gear 2, engine start, warning, I/O board); None for the others.
    output_report_length: int | None


class Panel:
    """One panel of a model: ``Radio(cockpit, 0)`` or ``cockpit.panels(Radio)``.

    Getters return the value, or a named tuple for several; setters return
    None. A status other than success raises the PelmError subclass that
    names it."""

    MODEL_TYPE = 0
    FAMILY = ""

    def __init__(self, cockpit: Cockpit, index: int = 0) -> None:
        self.cockpit = cockpit
        self.index = index

    def __repr__(self) -> str:
        return f"{type(self).__name__}(index={self.index})"

    def info(self) -> DeviceInfo:
        """The panel's device path, version, serial number and report length."""
        from ._library import DeviceInfo2

        record = DeviceInfo2(struct_size=ctypes.sizeof(DeviceInfo2), output_report_length=0xFFFF)
        untouched = record.output_report_length
        check(self.cockpit.library.PelmDev_GetDeviceInfo2(self.MODEL_TYPE, self.index, ctypes.byref(record)),
              f"PelmDev_GetDeviceInfo2({self.MODEL_TYPE}, {self.index})")
        length = None if record.output_report_length == untouched else record.output_report_length
        return DeviceInfo(record.device_path.decode("latin-1"), record.version_number,
                          record.serial_number.decode("latin-1"), length)

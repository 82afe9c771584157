"""The simulated cockpit of libpelmdev-sim.so, for testing a host without panels.

    sim = pelmdev.Simulator()
    sim.plug(pelmdev.Radio, 1)
    with sim.open() as cockpit:
        cockpit.panels(pelmdev.Radio)[0].set_l_display_text("118.25")
        sim.wait_for_display(pelmdev.Radio, 1, RADIO_LEFT, "118.25 ")

Panels are named by their model class (or type code) and an instance number
of the test's choosing. What a setter sends reaches the panel shortly after
the setter returns: wait_for_display and wait_for_report poll for it.
"""

from __future__ import annotations

import ctypes
import time
from typing import Callable, TypeVar, Union

from ._cockpit import Cockpit
from ._library import SIMULATED, PathLike, load
from ._panel import Panel
from ._tables import (
    SIM_ALPHA_NUMERIC as ALPHA_NUMERIC,
    SIM_ALPHA_TEXT as ALPHA_TEXT,
    SIM_AUTOPILOT_A as AUTOPILOT_A,
    SIM_AUTOPILOT_B as AUTOPILOT_B,
    SIM_AUTOPILOT_C as AUTOPILOT_C,
    SIM_AUTOPILOT_D as AUTOPILOT_D,
    SIM_AUTOPILOT_E as AUTOPILOT_E,
    SIM_AUTOPILOT_F as AUTOPILOT_F,
    SIM_FAULT_DENY_ACCESS as FAULT_DENY_ACCESS,
    SIM_FAULT_FAIL_OPENS as FAULT_FAIL_OPENS,
    SIM_FAULT_FAIL_READS as FAULT_FAIL_READS,
    SIM_FAULT_FAIL_SENDS as FAULT_FAIL_SENDS,
    SIM_FEATURE_REPORT as FEATURE_REPORT,
    SIM_OUTPUT_REPORT as OUTPUT_REPORT,
    SIM_RADIO_LEFT as RADIO_LEFT,
    SIM_RADIO_RIGHT as RADIO_RIGHT,
    SIM_SQUAWK_DIGIT as SQUAWK_DIGIT,
)

Model = Union[type[Panel], int]
Result = TypeVar("Result")

# The longest display text, with its NUL: six positions, each with a point.
_TEXT_ROOM = 32
_POLL_INTERVAL = 0.005
_REPORT_ROOM = 64


class SimulationError(ValueError):
    """The simulated cockpit refused a request (no such panel, display or fault)."""


def _type_code(model: Model) -> int:
    return model if isinstance(model, int) else model.MODEL_TYPE


def _poll(read: Callable[[], Result], done: Callable[[Result], bool], timeout: float, what: str) -> Result:
    deadline = time.monotonic() + timeout
    while True:
        value = read()
        if done(value):
            return value
        if time.monotonic() >= deadline:
            raise TimeoutError(f"{what} within {timeout} s; last seen: {value!r}")
        time.sleep(_POLL_INTERVAL)


class Simulator:
    """Plugs, presses and reads back the panels of libpelmdev-sim.so."""

    def __init__(self, library: PathLike | None = None) -> None:
        self.library = load(SIMULATED if library is None else library)
        if not hasattr(self.library, "PelmSim_Plug"):
            raise SimulationError(f"{self.library._name} is not the simulated library (libpelmdev-sim.so)")

    def open(self, hotplug: bool = False) -> Cockpit:
        """A Cockpit over this simulated library."""
        return Cockpit(self.library._name, hotplug)

    def plug(self, model: Model, instance: int = 1) -> None:
        """Plugs in a panel (again: the same device on the same path)."""
        if not self.library.PelmSim_Plug(_type_code(model), instance):
            raise SimulationError(f"cannot plug model {_type_code(model)} instance {instance}: "
                                  "no such model type, or instance outside 0 to 9999")

    def unplug(self, model: Model, instance: int = 1) -> None:
        if not self.library.PelmSim_Unplug(_type_code(model), instance):
            raise SimulationError(f"model {_type_code(model)} instance {instance} is not plugged in")

    def inject_input(self, model: Model, instance: int, report: bytes) -> None:
        """Hands the panel's reader an input report (byte 0 its report ID)."""
        buffer = (ctypes.c_uint8 * len(report)).from_buffer_copy(report)
        if not self.library.PelmSim_InjectInput(_type_code(model), instance, buffer, len(report)):
            raise SimulationError(f"cannot inject {report!r}: model {_type_code(model)} instance {instance} "
                                  "was never plugged, or the report is empty")

    def last_report(self, model: Model, instance: int, report_id: int, kind: int = FEATURE_REPORT) -> bytes | None:
        """The last report with this ID the library sent the panel, or None."""
        room = _REPORT_ROOM
        while True:
            buffer = (ctypes.c_uint8 * room)()
            length = self.library.PelmSim_LastReport(_type_code(model), instance, kind, report_id, buffer, room)
            if length < 0:
                raise SimulationError(f"model {_type_code(model)} instance {instance} was never plugged, "
                                      f"or report kind {kind} is unknown")
            if length <= room:
                return bytes(buffer[:length]) if length else None
            room = length

    def display_text(self, model: Model, instance: int = 1, display: int = 0) -> str:
        """What a display shows now, read back from its segments."""
        text = ctypes.create_string_buffer(_TEXT_ROOM)
        if self.library.PelmSim_DisplayText(_type_code(model), instance, display, text, _TEXT_ROOM) < 0:
            raise SimulationError(f"model {_type_code(model)} instance {instance} has no display {display}, "
                                  "or was never plugged")
        return text.value.decode("latin-1")

    def wait_for_display(self, model: Model, instance: int, display: int, expected: str,
                         timeout: float = 10.0) -> str:
        """Waits until the display shows `expected`; TimeoutError otherwise."""
        return _poll(lambda: self.display_text(model, instance, display), lambda text: text == expected,
                     timeout, f"display {display} did not show {expected!r}")

    def wait_for_report(self, model: Model, instance: int, report_id: int, expected: bytes,
                        kind: int = FEATURE_REPORT, timeout: float = 10.0) -> bytes:
        """Waits until the last report with this ID is `expected`."""
        return _poll(lambda: self.last_report(model, instance, report_id, kind), lambda last: last == expected,
                     timeout, f"report {report_id} was not {expected!r}")  # type: ignore[return-value]

    def set_fault(self, model: Model, instance: int, fault: int, value: int = 1) -> None:
        """Gives the panel a fault (FAULT_*): it keeps it until changed or reset()."""
        if not self.library.PelmSim_SetFault(_type_code(model), instance, fault, value):
            raise SimulationError(f"cannot set fault {fault}={value} on model {_type_code(model)} "
                                  f"instance {instance}")

    def serve(self, port: int = 0) -> int:
        """Serves the live web view at http://127.0.0.1:PORT/ (port 0: a free one) and returns the port."""
        served = self.library.PelmSim_Serve(port)
        if served < 0:
            raise SimulationError(f"cannot serve the web view on port {port}: status {-served} "
                                  "(the port taken, or a build without the web view)")
        return int(served)

    def reset(self) -> None:
        """Removes every panel with its faults and records, and stops the web view (after the cockpit is closed)."""
        self.library.PelmSim_Reset()


__all__ = [
    "ALPHA_NUMERIC", "ALPHA_TEXT", "AUTOPILOT_A", "AUTOPILOT_B", "AUTOPILOT_C", "AUTOPILOT_D", "AUTOPILOT_E",
    "AUTOPILOT_F", "FAULT_DENY_ACCESS", "FAULT_FAIL_OPENS", "FAULT_FAIL_READS", "FAULT_FAIL_SENDS",
    "FEATURE_REPORT", "OUTPUT_REPORT", "RADIO_LEFT", "RADIO_RIGHT", "SQUAWK_DIGIT", "SimulationError", "Simulator",
]

"""Python interface of pelmdev, the cockpit-panel library (pure ctypes).

    import pelmdev
    with pelmdev.open() as cockpit:
        for radio in cockpit.panels(pelmdev.Radio):
            radio.set_l_display_text("118.25")

Threads: input callbacks run on the library's reader threads, wakeup
callbacks on a thread of its own, connect events on the thread that calls
Cockpit.dispatch_events() or iterates Cockpit.events(). An exception inside a
callback goes to sys.unraisablehook and never into the library.
"""

from ._cockpit import Cockpit, ConnectEvent, open
from ._library import LibraryNotFoundError, load
from ._panel import DeviceInfo, Panel
from ._tables import (
    EVENT_ARRIVAL, EVENT_REMOVAL, MODEL_ALPHA, MODEL_ALPHA2, MODEL_AUTOPILOT, MODEL_AUTOPILOT2, MODEL_BUTTONS,
    MODEL_ENGINECTL, MODEL_ENGINESTART, MODEL_GEAR, MODEL_GEAR2, MODEL_IOBOARD, MODEL_KEYPAD, MODEL_KNOBS,
    MODEL_MAPCTL, MODEL_RADIO, MODEL_SQUAWK, MODEL_THROTTLE, MODEL_TOGGLES, MODEL_WARNING,
)
from .errors import (
    DeviceIndexError, DeviceIOError, InvalidArgumentError, NoDeviceError, OutOfMemoryError, PelmError,
    QueueFullError, UnsupportedError,
)
from .models import (
    Alpha, Alpha2, Autopilot, Autopilot2, Buttons, EngineCtl, EngineStart, Gear, Gear2, IoBoard, Keypad, Knobs,
    MapCtl, Radio, Squawk, Throttle, Toggles, Warning, model_class,
)
from .sim import Simulator, SimulationError

__version__ = "0.1.0"

__all__ = [
    "Alpha", "Alpha2", "Autopilot", "Autopilot2", "Buttons", "Cockpit", "ConnectEvent", "DeviceIndexError",
    "DeviceInfo", "DeviceIOError", "EngineCtl", "EngineStart", "EVENT_ARRIVAL", "EVENT_REMOVAL", "Gear", "Gear2",
    "InvalidArgumentError", "IoBoard", "Keypad", "Knobs", "LibraryNotFoundError", "load", "MapCtl", "MODEL_ALPHA",
    "MODEL_ALPHA2", "MODEL_AUTOPILOT", "MODEL_AUTOPILOT2", "MODEL_BUTTONS", "MODEL_ENGINECTL", "MODEL_ENGINESTART",
    "MODEL_GEAR", "MODEL_GEAR2", "MODEL_IOBOARD", "MODEL_KEYPAD", "MODEL_KNOBS", "MODEL_MAPCTL", "MODEL_RADIO",
    "MODEL_SQUAWK", "MODEL_THROTTLE", "MODEL_TOGGLES", "MODEL_WARNING", "model_class", "NoDeviceError", "open",
    "OutOfMemoryError", "Panel", "PelmError", "QueueFullError", "Radio", "SimulationError", "Simulator", "Squawk",
    "Throttle", "Toggles", "UnsupportedError", "Warning",
]

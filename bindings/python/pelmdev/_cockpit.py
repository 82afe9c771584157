"""The library between PelmDev_Init and PelmDev_Terminate."""

from __future__ import annotations

import collections
import ctypes
import select
import sys
import threading
import time
import types
from typing import Any, Callable, Iterator, NamedTuple, TypeVar, cast

from ._library import ConnectCallback, InputCallback, PathLike, PresentPanel, WakeupCallback, load
from ._panel import Panel
from .models import decode_input, model_class

PanelType = TypeVar("PanelType", bound=Panel)

# PelmDev_Init turns hot-plug on for any non-null instance.
_HOTPLUG_INSTANCE = ctypes.c_int(1)
_open_lock = threading.Lock()
_open_cockpits: set[int] = set()


class ConnectEvent(NamedTuple):
    model_type: int
    device_index: int
    event: int  # EVENT_ARRIVAL or EVENT_REMOVAL


def _report_unraisable(message: str, callback: object) -> None:
    kind, value, trace = sys.exc_info()
    arguments = types.SimpleNamespace(exc_type=kind, exc_value=value, exc_traceback=trace, err_msg=message,
                                      object=callback)
    sys.unraisablehook(cast("sys.UnraisableHookArgs", arguments))


def _guarded(kind: str, callback: Callable[..., Any]) -> Callable[..., None]:
    """The callback as the library may call it: an exception inside goes to
    sys.unraisablehook (which prints it by default), never into the library."""

    def call(*args: Any) -> None:
        try:
            callback(*args)
        except BaseException:  # noqa: BLE001 - nothing may unwind into C
            _report_unraisable(f"Exception ignored in pelmdev {kind} callback", callback)

    return call


class Cockpit:
    """Every panel the library found: ``with pelmdev.open() as cockpit:``.

    Entering runs PelmDev_Init, leaving PelmDev_Terminate (which waits for
    running callbacks). The library is one per process, so only one Cockpit
    of a library is open at a time."""

    def __init__(self, library: PathLike | None = None, hotplug: bool = False) -> None:
        self.library = load(library)
        self.hotplug = hotplug
        self._callbacks: dict[str, list[Any]] = {}  # ctypes function objects the library was given
        self._on_connect: Callable[[ConnectEvent], Any] | None = None
        self._pending: collections.deque[ConnectEvent] = collections.deque()

    def __enter__(self) -> Cockpit:
        with _open_lock:
            if id(self.library) in _open_cockpits:
                raise RuntimeError("this library is already open in another Cockpit: leave that one first")
            _open_cockpits.add(id(self.library))
        self.library.PelmDev_Init(ctypes.byref(_HOTPLUG_INSTANCE) if self.hotplug else None)
        if self.hotplug:
            self._register("connect", self.library.PelmDev_RegisterConnectCallback,
                           ConnectCallback(_guarded("connect", self._connected)))
        return self

    def __exit__(self, *exc: object) -> None:
        self.library.PelmDev_Terminate()
        self._callbacks.clear()
        with _open_lock:
            _open_cockpits.discard(id(self.library))

    # ---- panels -------------------------------------------------------------

    def count(self, model: type[Panel]) -> int:
        """How many slots of the model are filled (PelmRadio_GetNumDevices...)."""
        return int(getattr(self.library, f"{model.FAMILY}_GetNumDevices")())

    def panels(self, model: type[PanelType]) -> list[PanelType]:
        """A panel object for every filled slot of the model."""
        return [model(self, index) for index in range(self.count(model))]

    def present_panels(self) -> list[PresentPanel]:
        """Every panel plugged in, also those this user may not open
        (PelmDevExt_ListPresentPanels: open_status and os_error tell why)."""
        count = ctypes.c_uint32(0)
        while True:
            capacity = count.value
            records = (PresentPanel * max(capacity, 1))()
            self.library.PelmDevExt_ListPresentPanels(records, capacity, ctypes.byref(count))
            if count.value <= capacity:
                return list(records[: count.value])

    # ---- callbacks ----------------------------------------------------------

    def _register(self, kind: str, register: Callable[..., int], function: Any, *args: Any) -> None:
        # The library may still be running the callback this one replaces:
        # every function it was given stays alive until Terminate.
        if not register(function, *args):
            raise ValueError(f"the library refused the {kind} callback")
        self._callbacks.setdefault(kind, []).append(function)

    def on_input(self, callback: Callable[[int, int, tuple[Any, ...]], Any] | None) -> None:
        """Calls ``callback(model_type, device_index, record)`` after every
        input report, ``record`` a named tuple of the model's input record.
        It runs on the library's reader threads, one call at a time; None
        unregisters (returning once no call runs)."""
        if callback is None:
            self.library.PelmDev_UnregisterInputCallback()  # returns once no call runs
            self._callbacks.pop("input", None)
            return
        guarded = _guarded("input", callback)
        self._register("input", self.library.PelmDev_RegisterInputCallback,
                       InputCallback(lambda model, index, record: guarded(model, index, decode_input(model, record))))

    def on_connect(self, callback: Callable[[ConnectEvent], Any] | None) -> None:
        """Calls ``callback(event)`` for every arrival and removal, on the
        thread that runs dispatch_events() or iterates events(). Needs
        hotplug=True."""
        if not self.hotplug:
            raise RuntimeError("hot-plug is off: open the cockpit with hotplug=True")
        self._on_connect = callback

    def on_wakeup(self, callback: Callable[[], Any] | None, interval_ms: int = 100) -> None:
        """Calls ``callback()`` every ``interval_ms`` on a thread of the
        library's own; None stops it."""
        if callback is None:
            self.library.PelmDev_UnregisterWakeupCallback()
            self._callbacks.pop("wakeup", None)
            return
        if interval_ms <= 0:
            raise ValueError("interval_ms must be positive")
        self._register("wakeup", self.library.PelmDev_RegisterWakeupCallback,
                       WakeupCallback(_guarded("wakeup", callback)), interval_ms)

    # ---- hot-plug -----------------------------------------------------------

    def _connected(self, model_type: int, device_index: int, event: int) -> None:
        happened = ConnectEvent(model_type, device_index, event)
        self._pending.append(happened)
        if self._on_connect is not None:
            self._on_connect(happened)

    def fileno(self) -> int:
        """A descriptor that is readable while arrivals or removals wait, for
        select and selectors; then call dispatch_events()."""
        descriptor = int(self.library.PelmDevExt_EventDescriptor())
        if descriptor < 0:
            raise RuntimeError("hot-plug is off: open the cockpit with hotplug=True")
        return descriptor

    def dispatch_events(self) -> int:
        """Handles the waiting arrivals and removals on this thread (the one
        that opened the cockpit); returns how many."""
        return int(self.library.PelmDevExt_DispatchEvents())

    def events(self, timeout: float | None = None) -> Iterator[ConnectEvent]:
        """Arrivals and removals as they happen, on this thread. Ends once
        none has come for ``timeout`` seconds (None: never)."""
        descriptor = self.fileno()
        remaining = timeout
        while True:
            while self._pending:
                remaining = timeout
                yield self._pending.popleft()
            started = time.monotonic()
            ready, _, _ = select.select([descriptor], [], [], remaining)
            if not ready:
                return
            self.dispatch_events()
            if remaining is not None and not self._pending:
                remaining = max(0.0, remaining - (time.monotonic() - started))

    def panel_for(self, event: ConnectEvent) -> Panel:
        """The panel an event names."""
        return model_class(event.model_type)(self, event.device_index)


def open(library: PathLike | None = None, hotplug: bool = False) -> Cockpit:  # noqa: A001 - pelmdev.open
    """A Cockpit over libpelmdev.so (or ``library``: "sim" or a path), to use
    in a with statement."""
    return Cockpit(library, hotplug)


__all__ = ["Cockpit", "ConnectEvent", "open"]

"""Status codes of the library as exceptions, one class per status."""

from __future__ import annotations

from ._tables import STATUSES


class PelmError(Exception):
    """A model operation returned a status other than PELM_SUCCESS.

    ``status`` is the code, ``status_name`` its name in the C header
    (``"PELM_ERR_NODEVICE"``), ``call`` the function and device index."""

    def __init__(self, status: int, call: str) -> None:
        self.status = status
        self.status_name, meaning = STATUSES.get(status, (f"status {status}", "a status this package does not know"))
        self.call = call
        super().__init__(f"{call} returned {self.status_name}: {meaning}")


class DeviceIndexError(PelmError):
    """PELM_ERR_INDEX: no slot of that index (see Cockpit.count)."""


class OutOfMemoryError(PelmError):
    """PELM_ERR_NOMEM: the library could not allocate a report buffer."""


class NoDeviceError(PelmError):
    """PELM_ERR_NODEVICE: the slot is empty or its panel is unplugged."""


class QueueFullError(PelmError):
    """PELM_ERR_QUEUE: too many reports wait for the panel; send less often."""


class DeviceIOError(PelmError):
    """PELM_ERR_IO: a feature-report transfer with the panel failed."""


class InvalidArgumentError(PelmError):
    """PELM_ERR_PARAM: an argument is out of range for this model."""


class UnsupportedError(PelmError):
    """PELM_ERR_UNSUPPORTED: the model has no such function."""


_BY_NAME: dict[str, type[PelmError]] = {
    "PELM_ERR_INDEX": DeviceIndexError,
    "PELM_ERR_NOMEM": OutOfMemoryError,
    "PELM_ERR_NODEVICE": NoDeviceError,
    "PELM_ERR_QUEUE": QueueFullError,
    "PELM_ERR_IO": DeviceIOError,
    "PELM_ERR_PARAM": InvalidArgumentError,
    "PELM_ERR_UNSUPPORTED": UnsupportedError,
}

SUCCESS = 0


def check(status: int, call: str) -> None:
    """Raises the exception of a status other than PELM_SUCCESS."""
    if status != SUCCESS:
        name = STATUSES.get(status, ("",))[0]
        raise _BY_NAME.get(name, PelmError)(status, call)

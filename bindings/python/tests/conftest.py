"""Every test runs against libpelmdev-sim.so (PELMDEV_SIM_LIBRARY names the file)."""

from __future__ import annotations

import time
from typing import Callable, Iterator

import pytest

import pelmdev

DEADLINE_SECONDS = 10.0


@pytest.fixture
def sim() -> Iterator[pelmdev.Simulator]:
    simulator = pelmdev.Simulator()
    simulator.reset()
    yield simulator
    simulator.reset()


def wait_until(condition: Callable[[], bool], deadline: float = DEADLINE_SECONDS) -> bool:
    """Polls until the condition holds or the deadline passes."""
    end = time.monotonic() + deadline
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.005)
    return True

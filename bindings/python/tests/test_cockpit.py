"""Callbacks, hot-plug and the package's own consistency."""

from __future__ import annotations

import selectors
import shutil
import subprocess
import sys
import threading
from pathlib import Path

import pytest

import pelmdev
from conftest import wait_until

HERE = Path(__file__).resolve().parent
PACKAGE = HERE.parent
SOURCE_ROOT = PACKAGE.parent.parent
BUTTON_PRESS = bytes([0, 1])


def test_an_exception_in_a_callback_stays_out_of_the_library(sim: pelmdev.Simulator,
                                                             monkeypatch: pytest.MonkeyPatch) -> None:
    reported: list[BaseException | None] = []
    monkeypatch.setattr(sys, "unraisablehook", lambda args: reported.append(args.exc_value))
    calls: list[int] = []

    def fails_first(model: int, index: int, record: tuple[int, ...]) -> None:
        calls.append(threading.get_ident())
        if len(calls) == 1:
            raise RuntimeError("host bug")

    sim.plug(pelmdev.Buttons, 1)
    with sim.open() as cockpit:
        cockpit.on_input(fails_first)
        sim.inject_input(pelmdev.Buttons, 1, BUTTON_PRESS)
        assert wait_until(lambda: len(reported) == 1)
        sim.inject_input(pelmdev.Buttons, 1, BUTTON_PRESS)
        assert wait_until(lambda: len(calls) == 2)  # the reader kept going
        cockpit.on_input(None)
    assert isinstance(reported[0], RuntimeError)
    assert calls[0] != threading.get_ident()  # a reader thread, not the caller's


def test_hotplug_events_through_the_iterator_and_selectors(sim: pelmdev.Simulator) -> None:
    seen: list[pelmdev.ConnectEvent] = []
    with sim.open(hotplug=True) as cockpit:
        cockpit.on_connect(seen.append)
        sim.plug(pelmdev.Radio, 1)
        arrival = next(cockpit.events(timeout=10))
        assert arrival == (pelmdev.MODEL_RADIO, 0, pelmdev.EVENT_ARRIVAL)
        assert type(cockpit.panel_for(arrival)) is pelmdev.Radio and cockpit.count(pelmdev.Radio) == 1

        with selectors.DefaultSelector() as selector:
            selector.register(cockpit, selectors.EVENT_READ)
            sim.unplug(pelmdev.Radio, 1)
            assert selector.select(timeout=10)
        assert cockpit.dispatch_events() == 1
        assert seen == [arrival, (pelmdev.MODEL_RADIO, 0, pelmdev.EVENT_REMOVAL)]
        assert list(cockpit.events(timeout=0)) == [seen[1]]


def test_wakeup_callback_and_one_open_cockpit_per_library(sim: pelmdev.Simulator) -> None:
    ticks: list[int] = []
    with sim.open() as cockpit:
        cockpit.on_wakeup(lambda: ticks.append(1), interval_ms=1)
        assert wait_until(lambda: len(ticks) >= 3)
        with pytest.raises(RuntimeError, match="already open"):
            with sim.open():
                pass
    with pytest.raises(RuntimeError, match="hot-plug is off"):
        with sim.open() as cockpit:
            cockpit.fileno()


def test_a_missing_library_says_where_it_looked() -> None:
    with pytest.raises(pelmdev.LibraryNotFoundError, match="no-such-library.so.*LD_LIBRARY_PATH"):
        pelmdev.open(library="/no-such-library.so")


def test_generated_tables_match_the_headers(tmp_path: Path) -> None:
    subprocess.run([sys.executable, PACKAGE / "write_tables.py", SOURCE_ROOT, tmp_path], check=True)
    for name in ("_tables.py", "models.pyi"):
        assert (tmp_path / name).read_text() == (PACKAGE / "pelmdev" / name).read_text(), \
            f"pelmdev/{name} is out of date: run write_tables.py {SOURCE_ROOT} pelmdev"


@pytest.mark.skipif(shutil.which("mypy") is None, reason="mypy is not installed (make deps installs it)")
def test_type_hints_check() -> None:
    # MYPY_CACHE_DIR (the build folder's, under ctest) keeps its cache out of the tree.
    result = subprocess.run(["mypy", "pelmdev", "tests"], cwd=PACKAGE,
                            capture_output=True, text=True)
    assert result.returncode == 0, result.stdout + result.stderr

"""The model classes against the simulated cockpit: marshalling of every
function, results, statuses as exceptions."""

from __future__ import annotations

import inspect
from typing import Any

import pytest

import pelmdev
from pelmdev._tables import FAMILIES
from pelmdev.models import MODEL_CLASSES
from pelmdev.sim import (
    ALPHA_NUMERIC, ALPHA_TEXT, AUTOPILOT_E, AUTOPILOT_F, FAULT_FAIL_READS, RADIO_LEFT, RADIO_RIGHT, SQUAWK_DIGIT,
)
from conftest import wait_until

RADIO_INPUT_REPORT = bytes([0, 0xFF, 0x02, 0x05])  # dial 1 -1, dial 2 +2, switches 5
RADIO_BRIGHTNESS_REPORT = 6
SAMPLE_ARGUMENTS = {int: 1, str: "1"}


def test_every_function_of_every_model_runs_on_its_panel(sim: pelmdev.Simulator) -> None:
    """One call of every method (the default form of every model export) with
    arguments of its declared kinds: a parameter the table gets wrong raises
    or crashes here."""
    for model in MODEL_CLASSES.values():
        sim.plug(model, 1)
    calls = 0
    with sim.open() as cockpit:
        for model in MODEL_CLASSES.values():
            assert cockpit.count(model) == 1, model.__name__
            panel = cockpit.panels(model)[0]
            for name, method in inspect.getmembers(model, inspect.isfunction):
                if name.startswith("_") or name == "info":
                    continue
                parameters = list(inspect.signature(method).parameters.values())[1:]
                arguments = [SAMPLE_ARGUMENTS.get(p.annotation, [0]) for p in parameters]
                try:
                    getattr(panel, name)(*arguments)
                except pelmdev.UnsupportedError:
                    assert model is pelmdev.IoBoard, f"{model.__name__}.{name}"
                calls += 1
    assert calls == sum(len(operations) for _, operations in FAMILIES.values())


def test_radio_displays_getters_and_input_records(sim: pelmdev.Simulator) -> None:
    sim.plug(pelmdev.Radio, 1)
    records: list[tuple[int, int, Any]] = []
    with sim.open() as cockpit:
        radio = cockpit.panels(pelmdev.Radio)[0]
        cockpit.on_input(lambda model, index, record: records.append((model, index, record)))
        radio.set_l_display_text("118.25")
        radio.set_r_display_segments([0x3F, 0x06])  # "0", "1", the rest blank
        radio.set_brightness(9)
        sim.wait_for_display(pelmdev.Radio, 1, RADIO_LEFT, "118.25 ")
        sim.wait_for_display(pelmdev.Radio, 1, RADIO_RIGHT, "01    ")
        assert wait_until(lambda: (sim.last_report(pelmdev.Radio, 1, RADIO_BRIGHTNESS_REPORT) or b"")[1:2] == b"\x09")
        assert radio.get_brightness() == 9

        sim.inject_input(pelmdev.Radio, 1, RADIO_INPUT_REPORT)
        assert wait_until(lambda: bool(records))
        model, index, record = records[0]
        assert (model, index) == (pelmdev.MODEL_RADIO, 0)
        assert record.dial_vals == (-1, 2) and record.switch_vals == 5
        values = radio.get_control_vals()
        assert values == (-1, 2, 5) and values.switches == 5
        assert radio.get_control_vals().dial1 == 0  # counts are handed out once


# (model, display, setter, text drawn, text read back): every kind of display
# the simulated cockpit reads, seven- and sixteen-segment.
DISPLAYS = [
    (pelmdev.Alpha, ALPHA_TEXT, "set_alpha", "Ab1-", "AB1-"),
    (pelmdev.Alpha, ALPHA_NUMERIC, "set_numeric", "123", "123  "),
    (pelmdev.Alpha2, ALPHA_NUMERIC, "set_numeric", "12345", "12345 "),
    (pelmdev.Autopilot, AUTOPILOT_E, "set_e_display_text", "12.5", "12.5   "),
    (pelmdev.Autopilot2, AUTOPILOT_F, "set_f_display_text", "250", "250"),
    (pelmdev.Squawk, SQUAWK_DIGIT, "set_digit", "7.", "7."),
]


def test_displays_read_back_what_the_setters_drew(sim: pelmdev.Simulator) -> None:
    for model, *_ in DISPLAYS:
        sim.plug(model, 1)
    with sim.open() as cockpit:
        for model, display, setter, text, _ in DISPLAYS:
            getattr(cockpit.panels(model)[0], setter)(text)
        for model, display, _, _, shown in DISPLAYS:
            sim.wait_for_display(model, 1, display, shown)
    with pytest.raises(pelmdev.SimulationError, match="no display 1"):
        sim.display_text(pelmdev.Squawk, 1, 1)


def test_statuses_raise_exceptions_that_name_them(sim: pelmdev.Simulator) -> None:
    sim.plug(pelmdev.Radio, 1)
    sim.plug(pelmdev.Warning, 1)
    with sim.open() as cockpit:
        with pytest.raises(pelmdev.DeviceIndexError, match="PelmRadio_SetBrightness.*PELM_ERR_INDEX") as raised:
            pelmdev.Radio(cockpit, 16).set_brightness(1)
        assert raised.value.status == 1 and raised.value.status_name == "PELM_ERR_INDEX"
        with pytest.raises(pelmdev.NoDeviceError, match="PELM_ERR_NODEVICE"):
            pelmdev.Radio(cockpit, 1).set_brightness(1)
        with pytest.raises(pelmdev.InvalidArgumentError, match="PELM_ERR_PARAM"):
            cockpit.panels(pelmdev.Warning)[0].set_ind_color_value(7, 1)  # indicators are 1 to 6
        sim.set_fault(pelmdev.Radio, 1, FAULT_FAIL_READS)
        with pytest.raises(pelmdev.DeviceIOError, match="PELM_ERR_IO"):
            cockpit.panels(pelmdev.Radio)[0].get_brightness()


def test_bad_arguments_are_refused_before_the_library_sees_them(sim: pelmdev.Simulator) -> None:
    sim.plug(pelmdev.Radio, 1)
    with sim.open() as cockpit:
        radio = cockpit.panels(pelmdev.Radio)[0]
        with pytest.raises(TypeError, match="takes 1 argument"):
            radio.set_l_display_text()  # type: ignore[call-arg]
        with pytest.raises(TypeError, match="must be str"):
            radio.set_l_display_text(118.25)  # type: ignore[arg-type]
        with pytest.raises(ValueError, match="NUL"):
            radio.set_l_display_text("1\0")
        with pytest.raises(TypeError):
            radio.set_r_display_segments(["a"])  # type: ignore[list-item]

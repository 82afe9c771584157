"""The web view in a real browser: headless Chromium, driven over WebDriver,
shows what a host sent the simulated panels, pixel for pixel, and a click on
one of its switches reaches the host's input callback."""

from __future__ import annotations

import base64
import json
import shutil
import socket
import struct
import subprocess
import time
import urllib.error
import urllib.request
import zlib
from collections.abc import Callable, Iterator
from typing import Any

import pytest

import pelmdev
from pelmdev.sim import RADIO_LEFT, Simulator

DEADLINE = 60.0
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"
LIT_SEGMENT = (0xFF, 0x5A, 0x1F)
RED = (0xFF, 0, 0)
# Panels in plug order: their ids on the page.
RADIO, WARNING, BUTTONS = 0, 1, 2
# "1" at position 0 lights b and c only; "3." at position 2 lights its point.
SEGMENTS = [(0, "b", True), (0, "c", True), (0, "a", False), (0, "g", False), (2, "dp", True), (1, "dp", False)]


def poll(read: Callable[[], Any], what: str) -> Any:
    deadline = time.monotonic() + DEADLINE
    while not (value := read()):
        if time.monotonic() > deadline:
            raise TimeoutError(f"{what} within {DEADLINE} s")
        time.sleep(0.05)
    return value


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return int(probe.getsockname()[1])


def pixels(png: bytes) -> tuple[int, int, list[bytes]]:
    """Width, height and rows of RGB(A) bytes of an 8-bit, non-interlaced PNG."""
    width, height, depth, colour = struct.unpack(">IIBB", png[16:26])
    assert depth == 8 and colour in (2, 6), "Chromium's screenshots are 8-bit RGB or RGBA"
    channels = 3 if colour == 2 else 4
    data, at = b"", 8
    while at < len(png):
        length, kind = struct.unpack(">I4s", png[at:at + 8])
        if kind == b"IDAT":
            data += png[at + 8:at + 8 + length]
        at += 12 + length
    raw, stride, rows, previous = zlib.decompress(data), width * channels, [], bytearray(width * channels)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for x in range(stride):
            left = line[x - channels] if x >= channels else 0
            up, corner = previous[x], previous[x - channels] if x >= channels else 0
            ways = [abs(up - corner), abs(left - corner), abs(left + up - 2 * corner)]
            paeth = (left, up, corner)[ways.index(min(ways))]
            line[x] = (line[x] + [0, left, up, (left + up) // 2, paeth][kind]) & 0xFF
        rows.append(bytes(line))
        previous = line
    return width, channels, rows


class Browser:
    """One headless Chromium session through chromedriver's WebDriver endpoint."""

    def __init__(self, driver_port: int) -> None:
        self.base = f"http://127.0.0.1:{driver_port}"
        poll(lambda: self._ready(), "chromedriver did not start")
        options = {"args": ["--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1200,900",
                            "--force-device-scale-factor=1"]}
        self.session = self.call("POST", "/session", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "goog:chromeOptions": options}}})["sessionId"]
        self.base += f"/session/{self.session}"

    def _ready(self) -> bool:
        try:
            return bool(self.call("GET", "/status")["ready"])
        except OSError:
            return False

    def call(self, method: str, path: str, body: dict[str, Any] | None = None) -> Any:
        data = json.dumps(body).encode() if body is not None else None
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=DEADLINE) as response:
            return json.load(response)["value"]

    def script(self, source: str) -> Any:
        return self.call("POST", "/execute/sync", {"script": source, "args": []})

    def centre(self, selector: str) -> tuple[int, int]:
        x, y = self.script(f"const r = document.querySelector('{selector}').getBoundingClientRect();"
                           "return [Math.round(r.x + r.width / 2), Math.round(r.y + r.height / 2)];")
        return x, y

    def click(self, selector: str) -> None:
        element = self.call("POST", "/element", {"using": "css selector", "value": selector})[ELEMENT]
        self.call("POST", f"/element/{element}/click", {})


def near(colour: bytes, expected: tuple[int, int, int]) -> bool:
    return all(abs(a - b) <= 24 for a, b in zip(colour, expected))


@pytest.fixture
def browser() -> Iterator[Browser]:
    driver = shutil.which("chromedriver")
    assert driver, "chromedriver is missing: apt-get install chromium chromium-driver"
    port = free_port()
    process = subprocess.Popen([driver, f"--port={port}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        session = Browser(port)
        yield session
        session.call("DELETE", "")
    finally:
        process.terminate()
        process.wait(DEADLINE)


def test_page_shows_the_panels_and_works_their_switches(browser: Browser) -> None:
    sim = Simulator()
    for model in (pelmdev.Radio, pelmdev.Warning, pelmdev.Buttons):
        sim.plug(model, 1)
    inputs: list[tuple[int, Any]] = []
    with sim.open() as cockpit:
        cockpit.on_input(lambda model, index, record: inputs.append((model, record)))
        cockpit.panels(pelmdev.Radio)[0].set_l_display_text("123.45")
        cockpit.panels(pelmdev.Warning)[0].set_ind_color(1, 100, 0, 0)
        sim.wait_for_display(pelmdev.Radio, 1, RADIO_LEFT, "123.45 ")
        url = f"http://127.0.0.1:{sim.serve(0)}/"
        browser.call("POST", "/url", {"url": url})

        # The page has drawn the snapshot with the red lamp when that lamp's swatch is red.
        lamp = f'[data-panel="{WARNING}"] [data-colour="0"]'
        poll(lambda: "255, 0, 0" in browser.script(f"return document.querySelector('{lamp}').style.background"),
             "the page did not draw the warning lamp")
        width, channels, rows = pixels(base64.b64decode(browser.call("GET", "/screenshot")))

        def colours_at(selector: str) -> list[bytes]:
            """The pixels at the element's centre and around it (edges are blended)."""
            x, y = browser.centre(selector)
            assert 1 <= x < width - 1 and 1 <= y < len(rows) - 1, f"{selector} lies outside the screenshot"
            return [rows[y + dy][(x + dx) * channels:(x + dx) * channels + 3] for dy in (-1, 0, 1) for dx in (-1, 0, 1)]

        for position, segment, lit in SEGMENTS:
            selector = f'[data-panel="{RADIO}"] [data-display="0"][data-pos="{position}"][data-seg="{segment}"]'
            seen = colours_at(selector)
            assert any(near(c, LIT_SEGMENT) for c in seen) == lit, f"segment {segment} at {position}: {seen}"
        assert near(colours_at(lamp)[4], RED), f"warning lamp 1: {colours_at(lamp)}"

        # A bad request gets a 4xx and changes nothing; a click on a switch reaches the host.
        state = urllib.request.urlopen(url + "state").read()
        for bad in ["panels/99/plug", f"panels/{BUTTONS}/input?report=zz", f"panels/{BUTTONS}/input?report=0001ff",
                    f"panels/{BUTTONS}/input"]:
            with pytest.raises(urllib.error.HTTPError) as refused:
                urllib.request.urlopen(urllib.request.Request(url + bad, b"", method="POST"))
            assert 400 <= refused.value.code < 500, bad
        assert urllib.request.urlopen(url + "state").read() == state and not inputs
        browser.click(f'[data-panel="{BUTTONS}"] .switch[data-byte="1"][data-bit="0"]')
        poll(lambda: inputs, "the click reached no input callback")
        assert inputs[0][0] == pelmdev.Buttons.MODEL_TYPE and inputs[0][1].switch_vals == 1
    sim.reset()

"""open(), the survey, the screen shot, over a simulated instrument in another process."""

from __future__ import annotations

import csv
import io
import json
import os
import struct
import time
import zlib
from pathlib import Path
from typing import Any

import pytest
import qkel4x
from conftest import Instrument
from qkel4x import _picture, _resource


def test_a_session_is_on_line_and_local_again(instrument: Instrument, quick_waits: list[float]) -> None:
    with qkel4x.open(instrument.resource) as kel:
        assert kel.IDriverSetup.OnLine
        assert isinstance(kel, qkel4x.clsKEL4x)
        assert "on line" in repr(kel)
        assert kel.Manufacturer != ""
        assert isinstance(kel.MeasureRfLevel, float)
        with pytest.raises(AttributeError, match="MeasureRfLevel"):
            kel.MeasureRfLevl = 1  # type: ignore[attr-defined]
    assert not kel.IDriverSetup.OnLine
    kel.close()
    assert quick_waits == [1.0, 1.0]


def test_a_session_is_local_again_after_an_error(instrument: Instrument, quick_waits: list[float]) -> None:
    with pytest.raises(ZeroDivisionError), qkel4x.open(instrument.resource) as kel:
        raise ZeroDivisionError
    assert not kel.IDriverSetup.OnLine


def test_the_resource_may_come_from_the_environment(
    instrument: Instrument, quick_waits: list[float], monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setenv("KEL4X_RESOURCE", instrument.resource)
    with qkel4x.open() as kel:
        assert kel.IDriverSetup.OnLine
    monkeypatch.delenv("KEL4X_RESOURCE")
    with pytest.raises(ValueError, match="KEL4X_RESOURCE"):
        qkel4x.open()


def test_a_serial_line(instrument: Instrument, quick_waits: list[float]) -> None:
    with qkel4x.open(f"ASRL::{instrument.terminal}::INSTR", {"RS232.Baud Rate": 9600}) as kel:
        assert kel.ModelNumber != ""


def test_a_port_that_does_not_open_says_why(quick_waits: list[float]) -> None:
    with pytest.raises(qkel4x.AutomationError, match="refused") as raised:
        qkel4x.open("TCPIP::127.0.0.1::1::SOCKET")
    assert raised.value.code == 2010


def test_the_embedded_instrument_costs_no_time() -> None:
    begin = time.monotonic()
    with qkel4x.open("SIM") as kel:
        kel.SpecFuncEqualizer = qkel4x.KelSpecFuncEqualizers.kelEqualizerOn
        readings = kel.survey()
    assert not [reading for reading in readings if reading.error]
    assert readings["MeasureVsbMerRmsDb"].value > 0
    assert time.monotonic() - begin < 5


def test_resource_names() -> None:
    parse = _resource.parse
    assert parse("sim").port == "QPort.clsGUI"
    assert parse("TCPIP0::kel.lab::5025::SOCKET").settings == {"TCP/IP.Host": "kel.lab", "TCP/IP.Port": 5025}
    assert parse("tcpip::[fe80::1]::5025::socket").settings["TCP/IP.Host"] == "fe80::1"
    assert parse("ASRL3::INSTR") == ("QPort.clsComm", {"RS232.Comm Port": 3}, "")
    assert parse("ASRL/dev/ttyUSB0::INSTR").serial_device == "/dev/ttyUSB0"
    assert parse("ASRL::/dev/ttyUSB0::INSTR").serial_device == "/dev/ttyUSB0"
    assert parse("GPIB1::6::INSTR").settings == {"GPIB.Board": 1, "GPIB.Primary Address": 6}
    for wrong in ("", "TCPIP::host", "TCPIP::host::0::SOCKET", "GPIB0::31::INSTR", "ASRL17::INSTR", "USB0::1::INSTR"):
        with pytest.raises(ValueError, match="resource"):
            parse(wrong)


def test_the_survey(instrument: Instrument, quick_waits: list[float], tmp_path: Path) -> None:
    seen: list[tuple[int, int]] = []
    with qkel4x.open(instrument.resource) as kel:
        kel.SpecFuncEqualizer = qkel4x.KelSpecFuncEqualizers.kelEqualizerOn
        before = kel.MeasureMode
        readings = kel.survey(progress=lambda reading, done, total: seen.append((done, total)))
        assert kel.MeasureMode == before
    names = [reading.name for reading in readings]
    assert len(names) == len(set(names)) == len(seen) == seen[-1][0] == seen[-1][1]
    assert {"MeasureRfLevel", "MeasureVsbMerRmsDb", "GhostPatternAtten(10)", "PhaseJitterFreq(7)"} <= set(names)
    failed = [reading for reading in readings if reading.error]
    assert not failed
    mer = readings["MeasureVsbMerRmsDb"]
    assert mer.unit == "dB" and mer.value > 0
    assert readings["MeasureRfLevel"].unit.startswith("dB")

    rows = list(csv.DictReader(io.StringIO(readings.to_csv())))
    assert [row["name"] for row in rows] == names
    readings.to_csv(tmp_path / "survey.csv")
    assert (tmp_path / "survey.csv").read_text("utf-8") == readings.to_csv()
    assert "<td>MeasureRfLevel</td>" in readings._repr_html_()
    assert str(readings).splitlines()[0].startswith("Measurement")
    assert len(str(readings).splitlines()) == len(readings) + 1


def test_a_survey_of_some_members(instrument: Instrument, quick_waits: list[float]) -> None:
    with qkel4x.open(instrument.resource) as kel:
        readings = kel.survey(["MeasureRfLevel", "GhostPatternDelay(2)"])
        assert [reading.name for reading in readings] == ["MeasureRfLevel", "GhostPatternDelay(2)"]
        with pytest.raises(ValueError, match="'MeasureRfLevel'"):
            kel.survey(["MeasureRfLevl"])


def test_a_survey_whose_instrument_dies_ends_with_rows_that_say_so(instrument: Instrument, quick_waits: list[float]) -> None:
    def kill(reading: Any, done: int, total: int) -> None:
        if done == 3:
            instrument.process.kill()
            instrument.process.wait()

    with qkel4x.open(instrument.resource) as kel:
        readings = kel.survey(progress=kill)
    lost = [reading for reading in readings if reading.error]
    assert 0 < len(lost) < len(readings)
    assert all("link" in reading.error or "closed" in reading.error for reading in lost)
    assert not kel.IDriverSetup.OnLine


def png_size(path: Path) -> tuple[int, int]:
    data = path.read_bytes()
    assert data.startswith(b"\x89PNG\r\n\x1a\n")
    width, height = struct.unpack_from(">II", data, 16)
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack_from(">I4s", data, at)
        if kind == b"IDAT":
            packed += data[at + 8 : at + 8 + length]
        at += 12 + length
    assert len(zlib.decompress(packed)) == height * (1 + 3 * width)
    return width, height


def test_a_screen_shot(instrument: Instrument, quick_waits: list[float], tmp_path: Path) -> None:
    with qkel4x.open(instrument.resource) as kel:
        png = kel.screenshot(tmp_path / "screen.png")
        pcx = kel.screenshot(tmp_path / "screen.pcx")
        with pytest.raises(ValueError, match=".png or .pcx"):
            kel.screenshot(tmp_path / "screen.jpg")
    width, height = png_size(png)
    assert width > 100 and height > 100
    assert pcx.read_bytes()[0] == 0x0A
    colours = {bytes(row[i : i + 3]) for row in _picture._decode(pcx.read_bytes())[2] for i in range(0, len(row), 3)}
    assert len(colours) > 2


def pcx(bits: int, planes: int, width: int, height: int, stride: int, body: bytes, tail: bytes = b"") -> bytes:
    head = bytes((0x0A, 5, 1, bits)) + struct.pack("<4H", 0, 0, width - 1, height - 1) + bytes(4)
    palette = bytes(range(48))
    return (head + palette + bytes((0, planes)) + struct.pack("<H", stride)).ljust(128, b"\0") + body + tail


@pytest.mark.parametrize(
    "image, pixels",
    [
        (pcx(8, 3, 2, 1, 2, bytes((1, 2, 3, 4, 5, 6))), [(1, 3, 5), (2, 4, 6)]),
        (pcx(8, 1, 2, 1, 2, bytes((0, 1)), b"\x0c" + bytes((9, 8, 7, 6, 5, 4)) + bytes(762)), [(9, 8, 7), (6, 5, 4)]),
        (pcx(8, 1, 3, 1, 4, bytes((0xC4, 0x07))), [(7, 7, 7)] * 3),
        (pcx(1, 1, 3, 1, 2, bytes((0xA0, 0))), [(255, 255, 255), (0, 0, 0), (255, 255, 255)]),
        (pcx(1, 4, 2, 1, 1, bytes((0x80, 0x40, 0, 0))), [(3, 4, 5), (6, 7, 8)]),
        (pcx(4, 1, 2, 1, 2, bytes((0x2F, 0))), [(6, 7, 8), (45, 46, 47)]),
    ],
)
def test_pcx_images(image: bytes, pixels: list[tuple[int, int, int]]) -> None:
    width, height, rows = _picture._decode(image)
    assert (width, height) == (len(pixels), 1)
    assert rows == [bytes(value for pixel in pixels for value in pixel)]


@pytest.mark.parametrize(
    "image, words",
    [
        (b"", "no PCX"),
        (b"GIF89a" + bytes(200), "no PCX"),
        (pcx(8, 1, 65535, 65535, 65535, b""), "claims"),
        (pcx(8, 1, 4, 4, 4, b"\xc1"), "cut short"),
        (pcx(8, 2, 4, 4, 4, b""), "not supported"),
        (pcx(8, 1, 8, 1, 2, bytes(8)), "too short"),
    ],
)
def test_damaged_pcx_images(image: bytes, words: str) -> None:
    with pytest.raises(ValueError, match=words):
        _picture.pcx_to_png(image)


def events_of(path: Path) -> list[dict[str, Any]]:
    return [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]


def test_a_trace_file_holds_every_transfer(
    instrument: Instrument, quick_waits: list[float], tmp_path: Path
) -> None:
    path = tmp_path / "session.ndjson"
    with qkel4x.open(instrument.resource, trace_file=path) as kel:
        assert isinstance(kel.MeasureRfLevel, float)
    header, *events = events_of(path)
    assert (header["trace"], header["format"], header["program"]) == ("kel4x", 1, "qkel4x")
    assert header["secrets"].startswith("none")
    sent = [event["text"] for event in events if event["direction"] == "sent"]
    assert sent[-3:] == ["READ:RF:LEVEL?", "SYST:ERR?", "SYST:LOC"]
    opened = [event for event in events if event.get("class") == "QPort.clsEthernet"]
    assert opened[0]["settings"]["TCP/IP.Port"] == str(instrument.port)
    assert events[-1]["direction"] == "closed"


def test_the_environment_may_name_a_trace_file_for_all_sessions(
    monkeypatch: pytest.MonkeyPatch, tmp_path: Path
) -> None:
    monkeypatch.setenv("QKEL4X_TRACE_FILE", str(tmp_path / "%p.ndjson"))
    for _ in range(2):
        with qkel4x.open("SIM") as kel:
            assert kel.ModelNumber != ""
    monkeypatch.setenv("QKEL4X_TRACE_FILE", str(tmp_path / "other.ndjson"))
    with qkel4x.open("SIM"):
        pass
    events = events_of(tmp_path / f"{os.getpid()}.ndjson")
    assert [event.get("text") for event in events].count("SYST:REM") == 2


def test_a_trace_file_that_cannot_be_had_is_an_error_and_a_full_disk_a_warning(tmp_path: Path) -> None:
    with pytest.raises(qkel4x.AutomationError, match="none/t.ndjson cannot be opened") as raised:
        qkel4x.open("SIM", trace_file=tmp_path / "none" / "t.ndjson")
    assert raised.value.number == 75
    with pytest.warns(RuntimeWarning, match="not complete: No space left"):
        with qkel4x.open("SIM", trace_file="/dev/full") as kel:
            assert kel.ModelNumber != ""

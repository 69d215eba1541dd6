"""Every example runs, against a simulated instrument in another process."""

from __future__ import annotations

import csv
import importlib.util
from pathlib import Path
from typing import Any

import pytest
from conftest import Instrument

FOLDER = Path(__file__).parents[1] / "examples"


def example(name: str) -> Any:
    spec = importlib.util.spec_from_file_location(name, FOLDER / f"{name}.py")
    assert spec is not None and spec.loader is not None
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def test_every_example_is_run_here() -> None:
    assert {path.stem for path in FOLDER.glob("*.py")} == {"acceptance", "long_watch", "own_transport"}


def test_acceptance(
    instrument: Instrument, quick_waits: list[float], tmp_path: Path, capsys: pytest.CaptureFixture[str]
) -> None:
    report = tmp_path / "report.html"
    code = example("acceptance").main([instrument.resource, "--frequency", "473e6", "--report", str(report)])
    out = capsys.readouterr().out
    page = report.read_text("utf-8")
    assert code == (0 if "FAIL" not in out else 1)
    assert "MeasureVsbMerRmsDb" in out and out.splitlines()[-1].endswith(str(report))
    assert page.count("<svg") == 2 and page.count("<circle") >= 10
    assert "473.000000 MHz" in page
    assert "http" not in page


def test_acceptance_limits() -> None:
    module = example("acceptance")
    limit = module.Limit("x", 1.0, 2.0, "")
    assert [module.verdict(limit, value) for value in (0.9, 1.0, 2.0, 2.1)] == [False, True, True, False]


def test_long_watch(
    instrument: Instrument, quick_waits: list[float], tmp_path: Path, capsys: pytest.CaptureFixture[str]
) -> None:
    log = tmp_path / "watch.csv"
    arguments = [instrument.resource, "MeasureRfLevel", "MeasureVsbMerPeakPct", "--every", "0.01", "--log", str(log)]
    for rounds in (3, 2):
        assert example("long_watch").main([*arguments, "--rounds", str(rounds)]) == 0
    rows = list(csv.DictReader(log.read_text("utf-8").splitlines()))
    assert len(rows) == 5
    assert all(float(row["MeasureRfLevel"]) != 0 for row in rows)
    # The second needs another measurement mode: its cell is empty and the row says why.
    assert all(row["MeasureVsbMerPeakPct"] == "" and "2016" in row["errors"] for row in rows)


def test_own_transport(instrument: Instrument, quick_waits: list[float], capsys: pytest.CaptureFixture[str]) -> None:
    assert example("own_transport").main(["127.0.0.1", str(instrument.port)]) == 0
    lines = capsys.readouterr().out.splitlines()
    assert lines[1:4] == ["> SYST:ERR?", '< 0,"No error"', "> *CLS;*SRE 0;*ESE 0"]
    assert lines[-1] == "> SYST:LOC"


def test_own_transport_without_an_instrument(quick_waits: list[float], capsys: pytest.CaptureFixture[str]) -> None:
    assert example("own_transport").main(["127.0.0.1", "1"]) == 1
    assert capsys.readouterr().out == "the instrument did not answer\n"

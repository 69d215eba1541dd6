"""The member cases, through Python: the files that every other door of the driver runs too."""

from __future__ import annotations

import datetime
import math
import os
from pathlib import Path
from typing import Any

import pytest
import qkel4x
from scripted import BASE, Case, Host, all_cases, talk

CASES = list(all_cases(Path(os.environ["QKEL4X_CASES"])))
STEP_KEYS = {
    *("get", "put", "call", "simulation", "setting", "write", "statistics", "release", "interface", "args", "value"),
    *("fields", "buffer", "buffer_after", "prefix", "response", "postfix", "timeout_after", "talk", "log", "error"),
}
EPOCH = datetime.datetime(1899, 12, 30)


def in_case_terms(value: Any) -> Any:
    """A value as the case files have it."""
    if isinstance(value, datetime.datetime):
        return (value - EPOCH) / datetime.timedelta(days=1)
    if isinstance(value, datetime.timedelta):
        return value / datetime.timedelta(days=1)
    return value


def agree(expected: Any, actual: Any) -> bool:
    if isinstance(expected, bool) or isinstance(actual, bool):
        return expected is actual
    if isinstance(expected, float):
        return isinstance(actual, float) and math.isclose(expected, actual, rel_tol=1e-12)
    if isinstance(expected, int):
        return isinstance(actual, int) and expected == actual
    return isinstance(actual, str) and expected == actual


def compare(what: str, expected: Any, actual: Any) -> None:
    actual = in_case_terms(actual)
    assert agree(expected, actual), f"{what}: expected {expected!r}, got {actual!r}"


class Run:
    def __init__(self, case: Case) -> None:
        self.case = case
        self.host = Host()
        self.statistics: Any = None
        self.image: bytes | None = None
        self.driver: Any = qkel4x.clsKEL4x()
        settings = self.driver.IDriverSetup.Settings
        settings.Item("Remote Control").SetValue(-1, -1, case.port)
        settings.Item("Log Messages").SetValue(-1, -1, "Yes" if case.log else "No")
        if case.start == "on line":
            self.driver.IDriverSetup.OnLine = True
            assert self.driver.IDriverSetup.OnLine is True
        if case.mode is not None:
            self.driver.MeasureMode = case.mode
        if self.host.port is not None:
            self.host.port.seconds = case.timeout
        self.host.simulation = case.simulation

    def step(self, step: dict[str, Any]) -> None:
        assert set(step) <= STEP_KEYS, f"unknown keys {set(step) - STEP_KEYS}"
        self.host.expect(talk(step.get("talk", []), self.case.port != "QPort.clsGUI"))
        expected = step.get("error")
        try:
            self.act(step)
        except qkel4x.AutomationError as error:
            self.settle(step)
            self.compare_error(expected, error)
        else:
            self.settle(step)
            assert expected is None, f"expected the error {expected}"
        self.compare_state(step)

    def act(self, step: dict[str, Any]) -> None:
        target = getattr(self.driver, step["interface"]) if "interface" in step else self.driver
        if "get" in step:
            value = getattr(target, step["get"])
            if step["get"] == "ScreenShot":
                self.image = None
                value, self.image = value(*step["args"])
                assert self.image is None or isinstance(self.image, bytes)
            elif "args" in step:
                value = value(*step["args"])
            if isinstance(value, qkel4x.clsStatistics):
                assert value is not self.statistics
                self.statistics = value
            if "value" in step:
                compare(step["get"], step["value"], value)
        elif "put" in step:
            setattr(target, step["put"], step["value"])
        elif "call" in step:
            assert getattr(target, step["call"])() is None
        elif "simulation" in step:
            self.host.simulation = step["simulation"]
        elif "setting" in step:
            node = self.driver.IDriverSetup.Settings.Item(step["setting"])
            if "write" in step:
                # The script's tree takes what is on no list, too.
                if node.OptionList and str(step["write"]) not in node.OptionList:
                    node.OptionList += f",{step['write']}"
                node.SetValue(-1, -1, step["write"])
            else:
                compare(step["setting"], step["value"], node.GetValue(-1, -1))
        elif "statistics" in step:
            self.statistics = qkel4x.clsStatistics()
            self.statistics.Statistics = step["statistics"]
        else:
            assert step["release"] is True
            del target
            self.driver = None

    def settle(self, step: dict[str, Any]) -> None:
        self.host.check()
        assert self.host.log == step.get("log", [])

    def compare_error(self, expected: dict[str, Any] | None, error: qkel4x.AutomationError) -> None:
        if expected is None:
            raise error
        number = BASE + expected["code"] - 2**32 if "code" in expected else expected["number"]
        wanted = (number, expected.get("source", error.source), expected.get("description", error.description))
        assert (error.number, error.source, error.description) == wanted
        if error.source.startswith("clsKEL4x."):
            assert self.host.raised[-1] == wanted
        if error.source == "QPort":
            # An error that passes is the very one that the port raised.
            assert error in [event.failure for event in self.host.script]

    def compare_state(self, step: dict[str, Any]) -> None:
        for name, expected in step.get("fields", {}).items():
            compare(name, expected, getattr(self.statistics, name))
        if "buffer_after" in step and (self.image is not None or step["buffer_after"] != step.get("buffer", "")):
            (after,) = talk(["block 0 " + step["buffer_after"]])
            assert self.image == after.block
        for key, member in (("prefix", "Prefix"), ("response", "ResponseString"), ("postfix", "Postfix")):
            if key in step:
                compare(member, step[key], getattr(self.driver, member))
        if "timeout_after" in step:
            assert self.host.port is not None
            assert self.host.port.seconds == step["timeout_after"]


def test_there_are_cases() -> None:
    assert len(CASES) > 100


@pytest.mark.parametrize("case", CASES, ids=lambda case: f"{case.file}-{case.name}-{case.mode}")
def test_member_case(case: Case) -> None:
    with qkel4x.host.isolated():
        run = Run(case)
        for step in case.steps:
            run.step(step)

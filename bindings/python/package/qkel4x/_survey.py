"""The survey: every measurement with its value, unit, status word and mode."""

from __future__ import annotations

import os
import re
from collections.abc import Callable, Iterable
from dataclasses import dataclass, fields
from typing import Any, TextIO

from . import _core
from ._errors import AutomationError

_LEVEL_UNITS = {0: "dBmV", 1: "dBpW", 2: "dBµW", 3: "dBm", 4: "dBµV", 5: "mV"}
_SCALE_UNITS = {0: "µs", 1: "km", 2: "mi"}
_LINK_NOT_OPEN = 2010


@dataclass(frozen=True)
class Reading:
    """One measured value.

    name    the member, with its index where it has one
    value   None where the reading failed
    unit    of the value; empty where it has none
    status  the status word of the reply, "---" where there is no valid value
    mode    the measurement mode in which it was read
    error   why the reading failed; empty where it did not
    """

    name: str
    value: float | int | bool | str | None
    unit: str
    status: str
    mode: str
    error: str = ""


class Readings(list[Reading]):
    """The readings of a survey: a list that prints as a table, also in a notebook."""

    def __getitem__(self, key: Any) -> Any:
        """By position, or by the name of a reading."""
        if isinstance(key, str):
            for reading in self:
                if reading.name == key:
                    return reading
            raise KeyError(f"there is no reading of {key}")
        return super().__getitem__(key)

    def _rows(self) -> list[list[str]]:
        return [
            [
                reading.name,
                reading.error if reading.error else _shown(reading),
                reading.unit if not reading.error else "",
                reading.status,
                reading.mode,
            ]
            for reading in self
        ]

    def __str__(self) -> str:
        rows = [["Measurement", "Value", "Unit", "Status", "Mode"], *self._rows()]
        # An error's text may be long: it does not widen the column of the values.
        widths = [max(len(row[i]) for row in rows if i != 1 or len(row[i]) < 20) for i in range(5)]
        return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows)

    def _repr_html_(self) -> str:
        import html

        head = "".join(f"<th>{title}</th>" for title in ("Measurement", "Value", "Unit", "Status", "Mode"))
        body = "".join(
            "<tr>" + "".join(f"<td>{html.escape(cell)}</td>" for cell in row) + "</tr>" for row in self._rows()
        )
        return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>"

    def to_csv(self, target: str | os.PathLike[str] | TextIO | None = None) -> str | None:
        """Write the readings as CSV, one line each under a head line, to a path or an open file; as a str without."""
        import csv
        import io

        text = io.StringIO()
        writer = csv.writer(text, lineterminator="\n")
        names = [field.name for field in fields(Reading)]
        writer.writerow(names)
        for reading in self:
            writer.writerow([getattr(reading, name) for name in names])
        if target is None:
            return text.getvalue()
        if isinstance(target, (str, os.PathLike)):
            with open(target, "w", encoding="utf-8", newline="") as file:
                file.write(text.getvalue())
        else:
            target.write(text.getvalue())
        return None


@dataclass(frozen=True)
class _Target:
    """One value to read: a member, or one index of an indexed one."""

    member: str
    index: int | None
    unit: str
    modes: tuple[int, ...]

    @property
    def name(self) -> str:
        return self.member if self.index is None else f"{self.member}({self.index})"

    def read(self, driver: _core.clsKEL4x) -> Any:
        value = getattr(driver, self.member)
        return value if self.index is None else value(self.index)


def _targets() -> list[_Target]:
    """All that can be measured: every read-only number and flag, and every index of the indexed ones."""
    targets = []
    rows = next(row for row in _core.member_table() if row["name"] == "clsKEL4x")["members"]
    # An indexed member is read in the mode in which the instrument measures it.
    stores = {
        "Ghost": (int(_core.KelMeasureModes.kelEPAT),),
        "Amplitude": (int(_core.KelMeasureModes.kelAJIT),),
        "Phase": (int(_core.KelMeasureModes.kelPJIT),),
    }
    for row in rows:
        if row["hidden"] or row["writable"] or row["type"] not in ("float", "int", "bool"):
            continue
        if row["kind"] == "property":
            targets.append(_Target(row["name"], None, row["unit"], tuple(row["modes"])))
        elif row["kind"] == "indexed property" and (match := re.search(r"(\d+) to (\d+)", row["range"])):
            modes = next(modes for start, modes in stores.items() if row["name"].startswith(start))
            for index in range(int(match[1]), int(match[2]) + 1):
                targets.append(_Target(row["name"], index, row["unit"], modes))
    return targets


def _chosen(names: Iterable[str] | None) -> list[_Target]:
    targets = _targets()
    if names is None:
        return targets
    chosen = []
    for name in names:
        found = [target for target in targets if name in (target.member, target.name)]
        if not found:
            import difflib

            nearest = difflib.get_close_matches(name, [target.member for target in targets], 1, 0.0)[0]
            raise ValueError(f"a survey cannot read {name!r}; the nearest measurement is {nearest!r}")
        chosen += found
    return chosen


def _ordered(targets: list[_Target], mode: int) -> list[tuple[int, list[_Target]]]:
    """Modes in the order that switches least, each with what is read in it; the current mode comes first."""
    left = list(targets)
    order: list[tuple[int, list[_Target]]] = []
    while left:
        counts = {wanted: 0 for target in left for wanted in target.modes}
        for target in left:
            for wanted in target.modes:
                counts[wanted] += 1
        if order and counts:
            mode = max(counts, key=lambda wanted: (counts[wanted], -wanted))
        here = [target for target in left if not target.modes or mode in target.modes]
        left = [target for target in left if target not in here]
        order.append((mode, here))
    return order


def _unit(driver: _core.clsKEL4x, unit: str) -> str:
    if unit == "as SetupLevelUnit":
        return _LEVEL_UNITS.get(int(driver.SetupLevelUnit), "")
    if unit == "as MeasureTdEchoPatScale":
        return _SCALE_UNITS.get(int(driver.MeasureTdEchoPatScale), "")
    return unit


def _shown(reading: Reading) -> str:
    if reading.status == "---" or reading.value is None:
        return "---"
    return f"{reading.value:.6g}" if isinstance(reading.value, float) else str(reading.value)


def _explained(error: AutomationError) -> str:
    cause = error.__cause__
    return f"{error}: {cause.description}" if isinstance(cause, AutomationError) else str(error)


def _link_is_gone(error: AutomationError) -> bool:
    cause = error.__cause__
    return isinstance(cause, AutomationError) and cause.code == _LINK_NOT_OPEN


def survey(
    driver: _core.clsKEL4x,
    names: Iterable[str] | None = None,
    progress: Callable[[Reading, int, int], object] | None = None,
) -> Readings:
    """See Session.survey."""
    targets = _chosen(names)
    first_mode = driver.MeasureMode
    mode = int(first_mode)
    readings: dict[str, Reading] = {}
    lost = ""
    try:
        for wanted, here in _ordered(targets, mode):
            refused = ""
            if wanted != mode and here and not lost:
                try:
                    driver.MeasureMode = wanted
                    mode = wanted
                except AutomationError as error:
                    refused = _explained(error)
                    lost = refused if _link_is_gone(error) else ""
            for target in here:
                mode_name = _mode_name(wanted)
                if lost or refused:
                    reading = Reading(target.name, None, "", "", mode_name, lost or refused)
                else:
                    try:
                        value = target.read(driver)
                        status = driver.Prefix if isinstance(value, float) or not isinstance(value, bool) else ""
                        reading = Reading(target.name, value, _unit(driver, target.unit), status, mode_name)
                    except AutomationError as error:
                        reading = Reading(target.name, None, "", "", mode_name, _explained(error))
                        lost = reading.error if _link_is_gone(error) else ""
                readings[target.name] = reading
                if progress is not None:
                    progress(reading, len(readings), len(targets))
    finally:
        if mode != int(first_mode) and not lost:
            driver.MeasureMode = first_mode
    return Readings(readings[target.name] for target in targets)


def _mode_name(mode: int) -> str:
    try:
        return _core.KelMeasureModes(mode).name
    except ValueError:
        return str(mode)

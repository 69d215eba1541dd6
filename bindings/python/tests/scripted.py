"""A host written in Python whose ports follow a script, for the member cases and whoever wants exact conversations."""

from __future__ import annotations

import tomllib
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

import qkel4x

BASE = 0x80040000
NO_ERROR = '0,"No error"'
PORTS = ("QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet", "QPort.clsGUI")


@dataclass
class Event:
    line: str  # as it is compared
    reply: str | None = None
    on: bool = True
    block: bytes = b""
    failure: qkel4x.AutomationError | None = None


def talk(lines: list[str], drains: bool = True) -> list[Event]:
    """The events of a conversation in the words of the case files."""
    events: list[Event] = []
    for line in lines:
        if line.startswith(">> "):
            events.append(Event(line))
        elif line.startswith("> "):
            if drains:
                events.append(Event(">> SYST:ERR?", NO_ERROR))
            events.append(Event(">> " + line[2:]))
        elif line == "<" or line.startswith("< "):
            assert events[-1].reply is None, "a reply belongs to the text above it"
            events[-1].reply = line[2:]
        elif line.startswith("! ") or line.startswith("!! "):
            mark, number, *text = line.split(" ", 2)
            base = BASE if mark == "!" else 0
            events[-1].failure = qkel4x.AutomationError(base + int(number), "QPort", "".join(text))
        elif line.startswith("block "):
            _, count, *words = line.split()
            block = b""
            for word in words:
                byte, _, times = word.partition("*")
                block += bytes.fromhex(byte) * int(times or 1)
            events.append(Event(f"block {count}", block=block))
        elif line == "open in vain":
            events.append(Event("open", on=False))
        else:
            assert line.split()[0] in ("wait", "timeout", "open", "close", "reporting", "kind"), f"no such event: {line}"
            events.append(Event(line))
    return events


def number(value: float) -> str:
    return f"{value:g}"


def settings(class_name: str) -> qkel4x.ParameterNode:
    """The settings of a scripted port."""
    group, names = {
        "QPort.clsGPIB": ("GPIB", {"Primary Address": 1, "Secondary Address": 0}),
        "QPort.clsComm": (
            "RS232",
            dict.fromkeys(
                ("Comm Port", "Baud Rate", "Data Bits", "Parity", "Stop Bits", "Handshaking"), "untouched"
            ),
        ),
        "QPort.clsEthernet": ("TCP/IP", {"Address": "192.0.2.1"}),
        "QPort.clsGUI": ("GUI", {}),
    }[class_name]
    tree = qkel4x.ParameterNode()
    tree.Initialise(group, 4, 3, "", "")
    for name, value in names.items():
        if name == "Comm Port":
            tree.AddChild(name, 1, 2, "", "").SetValue(-1, -1, value)
        else:
            tree.AddChild(name, 1, 4, "", "").SetValue(-1, -1, value)
    return tree


class Port:
    """A transport that does what the script of its host says."""

    def __init__(self, host: Host, class_name: str) -> None:
        self._host = host
        self._class_name = class_name
        self._on_line = False
        self.seconds = 5.0
        self.Name = ""
        self.Settings = settings(class_name)
        host.port = self

    @property
    def OnLine(self) -> bool:
        return self._on_line

    @OnLine.setter
    def OnLine(self, on_line: bool) -> None:
        if self._host.passing and self._class_name == "QPort.clsComm":
            value = self.Settings.Item("Comm Port").GetValue(-1, -1)
            if on_line and value != "1":
                raise qkel4x.AutomationError(BASE + 2010, "QPort", "No such port")
            self._on_line = on_line
            return
        self._on_line = self._host.next("open" if on_line else "close").on and on_line

    @property
    def Timeout(self) -> float:
        return self.seconds

    @Timeout.setter
    def Timeout(self, seconds: float) -> None:
        self._host.next("timeout " + number(seconds))
        self.seconds = seconds

    def Write(self, command: str) -> None:
        self.Exchange(command, False)

    def Exchange(self, command: str, want_reply: bool) -> str | None:
        event = self._host.next(">> " + command, want_reply)
        return event.reply if want_reply else None

    def Query(self, command: str | None = None) -> str | None:
        return self.Exchange(command or "", True)

    def ReadBlock(self, count: int, command: str | None = None) -> bytes:
        if command is not None:
            self.Exchange(command, False)
        return self._host.next(f"block {count}").block

    def WriteBlock(self, format: int, data: bytes, command: str | None = None) -> None:
        self.Exchange(command or "", False)


class Host:
    """Replaces every part of the host; for use inside qkel4x.host.isolated()."""

    def __init__(self) -> None:
        self.passing = True
        self.simulation = False
        self.port: Port | None = None
        self.script: list[Event] = []
        self.position = 0
        self.complaint = ""
        self.log: list[str] = []
        self.raised: list[tuple[int, str, str]] = []
        self._reporting = True
        for name in PORTS:
            qkel4x.host.register_class(name, lambda name=name: Port(self, name))
        qkel4x.host.set_wait(lambda seconds: self.next("wait " + number(seconds)))
        qkel4x.host.set_simulation(lambda: self.simulation)
        qkel4x.host.set_log(self)
        qkel4x.host.set_reporter(self)

    def expect(self, events: list[Event]) -> None:
        self.passing = False
        self.script, self.position, self.complaint = events, 0, ""
        self.log.clear()
        self.raised.clear()

    def next(self, line: str, want_reply: bool | None = None) -> Event:
        if self.passing:
            return Event(line, NO_ERROR if want_reply else None)
        if not self.complaint:
            if self.position == len(self.script):
                self.complaint = f"nothing more was expected, but: {line}"
            elif (expected := self.script[self.position]).line != line:
                self.complaint = f"event {self.position + 1}: expected {expected.line}, but: {line}"
            elif want_reply is not None and not expected.failure and want_reply != (expected.reply is not None):
                wants = "asks for a reply" if want_reply else "leaves the reply unread"
                self.complaint = f"event {self.position + 1}: {line} {wants}"
            else:
                self.position += 1
                if expected.failure:
                    raise expected.failure
                return expected
        raise qkel4x.AutomationError(BASE + 2009, "script", self.complaint)

    def check(self) -> None:
        assert not self.complaint, self.complaint
        left = [event.line for event in self.script[self.position :]]
        assert self.passing or not left, f"did not happen: {left}"

    # The message log.

    def Append(self, kind: int, source: str, text: str, detail: str) -> None:
        assert source == "KEL"
        assert (detail if kind == 6 else text) == ""
        self.log.append(f"{kind} {text if kind == 6 else detail}")

    def KindEnabled(self, kind: int, enabled: bool) -> None:
        self.next(f"kind {kind} {'on' if enabled else 'off'}")

    # The error reporter.

    @property
    def ReportingEnabled(self) -> bool:
        return self._reporting

    @ReportingEnabled.setter
    def ReportingEnabled(self, enabled: bool) -> None:
        self._reporting = enabled
        self.next(f"reporting {'on' if enabled else 'off'}")

    def Raise(self, number: int, source: str, description: str) -> None:
        self.raised.append((number, source, description))
        raise qkel4x.AutomationError(number, source, description)


@dataclass
class Case:
    file: str
    name: str
    steps: list[dict[str, Any]]
    port: str = "QPort.clsEthernet"
    start: str = "on line"
    modes: list[int] = field(default_factory=list)
    simulation: bool = False
    log: bool = False
    timeout: float = 5
    mode: int | None = None


def all_cases(folder: Path) -> Iterator[Case]:
    for path in sorted(folder.glob("*.toml")):
        for table in tomllib.loads(path.read_text("utf-8"))["case"]:
            modes = table.pop("modes", [None])
            for mode in modes:
                yield Case(path.stem, mode=mode, **table)

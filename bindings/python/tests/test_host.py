"""The host side: what Python code may replace, and what reaches the driver from there."""

from __future__ import annotations

import gc
import weakref
from typing import Any

import pytest
import qkel4x
from scripted import BASE, Event, Host, settings, talk


class Echo:
    """The smallest useful port: an attribute OnLine comes by itself when it is written."""

    def __init__(self) -> None:
        self.commands: list[str] = []

    def Exchange(self, command: str, want_reply: bool) -> str | None:
        self.commands.append(command)
        return '0,"No error"' if command == "SYST:ERR?" else "-45.3"


def on_line(class_name: str = "QPort.clsEthernet", **values: Any) -> Any:
    qkel4x.host.set_wait(lambda seconds: None)
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, class_name)
    driver.IDriverSetup.OnLine = True
    return driver


def test_the_smallest_port_serves() -> None:
    port = Echo()
    qkel4x.host.register_class("QPort.clsEthernet", lambda: port)
    driver = on_line()
    assert driver.IDriverSetup.OnLine is True
    assert driver.MeasureRfLevel == -45.3
    assert port.commands == [
        *("SYST:ERR?", "*CLS;*SRE 0;*ESE 0", "SYST:ERR?", "SYST:REM", "SYST:ERR?", "READ:RF:LEVEL?")
    ]
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.ScreenShot(2)
    assert raised.value.description == "Get ScreenShot failed"
    cause = raised.value.__cause__
    assert isinstance(cause, qkel4x.AutomationError) and cause.number == 13


@pytest.mark.parametrize("name", ["QPort.clsEthernet", "qport.CLSETHERNET"])
def test_names_count_in_any_letter_case(name: str) -> None:
    qkel4x.host.register_class(name, Echo)
    assert on_line().MeasureRfLevel == -45.3


def test_each_of_the_four_ports_can_be_replaced_without_settings() -> None:
    for name in ("QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet", "QPort.clsGUI"):
        qkel4x.host.register_class(name, Echo)
    names = [node.Name for node in qkel4x.clsKEL4x().IDriverSetup.Settings]
    assert names[-4:] == ["GPIB", "RS232", "TCP/IP", "GUI"]
    for name in ("QPort.clsGPIB", "QPort.clsComm", "QPort.clsEthernet", "QPort.clsGUI"):
        assert on_line(name).MeasureRfLevel == -45.3


def test_an_unnamed_group_of_settings_takes_the_ports_name() -> None:
    class Port(Echo):
        def __init__(self) -> None:
            super().__init__()
            self.Settings = qkel4x.ParameterNode()
            self.Settings.AddChild("Answer", 1, 4).SetValue(-1, -1, "here")

    qkel4x.host.register_class("QPort.clsEthernet", Port)
    qkel4x.host.register_class("QPort.clsGUI", Port)
    assert qkel4x.clsKEL4x().IDriverSetup.Settings.Item("QPort.clsGUI.Answer").GetValue(-1, -1) == "here"


def test_a_foreign_settings_tree_serves() -> None:
    class Node:
        def __init__(self, name: str, value: Any = "", children: tuple[Any, ...] = ()) -> None:
            self.Name, self.OptionList, self.ReadOnly = name, "", False
            self.value, self.children = value, children

        def __iter__(self) -> Any:
            return iter(self.children)

        def Item(self, path: str) -> Any:
            return next(child for child in self.children if child.Name == path)

        def GetValue(self, i: int, j: int) -> Any:
            return self.value

        def SetValue(self, i: int, j: int, value: Any) -> None:
            self.value = value

    made: list[Any] = []

    class Port(Echo):
        def __init__(self) -> None:
            super().__init__()
            self.Settings = Node("GPIB", children=(Node("Primary Address", 1), Node("Speed", "slow")))
            made.append(self)

    qkel4x.host.register_class("QPort.clsGPIB", Port)
    qkel4x.host.set_wait(lambda seconds: None)
    driver = qkel4x.clsKEL4x()
    assert made[0].Settings.Item("Primary Address").value == 6
    driver.IDriverSetup.Settings.Item("GPIB.Speed").SetValue(-1, -1, "fast")
    driver.IDriverSetup.OnLine = True
    assert made[-1].Settings.Item("Speed").value == "fast"
    assert made[0].Settings.Item("Speed").value == "slow"


def test_serial_ports_open_as_the_host_says() -> None:
    class Serial:
        def __init__(self) -> None:
            self.Settings = settings("QPort.clsComm")
            self.on = False

        @property
        def OnLine(self) -> bool:
            return self.on

        @OnLine.setter
        def OnLine(self, on: bool) -> None:
            if on and self.Settings.Item("Comm Port").GetValue(-1, -1) not in ("1", "3"):
                raise OSError("no such port")
            self.on = on

    qkel4x.host.register_class("QPort.clsComm", Serial)
    node = qkel4x.clsKEL4x().IDriverSetup.Settings.Item("RS232.Comm Port")
    assert (node.OptionList, node.GetValue(-1, -1)) == ("COM1=1,COM3=3", "1")


def test_no_serial_port_no_driver() -> None:
    class Serial:
        def __init__(self) -> None:
            self.Settings = settings("QPort.clsComm")

        OnLine = property(lambda self: False, lambda self, on: None)

    qkel4x.host.register_class("QPort.clsComm", Serial)
    with pytest.raises(qkel4x.AutomationError) as raised:
        qkel4x.clsKEL4x()
    assert raised.value.code == 380
    assert raised.value.description == "Invalid Property Value (intIndex = 0)"


def test_without_any_replacement_the_driver_can_be_made() -> None:
    settings = qkel4x.clsKEL4x().IDriverSetup.Settings
    assert settings.Item("Remote Control").GetValue(-1, -1) == "QPort.clsGPIB"
    assert settings.Item("RS232.Comm Port").OptionList != ""


@pytest.mark.parametrize("number", [BASE + 2011, BASE + 2011 - 2**32])
def test_a_link_error_gets_the_instruments_entry(driver: Any, host: Host, number: int) -> None:
    script = talk(["> READ:RF:LEVEL?", ">> SYST:ERR?", '< -113,"Undefined header"'])
    link_error = script[1].failure = qkel4x.AutomationError(number, "QPort", "cable")
    host.expect(script)
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.MeasureRfLevel
    assert raised.value.number == BASE + 2004 - 2**32
    assert raised.value.description == 'Get MeasureRfLevel failed.  Error : -113,"Undefined header"'
    host.check()
    assert link_error.number == BASE + 2011 - 2**32


def test_an_automation_error_passes_unchanged(driver: Any, host: Host) -> None:
    script = talk(["> READ:RF:LEVEL?", "!! 40006 untouched"])
    host.expect(script)
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.MeasureRfLevel
    assert raised.value is script[1].failure


def test_any_other_exception_is_wrapped_and_chained() -> None:
    class Port(Echo):
        def Exchange(self, command: str, want_reply: bool) -> str | None:
            if command == "READ:RF:LEVEL?":
                raise LookupError("the cable is gone")
            return super().Exchange(command, want_reply)

    qkel4x.host.register_class("QPort.clsEthernet", Port)
    driver = on_line()
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.MeasureRfLevel
    assert raised.value.description == "Get MeasureRfLevel failed"
    assert isinstance(raised.value.__cause__, LookupError)
    # A refusal that has no cause shows none, whatever failed before.
    with pytest.raises(qkel4x.AutomationError) as refused:
        driver.RfCenterFrequency = 1
    assert refused.value.__cause__ is None


def test_a_reply_that_is_no_text_is_a_type_mismatch(quick_waits: list[float]) -> None:
    class Port(Echo):
        def Exchange(self, command: str, want_reply: bool) -> Any:
            super().Exchange(command, want_reply)
            return 7 if command == "READ:RF:LEVEL?" else '0,"No error"'

    port = Port()
    qkel4x.host.register_class("QPort.clsEthernet", lambda: port)
    qkel4x.host.set_wait(quick_waits.append)
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    driver.IDriverSetup.OnLine = True
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.MeasureRfLevel
    cause = raised.value.__cause__
    assert isinstance(cause, qkel4x.AutomationError) and cause.number == 13
    assert port.commands.count("READ:RF:LEVEL?") == 11
    assert quick_waits == [1.0] * 11


def test_an_interruption_of_the_host_ends_the_call() -> None:
    class Stop(BaseException):
        pass

    class Port(Echo):
        def Exchange(self, command: str, want_reply: bool) -> str | None:
            if command == "READ:RF:LEVEL?":
                raise Stop
            return super().Exchange(command, want_reply)

    port = Port()
    qkel4x.host.register_class("QPort.clsEthernet", lambda: port)
    driver = on_line()
    with pytest.raises(Stop):
        driver.MeasureRfLevel
    # Nothing more went out, and the next call works.
    assert port.commands[-1] == "SYST:ERR?" and port.commands.count("SYST:ERR?") == 3
    driver.AlarmRegisterClear()


def test_an_interruption_while_going_on_line_is_not_swallowed() -> None:
    class Port(Echo):
        def Exchange(self, command: str, want_reply: bool) -> str | None:
            if command == "SYST:REM":
                raise KeyboardInterrupt
            return super().Exchange(command, want_reply)

    qkel4x.host.register_class("QPort.clsEthernet", Port)
    qkel4x.host.set_wait(lambda seconds: None)
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    with pytest.raises(KeyboardInterrupt):
        driver.IDriverSetup.OnLine = True
    assert driver.IDriverSetup.OnLine is False


def test_simulation_is_a_flag_or_a_function(driver: Any, host: Host) -> None:
    host.passing = True
    for flag in (True, lambda: True):
        qkel4x.host.set_simulation(flag)
        assert driver.Identity == ""
    qkel4x.host.set_simulation(False)
    assert driver.Identity == '0,"No error'


def test_the_log_may_be_a_function(driver: Any, host: Host) -> None:
    lines: list[tuple[int, str, str, str]] = []
    qkel4x.host.set_log(lambda *line: lines.append(line))
    driver.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "Yes")
    host.expect(talk(["> READ:RF:LEVEL?", "< -45.3"]))
    driver.MeasureRfLevel
    assert lines == [
        *((6, "KEL", "SYST:ERR?", ""), (5, "KEL", "", '0,"No error"')),
        *((6, "KEL", "READ:RF:LEVEL?", ""), (5, "KEL", "", "-45.3")),
    ]


def test_a_log_that_fails_does_not_fail_the_reading(driver: Any, host: Host) -> None:
    def broken(*line: Any) -> None:
        raise OSError("disk full")

    qkel4x.host.set_log(broken)
    driver.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "Yes")
    host.expect(talk(["> READ:RF:LEVEL?", "< -45.3"]))
    assert driver.MeasureRfLevel == -45.3


def test_a_reporter_that_only_records_fails_the_call_all_the_same(driver: Any) -> None:
    class Reporter:
        raised: list[Any] = []

        def Raise(self, *parts: Any) -> None:
            self.raised.append(parts)

    qkel4x.host.set_reporter(Reporter())
    with pytest.raises(qkel4x.AutomationError) as error:
        driver.RfCenterFrequency = 1
    assert Reporter.raised == [(error.value.number, error.value.source, error.value.description)]


def test_a_reporters_own_exception_reaches_the_caller(driver: Any) -> None:
    class Reporter:
        def Raise(self, number: int, source: str, description: str) -> None:
            raise ConnectionError(description)

    qkel4x.host.set_reporter(Reporter())
    with pytest.raises(ConnectionError, match="Invalid property value"):
        driver.RfCenterFrequency = 1


def test_the_probe_of_serial_ports_switches_reporting_off_and_back() -> None:
    seen: list[str] = []

    class Reporter:
        @property
        def ReportingEnabled(self) -> bool:
            return True

        @ReportingEnabled.setter
        def ReportingEnabled(self, enabled: bool) -> None:
            seen.append(f"reporting {enabled}")

    qkel4x.host.set_reporter(Reporter())
    qkel4x.clsKEL4x()
    assert seen == ["reporting False", "reporting True"] * 16


def test_isolated_puts_everything_back_also_nested_and_after_exceptions() -> None:
    waits: list[str] = []
    qkel4x.host.register_class("QPort.clsEthernet", Echo)
    qkel4x.host.set_wait(lambda seconds: waits.append("outer"))

    def probe() -> str:
        waits.clear()
        driver = qkel4x.clsKEL4x()
        driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
        try:
            driver.IDriverSetup.OnLine = True
        except qkel4x.AutomationError:
            return "no port"
        return waits[0]

    assert probe() == "outer"
    with pytest.raises(ZeroDivisionError), qkel4x.host.isolated():
        qkel4x.host.set_wait(lambda seconds: waits.append("inner"))
        with qkel4x.host.isolated():
            qkel4x.host.set_wait(lambda seconds: waits.append("innermost"))
            qkel4x.host.set_simulation(True)
            qkel4x.host.unregister_class("QPort.clsEthernet")
            qkel4x.host.register_class("QPort.clsEthernet", lambda: 1 / 0)
            with pytest.raises(ZeroDivisionError):
                qkel4x.clsKEL4x()
        assert probe() == "inner"
        raise ZeroDivisionError
    assert probe() == "outer"


def test_the_wrong_things_are_refused() -> None:
    with pytest.raises(TypeError, match="set_wait"):
        qkel4x.host.set_wait(1.0)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="register_class"):
        qkel4x.host.register_class("QPort.clsEthernet", None)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="set_log"):
        qkel4x.host.set_log(3)


def test_an_unknown_class_cannot_be_made() -> None:
    qkel4x.host.set_wait(lambda seconds: None)
    driver = qkel4x.clsKEL4x()
    node = driver.IDriverSetup.Settings.Item("Remote Control")
    node.OptionList = "Other=My.Port"
    node.SetValue(-1, -1, "Other")
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.IDriverSetup.OnLine = True
    assert raised.value.number == 429
    qkel4x.host.register_class("My.Port", Echo)
    driver.IDriverSetup.OnLine = True
    assert driver.MeasureRfLevel == -45.3


def test_ports_are_let_go() -> None:
    ports: list[Any] = []

    def make() -> Echo:
        port = Echo()
        ports.append(weakref.ref(port))
        return port

    qkel4x.host.register_class("QPort.clsEthernet", make)
    driver = on_line()
    gc.collect()
    assert [port() is not None for port in ports] == [False, True]
    driver.IDriverSetup.OnLine = False
    gc.collect()
    assert [port() for port in ports] == [None, None]


def test_a_port_may_call_a_driver_of_its_own() -> None:
    qkel4x.host.set_wait(lambda seconds: None)
    inner = Echo()
    qkel4x.host.register_class("QPort.clsGUI", lambda: inner)
    other = on_line("QPort.clsGUI")

    class Relay(Echo):
        def Exchange(self, command: str, want_reply: bool) -> str | None:
            if command == "READ:RF:LEVEL?":
                return str(other.MeasureRfLevel - 10)
            return super().Exchange(command, want_reply)

    qkel4x.host.register_class("QPort.clsEthernet", Relay)
    assert on_line().MeasureRfLevel == pytest.approx(-55.3)


# Settings trees.


def test_a_settings_tree_of_its_own() -> None:
    tree = qkel4x.ParameterNode()
    tree.Initialise("Bench", 4, 3, "", "")
    assert tree.Name == "Bench"
    speed = tree.AddChild("Speed", 1, 2, "Slow=1,Fast=2", "")
    speed.SetValue(-1, -1, "Fast")
    assert speed.GetValue(-1, -1) == "2"
    assert tree.Item("Speed").OptionList == "Slow=1,Fast=2"
    whole = qkel4x.ParameterNode()
    whole.Initialise("All", 4, 3, "", "")
    whole.AddTree(tree, -1, -1)
    assert [node.Name for node in whole] == ["Bench"]
    whole.Item("Bench.Speed").SetValue(-1, -1, 1)
    assert (whole.Item("Bench.Speed").GetValue(-1, -1), speed.GetValue(-1, -1)) == ("1", "2")
    speed.ReadOnly = True
    assert speed.ReadOnly is True
    with pytest.raises(qkel4x.AutomationError) as raised:
        speed.SetValue(-1, -1, "Slow")
    assert raised.value.number == 383
    with pytest.raises(qkel4x.AutomationError) as raised:
        tree.Item("Sped")
    assert "Speed" in raised.value.description
    with pytest.raises(TypeError):
        tree.AddTree(None)


@pytest.mark.parametrize("value", [True, 7, 2.5, "text", None])
def test_plain_settings_keep_their_type(value: Any) -> None:
    tree = qkel4x.ParameterNode()
    node = tree.AddChild("Plain", 1, 4)
    node.SetValue(-1, -1, value)
    assert node.GetValue() == value and type(node.GetValue()) is type(value)
    with pytest.raises(TypeError):
        node.SetValue(-1, -1, [])


def test_get_display_value() -> None:
    assert qkel4x.GetDisplayValue("Yes=-1,No=0", 1) == "No"
    assert qkel4x.GetDisplayValue("GPIB=QPort.clsGPIB, RS232=QPort.clsComm", 1) == " RS232"
    assert qkel4x.GetDisplayValue("A=B=C", 0) == "A"
    for index in (2, -1):
        with pytest.raises(qkel4x.AutomationError) as raised:
            qkel4x.GetDisplayValue("Yes=-1,No=0", index)
        assert raised.value.code == 380
        assert raised.value.source == "modParameterUtilities.GetDisplayValue"
        assert raised.value.description == f"Invalid Property Value (intIndex = {index})"
    with pytest.raises(qkel4x.AutomationError) as raised:
        qkel4x.GetDisplayValue("A", 40000)
    assert raised.value.number == 6


# The exception.


def test_the_parts_of_an_error() -> None:
    error = qkel4x.AutomationError(0x800407D4, "clsKEL4x.MeasureRfLevel", "Get MeasureRfLevel failed")
    assert (error.number, error.code) == (-2147219500, 2004)
    assert str(error) == "Get MeasureRfLevel failed (error 2004 in clsKEL4x.MeasureRfLevel)"
    plain = qkel4x.AutomationError(2002, "clsKEL4x.OnLine", "Driver already on-line")
    assert (plain.number, plain.code) == (2002, 2002)
    import copy
    import pickle

    for twin in (copy.copy(error), pickle.loads(pickle.dumps(error))):
        assert (twin.number, twin.source, twin.description) == (error.number, error.source, error.description)
    with pytest.raises(ValueError):
        qkel4x.AutomationError(2**32)


def test_the_script_notices_what_is_missing() -> None:
    host = Host()
    host.expect([Event("wait 1")])
    with pytest.raises(AssertionError, match="wait 1"):
        host.check()

"""The host around the drivers of this process, any part of which may be replaced from Python.

Without any replacement the package's own host serves: TCP, serial, GPIB and front-panel ports, a real clock, a message
log without readers. Replace parts only while no driver is at work; isolated() puts everything back.
"""

from __future__ import annotations

from . import _core

TYPE_CHECKING = False  # without the import of typing, which costs more than all of this module
if TYPE_CHECKING:
    from collections.abc import Callable
    from typing import Any

__all__ = [
    "isolated",
    "register_class",
    "set_log",
    "set_reporter",
    "set_simulation",
    "set_wait",
    "unregister_class",
]


def register_class(name: str, factory: Callable[[], Any]) -> None:
    """Make `factory` the maker of the transports of that programmatic name, such as "QPort.clsEthernet".

    It returns an object with the attributes Name, Settings, OnLine and Timeout (seconds) and the methods
    Write(command), Exchange(command, want_reply), Query(command=None), ReadBlock(count, command=None) and
    WriteBlock(format, data, command=None). Writing OnLine opens and closes the port; a port whose OnLine does not read
    true afterwards did not open. Settings is a ParameterNode or an object like one; left out, the port has the settings
    of the package's own port of that name. Write, Exchange and Query stand in for each other where one is left out, and
    without ReadBlock a block transfer fails with 13.

    An AutomationError that is raised there reaches the driver unchanged; a failed transfer is 0x80040000 plus 2010 (not
    open), 2011 (not sent), 2012 (bad reply) or 2013 (no reply in time), a busy port 2015. Any other exception counts as
    a failure without a number, and is the __cause__ of what the driver raises.
    """
    _core.register_class(name, factory)


def unregister_class(name: str) -> None:
    """Take a registered class away again: the package's own port of that name serves, where there is one."""
    _core.unregister_class(name)


def set_wait(function: Callable[[float], object] | None) -> None:
    """Have the driver's waits done by function(seconds); None for the real clock."""
    _core.set_wait(function)


def set_simulation(flag: bool | Callable[[], bool]) -> None:
    """Set the host's simulation flag: whether the driver is to run without an instrument. A function is asked each time."""
    _core.set_simulation(flag)


def set_log(log: Any) -> None:
    """Send the driver's messages to log(kind, source, text, detail); None for the package's own log.

    Kind 6 is a text sent (`text`), kind 5 a reply (`detail`). An object with that as its method Append does as well; its
    method KindEnabled(kind, flag), where it has one, is called when the driver switches a kind off or on.
    """
    _core.set_log(log)


def set_reporter(reporter: Any) -> None:
    """Raise the driver's errors through reporter.Raise(number, source, description); None for the package's own reporter.

    A Raise that returns fails the call all the same, with just these parts. The driver switches the attribute
    ReportingEnabled off while it probes and puts it back.
    """
    _core.set_reporter(reporter)


class isolated:
    """Put every part of the host back, at the end of the with block, as it was at its beginning."""

    def __enter__(self) -> None:
        self._state = _core.host_state()

    def __exit__(self, *error: object) -> None:
        _core.restore_host(self._state)

"""open(): a driver that is on line for the length of a with block."""

from __future__ import annotations

import os

from . import _core
from ._errors import AutomationError

TYPE_CHECKING = False  # without the import of typing
if TYPE_CHECKING:
    from collections.abc import Callable, Iterable, Mapping
    from pathlib import Path
    from types import TracebackType
    from typing import Any

    from ._survey import Reading, Readings

_LINK_NOT_OPEN = 2010


class Session(_core.clsKEL4x):
    """A driver on line. All members of clsKEL4x, and what scripts want beside them."""

    __slots__ = ("_bench", "_resource_name")

    def __init__(
        self,
        resource: str,
        settings: Mapping[str, Any] | None = None,
        trace_file: str | os.PathLike[str] | None = None,
    ) -> None:
        """As open(): prepare the driver and put it on line."""
        from . import _resource

        parsed = _resource.parse(resource)
        self._resource_name = resource
        # A driver of its own host, so that the embedded instrument's time is simulated and a device can be named.
        bench = _core.Bench(
            parsed.port == "QPort.clsGUI", parsed.serial_device, os.fspath(trace_file) if trace_file is not None else ""
        )
        super().__init__(bench)
        self._bench = bench
        tree = self.IDriverSetup.Settings
        tree.Item("Remote Control").SetValue(-1, -1, parsed.port)
        for path, value in {**parsed.settings, **(settings or {})}.items():
            tree.Item(path).SetValue(-1, -1, value)
        try:
            self.IDriverSetup.OnLine = True
        except BaseException:
            self.close()
            raise
        if not self.IDriverSetup.OnLine:
            why = self._bench.last_error() or "the port did not open"
            number = 0x80040000 + _LINK_NOT_OPEN
            raise AutomationError(number, "qkel4x.open", f"{resource} did not go on line: {why}")

    def close(self) -> None:
        """Return the instrument to local control and close the port; nothing happens where that was done before."""
        if self.IDriverSetup.OnLine:
            self.IDriverSetup.OnLine = False
        if lost := self._bench.trace_lost():
            import warnings

            warnings.warn(f"the trace file is not complete: {lost}", RuntimeWarning, stacklevel=2)

    def __enter__(self) -> Session:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    def __repr__(self) -> str:
        if not hasattr(self, "_bench"):
            return "<qkel4x.Session that was not made>"
        state = "on line" if self.IDriverSetup.OnLine else "off line"
        return f"<qkel4x.Session {self._resource_name} {state}>"

    def survey(
        self, names: Iterable[str] | None = None, progress: Callable[[Reading, int, int], object] | None = None
    ) -> Readings:
        """Read every measurement, in the measurement modes that allow them, and put the measurement mode back.

        A reading that fails is a row with its error, not the end of the survey. `names` picks members;
        progress(reading, done, all) is called after each.
        """
        from . import _survey

        return _survey.survey(self, names, progress)

    def screenshot(self, path: str | os.PathLike[str]) -> Path:
        """Capture the instrument's screen into a .png file, or as the instrument sends it into a .pcx file."""
        from . import _picture

        return _picture.save(self, path)


def open(
    resource: str | None = None,
    settings: Mapping[str, Any] | None = None,
    trace_file: str | os.PathLike[str] | None = None,
) -> Session:
    """Put a driver on line, for use in a with statement: local again at its end, whatever happens.

    resource   "TCPIP::host::5025::SOCKET", "ASRL1::INSTR", "ASRL::/dev/ttyUSB0::INSTR", "GPIB0::6::INSTR", or "SIM" for
               the embedded instrument, whose waits cost no time; by default what the environment's KEL4X_RESOURCE says
    settings   further settings by dotted path, such as {"RS232.Baud Rate": 9600}
    trace_file records every transfer there, for kel4x replay; by default what the environment's QKEL4X_TRACE_FILE says

    Fails with ValueError on a name of no known form and with AutomationError where the port does not open.
    """
    name = resource if resource is not None else os.environ.get("KEL4X_RESOURCE")
    if name is None:
        from . import _resource

        raise ValueError(f"no resource was given and KEL4X_RESOURCE is not set; it may be {_resource.FORMS}")
    return Session(name, settings, trace_file)

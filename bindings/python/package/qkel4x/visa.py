"""Any PyVISA resource as a port of the driver, so that a bench with VISA drivers works at once.

    import pyvisa, qkel4x
    from qkel4x.visa import VisaTransport

    manager = pyvisa.ResourceManager()
    qkel4x.host.register_class("QPort.clsEthernet", lambda: VisaTransport(manager, "TCPIP::host::5025::SOCKET"))

PyVISA is imported when a port opens, and only then.
"""

from __future__ import annotations

from typing import Any

from ._core import ParameterNode
from ._errors import AutomationError

__all__ = ["VisaTransport"]

_BASE = 0x80040000
_NOT_OPEN, _NOT_SENT, _BAD_REPLY, _TIMEOUT = 2010, 2011, 2012, 2013


class VisaTransport:
    """A transport over one PyVISA resource.

    manager    a pyvisa.ResourceManager, or the name of a backend such as "@py"; by default PyVISA's own choice
    resource   the resource's name, such as "TCPIP::host::5025::SOCKET" or "ASRL/dev/ttyUSB0::INSTR"
    settings   the port's settings, a group; by default an empty one named "VISA"
    options    further arguments of open_resource, such as baud_rate=19200

    Commands end in a line feed; replies end in one, and a carriage return before it is dropped.
    """

    def __init__(
        self,
        manager: Any = "",
        resource: str = "",
        settings: ParameterNode | None = None,
        **options: Any,
    ) -> None:
        self.Name = ""
        self.Settings = settings if settings is not None else _group("VISA")
        self._manager = manager
        self._resource_name = resource
        self._options = options
        self._seconds = 5.0
        self._resource: Any = None
        self._dirty = False
        self._after_block = False

    @property
    def OnLine(self) -> bool:
        """Whether the resource is open; writing it opens or closes it."""
        return self._resource is not None

    @OnLine.setter
    def OnLine(self, on_line: bool) -> None:
        if not on_line:
            if self._resource is not None:
                resource, self._resource = self._resource, None
                resource.close()
            return
        if self._resource is not None:
            return
        import pyvisa

        manager = pyvisa.ResourceManager(self._manager) if isinstance(self._manager, str) else self._manager
        options = {"write_termination": "\n", "read_termination": "\n", **self._options}
        try:
            self._resource = manager.open_resource(self._resource_name, **options)
        except Exception as error:
            raise self._failure(_NOT_OPEN, f"cannot open {self._resource_name}: {error}") from error
        self._resource.timeout = self._milliseconds()
        self._dirty = self._after_block = False

    @property
    def Timeout(self) -> float:
        """How long one transfer may take, in seconds."""
        return self._seconds

    @Timeout.setter
    def Timeout(self, seconds: float) -> None:
        self._seconds = float(seconds)
        if self._resource is not None:
            self._resource.timeout = self._milliseconds()

    def Write(self, command: str) -> None:
        """Send one command line."""
        resource = self._open()
        try:
            resource.write(command)
        except Exception as error:
            self._dirty = True
            if _is_timeout(error):
                raise self._failure(_NOT_SENT, f"send timed out: {command!r}: {error}") from error
            raise self._failure(_NOT_SENT, f"{command!r} was not sent: {error}") from error

    def Exchange(self, command: str, want_reply: bool) -> str | None:
        """Send one command line; read one reply line where it is wanted."""
        self.Write(command)
        return self._read_line(command) if want_reply else None

    def Query(self, command: str | None = None) -> str:
        """Send one command line, where one is given, and return one reply line."""
        if command is not None:
            self.Write(command)
        return self._read_line(command)

    def ReadBlock(self, count: int, command: str | None = None) -> bytes:
        """Send the command, where one is given, and return so many bytes of the reply."""
        if command is not None:
            self.Write(command)
        resource = self._open()
        try:
            data: bytes = resource.read_bytes(count, break_on_termchar=False)
        except Exception as error:
            raise self._read_failure(error, f"a block of {count} bytes") from error
        self._after_block = True
        return data

    def WriteBlock(self, format: int, data: bytes, command: str | None = None) -> None:
        """Send the command, where one is given, and the data after it; format 1 with a definite-length header."""
        length = str(len(data)).encode()
        header = b"#" + str(len(length)).encode() + length if format == 1 else b""
        try:
            self._open().write_raw((command or "").encode() + header + data + b"\n")
        except Exception as error:
            self._dirty = True
            raise self._failure(_NOT_SENT, f"a block of {len(data)} bytes was not sent: {error}") from error

    def _milliseconds(self) -> int:
        return max(1, round(self._seconds * 1000))

    def _open(self) -> Any:
        if self._resource is None:
            raise self._failure(_NOT_OPEN, "the port is not open")
        if self._dirty:
            # Only a new connection is sure to hold nothing of the transfer that failed.
            self.OnLine = False
            self.OnLine = True
        return self._resource

    def _read_line(self, command: str | None) -> str:
        resource = self._resource if self._resource is not None else self._open()
        after_block, self._after_block = self._after_block, False
        try:
            line = _stripped(resource.read())
            # The line feed that ended a block still stood before this reply.
            return _stripped(resource.read()) if after_block and line == "" else line
        except Exception as error:
            raise self._read_failure(error, repr(command) if command is not None else "an earlier command") from error

    def _read_failure(self, error: Exception, what: str) -> AutomationError:
        if isinstance(error, AutomationError):
            return error
        self._dirty = True
        code = _TIMEOUT if _is_timeout(error) else _BAD_REPLY
        return self._failure(code, f"no reply to {what} within {self._seconds:g} s: {error}")

    def _failure(self, code: int, text: str) -> AutomationError:
        return AutomationError(_BASE + code, f"VISA {self._resource_name}", text)


def _stripped(line: str) -> str:
    return line.removesuffix("\n").strip("\r")


def _is_timeout(error: Exception) -> bool:
    # VI_ERROR_TMO, whichever backend reports it.
    return getattr(error, "error_code", None) == -1073807339


def _group(name: str) -> ParameterNode:
    group = ParameterNode()
    group.Initialise(name, 4, 3)
    return group

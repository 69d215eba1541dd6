"""A host with its own transport: the driver talks over a plain socket that this script opens, and logs into a list.

    python own_transport.py 192.168.1.20 5025

A port is any object with these attributes and methods; replace the socket by whatever reaches the instrument.
"""

from __future__ import annotations

import socket
import sys

import qkel4x

LINK_ERROR = 0x80040000
NOT_OPEN, NOT_SENT, NO_REPLY = LINK_ERROR + 2010, LINK_ERROR + 2011, LINK_ERROR + 2013


class SocketPort:
    """One TCP connection, a line at a time."""

    def __init__(self, host: str, port: int) -> None:
        self.Name = ""
        self.Timeout = 5.0
        self._address = (host, port)
        self._socket: socket.socket | None = None
        self._received = b""

    @property
    def OnLine(self) -> bool:
        """Whether the connection stands; writing it connects or closes."""
        return self._socket is not None

    @OnLine.setter
    def OnLine(self, on_line: bool) -> None:
        if self._socket is not None:
            self._socket.close()
            self._socket = None
        if on_line:
            try:
                self._socket = socket.create_connection(self._address, self.Timeout)
                self._received = b""
            except OSError as error:
                raise qkel4x.AutomationError(NOT_OPEN, "SocketPort", str(error)) from error

    def Write(self, command: str) -> None:
        """Sends one command line."""
        if self._socket is None:
            raise qkel4x.AutomationError(NOT_OPEN, "SocketPort", "the port is closed")
        try:
            self._socket.settimeout(self.Timeout)
            self._socket.sendall(command.encode() + b"\n")
        except OSError as error:
            raise qkel4x.AutomationError(NOT_SENT, "SocketPort", f"{command!r} was not sent: {error}") from error

    def Query(self, command: str | None = None) -> str:
        """Sends one command line, where one is given, and returns one reply line."""
        if command is not None:
            self.Write(command)
        while b"\n" not in self._received:
            self._receive()
        line, _, self._received = self._received.partition(b"\n")
        return line.decode().rstrip("\r")

    def Exchange(self, command: str, want_reply: bool) -> str | None:
        """Sends one command line; returns one reply line where it is wanted."""
        if want_reply:
            return self.Query(command)
        self.Write(command)
        return None

    def _receive(self) -> None:
        if self._socket is None:
            raise qkel4x.AutomationError(NOT_OPEN, "SocketPort", "the port is closed")
        try:
            chunk = self._socket.recv(4096)
        except OSError as error:
            # What comes later must not answer the next query.
            self.OnLine = False
            raise qkel4x.AutomationError(NO_REPLY, "SocketPort", f"no reply: {error}") from error
        if not chunk:
            self.OnLine = False
            raise qkel4x.AutomationError(NOT_OPEN, "SocketPort", "the instrument closed the connection")
        self._received += chunk


def main(arguments: list[str]) -> int:
    """Reads the level over a port of this script's own."""
    host, port = arguments[0], int(arguments[1])
    traffic: list[str] = []
    with qkel4x.host.isolated():
        qkel4x.host.register_class("QPort.clsEthernet", lambda: SocketPort(host, port))
        qkel4x.host.set_log(lambda kind, source, text, detail: traffic.append(f"> {text}" if kind == 6 else f"< {detail}"))
        driver = qkel4x.clsKEL4x()
        setup = driver.IDriverSetup
        setup.Name = "Bench 3"
        setup.Settings.Item("Remote Control").SetValue(-1, -1, "TCP/IP")
        setup.OnLine = True
        if not setup.OnLine:
            print("the instrument did not answer")
            return 1
        try:
            print(f"{driver.ModelNumber}: {driver.MeasureRfLevel} {driver.Prefix}")
        finally:
            setup.OnLine = False
    print("\n".join(traffic))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

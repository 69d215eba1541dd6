"""Resource names: which port a session uses, and its settings."""

from __future__ import annotations

import re
from typing import NamedTuple

FORMS = (
    "SIM, TCPIP::host::5025::SOCKET, TCPIP::[IPv6 address]::5025::SOCKET, ASRL1::INSTR, "
    "ASRL::/dev/ttyUSB0::INSTR or GPIB0::6::INSTR"
)


class Resource(NamedTuple):
    """A resource name taken apart."""

    port: str  # the programmatic name of the port
    settings: dict[str, str | int]  # by dotted path
    serial_device: str = ""  # the device behind COM1, where one is named


def parse(name: str) -> Resource:
    """Take a resource name apart; a ValueError says what would be right."""
    text = name.strip()
    if text.upper() == "SIM":
        return Resource("QPort.clsGUI", {})
    if match := re.fullmatch(r"TCPIP\d*::(\[[^\]]+\]|[^:\[\]\s]+)::(\d+)::SOCKET", text, re.IGNORECASE):
        port = int(match[2])
        if not 1 <= port <= 65535:
            raise ValueError(f"resource {name!r}: {port} is no TCP port (1 to 65535)")
        return Resource("QPort.clsEthernet", {"TCP/IP.Host": match[1].strip("[]"), "TCP/IP.Port": port})
    if match := re.fullmatch(r"ASRL(?:::)?(?:COM)?(\d+)::INSTR", text, re.IGNORECASE):
        if not 1 <= int(match[1]) <= 16:
            raise ValueError(f"resource {name!r}: there are COM1 to COM16")
        return Resource("QPort.clsComm", {"RS232.Comm Port": int(match[1])})
    if match := re.fullmatch(r"ASRL(?:::)?(/.+?|[^:]+)::INSTR", text, re.IGNORECASE):
        return Resource("QPort.clsComm", {}, match[1])
    if match := re.fullmatch(r"GPIB(\d*)::(\d+)(?:::INSTR)?", text, re.IGNORECASE):
        if not 0 <= int(match[2]) <= 30:
            raise ValueError(f"resource {name!r}: a primary address is 0 to 30")
        return Resource("QPort.clsGPIB", {"GPIB.Board": int(match[1] or 0), "GPIB.Primary Address": int(match[2])})
    raise ValueError(f"resource {name!r} is not known; it may be {FORMS}")

"""What the tests share: hosts that follow a script, drivers on them, and a simulated instrument in another process."""

from __future__ import annotations

import os
import subprocess
import sys
import time
from collections.abc import Iterator
from pathlib import Path
from typing import Any, NamedTuple

import pytest
import qkel4x

sys.path.insert(0, str(Path(__file__).parent))

from scripted import Host  # noqa: E402

SPEED = 1000  # of the instrument's clock


@pytest.fixture(autouse=True)
def isolated_host() -> Iterator[None]:
    """No test leaves anything behind in the host."""
    with qkel4x.host.isolated():
        yield


@pytest.fixture
def host() -> Host:
    return Host()


@pytest.fixture
def driver(host: Host) -> Any:
    """A driver on line over a scripted port."""
    driver = qkel4x.clsKEL4x()
    settings = driver.IDriverSetup.Settings
    settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    settings.Item("Log Messages").SetValue(-1, -1, "No")
    driver.IDriverSetup.OnLine = True
    return driver


class Instrument(NamedTuple):
    port: int
    terminal: str
    process: subprocess.Popen[str]

    @property
    def resource(self) -> str:
        return f"TCPIP::127.0.0.1::{self.port}::SOCKET"


@pytest.fixture
def instrument() -> Iterator[Instrument]:
    """A simulated instrument in another process, whose clock runs fast."""
    command = [os.environ["QKEL4X_INSTRUMENT"], str(SPEED)]
    with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
        assert process.stdout is not None
        port, terminal = process.stdout.readline().split()
        yield Instrument(int(port), terminal, process)
        process.kill()


@pytest.fixture
def quick_waits() -> list[float]:
    """The host's waits run as fast as the instrument's clock; the list holds what was waited for."""
    waits: list[float] = []

    def wait(seconds: float) -> None:
        waits.append(seconds)
        time.sleep(seconds / SPEED)

    qkel4x.host.set_wait(wait)
    return waits

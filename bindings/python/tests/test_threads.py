"""Interruption, and several threads."""

from __future__ import annotations

import os
import signal
import socket
import threading
import time
from collections.abc import Iterator
from typing import Any

import pytest
import qkel4x


@pytest.fixture
def silent_instrument() -> Iterator[socket.socket]:
    """Listens, takes everything, answers error queries and nothing else."""
    with socket.create_server(("127.0.0.1", 0)) as server:

        def serve() -> None:
            while True:
                try:
                    client, _ = server.accept()
                except OSError:
                    return
                threading.Thread(target=answer, args=(client,), daemon=True).start()

        def answer(client: socket.socket) -> None:
            with client, client.makefile("rb") as lines:
                for line in lines:
                    if line.strip() == b"SYST:ERR?":
                        client.sendall(b'0,"No error"\n')
                    if line.strip() == b"READ:TS:LATE?":
                        time.sleep(0.3)

        threading.Thread(target=serve, daemon=True).start()
        yield server


def connected(server: socket.socket) -> Any:
    driver = qkel4x.clsKEL4x()
    settings = driver.IDriverSetup.Settings
    settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    settings.Item("TCP/IP.Port").SetValue(-1, -1, server.getsockname()[1])
    with qkel4x.host.isolated():
        qkel4x.host.set_wait(lambda seconds: None)
        driver.IDriverSetup.OnLine = True
    assert driver.IDriverSetup.OnLine
    return driver


class Interruption:
    """Sends this process SIGINT after a while, and knows how long the machine kept threads waiting meanwhile."""

    def __init__(self, delay: float) -> None:
        self.at = 0.0
        self.stalled = 0.0
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.run, args=(delay,))

    def run(self, delay: float) -> None:
        time.sleep(delay)
        self.at = time.monotonic()
        os.kill(os.getpid(), signal.SIGINT)
        while not self.ended.is_set():
            before = time.monotonic()
            time.sleep(0.005)
            self.stalled += time.monotonic() - before - 0.005

    def was_prompt(self) -> bool:
        """Whether the call ended within 0.1 s of the signal, on a machine that had the time."""
        return time.monotonic() - self.at < 0.1 + self.stalled

    def __enter__(self) -> Interruption:
        self.thread.start()
        return self

    def __exit__(self, *error: object) -> None:
        self.ended.set()
        self.thread.join()


def test_ctrl_c_ends_a_transfer(silent_instrument: socket.socket) -> None:
    driver = connected(silent_instrument)
    with Interruption(0.1) as interruption, pytest.raises(KeyboardInterrupt):
        driver.MeasureRfLevel
    assert interruption.was_prompt()
    # The port is clean: the next error query is answered as ever.
    with qkel4x.host.isolated():
        qkel4x.host.set_wait(lambda seconds: None)
        driver.AlarmRegisterClear()
        driver.IDriverSetup.OnLine = False


def test_ctrl_c_ends_a_wait(silent_instrument: socket.socket) -> None:
    driver = connected(silent_instrument)
    with Interruption(0.1) as interruption, pytest.raises(KeyboardInterrupt):
        driver.AlarmRegisterClear()
    assert interruption.was_prompt()


def test_ctrl_c_ends_going_on_line(silent_instrument: socket.socket) -> None:
    driver = qkel4x.clsKEL4x()
    settings = driver.IDriverSetup.Settings
    settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    settings.Item("TCP/IP.Port").SetValue(-1, -1, silent_instrument.getsockname()[1])
    with Interruption(0.2) as interruption, pytest.raises(KeyboardInterrupt):
        driver.IDriverSetup.OnLine = True
    assert interruption.was_prompt()


def test_ctrl_c_ends_the_drain_of_an_endless_error_queue(quick_waits: list[float]) -> None:
    class Port:
        OnLine = False

        def Exchange(self, command: str, want_reply: bool) -> str:
            return '-100,"Command error"' if self.OnLine == "broken" else '0,"No error"'

    port = Port()
    qkel4x.host.register_class("QPort.clsEthernet", lambda: port)
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    driver.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "No")
    driver.IDriverSetup.OnLine = True
    port.OnLine = "broken"  # type: ignore[assignment]
    with Interruption(0.1) as interruption, pytest.raises(KeyboardInterrupt):
        driver.MeasureRfLevel
    assert interruption.was_prompt()


def test_a_signal_handler_that_goes_on_ends_nothing(silent_instrument: socket.socket) -> None:
    driver = connected(silent_instrument)
    seen: list[int] = []
    before = signal.signal(signal.SIGINT, lambda number, frame: seen.append(number))
    try:
        with Interruption(0.1):
            begin = time.monotonic()
            with qkel4x.host.isolated():
                driver.IDriverSetup.OnLine = False
            assert time.monotonic() - begin > 0.9
    finally:
        signal.signal(signal.SIGINT, before)
    assert seen == [signal.SIGINT]


def test_ctrl_c_leaves_other_threads_alone(silent_instrument: socket.socket) -> None:
    first, second = connected(silent_instrument), connected(silent_instrument)
    ended: list[float] = []

    def wait() -> None:
        second.IDriverSetup.OnLine = False
        ended.append(time.monotonic())

    thread = threading.Thread(target=wait)
    begin = time.monotonic()
    thread.start()
    with Interruption(0.1), pytest.raises(KeyboardInterrupt):
        first.AlarmRegisterClear()
    assert not ended
    thread.join()
    assert ended[0] - begin > 0.9


def test_two_drivers_wait_side_by_side(silent_instrument: socket.socket) -> None:
    drivers = [connected(silent_instrument) for _ in range(2)]
    ticks = 0

    def off_line(driver: Any) -> None:
        driver.IDriverSetup.OnLine = False

    threads = [threading.Thread(target=off_line, args=(driver,)) for driver in drivers]
    begin = time.monotonic()
    for thread in threads:
        thread.start()
    while any(thread.is_alive() for thread in threads):
        ticks += 1
        time.sleep(0.01)
    assert time.monotonic() - begin < 1.6
    # This thread went on all the while.
    assert ticks > 50


def test_calls_of_one_driver_wait_for_each_other() -> None:
    inside = 0
    most = 0

    class Port:
        def Exchange(self, command: str, want_reply: bool) -> str:
            nonlocal inside, most
            inside += 1
            most = max(most, inside)
            time.sleep(0.001)
            inside -= 1
            return '0,"No error"' if command == "SYST:ERR?" else "1.5"

    qkel4x.host.register_class("QPort.clsEthernet", Port)
    qkel4x.host.set_wait(lambda seconds: None)
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    driver.IDriverSetup.OnLine = True
    values: list[float] = []
    threads = [
        threading.Thread(target=lambda: values.extend(driver.MeasureRfLevel for _ in range(20))) for _ in range(4)
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert values == [1.5] * 80
    assert most == 1

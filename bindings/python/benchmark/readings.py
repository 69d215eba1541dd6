"""What qkel4x costs beside a raw-socket loop in C, the C++ call, and PyVISA with its pure-Python backend, in turns.

    PYTHONPATH=build/release/python /usr/bin/python3 bindings/python/benchmark/readings.py build/release

Prints one table of medians with the goals; the exit code is 1 where one is not met. A reading is two exchanges, the error
query and the level query. The build folder holds the targets qkel4x_python_package, python_instrument, python_panel_loop and
wire_responder. PyVISA must be installed.
"""

from __future__ import annotations

import argparse
import contextlib
import os
import statistics
import subprocess
import sys
import tempfile
import time
import warnings
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any, NamedTuple

import qkel4x

# Counts that keep each one busy for about as long as what it stands beside.
READINGS, PICTURES, VISA_PICTURES, PANEL_READINGS, TURNS = 1000, 500, 50, 50000, 25
PICTURE_BYTES = 32000

IMPORT = """
import time
wall, cpu = time.perf_counter(), time.process_time()
import qkel4x
print(time.perf_counter() - wall, time.process_time() - cpu)
"""


class Cost(NamedTuple):
    """Microseconds of one call."""

    wall: float
    cpu: float


def timed(work: Callable[[], object], count: int) -> Cost:
    """`work` makes that many calls."""
    wall, cpu = time.perf_counter(), time.process_time()
    work()
    return Cost((time.perf_counter() - wall) / count * 1e6, (time.process_time() - cpu) / count * 1e6)


def reported(command: list[str], count: int) -> Cost:
    """As a program of its own reports it: seconds of wall and of CPU time for that many calls."""
    wall, cpu = subprocess.check_output(command, text=True).split()
    return Cost(float(wall) / count * 1e6, float(cpu) / count * 1e6)


def duration(microseconds: float) -> str:
    """With its unit, to about three digits."""
    if microseconds >= 1000:
        return f"{microseconds / 1000:.1f} ms"
    return f"{microseconds:.{2 if microseconds < 10 else 1 if microseconds < 100 else 0}f} us"


@contextlib.contextmanager
def served(core: int, *command: str) -> Iterator[str]:
    """The TCP port of an instrument in a process of its own, on that core."""
    with subprocess.Popen(
        command,
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
        preexec_fn=lambda: os.sched_setaffinity(0, {core}),
    ) as server:
        assert server.stdout is not None
        try:
            yield server.stdout.readline().split()[0]
        finally:
            server.kill()


def without_log(driver: qkel4x.Session) -> qkel4x.Session:
    """No driver measured here writes a message log."""
    driver.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "No")
    return driver


def measure(build: Path, instrument_core: int) -> dict[str, list[Cost]]:
    """All turns: in each one, everything once."""
    import pyvisa

    loop = Path(tempfile.mkdtemp()) / "raw_loop"
    subprocess.run(["cc", "-O2", "-o", str(loop), str(Path(__file__).with_name("raw_loop.c"))], check=True)
    programs = build / "bindings" / "python"
    panel_loop = [str(programs / "python_panel_loop"), str(PANEL_READINGS)]
    manager: Any = pyvisa.ResourceManager("@py")

    with contextlib.ExitStack() as stack:

        def peers(port: str) -> tuple[qkel4x.Session, Any]:
            driver = stack.enter_context(qkel4x.open(f"TCPIP::127.0.0.1::{port}::SOCKET"))
            # Both lines of a socket need their terminations named; all else is PyVISA's default.
            resource = f"TCPIP0::127.0.0.1::{port}::SOCKET"
            visa = manager.open_resource(resource, read_termination="\n", write_termination="\n")
            stack.callback(visa.close)
            return without_log(driver), visa

        instrument = stack.enter_context(served(instrument_core, str(programs / "python_instrument")))
        # Answers from constants, with a block of that many bytes for the screen.
        responder = stack.enter_context(served(instrument_core, str(build / "benchmarks" / "wire_responder")))
        kel, visa = peers(instrument)
        screen_kel, screen_visa = peers(responder)
        panel = without_log(stack.enter_context(qkel4x.open("SIM")))

        def by_driver() -> None:
            for _ in range(READINGS):
                kel.MeasureRfLevel

        def by_visa() -> None:
            for _ in range(READINGS):
                visa.query("SYST:ERR?")
                float(visa.query("READ:RF:LEVEL?").split()[0])

        def picture_by_driver() -> None:
            for _ in range(PICTURES):
                done, image = screen_kel.ScreenShot(qkel4x.KelScreenShotModes.kelTransfer)
                assert done and image is not None and len(image) == PICTURE_BYTES

        def picture_by_visa() -> None:
            for _ in range(VISA_PICTURES):
                assert screen_visa.query("SYST:ERR?") == '0,"No error"'
                assert len(screen_visa.query_binary_values("READ:BUFFER:PCX?", datatype="B")) == PICTURE_BYTES

        def by_panel() -> None:
            for _ in range(PANEL_READINGS):
                panel.MeasureRfLevel

        work: dict[str, Callable[[], Cost]] = {
            "C": lambda: reported([str(loop), instrument, str(READINGS)], READINGS),
            "driver": lambda: timed(by_driver, READINGS),
            "visa": lambda: timed(by_visa, READINGS),
            "picture": lambda: timed(picture_by_driver, PICTURES),
            "picture visa": lambda: timed(picture_by_visa, VISA_PICTURES),
            "C++ panel": lambda: reported(panel_loop, PANEL_READINGS),
            "panel": lambda: timed(by_panel, PANEL_READINGS),
            "import": lambda: reported([sys.executable, "-c", IMPORT], 1),
        }
        for first in work.values():
            first()
        turns: dict[str, list[Cost]] = {name: [] for name in work}
        for _ in range(TURNS):
            for name, one in work.items():
                turns[name].append(one())
    return turns


def main() -> int:
    """Measures, and prints the table."""
    warnings.simplefilter("ignore")
    parser = argparse.ArgumentParser(description="Measures qkel4x beside C, C++ and PyVISA.")
    parser.add_argument("build", type=Path, help="build folder, for example build/release")
    parser.add_argument("--two-cores", action="store_true", help="the instruments on another core than their clients")
    arguments = parser.parse_args()
    cores = sorted(os.sched_getaffinity(0))
    if arguments.two_cores and len(cores) < 2:
        parser.error("--two-cores needs two cores, and this process may use one")
    # One core as a rule: on two, most of what is measured is how one wakes the other, which no client can help.
    os.sched_setaffinity(0, {cores[-1]})
    turns = measure(arguments.build.resolve(), cores[0] if arguments.two_cores else cores[-1])

    def median(value: Callable[[Cost, Cost], float], name: str, beside: str) -> float:
        # Turn by turn, so that a load that comes and goes counts on both sides.
        return statistics.median(map(value, turns[name], turns[beside]))

    missed = 0

    def row(what: str, name: str, result: str = "", goal: str = "", met: bool | None = None) -> None:
        nonlocal missed
        missed += met is False
        wall = statistics.median(cost.wall for cost in turns[name])
        cpu = statistics.median(cost.cpu for cost in turns[name])
        verdict = "" if met is None else "yes" if met else "no"
        print(f"| {what} | {duration(wall)} | {duration(cpu)} | {result} | {goal} | {verdict} |")

    wall_ratio = median(lambda own, c: own.wall / c.wall, "driver", "C")
    cpu_ratio = median(lambda own, visa: own.cpu / visa.cpu, "driver", "visa")
    visa_ratio = median(lambda visa, c: visa.wall / c.wall, "visa", "C")
    faster = median(lambda own, visa: visa.wall / own.wall, "picture", "picture visa")
    above = median(lambda own, typed: own.wall - typed.wall, "panel", "C++ panel")
    import_time = statistics.median(cost.wall for cost in turns["import"]) / 1000

    print("| what | wall | CPU | result | goal | met |\n|---|---|---|---|---|---|")
    row("a reading over TCP, bare sockets in C", "C")
    row("the same, qkel4x: wall", "driver", f"{wall_ratio:.2f} x C", "at most 1.10 x", wall_ratio <= 1.10)
    row("the same, qkel4x: CPU", "driver", f"{cpu_ratio:.2f} x PyVISA", "at most 0.50 x", cpu_ratio <= 0.5)
    row("the same, PyVISA with PyVISA-py", "visa", f"{visa_ratio:.2f} x C")
    picture = f"a screen shot of {PICTURE_BYTES // 1000} 000 bytes over TCP"
    row(f"{picture}, qkel4x", "picture", f"{faster:.1f} x faster", "at least 10 x", faster >= 10)
    row("the same, PyVISA with PyVISA-py", "picture visa")
    row("a reading in process (front panel), C++", "C++ panel")
    row("the same, qkel4x", "panel", f"{above:.2f} us above C++", "at most 1 us", above <= 1)
    row("`import qkel4x`", "import", f"{import_time:.0f} ms", "under 60 ms", import_time < 60)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())

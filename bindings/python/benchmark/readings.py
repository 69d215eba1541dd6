"""Readings over TCP: qkel4x beside a raw-socket loop in C and PyVISA with its pure-Python backend, in turns.

    PYTHONPATH=build/release/python python3 bindings/python/benchmark/readings.py build/release/bindings/python/python_instrument

Prints one table of medians. A reading is two exchanges: the error query and the level query.
"""

from __future__ import annotations

import statistics
import subprocess
import sys
import tempfile
import time
import warnings
from collections.abc import Callable
from pathlib import Path
from typing import Any

import qkel4x

COUNT, PICTURES, TURNS = 1000, 50, 9


def timed(work: Callable[[], object]) -> tuple[float, float]:
    """Wall and CPU seconds of one call."""
    wall, cpu = time.perf_counter(), time.process_time()
    work()
    return time.perf_counter() - wall, time.process_time() - cpu


def main() -> None:
    """Runs the turns and prints the table."""
    warnings.simplefilter("ignore")
    import pyvisa

    folder = Path(tempfile.mkdtemp())
    loop = folder / "raw_loop"
    subprocess.run(["cc", "-O2", "-o", str(loop), str(Path(__file__).with_name("raw_loop.c"))], check=True)
    with subprocess.Popen([sys.argv[1], "1000"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as server:
        assert server.stdout is not None
        port = server.stdout.readline().split()[0]
        resource = f"TCPIP0::127.0.0.1::{port}::SOCKET"
        qkel4x.host.set_wait(lambda seconds: time.sleep(seconds / 1000))
        kel = qkel4x.open(resource.replace("TCPIP0", "TCPIP"))
        kel.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "No")
        visa: Any = pyvisa.ResourceManager("@py").open_resource(resource, read_termination="\n", write_termination="\n")

        def by_driver() -> None:
            for _ in range(COUNT):
                kel.MeasureRfLevel

        def by_visa() -> None:
            for _ in range(COUNT):
                visa.query("SYST:ERR?")
                float(visa.query("READ:RF:LEVEL?").split()[0])

        def by_c() -> tuple[float, float]:
            wall, cpu = subprocess.check_output([str(loop), port, str(COUNT)], text=True).split()
            return float(wall), float(cpu)

        def picture_by_driver() -> None:
            for _ in range(PICTURES):
                kel.ScreenShot(2)

        def picture_by_visa() -> None:
            for _ in range(PICTURES):
                visa.query("SYST:ERR?")
                visa.query_binary_values("READ:BUFFER:PCX?", datatype="B")

        print(f"The screen shot has {len(kel.ScreenShot(3)[1] or b'')} bytes.\n")
        rows: dict[str, list[tuple[float, float]]] = {}
        for _ in range(TURNS):
            rows.setdefault("raw C loop", []).append(by_c())
            rows.setdefault("qkel4x", []).append(timed(by_driver))
            rows.setdefault("PyVISA, @py", []).append(timed(by_visa))
            rows.setdefault("screen shot, qkel4x", []).append(timed(picture_by_driver))
            rows.setdefault("screen shot, PyVISA, @py", []).append(timed(picture_by_visa))
        print(f"| {'':24} | wall us | CPU us | wall / C |\n|---|---|---|---|")
        base = statistics.median(wall for wall, _ in rows["raw C loop"]) / COUNT
        for name, turns in rows.items():
            count = PICTURES if "screen" in name else COUNT
            wall = statistics.median(wall for wall, _ in turns) / count
            cpu = statistics.median(cpu for _, cpu in turns) / count
            ratio = "" if "screen" in name else f"{wall / base:.2f}"
            print(f"| {name:24} | {wall * 1e6:.1f} | {cpu * 1e6:.1f} | {ratio} |")

        with qkel4x.open("SIM") as sim:
            sim.IDriverSetup.Settings.Item("Log Messages").SetValue(-1, -1, "No")
            prefix = timed(lambda: [sim.Prefix for _ in range(100000)])[0] / 100000
        print(f"| a property without I/O | {prefix * 1e6:.2f} | | |")
        kel.close()
        server.kill()


if __name__ == "__main__":
    main()

"""A long watch: reads some members again and again and appends each round to a CSV file.

    python long_watch.py TCPIP::192.168.1.20::5025::SOCKET MeasureRfLevel MeasureVsbMerRmsDb --every 10 --log watch.csv

Every round is on disk when the next begins. A reading that fails leaves its cell empty and its error in the last column, and
the watch goes on; Ctrl-C ends it, with the instrument local again.
"""

from __future__ import annotations

import argparse
import csv
import datetime
import sys
import time
from pathlib import Path

import qkel4x


def watch(kel: qkel4x.clsKEL4x, names: list[str], every: float, rounds: int | None, log: Path) -> int:
    """Reads until `rounds` are done, for ever without; returns how many were."""
    new = not log.exists() or log.stat().st_size == 0
    done = 0
    with log.open("a", encoding="utf-8", newline="") as file:
        writer = csv.writer(file)
        if new:
            writer.writerow(["time", *(f"{name}{part}" for name in names for part in ("", " status")), "errors"])
        begin = time.monotonic()
        while rounds is None or done < rounds:
            cells: list[object] = [datetime.datetime.now().isoformat(timespec="milliseconds")]
            errors = []
            for name in names:
                try:
                    value = getattr(kel, name)
                    cells += [value, kel.Prefix]
                except qkel4x.AutomationError as error:
                    cells += ["", ""]
                    errors.append(str(error))
            writer.writerow([*cells, "; ".join(errors)])
            file.flush()
            done += 1
            # The rounds keep their grid, however long one takes.
            if rounds is None or done < rounds:
                time.sleep(max(0.0, begin + done * every - time.monotonic()))
    return done


def main(arguments: list[str] | None = None) -> int:
    """Watches until it is told to stop."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("resource", help="the instrument")
    parser.add_argument("names", nargs="*", default=["MeasureRfLevel", "MeasureVsbMerRmsDb"], help="what to read")
    parser.add_argument("--every", type=float, default=10.0, help="seconds from one round to the next")
    parser.add_argument("--rounds", type=int, help="how many rounds; without end by default")
    parser.add_argument("--log", type=Path, default=Path("watch.csv"), help="the file to append to")
    options = parser.parse_args(arguments)
    try:
        with qkel4x.open(options.resource) as kel:
            done = watch(kel, options.names, options.every, options.rounds, options.log)
    except KeyboardInterrupt:
        print("stopped")
        return 0
    print(f"{done} rounds in {options.log}")
    return 0


if __name__ == "__main__":
    sys.exit(main())

"""Transmitter acceptance: measures a transmitter against its limits and writes one page with verdicts and plots.

    python acceptance.py TCPIP::192.168.1.20::5025::SOCKET --frequency 473e6 --report acceptance.html

The page needs no network. The exit code is 0 where every limit is met and 1 where one is not.
"""

from __future__ import annotations

import argparse
import datetime
import html
import sys
from pathlib import Path
from typing import NamedTuple

import qkel4x


class Limit(NamedTuple):
    """What a reading must be."""

    name: str
    least: float | None
    most: float | None
    why: str


LIMITS = [
    Limit("MeasureVsbMerRmsDb", 27.0, None, "modulation error ratio at the transmitter's output"),
    Limit("MeasureVsbEvmRms", None, 5.0, "error vector magnitude"),
    Limit("MeasureBerBeforeRS", None, 2e-4, "bit errors before correction"),
    Limit("MeasureSegErrPerSec", None, 0.0, "no segment is lost"),
    Limit("MeasurePilotFreqOffset", -1000.0, 1000.0, "pilot within 1 kHz"),
    Limit("MeasureFdSpectrumShoulderLower", 36.0, None, "lower shoulder"),
    Limit("MeasureFdSpectrumShoulderUpper", 36.0, None, "upper shoulder"),
]


def verdict(limit: Limit, value: float) -> bool:
    """Whether the value meets the limit."""
    return (limit.least is None or value >= limit.least) and (limit.most is None or value <= limit.most)


def plot(title: str, x_label: str, y_label: str, points: list[tuple[float, float]]) -> str:
    """Vertical lines over an axis, as SVG."""
    width, height, left, bottom = 520, 240, 60, 40
    xs, ys = [x for x, _ in points] or [0.0], [y for _, y in points] or [0.0]
    x_low, x_high = min(xs), max(xs)
    y_low, y_high = min(*ys, 0.0), max(*ys, 0.0)
    x_span, y_span = x_high - x_low or 1.0, y_high - y_low or 1.0

    def x_at(x: float) -> float:
        return left + 20 + (x - x_low) / x_span * (width - left - 40)

    def y_at(y: float) -> float:
        return height - bottom - (y - y_low) / y_span * (height - bottom - 30)

    lines = "".join(
        f'<line x1="{x_at(x):.1f}" y1="{y_at(0):.1f}" x2="{x_at(x):.1f}" y2="{y_at(y):.1f}" stroke="#1b5e9b" stroke-width="3"/>'
        f'<circle cx="{x_at(x):.1f}" cy="{y_at(y):.1f}" r="3" fill="#1b5e9b"/>'
        for x, y in points
    )
    labels = "".join(
        f'<text x="{x_at(x):.1f}" y="{height - bottom + 16}" text-anchor="middle">{x:g}</text>' for x in {x_low, x_high}
    ) + "".join(f'<text x="{left - 6}" y="{y_at(y) + 4:.1f}" text-anchor="end">{y:g}</text>' for y in {y_low, y_high})
    return (
        f'<svg viewBox="0 0 {width} {height}" width="{width}" font-family="sans-serif" font-size="12">'
        f'<text x="{width / 2}" y="16" text-anchor="middle" font-weight="bold">{html.escape(title)}</text>'
        f'<line x1="{left}" y1="{y_at(0):.1f}" x2="{width - 10}" y2="{y_at(0):.1f}" stroke="#888"/>'
        f'<line x1="{left}" y1="20" x2="{left}" y2="{height - bottom}" stroke="#888"/>{lines}{labels}'
        f'<text x="{width / 2}" y="{height - 6}" text-anchor="middle">{html.escape(x_label)}</text>'
        f'<text x="14" y="{height / 2}" text-anchor="middle" transform="rotate(-90 14 {height / 2})">{html.escape(y_label)}</text></svg>'
    )


def main(arguments: list[str] | None = None) -> int:
    """Measures, writes the page, and says whether the transmitter passed."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("resource", nargs="?", help="the instrument; KEL4X_RESOURCE by default")
    parser.add_argument("--frequency", type=float, help="centre frequency of the channel in Hz")
    parser.add_argument("--report", type=Path, default=Path("acceptance.html"), help="the page to write")
    options = parser.parse_args(arguments)

    with qkel4x.open(options.resource) as kel:
        identity = kel.Identity
        if options.frequency is not None:
            kel.RfCenterFrequency = options.frequency
        kel.SpecFuncEqualizer = qkel4x.KelSpecFuncEqualizers.kelEqualizerOn
        readings = kel.survey()
        frequency = kel.RfCenterFrequency

    rows, passed = [], True
    for limit in LIMITS:
        reading = readings[limit.name]
        valid = not reading.error and reading.status != "---" and isinstance(reading.value, (int, float))
        good = valid and verdict(limit, float(reading.value))
        passed = passed and good
        least = "" if limit.least is None else f"{limit.least:g}"
        most = "" if limit.most is None else f"{limit.most:g}"
        shown = f"{reading.status} {reading.value:g}" if valid else (reading.error or reading.status)
        cells = (limit.name, shown, reading.unit, least, most, "pass" if good else "FAIL", limit.why)
        rows.append("<tr>" + "".join(f"<td>{html.escape(cell)}</td>" for cell in cells) + "</tr>")
        print(f"{'pass' if good else 'FAIL'}  {limit.name:32} {shown} {reading.unit}")

    echoes = [
        (float(readings[f"GhostPatternDelay({i})"].value), float(readings[f"GhostPatternAtten({i})"].value))
        for i in range(1, 11)
        if not readings[f"GhostPatternDelay({i})"].error and readings[f"GhostPatternDelay({i})"].status != "---"
    ]
    jitter = [
        (float(readings[f"PhaseJitterFreq({i})"].value), float(readings[f"PhaseJitterValue({i})"].value))
        for i in range(1, 8)
        if not readings[f"PhaseJitterFreq({i})"].error and readings[f"PhaseJitterFreq({i})"].status != "---"
    ]
    now = datetime.datetime.now().isoformat(" ", "seconds")
    head = "".join(f"<th>{title}</th>" for title in ("Reading", "Value", "Unit", "Least", "Most", "Verdict", "Why"))
    options.report.write_text(
        "<!doctype html><meta charset='utf-8'><title>Transmitter acceptance</title>"
        "<style>body{font-family:sans-serif;margin:2em}td,th{padding:.2em .8em;text-align:left}"
        "tr:nth-child(even){background:#f2f5f8}</style>"
        f"<h1>Transmitter acceptance: {'passed' if passed else 'FAILED'}</h1>"
        f"<p>{html.escape(identity)}<br>{frequency / 1e6:.6f} MHz, {now}</p><table><tr>{head}</tr>{''.join(rows)}</table>"
        + plot("Echo pattern", "delay", "attenuation (dB)", echoes)
        + plot("Phase jitter", "frequency (Hz)", "value", jitter)
        + f"<h2>All readings</h2>{readings._repr_html_()}",
        "utf-8",
    )
    print(f"{'passed' if passed else 'FAILED'}: see {options.report}")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""The examples that docs/windows.md shows whole are the files that the tests run."""

import pathlib
import sys

root = pathlib.Path(__file__).parents[3]
page = (root / "docs" / "windows.md").read_text(encoding="utf-8")
for name in ("mer_and_echo.vbs", "reading.ps1", "reading.py"):
    if (root / "bindings" / "windows" / "examples" / name).read_text(encoding="utf-8").rstrip() not in page:
        sys.exit(f"docs/windows.md shows another {name}")

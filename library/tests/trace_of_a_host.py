"""Runs c_host with QKEL4X_TRACE_FILE set: libqhost.so records. usage: trace_of_a_host.py C_HOST LIBQKEL4X LIBQHOST LIBPORT"""

import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

with tempfile.TemporaryDirectory() as folder:
    environment = {**os.environ, "QKEL4X_TRACE_FILE": str(Path(folder, "%p.ndjson"))}
    process = subprocess.Popen(sys.argv[1:], env=environment)
    if process.wait() != 0:
        sys.exit("the host failed")
    text = Path(folder, f"{process.pid}.ndjson").read_text(encoding="utf-8")
    header, *events = [json.loads(line) for line in text.splitlines()]
    assert text.endswith("\n"), text
    assert (header["trace"], header["format"], header["program"]) == ("kel4x", 1, "libqhost.so"), header
    assert "command" not in header, header
    # The host's instrument is on a port of its own; what the reference host does is the look at the serial ports.
    opened = [event for event in events if event["direction"] == "opened"]
    assert opened and opened[0]["class"] == "QPort.clsComm", text
    assert "RS232.Baud Rate" in opened[0]["settings"], opened

    environment["QKEL4X_TRACE_FILE"] = str(Path(folder, "none", "t.ndjson"))
    refused = subprocess.run(sys.argv[1:], env=environment, capture_output=True, text=True)
    assert refused.returncode != 0 and "t.ndjson cannot be opened" in refused.stderr, refused.stderr

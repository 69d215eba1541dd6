"""The same two exchanges through PyVISA with its pure-Python backend, as a peer."""

import json
import sys
import time

import pyvisa

port, what, count = int(sys.argv[1]), sys.argv[2], int(sys.argv[3])
device = pyvisa.ResourceManager("@py").open_resource(f"TCPIP0::127.0.0.1::{port}::SOCKET")
device.read_termination = "\n"
device.write_termination = "\n"


def rounds(times):
    for _ in range(times):
        while device.query("SYST:ERR?") != '0,"No error"':
            pass
        if what == "screen":
            device.write("READ:BUFFER:PCX?")
            assert len(device.read_bytes(7 + 32000 + 1)) == 32008
        else:
            assert float(device.query("READ:RF:LEVEL?")) != 0


rounds(count // 10 + 1)
wall, cpu = time.perf_counter(), time.process_time()
rounds(count)
wall, cpu = time.perf_counter() - wall, time.process_time() - cpu
print(json.dumps({"wall": wall * 1e6 / count, "cpu": cpu * 1e6 / count}))

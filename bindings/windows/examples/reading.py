"""Reads the modulation error ratio over TCP, with pywin32: python reading.py 192.168.0.10 5025"""

import sys

import pythoncom
import win32com.client
from win32com.client import gencache

kel = gencache.EnsureDispatch("QKEL4x.clsKEL4x")  # reads the type library: enumerations and by-reference arguments
setup = win32com.client.Dispatch("QHost.Application").DriverSetup(kel)
for name, value in (("Remote Control", "QPort.clsEthernet"), ("TCP/IP.Host", sys.argv[1]), ("TCP/IP.Port", sys.argv[2])):
    setup.Settings.Item(name).SetValue(-1, -1, value)
setup.OnLine = True
try:
    kel.Mode = win32com.client.constants.kelATSC
    kel.MeasureMode = win32com.client.constants.kelNORM
    print(f"MER {kel.MeasureVsbMerRmsDb:.1f} dB {kel.Prefix}")
except pythoncom.com_error as error:
    _, _, (_, source, description, _, _, code), _ = error.args
    print(f"{source}: {description} ({code + 2147221504})")
finally:
    setup.OnLine = False

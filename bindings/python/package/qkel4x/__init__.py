"""Instrument driver for the KEL model 40/43 TV test receiver and demodulator (8-VSB).

    import qkel4x

    with qkel4x.open("TCPIP::192.168.1.20::5025::SOCKET") as kel:
        kel.MeasureMode = qkel4x.KelMeasureModes.kelNORM
        print(kel.MeasureVsbMerRmsDb, kel.Prefix)

clsKEL4x is the driver itself, with every published member; open() puts one on line for the length of a with block. A
measurement without a valid value is no error: it reads 0, and Prefix tells why. Every failure is an AutomationError.
qkel4x.host replaces the host around the driver, qkel4x.visa brings in PyVISA resources as ports.
"""

from . import _core, host
from ._core import *  # noqa: F403: the published classes and enumerations, whose one list is the member table
from ._core import __version__
from ._errors import AutomationError
from ._session import Session, open

__all__ = ["AutomationError", "Session", "__version__", "host", "open", *_core.__all__]


def __getattr__(name: str) -> object:
    if name == "visa":
        # Only who asks for it pays for PyVISA.
        import importlib

        return importlib.import_module(".visa", __name__)
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")

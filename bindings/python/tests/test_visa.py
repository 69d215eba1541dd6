"""PyVISA resources as ports, with the pure-Python backend."""

from __future__ import annotations

import warnings
from typing import Any

import pytest
import qkel4x
from conftest import Instrument

with warnings.catch_warnings():
    warnings.simplefilter("ignore")
    import pyvisa
    from qkel4x.visa import VisaTransport

pytestmark = pytest.mark.filterwarnings("ignore")


@pytest.fixture(params=["tcp", "serial"])
def driver(request: Any, instrument: Instrument, quick_waits: list[float]) -> Any:
    manager = pyvisa.ResourceManager("@py")
    name, resource = {
        "tcp": ("QPort.clsEthernet", instrument.resource.replace("TCPIP::", "TCPIP0::")),
        "serial": ("QPort.clsGPIB", f"ASRL{instrument.terminal}::INSTR"),
    }[request.param]
    tree = qkel4x.ParameterNode()
    tree.Initialise("VISA", 4, 3)
    tree.AddChild("Primary Address", 1, 4).SetValue(-1, -1, 1)
    qkel4x.host.register_class(name, lambda: VisaTransport(manager, resource, tree))
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, name)
    driver.IDriverSetup.OnLine = True
    yield driver
    if driver.IDriverSetup.OnLine:
        driver.IDriverSetup.OnLine = False


def test_the_driver_works_over_pyvisa(driver: Any) -> None:
    assert driver.IDriverSetup.OnLine
    assert driver.ModelNumber != ""
    driver.MeasureMode = qkel4x.KelMeasureModes.kelPAR
    assert driver.MeasureVsbMerRmsDb > 0
    driver.RfCenterFrequency = 474e6
    assert driver.RfCenterFrequency == 474e6


def test_blocks_travel_over_pyvisa(driver: Any) -> None:
    done, image = driver.ScreenShot(3)
    assert done and image[0] == 0x0A
    assert driver.MeasureRfLevel != 0


def test_a_resource_that_is_not_there_does_not_go_on_line(quick_waits: list[float]) -> None:
    # Some backends notice the refused connection only when they send.
    qkel4x.host.register_class("QPort.clsEthernet", lambda: VisaTransport("@py", "TCPIP0::127.0.0.1::1::SOCKET"))
    driver = qkel4x.clsKEL4x()
    driver.IDriverSetup.Settings.Item("Remote Control").SetValue(-1, -1, "QPort.clsEthernet")
    driver.IDriverSetup.OnLine = True
    assert driver.IDriverSetup.OnLine is False


def test_a_resource_of_no_known_kind_does_not_open() -> None:
    port = VisaTransport("@py", "NONSENSE::1::INSTR")
    with pytest.raises(qkel4x.AutomationError) as raised:
        port.OnLine = True
    assert raised.value.code == 2010
    assert not port.OnLine
    with pytest.raises(qkel4x.AutomationError) as raised:
        port.Query("*IDN?")
    assert raised.value.code == 2010


def test_a_time_out_has_its_number_and_the_port_is_clean_afterwards(instrument: Instrument) -> None:
    port = VisaTransport("@py", instrument.resource)
    port.Timeout = 0.2
    port.OnLine = True
    with pytest.raises(qkel4x.AutomationError) as raised:
        port.Query()
    assert raised.value.code == 2013
    port.Timeout = 5.0
    assert port.Exchange("SYST:ERR?", True) is not None
    assert "," in port.Query("*IDN?")
    port.OnLine = False

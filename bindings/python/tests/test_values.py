"""What Python values become on their way to the driver and back."""

from __future__ import annotations

import datetime
import enum
import pickle
from typing import Any

import pytest
import qkel4x
from scripted import Host, talk


def sent(host: Host, line: str, *more: str) -> None:
    host.expect(talk(["> " + line, *more]))


def test_an_enumeration_reads_as_its_member(driver: Any, host: Host) -> None:
    sent(host, "SENSE:ATSC:AGC?", "< FAST")
    value = driver.SpecFuncLoopAgc
    assert value is qkel4x.KelSpecFuncLoopAgcs.kelLasFast
    assert isinstance(value, enum.IntEnum)
    host.check()


def test_an_enumeration_takes_its_member_and_its_number(driver: Any, host: Host) -> None:
    for value in (qkel4x.KelSpecFuncLoopAgcs.kelLasFast, 1):
        sent(host, "SENSE:ATSC:AGC FAST")
        driver.SpecFuncLoopAgc = value
        host.check()


def test_an_unknown_number_reaches_the_drivers_own_check(driver: Any, host: Host) -> None:
    host.expect([])
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.SpecFuncLoopAgc = 99
    assert raised.value.code == qkel4x.ErrorConstants.qkelInvalidPropertyValue
    assert raised.value.description == "Invalid property value (SpecFuncLoopAgc = 99)"


def test_enumerations_pickle() -> None:
    assert pickle.loads(pickle.dumps(qkel4x.KelModes.kelATSC)) is qkel4x.KelModes.kelATSC


@pytest.mark.parametrize(
    "value, fields",
    [
        (datetime.time(14, 3, 9), "14,3,9"),
        (datetime.datetime(2009, 1, 5, 14, 3, 9), "14,3,9"),
        (0.5, "12,0,0"),
    ],
)
def test_setup_time_takes_times_and_days(driver: Any, host: Host, value: Any, fields: str) -> None:
    sent(host, "SYST:Time " + fields)
    driver.SetupTime = value
    host.check()


@pytest.mark.parametrize(
    "value, fields",
    [
        (datetime.date(2009, 1, 5), "09,1,5"),
        (datetime.datetime(2009, 1, 5, 23, 59, 59), "09,1,5"),
        (39818, "09,1,5"),
        (39818.75, "09,1,5"),
        (datetime.date(1899, 12, 29), "99,12,29"),
        (datetime.datetime(1899, 12, 28, 18, 0), "99,12,28"),
    ],
)
def test_setup_date_takes_dates_and_days(driver: Any, host: Host, value: Any, fields: str) -> None:
    sent(host, "SYST:DATE " + fields)
    driver.SetupDate = value
    host.check()


def test_every_second_of_a_day_arrives_as_it_is(driver: Any, host: Host) -> None:
    for second in range(0, 86400, 61):
        time = (datetime.datetime.min + datetime.timedelta(seconds=second)).time()
        sent(host, f"SYST:Time {time.hour},{time.minute},{time.second}")
        driver.SetupTime = time
        host.check()


def test_dates_read_as_datetime(driver: Any, host: Host) -> None:
    sent(host, "SYST:TIME?", "< 14,3,9")
    assert driver.SetupTime == datetime.datetime(1899, 12, 30, 14, 3, 9)
    sent(host, "SYST:DATE?", "< 2009,1,5")
    assert driver.SetupDate == datetime.datetime(2009, 1, 5)


def test_statistics_read_as_durations() -> None:
    statistics = qkel4x.clsStatistics()
    assert statistics.MonitoringTime == datetime.timedelta(0)
    report = "01:00:00,00:10:00,9,00:20:00,9,00:00:30,9,---,9,100:00:00,9,00:05:00,9,17,---"
    statistics.Statistics = report
    assert statistics.Statistics == report
    assert statistics.MonitoringTime == datetime.timedelta(hours=1)
    assert statistics.MerDb == datetime.timedelta(seconds=30)
    assert statistics.BerBeforeRs == datetime.timedelta(days=4, hours=4)
    assert (statistics.CorrCntBeforeRs, statistics.MpegDataErrorCntAfterRs) == (17.0, 0.0)
    with pytest.raises(qkel4x.AutomationError) as raised:
        statistics.Statistics = "01:00:00"
    assert raised.value.number == 9


@pytest.mark.parametrize(
    "member, value",
    [
        ("MeasureFdSpectrumAverageCount", 32768),
        ("MeasureCdSymbolCount", 2**31),
        ("SpecFuncLoopAgc", -(2**31) - 1),
        ("RfCenterFrequency", 10**400),
    ],
)
def test_a_number_that_does_not_fit_is_an_overflow(driver: Any, host: Host, member: str, value: int) -> None:
    host.expect([])
    with pytest.raises(qkel4x.AutomationError) as raised:
        setattr(driver, member, value)
    assert raised.value.number == 6


def test_an_index_that_does_not_fit_is_an_overflow(driver: Any) -> None:
    with pytest.raises(qkel4x.AutomationError) as raised:
        driver.GhostPatternAtten(40000)
    assert raised.value.number == 6


@pytest.mark.parametrize(
    "member, value",
    [
        ("RfCenterFrequency", "500"),
        ("RfCenterFrequency", None),
        ("SpecFuncLoopAgc", 1.0),
        ("SpecFuncLoopAgc", "FAST"),
        ("MeasureCdSymbolCount", 1.5),
        ("SetupTime", "14:03:09"),
        ("SetupTime", datetime.timedelta(hours=1)),
    ],
)
def test_a_wrong_type_names_the_member(driver: Any, host: Host, member: str, value: Any) -> None:
    host.expect([])
    with pytest.raises(TypeError, match=f"clsKEL4x.{member} takes .*, not '{type(value).__name__}'"):
        setattr(driver, member, value)


def test_arguments_are_counted_and_named(driver: Any) -> None:
    with pytest.raises(TypeError, match=r"GhostPatternAtten\(\) needs its argument 'intNumber'"):
        driver.GhostPatternAtten()
    with pytest.raises(TypeError, match=r"takes only 1 argument"):
        driver.GhostPatternAtten(1, 2)
    with pytest.raises(TypeError, match=r"Reset\(\) takes no argument"):
        driver.Reset(1)
    with pytest.raises(TypeError, match="GhostPatternAtten.*takes a whole number"):
        driver.GhostPatternAtten("1")


def test_screen_shot_gives_none_where_the_buffer_is_untouched(driver: Any, host: Host) -> None:
    sent(host, "READ:SCREEN:BUFFER?", "< 0")
    assert driver.ScreenShot(qkel4x.KelScreenShotModes.kelCapture) == (True, None)
    sent(host, "READ:SCREEN:BUFFER?", "< 1")
    assert driver.ScreenShot(udtMode=3) == (False, None)
    host.expect(
        talk(["timeout 60", "> READ:BUFFER:PCX?", "block 1 23", "block 1 31", "block 1 35", "block 5 0A*5", "timeout 5"])
    )
    assert driver.ScreenShot(qkel4x.KelScreenShotModes.kelTransfer) == (True, b"\n" * 5)
    host.check()


def test_a_reply_that_is_no_utf8_is_latin_1(driver: Any, host: Host) -> None:
    sent(host, "READ:RF:LEVEL?", "< -45.3 (\u00b5V)")
    assert driver.MeasureRfLevel == -45.3
    assert driver.Postfix == "(\u00b5V)"

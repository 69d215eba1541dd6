# Made by make_stubs.py from the member table; a test holds it to that.

import datetime
from collections.abc import Callable, Iterator
from enum import IntEnum
from typing import Any, Generic, TypeVar, overload

_Read = TypeVar("_Read", covariant=True)
_Write = TypeVar("_Write", contravariant=True)
_Date = datetime.datetime | datetime.date | datetime.time | float
_Value = None | bool | int | float | str

class _Setting(Generic[_Read, _Write]):
    """A property that takes more types than it gives."""

    @overload
    def __get__(self, instance: None, owner: type) -> _Setting[_Read, _Write]: ...
    @overload
    def __get__(self, instance: object, owner: type | None = None) -> _Read: ...
    def __set__(self, instance: object, value: _Write) -> None: ...

__version__: str
__all__: list[str]

class ParameterNode:
    """A setting or a group of settings: a name, a value, an option list, a read-only flag and children."""

    def __init__(self) -> None: ...
    @property
    def Name(self) -> str: ...
    OptionList: str
    ReadOnly: bool
    def Initialise(
        self, name: str, code1: int, code2: int, option_list: str = "", description: str = ""
    ) -> None: ...
    def Item(self, path: str) -> ParameterNode: ...
    def AddChild(
        self, name: str, code1: int, code2: int, option_list: str = "", description: str = ""
    ) -> ParameterNode: ...
    def AddTree(self, tree: Any, index1: int = -1, index2: int = -1) -> None: ...
    def GetValue(self, i: int = -1, j: int = -1) -> _Value: ...
    def SetValue(self, i: int, j: int, value: _Value) -> None: ...
    def __iter__(self) -> Iterator[ParameterNode]: ...

class Bench:
    def __init__(self, virtual_clock: bool, serial_device: str, trace_file: str) -> None: ...
    def trace_lost(self) -> str: ...
    def last_error(self) -> str: ...

def GetDisplayValue(list: str, index: int) -> str:
    """The display name of the entry at a position, counted from 0, of an option list."""

def register_class(name: str, factory: Callable[[], Any]) -> None: ...
def unregister_class(name: str) -> None: ...
def set_wait(function: Callable[[float], object] | None) -> None: ...
def set_simulation(flag: bool | Callable[[], bool]) -> None: ...
def set_log(log: Any) -> None: ...
def set_reporter(reporter: Any) -> None: ...
def host_state() -> Any: ...
def restore_host(state: Any) -> None: ...
def enumerations() -> list[type[IntEnum]]: ...
def member_table() -> list[dict[str, Any]]: ...

class KelModes(IntEnum):
    """Operating mode (the demodulation standard)."""

    kelNYQI = 1
    kelNYQM = 2
    kelNYQN = 3
    kelQAM = 4
    kelQAMA = 5
    kelJ83A = 6
    kelJ83B = 7
    kelJ83C = 8
    kelMPEG = 9
    kelM83A = 10
    kelM83B = 11
    kelM83C = 12
    kelDVBT = 13
    kelATSC = 14
    kelNTSC = 15

class KelMeasureModes(IntEnum):
    """Measurement mode within the ATSC mode."""

    kelUndefined = -1
    kelNORM = 0
    kelPAR = 1
    kelCCDF = 2
    kelSP_2 = 3
    kelCDI = 4
    kelSP_1 = 5
    kelSP_3 = 6
    kelAPH = 7
    kelAGD = 8
    kelPOL = 9
    kelADIS = 10
    kelEPAT = 11
    kelEYEM = 12
    kelHIST = 13
    kelHII = 14
    kelHIQ = 15
    kelPV = 16
    kelAJIT = 17
    kelPJIT = 18
    kelCENV = 19

class KelInputPorts(IntEnum):
    """Input port."""

    kelReceiver = 2
    kelDemod = 4
    kelIF = 128
    kelReceiver50ohm = 50
    kelReceiver75ohm = 75

class KelInputAttenuations(IntEnum):
    """Receiver attenuation in dB, or automatic."""

    kelAttenAuto = 255
    kelAtten00 = 0
    kelAtten05 = 5
    kelAtten10 = 10
    kelAtten15 = 15
    kelAtten20 = 20
    kelAtten25 = 25
    kelAtten30 = 30
    kelAtten35 = 35
    kelAtten40 = 40
    kelAtten45 = 45
    kelAtten50 = 50
    kelAtten55 = 55

class KelRxAttenModes(IntEnum):
    """Noise and distortion trade-off of the receiver attenuator."""

    kelRxAttenLoNoise = 0
    kelRxAttenNormal = 1
    kelRxAttenLoDistn = 2
    kelRxAttenLowestDistn = 3

class KelDemodAttenuations(IntEnum):
    """Demodulator attenuation setting."""

    kelDemodAttenAuto = 1
    kelDemodManualLowAtten = 2
    kelDemodManualLowPreamp = 3
    kelDemodManualHigh = 4

class KelDemodAttenVals(IntEnum):
    """What the demodulator attenuator uses at the moment."""

    kelDAVManualLowPreamp = 0
    kelDAVManualLowAtten = 1
    kelDAVManualHigh = 2
    kelDAVAutoLowPreamp = 10
    kelDAVAutoLowAtten = 11
    kelDAVAutoHigh = 12

class KelSpecFuncLoopAgcs(IntEnum):
    """Speed of the demodulator's gain control."""

    kelLasSlow = 0
    kelLasFast = 1

class KelSpecFuncLoopBandwidths(IntEnum):
    """Bandwidth of the carrier and symbol-rate loops."""

    kelLbsLo = 0
    kelLbsMed = 1
    kelLbsHi = 2

class KelSpecFuncMinBerIntegrations(IntEnum):
    """Minimum integration of the bit error ratio."""

    kelBerEXT = 0
    kelBer1 = 1
    kelBer10 = 10
    kelBer100 = 100
    kelBer1000 = 1000

class KelSpecFuncEqualizers(IntEnum):
    """State of the equalizer."""

    kelEqualizerOff = 0
    kelEqualizerOn = 1
    kelEqualizerFreeze = 2

class KelSpecFuncEqualizerModes(IntEnum):
    """Complex or real equalizer."""

    kelEquModeComp = 0
    kelEquModeReal = 1

class KelSpecFuncEqualizerAdaptations(IntEnum):
    """Adaptation speed of the equalizer."""

    kelEquAdapSlow = 0
    kelEquAdapMed = 1
    kelEquAdapFast = 2

class KelSpecFuncFreqRfFixed(IntEnum):
    """Which of the two RF frequencies stays when the other settings change."""

    kelRfFixedCenter = 0
    kelRfFixedPilot = 1

class KelSpecFuncFreqSidePos(IntEnum):
    """Position of the sideband."""

    kelSidePosNorm = 0
    kelSidePosInv = 1

class KelStatusSawFilterBWs(IntEnum):
    """Bandwidth of the SAW filter; the value is the bandwidth in MHz."""

    kelSawOFF = 0
    kelSaw2MHz = 2
    kelSaw6MHz = 6
    kelSaw7MHz = 7
    kelSaw8MHz = 8

class KelReferenceSources(IntEnum):
    """Source of the 10 MHz reference."""

    kelInternal = 0
    kelExternal = 1

class KelSetupLevelUnits(IntEnum):
    """Unit of the level display."""

    kelDBMV = 0
    kelDBPW = 1
    kelDBUW = 2
    kelDBM = 3
    kelDBUV = 4
    kelMV = 5

class KelSwitchStates(IntEnum):
    """A switch."""

    kelOff = 0
    kelOn = 1

class KelStatusRejFilterNotchWidths(IntEnum):
    """Width of the rejection filter's notch."""

    kel100Hz = 0
    kel1kHz = 1
    kel10kHz = 2
    kel100kHz = 3

class KelFdSpectrumDetectors(IntEnum):
    """Detector of the spectrum display."""

    kelMIN = 0
    kelRMS = 1
    kelMAX = 2

class KelEchoPatternRanges(IntEnum):
    """Range of the echo-pattern display."""

    kelFULL = 0
    kelRG1 = 1
    kelRG2 = 2
    kelRG3 = 3
    kelZOOM1 = 4
    kelZOOM2 = 5

class KelEchoPatternScales(IntEnum):
    """Scale of the echo-pattern display."""

    kelMicroSec = 0
    kelKilometres = 1
    kelMiles = 2

class KelFdDetectors(IntEnum):
    """Detector of the frequency-response display."""

    kelFdRMS = 0
    kelFdPEAK = 1

class KelEmIntervals(IntEnum):
    """Interval of the eye monitor."""

    kel20sec = 0
    kel40sec = 1
    kel1min = 2
    kel2min = 3
    kel4min = 4
    kel10min = 5
    kel20min = 6
    kel40min = 7
    kel1hrs = 8
    kel2hrs = 9
    kel4hrs = 10
    kel12hrs = 11
    kel1days = 12
    kel2days = 13
    kel4days = 14
    kel10days = 15
    kel20days = 16
    kel50days = 17
    kel100days = 18
    kel200days = 19
    kel500days = 20
    kel1000days = 21

class KelFdJitterApplications(IntEnum):
    """What the jitter measurement is applied to."""

    kelFdJitterCW = 0
    kelFdJitterNoise = 1

class KelScreenShotModes(IntEnum):
    """What ScreenShot does; the members are bits of one value."""

    kelCapture = 1
    kelTransfer = 2
    kelIncludeHeader = 4

class ErrorConstants(IntEnum):
    """Error numbers of this driver."""

    qkelInvalidPropertyValue = 380
    qkelArgumentNotOptional = 449
    qkelQueryFailed = 2004
    qkelCommandFailed = 2005
    qkelBadMeasureMode = 2016
    qkelBadInputPort = 2018
    qkelFuntionNotAvailable = 2019
    qkelBadEqualiserMode = 2023
    qkelBadRemoteControlPort = 2024

class clsKEL4x:
    """Driver for one KEL model 40/43 TV test receiver and demodulator (8-VSB)."""

    @overload
    def __init__(self) -> None: ...
    @overload
    def __init__(self, bench: Bench) -> None: ...

    @property
    def IDriverSetup(self) -> IDriverSetup:
        """How a host sets up the driver: Name, Settings and OnLine."""

    @property
    def IDriverIdentify(self) -> IDriverIdentify:
        """How a host asks the driver what instrument it is talking to."""

    @property
    def ResponseString(self) -> str:
        """The last decoded reply, as the instrument sent it.

        Type: str, read only
        Errors: None; nothing is sent.
        """

    @property
    def Prefix(self) -> str:
        """The status word of the last reply: "<", ">", "*", "---", "UNDER", "OVER", "NORF" or empty.

        Type: str, read only
        Errors: None; nothing is sent.
        """

    @property
    def Postfix(self) -> str:
        """The remark of the last reply, from its first "(" on.

        Type: str, read only
        Errors: None; nothing is sent.
        """

    def Reset(self) -> None:
        """Restarts the instrument.

        Errors: AutomationError where the driver or the instrument's link fails.
        Note: Takes 15 s. Invalidates the stored echo pattern and the remembered measurement mode.
        """

    @property
    def Identity(self) -> str:
        """The whole identification of the instrument.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: Asked for once in the life of the object. Wraps a link error with 2005 and any other failure
          with 2004.
        """

    @property
    def Manufacturer(self) -> str:
        """Field 0 of the identification; empty where the reply has no such field.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: An error names the source clsKEL4x.IDriverIdentify_Manufacturer.
        """

    @property
    def ModelNumber(self) -> str:
        """Field 1 of the identification; empty where the reply has no such field.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: An error names the source clsKEL4x.IDriverIdentify_ModelNumber.
        """

    @property
    def SerialNumber(self) -> str:
        """Field 2 of the identification; empty where the reply has no such field.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: An error names the source clsKEL4x.IDriverIdentify_SerialNumber.
        """

    @property
    def FirmwareVersion(self) -> str:
        """Field 3 of the identification; empty where the reply has no such field.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: An error names the source clsKEL4x.IDriverIdentify_FirmwareVersion.
        """

    @property
    def InstalledHardware(self) -> str:
        """The installed options as comma-separated codes, such as "KEL-B1,KEL-B3,EXTREF".

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: Found once in the life of the object; tries the SAW filters one by one where the instrument
          does not list its boards. An error names the source clsKEL4x.IDriverIdentify_InstalledHardware.
        """

    @property
    def AlarmStatistics(self) -> clsStatistics:
        """The alarm statistics report, decoded into a new object at every read.

        Type: clsStatistics, read only
        Errors: A report that cannot be decoded fails with 2004.
        """

    def AlarmRegisterClear(self) -> None:
        """Clears the alarm registers.

        Errors: AutomationError where the driver or the instrument's link fails.
        Note: Takes 3 s. Its error texts read "AlarmRegisterClear method failed".
        """

    Mode: _Setting[KelModes, KelModes | int]
    """Operating mode of the instrument.

    Type: KelModes, read and write
    Range: kelATSC
    Errors: 380 on any other mode, with its number outside the enumeration and its mnemonic within.
    Note: A write takes 10 s, and invalidates the stored echo pattern and the remembered measurement mode.
    """

    MeasureMode: _Setting[KelMeasureModes, KelMeasureModes | int]
    """Measurement mode within the ATSC mode.

    Type: KelMeasureModes, read and write
    Range: kelNORM to kelCENV
    Errors: 380 on kelUndefined and outside the enumeration.
    Note: Remembered once written or read. A write takes up to 10 s. The replies AJIT and PJIT are not
      recognised: the two jitter modes read back from memory only.
    """

    InputPort: _Setting[KelInputPorts, KelInputPorts | int]
    """The input that the signal comes in at.

    Type: KelInputPorts, read and write
    Range: any of the enumeration
    Errors: 380 on anything else.
    Note: 50 and 75 ohm need the option KEL-B3; without it the impedance is dropped silently. A write takes
      1 s. A write invalidates the stored echo pattern.
    """

    InputAttenuation_Receiver: _Setting[KelInputAttenuations, KelInputAttenuations | int]
    """Attenuation of the receiver input: a fixed step, or automatic.

    Type: KelInputAttenuations, read and write
    Unit: dB
    Range: 0 to 55 in steps of 5, or kelAttenAuto
    Errors: 2018 while another input than the receiver is selected.
    Note: The step is not checked: the instrument refuses what it cannot set. A write invalidates the stored
      echo pattern.
    """

    InputAttenuation: _Setting[KelInputAttenuations, KelInputAttenuations | int]
    """The same as InputAttenuation_Receiver.

    Type: KelInputAttenuations, read and write
    Unit: dB
    Range: 0 to 55 in steps of 5, or kelAttenAuto
    Errors: 2018 while another input than the receiver is selected.
    Note: An error names the source clsKEL4x.InputAttenuation_Receiver.
    """

    @property
    def InputAttenuationValue_Receiver(self) -> KelInputAttenuations:
        """Attenuation of the receiver input that is in use now, also where the automatic chose it.

        Type: KelInputAttenuations, read only
        Unit: dB
        Errors: 2018 while another input than the receiver is selected.
        """

    @property
    def InputAttenuationValue(self) -> KelInputAttenuations:
        """The same as InputAttenuationValue_Receiver.

        Type: KelInputAttenuations, read only
        Unit: dB
        Errors: 2018 while another input than the receiver is selected.
        Note: An error names the source clsKEL4x.InputAttenuationValue_Receiver.
        """

    InputAttenuationMode_Receiver: _Setting[KelRxAttenModes, KelRxAttenModes | int]
    """Trade-off between noise and distortion of the receiver attenuator.

    Type: KelRxAttenModes, read and write
    Range: any of the enumeration; kelRxAttenLowestDistn not on the 50 and 75 ohm inputs
    Errors: 2018 while another input than the receiver is selected, also while the host simulates.
    Note: The 50 and 75 ohm inputs use commands of their own.
    """

    InputAttenuation_Demod: _Setting[KelDemodAttenuations, KelDemodAttenuations | int]
    """Attenuation of the demodulator input.

    Type: KelDemodAttenuations, read and write
    Range: any of the enumeration
    Errors: 2018 while another input than the demodulator is selected; checked before the range.
    """

    @property
    def InputAttenuationValue_Demod(self) -> KelDemodAttenVals:
        """What the demodulator attenuator uses now.

        Type: KelDemodAttenVals, read only
        Errors: 2019 with firmware below 5.05; 2018 while another input than the demodulator is selected,
          also while the host simulates.
        """

    SpecFuncLoopAgc: _Setting[KelSpecFuncLoopAgcs, KelSpecFuncLoopAgcs | int]
    """Speed of the demodulator's gain control.

    Type: KelSpecFuncLoopAgcs, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    SpecFuncLoopBandwidth: _Setting[KelSpecFuncLoopBandwidths, KelSpecFuncLoopBandwidths | int]
    """Bandwidth of the carrier loop.

    Type: KelSpecFuncLoopBandwidths, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    SpecFuncLoopBaudBandwidth: _Setting[KelSpecFuncLoopBandwidths, KelSpecFuncLoopBandwidths | int]
    """Bandwidth of the symbol-rate loop.

    Type: KelSpecFuncLoopBandwidths, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    SpecFuncMinBerIntegration: _Setting[KelSpecFuncMinBerIntegrations, KelSpecFuncMinBerIntegrations | int]
    """Minimum integration of the bit error ratio.

    Type: KelSpecFuncMinBerIntegrations, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: Not checked: any whole number is sent.
    """

    SpecFuncEqualizer: _Setting[KelSpecFuncEqualizers, KelSpecFuncEqualizers | int]
    """State of the equalizer.

    Type: KelSpecFuncEqualizers, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: Freeze is sent as FREEZE and answered as FRE. A write invalidates the stored echo pattern.
    """

    SpecFuncEqualizerMode: _Setting[KelSpecFuncEqualizerModes, KelSpecFuncEqualizerModes | int]
    """Complex or real equalizer.

    Type: KelSpecFuncEqualizerModes, read and write
    Range: any of the enumeration
    Errors: 2004 on an unknown reply.
    """

    SpecFuncEqualizerAdaptation: _Setting[KelSpecFuncEqualizerAdaptations, KelSpecFuncEqualizerAdaptations | int]
    """Adaptation speed of the equalizer.

    Type: KelSpecFuncEqualizerAdaptations, read and write
    Range: any of the enumeration
    Errors: 2004 on an unknown reply.
    Note: A refused value names the source clsKEL4x.SpecFuncEqualizerAdaptations.
    """

    SpecFuncFreqRfFixed: _Setting[KelSpecFuncFreqRfFixed, KelSpecFuncFreqRfFixed | int]
    """Which of the two RF frequencies stays when the other settings change.

    Type: KelSpecFuncFreqRfFixed, read and write
    Range: any of the enumeration
    Errors: 2004 on an unknown reply.
    """

    SpecFuncFreqSidePos: _Setting[KelSpecFuncFreqSidePos, KelSpecFuncFreqSidePos | int]
    """Position of the sideband.

    Type: KelSpecFuncFreqSidePos, read and write
    Range: any of the enumeration
    Errors: 2004 on an unknown reply.
    """

    StatusSawFilterBW: _Setting[KelStatusSawFilterBWs, KelStatusSawFilterBWs | int]
    """Bandwidth of the SAW filter.

    Type: KelStatusSawFilterBWs, read and write
    Range: any of the enumeration
    Errors: 2004 on an unknown reply.
    Note: A write invalidates the stored echo pattern.
    """

    Setup10MhzRef: _Setting[KelReferenceSources, KelReferenceSources | int]
    """Source of the 10 MHz reference.

    Type: KelReferenceSources, read and write
    Range: any of the enumeration
    Errors: 380 on an unknown reply.
    Note: The error of an unknown reply speaks of an equalizer setting.
    """

    SetupLevelUnit: _Setting[KelSetupLevelUnits, KelSetupLevelUnits | int]
    """Unit of the level display.

    Type: KelSetupLevelUnits, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: Not checked: anything else sends the command without a unit, which the instrument refuses. An
      unknown reply reads as 0.
    """

    StatusRejFilter: _Setting[KelSwitchStates, KelSwitchStates | int]
    """The rejection filter.

    Type: KelSwitchStates, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    StatusRejFilterNotchWidth: _Setting[KelStatusRejFilterNotchWidths, KelStatusRejFilterNotchWidths | int]
    """Width of the rejection filter's notch.

    Type: KelStatusRejFilterNotchWidths, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    InputAttenHighAdjChanPower: _Setting[KelSwitchStates, KelSwitchStates | int]
    """Whether the input stage is set up for a high power in the adjacent channel.

    Type: KelSwitchStates, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: An unknown reply reads as 0.
    """

    @property
    def ReferenceLocked(self) -> bool:
        """Whether the 10 MHz reference is locked.

        Type: bool, read only
        Errors: 380 on an unknown reply.
        Note: The instrument reports the opposite. The error of an unknown reply speaks of an equalizer
          setting.
        """

    @property
    def StateSignal(self) -> bool:
        """Whether the RF level is in range.

        Type: bool, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: An unknown reply reads as false.
        """

    @property
    def RfCenterFrequency(self) -> float:
        """RF centre frequency.

        Type: float, read and write
        Unit: Hz
        Range: 42000000 to 10000000009
        Errors: 380 outside the range.
        Note: Rounded to 0.1 Hz. A write invalidates the stored echo pattern.
        """

    @RfCenterFrequency.setter
    def RfCenterFrequency(self, value: float) -> None: ...

    @property
    def RfPilotFrequency(self) -> float:
        """RF frequency of the pilot.

        Type: float, read and write
        Unit: Hz
        Range: 3000000 to 1000000000
        Errors: 380 outside the range.
        Note: Rounded to 0.1 Hz. A write invalidates the stored echo pattern.
        """

    @RfPilotFrequency.setter
    def RfPilotFrequency(self, value: float) -> None: ...

    @property
    def StatusSymbolRate(self) -> float:
        """Symbol rate.

        Type: float, read and write
        Unit: symb/s
        Range: 2000000 to 11000000
        Errors: 380 outside the range.
        Note: Rounded to 0.1 symb/s; two blanks stand before the number on the wire. A write takes 1 s. A
          write invalidates the stored echo pattern.
        """

    @StatusSymbolRate.setter
    def StatusSymbolRate(self, value: float) -> None: ...

    @property
    def StatusRejFilterNotchFreq(self) -> float:
        """Centre frequency of the rejection filter's notch.

        Type: float, read and write
        Unit: Hz
        Range: 1666000 to 1834000
        Errors: 380 outside the range.
        """

    @StatusRejFilterNotchFreq.setter
    def StatusRejFilterNotchFreq(self, value: float) -> None: ...

    SetupTime: _Setting[datetime.datetime, _Date]
    """Time of day of the instrument's clock.

    Type: datetime.datetime, read and write
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: Only the time of day counts. Sent as "SYST:Time ", lower case included.
    """

    SetupDate: _Setting[datetime.datetime, _Date]
    """Date of the instrument's clock.

    Type: datetime.datetime, read and write
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: Only the date counts; the year is sent with two digits.
    """

    @property
    def MeasureTsBitrate(self) -> float:
        """Bit rate of the transport stream.

        Type: float, read only
        Unit: Mbit/s
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MeasureTdCcdfCrestFactorMargin(self) -> float:
        """Margin of the crest factor.

        Type: float, read only
        Unit: dB
        Measurement modes: kelCCDF, kelADIS, kelCENV
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureTdCcdfCrestFactorMax(self) -> float:
        """Largest crest factor so far.

        Type: float, read only
        Unit: dB
        Measurement modes: kelCCDF, kelADIS, kelCENV
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureTdCcdfCrestFactorCurrent(self) -> float:
        """Crest factor now.

        Type: float, read only
        Unit: dB
        Measurement modes: kelCCDF, kelADIS, kelCENV
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureTdCrestFactorAqu(self) -> int:
        """Progress of the crest-factor acquisition.

        Type: int, read only
        Measurement modes: kelCCDF, kelADIS, kelCENV
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureTdCcdfPapr(self) -> float:
        """Peak-to-average power ratio.

        Type: float, read only
        Unit: dB
        Measurement modes: kelCCDF, kelCENV
        Errors: 2016 in any other measurement mode.
        Note: The mode counts also while the host simulates.
        """

    @property
    def MeasureTdCcdfPaprDelta(self) -> float:
        """Difference of the peak-to-average power ratio from the ideal one.

        Type: float, read only
        Unit: dB
        Measurement modes: kelCCDF, kelCENV
        Errors: 2016 in any other measurement mode.
        Note: The mode counts also while the host simulates.
        """

    @property
    def MeasureFdSpectrumAverage(self) -> int:
        """How many sweeps the spectrum is averaged over so far.

        Type: int, read only
        Measurement modes: kelSP_2, kelSP_1, kelSP_3, kelAJIT, kelPJIT
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureFdSpectrumShoulderLower(self) -> float:
        """Shoulder attenuation below the channel.

        Type: float, read only
        Unit: dB
        Measurement modes: kelSP_2, kelSP_1, kelSP_3
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureFdSpectrumShoulderUpper(self) -> float:
        """Shoulder attenuation above the channel.

        Type: float, read only
        Unit: dB
        Measurement modes: kelSP_2, kelSP_1, kelSP_3
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasurePilotFreqOffset(self) -> float:
        """Offset of the pilot frequency.

        Type: float, read only
        Unit: Hz
        Measurement modes: kelNORM
        Errors: 2016 in any other measurement mode.
        Note: Firmware before 4.8 reports kilohertz; the value is in hertz all the same.
        """

    @property
    def MeasureRfLevel(self) -> float:
        """RF level.

        Type: float, read only
        Unit: as SetupLevelUnit
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MeasureVsbMerRmsDb(self) -> float:
        """Modulation error ratio, RMS.

        Type: float, read only
        Unit: dB
        Measurement modes: kelNORM, kelPAR, kelAPH, kelAGD, kelPOL, kelEPAT, kelHIST
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbMerRmsPct(self) -> float:
        """Modulation error ratio, RMS, in percent.

        Type: float, read only
        Unit: %
        Measurement modes: kelNORM, kelPAR, kelAPH, kelAGD, kelPOL, kelEPAT, kelHIST
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbMerPeakPct(self) -> float:
        """Modulation error ratio, peak, in percent.

        Type: float, read only
        Unit: %
        Measurement modes: kelPAR
        Errors: 2016 in any other measurement mode.
        Note: The mode counts also while the host simulates.
        """

    @property
    def MeasureVsbEvmPeak(self) -> float:
        """Error vector magnitude, peak.

        Type: float, read only
        Unit: %
        Measurement modes: kelPAR
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbEvmRms(self) -> float:
        """Error vector magnitude, RMS.

        Type: float, read only
        Unit: %
        Measurement modes: kelNORM, kelPAR, kelAPH, kelAGD, kelPOL, kelEPAT, kelHIST
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureSymbolRateOffset(self) -> float:
        """Offset of the symbol rate.

        Type: float, read only
        Unit: symb/s
        Measurement modes: kelNORM
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbPhaseJitter(self) -> float:
        """Phase jitter.

        Type: float, read only
        Unit: deg
        Measurement modes: kelPAR
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbSignalToNoiseRatio(self) -> float:
        """Signal-to-noise ratio.

        Type: float, read only
        Unit: dB
        Measurement modes: kelPAR
        Errors: 2016 in any other measurement mode.
        """

    def MeasureResetBer(self) -> None:
        """Starts the measurement of the bit error ratio anew.

        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MeasureBerBeforeRS(self) -> float:
        """Bit error ratio before Reed-Solomon decoding.

        Type: float, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MeasureBerAfterRS(self) -> float:
        """Bit error ratio after Reed-Solomon decoding.

        Type: float, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MeasureCarrierLoopOutOfLock(self) -> bool:
        """Whether the carrier loop has lost its lock.

        Type: bool, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: True invalidates the stored echo pattern.
        """

    @property
    def MeasureMpegTsUnSync(self) -> bool:
        """Whether the transport stream has lost its synchronisation.

        Type: bool, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        Note: True invalidates the stored echo pattern.
        """

    @property
    def MeasureSegErrRatio(self) -> float:
        """Segment error ratio.

        Type: float, read only
        Measurement modes: kelNORM
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureSegErrPerSec(self) -> int:
        """Segment errors per second.

        Type: int, read only
        Unit: 1/s
        Measurement modes: kelNORM
        Errors: 2016 in any other measurement mode.
        """

    @property
    def MeasureVsbPvPilotValue(self) -> float:
        """Pilot value.

        Type: float, read only
        Measurement modes: kelPV
        Errors: 2016 in any other measurement mode. 2023 while the equalizer is frozen.
        """

    @property
    def MeasureVsbPvAmplErr(self) -> float:
        """Amplitude error of the pilot.

        Type: float, read only
        Unit: dB
        Measurement modes: kelPV
        Errors: 2016 in any other measurement mode. 2023 while the equalizer is frozen.
        """

    @property
    def MeasureVsbPvSigPilotRatio(self) -> float:
        """Ratio of the signal to the pilot.

        Type: float, read only
        Unit: dB
        Measurement modes: kelPV
        Errors: 2016 in any other measurement mode. 2023 while the equalizer is frozen.
        """

    MeasureCdAddNoise: _Setting[KelSwitchStates, KelSwitchStates | int]
    """Noise added to the constellation diagram.

    Type: KelSwitchStates, read and write
    Range: any of the enumeration
    Errors: 380 on an unknown reply.
    Note: A write wraps with 2004.
    """

    @property
    def MeasureCdAddNoiseCn(self) -> float:
        """Carrier-to-noise ratio of the added noise.

        Type: float, read and write
        Unit: dB
        Range: from 10 where StatusSymbolRate is below 6, else from 5, to 56
        Errors: 380 outside the range.
        Note: A write reads StatusSymbolRate first and wraps with 2004. The error texts have two blanks
          before "failed".
        """

    @MeasureCdAddNoiseCn.setter
    def MeasureCdAddNoiseCn(self, value: float) -> None: ...

    @property
    def MeasureNoiseGenerator(self) -> float:
        """The same as MeasureCdAddNoiseCn.

        Type: float, read and write
        Unit: dB
        Range: from 10 where StatusSymbolRate is below 6, else from 5, to 56
        Errors: 380 outside the range.
        Note: An error names the source clsKEL4x.MeasureCdAddNoiseCn.
        """

    @MeasureNoiseGenerator.setter
    def MeasureNoiseGenerator(self, value: float) -> None: ...

    @property
    def MeasureCdSymbolCount(self) -> int:
        """Number of symbols in the constellation diagram.

        Type: int, read and write
        Unit: symb
        Range: 1 to 99999
        Errors: 380 outside the range.
        """

    @MeasureCdSymbolCount.setter
    def MeasureCdSymbolCount(self, value: int) -> None: ...

    @property
    def MeasureFdSpectrumAverageCount(self) -> int:
        """Number of sweeps the spectrum is averaged over; 0 switches averaging off.

        Type: int, read and write
        Range: 0 to 999
        Measurement modes: kelSP_2, kelSP_1, kelSP_3, kelAJIT, kelPJIT
        Errors: 380 outside the range. 2016 in any other measurement mode.
        Note: 0 leaves the count in the instrument as it was.
        """

    @MeasureFdSpectrumAverageCount.setter
    def MeasureFdSpectrumAverageCount(self, value: int) -> None: ...

    MeasureFdSpectrumDetector: _Setting[KelFdSpectrumDetectors, KelFdSpectrumDetectors | int]
    """Detector of the spectrum display.

    Type: KelFdSpectrumDetectors, read and write
    Range: any of the enumeration
    Measurement modes: kelSP_2, kelSP_1, kelSP_3
    Errors: 2016 in any other measurement mode.
    Note: An unknown reply reads as 0.
    """

    @property
    def MeasureFdSpectrumStartFreq(self) -> float:
        """Start of the spectrum, from the channel centre.

        Type: float, read and write
        Unit: Hz
        Range: -4480000 to MeasureFdSpectrumStopFreq - 1340000
        Measurement modes: kelSP_2, kelSP_1, kelSP_3
        Errors: 380 outside the range. 2016 in any other measurement mode.
        Note: Sent in megahertz with two decimals. The range does not count while the host simulates.
        """

    @MeasureFdSpectrumStartFreq.setter
    def MeasureFdSpectrumStartFreq(self, value: float) -> None: ...

    @property
    def MeasureFdSpectrumStopFreq(self) -> float:
        """End of the spectrum, from the channel centre.

        Type: float, read and write
        Unit: Hz
        Range: MeasureFdSpectrumStartFreq + 1340000 to 4480000
        Measurement modes: kelSP_2, kelSP_1, kelSP_3
        Errors: 380 outside the range. 2016 in any other measurement mode.
        Note: Sent in megahertz with two decimals. The range does not count while the host simulates.
        """

    @MeasureFdSpectrumStopFreq.setter
    def MeasureFdSpectrumStopFreq(self, value: float) -> None: ...

    MeasureTdEchoPatRange: _Setting[KelEchoPatternRanges, KelEchoPatternRanges | int]
    """Range of the echo-pattern display.

    Type: KelEchoPatternRanges, read and write
    Range: any of the enumeration
    Measurement modes: kelEPAT
    Errors: 2016 in any other measurement mode. 2019 with firmware below 5.0 on all but the zoom ranges.
    Note: The text of 2019 says the opposite of what is refused. An unknown reply reads as 0.
    """

    MeasureTdEchoPatNumValues: _Setting[KelSwitchStates, KelSwitchStates | int]
    """Whether the echo-pattern display shows numbers.

    Type: KelSwitchStates, read and write
    Range: any of the enumeration
    Measurement modes: kelEPAT
    Errors: 2016 in any other measurement mode.
    Note: An unknown reply reads as 0.
    """

    MeasureTdEchoPatScale: _Setting[KelEchoPatternScales, KelEchoPatternScales | int]
    """Scale of the echo-pattern display.

    Type: KelEchoPatternScales, read and write
    Range: any of the enumeration
    Measurement modes: kelEPAT
    Errors: 2016 in any other measurement mode.
    Note: An unknown reply reads as 0.
    """

    MeasureTdEmInterval: _Setting[KelEmIntervals, KelEmIntervals | int]
    """Interval of the eye monitor.

    Type: KelEmIntervals, read and write
    Range: kel40sec to kel1000days
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: kel20sec is refused. The read returns whatever number the instrument reports.
    """

    MeasureFdDetector: _Setting[KelFdDetectors, KelFdDetectors | int]
    """Detector of the frequency-response display.

    Type: KelFdDetectors, read and write
    Range: any of the enumeration
    Measurement modes: kelAPH, kelAGD
    Errors: 2016 in any other measurement mode.
    Note: An unknown reply reads as 0.
    """

    MeasureFdJitterApplication: _Setting[KelFdJitterApplications, KelFdJitterApplications | int]
    """What the jitter measurement is applied to.

    Type: KelFdJitterApplications, read and write
    Range: any of the enumeration
    Errors: AutomationError where the driver or the instrument's link fails.
    Note: The read returns whatever number the instrument reports.
    """

    @property
    def MeasureFdAmplitudeResponse(self) -> float:
        """Amplitude at the marker.

        Type: float, read only
        Unit: dB
        Measurement modes: kelAPH, kelAGD
        Errors: 2016 in any other measurement mode. 2004 with the last reply where none holds two numbers.
        Note: Tried ten times, a second apart, until the reply holds two numbers.
        """

    @property
    def MeasureFdPhaseResponse(self) -> float:
        """Phase at the marker.

        Type: float, read only
        Unit: deg
        Measurement modes: kelAPH
        Errors: 2016 in any other measurement mode. 2004 with the last reply where none holds two numbers.
        Note: Tried ten times, a second apart, until the reply holds two numbers.
        """

    @property
    def MeasureFdGroupDelayResponse(self) -> float:
        """Group delay at the marker.

        Type: float, read only
        Unit: ns
        Measurement modes: kelAGD
        Errors: 2016 in any other measurement mode. 2004 with the last reply where none holds two numbers.
        Note: Tried ten times, a second apart, until the reply holds two numbers.
        """

    def MeasureTdGhostPattern(self) -> None:
        """Measures the ten strongest echoes and stores them.

        Measurement modes: kelEPAT
        Errors: 2016 in any other measurement mode. 2016 unless the equalizer is on, also while the host
          simulates.
        Note: Wraps with 2004 and the texts of a read. A failed query leaves the repetition limit at 0.
        """

    def GhostPatternAtten(self, intNumber: int) -> float:
        """Attenuation of one echo.

        Unit: dB
        Range: intNumber 1 to 10
        Errors: 2004 on another index. What MeasureTdGhostPattern refuses, where none is stored.
        Note: Runs MeasureTdGhostPattern first where no echo pattern is stored. Reads 0 with Prefix "---"
          where the instrument reported nothing.
        """

    def GhostPatternDelay(self, intNumber: int) -> float:
        """Delay of one echo.

        Unit: as MeasureTdEchoPatScale
        Range: intNumber 1 to 10
        Errors: 2004 on another index. What MeasureTdGhostPattern refuses, where none is stored.
        Note: Runs MeasureTdGhostPattern first where no echo pattern is stored. Reads 0 with Prefix "---"
          where the instrument reported nothing.
        """

    def MeasureFdJitterAmplitude(self) -> None:
        """Measures the seven strongest lines of the amplitude jitter and stores them.

        Measurement modes: kelAJIT
        Errors: 2016 in any other measurement mode.
        Note: The mode counts also while the host simulates. Wraps with 2004 and the texts of a read. A
          failed query leaves the repetition limit at 0.
        """

    def MeasureFdJitterPhase(self) -> None:
        """Measures the seven strongest lines of the phase jitter and stores them.

        Measurement modes: kelPJIT
        Errors: 2016 in any other measurement mode.
        Note: The mode counts also while the host simulates. Wraps with 2004 and the texts of a read. A
          failed query leaves the repetition limit at 0.
        """

    def AmplitudeJitterValue(self, intNumber: int) -> float:
        """Value of one line of the amplitude jitter.

        Unit: %
        Range: intNumber 1 to 7
        Errors: 2004 on another index. What MeasureFdJitterAmplitude refuses, where none is stored.
        Note: Runs MeasureFdJitterAmplitude first where no amplitude jitter is stored. Reads 0 with Prefix
          "---" where the instrument reported nothing.
        """

    def AmplitudeJitterFreq(self, intNumber: int) -> float:
        """Frequency of one line of the amplitude jitter.

        Unit: Hz
        Range: intNumber 1 to 7
        Errors: 2004 on another index. What MeasureFdJitterAmplitude refuses, where none is stored.
        Note: Runs MeasureFdJitterAmplitude first where no amplitude jitter is stored. Reads 0 with Prefix
          "---" where the instrument reported nothing.
        """

    def PhaseJitterValue(self, intNumber: int) -> float:
        """Value of one line of the phase jitter.

        Unit: deg
        Range: intNumber 1 to 7
        Errors: 2004 on another index. What MeasureFdJitterPhase refuses, where none is stored.
        Note: Runs MeasureFdJitterPhase first where no phase jitter is stored. Reads 0 with Prefix "---"
          where the instrument reported nothing.
        """

    def PhaseJitterFreq(self, intNumber: int) -> float:
        """Frequency of one line of the phase jitter.

        Unit: Hz
        Range: intNumber 1 to 7
        Errors: 2004 on another index. What MeasureFdJitterPhase refuses, where none is stored.
        Note: Runs MeasureFdJitterPhase first where no phase jitter is stored. Reads 0 with Prefix "---"
          where the instrument reported nothing.
        """

    def ScreenShot(self, udtMode: KelScreenShotModes | int) -> tuple[bool, bytes | None]:
        """Captures the screen (kelCapture) and transfers it as a PCX image (kelTransfer), with its block
          header where asked for (kelIncludeHeader).

        Range: udtMode any sum of the enumeration
        Errors: 2024 where the remote-control port transfers no blocks; 2004 on a malformed block.
        Note: False where the instrument refuses the capture. bytBuffer is replaced by a transfer and left
          alone otherwise.
        """

class clsStatistics:
    """Decodes model 1x statistics report"""

    def __init__(self) -> None: ...

    @property
    def Statistics(self) -> str:
        """The report; writing it decodes it.

        Type: str, read and write
        Range: at least 15 comma-separated fields
        Errors: 380 outside the range. 9 at the first missing field, 13 where a count is no number, 6 where
          a duration is out of range; what was decoded before stays.
        """

    @Statistics.setter
    def Statistics(self, value: str) -> None: ...

    @property
    def MonitoringTime(self) -> datetime.timedelta:
        """How long the instrument has monitored.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def Level(self) -> datetime.timedelta:
        """How long the level alarm has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MpegTsSync(self) -> datetime.timedelta:
        """How long the transport-stream synchronisation alarm has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MerDb(self) -> datetime.timedelta:
        """How long the MER (dB) alarm has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def EvmMerPercent(self) -> datetime.timedelta:
        """How long the EVM / MER (%) alarm has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def BerBeforeRs(self) -> datetime.timedelta:
        """How long the alarm of the bit error ratio before Reed-Solomon has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MpegDataError(self) -> datetime.timedelta:
        """How long the MPEG data error alarm has lasted.

        Type: datetime.timedelta, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def CorrCntBeforeRs(self) -> float:
        """Corrections before Reed-Solomon decoding.

        Type: float, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def MpegDataErrorCntAfterRs(self) -> float:
        """Errors left after Reed-Solomon decoding.

        Type: float, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

class clsRegister:
    """The names under which a host lists this driver."""

    def __init__(self) -> None: ...
    def GetClassDescription(self) -> str: ...
    def GetClassName(self) -> str: ...

    def IRegister_GetClassDescription(self) -> str:
        """What the host shows people: "KEL4x".

        Errors: AutomationError where the driver or the instrument's link fails.
        """

    def IRegister_GetClassName(self) -> str:
        """The class that the host is to create: "clsKEL4x".

        Errors: AutomationError where the driver or the instrument's link fails.
        """

class IDriverSetup:
    """How a host sets up a driver."""

    @property
    def Name(self) -> str:
        """The host's name for the object; empty until it is set.

        Type: str, read and write
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @Name.setter
    def Name(self, value: str) -> None: ...

    @property
    def Settings(self) -> ParameterNode:
        """The settings tree, the same object every time.

        Type: ParameterNode, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def OnLine(self) -> bool:
        """Whether the object is connected; writing it connects or disconnects.

        Type: bool, read and write
        Errors: 2002 when already on line and 2003 when already off line, both without the object-error
          base.
        Note: A port that does not open is no error: OnLine then reads false. A write takes a second.
        """

    @OnLine.setter
    def OnLine(self, value: bool) -> None: ...

class IDriverIdentify:
    """How a host asks a driver what instrument it is talking to."""

    @property
    def Manufacturer(self) -> str:
        """The maker of the instrument.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def ModelNumber(self) -> str:
        """The model.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def SerialNumber(self) -> str:
        """The serial number.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def FirmwareVersion(self) -> str:
        """The version of the firmware.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

    @property
    def InstalledHardware(self) -> str:
        """The installed options as comma-separated codes.

        Type: str, read only
        Errors: AutomationError where the driver or the instrument's link fails.
        """

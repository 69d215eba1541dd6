' Members of every kind and errors of every class, as a script on Windows meets them.
' arguments: value of "Remote Control", path of a setting, its value
Option Explicit
Const Base = -2147221504
Dim host, kel, setup, identify, settings, failures, i, image, ok, echo, statistics, rate, value

failures = 0
Sub Expect(claim, expected, got)
  If VarType(expected) <> VarType(got) Then
    WScript.Echo claim & ": expected type " & VarType(expected) & ", got " & VarType(got)
    failures = failures + 1
  ElseIf expected <> got Then
    WScript.Echo claim & ": expected " & expected & ", got " & got
    failures = failures + 1
  End If
End Sub
Sub ExpectError(claim, number, source, description)
  Expect claim & " (number)", number, Err.Number
  Expect claim & " (source)", source, Err.Source
  Expect claim & " (description)", description, Err.Description
  Err.Clear
End Sub
Sub Check(claim, condition)
  If Not condition Then
    WScript.Echo "not so: " & claim
    failures = failures + 1
  End If
End Sub

Set host = CreateObject("QHost.Application")
Set kel = CreateObject("QKEL4x.clsKEL4x")
Set setup = host.DriverSetup(kel)
Set identify = host.DriverIdentify(kel)

' Settings
setup.Name = "receiver 1"
Expect "name", "receiver 1", setup.Name
Set settings = setup.Settings
Expect "root", "General", settings.Name
Expect "remote control, before", "QPort.clsGPIB", settings.Item("Remote Control").Value
Expect "read-only", True, settings.Item("Type").ReadOnly
settings.Item("Remote Control").Value = WScript.Arguments(0)
settings.Item("Log Messages").Value = "No"
Expect "logging", "0", settings.Item("Log Messages").Value(-1, -1)
If WScript.Arguments.Count > 1 Then settings.Item(WScript.Arguments(1)).Value = WScript.Arguments(2)
If WScript.Arguments.Count > 3 Then settings.Item(WScript.Arguments(3)).Value = WScript.Arguments(4)

' Off line
On Error Resume Next
value = kel.MeasureRfLevel
ExpectError "a reading off line", Base + 2004, "clsKEL4x.MeasureRfLevel", "Get MeasureRfLevel failed"
setup.OnLine = False
ExpectError "off line twice", CLng(2003), "clsKEL4x.OnLine", "Driver already off-line"
settings.Item("Type").Value = "other"
Expect "a read-only setting", CLng(383), Err.Number
Err.Clear
value = settings.Item("No such setting").Value
Expect "an unknown setting", CLng(9), Err.Number
Err.Clear
host.DriverSetup Nothing
Expect "no object", CLng(91), Err.Number
Err.Clear
On Error Goto 0

' On line
Expect "on line, before", False, setup.OnLine
setup.OnLine = True
Expect "on line", True, setup.OnLine
On Error Resume Next
setup.OnLine = True
ExpectError "on line twice", CLng(2002), "clsKEL4x.OnLine", "Driver already on-line"
On Error Goto 0

' Texts, enumerations, numbers
Expect "manufacturer", "HALVERN&TOSKE", kel.Manufacturer
Expect "model", "KEL 40", identify.ModelNumber
Expect "serial number", identify.SerialNumber, kel.SerialNumber
Check "installed hardware lists KEL-B1: " & kel.InstalledHardware, InStr(kel.InstalledHardware, "KEL-B1") > 0
kel.Mode = 14
Expect "mode", CLng(14), kel.Mode
kel.MeasureMode = 0
Expect "measurement mode", CLng(0), kel.MeasureMode
kel.RfCenterFrequency = 627000000
Expect "centre frequency", CDbl(627000000), kel.RfCenterFrequency
kel.RFCENTERFREQUENCY = "615000000"
Expect "the same from a text", CDbl(615000000), kel.rfcenterfrequency
kel.SpecFuncEqualizer = 1
Expect "equalizer", CLng(1), kel.SpecFuncEqualizer
Check "MER is a number near 30 dB: " & kel.MeasureVsbMerRmsDb, kel.MeasureVsbMerRmsDb > 20 And kel.MeasureVsbMerRmsDb < 45
Expect "status of a reading", "", kel.Prefix
Expect "a reply is a text", 8, VarType(kel.ResponseString)
Expect "a flag", 11, VarType(kel.StateSignal)

' Dates
kel.SetupDate = DateSerial(2009, 1, 5)
Expect "date", DateSerial(2009, 1, 5), kel.SetupDate
Expect "time is a date", 7, VarType(kel.SetupTime)

' A hidden member
kel.MeasureNoiseGenerator = 25
Expect "noise", CDbl(25), kel.MeasureCdAddNoiseCn

' Indexed properties: a constant, an expression and variables of three types
kel.SpecFuncEqualizer = 1
kel.MeasureMode = 11
kel.MeasureTdGhostPattern
echo = kel.GhostPatternAtten(1)
Check "an echo below the main path: " & echo, echo > 0
i = 1
Expect "by variable", echo, kel.GhostPatternAtten(i)
Expect "the variable stays", 1, CInt(i)
i = CLng(1)
Expect "by a Long", echo, kel.GhostPatternAtten(i)
i = "1"
Expect "by a text", echo, kel.GhostPatternAtten(i)
Expect "by value", echo, kel.GhostPatternAtten((i))
On Error Resume Next
i = 11
value = kel.GhostPatternAtten(i)
ExpectError "an index out of range", Base + 2004, "clsKEL4x.GhostPatternAtten", "Get GhostPatternAtten: index value out of range"
i = 40000
value = kel.GhostPatternAtten(i)
Expect "an index beyond 16 bits", CLng(6), Err.Number
Err.Clear
i = "first"
value = kel.GhostPatternAtten(i)
Expect "an index that is no number", CLng(13), Err.Number
Err.Clear

' Refusals
kel.RfCenterFrequency = 1
Expect "an argument out of range (number)", Base + 380, Err.Number
Expect "an argument out of range (source)", "clsKEL4x.RfCenterFrequency", Err.Source
Check "its description: " & Err.Description, InStr(Err.Description, "RfCenterFrequency") > 0
Expect "its help file", "QKEL4X.HLP", Err.HelpFile
Err.Clear
value = kel.MeasureVsbPvPilotValue
ExpectError "a reading in the wrong mode", Base + 2016, "clsKEL4x.MeasureVsbPvPilotValue", "Wrong measurement mode selected"
value = kel.NoSuchMember
Expect "an unknown member", CLng(438), Err.Number
Err.Clear
kel.Prefix = "x"
Expect "a member that is only read", CLng(438), Err.Number
Err.Clear
value = kel.GhostPatternAtten(1, 2)
Expect "too many arguments", CLng(450), Err.Number
Err.Clear

' The report, with its faults
Set statistics = CreateObject("QKEL4x.clsStatistics")
statistics.Statistics = "01:00:00,0,9"
Expect "a report cut short", CLng(9), Err.Number
Err.Clear
Expect "what was decoded before stays", 1 / 24, CDbl(statistics.MonitoringTime)
statistics.Statistics = "40000:00:00,0,0,0,0,0,0,0,0,0,0,0,0,1,1"
Expect "a duration that overflows", CLng(6), Err.Number
Err.Clear
statistics.Statistics = "1:00:00,0,0,0,0,0,0,0,0,0,0,0,0,many,1"
Expect "a count that is none", CLng(13), Err.Number
Err.Clear
On Error Goto 0
Set statistics = kel.AlarmStatistics
Expect "a duration is a date", 7, VarType(statistics.MonitoringTime)
Check "a new report every time", Not (statistics Is kel.AlarmStatistics)
kel.AlarmRegisterClear

' The screen
If WScript.Arguments(0) = "GUI" Then
  On Error Resume Next
  ok = kel.ScreenShot(2, image)
  ExpectError "no blocks on the front panel", Base + 2024, "clsKEL4x.ScreenShot", "Remote Control Port does not support operation"
  On Error Goto 0
Else
  ok = kel.ScreenShot(3, image)
  Expect "screen shot", True, ok
  Expect "an array of values", 8204, VarType(image)
  Check "a PCX of some size: " & UBound(image), UBound(image) > 1000
  Expect "PCX begins with 10", 10, CInt(image(0))
End If

' The host interrupts
host.Interrupt
On Error Resume Next
kel.Reset
' The error query of the failed member is interrupted as well, and its own error is what comes.
Expect "an interrupted reset", Base + 2010, Err.Number
Check "its description says so: " & Err.Description, InStr(LCase(Err.Description), "interrupt") > 0
Err.Clear
On Error Goto 0
host.ClearInterrupt
kel.Reset

' The host simulates: no instrument is asked
host.SimulationActive = True
Expect "identity while the host simulates", "", CreateObject("QKEL4x.clsKEL4x").Prefix
host.SimulationActive = False

setup.OnLine = False
Expect "off line at the end", False, setup.OnLine
Set setup = Nothing
Set kel = Nothing
WScript.Echo WScript.Arguments(0) & ": " & failures & " failures"
If failures > 0 Then WScript.Quit 1
WScript.Quit 42

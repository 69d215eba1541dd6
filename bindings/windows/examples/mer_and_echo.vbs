' Goes on line over TCP and prints the modulation error ratio and the echo pattern.
' cscript //nologo mer_and_echo.vbs HOST PORT
Set kel = CreateObject("QKEL4x.clsKEL4x")
Set setup = CreateObject("QHost.Application").DriverSetup(kel)
setup.Settings.Item("Remote Control").Value = "QPort.clsEthernet"
setup.Settings.Item("TCP/IP.Host").Value = WScript.Arguments(0)
setup.Settings.Item("TCP/IP.Port").Value = WScript.Arguments(1)
setup.OnLine = True
If Not setup.OnLine Then WScript.Quit 1   ' the port did not open
kel.Mode = 14                             ' kelATSC
kel.MeasureMode = 0                       ' kelNORM
WScript.Echo "MER " & Round(kel.MeasureVsbMerRmsDb, 1) & " dB " & kel.Prefix
kel.SpecFuncEqualizer = 1                 ' kelEqualizerOn
kel.MeasureMode = 11                      ' kelEPAT
kel.MeasureTdGhostPattern
For echo = 1 To 10
  WScript.Echo "echo " & echo & ": " & kel.GhostPatternAtten(echo) & " dB, " & kel.GhostPatternDelay(echo) & " us"
Next
setup.OnLine = False
WScript.Quit 42

// The same component from JScript: numbers, texts, errors; it has no variables by reference.
// arguments: value of "Remote Control", path of a setting, its value, ...
var BASE = -2147221504;
var failures = 0;
function expect(claim, expected, got) {
  if (expected !== got) {
    WScript.Echo(claim + ": expected " + expected + ", got " + got);
    failures = failures + 1;
  }
}
function expectError(claim, number, description, act) {
  try {
    act();
    expect(claim + " fails", "an error", "none");
  } catch (e) {
    expect(claim + " (number)", number, e.number);
    if (description !== "") expect(claim + " (description)", description, e.description);
  }
}

var host = new ActiveXObject("QHost.Application");
var kel = new ActiveXObject("QKEL4x.clsKEL4x");
var setup = host.DriverSetup(kel);
setup.Settings.Item("Remote Control").Value = WScript.Arguments(0);
for (var i = 1; i + 1 < WScript.Arguments.Count(); i = i + 2) {
  setup.Settings.Item(WScript.Arguments(i)).Value = WScript.Arguments(i + 1);
}
expectError("off line twice", 0x800A07D3 - 0x100000000, "Driver already off-line", function () { setup.OnLine = false; });
setup.OnLine = true;
expect("on line", true, setup.OnLine);
expect("manufacturer", "HALVERN&TOSKE", kel.Manufacturer);
kel.Mode = 14;
kel.MeasureMode = 0;
expect("mode", 14, kel.Mode);
kel.RfCenterFrequency = 627000000;
expect("frequency", 627000000, kel.RfCenterFrequency);
expect("a reading is a number", "number", typeof kel.MeasureVsbMerRmsDb);
expect("status", "", kel.Prefix);
kel.SpecFuncEqualizer = 1;
kel.MeasureMode = 11;
kel.MeasureTdGhostPattern();
expect("an echo", true, kel.GhostPatternAtten(1) > 0);
expectError("an index out of range", BASE + 2004, "Get GhostPatternDelay: index value out of range",
            function () { var none = kel.GhostPatternDelay(0); });
expectError("a value out of range", BASE + 380, "", function () { kel.RfPilotFrequency = 1; });
expectError("the wrong mode", BASE + 2016, "Wrong measurement mode selected", function () { kel.MeasureVsbPvPilotValue; });
expectError("a report cut short", 0x800A0009 - 0x100000000, "", function () {
  new ActiveXObject("QKEL4x.clsStatistics").Statistics = "1:00:00,0";
});
setup.OnLine = false;
expect("off line", false, setup.OnLine);
WScript.Echo(WScript.Arguments(0) + ": " + failures + " failures");
WScript.Quit(failures > 0 ? 1 : 42);

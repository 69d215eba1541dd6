' All published classes can be created by name.
Option Explicit
Dim driver, names, statistics
Set driver = CreateObject("QKEL4x.clsKEL4x")
Set names = CreateObject("QKEL4x.clsRegister")
Set statistics = CreateObject("QKEL4x.clsStatistics")
If names.IRegister_GetClassDescription() <> "KEL4x" Then WScript.Quit 1
If names.IRegister_GetClassName() <> "clsKEL4x" Then WScript.Quit 2
If statistics.Statistics <> "" Then WScript.Quit 3
If driver.Prefix <> "" Then WScript.Quit 4
Set driver = Nothing
WScript.Quit 42

' A script that fails: the test of the tests.
Dim driver
Set driver = CreateObject("QKEL4x.clsKEL4x")
driver.NoSuchMember
WScript.Quit 42

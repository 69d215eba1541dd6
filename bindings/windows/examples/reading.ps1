# Reads the modulation error ratio over TCP.  powershell -File reading.ps1 192.168.0.10 5025
param([string]$Address = "127.0.0.1", [string]$Port = "5025")
$kel = New-Object -ComObject QKEL4x.clsKEL4x
$setup = (New-Object -ComObject QHost.Application).DriverSetup($kel)
$setup.Settings.Item("Remote Control").Value(-1, -1) = "QPort.clsEthernet"
$setup.Settings.Item("TCP/IP.Host").Value(-1, -1) = $Address
$setup.Settings.Item("TCP/IP.Port").Value(-1, -1) = $Port
$setup.OnLine = $true
try {
    $kel.Mode = 14          # kelATSC
    $kel.MeasureMode = 0    # kelNORM
    "MER {0:N1} dB {1}" -f $kel.MeasureVsbMerRmsDb, $kel.Prefix
}
catch [System.Runtime.InteropServices.COMException] {
    "error {0}: {1}" -f ($_.Exception.ErrorCode + 2147221504), $_.Exception.Message
}
finally {
    $setup.OnLine = $false
}

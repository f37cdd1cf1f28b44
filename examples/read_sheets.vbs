' Reads sheets with a Scantron ScanMark 5500 on COM3 and ejects each.
'
'   cscript //nologo read_sheets.vbs [SHEETS]
'
' On 64-bit Windows the 32-bit host is %SystemRoot%\SysWOW64\cscript.exe.
Option Explicit

Const teskReaderTypeScantronScanMark5500 = 15
Const teskRecognitionTypePage = 1

Dim wanted, reader, sheets, lost
wanted = 3
If WScript.Arguments.Count > 0 Then wanted = CInt(WScript.Arguments(0))
sheets = 0
lost = 0

Set reader = CreateObject("TeskReader99.clsTeskReader")
reader.LoadDefaults teskReaderTypeScantronScanMark5500
reader.Port = 3
reader.RecognitionMode = teskRecognitionTypePage
reader.Duplex = False
' One sheet definition of 50 rows by 48 columns; element 0 is ignored.
reader.Side1Rows = Array(0, 50)
reader.Side1Cols = Array(0, 48)

If Not reader.StartReader() Then
  WScript.Echo "0 sheets read, " & wanted & " lost"
  WScript.Quit 1
End If
WScript.Echo "The " & reader.ReaderName & " is ready."

Do While sheets < wanted And lost = 0
  If reader.ReadPage() Then
    sheets = sheets + 1
    WScript.Echo "sheet " & sheets & ": " & reader.Side1TimingMarks & " rows"
    reader.EjectPage
  Else
    ' The reader has told the operator why.
    lost = wanted - sheets
  End If
Loop

reader.EndReader
WScript.Echo sheets & " sheets read, " & lost & " lost"
If lost > 0 Then WScript.Quit 1

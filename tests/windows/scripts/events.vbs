' Reads sheets from the scanner on COM3 and handles every event of them.
Option Explicit

Dim seen, sheets, rejected, reader
seen = ""
sheets = 0
rejected = 0

Sub Reader_BeforeSheet(bInitializePrinter)
  seen = seen & "B"
End Sub

Sub Reader_PreprocessSheet(iSide1Array, iSide2Array, sBarcodeArray, bReject)
  seen = seen & "P"
  sheets = sheets + 1
  If sheets = 2 Then
    bReject = True
    rejected = rejected + 1
    reader.RejectPage
  End If
End Sub

Sub Reader_ReadSheet(iSide1Array, iSide2Array, sBarcodeArray, sSide1FileName, sSide2FileName, sSide1ItemCoordinates, sSide2ItemCoordinates)
  seen = seen & "R"
  reader.EjectPage
End Sub

Sub Reader_AfterSheet(bCancelScan)
  seen = seen & "A"
  If sheets = 3 Then bCancelScan = True
End Sub

Dim count, done
Set reader = WScript.CreateObject("TeskReader99.clsTeskReader", "Reader_")
reader.LoadDefaults 15
reader.Duplex = False
reader.RecognitionMode = 1
reader.Port = 3
reader.SleepTime = 2
reader.TimeOut = 3
reader.Side1Rows = Array(0, 50)
reader.Side1Cols = Array(0, 48)
count = 0
done = reader.ReadBatch(False, 10, count)
WScript.Echo done & " " & count & " " & seen & " " & rejected
If done And count = 3 And seen = "BPRABPABPRA" And rejected = 1 Then WScript.Echo "PASSED"
WScript.Quit 0

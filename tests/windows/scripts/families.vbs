' Finds a model of each serial family among the profiles by its name, and reads two sheets from the scanner
' on its port: COM6 an OpScan 8, COM8 an SR-607, COM9 a VMR138.
Option Explicit

Dim seen, problems

Class Errors
  Public Silent

  Public Function LoadString(text)
    LoadString = text
  End Function

  Public Function MsgBoxEx(title, text)
    Problem title & ": " & text
  End Function

  Public Function RaiseError(place, number, source, description)
    Problem number & " " & source & ": " & description
  End Function
End Class

Sub Problem(text)
  problems = problems + 1
  WScript.Echo text
End Sub

Sub Same(what, found, expected)
  If found <> expected Then Problem what & " is " & found & ", not " & expected
End Sub

Sub Reader_BeforeSheet(bInitializePrinter)
  seen = seen & "B"
End Sub

Sub Reader_PreprocessSheet(iSide1Array, iSide2Array, sBarcodeArray, bReject)
  seen = seen & "P"
End Sub

Sub Reader_ReadSheet(iSide1Array, iSide2Array, sBarcodeArray, sSide1FileName, sSide2FileName, sSide1ItemCoordinates, sSide2ItemCoordinates)
  seen = seen & "R"
End Sub

Sub Reader_BeforePrint(bCancel)
  seen = seen & "b"
End Sub

Sub Reader_AfterPrint()
  seen = seen & "a"
End Sub

Sub Reader_AfterSheet(bCancelScan)
  seen = seen & "A"
End Sub

Function TypeNamed(reader, name)
  Dim profile
  TypeNamed = 0
  For Each profile In reader.Profiles
    If profile.ReaderName = name Then TypeNamed = profile.ReaderType
  Next
End Function

Sub ReadTwoSheets(name, port, columns, twoSided, imprint, expected)
  Dim reader, errorObject, sheet
  Set reader = WScript.CreateObject("TeskReader99.clsTeskReader", "Reader_")
  Set errorObject = New Errors
  errorObject.Silent = False
  Same name & " SetError", reader.SetError(errorObject), True
  Same name & " LoadDefaults", reader.LoadDefaults(TypeNamed(reader, name)), True
  Same name & " ReaderName", reader.ReaderName, name
  reader.RecognitionMode = 1
  reader.Port = port
  reader.SleepTime = 5
  reader.TimeOut = 5
  reader.Duplex = twoSided
  reader.DuplexForm = twoSided
  reader.Side1Rows = Array(0, 50)
  reader.Side1Cols = Array(0, columns)
  reader.Side2Rows = Array(0, 50)
  reader.Side2Cols = Array(0, columns)
  If imprint Then
    reader.Printer.Enabled = True
    reader.Printer.Active = True
    reader.Printer.Buffer1 = "CLASS 7B"
  End If
  Same name & " StartReader", reader.StartReader(), True
  For sheet = 1 To 2
    seen = ""
    Same name & " ReadPage", reader.ReadPage(imprint), True
    Same name & " events", seen, expected
    Same name & " rows of side 1", reader.Side1TimingMarks, 50
    If twoSided Then Same name & " rows of side 2", reader.Side2TimingMarks, 50
    reader.EjectPage
  Next
  reader.EndReader
  Same name & " port open", reader.fComm.mscComm.PortOpen, False
  Same name & " SetError", reader.SetError(Nothing), False
End Sub

problems = 0
ReadTwoSheets "Scantron OpScan 8", 6, 48, True, True, "BPRbaA"
ReadTwoSheets "Sekonic SR-607", 8, 48, True, False, "BPRA"
ReadTwoSheets "Peripheral Dynamics Inc. VMR138", 9, 12, False, False, "BPRA"
If problems = 0 Then WScript.Echo "PASSED"
WScript.Quit problems

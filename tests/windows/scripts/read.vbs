' Reads sheets from a model that is found by its name, and tells the rows of each one's sides.
'   cscript //nologo read.vbs NAME PORT COLUMNS TWO-SIDED SHEETS [barcode]
' Every fifth sheet of a model with a reject exit is rejected.
Option Explicit

Class Errors
  Public Silent

  Public Function LoadString(text)
    LoadString = text
  End Function

  Public Sub MsgBoxEx(title, text, buttons)
    WScript.Echo title & ": " & text
  End Sub

  Public Sub RaiseError(line, number, source, message, title)
    WScript.Echo number & " " & source & ": " & message
  End Sub
End Class

Sub Need(found, what)
  If Not found Then
    WScript.Echo what & " failed"
    WScript.Quit 1
  End If
End Sub

Dim words, reader, profile, barcode, sheet
Set words = WScript.Arguments
Set reader = CreateObject("TeskReader99.clsTeskReader")
Need reader.SetError(New Errors), "SetError"
For Each profile In reader.Profiles
  If profile.ReaderName = words(0) Then Need reader.LoadDefaults(profile.ReaderType), "LoadDefaults"
Next
Need reader.ReaderName = words(0), "the name"
reader.RecognitionMode = 1
reader.Port = CInt(words(1))
reader.SleepTime = 5
reader.TimeOut = 5
reader.Duplex = CBool(words(3))
reader.DuplexForm = CBool(words(3))
reader.Side1Rows = Array(0, 50)
reader.Side1Cols = Array(0, CInt(words(2)))
reader.Side2Rows = Array(0, 50)
reader.Side2Cols = Array(0, CInt(words(2)))
If words.Count > 5 Then
  reader.Barcode = True
  reader.Rejecter = True
  Set barcode = CreateObject("TeskReader99.clsTeskReaderBarcode")
  barcode.Page = 1
  barcode.Distance = 30
  barcode.Length = 12
  barcode.Orientation = 1
  reader.Barcodes.Add barcode
End If

Need reader.StartReader(), "StartReader"
For sheet = 1 To CInt(words(4))
  Need reader.ReadPage(), "ReadPage " & sheet
  WScript.Echo sheet & ": " & reader.Side1TimingMarks & " " & reader.Side2TimingMarks
  If sheet Mod 5 = 0 Then
    reader.RejectPage
  Else
    reader.EjectPage
  End If
Next
reader.EndReader
Need Not reader.fComm.mscComm.PortOpen, "closing the port"
reader.SetError Nothing
WScript.Echo "done"

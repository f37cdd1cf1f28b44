' Reads ten sheets of two sides with their barcodes from a Sekonic USB reader; every fifth is rejected.
Option Explicit

Sub Need(found, what)
  If Not found Then
    WScript.Echo what & " failed"
    WScript.Quit 1
  End If
End Sub

Dim reader, barcode, sheet
Set reader = CreateObject("TeskReader99.clsTeskReader")
Need reader.LoadDefaults(33), "LoadDefaults"
reader.Duplex = True
reader.DuplexForm = True
reader.Barcode = True
reader.Rejecter = True
Set barcode = CreateObject("TeskReader99.clsTeskReaderBarcode")
barcode.Page = 1
barcode.Distance = 30
barcode.Length = 12
barcode.Orientation = 1
reader.Barcodes.Add barcode

Need reader.StartReader(), "StartReader"
For sheet = 1 To 10
  Need reader.ReadPage(), "ReadPage " & sheet
  WScript.Echo sheet & ": " & reader.Side1TimingMarks & " " & reader.Side2TimingMarks
  If sheet Mod 5 = 0 Then
    reader.RejectPage
  Else
    reader.EjectPage
  End If
Next
Need Not reader.ReadPage(), "the end of the stock"
Need reader.EndReader(), "EndReader"
WScript.Echo "done"
WScript.Quit 0

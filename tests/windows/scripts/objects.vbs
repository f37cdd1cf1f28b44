' Collections, optional and named places, objects of the wrong class, errors: as a script sees them.
Option Explicit
On Error Resume Next

Dim checks, faults
checks = 0
faults = 0

Sub Check(name, holds)
  checks = checks + 1
  If Not holds Then
    WScript.Echo "fault: " & name
    faults = faults + 1
  End If
End Sub

Sub Clean(name)
  Check name & ": error " & Err.Number & " " & Err.Description, Err.Number = 0
  Err.Clear
End Sub

Sub Fails(name, number)
  Check name & ": error " & Err.Number & ", not " & number, Err.Number = number
  Err.Clear
End Sub

' Errors go here instead of to a message box.
Class ErrorObject
  Public Silent
  Public Reports
  Public Last
  Public Function LoadString(text)
    LoadString = text
    If text = "None" Then LoadString = "Keiner"
  End Function
  Public Sub RaiseError(line, number, source, message, title)
    Reports = Reports + 1
    Last = number & " " & source & " " & title
  End Sub
  Public Sub MsgBoxEx(title, text, buttons)
  End Sub
End Class

Dim reader, errors
Set reader = CreateObject("TeskReader99.clsTeskReader")
Set errors = New ErrorObject
errors.Reports = 0
Check "an error object is taken", reader.SetError(errors)
Clean "SetError"
Check "the host translates", reader.ReaderName = "Keiner"

' ---- Collections

Dim windows, first, second, item, rows
Set windows = reader.Windows
Set first = CreateObject("TeskReader99.clsTeskReaderWindow")
Set second = CreateObject("TeskReader99.clsTeskReaderWindow")
first.StartRow = 1
second.StartRow = 2
windows.Add first
windows.Add second, 1
Clean "Add before a place"
Check "Before = 1 makes it position 1", windows.Item(1) Is second
Check "the default member", windows(2) Is first
Check "the default member through the reader", reader.Windows(2) Is first
rows = ""
For Each item In windows
  rows = rows & item.StartRow
Next
Clean "For Each"
Check "For Each goes in order: " & rows, rows = "21"
Check "Item(0) is nothing", windows.Item(0) Is Nothing
Check "Item beyond the end is nothing", windows.Item(2000000000) Is Nothing
Check "Exists", windows.Exists(2) And Not windows.Exists(3)
Clean "look-ups that miss"
windows.Remove 7
Clean "Remove of a bad position"
Check "is reported: " & errors.Last, errors.Last = "9 Quillon Reader - clsTeskReaderWindows.Remove Application Error"
windows.Add first, 1, 1
Check "both places are reported", errors.Reports = 2
windows.Add Nothing
Check "nothing is reported", errors.Reports = 3
Clean "Add reports instead of raising"
Check "Count", windows.Count = 2

Dim barcodes
Set barcodes = CreateObject("TeskReader99.clsTeskReaderBarcodes")
barcodes.Add CreateObject("TeskReader99.clsTeskReaderBarcode")
Check "by a text that is no key", barcodes.Item("1") Is Nothing
Check "by a fraction", Not (barcodes.Item(1.4) Is Nothing)
Check "by an object", Not barcodes.Exists(barcodes)
Check "by an array", barcodes.Item(Array(1)) Is Nothing
Clean "odd indices"
barcodes.Add first
Fails "a window is no barcode", 13
Check "nothing was added", barcodes.Count = 1

Check "profiles by key", reader.Profiles.Item("33").ReaderName = "Sekonic SR3500 (USB)"
Check "profiles by position", reader.Profiles.Item(1).ReaderType = 0
Check "a key that is not there", reader.Profiles.Item("46") Is Nothing
Clean "profiles"

' ---- The wrong thing

Set reader.Printer = first
Fails "a window as imprinter", 13
Set reader.fComm = first
Fails "a window as communications form", 13
Set reader.fComm = errors
Fails "an object without mscComm", 13
reader.SetError first
Fails "a window as error object", 13
Check "the error object stays", reader.ReaderName = "Keiner"
reader.Port = 70000
Fails "a number beyond 16 bits", 6
reader.Port = "seven"
Fails "a text that is no number", 13
reader.Port = "7"
Clean "a text that is a number"
Check "is one", reader.Port = 7
reader.ReaderName = "x"
Check "a read-only property: " & Err.Number, Err.Number <> 0
Err.Clear
reader.Side1Array = Array(1)
Check "a read-only array: " & Err.Number, Err.Number <> 0
Err.Clear
reader.NoSuchMember
Fails "no such member", 438
reader.HelpID(0) = 4711
Check "HelpID", reader.HelpID(0) = 4711
reader.HelpID(5) = 1
Check "a help index that is none is reported", errors.Last = "9 Quillon Reader - clsTeskReader.HelpID Application Error"
Clean "HelpID"
reader.LoadDefaults
Check "a missing argument: " & Err.Number, Err.Number <> 0
Err.Clear
reader.StartReader 1
Check "an argument too many: " & Err.Number, Err.Number <> 0
Err.Clear

' ---- Arrays

reader.Side1Rows = Array(1, "fifty")
Fails "an element that is no number", 13
reader.Side1Rows = Array(1, 40000)
Fails "an element beyond 16 bits", 13
Dim square(1, 1)
reader.Side1Rows = square
Fails "two dimensions", 13
reader.Side1Rows = 5
Fails "no array", 13
reader.Side1Rows = Array()
Clean "an empty array"

' ---- Without profiles, and without the error object

Set reader.Profiles = Nothing
errors.Reports = 0
Check "without profiles nothing has defaults", Not reader.LoadDefaults(15)
Check "which is reported: " & errors.Last, errors.Last = "91 Quillon Reader - clsTeskReader.LoadDefaults Application Error"
Check "Nothing uninstalls the error object", Not reader.SetError(Nothing)
Clean "the end"

WScript.Echo checks & " checks, " & faults & " faults"

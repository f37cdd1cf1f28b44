' Holds a reader from when the file C:\held is there until the file C:\release is.
Option Explicit
Dim files, reader, held
Set files = CreateObject("Scripting.FileSystemObject")
Set reader = CreateObject("TeskReader99.clsTeskReader")
Set held = files.CreateTextFile("C:\held")
held.Close
Do Until files.FileExists("C:\release") ' Wine's script host cannot sleep
Loop
WScript.Echo TypeName(reader)

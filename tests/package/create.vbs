' Creates a reader and says which file serves it; "none" where no server is registered.
Option Explicit
Dim shell, reader, id
Set shell = CreateObject("WScript.Shell")
On Error Resume Next
Set reader = CreateObject("TeskReader99.clsTeskReader")
If Err.Number <> 0 Then
  WScript.Echo "none"
  WScript.Quit 1
End If
On Error GoTo 0
id = shell.RegRead("HKCR\TeskReader99.clsTeskReader\CLSID\")
WScript.Echo shell.RegRead("HKCR\CLSID\" & id & "\InprocServer32\")

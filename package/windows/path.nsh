; The folder of teskread on the PATH of the machine or of the user. The PATH may be longer than any text of this
; installer's language (1024 characters), so it is read, changed and written in memory of the system's.
!define PATH_ENTRY "$INSTDIR\bin"

Var PathKey    ; the opened key, 0 where it cannot be opened
Var PathType   ; the value's type, which stays as it is
Var PathBytes  ; its size as it was read
Var PathText   ; the address of ";TEXT", with room for one entry more

!macro PathFunctions UN
; Yields $PathKey and the text, 0 where it cannot be read whole or is none; the caller closes by ClosePath.
Function ${UN}OpenPath
  StrCpy $PathText 0
  StrCpy $0 0x80000001
  StrCpy $1 "Environment"
  ${If} $ForAll = 1
    StrCpy $0 0x80000002
    StrCpy $1 "SYSTEM\CurrentControlSet\Control\Session Manager\Environment"
  ${EndIf}
  System::Call 'advapi32::RegCreateKeyExW(p r0, w r1, i 0, p 0, i 0, i 0x2001F, p 0, *p .r2, p 0) i .r3'
  StrCpy $PathKey $2
  ${If} $3 <> 0
    StrCpy $PathKey 0
    Return
  ${EndIf}
  System::Call 'advapi32::RegQueryValueExW(p $PathKey, w "Path", p 0, *i .r4, p 0, *i .r5) i .r3'
  ${If} $3 = 2 ; there is none
    StrCpy $3 0
    StrCpy $4 2 ; that of the system is REG_EXPAND_SZ, too
    StrCpy $5 0
  ${EndIf}
  ${If} $3 <> 0
  ${OrIf} $4 < 1
  ${OrIf} $4 > 2
    Return
  ${EndIf}
  StrCpy $PathType $4
  StrCpy $PathBytes $5
  StrLen $6 "${PATH_ENTRY}"
  IntOp $6 $6 * 2
  IntOp $6 $6 + $PathBytes
  IntOp $6 $6 + 16
  System::Alloc $6
  Pop $PathText
  System::Call 'kernel32::lstrcpyW(p $PathText, w ";")'
  IntOp $7 $PathText + 2
  ${If} $PathBytes > 0
    System::Call 'advapi32::RegQueryValueExW(p $PathKey, w "Path", p 0, p 0, p r7, *i r5r5) i .r3'
    ${If} $3 <> 0 ; it has grown, or is gone
      System::Free $PathText
      StrCpy $PathText 0
    ${EndIf}
  ${EndIf}
FunctionEnd

Function ${UN}ClosePath
  ${If} $PathText P<> 0
    System::Free $PathText
  ${EndIf}
  ${If} $PathKey P<> 0
    System::Call 'advapi32::RegCloseKey(p $PathKey)'
  ${EndIf}
FunctionEnd

; $8 is the address of ";ENTRY;" in ";TEXT;", 0 for none.
Function ${UN}FindEntry
  System::Call 'kernel32::lstrcatW(p $PathText, w ";")'
  System::Call 'shlwapi::StrStrIW(p $PathText, w ";${PATH_ENTRY};") p .r8'
FunctionEnd

Function ${UN}CutLastSemicolon
  System::Call 'kernel32::lstrlenW(p $PathText) i .r6'
  IntOp $6 $6 - 1
  IntOp $6 $6 * 2
  IntOp $6 $6 + $PathText
  System::Call '*$6(&i2 0)'
FunctionEnd

; Behind the first semicolon; an empty PATH is none. $3 is the status, 0 for done.
Function ${UN}WritePath
  IntOp $7 $PathText + 2
  System::Call 'kernel32::lstrlenW(p r7) i .r6'
  ${If} $6 = 0
    System::Call 'advapi32::RegDeleteValueW(p $PathKey, w "Path") i .r3'
  ${Else}
    IntOp $6 $6 * 2
    IntOp $6 $6 + 2
    System::Call 'advapi32::RegSetValueExW(p $PathKey, w "Path", i 0, i $PathType, p r7, i r6) i .r3'
  ${EndIf}
  SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
FunctionEnd

Function ${UN}RemoveFromPath
  Call ${UN}OpenPath
  ${If} $PathText P<> 0
    Call ${UN}FindEntry
    ${If} $8 P<> 0
      StrLen $6 ";${PATH_ENTRY}"
      IntOp $6 $6 * 2
      IntOp $6 $6 + $8
      System::Call 'kernel32::lstrlenW(p r6) i .r5'
      IntOp $5 $5 * 2
      IntOp $5 $5 + 2
      System::Call 'ntdll::RtlMoveMemory(p r8, p r6, p r5)'
      Call ${UN}CutLastSemicolon
      Call ${UN}WritePath
    ${EndIf}
  ${EndIf}
  Call ${UN}ClosePath
FunctionEnd
!macroend

; An entry that somebody else has made is used and never removed.
Function AddToPath
  Call OpenPath
  ${If} $PathText P= 0
    DetailPrint "The PATH is no text that can be changed; it stays as it is."
  ${Else}
    Call FindEntry
    ${If} $8 P= 0
      System::Call 'kernel32::lstrcatW(p $PathText, w "${PATH_ENTRY}")'
      ${If} $PathBytes < 4 ; an empty text: without the semicolon of FindEntry
        System::Call 'kernel32::lstrcpyW(p $PathText, w ";${PATH_ENTRY}")'
      ${EndIf}
      Call WritePath
      ${If} $3 = 0
        StrCpy $Entered 1
      ${Else}
        DetailPrint "The PATH cannot be written; it stays as it is."
      ${EndIf}
    ${EndIf}
  ${EndIf}
  Call ClosePath
FunctionEnd

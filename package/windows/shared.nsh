; What the installer and the uninstaller both do.

; Says $Fault: to a person in a window, in a silent run on standard error.
!macro Tell
  ${If} ${Silent}
    System::Call 'kernel32::GetStdHandle(i -12) p .r9'
    FileWrite $9 "$Fault$\r$\n"
  ${Else}
    MessageBox MB_OK|MB_ICONSTOP "$Fault"
  ${EndIf}
!macroend

; Ends before anything was changed.
!macro Refuse STATUS WHY
  StrCpy $Fault "${WHY}"
  !insertmacro Tell
  SetErrorLevel ${STATUS}
  Quit
!macroend

; A program that runs and a library that is loaded cannot be opened for writing.
!macro RefuseIfInUse NAME
  ${If} $Fault == ""
  ${AndIf} ${FileExists} "$Folder\${NAME}"
    ClearErrors
    FileOpen $9 "$Folder\${NAME}" a
    ${If} ${Errors}
      StrCpy $Fault "$Folder\${NAME} is in use or may not be written. Close the programs that use it, and try again."
      StrCpy $Status ${IN_USE}
    ${Else}
      FileClose $9
    ${EndIf}
  ${EndIf}
!macroend

!macro DeleteFile NAME
  Delete "$INSTDIR\${NAME}"
!macroend

!macro RemoveFolder NAME
  RMDir "$INSTDIR\${NAME}"
!macroend

; The user's own folder of programs need not have been there before.
!macro RemoveEmptyFolder NAME
  RMDir "${NAME}"
  ${If} "${NAME}" == "${USERS_FOLDER}"
    RMDir "${USERS_FOLDER}\.."
  ${EndIf}
!macroend

; Folders that hold something else stay.
!macro DeleteFiles
  !insertmacro EachFile DeleteFile
  !insertmacro EachFile64 DeleteFile
  Delete "$INSTDIR\${LIST}"
  Delete "$INSTDIR\${UNINSTALLER}"
  !insertmacro EachFolderFromBelow RemoveFolder
  !insertmacro RemoveEmptyFolder "$INSTDIR"
!macroend

!macro SharedFunctions UN
; One installation or removal at a time, whoever is logged on. Another user's refuses to be opened.
Function ${UN}RefuseSecondRun
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\TeskReader99 setup") p .r1 ?e'
  Pop $0
  ${If} $0 = 183 ; it is there already
  ${OrIf} $1 P= 0
    !insertmacro Refuse ${IN_USE} "A setup of TeskReader99 is running already. Nothing was changed."
  ${EndIf}
FunctionEnd

Function ${UN}LookAround
  StrCpy $IsAdmin 0
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 == "Admin"
    StrCpy $IsAdmin 1
  ${EndIf}
  StrCpy $IsFor64 0
  ${If} ${IsNativeAMD64}
    StrCpy $IsFor64 1
    SetRegView 64
  ${EndIf}
FunctionEnd
!macroend

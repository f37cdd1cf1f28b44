; Putting the new files in the place of the old ones, so that a fault brings the old ones back.

Var List     ; the list that EachListed reads
Var Name     ; the file that it has come to
Var Action   ; the address of the function that it calls
Var Written  ; 1: new files have been written
Var Lost     ; 1: a file of the earlier version could not be put back
Var Aside    ; where this run keeps the earlier version's files until it ends; empty for nowhere

; A name in a list leads nowhere but below the folder.
Function ConfineName
  StrCpy $1 $Name
  StrCpy $2 ":*?"
  StrCpy $3 $Name 1
  System::Call 'shlwapi::StrCSpnW(w r1, w r2) i .r4'
  System::Call 'shlwapi::StrStrW(w r1, w "..") p .r5'
  StrLen $6 $Name
  ${If} $6 = 0
  ${OrIf} $4 <> $6
  ${OrIf} $5 P<> 0
  ${OrIf} $3 == "\"
  ${OrIf} $3 == "/"
    StrCpy $Fault "$List has the line $\"$Name$\", which is no file of TeskReader99's."
    StrCpy $Status ${FAILED}
  ${EndIf}
FunctionEnd

; Calls $Action for each file of a list, until there is a fault. No list is an empty one.
Function EachListed
  ClearErrors
  FileOpen $8 $List r
  ${If} ${Errors}
    Return
  ${EndIf}
  ${Do}
    ClearErrors
    FileRead $8 $Name
    ${If} ${Errors}
      ${ExitDo}
    ${EndIf}
    ${TrimNewLines} $Name $Name
    Call ConfineName
    ${If} $Fault == ""
      Call $Action
    ${EndIf}
  ${LoopUntil} $Fault != ""
  FileClose $8
FunctionEnd

Function CheckListed
  !insertmacro RefuseIfInUse "$Name"
FunctionEnd

Function RefuseFilesInUse
  StrCpy $Written 0
  GetFunctionAddress $Action CheckListed
  ${If} $OldFolder != ""
    StrCpy $Folder $OldFolder
    StrCpy $List "$Folder\${LIST}"
    Call EachListed
  ${EndIf}
FunctionEnd

Function SetAside
  ${If} ${FileExists} "$INSTDIR\$Name"
    ${GetParent} "$Aside\$Name" $0
    CreateDirectory $0
    ClearErrors
    Rename "$INSTDIR\$Name" "$Aside\$Name"
    ${If} ${Errors}
      StrCpy $Fault "$INSTDIR\$Name cannot be replaced."
      StrCpy $Status ${IN_USE}
    ${EndIf}
    Call RemoveEmptyFolders
  ${EndIf}
FunctionEnd

; Those that $Name stood in; the new version may have others.
Function RemoveEmptyFolders
  ${GetParent} $Name $0
  ${DoUntil} $0 == ""
    RMDir "$INSTDIR\$0"
    ${GetParent} $0 $0
  ${Loop}
FunctionEnd

; A new one: what is already there is the user's, or holds files that an earlier run could not put back.
Function MakeAside
  StrCpy $Aside "$INSTDIR\set-aside-by-setup"
  StrCpy $0 1
  ${DoWhile} ${FileExists} $Aside
    IntOp $0 $0 + 1
    StrCpy $Aside "$INSTDIR\set-aside-by-setup-$0"
  ${Loop}
  ClearErrors
  CreateDirectory $Aside
  CopyFiles /SILENT "$INSTDIR\${LIST}" $Aside
  ${If} ${Errors}
    StrCpy $Fault "$Aside cannot be written."
    StrCpy $Status ${FAILED}
  ${EndIf}
FunctionEnd

; Only the list of the scope's own installation is believed: anybody may have a file of that name. It stays beside
; the files until the new one takes its place: a run that is cut off leaves no file that nobody knows.
Function SetOldFilesAside
  StrCpy $Aside ""
  ${If} $Fault != ""
  ${OrIf} $OldFolder != $INSTDIR
  ${OrIfNot} ${FileExists} "$INSTDIR\${LIST}"
    Return
  ${EndIf}
  Call MakeAside
  ${If} $Fault == ""
    GetFunctionAddress $Action SetAside
    StrCpy $List "$Aside\${LIST}"
    Call EachListed
  ${EndIf}
FunctionEnd

!macro RefuseForeign NAME
  ${If} $Fault == ""
  ${AndIf} ${FileExists} "$INSTDIR\${NAME}"
    StrCpy $Fault "$INSTDIR\${NAME} is not TeskReader99's. Choose another folder."
    StrCpy $Status ${FAILED}
  ${EndIf}
!macroend

!macro ListFile NAME
  FileWrite $8 "${NAME}$\r$\n"
!macroend

!macro WriteFile NAME
  ${GetParent} "$INSTDIR\${NAME}" $0
  CreateDirectory $0
  ClearErrors
  File "/oname=$INSTDIR\${NAME}" "${FILES}\${NAME}"
  ${If} ${Errors}
    StrCpy $Fault "$INSTDIR\${NAME} cannot be written."
    StrCpy $Status ${FAILED}
  ${EndIf}
!macroend

Function WriteList
  CreateDirectory $INSTDIR
  ClearErrors
  FileOpen $8 "$INSTDIR\${LIST}" w
  ${If} ${Errors}
    StrCpy $Fault "$INSTDIR cannot be written."
    StrCpy $Status ${FAILED}
    Return
  ${EndIf}
  !insertmacro EachFile ListFile
  !insertmacro EachFile64 ListFile
  !insertmacro ListFile "${UNINSTALLER}"
  FileClose $8
FunctionEnd

Function WriteFiles
  !insertmacro EachFile RefuseForeign
  !insertmacro EachFile64 RefuseForeign
  !insertmacro RefuseForeign "${UNINSTALLER}"
  ${If} $Aside == ""
    !insertmacro RefuseForeign "${LIST}"
  ${EndIf}
  ${If} $Fault != ""
    Return
  ${EndIf}
  StrCpy $Written 1
  Call WriteList
  SetOverwrite try
  !insertmacro EachFile WriteFile
  ${If} $IsFor64 = 1
    !insertmacro EachFile64 WriteFile
  ${EndIf}
  ClearErrors
  WriteUninstaller "$INSTDIR\${UNINSTALLER}"
  ${If} ${Errors}
    StrCpy $Fault "$INSTDIR\${UNINSTALLER} cannot be written."
    StrCpy $Status ${FAILED}
  ${EndIf}
FunctionEnd

Function PutBack
  ${If} ${FileExists} "$Aside\$Name"
    ${GetParent} "$INSTDIR\$Name" $0
    CreateDirectory $0
    ClearErrors
    Rename "$Aside\$Name" "$INSTDIR\$Name"
    ${If} ${Errors}
      StrCpy $Lost 1
    ${EndIf}
  ${EndIf}
FunctionEnd

Function PutAllBack
  StrCpy $Fault "" ; EachListed ends at a fault
  GetFunctionAddress $Action PutBack
  StrCpy $List "$Aside\${LIST}"
  Call EachListed
  CreateDirectory $INSTDIR
  ClearErrors
  CopyFiles /SILENT "$Aside\${LIST}" "$INSTDIR"
  ${If} ${Errors}
  ${OrIf} $Fault != ""
    StrCpy $Lost 1
  ${EndIf}
  ${If} $Lost = 0
    RMDir /r "$Aside"
  ${EndIf}
FunctionEnd

; Says in $Fault how things stand now.

Function BringBack
  Push $Fault
  StrCpy $Lost 0
  ${If} $Registering = 1
    Call UnregisterServers
    ${If} $OldFolder == ""
      DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    ${EndIf}
  ${EndIf}
  ${If} $Written = 1
    !insertmacro DeleteFiles
    StrCpy $Written 0
  ${EndIf}
  ${If} $Aside != ""
  ${AndIf} ${FileExists} "$Aside\${LIST}"
    Call PutAllBack
  ${ElseIf} $Aside != ""
    RMDir "$Aside"
  ${EndIf}
  ${If} $Registering = 1
    Call RegisterEarlier
  ${EndIf}
  Pop $Fault
  ${If} $Lost = 1
    StrCpy $Fault "$Fault Files of the version before could not be put back: they lie in $Aside."
  ${Else}
    StrCpy $Fault "$Fault Everything is as it was before."
  ${EndIf}
FunctionEnd

; An earlier version in another folder; its uninstaller leaves the servers that now stand in this one.
Function RemoveOldFolder
  ${If} $OldFolder == ""
  ${OrIf} $OldFolder == $INSTDIR
    Return
  ${EndIf}
  StrCpy $Entered 0
  ${IfNot} ${FileExists} "$OldFolder\${LIST}"
    Return ; somebody has removed it already
  ${EndIf}
  DetailPrint "Removing the earlier version in $OldFolder"
  ClearErrors
  ExecWait '"$OldFolder\${UNINSTALLER}" /S ${FROM_SETUP} _?=$OldFolder' $0
  ${If} ${Errors}
  ${OrIf} $0 != 0
    StrCpy $Fault "TeskReader99 is installed in $INSTDIR, but the earlier version in $OldFolder cannot be removed; remove that folder."
    StrCpy $Status ${LEFT_OVER}
    Return
  ${EndIf}
  Delete "$OldFolder\${UNINSTALLER}"
  !insertmacro RemoveEmptyFolder "$OldFolder"
FunctionEnd

; The entry leads the way to the files, so it is made while they can be taken back. One that leads to another folder
; stays until the version there is removed.
Function EnterNew
  ${If} $Fault == ""
    ${If} $OldFolder == ""
    ${OrIf} $OldFolder == $INSTDIR
      Call WriteUninstallEntry
      ${If} ${Errors}
        StrCpy $Fault "TeskReader99 cannot be entered in the list of programs."
        StrCpy $Status ${FAILED}
      ${EndIf}
    ${EndIf}
  ${EndIf}
FunctionEnd

; Putting the new files in the place of the old ones, so that a fault brings the old ones back.

Var List     ; the list that EachListed reads
Var Name     ; the file that it has come to
Var Action   ; the address of the function that it calls
Var Written  ; 1: new files have been written

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
    Call $Action
  ${LoopUntil} $Fault != ""
  FileClose $8
FunctionEnd

Function CheckListed
  !insertmacro RefuseIfInUse "$Name"
FunctionEnd

Function RefuseFilesInUse
  StrCpy $Written 0
  GetFunctionAddress $Action CheckListed
  StrCpy $Folder $INSTDIR
  StrCpy $List "$Folder\${LIST}"
  Call EachListed
  ${If} $OldFolder != ""
    StrCpy $Folder $OldFolder
    StrCpy $List "$Folder\${LIST}"
    Call EachListed
  ${EndIf}
FunctionEnd

Function SetAside
  ${If} ${FileExists} "$INSTDIR\$Name"
    ${GetParent} "${ASIDE}\$Name" $0
    CreateDirectory $0
    ClearErrors
    Rename "$INSTDIR\$Name" "${ASIDE}\$Name"
    ${If} ${Errors}
      StrCpy $Fault "$INSTDIR\$Name cannot be replaced. Everything is as it was before."
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

; The old list stays beside the files until the new one takes its place: a run that is cut off leaves no file that
; nobody knows.
Function SetOldFilesAside
  ${If} $Fault != ""
  ${OrIfNot} ${FileExists} "$INSTDIR\${LIST}"
    Return
  ${EndIf}
  RMDir /r "${ASIDE}"
  CreateDirectory "${ASIDE}"
  CopyFiles /SILENT "$INSTDIR\${LIST}" "${ASIDE}"
  GetFunctionAddress $Action SetAside
  StrCpy $List "${ASIDE}\${LIST}"
  Call EachListed
FunctionEnd

!macro RefuseForeign NAME
  ${If} $Fault == ""
  ${AndIf} ${FileExists} "$INSTDIR\${NAME}"
    StrCpy $Fault "$INSTDIR\${NAME} is not TeskReader99's. Choose another folder. Nothing was changed."
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
    StrCpy $Fault "$INSTDIR\${NAME} cannot be written. Everything is as it was before."
    StrCpy $Status ${FAILED}
  ${EndIf}
!macroend

Function WriteList
  CreateDirectory $INSTDIR
  ClearErrors
  FileOpen $8 "$INSTDIR\${LIST}" w
  ${If} ${Errors}
    StrCpy $Fault "$INSTDIR cannot be written. Everything is as it was before."
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
  WriteUninstaller "$INSTDIR\${UNINSTALLER}"
FunctionEnd

Function PutBack
  ${GetParent} "$INSTDIR\$Name" $0
  CreateDirectory $0
  Rename "${ASIDE}\$Name" "$INSTDIR\$Name"
FunctionEnd

Function BringBack
  StrCpy $0 $Fault ; EachListed ends at a fault
  Push $0
  ${If} $Status = ${NOT_REGISTERED}
    Call UnregisterServers
  ${EndIf}
  ${If} $Written = 1
    !insertmacro DeleteFiles
    StrCpy $Written 0
  ${EndIf}
  ${If} ${FileExists} "${ASIDE}\${LIST}"
    StrCpy $Fault ""
    GetFunctionAddress $Action PutBack
    StrCpy $List "${ASIDE}\${LIST}"
    Call EachListed
    CreateDirectory $INSTDIR
    CopyFiles /SILENT "${ASIDE}\${LIST}" "$INSTDIR"
    RMDir /r "${ASIDE}"
  ${EndIf}
  ${If} $Status = ${NOT_REGISTERED}
    Call RegisterEarlier
  ${EndIf}
  Pop $Fault
FunctionEnd

; An earlier version in another folder; its uninstaller leaves the servers that now stand in this one.
Function RemoveOldFolder
  ${If} $OldFolder == ""
  ${OrIf} $OldFolder == $INSTDIR
    Return
  ${EndIf}
  DetailPrint "Removing the earlier version in $OldFolder"
  ExecWait '"$OldFolder\${UNINSTALLER}" /S _?=$OldFolder'
  Delete "$OldFolder\${UNINSTALLER}"
  !insertmacro RemoveEmptyFolder "$OldFolder"
  StrCpy $Entered 0
FunctionEnd

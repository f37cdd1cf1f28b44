; Registering the servers, each by the system's regsvr32 of its own bits, in the scope of $ForAll.
!define CLASS "TeskReader99.clsTeskReader"
!define SERVER32 "$INSTDIR\server32\TeskReader99.dll"
!define SERVER64 "$INSTDIR\server64\TeskReader99.dll"

Var Registering ; 1: servers of this run may be registered
Var Before32 ; the servers that were registered before; empty for none
Var Before64
Var User32   ; the servers of the user, while those of the machine are removed
Var User64

; Runs the regsvr32 of 32 or 64 bits; $0 is its status. A program of 32 bits sees that of 64 as Sysnative's.
!macro Regsvr BITS OPTIONS SERVER
  ClearErrors
  !if ${BITS} == 64
    ExecWait '"$WINDIR\Sysnative\regsvr32.exe" /s ${OPTIONS} "${SERVER}"' $0
  !else
    ExecWait '"$SYSDIR\regsvr32.exe" /s ${OPTIONS} "${SERVER}"' $0
  !endif
  ${If} ${Errors}
    StrCpy $0 "that it cannot be started"
  ${EndIf}
!macroend

; The file that the scope's classes of 32 or 64 bits lead to, empty for none.
!macro ReadServer BITS RESULT
  SetRegView ${BITS}
  ReadRegStr $9 SHCTX "Software\Classes\${CLASS}\CLSID" ""
  StrCpy ${RESULT} ""
  ${If} $9 != ""
    ReadRegStr ${RESULT} SHCTX "Software\Classes\CLSID\$9\InprocServer32" ""
  ${EndIf}
  !insertmacro UsualView
!macroend

!macro UsualView
  ${If} $IsFor64 = 1
    SetRegView 64
  ${Else}
    SetRegView 32
  ${EndIf}
!macroend

!macro RegisterServer BITS SERVER
  DetailPrint "Registering ${SERVER}"
  ${If} $ForAll = 1
    !insertmacro Regsvr ${BITS} "" "${SERVER}"
  ${Else}
    !insertmacro Regsvr ${BITS} "/n /i:user" "${SERVER}"
  ${EndIf}
  ${If} $0 != 0
  ${AndIf} $Fault == ""
    StrCpy $Fault "${SERVER} cannot be registered: regsvr32 says $0."
    StrCpy $Status ${NOT_REGISTERED}
  ${EndIf}
!macroend

; A server that another program has put in the place of this one's stays. Either of the two may stand where classes of
; both kinds share one place.
!macro UnregisterIfOwn BITS REGISTERED SERVER
  ${If} "${REGISTERED}" == "${SERVER32}"
  ${OrIf} "${REGISTERED}" == "${SERVER64}"
    !insertmacro UnregisterServer ${BITS} "${SERVER}"
  ${EndIf}
!macroend

!macro UnregisterServer BITS SERVER
  DetailPrint "Unregistering ${SERVER}"
  ${If} $ForAll = 1
    !insertmacro Regsvr ${BITS} "/u" "${SERVER}"
  ${Else}
    !insertmacro Regsvr ${BITS} "/u /n /i:user" "${SERVER}"
  ${EndIf}
!macroend

!macro RegisterAgain BITS OPTIONS SERVER
  ${If} "${SERVER}" != ""
  ${AndIf} ${FileExists} "${SERVER}"
    !insertmacro Regsvr ${BITS} "${OPTIONS}" "${SERVER}"
  ${EndIf}
!macroend

!macro RegistrationFunctions UN
; A server that is unregistered for the machine takes the user's entries along.
Function ${UN}RememberUsers
  SetShellVarContext current
  !insertmacro ReadServer 32 $User32
  !insertmacro ReadServer 64 $User64
  SetShellVarContext all
FunctionEnd

Function ${UN}BringBackUsers
  !insertmacro RegisterAgain 32 "/n /i:user" "$User32"
  ${If} $IsFor64 = 1
    !insertmacro RegisterAgain 64 "/n /i:user" "$User64"
  ${EndIf}
FunctionEnd

; Whose the servers are is asked beforehand: both have the same names, which go with the first.
Function ${UN}UnregisterServers
  ${If} $ForAll = 1
    Call ${UN}RememberUsers
  ${EndIf}
  !insertmacro ReadServer 32 $1
  !insertmacro ReadServer 64 $2
  !insertmacro UnregisterIfOwn 32 "$1" "${SERVER32}"
  ${If} $IsFor64 = 1
    !insertmacro UnregisterIfOwn 64 "$2" "${SERVER64}"
  ${EndIf}
  ${If} $ForAll = 1
    Call ${UN}BringBackUsers
  ${EndIf}
FunctionEnd
!macroend

Function RegisterNew
  ${If} $Fault != ""
    Return
  ${EndIf}
  StrCpy $Registering 1
  !insertmacro ReadServer 32 $Before32
  !insertmacro ReadServer 64 $Before64
  !insertmacro RegisterServer 32 "${SERVER32}"
  ${If} $IsFor64 = 1
  ${AndIf} $Fault == ""
    !insertmacro RegisterServer 64 "${SERVER64}"
  ${EndIf}
FunctionEnd

; What RegisterNew has put in the place of other servers, or of none.
Function RegisterEarlier
  ${If} $ForAll = 1
    StrCpy $2 ""
  ${Else}
    StrCpy $2 "/n /i:user"
  ${EndIf}
  !insertmacro RegisterAgain 32 "$2" "$Before32"
  ${If} $IsFor64 = 1
    !insertmacro RegisterAgain 64 "$2" "$Before64"
  ${EndIf}
FunctionEnd

; The Windows installer. pack.sh defines VERSION, FILES, LISTS, COMPRESSOR, OUT and KILOBYTES.
;
; Silent: TeskReader99-VERSION-setup.exe /S [/ALLUSERS|/CURRENTUSER] [/PATH=yes|no] [/D=FOLDER]
;
; What an earlier version put there is set aside, the new files are written and registered, and only then does the
; old go; any fault before that brings everything back as it was.
Unicode true
!include MUI2.nsh
!include x64.nsh
!include WinVer.nsh
!include FileFunc.nsh
!include TextFunc.nsh
!include nsDialogs.nsh

!if "${COMPRESSOR}" == lzma
  SetCompressor /SOLID lzma
!else
  SetCompressor zlib
!endif
Name "TeskReader99 ${VERSION}"
OutFile "${OUT}"
RequestExecutionLevel highest ; without administrator rights it installs for the user
ManifestDPIAware true
BrandingText "TeskReader99 ${VERSION}"
SetDateSave off ; the same files make the same installer
ShowInstDetails show
ShowUninstDetails show
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "TeskReader99"
VIAddVersionKey FileDescription "TeskReader99 setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\TeskReader99"
!define LIST "TeskReader99-files.txt"  ; what lies in the folder and may be removed, a name a line
!define UNINSTALLER "uninstall-TeskReader99.exe" ; a name that no other program in the folder has
!define USERS_FOLDER "$LOCALAPPDATA\Programs\TeskReader99"
!define MENU "$SMPROGRAMS\TeskReader99"

; The status a run ends with; 0 done, 1 cancelled by a person.
!define FAILED 2
!define WRONG_SWITCH 3
!define NO_RIGHTS 4
!define IN_USE 5
!define NOT_REGISTERED 6
!define WRONG_WINDOWS 7
!define LEFT_OVER 8

!define FROM_SETUP "/FROMSETUP" ; tells the uninstaller that the setup which starts it waits for it

Var IsAdmin      ; 1: may write what all users share
Var IsFor64      ; 1: this Windows runs programs of 64 bits on an x64 processor
Var ForAll       ; 1: for the machine, 0: for the user
Var GivenFolder  ; by /D=
Var OldFolder    ; where this scope has a version installed; empty without one
Var Folder       ; whose files are asked for
Var OnPath       ; yes or no
Var Entered      ; 1: the entry on the PATH was made by an installation that is still there
Var Fault        ; what went wrong; empty while all is well
Var Status       ; the status that goes with it
Var Machine      ; the two buttons of the page that asks for whom
Var User

!include "${LISTS}"
!include shared.nsh
!include registration.nsh
!include path.nsh
!insertmacro SharedFunctions ""
!insertmacro SharedFunctions "un."
!insertmacro RegistrationFunctions ""
!insertmacro RegistrationFunctions "un."
!insertmacro PathFunctions ""
!insertmacro PathFunctions "un."
!include upgrade.nsh

!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_SMALLDESC
Page custom AskForWhom TakeForWhom
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE TakeFolder
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; --- the installer

Section "TeskReader99" Main
  SectionIn RO
  AddSize ${KILOBYTES}
  StrCpy $Registering 0
  Call RefuseFilesInUse
  Call SetOldFilesAside
  Call WriteFiles
  Call RegisterNew
  Call EnterNew
  ${If} $Fault != ""
    Call BringBack
    !insertmacro Tell
    SetErrorLevel $Status
    Abort "$Fault"
  ${EndIf}
  StrCpy $Written 0 ; nothing fails behind this
  Call RemoveOldFolder
  ${If} $Aside != ""
    RMDir /r "$Aside"
  ${EndIf}
SectionEnd

; A full disk ends the section by itself.
Function .onInstFailed
  ${If} $Written = 1
    StrCpy $Fault "$INSTDIR cannot be written; the disk may be full."
    Call BringBack
    !insertmacro Tell
  ${EndIf}
FunctionEnd

Section "teskread on the PATH" Path
SectionEnd

Section "-entries"
  CreateDirectory "${MENU}"
  SetOutPath "$INSTDIR\bin" ; where the first of them starts
  CreateShortcut "${MENU}\Scanner settings.lnk" "$INSTDIR\bin\scanner-settings.cmd"
  CreateShortcut "${MENU}\Documentation.lnk" "$INSTDIR\docs"
  CreateShortcut "${MENU}\Examples.lnk" "$INSTDIR\examples"
  Call EditPathAsChosen
  Call WriteUninstallEntry
  ${If} ${Errors}
    StrCpy $Fault "TeskReader99 is installed, but cannot be entered in the list of programs. Install it once more."
    StrCpy $Status ${LEFT_OVER}
  ${EndIf}
  ${If} $Fault != ""
    !insertmacro Tell
    SetErrorLevel $Status
  ${EndIf}
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${Main} "The automation servers for scripts and programs, the command line, documentation and examples."
  !insertmacro MUI_DESCRIPTION_TEXT ${Path} "Command windows find teskread in every folder."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function EditPathAsChosen
  StrCpy $OnPath no
  ${If} ${SectionIsSelected} ${Path}
    StrCpy $OnPath yes
    Call AddToPath
  ${ElseIf} $Entered == 1
    Call RemoveFromPath
    StrCpy $Entered 0
  ${EndIf}
FunctionEnd

; The caller asks for errors.
Function WriteUninstallEntry
  ClearErrors
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "TeskReader99"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\${UNINSTALLER}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\${UNINSTALLER}" /S'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" Path "$OnPath"
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" PathEntered $Entered
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${KILOBYTES}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
FunctionEnd

Function .onInit
  Call LookAround
  StrCpy $GivenFolder $INSTDIR
  ${IfNot} ${AtLeastWin7}
    !insertmacro Refuse ${WRONG_WINDOWS} "TeskReader99 needs Windows 7 or a later one."
  ${EndIf}
  Call RefuseSecondRun
  Call ReadSwitches
FunctionEnd

; For the machine where that is allowed, but an installation for the user alone stays one.
Function ChooseScope
  StrCpy $ForAll $IsAdmin
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
  ReadRegStr $1 HKCU "${UNINSTALL_KEY}" InstallLocation
  ${If} $0 == ""
  ${AndIf} $1 != ""
    StrCpy $ForAll 0
  ${EndIf}
FunctionEnd

Function ReadSwitches
  Call ChooseScope
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/CURRENTUSER" $0
  ${IfNot} ${Errors}
    StrCpy $ForAll 0
  ${EndIf}
  ClearErrors
  ${GetOptions} $R0 "/ALLUSERS" $0
  ${IfNot} ${Errors}
    StrCpy $ForAll 1
  ${EndIf}
  ${If} $ForAll > $IsAdmin
    !insertmacro Refuse ${NO_RIGHTS} "Only an administrator may install for all users."
  ${EndIf}
  Call RefuseUnusableFolder
  Call UseScope
  Call CheckFolder
  ${If} $Fault != ""
    !insertmacro Refuse ${WRONG_SWITCH} "$Fault"
  ${EndIf}
  ClearErrors
  ${GetOptions} $R0 "/PATH=" $0
  ${IfNot} ${Errors}
    StrCpy $OnPath $0
  ${EndIf}
  ${If} $OnPath == yes
    !insertmacro SelectSection ${Path}
  ${ElseIf} $OnPath == no
    !insertmacro UnselectSection ${Path}
  ${Else}
    !insertmacro Refuse ${WRONG_SWITCH} "/PATH= takes yes or no, not $\"$OnPath$\"."
  ${EndIf}
FunctionEnd

; NSIS drops without a word a /D= that it takes for no folder, such as a drive's root. It cuts /D= off $CMDLINE all the
; same, which tells.
Function RefuseUnusableFolder
  System::Call 'kernel32::GetCommandLineW() w .r0'
  ${If} $GivenFolder == ""
  ${AndIf} $0 != $CMDLINE
    !insertmacro Refuse ${WRONG_SWITCH} "/D= takes the full name of a folder for TeskReader99 alone, as the last switch and without quotes."
  ${EndIf}
FunctionEnd

; Brings $INSTDIR into the one form that folders are compared in; $Fault says why it cannot be the folder. On the PATH a
; semicolon would part it, and what stands between percent signs would be replaced.
Function CheckFolder
  StrCpy $1 $INSTDIR
  StrCpy $4 '*?<>|:;%"'
  System::Call 'kernel32::GetFullPathNameW(w r1, i ${NSIS_MAX_STRLEN}, w .r0, p 0) i .r2'
  System::Call 'shlwapi::PathIsRootW(w r0) i .r3'
  StrCpy $5 $0 "" 2 ; behind the drive
  StrLen $6 $5
  System::Call 'shlwapi::StrCSpnW(w r5, w r4) i .r7'
  StrCpy $8 $0 4
  ${If} $2 = 0
  ${OrIf} $2 >= ${NSIS_MAX_STRLEN}
  ${OrIf} $3 <> 0
  ${OrIf} $6 <> $7
  ${OrIf} $8 == "\\.\" ; a device
    StrCpy $Fault "$INSTDIR cannot be the folder: it takes one for TeskReader99 alone, without any of $4 in its name."
  ${ElseIf} ${FileExists} "$0"
  ${AndIfNot} ${FileExists} "$0\*.*"
    StrCpy $Fault "$INSTDIR is a file. Choose a folder."
  ${Else}
    StrCpy $INSTDIR $0
    StrCpy $1 $0 1 -1
    ${If} $1 == "\"
      StrCpy $INSTDIR $0 -1
    ${EndIf}
  ${EndIf}
FunctionEnd

Function TakeFolder
  Call CheckFolder
  ${If} $Fault != ""
    !insertmacro Tell
    StrCpy $Fault ""
    Abort
  ${EndIf}
FunctionEnd

; What the scope has installed, and what follows for folder and PATH.
Function UseScope
  ${If} $ForAll = 1
    SetShellVarContext all
    StrCpy $INSTDIR "$PROGRAMFILES\TeskReader99"
    ${If} $IsFor64 = 1
      StrCpy $INSTDIR "$PROGRAMFILES64\TeskReader99"
    ${EndIf}
  ${Else}
    SetShellVarContext current
    StrCpy $INSTDIR "${USERS_FOLDER}"
  ${EndIf}
  StrCpy $OnPath yes
  StrCpy $Entered 0
  ReadRegStr $OldFolder SHCTX "${UNINSTALL_KEY}" InstallLocation
  ${If} $OldFolder != ""
    StrCpy $INSTDIR $OldFolder
    ReadRegStr $OnPath SHCTX "${UNINSTALL_KEY}" Path
    ReadRegDWORD $Entered SHCTX "${UNINSTALL_KEY}" PathEntered
  ${EndIf}
  ${If} $GivenFolder != ""
    StrCpy $INSTDIR $GivenFolder
  ${EndIf}
FunctionEnd

; Who is no administrator has no choice and is not asked.
Function AskForWhom
  ${If} $IsAdmin = 0
    Abort
  ${EndIf}
  !insertmacro MUI_HEADER_TEXT "For whom?" "Choose who can use TeskReader99 on this computer."
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateRadioButton} 10u 20u 90% 12u "&Everybody who uses this computer"
  Pop $Machine
  ${NSD_CreateRadioButton} 10u 40u 90% 12u "&Only me"
  Pop $User
  ${If} $ForAll = 1
    ${NSD_Check} $Machine
  ${Else}
    ${NSD_Check} $User
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function TakeForWhom
  ${NSD_GetState} $Machine $0
  StrCpy $ForAll 0
  ${If} $0 = ${BST_CHECKED}
    StrCpy $ForAll 1
  ${EndIf}
  Call UseScope
  !insertmacro SelectSection ${Path}
  ${If} $OnPath == no
    !insertmacro UnselectSection ${Path}
  ${EndIf}
FunctionEnd

; --- the uninstaller

Function un.onInit
  Call un.LookAround
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "${FROM_SETUP}" $0
  ${If} ${Errors}
    Call un.RefuseSecondRun
  ${EndIf}
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
  ReadRegStr $1 HKCU "${UNINSTALL_KEY}" InstallLocation
  ${If} $0 == $INSTDIR
    StrCpy $ForAll 1
    SetShellVarContext all
  ${ElseIf} $1 == $INSTDIR
    StrCpy $ForAll 0
    SetShellVarContext current
  ${Else} ; a copy, which would take away what stands elsewhere
    !insertmacro Refuse ${FAILED} "No TeskReader99 is installed in $INSTDIR for all users or for you. Nothing was changed."
  ${EndIf}
  ${If} $ForAll > $IsAdmin
    !insertmacro Refuse ${NO_RIGHTS} "Only an administrator may uninstall what all users share."
  ${EndIf}
FunctionEnd

Section Uninstall
  StrCpy $Folder $INSTDIR
  !insertmacro EachFile RefuseIfInUse
  !insertmacro EachFile64 RefuseIfInUse
  ${If} $Fault == ""
    Call un.UnregisterServers
  ${EndIf}
  ${If} $Fault != ""
    StrCpy $Fault "$Fault Nothing was changed."
    !insertmacro Tell
    SetErrorLevel $Status
    Abort "$Fault"
  ${EndIf}
  ReadRegDWORD $Entered SHCTX "${UNINSTALL_KEY}" PathEntered
  ${If} $Entered = 1
    Call un.RemoveFromPath
  ${EndIf}
  Delete "${MENU}\Scanner settings.lnk"
  Delete "${MENU}\Documentation.lnk"
  Delete "${MENU}\Examples.lnk"
  RMDir "${MENU}"
  !insertmacro DeleteFiles
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
SectionEnd

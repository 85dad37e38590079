; The installer for Windows. Needs these definitions:
;   VERSION      four numbers
;   STAGE        folder with the files to install
;   KIBIBYTES    their size
;   FILE_LIST    script with a macro RemoveProgramFiles that deletes exactly these
;   ICON         icon of the installer
;   PICTURE      picture on its last page, 164 by 314 pixels
;   OUTPUT       file name of the installer
; "/S" installs without questions, "/D=C:\folder" into another folder.

Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel admin
ManifestDPIAware true

!include MUI2.nsh
!include LogicLib.nsh
!include WinVer.nsh
!include "${FILE_LIST}"

!define NAME "Corvane Server"
!define PROGRAM "corvane-server.exe"
!define START "Start Corvane Server.cmd"
!define MAP_NAME "Corvane Map"
!define MAP_PROGRAM "corvane-map.exe"
!define CLASSES "Software\Classes"
!define PLACE_CLASS "Corvane.Place"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Corvane Server"

Name "${NAME}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\${NAME}"
BrandingText "${NAME} ${VERSION}"
VIProductVersion "${VERSION}"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "FileDescription" "${NAME} installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" ""

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${PICTURE}"
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Start ${NAME}"
!define MUI_FINISHPAGE_RUN_FUNCTION StartServer
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; A running program locks its file. A server that has just started this installer is about to end,
; so wait some seconds before asking the user.
!macro WaitUntilEnd PREFIX
; Takes the file name and the program's name from the stack.
Function ${PREFIX}WaitUntilEnd
  Pop $2
  Pop $3
  ${IfNot} ${FileExists} "$INSTDIR\$2"
    Return
  ${EndIf}
  again:
  StrCpy $1 0
  ${Do}
    ClearErrors
    FileOpen $0 "$INSTDIR\$2" a
    ${IfNot} ${Errors}
      FileClose $0
      Return
    ${EndIf}
    Sleep 500
    IntOp $1 $1 + 1
  ${LoopUntil} $1 = 20
  MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
    "$3 is running. End it, then try again." \
    /SD IDCANCEL IDRETRY again
  SetErrorLevel 2
  Quit
FunctionEnd
!macroend
!insertmacro WaitUntilEnd ""
!insertmacro WaitUntilEnd "un."
!macro WaitUntilAllEnd PREFIX
  Push "${NAME}"
  Push "${PROGRAM}"
  Call ${PREFIX}WaitUntilEnd
  Push "${MAP_NAME}"
  Push "${MAP_PROGRAM}"
  Call ${PREFIX}WaitUntilEnd
  Push "corvane-web"
  Push "corvane-web.exe"
  Call ${PREFIX}WaitUntilEnd
!macroend

Function .onInit
  ${IfNot} ${AtLeastWin10}
    MessageBox MB_OK|MB_ICONSTOP "${NAME} needs Windows 10 or newer." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  ; The earlier folder, unless the command line names one.
  ${If} $INSTDIR == "$PROGRAMFILES64\${NAME}"
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $0 != ""
      StrCpy $INSTDIR $0
    ${EndIf}
  ${EndIf}
FunctionEnd

; Started by the desktop, without the installer's rights.
Function StartServer
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\${START}"'
FunctionEnd

; Uninstalls an earlier version first, so that none of its files stay.
Function RemoveEarlierVersion
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
  ${AndIf} ${FileExists} "$0\uninstall.exe"
    ; With its folder given, ExecWait waits for the uninstaller, which then cannot delete itself.
    ExecWait '"$0\uninstall.exe" /S _?=$0' $1
    ${If} $1 <> 0
      SetErrorLevel 2
      Quit
    ${EndIf}
    Delete "$0\uninstall.exe"
    RMDir "$0"
  ${EndIf}
FunctionEnd

; What is opened with the map: a class of files or links.
!macro OpenWithMap CLASS TITLE
  WriteRegStr HKLM "${CLASSES}\${CLASS}" "" "${TITLE}"
  WriteRegStr HKLM "${CLASSES}\${CLASS}\DefaultIcon" "" "$INSTDIR\${MAP_PROGRAM},0"
  ; After "--" nothing that the argument holds is an option.
  WriteRegStr HKLM "${CLASSES}\${CLASS}\shell\open\command" "" \
    '"$INSTDIR\${MAP_PROGRAM}" -- "%1"'
!macroend
!macro ReadClassesAgain
  ; SHCNE_ASSOCCHANGED
  System::Call "shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)"
!macroend

Section
  !insertmacro WaitUntilAllEnd ""
  Call RemoveEarlierVersion
  SetOutPath "$INSTDIR"
  File /r "${STAGE}\*"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  ; Starts the script, since another user of the machine may have no database yet.
  SetShellVarContext all
  CreateShortCut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\${START}" "" "$INSTDIR\${PROGRAM}" 0 \
    SW_SHOWMINIMIZED
  CreateShortCut "$SMPROGRAMS\${MAP_NAME}.lnk" "$INSTDIR\${MAP_PROGRAM}"

  !insertmacro OpenWithMap "${PLACE_CLASS}" "Corvane Place"
  WriteRegStr HKLM "${CLASSES}\.corvane" "" "${PLACE_CLASS}"
  !insertmacro OpenWithMap "corvane" "URL:Corvane Place"
  WriteRegStr HKLM "${CLASSES}\corvane" "URL Protocol" ""
  !insertmacro ReadClassesAgain

  ; An existing database stays.
  SetShellVarContext current
  ${IfNot} ${FileExists} "$APPDATA\serverdb.rsd"
    CreateDirectory "$APPDATA"
    CopyFiles /SILENT "$INSTDIR\empty-database.rsd" "$APPDATA\serverdb.rsd"
  ${EndIf}

  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${KIBIBYTES}
SectionEnd

; The database and settings in the user's folder stay.
Section "Uninstall"
  !insertmacro WaitUntilAllEnd "un."
  !insertmacro RemoveProgramFiles
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${NAME}.lnk"
  Delete "$SMPROGRAMS\${MAP_NAME}.lnk"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  DeleteRegKey HKLM "${CLASSES}\${PLACE_CLASS}"
  DeleteRegKey HKLM "${CLASSES}\corvane"
  ; Only if no other program has taken the files over.
  ReadRegStr $0 HKLM "${CLASSES}\.corvane" ""
  ${If} $0 == "${PLACE_CLASS}"
    DeleteRegKey HKLM "${CLASSES}\.corvane"
  ${EndIf}
  !insertmacro ReadClassesAgain
SectionEnd

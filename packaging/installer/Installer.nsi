; The installer. For the whole machine, in "Program Files", because an imaging application is installed there too and is
; used by everybody who works at the microscope. /S installs without asking, /D=FOLDER (the last argument) elsewhere.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
!include MUI2.nsh
!include LogicLib.nsh

!define NAME "OKO-Lab bold line plug-in"
; The key's display name must never begin as the OKO-Control Server's does: the plug-in finds the server by that.
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\OkoLabBoldLine"

Name "${NAME} ${VERSION}"
OutFile "${INSTALLER}"
InstallDir "$PROGRAMFILES64\OkoLabBoldLine"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" InstallLocation
RequestExecutionLevel admin
ManifestDPIAware true
ManifestSupportedOS all
BrandingText "${NAME} ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "Installer of the ${NAME}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""

!define MUI_FINISHPAGE_TITLE "The plug-in's files are in place"
!define MUI_FINISHPAGE_TEXT "Now copy OkoLabBoldLine.dll from the folder bin into your imaging application's own \
folder for device plug-ins. The documentation says how to try it first, without an incubator."
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Show the documentation"
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION ShowDocumentation
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; By the user's own shell: a browser has no use for the administrator's rights that the installer has.
Function ShowDocumentation
    Exec '"$WINDIR\explorer.exe" "$INSTDIR\README.html"'
FunctionEnd

; Stops before anything is changed while a host has the library loaded: half of a version would be left otherwise.
!macro StopWhenInUse
    ${If} ${FileExists} "$INSTDIR\bin\OkoLabBoldLine.dll"
        ClearErrors
        FileOpen $0 "$INSTDIR\bin\OkoLabBoldLine.dll" a
        ${If} ${Errors}
            MessageBox MB_OK|MB_ICONSTOP "OkoLabBoldLine.dll is in use. Close the imaging application first." /SD IDOK
            SetErrorLevel 2
            Quit
        ${EndIf}
        FileClose $0
    ${EndIf}
!macroend

Section
    !insertmacro StopWhenInUse
    ; An earlier version takes its own files away, also those that this one no longer has.
    ${If} ${FileExists} "$INSTDIR\Uninstall.exe"
        ExecWait '"$INSTDIR\Uninstall.exe" /S _?=$INSTDIR'
    ${EndIf}
    SetOutPath $INSTDIR
    File /r "${FILES}/*"
    WriteUninstaller "$INSTDIR\Uninstall.exe"
    SetShellVarContext all
    CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\README.html"

    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayName "${NAME}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr HKLM "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\Uninstall.exe"
    WriteRegStr HKLM "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr HKLM "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\Uninstall.exe"'
    WriteRegStr HKLM "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\Uninstall.exe" /S'
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" EstimatedSize ${KILOBYTES}
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD HKLM "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

Section Uninstall
    !insertmacro StopWhenInUse
    SetShellVarContext all
    Delete "$SMPROGRAMS\${NAME}.lnk"
    !include "${REMOVE_FILES}"
    Delete "$INSTDIR\Uninstall.exe"
    RMDir $INSTDIR
    DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd

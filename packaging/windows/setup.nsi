; The setup of Tandeko for the current user: no administrator's rights, nothing outside the user's own folders
; and the user's own branch of the registry. Given: VERSION, STAGE (folder of what is installed), LIST (what the
; uninstaller removes), SIZE (kilobytes), ICON, SIDE (picture of the first and the last page), OUTPUT.

Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
RequestExecutionLevel user

!include MUI2.nsh
!include FileFunc.nsh
!include WinVer.nsh
!include x64.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tandeko"
!define OPEN_WITH_KEY "Software\Classes\Applications\tandeko.exe"
!define SETTINGS_KEY "SOFTWARE\Kwarcel Software\Lorvel"

Name "Tandeko"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Tandeko"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "Tandeko ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=1045 "ProductName" "Tandeko"
VIAddVersionKey /LANG=1045 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=1045 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1045 "FileDescription" "Instalator programu Tandeko"
VIAddVersionKey /LANG=1045 "CompanyName" "Kwarcel Software"
VIAddVersionKey /LANG=1045 "LegalCopyright" ""

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${SIDE}"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_NODESC
!define MUI_WELCOMEPAGE_TEXT "Instalator założy program Tandeko ${VERSION}: ewidencję wyposażenia, odzieży i innych przedmiotów, które firma wydaje pracownikom.$\r$\n$\r$\nProgram instaluje się tylko dla Ciebie i nie wymaga uprawnień administratora. Bazy danych firm pozostają tam, gdzie są.$\r$\n$\r$\nZamknij działające okna programu Tandeko i naciśnij Dalej."
!define MUI_FINISHPAGE_RUN "$INSTDIR\tandeko.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Uruchom program Tandeko"
!define MUI_FINISHPAGE_SHOWREADME "$INSTDIR\Help\Tandeko.pdf"
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Pokaż podręcznik użytkownika"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "Polish"

; Waits until the program FILE of an earlier installation does not run, or ends with code 2 when the user gives
; up (or cannot be asked). A running program's file can be read, not written.
!macro WaitUntilEnded FILE
  ${Do}
    ${IfNot} ${FileExists} "$INSTDIR\${FILE}"
      ${Break}
    ${EndIf}
    ClearErrors
    FileOpen $0 "$INSTDIR\${FILE}" a
    ${IfNot} ${Errors}
      FileClose $0
      ${Break}
    ${EndIf}
    ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Program ${FILE} jest uruchomiony. Zamknij go i spróbuj ponownie." /SD IDCANCEL IDCANCEL`
      SetErrorLevel 2
      Quit
    ${EndIf}
  ${Loop}
!macroend

!macro WaitUntilAllEnded
  !insertmacro WaitUntilEnded tandeko.exe
  !insertmacro WaitUntilEnded fundamo.exe
  !insertmacro WaitUntilEnded jetsql.exe
  !insertmacro WaitUntilEnded demofirma.exe
!macroend

Function .onInit
  ${IfNot} ${RunningX64}
  ${OrIfNot} ${AtLeastWin10}
    MessageBox MB_OK|MB_ICONSTOP "Tandeko wymaga 64-bitowego systemu Windows 10 lub nowszego." /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
FunctionEnd

Section "Program Tandeko (wymagany)"
  SectionIn RO
  !insertmacro WaitUntilAllEnded
  SetOutPath "$INSTDIR"
  File /r "${STAGE}/*"
  WriteUninstaller "$INSTDIR\Odinstaluj.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Tandeko"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\tandeko.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Kwarcel Software"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Odinstaluj.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Odinstaluj.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
  ; Offered for databases under "open with"; what opens them by a double click stays as it is.
  WriteRegStr HKCU "${OPEN_WITH_KEY}" "FriendlyAppName" "Tandeko"
  WriteRegStr HKCU "${OPEN_WITH_KEY}\SupportedTypes" ".mdb" ""
  WriteRegStr HKCU "${OPEN_WITH_KEY}\shell\open\command" "" '"$INSTDIR\tandeko.exe" "%1"'
SectionEnd

Section "Skróty w menu Start"
  CreateDirectory "$SMPROGRAMS\Tandeko"
  CreateShortcut "$SMPROGRAMS\Tandeko\Tandeko.lnk" "$INSTDIR\tandeko.exe" "" "" "" "" "" "Ewidencja wyposażenia pracowników"
  CreateShortcut "$SMPROGRAMS\Tandeko\Fundamo bazy.lnk" "$INSTDIR\fundamo.exe" "" "" "" "" "" "Zakładanie, aktualizacja i naprawa baz danych"
  CreateShortcut "$SMPROGRAMS\Tandeko\Podręcznik użytkownika.lnk" "$INSTDIR\Help\Tandeko.pdf"
  CreateShortcut "$SMPROGRAMS\Tandeko\Odinstaluj program Tandeko.lnk" "$INSTDIR\Odinstaluj.exe"
SectionEnd

Section "Skrót na pulpicie"
  CreateShortcut "$DESKTOP\Tandeko.lnk" "$INSTDIR\tandeko.exe" "" "" "" "" "" "Ewidencja wyposażenia pracowników"
SectionEnd

; Only what the setup brought goes: a database that somebody put into the program's folder stays, and the folder
; with it.
Section "Uninstall"
  !insertmacro WaitUntilAllEnded
  !include "${LIST}"
  Delete "$INSTDIR\Odinstaluj.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Tandeko\Tandeko.lnk"
  Delete "$SMPROGRAMS\Tandeko\Fundamo bazy.lnk"
  Delete "$SMPROGRAMS\Tandeko\Podręcznik użytkownika.lnk"
  Delete "$SMPROGRAMS\Tandeko\Odinstaluj program Tandeko.lnk"
  RMDir "$SMPROGRAMS\Tandeko"
  Delete "$DESKTOP\Tandeko.lnk"
  DeleteRegKey HKCU "${OPEN_WITH_KEY}"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
  ${If} ${Cmd} `MessageBox MB_YESNO|MB_DEFBUTTON2|MB_ICONQUESTION "Czy usunąć także ustawienia programu i podręczną listę baz? Same bazy danych pozostaną na dysku." /SD IDNO IDYES`
    DeleteRegKey HKCU "${SETTINGS_KEY}"
    DeleteRegKey /ifempty HKCU "SOFTWARE\Kwarcel Software"
  ${EndIf}
SectionEnd

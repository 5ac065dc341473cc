; Installs Rotika for one user. package_windows.sh defines VERSION, FILES (a folder with the shipped files and their
; list), FILES_NSH (the instructions that unpack them), ICON, WELCOME (a picture), SIZE_KB and OUTPUT.
;
; Command line: /S installs without questions, into the earlier folder on an upgrade; /D=FOLDER (last, unquoted) chooses
; the folder; /RESTART starts the program afterwards even if it does not run now, for an update that the program itself
; has begun, and even if the installation fails. The uninstaller: /S, and /SETTINGS to remove the settings too.
; Exit status 0, or 2 with the earlier version in place and running if it ran.

Target amd64-unicode
SetCompressor /SOLID lzma
AllowSkipFiles off

!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh
!include nsDialogs.nsh
!include WinVer.nsh
!include files.nsh
!include running.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Rotika"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define UNINSTALLER "odinstaluj.exe"

Name "Rotika"
Caption "Instalator programu Rotika"
UninstallCaption "Odinstalowanie programu Rotika"
OutFile "${OUTPUT}"
BrandingText "Rotika ${VERSION}"
InstallDir "$LOCALAPPDATA\Programs\Rotika"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" InstallLocation
RequestExecutionLevel user
ManifestSupportedOS Win10
ManifestDPIAware true
ManifestLongPathAware true
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "Rotika"
VIAddVersionKey CompanyName "Rotika"
VIAddVersionKey FileDescription "Instalator programu Rotika"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright "© 2025 The Rotika authors, MIT License"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_WELCOMEFINISHPAGE_BITMAP "${WELCOME}"
!define MUI_UNWELCOMEFINISHPAGE_BITMAP "${WELCOME}"

!define MUI_WELCOMEPAGE_TITLE "Instalacja programu Rotika ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "Rotika pokazuje nad każdym programem koło funkcji, które wybiera się myszą, głosem albo wzrokiem.$\r$\n$\r$\nInstalacja nie wymaga uprawnień administratora. Jeśli Rotika jest już zainstalowana, zostanie zaktualizowana; ustawienia, koła i ikony pozostaną bez zmian.$\r$\n$\r$\nKliknij Dalej, aby kontynuować."
!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_HEADER_TEXT "Folder"
!define MUI_PAGE_HEADER_SUBTEXT "Wybierz folder, w którym ma zostać zainstalowany program."
!define MUI_DIRECTORYPAGE_TEXT_TOP "Rotika zostanie zainstalowana w tym folderze i będzie w nim zapisywać ustawienia. Aby wybrać inny, kliknij Przeglądaj."
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipFolderPageOnUpgrade
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE LeaveFolderPage
!insertmacro MUI_PAGE_DIRECTORY
Page custom ShowOptions LeaveOptions
!define MUI_PAGE_HEADER_SUBTEXT "Proszę czekać, trwa instalacja programu Rotika."
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Rotika jest zainstalowana"
!define MUI_FINISHPAGE_TEXT "Koło funkcji otwiera klawisz x; inny wybierzesz poleceniem „Klawisz koła…” w menu Start. Pierwsze kroki opisuje podręcznik.$\r$\n$\r$\nKliknij Zakończ, aby zamknąć instalator."
!define MUI_FINISHPAGE_RUN "$INSTDIR\rotika.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Uruchom Rotikę"
!define MUI_PAGE_CUSTOMFUNCTION_SHOW ShowFinish
!insertmacro MUI_PAGE_FINISH

!define MUI_PAGE_HEADER_TEXT "Odinstalowanie"
!define MUI_PAGE_HEADER_SUBTEXT "Program zostanie usunięty z tego komputera."
!define MUI_UNCONFIRMPAGE_TEXT_TOP "Rotika zostanie usunięta z tego folderu. Kliknij Dalej, aby kontynuować."
!insertmacro MUI_UNPAGE_CONFIRM
UninstPage custom un.ShowOptions un.LeaveOptions
!define MUI_PAGE_HEADER_SUBTEXT "Proszę czekać, trwa odinstalowywanie programu Rotika."
!insertmacro MUI_UNPAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Rotika jest odinstalowana"
!define MUI_FINISHPAGE_TEXT "Kliknij Zakończ, aby zamknąć to okno."
!insertmacro MUI_UNPAGE_FINISH
!insertmacro MUI_LANGUAGE Polish

LangString RunningText ${LANG_POLISH} "Rotika jest teraz uruchomiona.$\r$\n$\r$\nPo kliknięciu OK zostanie zakończona, a zaraz po aktualizacji uruchomi się ponownie."
LangString un.RunningText ${LANG_POLISH} "Rotika jest teraz uruchomiona.$\r$\n$\r$\nPo kliknięciu OK zostanie zakończona i odinstalowana."
!define STILL_RUNNING "Nie udało się zakończyć programu. W folderze $INSTDIR nadal działa: $Running.$\r$\n$\r$\nZakończ go (ikona w zasobniku systemowym, „Zakończ”) i kliknij Ponów próbę. Kliknięcie Anuluj niczego nie zmieni."
LangString StillRunningText ${LANG_POLISH} "${STILL_RUNNING}"
LangString un.StillRunningText ${LANG_POLISH} "${STILL_RUNNING}"

Var FolderProblem ; why the program cannot be installed into the folder, or empty
Var Autostart     ; 1 if the program is to start with the system
Var AutostartBox

!insertmacro FileFunctions ""
!insertmacro FileFunctions "un."
!insertmacro RunningFunctions ""
!insertmacro RunningFunctions "un."
!include placing.nsh

; Leaves everything as it was before; whatever ran runs again.
Function Undo
    Call Restore
    Push "$INSTDIR"
    Call RemoveFolder
    Call StartAgain
    StrCpy $StartAgain "" ; once
FunctionEnd

; Ends the installation. At once, since .onInstFailed waits with pages until the user closes the window.
!macro GiveUp text
    Call Undo
    Abort "${text}"
!macroend

Function .onInstFailed ; also when a file cannot be unpacked
    Call Undo
FunctionEnd

; Before anything has been changed.
!macro Refuse text
    MessageBox MB_OK|MB_ICONEXCLAMATION "${text}" /SD IDOK
    Call StartAgain
    SetErrorLevel 2
    Quit
!macroend

Function .onInit
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/RESTART" $1
    ${IfNot} ${Errors}
        StrCpy $StartAgain "rotika.exe"
    ${EndIf}
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "RotikaSetup") p .r0 ? e'
    Pop $0
    ${If} $0 = 183 ; ERROR_ALREADY_EXISTS
        !insertmacro Refuse "Instalator programu Rotika już działa."
    ${EndIf}
    ${IfNot} ${AtLeastWin10}
        !insertmacro Refuse "Rotika wymaga systemu Windows 10 lub nowszego."
    ${EndIf}
    Call RefuseSecondFolder
    ReadRegStr $0 HKCU "${RUN_KEY}" Rotika
    ${If} $0 == ""
        StrCpy $Autostart 0
    ${Else}
        StrCpy $Autostart 1
    ${EndIf}
FunctionEnd

; With /D=: the entries of the system would forget the installation in the other folder.
Function RefuseSecondFolder
    ReadRegStr $0 HKCU "${UNINSTALL_KEY}" InstallLocation
    ${If} $0 == ""
    ${OrIfNot} ${FileExists} "$0\${LIST}"
        Return
    ${EndIf}
    GetFullPathName /SHORT $1 $0
    GetFullPathName /SHORT $2 $INSTDIR ; empty if there is no such folder
    ${If} $1 != $2
        StrCpy $INSTDIR $0
        !insertmacro Refuse "Rotika jest już zainstalowana w folderze $0 i tylko tam może zostać zaktualizowana. Aby użyć innego folderu, najpierw ją odinstaluj."
    ${EndIf}
FunctionEnd

; The program keeps its settings in its folder, so it must not be where only an administrator can write.
!macro RefuseBelow folder
    StrLen $0 "${folder}"
    StrCpy $0 $INSTDIR $0
    ${If} $0 == "${folder}"
        StrCpy $FolderProblem "Rotika zapisuje ustawienia w swoim folderze, więc nie można jej zainstalować w folderze ${folder}. Wybierz inny folder, na przykład $LOCALAPPDATA\Programs\Rotika."
    ${EndIf}
!macroend

Function CheckFolder
    StrCpy $FolderProblem ""
    ClearErrors
    CreateDirectory "$INSTDIR"
    GetTempFileName $0 "$INSTDIR"
    ${If} ${Errors}
        StrCpy $FolderProblem "W folderze $INSTDIR nie można zapisywać plików. Wybierz inny folder."
    ${Else}
        Delete $0
    ${EndIf}
    Push "$INSTDIR"
    Call RemoveFolder
    Push "$INSTDIR\${STAGED}"
    Call IsLink
    Pop $0
    ${If} $0 = 1
        StrCpy $FolderProblem "Folder $INSTDIR\${STAGED} jest dowiązaniem do innego folderu. Usuń je."
    ${EndIf}
    !insertmacro RefuseBelow "$PROGRAMFILES32"
    !insertmacro RefuseBelow "$PROGRAMFILES64"
    !insertmacro RefuseBelow "$WINDIR"
FunctionEnd

; Moving an installation is not offered: its files would stay behind.
Function SkipFolderPageOnUpgrade
    ${If} ${FileExists} "$INSTDIR\${LIST}"
        Abort
    ${EndIf}
FunctionEnd

Function LeaveFolderPage
    Call CheckFolder
    ${If} $FolderProblem != ""
        MessageBox MB_OK|MB_ICONEXCLAMATION "$FolderProblem"
        Abort
    ${EndIf}
FunctionEnd

Function ShowOptions
    !insertmacro MUI_HEADER_TEXT "Opcje" "Wybierz, co instalator ma ustawić."
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateCheckbox} 0 10u 100% 12u "&Uruchamiaj Rotikę razem z systemem, w zasobniku systemowym"
    Pop $AutostartBox
    ${If} $Autostart = 1
        ${NSD_Check} $AutostartBox
    ${EndIf}
    ${NSD_CreateLabel} 0 30u 100% 40u "W menu Start pojawią się skróty programu, jego poleceń (na przykład „Pokaż koło” i „Zainstaluj głos…”) i podręcznika. Sterowanie głosem wymaga dwóch plików, które pobiera się osobno; opisuje to podręcznik."
    Pop $0
    nsDialogs::Show
FunctionEnd

Function LeaveOptions
    ${NSD_GetState} $AutostartBox $Autostart
FunctionEnd

Function WriteEntries
    CreateDirectory "$SMPROGRAMS\Rotika"
    CreateShortcut "$SMPROGRAMS\Rotika\Rotika.lnk" "$INSTDIR\rotika.exe"
    CreateShortcut "$SMPROGRAMS\Rotika\Pokaż okno.lnk" "$INSTDIR\rotika.exe" "--show"
    CreateShortcut "$SMPROGRAMS\Rotika\Pokaż koło.lnk" "$INSTDIR\rotika.exe" "--toggle-wheel"
    CreateShortcut "$SMPROGRAMS\Rotika\Klawisz koła….lnk" "$INSTDIR\rotika.exe" "--toggle-key"
    CreateShortcut "$SMPROGRAMS\Rotika\Włącz komendy głosowe.lnk" "$INSTDIR\rotika.exe" "--voice on"
    CreateShortcut "$SMPROGRAMS\Rotika\Zainstaluj głos….lnk" "$INSTDIR\rotika.exe" "--install-voice"
    CreateShortcut "$SMPROGRAMS\Rotika\Zakończ.lnk" "$INSTDIR\rotika.exe" "--quit"
    CreateShortcut "$SMPROGRAMS\Rotika\Podręcznik.lnk" "$INSTDIR\podrecznik\podrecznik.html"
    WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayName "Rotika"
    WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" Publisher "Rotika"
    WriteRegStr HKCU "${UNINSTALL_KEY}" DisplayIcon "$INSTDIR\rotika.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\${UNINSTALLER}"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\${UNINSTALLER}" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" EstimatedSize ${SIZE_KB}
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" NoRepair 1
    ${If} $Autostart = 1
        WriteRegStr HKCU "${RUN_KEY}" Rotika '"$INSTDIR\rotika.exe" --minimized'
    ${Else}
        DeleteRegValue HKCU "${RUN_KEY}" Rotika
    ${EndIf}
FunctionEnd

Section
    Call CheckFolder
    ${If} $FolderProblem != ""
        MessageBox MB_OK|MB_ICONEXCLAMATION "$FolderProblem" /SD IDOK
        Abort "$FolderProblem"
    ${EndIf}
    Call Restore
    ${If} ${FileExists} "$INSTDIR\${EARLIER}\*.*"
        !insertmacro GiveUp "Nie można usunąć folderu $INSTDIR\${STAGED}."
    ${EndIf}
    SetOutPath "$INSTDIR\${STAGED}"
    ClearErrors
    !include "${FILES_NSH}"
    SetOutPath "$INSTDIR"
    ${IfNot} ${Errors}
        Call StageUninstaller
    ${EndIf}
    ${If} ${Errors}
        !insertmacro GiveUp "Nie można zapisać plików programu."
    ${EndIf}
    Call EndRunning
    ${If} $Running != ""
        !insertmacro GiveUp "Rotika nadal działa. Niczego nie zmieniono."
    ${EndIf}
    Call PlaceFiles
    ${If} $Unplaced != ""
        !insertmacro GiveUp "Nie można zapisać pliku $Unplaced."
    ${EndIf}
    Call RemoveObsolete
    RMDir /r "$INSTDIR\${STAGED}"
    Call WriteEntries
    Call StartAgain
SectionEnd

; What ran before the upgrade runs again already.
Function ShowFinish
    ${If} $StartAgain != ""
        ${NSD_Uncheck} $mui.FinishPage.Run
        ShowWindow $mui.FinishPage.Run ${SW_HIDE}
    ${EndIf}
FunctionEnd

!include uninstall.nsh

; Installs Rotika for one user. package_windows.sh defines VERSION, FILES (a folder with the shipped files and their
; list), FILES_NSH (the instructions that unpack them), ICON, WELCOME (a picture), SIZE_KB and OUTPUT.
;
; Command line: /S installs without questions, into the earlier folder on an upgrade; /D=FOLDER (last, unquoted) chooses
; the folder; /RESTART starts the program afterwards even if it does not run now, for an update that the program itself
; has begun. The uninstaller: /S, and /SETTINGS to remove the settings too. Exit status 0, or 2 with nothing changed.

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
!define STAGED "instalacja.tmp" ; in the program's folder, so that placing a file is one rename

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
!define MUI_PAGE_HEADER_SUBTEXT "Wybierz folder, w którym ma stać program."
!define MUI_DIRECTORYPAGE_TEXT_TOP "Rotika zostanie zainstalowana w tym folderze i będzie w nim zapisywać ustawienia. Aby wybrać inny, kliknij Przeglądaj."
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipFolderPageOnUpgrade
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE LeaveFolderPage
!insertmacro MUI_PAGE_DIRECTORY
Page custom ShowOptions LeaveOptions
!define MUI_PAGE_HEADER_SUBTEXT "Proszę czekać, trwa instalacja programu Rotika."
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Rotika jest zainstalowana"
!define MUI_FINISHPAGE_TEXT "Koło funkcji otwiera klawisz x, chyba że w ustawieniach wybrano inny. Pierwsze kroki opisuje podręcznik.$\r$\n$\r$\nKliknij Zakończ, aby zamknąć instalator."
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
Var RemoveSettings
Var SettingsBox

!insertmacro FileFunctions ""
!insertmacro FileFunctions "un."
!insertmacro RunningFunctions ""
!insertmacro RunningFunctions "un."

; Ends the installation; whatever ran before runs again.
!macro GiveUp text
    RMDir /r "$INSTDIR\${STAGED}"
    RMDir "$INSTDIR" ; if it is empty
    Call StartAgain
    Abort "${text}"
!macroend

Function .onInit
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "RotikaSetup") p .r0 ? e'
    Pop $0
    ${If} $0 = 183 ; ERROR_ALREADY_EXISTS
        MessageBox MB_OK|MB_ICONEXCLAMATION "Instalator programu Rotika już działa." /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
    ${IfNot} ${AtLeastWin10}
        MessageBox MB_OK|MB_ICONSTOP "Rotika wymaga systemu Windows 10 lub nowszego." /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
    ReadRegStr $0 HKCU "${RUN_KEY}" Rotika
    ${If} $0 == ""
        StrCpy $Autostart 0
    ${Else}
        StrCpy $Autostart 1
    ${EndIf}
FunctionEnd

; The program keeps its settings in its folder, so it must not stand where only an administrator can write.
!macro RefuseBelow folder
    StrLen $0 "${folder}"
    StrCpy $0 $INSTDIR $0
    ${If} $0 == "${folder}"
        StrCpy $FolderProblem "Rotika zapisuje ustawienia w swoim folderze, więc nie może stać w folderze ${folder}. Wybierz inny folder, na przykład $LOCALAPPDATA\Programs\Rotika."
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
    RMDir "$INSTDIR"
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
    ${NSD_CreateLabel} 0 30u 100% 40u "Skróty „Rotika” i „Zainstaluj głos…” pojawią się w menu Start. Sterowanie głosem wymaga dwóch plików, które pobiera się osobno; opisuje to podręcznik."
    Pop $0
    nsDialogs::Show
FunctionEnd

Function LeaveOptions
    ${NSD_GetState} $AutostartBox $Autostart
FunctionEnd

; Places one staged file. An icon that the user has edited or added stays.
Function PlaceFile
    Exch $0 ; path
    Push $1
    Push $2
    StrCpy $1 $0 6
    ${If} $1 == "icons\"
    ${AndIf} ${FileExists} "$INSTDIR\$0"
        Push "$INSTDIR\${LIST}" ; of the version to be replaced
        Push $0
        Call SumInList
        Pop $1
        Push "$INSTDIR\$0"
        Call SumOf
        Pop $2
        ${If} $1 != $2
            Goto done
        ${EndIf}
    ${EndIf}
    ${GetParent} "$INSTDIR\$0" $1
    CreateDirectory $1
    SetFileAttributes "$INSTDIR\$0" NORMAL
again:
    System::Call 'kernel32::MoveFileExW(w "$INSTDIR\${STAGED}\$0", w "$INSTDIR\$0", i 1) i .r1' ; replaces it
    ${If} $1 = 0
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Nie można zapisać pliku $INSTDIR\$0." /SD IDCANCEL IDRETRY again
        !insertmacro GiveUp "Nie można zapisać pliku $0."
    ${EndIf}
done:
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

; Removes what the earlier version had placed, this one does not have, and nobody has changed.
Function RemoveObsolete
    ClearErrors
    FileOpen $0 "$INSTDIR\${LIST}" r
    ${If} ${Errors}
        Return
    ${EndIf}
    ${Do}
        Push $0
        Call NextOfList
        Pop $1
        Pop $2
        ${If} $1 == ""
            ${Break}
        ${EndIf}
        Push "$INSTDIR\${STAGED}\${LIST}"
        Push $1
        Call SumInList
        Pop $3
        ${If} $3 == ""
            Push "$INSTDIR\$1"
            Call SumOf
            Pop $3
            ${If} $3 == $2
                Delete "$INSTDIR\$1"
            ${EndIf}
        ${EndIf}
    ${Loop}
    FileClose $0
FunctionEnd

Function PlaceFiles
    Call RemoveObsolete
    FileOpen $0 "$INSTDIR\${STAGED}\${LIST}" r
    ${Do}
        Push $0
        Call NextOfList
        Pop $1
        Pop $2
        ${If} $1 == ""
            ${Break}
        ${EndIf}
        Push $1
        Call PlaceFile
    ${Loop}
    FileClose $0
    Push "${LIST}" ; last: until then the old list tells what the user has edited
    Call PlaceFile
    RMDir /r "$INSTDIR\${STAGED}"
FunctionEnd

Function WriteEntries
    WriteUninstaller "$INSTDIR\${UNINSTALLER}"
    CreateDirectory "$SMPROGRAMS\Rotika"
    CreateShortcut "$SMPROGRAMS\Rotika\Rotika.lnk" "$INSTDIR\rotika.exe"
    CreateShortcut "$SMPROGRAMS\Rotika\Zainstaluj głos….lnk" "$INSTDIR\rotika.exe" "--install-voice"
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
    RMDir /r "$INSTDIR\${STAGED}" ; of an interrupted installation
    SetOutPath "$INSTDIR\${STAGED}"
    ClearErrors
    !include "${FILES_NSH}"
    SetOutPath "$INSTDIR"
    ${If} ${Errors}
        !insertmacro GiveUp "Nie można zapisać plików programu."
    ${EndIf}
    Call EndRunning
    ${If} $Running != ""
        !insertmacro GiveUp "Rotika nadal działa. Niczego nie zmieniono."
    ${EndIf}
    Call PlaceFiles
    Call WriteEntries
    ClearErrors
    ${GetParameters} $0
    ${GetOptions} $0 "/RESTART" $1
    ${IfNot} ${Errors}
    ${AndIf} $StartAgain == ""
        StrCpy $StartAgain '"$INSTDIR\rotika.exe"'
    ${EndIf}
    Call StartAgain
SectionEnd

; What ran before the upgrade runs again already.
Function ShowFinish
    ${If} $StartAgain != ""
        ${NSD_Uncheck} $mui.FinishPage.Run
        ShowWindow $mui.FinishPage.Run ${SW_HIDE}
    ${EndIf}
FunctionEnd

Function un.onInit
    StrCpy $RemoveSettings 0
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/SETTINGS" $1
    ${IfNot} ${Errors}
        StrCpy $RemoveSettings 1
    ${EndIf}
FunctionEnd

Function un.ShowOptions
    !insertmacro MUI_HEADER_TEXT "Ustawienia" "Wybierz, co ma zostać."
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateCheckbox} 0 10u 100% 12u "&Usuń też ustawienia i koła"
    Pop $SettingsBox
    ${NSD_CreateLabel} 0 30u 100% 60u "Bez zaznaczenia w folderze programu zostaną config.json, default.json i voice.json z kopiami; po ponownej instalacji Rotika będzie działać jak dotąd.$\r$\n$\r$\nZawsze zostają własne i zmienione ikony, inne pliki kół oraz biblioteka i model mowy."
    Pop $0
    nsDialogs::Show
FunctionEnd

Function un.LeaveOptions
    ${NSD_GetState} $SettingsBox $RemoveSettings
FunctionEnd

Function un.RemoveFiles
    FileOpen $0 "$INSTDIR\${LIST}" r
    ${Do}
        Push $0
        Call un.NextOfList
        Pop $1
        Pop $2
        ${If} $1 == ""
            ${Break}
        ${EndIf}
        StrCpy $3 $1 6
        ${If} $3 == "icons\"
            Push "$INSTDIR\$1"
            Call un.SumOf
            Pop $3
            ${If} $3 != $2
                ${Continue} ; edited by the user
            ${EndIf}
        ${EndIf}
        Delete "$INSTDIR\$1"
    ${Loop}
    FileClose $0
    Delete "$INSTDIR\${LIST}"
    Delete "$INSTDIR\${UNINSTALLER}"
FunctionEnd

!macro RemoveSettingsFile name
    Delete "$INSTDIR\${name}.json"
    Delete "$INSTDIR\${name}-kopia-*.json"
    Delete "$INSTDIR\${name}-odzysk*.json"
!macroend

Section Uninstall
    ${IfNot} ${FileExists} "$INSTDIR\${LIST}"
        MessageBox MB_OK|MB_ICONSTOP "W folderze $INSTDIR brakuje listy plików programu. Zainstaluj Rotikę ponownie i odinstaluj ją jeszcze raz." /SD IDOK
        Abort "Brakuje listy plików programu."
    ${EndIf}
    Call un.EndRunning
    ${If} $Running != ""
        Call un.StartAgain
        Abort "Rotika nadal działa. Niczego nie usunięto."
    ${EndIf}
    SetOutPath "$TEMP" ; a current folder cannot be removed
    Call un.RemoveFiles
    ${If} $RemoveSettings = 1
        !insertmacro RemoveSettingsFile config
        !insertmacro RemoveSettingsFile default
        !insertmacro RemoveSettingsFile voice
        DeleteRegKey HKCU "Software\Rotika"
    ${EndIf}
    RMDir "$INSTDIR\icons" ; each only if it is empty
    RMDir "$INSTDIR\licencje"
    RMDir "$INSTDIR\podrecznik\pictures"
    RMDir "$INSTDIR\podrecznik"
    RMDir "$INSTDIR\themes"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\Rotika\Rotika.lnk"
    Delete "$SMPROGRAMS\Rotika\Zainstaluj głos….lnk"
    Delete "$SMPROGRAMS\Rotika\Podręcznik.lnk"
    RMDir "$SMPROGRAMS\Rotika"
    DeleteRegValue HKCU "${RUN_KEY}" Rotika
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd

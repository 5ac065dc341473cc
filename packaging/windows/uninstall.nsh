; The uninstaller.

Var RemoveSettings
Var SettingsBox

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
        Push $1
        Call un.IsEditable
        Pop $3
        ${If} $3 = 1
            Push "$INSTDIR\$1"
            Call un.SumOf
            Pop $3
            ${If} $3 != $2
                ${Continue} ; edited by the user
            ${EndIf}
        ${EndIf}
        Push $1
        Call un.RemoveFile
    ${Loop}
    FileClose $0
    Delete "$INSTDIR\${LIST}"
    Push "$INSTDIR\${STAGED}"
    Call un.IsLink
    Pop $0
    ${If} $0 = 0
        RMDir /r "$INSTDIR\${STAGED}" ; of an interrupted installation
    ${EndIf}
FunctionEnd

; Pops what follows "config", "default" or "voice" in a file's name; pushes 1 if the program gives such names: backup
; copies, -kopia-N.json, and recovery files, -odzysk.json and -odzysk-XXXXXXXX.json, with copies of their own.
Function un.IsNameOfCopy
    Exch $0
    Push $1
    StrCpy $1 $0 7
    ${If} $1 == "-odzysk"
        StrCpy $0 $0 "" 7
        StrCpy $1 $0 "" 1
        System::Call 'shlwapi::StrSpnW(w r1, w "0123456789abcdef") i .r1'
        ${If} $1 = 8
            StrCpy $0 $0 "" 9
        ${EndIf}
        ${If} $0 == ".json"
            StrCpy $0 1
            Goto done
        ${EndIf}
    ${EndIf}
    StrCpy $1 $0 7
    ${If} $1 == "-kopia-"
        StrCpy $0 $0 "" 7
        System::Call 'shlwapi::StrSpnW(w r0, w "0123456789") i .r1'
        StrCpy $0 $0 "" $1
        ${If} $1 > 0
        ${AndIf} $0 == ".json"
            StrCpy $0 1
            Goto done
        ${EndIf}
    ${EndIf}
    StrCpy $0 0
done:
    Pop $1
    Exch $0
FunctionEnd

; Pops a settings file's name without ".json".
Function un.RemoveSettingsFile
    Exch $0
    Delete "$INSTDIR\$0.json"
    StrLen $3 $0
    FindFirst $1 $2 "$INSTDIR\$0-*.json"
    ${DoUntil} $2 == ""
        StrCpy $4 $2 "" $3
        Push $4
        Call un.IsNameOfCopy
        Pop $4
        ${If} $4 = 1
            Delete "$INSTDIR\$2"
        ${EndIf}
        FindNext $1 $2
    ${Loop}
    FindClose $1
    Pop $0
FunctionEnd

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
        Push config
        Call un.RemoveSettingsFile
        Push default
        Call un.RemoveSettingsFile
        Push voice
        Call un.RemoveSettingsFile
        DeleteRegKey HKCU "Software\Rotika"
    ${EndIf}
    Push "$INSTDIR"
    Call un.RemoveFolder
    Delete "$SMPROGRAMS\Rotika\Rotika.lnk"
    Delete "$SMPROGRAMS\Rotika\Pokaż okno.lnk"
    Delete "$SMPROGRAMS\Rotika\Pokaż koło.lnk"
    Delete "$SMPROGRAMS\Rotika\Klawisz koła….lnk"
    Delete "$SMPROGRAMS\Rotika\Włącz komendy głosowe.lnk"
    Delete "$SMPROGRAMS\Rotika\Zainstaluj głos….lnk"
    Delete "$SMPROGRAMS\Rotika\Zakończ.lnk"
    Delete "$SMPROGRAMS\Rotika\Podręcznik.lnk"
    RMDir "$SMPROGRAMS\Rotika"
    DeleteRegValue HKCU "${RUN_KEY}" Rotika
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd

; The programs of the folder that run: found, ended and started again. Included once for the installer and once, with
; the prefix "un.", for the uninstaller.

Var Running    ; names of the programs of the folder that run
Var ShellRuns  ; 1 if rotika.exe is among them
Var EngineRuns ; 1 if rotika-engine.exe is
Var StartAgain ; name of the program to be started again, or empty
Var StartWords ; its command line

!macro CheckRunning name runs
    ; The system refuses to open the file of a running program for writing.
    ${If} ${FileExists} "$INSTDIR\${name}"
        SetFileAttributes "$INSTDIR\${name}" NORMAL
        ClearErrors
        FileOpen $0 "$INSTDIR\${name}" a
        ${If} ${Errors}
            ${If} $Running != ""
                StrCpy $Running "$Running, "
            ${EndIf}
            StrCpy $Running "$Running${name}"
            StrCpy ${runs} 1
        ${Else}
            FileClose $0
        ${EndIf}
    ${EndIf}
!macroend

!macro RunningFunctions un

Function ${un}FindRunning
    Push $0
    StrCpy $Running ""
    StrCpy $ShellRuns 0
    StrCpy $EngineRuns 0
    !insertmacro CheckRunning rotika.exe $ShellRuns
    !insertmacro CheckRunning rotika-engine.exe $EngineRuns
    !insertmacro CheckRunning rotika-guard.exe $0 ; ends a moment after them
    Pop $0
FunctionEnd

; Sets how to start again what runs now. A window hidden in the tray stays hidden.
Function ${un}RememberRunning
    Push $0
    Push $1
    ${If} $ShellRuns = 1
        StrCpy $StartAgain "rotika.exe"
        StrCpy $StartWords "--minimized"
        StrCpy $0 0
        ${Do}
            FindWindow $0 "" "Rotika" "" $0
            System::Call 'user32::IsWindowVisible(p r0) i .r1'
            ${If} $1 <> 0
                System::Call 'user32::GetClassNameW(p r0, w .r1, i ${NSIS_MAX_STRLEN})'
                StrCpy $1 $1 2
                ${If} $1 == "Qt" ; not the Explorer's window of the folder
                    StrCpy $StartWords ""
                ${EndIf}
            ${EndIf}
        ${LoopUntil} $0 == 0
    ${ElseIf} $EngineRuns = 1
        StrCpy $StartAgain "rotika-engine.exe"
    ${EndIf}
    Pop $1
    Pop $0
FunctionEnd

; Waits until nothing of the folder runs, at most five seconds.
Function ${un}WaitForEnd
    Push $0
    StrCpy $0 0
    ${Do}
        Call ${un}FindRunning
        ${If} $Running == ""
            ${Break}
        ${EndIf}
        Sleep 200
        IntOp $0 $0 + 1
    ${LoopUntil} $0 = 25
    Pop $0
FunctionEnd

; Ends the programs of the folder; $Running stays non-empty if the user refuses or it does not succeed.
Function ${un}EndRunning
    Call ${un}FindRunning
    ${If} $Running == ""
        Return
    ${EndIf}
    Call ${un}RememberRunning
    MessageBox MB_OKCANCEL|MB_ICONINFORMATION "$(${un}RunningText)" /SD IDOK IDOK end_them
    Return
end_them:
    Push $0
    ExecWait '"$INSTDIR\rotika.exe" --quit' $0
    Pop $0
    Call ${un}WaitForEnd
    ${If} $Running != ""
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(${un}StillRunningText)" /SD IDCANCEL IDRETRY end_them
    ${EndIf}
FunctionEnd

; Starts again what was ended, but no second copy if it still runs.
Function ${un}StartAgain
    Call ${un}FindRunning
    ${If} $StartAgain != ""
    ${AndIf} $ShellRuns = 0
    ${AndIf} $EngineRuns = 0
    ${AndIf} ${FileExists} "$INSTDIR\$StartAgain"
        SetOutPath "$INSTDIR" ; its current folder
        Exec '"$INSTDIR\$StartAgain" $StartWords'
    ${EndIf}
FunctionEnd

!macroend

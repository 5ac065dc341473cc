; Replacing the earlier version: all of its files, or none. The new ones are unpacked beside it and then moved to their
; places, each earlier one into a folder of its own until everything is placed.

!define STAGED ".rotika-instalacja" ; in the program's folder, so that placing a file is one rename
!define EARLIER "${STAGED}\poprzednie"

Var Unplaced   ; the first file that could not be placed, or empty
Var Unrestored ; 1 if a file of the earlier version could not be put back

; Pops the paths of a file, the present and the wanted one; pushes 1, or 0 if that failed for five seconds: virus
; scanners hold new files for a moment.
Function MoveFile
    Exch $1 ; to
    Exch
    Exch $0 ; from
    Push $2
    Push $3
    ${GetParent} $1 $3
    CreateDirectory $3
    StrCpy $3 0
    ${Do}
        ; Replaces it; copies it where a folder is on another disk.
        System::Call 'kernel32::MoveFileExW(w r0, w r1, i 3) i .r2'
        ${If} $2 <> 0
            StrCpy $2 1
            ${Break}
        ${EndIf}
        Sleep 200
        IntOp $3 $3 + 1
    ${LoopUntil} $3 = 25
    ${If} $2 = 0
        ${GetParent} $1 $3
        Push $3
        Call RemoveFolder
    ${EndIf}
    StrCpy $0 $2
    Pop $3
    Pop $2
    Exch
    Pop $1
    Exch $0
FunctionEnd

; Pops the path of a staged file and places it, unless an earlier one failed. An icon or example that the user has edited
; or added stays.
Function PlaceFile
    Exch $0
    Push $1
    Push $2
    ${If} $Unplaced != ""
        Goto done
    ${EndIf}
    Push $0
    Call IsEditable
    Pop $1
    ${If} $1 = 1
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
again:
    StrCpy $1 1
    ${If} ${FileExists} "$INSTDIR\$0\*.*" ; a folder of the user's
        StrCpy $1 0
    ${ElseIf} ${FileExists} "$INSTDIR\$0"
        Push "$INSTDIR\$0"
        Push "$INSTDIR\${EARLIER}\$0"
        Call MoveFile
        Pop $1
    ${EndIf}
    ${If} $1 = 1
        Push "$INSTDIR\${STAGED}\$0"
        Push "$INSTDIR\$0"
        Call MoveFile
        Pop $1
    ${EndIf}
    ${If} $1 = 0
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Nie można zapisać pliku $INSTDIR\$0." /SD IDCANCEL IDRETRY again
        StrCpy $Unplaced $0
    ${EndIf}
done:
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

; Pops the path of a file and its sum in the staged list, and puts the earlier version's file back. Removes a placed
; file which the earlier version had not.
Function RestoreFile
    Exch $0
    Exch
    Exch $1 ; sum
    Push $2
    ${If} ${FileExists} "$INSTDIR\${EARLIER}\$0"
        Push "$INSTDIR\${EARLIER}\$0"
        Push "$INSTDIR\$0"
        Call MoveFile
        Pop $2
        ${If} $2 = 0
            StrCpy $Unrestored 1
        ${EndIf}
    ${ElseIfNot} ${FileExists} "$INSTDIR\${STAGED}\$0"
        Push "$INSTDIR\${LIST}"
        Push $0
        Call SumInList
        Pop $2
        ${If} $2 == ""
            Push "$INSTDIR\$0"
            Call SumOf
            Pop $2
            ${If} $2 == $1
                Push $0
                Call RemoveFile
            ${EndIf}
        ${EndIf}
    ${EndIf}
    Pop $2
    Pop $1
    Pop $0
FunctionEnd

; Puts the earlier version back, as far as placing had begun, and removes the staged files. After an installation that
; was interrupted, too.
Function Restore
    Push "$INSTDIR\${STAGED}"
    Call IsLink
    Pop $0
    ${If} $0 = 1
        Return
    ${EndIf}
    SetOutPath "$TEMP" ; a current folder cannot be removed
    StrCpy $Unrestored 0
    ClearErrors
    FileOpen $0 "$INSTDIR\${STAGED}\${LIST}" r ; is placed last
    ${IfNot} ${Errors}
        ${If} ${FileExists} "$INSTDIR\${EARLIER}\*.*"
            Push ""
            Push "${LIST}" ; first: it tells which files the earlier version had
            Call RestoreFile
            ${Do}
                Push $0
                Call NextOfList
                Pop $1
                Pop $2
                ${If} $1 == ""
                    ${Break}
                ${EndIf}
                Push $2
                Push $1
                Call RestoreFile
            ${Loop}
        ${EndIf}
        FileClose $0
    ${EndIf}
    ${If} $Unrestored = 0
        RMDir /r "$INSTDIR\${STAGED}"
    ${EndIf}
FunctionEnd

; Removes what the earlier version had placed, this one does not have, and nobody has changed.
Function RemoveObsolete
    ClearErrors
    FileOpen $0 "$INSTDIR\${EARLIER}\${LIST}" r
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
        Push "$INSTDIR\${LIST}"
        Push $1
        Call SumInList
        Pop $3
        ${If} $3 == ""
            Push "$INSTDIR\$1"
            Call SumOf
            Pop $3
            ${If} $3 == $2
                Push $1
                Call RemoveFile
            ${EndIf}
        ${EndIf}
    ${Loop}
    FileClose $0
FunctionEnd

; The uninstaller becomes one of the listed files.
Function StageUninstaller
    WriteUninstaller "$INSTDIR\${STAGED}\${UNINSTALLER}"
    ${If} ${Errors}
        Return
    ${EndIf}
    Push "$INSTDIR\${STAGED}\${UNINSTALLER}"
    Call SumOf
    Pop $1
    FileOpen $0 "$INSTDIR\${STAGED}\${LIST}" a
    FileSeek $0 0 END
    FileWriteUTF16LE $0 "$1 ${UNINSTALLER}$\n"
    FileClose $0
FunctionEnd

Function PlaceFiles
    StrCpy $Unplaced ""
    CreateDirectory "$INSTDIR\${EARLIER}"
    ClearErrors
    FileOpen $0 "$INSTDIR\${STAGED}\${LIST}" r
    ${If} ${Errors}
        StrCpy $Unplaced "${LIST}"
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
        Push $1
        Call PlaceFile
    ${Loop}
    FileClose $0
    Push "${LIST}" ; last: until then the old list tells what the user has edited
    Call PlaceFile
FunctionEnd

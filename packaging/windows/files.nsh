; The files that the installer places and removes, by the list of the shipped files: UTF-16, one line per file, "CRC32
; size path", with a fixed width before the path. Included once for the installer and once, with the prefix "un.", for the
; uninstaller.

!define LIST "lista-plikow.txt"
!define SUM_LENGTH 19 ; 8 hexadecimal digits, a space, 10 decimal digits
!define PATH_START 20

!macro FileFunctions un

; Pops a file's path; pushes its sum as in the list, empty if it cannot be read.
Function ${un}SumOf
    Exch $0
    Push $1
    Push $2
    Push $3
    Push $4
    StrCpy $4 ""
    ClearErrors
    FileOpen $1 $0 r
    ${IfNot} ${Errors}
        FileSeek $1 0 END $2
        FileSeek $1 0 SET
        IntOp $3 $2 + 1 ; an empty file needs a buffer too
        System::Alloc $3
        Pop $3
        System::Call 'kernel32::ReadFile(p r1, p r3, i r2, *i .r4, p 0)'
        System::Call 'ntdll::RtlComputeCrc32(i 0, p r3, i r2) i .r4'
        System::Free $3
        FileClose $1
        IntFmt $4 "%08X" $4
        IntFmt $2 "%010d" $2
        StrCpy $4 "$4 $2"
    ${EndIf}
    StrCpy $0 $4
    Pop $4
    Pop $3
    Pop $2
    Pop $1
    Exch $0
FunctionEnd

; Pops an open list; pushes the next file's sum and then its path, both empty at the end.
Function ${un}NextOfList
    Exch $0
    Push $1
    Push $2
    FileReadUTF16LE $0 $1
    StrCpy $0 $1 ${SUM_LENGTH}
    StrCpy $1 $1 "" ${PATH_START}
    StrCpy $2 $1 1 -1
    ${If} $2 == "$\n"
        StrCpy $1 $1 -1
    ${EndIf}
    Pop $2
    Exch
    Exch $0
    Exch
    Exch $1
FunctionEnd

; Pops the path of a file of the list; pushes 1 if it is an icon or an example, which the user may edit, else 0.
Function ${un}IsEditable
    Exch $0
    Push $1
    StrCpy $1 $0 10
    StrCpy $0 $0 6
    ${If} $0 == "icons\"
    ${OrIf} $1 == "przykłady\"
        StrCpy $0 1
    ${Else}
        StrCpy $0 0
    ${EndIf}
    Pop $1
    Exch $0
FunctionEnd

; Pops a path; pushes 1 if it is a link to another place, else 0.
Function ${un}IsLink
    Exch $0
    System::Call 'kernel32::GetFileAttributesW(w r0) i .r0'
    ${If} $0 = -1
        StrCpy $0 0
    ${Else}
        IntOp $0 $0 >> 10 ; FILE_ATTRIBUTE_REPARSE_POINT
        IntOp $0 $0 & 1
    ${EndIf}
    Exch $0
FunctionEnd

; Pops a folder's path and removes the folder if it is empty. A link stays: the system would remove it in any case.
Function ${un}RemoveFolder
    Exch $0
    Push $1
    Push $0
    Call ${un}IsLink
    Pop $1
    ${If} $1 = 0
        RMDir $0
    ${EndIf}
    Pop $1
    Pop $0
FunctionEnd

; Pops the path of a file of the list; removes the file, and its folders if they are empty.
Function ${un}RemoveFile
    Exch $0
    Delete "$INSTDIR\$0"
    ${Do}
        ${GetParent} $0 $0
        ${If} $0 == ""
            ${Break}
        ${EndIf}
        Push "$INSTDIR\$0"
        Call ${un}RemoveFolder
    ${Loop}
    Pop $0
FunctionEnd

!macroend

; Pops a list's path and a file's path in it; pushes the file's sum in the list, empty if it is not there.
Function SumInList
    Exch $0 ; file
    Exch
    Exch $1 ; list
    Push $2
    Push $3
    Push $4
    StrCpy $4 ""
    ClearErrors
    FileOpen $1 $1 r
    ${IfNot} ${Errors}
        ${Do}
            Push $1
            Call NextOfList
            Pop $3
            Pop $2
            ${If} $3 == $0
                StrCpy $4 $2
            ${EndIf}
        ${LoopUntil} $3 == ""
        FileClose $1
    ${EndIf}
    StrCpy $0 $4
    Pop $4
    Pop $3
    Pop $2
    Pop $1
    Exch $0
FunctionEnd

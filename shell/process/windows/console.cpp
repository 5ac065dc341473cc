#include "shell/process/console.h"

// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include <memory>

QStringList programArguments(int /*argc*/, char** /*argv*/) {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> words(CommandLineToArgvW(GetCommandLineW(), &count),
                                                              &LocalFree);
    QStringList found;
    for (int i = 1; i < count; ++i)
        found.append(QString::fromWCharArray(words.get()[i]));
    return found;
}

void printText(const QString& text, bool isFault) {
    const HANDLE output = GetStdHandle(isFault ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    if (output != nullptr && GetFileType(output) != FILE_TYPE_UNKNOWN) {
        const QByteArray line = text.toUtf8() + "\r\n";
        DWORD written = 0;
        WriteFile(output, line.constData(), static_cast<DWORD>(line.size()), &written, nullptr);
        return;
    }
    MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(text.utf16()), L"Rotika",
                isFault ? MB_ICONERROR : MB_ICONINFORMATION);
}

void forgetRestart(char** /*argv*/) {} // the window by which others find it is gone

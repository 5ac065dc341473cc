#pragma once

#include <windows.h>

#include <string>

/// Top-level, though never shown: only such a window receives the messages of a session's end.
HWND createHiddenWindow(const wchar_t* className, WNDPROC procedure, const wchar_t* title);

std::wstring classNameOf(HWND window);

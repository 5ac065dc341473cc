#include "platform/editor_window.h"

#include "platform/windows/ui_font.h"
#include "platform/windows/windows_api.h"

#include <array>
#include <vector>

namespace rotika {

namespace {

constexpr DWORD windowStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
constexpr int innerWidthPx = 900;
constexpr int innerHeightPx = 492;

/// There is one editor window at a time.
EditorWindowHandlers handlers{};

LRESULT paintLabelBackground(HDC surface) noexcept {
    SetBkMode(surface, TRANSPARENT);
    return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
}

void controlUsed(WPARAM wParam) noexcept {
    // Drop-downs and lists report a new selection by the same number.
    static_assert(CBN_SELCHANGE == LBN_SELCHANGE);
    handlers.controlUsed(LOWORD(wParam), HIWORD(wParam) == LBN_SELCHANGE);
}

LRESULT CALLBACK editorProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_CREATE:
        return 0;
    case WM_DESTROY:
        handlers.destroyed();
        return 0;
    case WM_CLOSE:
        handlers.closeRequested();
        return 0;
    case WM_COMMAND:
        controlUsed(wParam);
        return 0;
    case WM_CTLCOLORSTATIC:
        return paintLabelBackground(reinterpret_cast<HDC>(wParam));
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

struct ControlLook {
    const wchar_t* className;
    DWORD style;
};

ControlLook lookOf(EditorControlKind kind) {
    switch (kind) {
    case EditorControlKind::button:
        return {L"BUTTON", 0};
    case EditorControlKind::defaultButton:
        return {L"BUTTON", BS_DEFPUSHBUTTON};
    case EditorControlKind::label:
        return {L"STATIC", 0};
    case EditorControlKind::centredLabel:
        return {L"STATIC", SS_CENTERIMAGE};
    case EditorControlKind::oneLineLabel:
        return {L"STATIC", SS_CENTERIMAGE | SS_LEFTNOWORDWRAP};
    case EditorControlKind::edit:
        return {L"EDIT", WS_BORDER | ES_AUTOHSCROLL};
    case EditorControlKind::numberEdit:
        return {L"EDIT", WS_BORDER | ES_NUMBER};
    case EditorControlKind::dropDown:
        return {L"COMBOBOX", CBS_DROPDOWNLIST};
    case EditorControlKind::scrollingDropDown:
        return {L"COMBOBOX", CBS_DROPDOWNLIST | WS_VSCROLL};
    case EditorControlKind::list:
        return {L"LISTBOX", WS_BORDER | WS_VSCROLL | LBS_NOTIFY};
    }
    return {L"STATIC", 0};
}

/// Drop-downs and lists have the same messages with different numbers.
struct ListMessages {
    UINT empty;
    UINT add;
    UINT selection;
    UINT select;
};

bool isDropDown(HWND control) {
    std::array<wchar_t, 16> className{};
    GetClassNameW(control, className.data(), static_cast<int>(className.size()));
    return CompareStringOrdinal(className.data(), -1, L"COMBOBOX", -1, TRUE) == CSTR_EQUAL;
}

ListMessages messagesOf(HWND control) {
    if (isDropDown(control)) {
        return {CB_RESETCONTENT, CB_ADDSTRING, CB_GETCURSEL, CB_SETCURSEL};
    }
    return {LB_RESETCONTENT, LB_ADDSTRING, LB_GETCURSEL, LB_SETCURSEL};
}

HWND controlOf(WindowHandle window, std::int32_t id) {
    return GetDlgItem(nativeWindow(window), id);
}

BOOL CALLBACK setControlFont(HWND control, LPARAM) noexcept {
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(interfaceFont()), TRUE);
    return TRUE;
}

/// Texts and patterns alternate, each zero-terminated; a further zero ends the list.
std::u16string filterText(std::span<const FileFilter> filters) {
    std::u16string text;
    for (const FileFilter& filter : filters) {
        text += filter.text;
        text += u'\0';
        text += filter.patterns;
        text += u'\0';
    }
    return text;
}

/// Restores the current folder: the dialogs change it to the folder of the picked file, and programs opened
/// by functions would inherit it.
class CurrentFolderRestorer {
public:
    CurrentFolderRestorer() : folder(GetCurrentDirectoryW(0, nullptr)) {
        GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data());
    }
    CurrentFolderRestorer(const CurrentFolderRestorer&) = delete;
    CurrentFolderRestorer& operator=(const CurrentFolderRestorer&) = delete;
    ~CurrentFolderRestorer() { SetCurrentDirectoryW(folder.data()); }

private:
    std::vector<wchar_t> folder; // zero-terminated
};

struct FileDialog {
    BOOL(WINAPI* show)(OPENFILENAMEW*);
    DWORD flags;
    std::u16string name; // initial
    std::u16string extension;
};

std::optional<std::u16string> pickFile(WindowHandle window, std::span<const FileFilter> filters,
                                       const std::u16string& folder, const FileDialog& dialog) {
    if (IsWindow(nativeWindow(window)) == 0) {
        return std::nullopt;
    }
    const CurrentFolderRestorer restorer;
    const std::u16string filter = filterText(filters);
    constexpr std::size_t maxPathLength = 32767;
    std::u16string file = dialog.name;
    file.resize(maxPathLength);
    OPENFILENAMEW request{};
    request.lStructSize = sizeof(request);
    request.hwndOwner = nativeWindow(window);
    request.lpstrFilter = wideText(filter);
    request.lpstrFile = reinterpret_cast<wchar_t*>(file.data());
    request.nMaxFile = static_cast<DWORD>(file.size());
    request.lpstrInitialDir = wideText(folder);
    request.lpstrDefExt = dialog.extension.empty() ? nullptr : wideText(dialog.extension);
    request.Flags = dialog.flags;
    if (!dialog.show(&request)) {
        return std::nullopt;
    }
    return std::u16string(file.c_str());
}

} // namespace

WindowHandle createEditorWindow(WindowHandle owner, const EditorWindowHandlers& wanted) {
    handlers = wanted;
    WNDCLASSW description{};
    description.lpszClassName = L"RadialOverlayEditor";
    description.lpfnWndProc = editorProcedure;
    description.hInstance = moduleInstance();
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    description.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    RegisterClassW(&description); // fails harmlessly if registered already
    RECT outer{0, 0, innerWidthPx, innerHeightPx};
    AdjustWindowRect(&outer, windowStyle, FALSE);
    return windowHandle(CreateWindowExW(0, description.lpszClassName, L"Rotika — edytor funkcji", windowStyle,
                                        CW_USEDEFAULT, CW_USEDEFAULT, outer.right - outer.left,
                                        outer.bottom - outer.top, nativeWindow(owner), nullptr,
                                        moduleInstance(), nullptr));
}

void addEditorControl(WindowHandle window, const EditorControl& control) {
    const ControlLook look = lookOf(control.kind);
    const std::u16string text = control.text;
    CreateWindowExW(0, look.className, wideText(text), WS_CHILD | WS_VISIBLE | look.style, control.place.left,
                    control.place.top, control.place.width(), control.place.height(), nativeWindow(window),
                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), moduleInstance(), nullptr);
}

void setInterfaceFont(WindowHandle window) {
    EnumChildWindows(nativeWindow(window), setControlFont, 0);
}

void showEditorWindow(WindowHandle window) {
    ShowWindow(nativeWindow(window), SW_SHOW);
}

void restoreEditorWindow(WindowHandle window) {
    ShowWindow(nativeWindow(window), SW_RESTORE);
    SetForegroundWindow(nativeWindow(window));
}

void destroyEditorWindow(WindowHandle window) {
    DestroyWindow(nativeWindow(window));
}

std::u16string controlText(WindowHandle window, std::int32_t id, std::size_t maxLength) {
    std::u16string text(maxLength + 1, u'\0');
    text.resize(GetDlgItemTextW(nativeWindow(window), id, reinterpret_cast<wchar_t*>(text.data()),
                                static_cast<int>(text.size())));
    return text;
}

void setControlText(WindowHandle window, std::int32_t id, const std::u16string& text) {
    SetDlgItemTextW(nativeWindow(window), id, wideText(text));
}

void emptyList(WindowHandle window, std::int32_t id) {
    const HWND control = controlOf(window, id);
    SendMessageW(control, messagesOf(control).empty, 0, 0);
}

void addListRow(WindowHandle window, std::int32_t id, const std::u16string& text) {
    const HWND control = controlOf(window, id);
    SendMessageW(control, messagesOf(control).add, 0, reinterpret_cast<LPARAM>(wideText(text)));
}

std::int32_t listSelection(WindowHandle window, std::int32_t id) {
    const HWND control = controlOf(window, id);
    if (control == nullptr) {
        return -1;
    }
    return static_cast<std::int32_t>(SendMessageW(control, messagesOf(control).selection, 0, 0));
}

void setListSelection(WindowHandle window, std::int32_t id, std::int32_t index) {
    const HWND control = controlOf(window, id);
    SendMessageW(control, messagesOf(control).select, static_cast<WPARAM>(index), 0);
}

bool askInBox(WindowHandle window, const std::u16string& title, const std::u16string& text) {
    return IsWindow(nativeWindow(window)) != 0 &&
           MessageBoxW(nativeWindow(window), wideText(text), wideText(title), MB_YESNO | MB_ICONQUESTION) ==
               IDYES;
}

void showInBox(WindowHandle window, const std::u16string& title, const std::u16string& text,
               EditorBoxIcon icon) {
    if (IsWindow(nativeWindow(window)) != 0) {
        MessageBoxW(nativeWindow(window), wideText(text), wideText(title),
                    icon == EditorBoxIcon::warning ? MB_ICONWARNING : MB_ICONINFORMATION);
    }
}

std::optional<std::u16string> pickFileToOpen(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder) {
    return pickFile(window, filters, folder, {GetOpenFileNameW, OFN_FILEMUSTEXIST, {}, {}});
}

std::optional<std::u16string> pickFileToSave(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder, const std::u16string& name,
                                             const std::u16string& extension) {
    return pickFile(window, filters, folder, {GetSaveFileNameW, OFN_OVERWRITEPROMPT, name, extension});
}

} // namespace rotika

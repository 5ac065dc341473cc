#include "platform/editor_window.h"

// Without the shell the engine does not start here, and the shell has the function editor.
WindowHandle createEditorWindow(WindowHandle, const EditorWindowHandlers&) {
    return nullptr;
}
void addEditorControl(WindowHandle, const EditorControl&) {}
void setInterfaceFont(WindowHandle) {}
void showEditorWindow(WindowHandle) {}
void restoreEditorWindow(WindowHandle) {}
void destroyEditorWindow(WindowHandle) {}
std::u16string controlText(WindowHandle, std::int32_t, std::size_t) {
    return {};
}
void setControlText(WindowHandle, std::int32_t, const std::u16string&) {}
void emptyList(WindowHandle, std::int32_t) {}
void addListRow(WindowHandle, std::int32_t, const std::u16string&) {}
std::int32_t listSelection(WindowHandle, std::int32_t) {
    return -1;
}
void setListSelection(WindowHandle, std::int32_t, std::int32_t) {}
bool askInBox(WindowHandle, const std::u16string&, const std::u16string&) {
    return false;
}
void tellInBox(WindowHandle, const std::u16string&, const std::u16string&, EditorBoxIcon) {}
std::optional<std::u16string> pickFileToOpen(WindowHandle, std::span<const FileFilter>,
                                             const std::u16string&) {
    return std::nullopt;
}
std::optional<std::u16string> pickFileToSave(WindowHandle, std::span<const FileFilter>, const std::u16string&,
                                             const std::u16string&, const std::u16string&) {
    return std::nullopt;
}

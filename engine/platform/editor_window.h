#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace rotika {

// The window of the engine's own function editor, with its controls and boxes. It exists on Windows only:
// elsewhere the engine never starts without the shell, which has its own editor, so no window is created and
// the other functions have no effect and return empty values. The same holds for a destroyed window, which is
// possible while one of its boxes is open. Owner thread.

struct EditorWindowHandlers {
    /// A control was used; `selectionChanged` is set when it is a list whose selection changed.
    void (*controlUsed)(std::int32_t id, bool selectionChanged) noexcept;
    /// The user wants to close the window; it stays open until destroyEditorWindow.
    void (*closeRequested)() noexcept;
    void (*destroyed)() noexcept;
};

enum class EditorControlKind {
    button,
    defaultButton,
    label,        // top-aligned, wrapped
    centredLabel, // vertically centred, wrapped
    oneLineLabel, // vertically centred, not wrapped
    edit,
    numberEdit, // only digits can be typed; pasted text is not checked
    dropDown,
    scrollingDropDown,
    list,
};

struct EditorControl {
    std::int32_t id = 0; // 0: never referred to later
    EditorControlKind kind = EditorControlKind::label;
    const char16_t* text = u"";
    Rect place; // pixels, client area; for a drop-down including its list
};

/// Creates a hidden window with a client area of 900 by 492 pixels that cannot be resized and is destroyed
/// with its owner. `handlers` is copied. One at a time; null where there is none.
WindowHandle createEditorWindow(WindowHandle owner, const EditorWindowHandlers& handlers);
void addEditorControl(WindowHandle window, const EditorControl& control);
/// Sets the interface font in all controls.
void setInterfaceFont(WindowHandle window);
void showEditorWindow(WindowHandle window);
/// Restores it if it is minimised, and gives it the focus.
void restoreEditorWindow(WindowHandle window);
void destroyEditorWindow(WindowHandle window);

/// Truncated to `maxLength` code units.
std::u16string controlText(WindowHandle window, std::int32_t id, std::size_t maxLength);
void setControlText(WindowHandle window, std::int32_t id, const std::u16string& text);

// Drop-downs and lists. Setting a selection emits no notification; an index out of range clears it.

void emptyList(WindowHandle window, std::int32_t id);
void addListRow(WindowHandle window, std::int32_t id, const std::u16string& text);
/// -1 for none.
std::int32_t listSelection(WindowHandle window, std::int32_t id);
void setListSelection(WindowHandle window, std::int32_t id, std::int32_t index);

// Modal boxes; messages of all windows are still dispatched while one is open.

enum class EditorBoxIcon { information, warning };

/// True for yes.
bool askInBox(WindowHandle window, const std::u16string& title, const std::u16string& text);
void showInBox(WindowHandle window, const std::u16string& title, const std::u16string& text,
               EditorBoxIcon icon);

struct FileFilter {
    const char16_t* text;
    const char16_t* patterns; // separated by semicolons
};

/// Full path of an existing file, at most 259 code units; empty when the user cancels.
std::optional<std::u16string> pickFileToOpen(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder);

/// Full path of a file that need not exist; if it does, the user has confirmed overwriting. `extension`,
/// without a dot, is appended to a name that has none. Empty when the user cancels.
std::optional<std::u16string> pickFileToSave(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder, const std::u16string& name,
                                             const std::u16string& extension);

} // namespace rotika

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
// elsewhere the engine never starts without the shell, which has an editor of its own, so there no window is
// made and the other functions do nothing and answer empty. They do the same for a window that is gone, which
// can be while one of its boxes waits for an answer. All on the owner thread.

struct EditorWindowHandlers {
    /// A control was used; `selectionChanged` is set when it is a list that tells of a new selection.
    void (*controlUsed)(std::int32_t id, bool selectionChanged) noexcept;
    /// The user wants to close the window, which stays until destroyEditorWindow.
    void (*closeRequested)() noexcept;
    void (*destroyed)() noexcept;
};

enum class EditorControlKind {
    button,
    defaultButton,
    label,        // at the top of its place, in as many lines as fit
    centredLabel, // in the middle between top and bottom
    oneLineLabel, // the same, never broken into lines
    edit,
    numberEdit, // takes digits only when typed; pasted text is not looked at
    dropDown,
    scrollingDropDown,
    list,
};

struct EditorControl {
    std::int32_t id = 0; // 0: never spoken of again
    EditorControlKind kind = EditorControlKind::label;
    const char16_t* text = u"";
    Rect place; // pixels from the inner top left corner; of a drop-down with its list
};

/// A hidden window of 900 by 492 pixels inside that cannot be resized; it goes with its owner. `handlers` is
/// copied. One at a time; null where there is none.
WindowHandle createEditorWindow(WindowHandle owner, const EditorWindowHandlers& handlers);
void addEditorControl(WindowHandle window, const EditorControl& control);
/// Gives all controls the font of the engine's windows.
void setInterfaceFont(WindowHandle window);
void showEditorWindow(WindowHandle window);
/// Shows it again if it is minimised, and gives it the keyboard.
void restoreEditorWindow(WindowHandle window);
void destroyEditorWindow(WindowHandle window);

/// At most `maxLength` code units of it.
std::u16string controlText(WindowHandle window, std::int32_t id, std::size_t maxLength);
void setControlText(WindowHandle window, std::int32_t id, const std::u16string& text);

// Of drop-downs and lists. Setting a selection tells nobody; an index outside takes the selection away.

void emptyList(WindowHandle window, std::int32_t id);
void addListRow(WindowHandle window, std::int32_t id, const std::u16string& text);
/// -1 for none.
std::int32_t listSelection(WindowHandle window, std::int32_t id);
void setListSelection(WindowHandle window, std::int32_t id, std::int32_t index);

// Modal boxes; messages of all windows go on being handled until they are answered.

enum class EditorBoxIcon { information, warning };

/// True for yes.
bool askInBox(WindowHandle window, const std::u16string& title, const std::u16string& text);
void tellInBox(WindowHandle window, const std::u16string& title, const std::u16string& text,
               EditorBoxIcon icon);

struct FileFilter {
    const char16_t* text;
    const char16_t* patterns; // separated by semicolons
};

/// Full path of an existing file, in 259 code units at most; empty when the user thinks better of it.
std::optional<std::u16string> pickFileToOpen(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder);

/// Full path of a file that need not exist; the user has agreed to its being overwritten if it does.
/// `extension`, without a dot, is put behind a name that has none.
std::optional<std::u16string> pickFileToSave(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder, const std::u16string& name,
                                             const std::u16string& extension);

} // namespace rotika

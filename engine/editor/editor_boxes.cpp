#include "editor/editor_boxes.h"

#include "editor/editor_state.h"
#include "platform/editor_window.h"

namespace rotika {

namespace {
constexpr char16_t boxTitle[] = u"Edytor funkcji";
}

bool askInEditor(const std::u16string& text) {
    return askInBox(editorState.editorWindow, boxTitle, text);
}

void warnInEditor(const std::u16string& text) {
    showInBox(editorState.editorWindow, boxTitle, text, EditorBoxIcon::warning);
}

void informInEditor(const std::u16string& text) {
    showInBox(editorState.editorWindow, boxTitle, text, EditorBoxIcon::information);
}

} // namespace rotika

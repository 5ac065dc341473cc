#include "editor/editor_state.h"

namespace rotika {

EditorState editorState;

Wheel* currentEditorWheel() {
    const auto index = static_cast<std::size_t>(editorState.editorWheelIndex);
    return index < editorState.editorWheels.size() ? &editorState.editorWheels[index] : nullptr;
}

std::vector<Wheel> newEditorWheels() {
    return {Wheel{u"Koło 1", {}}};
}

} // namespace rotika

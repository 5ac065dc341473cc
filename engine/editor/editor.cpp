#include "editor/editor.h"

#include "common/file_names.h"
#include "editor/editor_commands.h"
#include "editor/editor_controls.h"
#include "editor/editor_form.h"
#include "editor/editor_state.h"
#include "editor/kept_edits.h"
#include "files/wheel_files.h"
#include "model/engine_state.h"
#include "platform/editor_window.h"
#include "platform/paths.h"

namespace rotika {

namespace {

/// Discards the previous document, except one whose failed save is kept in memory.
void loadEditorWheels() {
    if (!editorState.isKeptInMemory) {
        const std::u16string defaultPath = joinPath(programFolder(), defaultWheelsFileName);
        editorState.keptFile = findKeptEdits();
        // No path: a save then asks for one, since the file may have changed after its save failed.
        editorState.editorPath = editorState.keptFile.empty() ? defaultPath : u"";
        std::u16string problems; // not shown here
        loadWheelFile(editorState.keptFile.empty() ? defaultPath : editorState.keptFile,
                      editorState.editorWheels, problems);
    }
    if (editorState.editorWheels.empty())
        editorState.editorWheels = newEditorWheels();
    editorState.editorWheelIndex = 0;
    editorState.editorDirty = false;
}

} // namespace

void openEditor() {
    if (editorState.editorWindow != nullptr) {
        restoreEditorWindow(editorState.editorWindow);
        return;
    }
    loadEditorWheels();
    editorState.editorWindow = createEditorWindow(engineState.mainWindow, editorWindowHandlers());
    createEditorControls(editorState.editorWindow);
    showNewDocument();
    showEditorWindow(editorState.editorWindow);
}

} // namespace rotika

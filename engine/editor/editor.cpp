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

/// Whatever the window held when it was last open is gone here, but for what a failed save could not write.
void loadEditorWheels() {
    if (!editorState.isKeptInMemory) {
        const std::u16string defaultPath = joinPath(programFolder(), defaultWheelsFileName);
        editorState.keptFile = findKeptEdits();
        // Without a path a save asks where to, since a file may have changed after its save has failed.
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

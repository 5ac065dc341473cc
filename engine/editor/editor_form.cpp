#include "editor/editor_form.h"

#include "common/file_names.h"
#include "core/engine_state.h"
#include "core/text.h"
#include "editor/editor_commands.h"
#include "editor/editor_controls.h"
#include "editor/editor_state.h"
#include "editor/kept_edits.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "platform/editor_window.h"
#include "platform/paths.h"

#include <algorithm>

namespace {

constexpr std::size_t longestControlText = 511;

std::u16string nameOrPlaceholder(const std::u16string& name) {
    return name.empty() ? u"(bez nazwy)" : name;
}

void setText(std::int32_t id, const std::u16string& text) {
    setControlText(editorState.editorWindow, id, text);
}

/// Whatever the window held when it was last open is gone here, but for what a failed save could not write.
void loadEditorWheels() {
    if (!editorState.isKeptInMemory) {
        const std::u16string defaultPath = joinPath(programFolder(), defaultWheelsFileName);
        editorState.keptFile = findKeptEdits();
        // Without a path a save asks where to, since a file may have changed after its save has failed.
        editorState.editorPath = editorState.keptFile.empty() ? defaultPath : u"";
        std::u16string problems; // shown to nobody on this road
        loadWheelFile(editorState.keptFile.empty() ? defaultPath : editorState.keptFile,
                      editorState.editorWheels, problems);
    }
    if (editorState.editorWheels.empty())
        editorState.editorWheels = newEditorWheels();
    editorState.editorWheelIndex = 0;
    editorState.editorDirty = false;
}

std::u16string stepAction(const ActionStep& step) {
    switch (step.kind) {
    case StepKind::hold:
        return step.value < 1 ? u"przytrzymaj (bez puszczania)"
                              : u"przytrzymaj " + decimalText(step.value) + u" ms";
    case StepKind::release:
        return u"puść";
    case StepKind::open:
        return u"otwórz";
    default:
        return step.value < 2 ? u"klik" : u"klik x" + decimalText(step.value);
    }
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

void clearFieldForm() {
    editorState.editorFieldIndex = -1;
    editorState.editorField = {};
    for (const std::int32_t id : {fieldNameEdit, fieldColorEdit})
        setText(id, u"");
    setText(fieldDelayEdit, decimalText(editorState.editorField.delay));
    for (const std::int32_t id : {fieldIconEdit, fieldVoiceEdit, stepKeyEdit, stepValueEdit})
        setText(id, u"");
    setListSelection(editorState.editorWindow, stepKindList, 0);
    refreshStepList();
}

void showFieldInForm(std::int32_t index) {
    const Wheel* wheel = currentEditorWheel();
    if (wheel == nullptr || index < 0 || static_cast<std::size_t>(index) >= wheel->actions.size())
        return;
    editorState.editorFieldIndex = index;
    editorState.editorField = wheel->actions[static_cast<std::size_t>(index)];
    const WheelAction& field = editorState.editorField;
    setText(fieldNameEdit, field.name);
    setText(fieldColorEdit, field.hasColor ? utf16FromUtf8(colorText(field.color)) : std::u16string());
    setText(fieldDelayEdit, decimalText(field.delay));
    setText(fieldIconEdit, field.icon);
    setText(fieldVoiceEdit, field.voice);
    refreshStepList();
}

void refreshWheelList() {
    const WindowHandle window = editorState.editorWindow;
    emptyList(window, wheelList);
    std::int64_t position = 0;
    for (const Wheel& wheel : editorState.editorWheels)
        addListRow(window, wheelList, decimalText(++position) + u": " + nameOrPlaceholder(wheel.name));
    setListSelection(window, wheelList, editorState.editorWheelIndex);
    const Wheel* current = currentEditorWheel();
    setText(wheelNameEdit, current != nullptr ? current->name : std::u16string());
}

void refreshFieldList(std::int32_t selection) {
    const WindowHandle window = editorState.editorWindow;
    emptyList(window, fieldList);
    if (const Wheel* wheel = currentEditorWheel()) {
        for (const WheelAction& field : wheel->actions) {
            const auto stepCount = static_cast<std::int64_t>(field.steps.size());
            addListRow(window, fieldList,
                       nameOrPlaceholder(field.name) + u"   [" + decimalText(stepCount) + u"]");
        }
    }
    if (selection >= 0)
        setListSelection(window, fieldList, selection);
}

void refreshStepList() {
    emptyList(editorState.editorWindow, stepList);
    for (const ActionStep& step : editorState.editorField.steps)
        addListRow(editorState.editorWindow, stepList, stepRowText(step));
}

void refreshPathLabel() {
    const std::u16string& path = editorState.editorPath;
    setText(pathLabel, path.empty() ? u"(nowy plik — niezapisany)" : path);
}

void showNewDocument() {
    clearFieldForm();
    refreshWheelList();
    refreshFieldList(-1);
    refreshPathLabel();
}

std::u16string stepRowText(const ActionStep& step) {
    return stepAction(step) + u":  " + (step.kind == StepKind::open ? step.target : step.key.text);
}

std::u16string readControlText(WindowHandle window, std::int32_t id) {
    return controlText(window, id, longestControlText);
}

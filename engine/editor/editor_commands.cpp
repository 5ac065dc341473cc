#include "editor/editor_commands.h"

#include "base/text.h"
#include "core/activation.h"
#include "editor/editor_boxes.h"
#include "editor/editor_controls.h"
#include "editor/editor_documents.h"
#include "editor/editor_form.h"
#include "editor/editor_state.h"
#include "editor/editor_steps.h"
#include "editor/kept_edits.h"
#include "files/color_text.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "model/engine_state.h"
#include "platform/main_window.h"
#include "platform/tray.h"

#include <algorithm>
#include <array>

namespace rotika {

namespace {

std::u16string formText(std::int32_t id) {
    return readControlText(editorState.editorWindow, id);
}

std::int32_t selectedField() {
    return listSelection(editorState.editorWindow, fieldList);
}

/// The field of that index in the current wheel; null if there is none.
WheelAction* fieldAt(std::int32_t index) {
    Wheel* wheel = currentEditorWheel();
    const bool isField =
        wheel != nullptr && index >= 0 && static_cast<std::size_t>(index) < wheel->actions.size();
    return isField ? &wheel->actions[static_cast<std::size_t>(index)] : nullptr;
}

std::int32_t lastIndexOf(std::size_t count) {
    return static_cast<std::int32_t>(count) - 1;
}

void wheelsChanged() {
    editorState.editorDirty = true;
    clearFieldForm();
    refreshWheelList();
    refreshFieldList(-1);
}

void changeWheel() {
    editorState.editorWheelIndex = std::max(listSelection(editorState.editorWindow, wheelList), 0);
    clearFieldForm();
    refreshFieldList(-1);
    const Wheel* wheel = currentEditorWheel();
    setControlText(editorState.editorWindow, wheelNameEdit,
                   wheel != nullptr ? wheel->name : std::u16string());
}

void renameWheel() {
    Wheel* wheel = currentEditorWheel();
    if (wheel == nullptr)
        return;
    wheel->name = formText(wheelNameEdit);
    editorState.editorDirty = true;
    refreshWheelList();
}

/// The number is the count of wheels, so after a removal two wheels may have the same name.
void addWheel() {
    std::vector<Wheel>& wheels = editorState.editorWheels;
    wheels.push_back({u"Koło " + decimalText(static_cast<std::int64_t>(wheels.size()) + 1), {}});
    editorState.editorWheelIndex = lastIndexOf(wheels.size());
    wheelsChanged();
}

void removeWheel() {
    std::vector<Wheel>& wheels = editorState.editorWheels;
    if (wheels.size() <= 1) {
        informInEditor(u"Musi zostać przynajmniej jedno koło.");
        return;
    }
    const Wheel* wheel = currentEditorWheel();
    if (wheel == nullptr || !askInEditor(u"Usunąć koło \"" + wheel->name + u"\" wraz z funkcjami?"))
        return;
    wheels.erase(wheels.begin() + editorState.editorWheelIndex);
    editorState.editorWheelIndex = std::min(editorState.editorWheelIndex, lastIndexOf(wheels.size()));
    wheelsChanged();
}

/// The number of fields is not limited here; the reader keeps maxFieldCount.
void addField() {
    Wheel* wheel = currentEditorWheel();
    if (wheel == nullptr)
        return;
    wheel->actions.emplace_back().name = u"Nowa funkcja";
    editorState.editorDirty = true;
    const std::int32_t added = lastIndexOf(wheel->actions.size());
    refreshFieldList(added);
    showFieldInForm(added);
}

void showSelectedField() {
    showFieldInForm(selectedField());
}

void editField() {
    if (selectedField() < 0)
        informInEditor(u"Najpierw wybierz funkcję z listy.");
    else
        showSelectedField();
}

void removeField() {
    const std::int32_t index = selectedField();
    if (fieldAt(index) == nullptr)
        return;
    std::vector<WheelAction>& fields = currentEditorWheel()->actions;
    fields.erase(fields.begin() + index);
    editorState.editorDirty = true;
    clearFieldForm();
    refreshFieldList(-1);
}

/// False, with a warning, if the form's colour is invalid; an empty text removes the field's colour.
bool readFormColor(WheelAction& field) {
    const std::u16string text = formText(fieldColorEdit);
    if (text.empty()) {
        field.hasColor = false;
        return true;
    }
    if (!parseHexColor(text, field.color)) {
        warnInEditor(u"Niepoprawny kolor — użyj formatu #RRGGBB (np. #E74C3C) albo zostaw pole puste.");
        return false;
    }
    field.hasColor = true;
    return true;
}

void writeFieldBack() {
    WheelAction* target = fieldAt(editorState.editorFieldIndex);
    if (target == nullptr) {
        informInEditor(noFieldText);
        return;
    }
    WheelAction& field = editorState.editorField;
    field.name = formText(fieldNameEdit);
    if (!readFormColor(field))
        return;
    field.delay = clampedDelay(leadingInteger(formText(fieldDelayEdit)));
    field.icon = formText(fieldIconEdit);
    field.voice = formText(fieldVoiceEdit);
    *target = field;
    editorState.editorDirty = true;
    refreshFieldList(editorState.editorFieldIndex);
}

void activate() {
    if (!activateWheels(editorState.editorWheels)) {
        informInEditor(u"Żadne koło nie ma funkcji — nie ma czego aktywować.");
        return;
    }
    repaintMainWindow(engineState.mainWindow);
    showTrayBalloon(u"Rotika", u"Aktywowano koła z edytora. Naciśnij klawisz wywołania, aby ich użyć.",
                    BalloonIcon::info);
}

struct EditorCommand {
    std::int32_t id;
    bool needsNewSelection; // ignore a list's other notifications
    void (*run)();
};

constexpr std::array commands{
    EditorCommand{newButton, false, makeNewDocument},
    EditorCommand{openButton, false, openDocument},
    EditorCommand{saveButton, false, saveDocument},
    EditorCommand{saveAsButton, false, saveDocumentAs},
    EditorCommand{wheelList, true, changeWheel},
    EditorCommand{renameWheelButton, false, renameWheel},
    EditorCommand{addWheelButton, false, addWheel},
    EditorCommand{removeWheelButton, false, removeWheel},
    EditorCommand{fieldList, true, showSelectedField},
    EditorCommand{addFieldButton, false, addField},
    EditorCommand{editFieldButton, false, editField},
    EditorCommand{removeFieldButton, false, removeField},
    EditorCommand{chooseIconButton, false, chooseIcon},
    EditorCommand{stepList, true, showSelectedStep},
    EditorCommand{addStepButton, false, addStep},
    EditorCommand{replaceStepButton, false, replaceStep},
    EditorCommand{removeStepButton, false, removeStep},
    EditorCommand{stepUpButton, false, moveStepUp},
    EditorCommand{stepDownButton, false, moveStepDown},
    EditorCommand{writeFieldButton, false, writeFieldBack},
    EditorCommand{activateButton, false, activate},
};

void onControlUsed(std::int32_t id, bool selectionChanged) noexcept {
    const auto* command = std::ranges::find(commands, id, &EditorCommand::id);
    if (command != commands.end() && (selectionChanged || !command->needsNewSelection))
        command->run();
}

void onCloseRequested() noexcept {
    if (editorState.editorDirty && !askInEditor(u"Są niezapisane zmiany. Zamknąć edytor mimo to?"))
        return;
    editorState.editorDirty = false;
    destroyEditorWindow(editorState.editorWindow);
}

/// Without a question if the program ends, as at the end of a session: the changes are kept.
void onDestroyed() noexcept {
    if (editorState.editorDirty)
        keepEdits(serializeWheels(editorState.editorWheels));
    editorState.editorDirty = false;
    editorState.editorWindow = nullptr;
}

} // namespace

EditorWindowHandlers editorWindowHandlers() {
    return {
        .controlUsed = onControlUsed,
        .closeRequested = onCloseRequested,
        .destroyed = onDestroyed,
    };
}

} // namespace rotika

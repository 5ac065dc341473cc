#include "editor/editor_steps.h"

#include "base/text.h"
#include "editor/editor_boxes.h"
#include "editor/editor_controls.h"
#include "editor/editor_form.h"
#include "editor/editor_state.h"
#include "files/key_names.h"
#include "files/wheel_files.h"
#include "platform/editor_window.h"

#include <utility>

namespace rotika {

namespace {

std::vector<ActionStep>& steps() {
    return editorState.editorField.steps;
}

bool isStep(std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < steps().size();
}

ActionStep& stepAt(std::int32_t index) {
    return steps()[static_cast<std::size_t>(index)];
}

std::int32_t selectedStep() {
    return listSelection(editorState.editorWindow, stepList);
}

void refreshStepListSelecting(std::int32_t index) {
    refreshStepList();
    setListSelection(editorState.editorWindow, stepList, index);
}

bool readOpenStep(const std::u16string& entry, ActionStep& step) {
    if (entry.empty()) {
        warnInEditor(u"Dla czynności \"otwórz\" wpisz w polu Klawisz adres URL (np. https://example.com)\n"
                     u"albo nazwę programu (np. firefox.exe).");
        return false;
    }
    step.kind = StepKind::open;
    step.target = entry;
    return true;
}

StepKind kindOfRow(std::int32_t row) {
    switch (row) {
    case 1:
        return StepKind::hold;
    case 2:
        return StepKind::release;
    default:
        return StepKind::click;
    }
}

bool readKeyStep(const std::u16string& entry, StepKind kind, ActionStep& step) {
    step.key = parseKeyCode(entry);
    if (!step.key.valid) {
        warnInEditor(u"Nieznany klawisz/przycisk: \"" + entry +
                     u"\"\n\nPrzykłady: q, 5, F5, space, enter, esc, up,\n"
                     u"lmb (lewy przycisk myszy), rmb, mmb, mb4, mb5");
        return false;
    }
    step.kind = kind;
    const std::u16string value = readControlText(editorState.editorWindow, stepValueEdit);
    step.value = value.empty() ? defaultStepValue(kind) : clampedStepValue(kind, leadingInteger(value));
    return true;
}

/// Reads `step` from the form's controls; false, after a warning to the user, if they are invalid.
bool readStepForm(ActionStep& step) {
    const std::u16string entry = readControlText(editorState.editorWindow, stepKeyEdit);
    const std::int32_t row = listSelection(editorState.editorWindow, stepKindList);
    if (row == static_cast<std::int32_t>(StepKind::open))
        return readOpenStep(entry, step);
    return readKeyStep(entry, kindOfRow(row), step);
}

void moveStep(std::int32_t distance) {
    const std::int32_t from = selectedStep();
    const std::int32_t to = from + distance;
    if (!isStep(from) || !isStep(to))
        return;
    std::swap(stepAt(from), stepAt(to));
    refreshStepListSelecting(to);
}

} // namespace

void showSelectedStep() {
    const std::int32_t index = selectedStep();
    if (!isStep(index))
        return;
    const WindowHandle window = editorState.editorWindow;
    const ActionStep& step = stepAt(index);
    const bool opens = step.kind == StepKind::open;
    setControlText(window, stepKeyEdit, opens ? step.target : step.key.text);
    setListSelection(window, stepKindList, static_cast<std::int32_t>(step.kind));
    setControlText(window, stepValueEdit, opens ? std::u16string() : decimalText(step.value));
}

void addStep() {
    if (editorState.editorFieldIndex < 0) {
        informInEditor(noFieldText);
        return;
    }
    ActionStep step;
    if (!readStepForm(step))
        return;
    steps().push_back(std::move(step));
    refreshStepListSelecting(static_cast<std::int32_t>(steps().size()) - 1);
}

void replaceStep() {
    const std::int32_t index = selectedStep();
    ActionStep step;
    if (!isStep(index) || !readStepForm(step))
        return;
    stepAt(index) = std::move(step);
    refreshStepListSelecting(index);
}

void removeStep() {
    const std::int32_t index = selectedStep();
    if (!isStep(index))
        return;
    steps().erase(steps().begin() + index);
    refreshStepList();
}

void moveStepUp() {
    moveStep(-1);
}

void moveStepDown() {
    moveStep(1);
}

} // namespace rotika

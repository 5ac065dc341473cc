#include "platform/editor_window.h"

#include "base/text.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

namespace {

constexpr char windowName[] = "editor";

/// Null for a destroyed window.
SimulatedEditor* editorOf(WindowHandle window) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireOwner("editor window used by a worker");
    return window != nullptr && window->exists ? &desktop.editor : nullptr;
}

SimulatedEditor::Control* controlOf(WindowHandle window, std::int32_t id) {
    SimulatedEditor* editor = editorOf(window);
    if (editor == nullptr)
        return nullptr;
    const auto found = editor->controls.find(id);
    if (found == editor->controls.end())
        breakContract("a control that the editor's window does not have");
    return &found->second;
}

SimulatedEditor::Control* listOf(WindowHandle window, std::int32_t id) {
    using enum EditorControlKind;
    SimulatedEditor::Control* control = controlOf(window, id);
    if (control != nullptr && control->kind != dropDown && control->kind != scrollingDropDown &&
        control->kind != list)
        breakContract("rows of a control that is no list");
    return control;
}

/// Records the box or dialog and runs its modal loop once.
void openBox(const std::string& description) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.note(JournalKind::box, description);
    desktop.pumpMessages();
}

std::string describeBox(const char* kind, const std::u16string& title, const std::u16string& text) {
    return std::string(kind) + " [" + utf8FromUtf16(title) + "] " + utf8FromUtf16(text);
}

/// The default value if no answer was prepared.
template <typename Answer>
Answer takeNext(std::deque<Answer>& answers) {
    if (answers.empty())
        return {};
    Answer answer = answers.front();
    answers.pop_front();
    return answer;
}

std::string describeDialog(const char* kind, std::span<const FileFilter> filters,
                           const std::u16string& folder) {
    std::string description = std::string(kind) + " in " + utf8FromUtf16(folder);
    for (const FileFilter& filter : filters)
        description += ", " + utf8FromUtf16(filter.text) + " = " + utf8FromUtf16(filter.patterns);
    return description;
}

} // namespace

void SimulatedEditor::choose(std::int32_t id, std::int32_t row) {
    setListSelection(simulatedDesktop().windowNamed(windowName), id, row);
    handlers.controlUsed(id, true);
}

std::string SimulatedEditor::text(std::int32_t id) const {
    return utf8FromUtf16(controls.at(id).text);
}

std::string SimulatedEditor::rows(std::int32_t id) const {
    std::string joined;
    for (const std::u16string& row : controls.at(id).rows)
        joined += (joined.empty() ? "" : "|") + utf8FromUtf16(row);
    return joined;
}

WindowHandle createEditorWindow(WindowHandle owner, const EditorWindowHandlers& handlers) {
    SimulatedDesktop& desktop = simulatedDesktop();
    desktop.requireWindow(owner, "editor window without its owner");
    PlatformWindow* window = desktop.windowNamed(windowName);
    if (window == nullptr)
        window = &desktop.addWindow(windowName, {0, 0, 900, 492});
    else if (window->exists)
        breakContract("a second editor window");
    window->exists = true;
    desktop.editor.controls.clear();
    desktop.editor.handlers = handlers;
    return window;
}

void addEditorControl(WindowHandle window, const EditorControl& control) {
    SimulatedEditor* editor = editorOf(window);
    if (editor != nullptr && control.id != 0)
        editor->controls[control.id] = {control.kind, control.text, {}, -1};
}

void setInterfaceFont(WindowHandle window) {
    static_cast<void>(editorOf(window));
}

void showEditorWindow(WindowHandle window) {
    if (SimulatedEditor* editor = editorOf(window))
        editor->isShown = true;
}

void restoreEditorWindow(WindowHandle window) {
    if (SimulatedEditor* editor = editorOf(window)) {
        editor->isShown = true;
        simulatedDesktop().foreground = window;
    }
}

void destroyEditorWindow(WindowHandle window) {
    SimulatedEditor* editor = editorOf(window);
    if (editor == nullptr)
        return;
    editor->isShown = false;
    window->exists = false;
    editor->handlers.destroyed();
}

std::u16string controlText(WindowHandle window, std::int32_t id, std::size_t maxLength) {
    const SimulatedEditor::Control* control = controlOf(window, id);
    return control != nullptr ? cutTo(control->text, maxLength) : std::u16string();
}

void setControlText(WindowHandle window, std::int32_t id, const std::u16string& text) {
    if (SimulatedEditor::Control* control = controlOf(window, id))
        control->text = text;
}

void emptyList(WindowHandle window, std::int32_t id) {
    if (SimulatedEditor::Control* control = listOf(window, id)) {
        control->rows.clear();
        control->selection = -1;
    }
}

void addListRow(WindowHandle window, std::int32_t id, const std::u16string& text) {
    if (SimulatedEditor::Control* control = listOf(window, id))
        control->rows.push_back(text);
}

std::int32_t listSelection(WindowHandle window, std::int32_t id) {
    const SimulatedEditor::Control* control = listOf(window, id);
    return control != nullptr ? control->selection : -1;
}

void setListSelection(WindowHandle window, std::int32_t id, std::int32_t index) {
    if (SimulatedEditor::Control* control = listOf(window, id))
        control->selection =
            index >= 0 && static_cast<std::size_t>(index) < control->rows.size() ? index : -1;
}

bool askInBox(WindowHandle window, const std::u16string& title, const std::u16string& text) {
    if (editorOf(window) == nullptr)
        return false;
    openBox(describeBox("ask", title, text));
    return takeNext(simulatedDesktop().editor.answers);
}

void showInBox(WindowHandle window, const std::u16string& title, const std::u16string& text,
               EditorBoxIcon icon) {
    if (editorOf(window) != nullptr)
        openBox(describeBox(icon == EditorBoxIcon::warning ? "warn" : "inform", title, text));
}

std::optional<std::u16string> pickFileToOpen(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder) {
    if (editorOf(window) == nullptr)
        return std::nullopt;
    openBox(describeDialog("open", filters, folder));
    return takeNext(simulatedDesktop().editor.pickedFiles);
}

std::optional<std::u16string> pickFileToSave(WindowHandle window, std::span<const FileFilter> filters,
                                             const std::u16string& folder, const std::u16string& name,
                                             const std::u16string& extension) {
    if (editorOf(window) == nullptr)
        return std::nullopt;
    openBox(describeDialog("save", filters, folder) + ", " + utf8FromUtf16(name) + ", " +
            utf8FromUtf16(extension));
    return takeNext(simulatedDesktop().editor.pickedFiles);
}

} // namespace rotika

#include "editor/editor_documents.h"

#include "base/text.h"
#include "common/file_names.h"
#include "core/activation.h"
#include "editor/editor_boxes.h"
#include "editor/editor_controls.h"
#include "editor/editor_form.h"
#include "editor/editor_state.h"
#include "editor/kept_edits.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "model/engine_state.h"
#include "platform/editor_window.h"
#include "platform/files.h"
#include "platform/main_window.h"
#include "platform/paths.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace rotika {

namespace {

constexpr FileFilter allFiles{u"Wszystkie (*.*)", u"*.*"};
constexpr std::array wheelFilters{FileFilter{u"Pliki JSON (*.json)", u"*.json"}, allFiles};
constexpr std::array iconFilters{FileFilter{u"Obrazy (*.png;*.bmp;*.jpg)", u"*.png;*.bmp;*.jpg"}, allFiles};

bool confirmDiscardingChanges() {
    return !editorState.editorDirty || askInEditor(u"Niezapisane zmiany zostaną utracone. Kontynuować?");
}

void replaceDocument(std::vector<Wheel> wheels, const std::u16string& path) {
    editorState.editorWheels = std::move(wheels);
    editorState.editorWheelIndex = 0;
    editorState.editorPath = path;
    editorState.editorDirty = false;
    editorState.keptFile.clear();
    editorState.isKeptInMemory = false;
    showNewDocument();
}

/// Whether the engine loads this file. Case-insensitive, like file names on Windows.
bool isFileOfEngine(const std::u16string& path) {
    const auto isNamed = [&path](const char16_t* name) {
        return asciiLowered(path) == asciiLowered(joinPath(programFolder(), name));
    };
    return isNamed(defaultWheelsFileName) || isNamed(voiceFunctionsFileName);
}

void reloadSavedFiles() {
    std::u16string problems; // not shown here
    reloadFiles(problems);
    repaintMainWindow(engineState.mainWindow);
}

/// Relative for a file in the folder of the program, so that the folder can be moved.
std::u16string shortenedPath(const std::u16string& path) {
    const std::u16string prefix = joinPath(programFolder(), u"");
    const bool isInside =
        path.size() > prefix.size() && asciiLowered(path.substr(0, prefix.size())) == asciiLowered(prefix);
    return isInside ? path.substr(prefix.size()) : path;
}

/// Writes the document; to a file that the user picks if `saveAs` is set or it has no path yet. Unapplied
/// form content is not written. A failed write leaves the old file unchanged and is not reported; the
/// document is then kept by keepEdits.
void saveWheels(bool saveAs) {
    if (editorState.editorPath.empty() || saveAs) {
        const std::optional<std::u16string> path = pickFileToSave(
            editorState.editorWindow, wheelFilters, programFolder(), defaultWheelsFileName, u"json");
        if (!path)
            return;
        editorState.editorPath = *path;
    }
    if (std::ranges::any_of(editorState.editorWheels,
                            [](const Wheel& wheel) { return wheel.actions.empty(); }))
        informInEditor(u"Uwaga: któreś koło nie ma żadnych funkcji — przy\nwczytywaniu zostanie pominięte.");
    const std::string bytes = serializeWheels(editorState.editorWheels);
    if (replaceFileBytes(editorState.editorPath, bytes))
        dropKeptEdits();
    else
        keepEdits(bytes);
    editorState.editorDirty = false;
    refreshPathLabel();
    if (isFileOfEngine(editorState.editorPath))
        reloadSavedFiles();
}

} // namespace

void makeNewDocument() {
    if (confirmDiscardingChanges())
        replaceDocument(newEditorWheels(), u"");
}

void openDocument() {
    if (!confirmDiscardingChanges())
        return;
    const std::optional<std::u16string> path =
        pickFileToOpen(editorState.editorWindow, wheelFilters, programFolder());
    if (!path)
        return;
    std::vector<Wheel> wheels;
    std::u16string problems;
    loadWheelFile(*path, wheels, problems);
    if (!problems.empty())
        warnInEditor(u"Problemy przy wczytywaniu:\n\n" + problems);
    replaceDocument(wheels.empty() ? newEditorWheels() : std::move(wheels), *path);
}

void saveDocument() {
    saveWheels(false);
}

void saveDocumentAs() {
    saveWheels(true);
}

void chooseIcon() {
    const std::optional<std::u16string> path =
        pickFileToOpen(editorState.editorWindow, iconFilters, programFolder());
    if (path)
        setControlText(editorState.editorWindow, fieldIconEdit, shortenedPath(*path));
}

} // namespace rotika

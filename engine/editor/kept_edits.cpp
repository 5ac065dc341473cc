#include "editor/kept_edits.h"

#include "base/text.h"
#include "editor/editor_state.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <utility>

namespace rotika {

namespace {

// One for each document that could not be saved; more than anybody leaves behind.
constexpr std::int64_t mostKeptFiles = 20;

std::u16string keptFile(const std::u16string& folder, std::int64_t number) {
    return joinPath(folder, u"niezapisane-kola-" + decimalText(number) + u".json");
}

/// The first such file in the folder that is there, or that is not; empty if there is none.
std::u16string firstKeptFile(const std::u16string& folder, bool isThere) {
    for (std::int64_t number = 1; number <= mostKeptFiles; ++number) {
        std::u16string path = keptFile(folder, number);
        if (pathExists(path) == isThere)
            return path;
    }
    return {};
}

bool writeKeptFile(const std::u16string& path, const std::string& bytes) {
    if (path.empty() || !replaceFileBytes(path, bytes))
        return false;
    editorState.keptFile = path;
    return true;
}

} // namespace

void keepEdits(const std::string& bytes) {
    editorState.isKeptInMemory = !writeKeptFile(editorState.keptFile, bytes) &&
                                 !writeKeptFile(firstKeptFile(programFolder(), false), bytes) &&
                                 !writeKeptFile(firstKeptFile(folderOfTemporaryFiles(), false), bytes);
}

void dropKeptEdits() {
    editorState.isKeptInMemory = false;
    if (!editorState.keptFile.empty() && editorState.keptFile != editorState.editorPath)
        removeFile(std::exchange(editorState.keptFile, {}));
}

std::u16string findKeptEdits() {
    const std::u16string beside = firstKeptFile(programFolder(), true);
    return beside.empty() ? firstKeptFile(folderOfTemporaryFiles(), true) : beside;
}

} // namespace rotika

#include "editor/kept_edits.h"

#include "base/text.h"
#include "editor/editor_state.h"
#include "platform/files.h"
#include "platform/paths.h"

#include <utility>

namespace rotika {

namespace {

// One file per document that could not be saved.
constexpr std::int64_t maxKeptFiles = 20;

std::u16string keptFile(const std::u16string& folder, std::int64_t number) {
    return joinPath(folder, u"niezapisane-kola-" + decimalText(number) + u".json");
}

/// The first recovery file name in the folder that exists, or that is free; empty if there is none.
std::u16string firstKeptFile(const std::u16string& folder, bool mustExist) {
    for (std::int64_t number = 1; number <= maxKeptFiles; ++number) {
        std::u16string path = keptFile(folder, number);
        if (pathExists(path) == mustExist)
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

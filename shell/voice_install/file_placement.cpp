#include "shell/voice_install/file_placement.h"

#include "common/files.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <system_error>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr char8_t workPrefix[] = u8".rotika-voice-install-";
constexpr int firstWorkNumber = 100;
constexpr int mostWorkFolders = 900;
constexpr std::chrono::seconds moveLimit{4}; // of all moves of one call together
constexpr std::chrono::milliseconds movePause{50};

fs::path newFolder(const fs::path& work) {
    return work / u8"new";
}

fs::path oldFolder(const fs::path& work) {
    return work / u8"old";
}

/// Has an empty file for each new one that replaces nothing.
fs::path addedFolder(const fs::path& work) {
    return work / u8"added";
}

fs::path confirmation(const fs::path& work) {
    return work / u8"confirmed";
}

fs::path deferment(const fs::path& work) {
    return work / u8"deferred";
}

/// With the same number of digits, so that the names are in the order of the numbers.
fs::path workFolder(const fs::path& dataFolder, int number) {
    fs::path work = dataFolder / workPrefix;
    work += std::to_string(firstWorkNumber + number);
    return work;
}

/// A link is never followed.
bool isPresent(const fs::path& path) {
    std::error_code failure;
    return fs::symlink_status(path, failure).type() != fs::file_type::not_found;
}

/// Moves files until a common deadline.
class Mover {
public:
    bool move(const fs::path& from, const fs::path& to) const;

private:
    std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::now() + moveLimit;
};

/// Virus scanners hold new files open for a moment, which on Windows keeps them where they are. The library
/// reports that as an error of input and output.
bool Mover::move(const fs::path& from, const fs::path& to) const {
    for (;;) {
        std::error_code failure;
        fs::rename(from, to, failure);
        const bool mayBeHeld =
            (failure == std::errc::permission_denied || failure == std::errc::io_error) && isPresent(from);
        if (!mayBeHeld || std::chrono::steady_clock::now() >= deadline)
            return !failure;
        std::this_thread::sleep_for(movePause);
    }
}

bool writeNote(const fs::path& path) {
    std::ofstream note(path);
    note.close();
    return !note.fail();
}

/// The new one comes after the old one has left: no system exchanges two folders in one step on all disks.
bool place(const fs::path& work, const PlacedName& name, const Mover& mover) {
    const fs::path target = work.parent_path() / name;
    if (isPresent(target) ? !mover.move(target, oldFolder(work) / name)
                          : !writeNote(addedFolder(work) / name))
        return false;
    return mover.move(newFolder(work) / name, target);
}

/// Moves the new one back, if it has been placed.
void withdraw(const fs::path& work, const fs::path& name, const Mover& mover) {
    if (!isPresent(newFolder(work) / name))
        mover.move(work.parent_path() / name, newFolder(work) / name);
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end; at.increment(failure))
        found.push_back(at->path());
    return found;
}

} // namespace

fs::path makeWorkFolder(const fs::path& dataFolder) {
    int number = mostWorkFolders;
    while (number > 0 && !isPresent(workFolder(dataFolder, number - 1)))
        --number;
    for (; number < mostWorkFolders; ++number) {
        std::error_code failure;
        fs::path work = workFolder(dataFolder, number);
        if (!fs::create_directory(work, failure))
            continue;
        if (fs::create_directory(newFolder(work), failure) &&
            fs::create_directory(oldFolder(work), failure) &&
            fs::create_directory(addedFolder(work), failure))
            return work;
        removeWorkFolder(work);
        return {};
    }
    return {};
}

bool keepForRestoring(const fs::path& work, const PlacedName& name) {
    const fs::path file = work.parent_path() / name;
    if (!isPresent(file))
        return writeNote(addedFolder(work) / name);
    // Not written to "old" itself: from there an incomplete copy would be restored.
    const fs::path copy = work / u8"copy";
    const std::optional<std::string> bytes = readWholeFile(file);
    return bytes && replaceWholeFile(copy, *bytes) && Mover().move(copy, oldFolder(work) / name);
}

void forgetKept(const fs::path& work, const PlacedName& name) {
    std::error_code ignored;
    fs::remove(oldFolder(work) / name, ignored);
    fs::remove(addedFolder(work) / name, ignored);
}

bool placeFiles(const fs::path& work, const std::vector<PlacedName>& names) {
    const Mover mover;
    for (const PlacedName& name : names) {
        if (!place(work, name, mover)) {
            unplaceFiles(work);
            return false;
        }
    }
    return true;
}

void unplaceFiles(const fs::path& work) {
    const Mover mover;
    for (const fs::path& note : entriesOf(addedFolder(work)))
        withdraw(work, note.filename(), mover);
    for (const fs::path& old : entriesOf(oldFolder(work))) {
        withdraw(work, old.filename(), mover);
        mover.move(old, work.parent_path() / old.filename());
    }
}

bool confirmPlacement(const fs::path& work) {
    return writeNote(confirmation(work));
}

bool deferConfirmation(const fs::path& work) {
    return writeNote(deferment(work));
}

void removeWorkFolder(const fs::path& work) noexcept {
    std::error_code ignored;
    fs::remove_all(newFolder(work), ignored);
    // What could not be put back is kept for the next start.
    if (!isPresent(confirmation(work)) && !entriesOf(oldFolder(work)).empty())
        return;
    // The notes before the confirmation: a start between the two must not take anything back.
    fs::remove_all(addedFolder(work), ignored);
    fs::remove_all(oldFolder(work), ignored);
    if (!isPresent(oldFolder(work)))
        fs::remove_all(work, ignored);
}

LeftPlacements unplaceUnconfirmed(const fs::path& dataFolder) {
    std::vector<fs::path> works = entriesOf(dataFolder);
    std::erase_if(works,
                  [](const fs::path& entry) { return !entry.filename().u8string().starts_with(workPrefix); });
    std::ranges::sort(works,
                      std::ranges::greater()); // the last one may have replaced files of an earlier one
    LeftPlacements left;
    for (const fs::path& work : works) {
        std::error_code failure;
        const bool isConfirmed = isPresent(confirmation(work));
        const bool isDeferred = !isConfirmed && fs::remove(deferment(work), failure);
        if (!isConfirmed && !isDeferred)
            unplaceFiles(work);
        (isDeferred ? left.onTrial : left.ended).push_back(work);
    }
    return left;
}

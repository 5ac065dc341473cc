#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Replacing files and folders of the data folder by new ones, all or none of them, also when the process is
// killed. New and replaced ones are in a work folder within the data folder, so that all moves are renames.
// Any thread, one at a time for each work folder. May take seconds if another program holds a file open.

/// A file or folder to be moved from the work folder, by its name in both folders.
using PlacedName = std::u8string;

/// A new work folder with the subfolder "new" in the data folder, by its name after all others that are
/// there; empty if none can be made.
std::filesystem::path makeWorkFolder(const std::filesystem::path& dataFolder);

/// Notes the content of a file that is about to be changed, so that unplaceFiles restores it as well. False
/// if that failed.
bool keepForRestoring(const std::filesystem::path& work, const PlacedName& name);

/// unplaceFiles leaves the file as it is then.
void forgetKept(const std::filesystem::path& work, const PlacedName& name);

/// Moves all of `names` from "new" to the data folder, and what they replace to "old". An open or loaded file
/// may be replaced. On a failure everything is as before, and the result is false.
bool placeFiles(const std::filesystem::path& work, const std::vector<PlacedName>& names);

/// Takes back what placeFiles did, and restores what was kept.
void unplaceFiles(const std::filesystem::path& work);

/// From now on the next start keeps what is placed. False if that could not be noted.
bool confirmPlacement(const std::filesystem::path& work);

/// The next start keeps what is placed as well, but on trial: the start after that one takes it back unless
/// it is confirmed or deferred again by then. False if that could not be noted.
bool deferConfirmation(const std::filesystem::path& work);

/// Removes the work folder as far as the system allows: a library in use on Windows stays.
void removeWorkFolder(const std::filesystem::path& work) noexcept;

/// Work folders that an earlier run has left.
struct LeftPlacements {
    std::vector<std::filesystem::path> onTrial;
    std::vector<std::filesystem::path> ended; // to be removed
};

/// For the start of the program: takes back every placement that was neither confirmed nor deferred.
LeftPlacements unplaceUnconfirmed(const std::filesystem::path& dataFolder);

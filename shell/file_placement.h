#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Replacing files and folders of the data folder by new ones, all or none of them, also when the process is
// killed. New and replaced ones are in a work folder within the data folder, so that all moves are renames.
// Main thread, except where one says otherwise.

/// A file or folder to be moved from the work folder, by its name in both folders.
using PlacedName = std::u8string;

/// A new work folder with the subfolder "new" in the data folder; empty if none can be made. Any thread.
std::filesystem::path makeWorkFolder(const std::filesystem::path& dataFolder);

/// Moves all of `names` from "new" to the data folder, and what they replace to "old". An open or loaded file
/// may be replaced. On a failure nothing is changed, and the result is false.
bool placeFiles(const std::filesystem::path& work, const std::vector<PlacedName>& names);

/// Takes back what placeFiles did.
void unplaceFiles(const std::filesystem::path& work);

/// From now on the next start keeps what is placed. False if that could not be noted.
bool confirmPlacement(const std::filesystem::path& work);

/// Removes the work folder as far as the system allows: a library in use on Windows stays. Any thread.
void removeWorkFolder(const std::filesystem::path& work) noexcept;

/// For the start of the program: takes back every placement that was not confirmed and removes the work
/// folders.
void finishPlacements(const std::filesystem::path& dataFolder);

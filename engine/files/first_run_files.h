#pragma once

#include <string>

namespace rotika {

/// Writes config.json, default.json and voice.json with their initial content where they are missing.
/// Existing files are never changed, failures are silent. `folder` has no trailing separator.
void ensureDefaultFiles(const std::u16string& folder);

} // namespace rotika

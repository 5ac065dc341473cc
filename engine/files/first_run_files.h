#pragma once

#include <string>

namespace rotika {

inline constexpr char16_t configFileName[] = u"config.json";
inline constexpr char16_t defaultWheelsFileName[] = u"default.json";
inline constexpr char16_t voiceFunctionsFileName[] = u"voice.json";

/// Writes config.json, default.json and voice.json with their first content where they are missing. Existing
/// files are never touched, failures are silent. `folder` has no trailing separator.
void ensureDefaultFiles(const std::u16string& folder);

} // namespace rotika

#pragma once

// In the folder of the program's own files.

inline constexpr char16_t configFileName[] = u"config.json";
inline constexpr char16_t defaultWheelsFileName[] = u"default.json";
inline constexpr char16_t voiceFunctionsFileName[] = u"voice.json";
inline constexpr char16_t iconFolderName[] = u"icons"; // also beside a wheel file

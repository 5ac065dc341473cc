#pragma once

// Names in the data folder, and beside the executable.

inline constexpr char16_t configFileName[] = u"config.json";
inline constexpr char16_t defaultWheelsFileName[] = u"default.json";
inline constexpr char16_t voiceFunctionsFileName[] = u"voice.json";
inline constexpr char16_t iconFolderName[] = u"icons";                            // also beside a wheel file
inline constexpr char16_t defaultSpeechModelName[] = u"vosk-model-small-pl-0.22"; // a folder
inline constexpr char16_t installedMarkName[] = u"installed";                     // see chooseDataFolder

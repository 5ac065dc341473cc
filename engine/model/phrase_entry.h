#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// One phrase that the recogniser listens for.
struct PhraseEntry {
    std::string phrase;            // UTF-8, folded; equals the recogniser's text byte for byte
    std::int32_t command = 0;      // id of a fixed command; 0 for a phrase that runs a function
    std::int32_t wheelIndex = -1;  // into the wheels, VoiceActionsWheel, or -1 for a fixed command
    std::int32_t actionIndex = -1; // into that wheel's fields or the voice functions; -1 for a fixed command
};

/// All phrases. Row order is the order of the grammar, and the first of equal phrases wins.
using PhraseTable = std::vector<PhraseEntry>;

/// wheelIndex of the voice functions, which have no field on a wheel.
inline constexpr std::int32_t VoiceActionsWheel = -2;

} // namespace rotika

#pragma once

#include <string>

namespace rotika {

/// Polish words for the codes in gazeStatus and voiceStatus; zero-terminated, never freed. Any thread.
const char16_t* gazeStatusText();
const char16_t* voiceStatusText();

/// The page that a standalone engine's window shows. Owner thread.
std::u16string statusPageText();

} // namespace rotika

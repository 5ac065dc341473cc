#pragma once

#include <string>

namespace rotika {

/// Polish texts of gazeStatus and voiceStatus; zero-terminated, never freed. Any thread.
const char16_t* gazeStatusText();
const char16_t* voiceStatusText();

/// The status page in a standalone engine's window. Owner thread.
std::u16string statusPageText();

} // namespace rotika

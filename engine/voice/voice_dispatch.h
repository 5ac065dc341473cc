#pragma once

#include <string_view>

namespace rotika {

/// Acts on what the recogniser heard: the phrase's row becomes a message to the main window, where the owner
/// thread decides what it means. A text that is no row of the table, or a field's phrase while the wheel is
/// closed and the settings keep such phrases to the open wheel, does nothing. UTF-8. The voice thread.
void dispatchRecognisedText(std::string_view text);

} // namespace rotika

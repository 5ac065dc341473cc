#pragma once

#include <string_view>

namespace rotika {

/// Posts the command of a recognised phrase to the main window, which executes it on the owner thread. No
/// effect for a text that is not in the table, or a field's phrase while the wheel is closed and voiceGlobal
/// is off. UTF-8. The voice thread.
void dispatchRecognisedText(std::string_view text);

} // namespace rotika

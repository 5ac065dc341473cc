#pragma once

#include <string>

namespace rotika {

/// Warns the person. On Windows by a modal box without owner, which returns when it is dismissed; the
/// windows' messages go on being handled meanwhile. On Linux by a notification of the desktop, or by a window
/// that blocks nothing where no notification server answers: returns at once. Owner thread.
void showWarningBox(const std::u16string& title, const std::u16string& text);

} // namespace rotika

#pragma once

#include <string>

namespace rotika {

/// Warns the user. On Windows by a modal box without owner, which returns when it is dismissed and dispatches
/// the windows' messages meanwhile. On Linux by a desktop notification, or by a non-modal window if no
/// notification server responds: returns at once. Owner thread.
void showWarningBox(const std::u16string& title, const std::u16string& text);

} // namespace rotika

#pragma once

#include <string>

namespace rotika {

/// Shows a warning in a window of its own and returns at once. Enter, Space, Escape, the button and the
/// window manager's closing dismiss it. Texts are UTF-8. Owner thread.
void openWarningWindow(const std::string& title, const std::string& text);

} // namespace rotika

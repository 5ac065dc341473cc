#pragma once

#include <string>

/// Shows a modal warning without owner and returns when it is dismissed; the windows' messages go on being
/// handled meanwhile. Owner thread.
void showWarningBox(const std::u16string& title, const std::u16string& text);

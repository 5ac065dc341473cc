#pragma once

#include <string>

/// Opens an address or file with its default program, or starts a program. Returns at once; failures are
/// silent. Any thread but the owner's.
void openTarget(const std::u16string& target);

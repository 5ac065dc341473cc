#pragma once

#include <string>

namespace rotika {

/// Opens an address or file with its default program, or starts a program. Returns at once; failures are
/// silent. Any thread but the owner's.
void openTarget(const std::u16string& target);

} // namespace rotika

#pragma once

namespace rotika {

/// Ends the process with a message: a caller broke a promise of the seam.
[[noreturn]] void breakContract(const char* what);

} // namespace rotika

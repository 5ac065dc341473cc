#pragma once

namespace rotika {

/// Aborts the process with a message: a caller violated the platform interface.
[[noreturn]] void breakContract(const char* what);

} // namespace rotika

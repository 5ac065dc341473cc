#pragma once

namespace rotika {

/// A window of this process or of another one. Never dereferenced: an HWND on Windows, an X window id on
/// Linux. Null is no window. Other processes may destroy their windows at any time.
using WindowHandle = struct PlatformWindow*;

} // namespace rotika

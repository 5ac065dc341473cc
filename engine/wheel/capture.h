#pragma once

namespace rotika {

// Opening and closing the wheel. Owner thread.

/// Paints the closed wheel in advance: fonts, shapes and the layer's memory are then cached, so that the
/// first opening is as fast as later ones.
void prepareWheel();

/// Opens the wheel on the monitor of the real cursor and captures the mouse. Must not be called while it is
/// open. No effect while the session is locked, after a stop or without a window.
void showWheel();

/// Undoes the whole capture and hides the window. Restores neither cursor nor foreground window. Used by
/// every way of closing.
void hideWheel();

/// Restores the saved cursor position and foreground window, the latter if need be after a focus hold, at
/// most once per show.
void restoreFocus();

/// Closes an open wheel and restores cursor and foreground window; no effect when it is closed.
void closeWheel();

/// Opens a closed wheel, closes an open one.
void toggleWheel();

} // namespace rotika

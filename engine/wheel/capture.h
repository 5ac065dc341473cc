#pragma once

namespace rotika {

// Opening and closing the wheel. Owner thread.

/// Paints the closed wheel as the next opening will show it: fonts, shapes and the layer's memory are then
/// ready, and the first opening is as fast as the later ones.
void prepareWheel();

/// Opens the wheel on the monitor of the real cursor and takes the mouse away from all programs. Never called
/// while it is open. Nothing happens while the session is locked, after a stop or
/// without a window.
void showWheel();

/// Undoes the whole capture and hides the window. Restores neither cursor nor foreground. Every road out
/// comes here.
void hideWheel();

/// Gives the saved cursor position and foreground window back, at most once for each show.
void restoreFocus();

/// Closes an open wheel and gives cursor and foreground back; nothing when it is closed.
void closeWheel();

/// What the toggle key does.
void toggleWheel();

} // namespace rotika

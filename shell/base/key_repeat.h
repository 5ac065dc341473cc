#pragma once

class QKeyEvent;

// Which key presses are the system's repeats of a key that is held down. Main thread.

/// Before the first key event, after the application has been created.
void watchKeyRepeats();

/// When another program gets the keys, and with them the releases.
void forgetHeldKeys();

bool isRepetition(const QKeyEvent& press);

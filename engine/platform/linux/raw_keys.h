#pragma once

#include "platform/linux/x11.h"

// Raw presses and releases of all keyboards, whoever has the focus or a grab. They are asked for only while
// somebody needs them, so that people's typing is not listened to otherwise. Owner thread.

/// `device` is the slave that sent it. Auto-repeats are not among them. Owner thread.
using RawKeyHandler = void (*)(KeyCode code, int device, bool isPress);

/// Called for each press and release while any reason for listening stands. Lives for the whole process.
void addRawKeyHandler(RawKeyHandler handler);

enum class ListeningReason : unsigned { hotKeyIsDown = 1, keyIsLeftDown = 2 };

void listenToRawKeys(ListeningReason reason, bool isOn);

/// Whether the key is down now, as the server sees it.
bool isKeyDown(KeyCode code);

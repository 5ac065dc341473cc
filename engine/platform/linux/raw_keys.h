#pragma once

#include "platform/linux/x11.h"

// Raw key releases of all keyboards, whoever has the focus or a grab. They are asked for only while somebody
// needs them, so that people's typing is not listened to otherwise. Owner thread.

using KeyReleaseHandler = void (*)(KeyCode code);

/// Called for each release while any reason for listening stands. Lives for the whole process.
void addKeyReleaseHandler(KeyReleaseHandler handler);

enum class ListeningReason : unsigned { hotKeyIsDown = 1, keyIsLeftDown = 2 };

void listenToKeyReleases(ListeningReason reason, bool isOn);

/// Whether the key is down now, as the server sees it.
bool isKeyDown(KeyCode code);

#pragma once

/// The engine's face without an engine behind it: what it was asked.
struct FakeOverlay {
    int reloads = 0;
};

extern FakeOverlay fakeOverlay;

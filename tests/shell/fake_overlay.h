#pragma once

#include <QStringList>

/// The engine's face without an engine behind it: what it was asked.
struct FakeOverlay {
    QStringList activated; // paths
    int reloads = 0;
};

extern FakeOverlay fakeOverlay;

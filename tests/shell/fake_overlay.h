#pragma once

#include <QStringList>
#include <functional>

/// The engine's face without an engine behind it: what it was asked.
struct FakeOverlay {
    QStringList activated; // paths
    int reloads = 0;
    std::function<void()> onStart;
    std::function<void()> onStop;
};

extern FakeOverlay fakeOverlay;

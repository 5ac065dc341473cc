#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <functional>

/// Runs the event loop until the condition holds; false after the limit.
inline bool waitUntil(const std::function<bool()>& condition, int limitMs = 20000) {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.elapsed() > limitMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

#pragma once

#include <QObject>

/// Tells the pages that something else than a page has changed config.json, or their next change would undo
/// it. Main thread.
class ConfigChanges : public QObject {
    Q_OBJECT

public:
    static ConfigChanges& instance();

signals:
    void changed();
};

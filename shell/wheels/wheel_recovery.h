#pragma once

#include "shell/wheels/wheel_document.h"

#include <QDateTime>
#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <memory>
#include <optional>

/// Unsaved changes of a wheel file that an earlier run has kept.
struct FoundRecovery {
    QString path; // of the recovery file
    bool multiWheel = true;
    QList<EditorWheel> wheels;
    QDateTime time;
    bool fileHasChanged = false; // the wheel file, since then
    QString olderCopy;           // older kept changes of the same file; empty: none
};

/// Keeps the unsaved changes of the open wheel file in a recovery file beside it ("kola-odzysk.json"), or,
/// where none can be created there, in the data folder, so that the end of the program loses nothing. A
/// recovery file is a wheel file with one more member and can be opened as such. Main thread.
class WheelRecovery : public QObject {
    Q_OBJECT

public:
    explicit WheelRecovery(QObject* parent = nullptr);
    ~WheelRecovery() override;

    /// Call after each change. The file is written within seconds, in the background.
    void keep(const WheelDocument& document);

    /// Writes what is not written yet; waits for that about a second at most.
    void flush();

    /// The program ends: the same, and later changes are ignored. They are none of the user's: a cancelled
    /// colour dialog clears the colour.
    void finish();

    /// The document will be replaced by another: leaves the recovery file for the next opening.
    void leave();

    /// The changes have been saved: removes the recovery file, in the background, unless it is an earlier
    /// run's that has not been adopted.
    void remove();

    /// From now on an earlier run's recovery file of this wheel file counts as this run's.
    void adopt(const QString& wheelFile);

    /// Gives an earlier run's recovery file a name of its own, under which it is kept but not offered again.
    /// Returns the new path; empty on failure, and from then on nothing is kept until leave() or adopt().
    QString setAside(const FoundRecovery& found);

    /// The kept changes of the file that `saved` has been loaded from, the newest if there are several: older
    /// ones get a name of their own. A recovery file without any difference is removed.
    static std::optional<FoundRecovery> find(const WheelDocument& saved);

private:
    void write();

    QTimer delay;
    std::unique_ptr<QThreadPool> writer; // one thread: the order matters
    std::optional<WheelDocument> pending;
    QString ownedFor; // the wheel file whose recovery file this run has written; empty: none
    bool isBlocked = false;
};

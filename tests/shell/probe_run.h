#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

/// A private home for runs of the start-up probe: its program folder, its settings, its run-time folder and
/// its record.
class ProbeHome {
public:
    ProbeHome();

    QString programFolder() const { return folder.filePath("program"); }
    QString runtimeFolder() const { return folder.filePath("run"); }
    QString temporaryFolder() const { return folder.filePath("tmp"); }

    /// A further run. `extra` sets variables of its environment; a name without "=" is removed from it.
    std::unique_ptr<QProcess> start(const QStringList& extra = {});

    QStringList log() const;

    /// Until the record holds the line; false after a generous limit.
    bool waitForLine(const QString& line) const;

private:
    QTemporaryDir folder;
};

/// Exit status, or -1 for a crash or a run that does not end.
int exitStatus(QProcess& process);

#include "probe_run.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

namespace {

// Far above what a run takes, so that only a run that hangs reaches it.
constexpr int limitMs = 60000;

QString probeName() {
#ifdef _WIN32
    return "start_probe.exe";
#else
    return "start_probe";
#endif
}

} // namespace

ProbeHome::ProbeHome() {
    const QDir root(folder.path());
    for (const char* name : {"program/themes", "run", "tmp", "config", "elsewhere"})
        root.mkpath(name);
    QFile::setPermissions(runtimeFolder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QDir from(QCoreApplication::applicationDirPath());
    QFile::copy(from.filePath(probeName()), root.filePath("program/" + probeName()));
    QFile::copy(from.filePath("themes/fluent.qss"), root.filePath("program/themes/fluent.qss"));
    QFile::copy(from.filePath("rotika.ico"), root.filePath("program/rotika.ico"));
}

std::unique_ptr<QProcess> ProbeHome::start(const QStringList& extra) {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_CONFIG_HOME", folder.filePath("config"));
    environment.insert("XDG_RUNTIME_DIR", runtimeFolder());
    environment.insert("TMPDIR", temporaryFolder());
    environment.insert("ROTIKA_PROBE_LOG", folder.filePath("log"));
    environment.remove("QT_NO_GLIB");
    for (const QString& entry : extra) {
        if (entry.contains('='))
            environment.insert(entry.section('=', 0, 0), entry.section('=', 1));
        else
            environment.remove(entry);
    }
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->setWorkingDirectory(folder.filePath("elsewhere"));
    process->start(programFolder() + "/" + probeName(), QStringList());
    process->waitForStarted(limitMs);
    return process;
}

QStringList ProbeHome::log() const {
    QFile file(folder.filePath("log"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

bool ProbeHome::waitForLine(const QString& line) const {
    QElapsedTimer elapsed;
    elapsed.start();
    while (!log().contains(line)) {
        if (elapsed.elapsed() > limitMs)
            return false;
        QThread::msleep(5);
    }
    return true;
}

int exitStatus(QProcess& process) {
    if (!process.waitForFinished(limitMs))
        return -1;
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

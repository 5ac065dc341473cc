// The program's own main function among stand-ins, in a process that this program starts as itself: the
// variable ROTIKA_TEST_ROLE tells what happens there.

#include "fake_overlay.h"
#include "licence/licence_check.h"
#include "shell/single_instance.h"
#include "shell/update_library.h"

#include <gtest/gtest.h>

#include <QtWidgets>
#include <csignal>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#undef signals
#include <glib.h>
#endif

namespace {

bool roleIs(const char* role) {
    return qEnvironmentVariable("ROTIKA_TEST_ROLE") == role;
}

class StubbornWindow : public QWidget {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

void onEngineStart() {
    std::puts("engine start");
    static QWidget* const stubborn = roleIs("stubborn window") ? new StubbornWindow : nullptr;
    if (stubborn != nullptr)
        stubborn->show();
    if (roleIs(
            "early signal")) { // while the engine's warning dispatches events before the program's own loop
        std::raise(SIGINT);
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    QTimer::singleShot(0, qApp, [] { std::puts("running"); });
}

void playEngine() {
    if (!qEnvironmentVariableIsSet("ROTIKA_TEST_ROLE"))
        return;
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    fakeOverlay.onStart = onEngineStart;
    fakeOverlay.onStop = [] { std::puts("engine stop"); };
}

Q_COREAPP_STARTUP_FUNCTION(playEngine)

/// All that a program in that role says but for "running", and its exit status.
std::string storyOf(const QString& role) {
    constexpr int limitMs = 60000;
    const QTemporaryDir folder;
    auto variables = QProcessEnvironment::systemEnvironment();
    variables.insert("ROTIKA_TEST_ROLE", role);
    for (const char* name : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
        variables.insert(name, folder.path());
    QProcess program;
    program.setProcessEnvironment(variables);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationFilePath(), QStringList());
    QByteArray said;
    if (role == "stubborn window") {
        while (!said.contains("running") && program.waitForReadyRead(limitMs))
            said += program.readAll();
        program.terminate();
    }
    const bool isEnded = program.waitForFinished(limitMs) && program.exitStatus() == QProcess::NormalExit;
    said = (said + program.readAll()).simplified().replace("running ", "");
    return said.toStdString() + ' ' + std::to_string(isEnded ? program.exitCode() : -1);
}

TEST(Start, AnUpdateEndsTheProgramInOrder) {
    EXPECT_EQ(storyOf("update"), "engine start updates start updates end engine stop 0");
}

TEST(Start, NoGoFromTheLicenceCheckEndsBeforeTheEngine) {
    EXPECT_EQ(storyOf("no licence"), "0");
}

#ifndef _WIN32

/// As a desktop's own file dialog does it: a loop that is not Qt's, for as long as the dialog is there.
void askInForeignLoop() {
    QDialog dialog;
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    QObject::connect(&dialog, &QDialog::finished, [loop] { g_main_loop_quit(loop); });
    QTimer::singleShot(0, &dialog, [] { std::raise(SIGHUP); });
    dialog.show();
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

TEST(QuitSignals, TakeTheOrderlyRoadAtAnyMoment) {
    for (const char* role : {"stubborn window", "early signal", "signal in a dialog"})
        EXPECT_EQ(storyOf(role), "engine start engine stop 0") << role;
}

TEST(SingleInstance, LocksWhereThereIsAFolderAndFollowsNoLink) {
    for (const char* runtime : {"", "relative", "/nowhere/at/all"}) {
        const QTemporaryDir folder;
        qputenv("XDG_RUNTIME_DIR", runtime);
        qputenv("TMPDIR", QFile::encodeName(folder.path()));
        const std::string lock =
            folder.filePath(QString("RotikaEngineRunning-%1.lock").arg(geteuid())).toStdString();
        EXPECT_TRUE(claimSingleInstance());
        EXPECT_FALSE(claimSingleInstance()) << runtime;
        struct stat status {};
        ASSERT_EQ(stat(lock.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777u, 0600u);
        ASSERT_TRUE(unlink(lock.c_str()) == 0 && symlink("target", lock.c_str()) == 0);
        EXPECT_TRUE(claimSingleInstance()) << "rather two programs than none";
        EXPECT_FALSE(QFile::exists(folder.filePath("target")));
    }
}

#endif

} // namespace

LicenceResult LicenceCheck::check() {
#ifndef _WIN32
    if (roleIs("signal in a dialog"))
        askInForeignLoop();
#endif
    return {.go = !roleIs("no licence"), .accountText = {}};
}

void LicenceCheck::logOut(QWidget* /*parent*/) {}

QString updateLibraryName() {
    return roleIs("update") ? QCoreApplication::applicationDirPath() + "/update_double" : QString();
}

#include "shell/event_loop_support.h"
#include "shell/single_instance.h"
#include "shell/update_library.h"
#include "shell/update_service.h"

#include <gtest/gtest.h>

#include <QtTest>
#include <QtWidgets>
#include <atomic>
#include <csignal>

#ifndef _WIN32
#include <unistd.h>
#undef signals
#include <glib.h>
#endif

QString updateLibraryName() {
    return QCoreApplication::applicationDirPath() + "/update_double";
}

namespace {

TEST(Updates, MayEndTheProgramFromAThreadAndAreEndedWithIt) {
    static std::atomic<int> requests = 0;
    startUpdateService([] { ++requests; });
    EXPECT_TRUE(QTest::qWaitFor([] { return requests == 1; }, 20000));
    stopUpdateService(); // the double asks once more
    EXPECT_EQ(requests, 2);
}

#ifndef _WIN32

class StubbornWindow : public QWidget {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

/// The first signal comes in a dialog of the desktop's own: a loop that is not Qt's, for as long as it is
/// there.
[[noreturn]] void beEndedBy(int signal) {
    const EventLoopSupport support;
    StubbornWindow window;
    window.show();
    QDialog dialog;
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    QObject::connect(&dialog, &QDialog::finished, [loop] { g_main_loop_quit(loop); });
    QTimer::singleShot(0, &dialog, [signal] { std::raise(signal); });
    dialog.show();
    g_main_loop_run(loop);
    _exit(QApplication::exec() == 0 ? 42 : 1); // 0 is the end by the time limit
}

TEST(QuitSignals, CancelDialogsAndEndTheLoopWhateverTheWindowsSay) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        EXPECT_EXIT(beEndedBy(signal), testing::ExitedWithCode(42), "");
}

TEST(SingleInstance, LocksInTheTemporaryFolderWhereThereIsNoOtherAndFollowsNoLink) {
    const QTemporaryDir folder;
    qputenv("XDG_RUNTIME_DIR", "relative");
    qputenv("TMPDIR", QFile::encodeName(folder.path()));
    const QString name = QString("RotikaEngineRunning-%1.lock").arg(geteuid());
    const std::string lock = folder.filePath(name).toStdString();
    EXPECT_TRUE(claimSingleInstance());
    EXPECT_FALSE(claimSingleInstance());
    ASSERT_TRUE(unlink(lock.c_str()) == 0 && symlink("target", lock.c_str()) == 0);
    EXPECT_TRUE(claimSingleInstance()) << "rather two programs than none";
    EXPECT_FALSE(QFile::exists(folder.filePath("target")));
}

#endif

} // namespace

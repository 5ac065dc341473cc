#include "probe_run.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

namespace {

QString libraryBeside(const QString& name) {
    return "ROTIKA_PROBE_UPDATES=" + QCoreApplication::applicationDirPath() + "/" + name;
}

std::string text(const QStringList& lines) {
    return lines.join("\n").toStdString();
}

/// Ends a run that would go on for ever, by the road that every system has.
void endAtOnce(QProcess& process) {
    process.kill();
    process.waitForFinished();
}

TEST(Start, TakesEachStepInOrderAndUndoesThemInOrder) {
    ProbeHome home;
    const auto run = home.start({libraryBeside("update_double"), "ROTIKA_PROBE_UPDATE_QUITS=1"});
    EXPECT_EQ(exitStatus(*run), 0);
    QStringList log = home.log();
    log.removeAll("running"); // the update may ask for the end before the loop is seen to run
    EXPECT_EQ(text(log), text({"licence", "engine start, theme there, icon there, folder own, window no",
                               "updates feed https://rotika.example/appcast.xml",
                               "updates for Rotika Rotika 0.9.1", "updates callback", "updates automatic 1",
                               "updates init", "updates cleanup", "engine stop", "window destroyed"}));
}

TEST(Start, NoGoFromTheLicenceCheckEndsBeforeTheEngine) {
    ProbeHome home;
    const auto run = home.start({"ROTIKA_PROBE_NO_GO=1", libraryBeside("update_double")});
    EXPECT_EQ(exitStatus(*run), 0);
    EXPECT_EQ(text(home.log()), "licence");
}

TEST(Start, RunsWithHalfAnUpdateLibrary) {
    ProbeHome home;
    const auto run = home.start({libraryBeside("update_double_without_cleanup")});
    EXPECT_TRUE(home.waitForLine("running"));
    EXPECT_EQ(home.log().filter("updates").size(), 0);
    endAtOnce(*run);
}

#ifndef _WIN32

TEST(SingleInstance, LocksInTheTemporaryFolderWhenThereIsNoRuntimeFolder) {
    for (const QString& runtime : {QString("XDG_RUNTIME_DIR"), QString("XDG_RUNTIME_DIR=run"),
                                   QString("XDG_RUNTIME_DIR=/nowhere/at/all")}) {
        ProbeHome home;
        const auto first = home.start({runtime});
        ASSERT_TRUE(home.waitForLine("running"));
        const auto second = home.start({runtime});
        EXPECT_EQ(exitStatus(*second), 0);
        EXPECT_EQ(text(home.log().filter("box ")),
                  "box Rotika|Rotika już działa — sprawdź ikonę w zasobniku systemowym.")
            << runtime.toStdString();
        struct stat status {};
        const QString lock = home.temporaryFolder() + QString("/RotikaEngineRunning-%1.lock").arg(geteuid());
        ASSERT_EQ(stat(lock.toLocal8Bit().constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777u, 0600u);
        endAtOnce(*first);
    }
}

TEST(SingleInstance, FollowsNoLinkThatSomebodyLaidInTheTemporaryFolder) {
    ProbeHome home;
    const QString target = home.temporaryFolder() + "/target";
    const QString lock = home.temporaryFolder() + QString("/RotikaEngineRunning-%1.lock").arg(geteuid());
    ASSERT_TRUE(QFile::link(target, lock));
    const auto run = home.start({"XDG_RUNTIME_DIR"});
    EXPECT_TRUE(home.waitForLine("running"));
    EXPECT_FALSE(QFile::exists(target));
    endAtOnce(*run);
}

TEST(QuitSignals, TakeTheOrderlyRoadWhateverTheWindowsSay) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        ProbeHome home;
        const auto run = home.start({libraryBeside("update_double"), "ROTIKA_PROBE_STUBBORN=1"});
        ASSERT_TRUE(home.waitForLine("running"));
        kill(static_cast<pid_t>(run->processId()), number);
        EXPECT_EQ(exitStatus(*run), 0);
        EXPECT_EQ(text(home.log().mid(home.log().size() - 3)),
                  "updates cleanup\nengine stop\nwindow destroyed");
    }
}

TEST(QuitSignals, AreKeptUntilTheLoopRunsAndCancelDialogs) {
    for (const char* moment : {"ROTIKA_PROBE_EARLY_SIGNAL=1", "ROTIKA_PROBE_SIGNAL_IN_DIALOG=1"}) {
        ProbeHome home;
        const auto run = home.start({moment});
        EXPECT_EQ(exitStatus(*run), 0) << moment;
        EXPECT_EQ(text(home.log().mid(home.log().size() - 2)), "engine stop\nwindow destroyed") << moment;
    }
    ProbeHome home;
    const auto first = home.start({});
    ASSERT_TRUE(home.waitForLine("running"));
    EXPECT_EQ(exitStatus(*home.start({"ROTIKA_PROBE_SIGNAL_IN_BOX=1"})), 0) << "of a second copy";
    endAtOnce(*first);
}

TEST(GlibSources, AreServedWhateverQtRunsOn) {
    for (const QString& glib : {QString("QT_NO_GLIB"), QString("QT_NO_GLIB=1")}) {
        ProbeHome home;
        const auto run = home.start({glib, "ROTIKA_PROBE_GLIB=1"});
        EXPECT_TRUE(home.waitForLine("glib source served")) << glib.toStdString();
        kill(static_cast<pid_t>(run->processId()), SIGTERM);
        EXPECT_EQ(exitStatus(*run), 0);
    }
}

#endif

} // namespace

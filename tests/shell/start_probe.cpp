// What surrounds the program's own main function in the start-up probe: an engine and a licence check that
// record what they are asked, and a watcher that dismisses message boxes and tells when the event loop runs.

#include "fake_overlay.h"
#include "licence/licence_check.h"
#include "probe_log.h"
#include "shell/update_library.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QMessageBox>
#include <QThread>
#include <QTimer>
#include <csignal>

#ifndef _WIN32
#undef signals
#include <glib.h>
#endif

namespace {

bool engineStarted = false;

QWidget* findMainWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->inherits("MainWindow"))
            return widget;
    return nullptr;
}

/// A source of the kind that the engine's timers are: it tells when somebody serves GLib's default context.
void attachGlibSource() {
#ifndef _WIN32
    g_timeout_add(
        1,
        [](gpointer) -> gboolean {
            probeLog("glib source served");
            return G_SOURCE_REMOVE;
        },
        nullptr);
#endif
}

/// A signal while the engine's warning dispatches events before the application's own loop.
void raiseBeforeTheLoop() {
    std::raise(SIGTERM);
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

/// A window that will not be closed.
class StubbornWindow : public QWidget {
    void closeEvent(QCloseEvent* event) override { event->ignore(); }
};

void onEngineStart() {
    engineStarted = true;
    const bool inOwnFolder = QDir::current() == QDir(QCoreApplication::applicationDirPath());
    probeLog(std::string("engine start, theme ") + (qApp->styleSheet().isEmpty() ? "missing" : "there") +
             ", icon " + (QApplication::windowIcon().availableSizes().isEmpty() ? "empty" : "there") +
             ", folder " + (inOwnFolder ? "own" : "other") + ", window " +
             (findMainWindow() == nullptr ? "no" : "yes"));
    if (probeAsked("ROTIKA_PROBE_STUBBORN"))
        (new StubbornWindow)->show(); // it goes with the process
    if (probeAsked("ROTIKA_PROBE_GLIB"))
        attachGlibSource();
    if (probeAsked("ROTIKA_PROBE_EARLY_SIGNAL"))
        raiseBeforeTheLoop();
}

void onEngineStop() {
    probeLog("engine stop");
    if (QWidget* window = findMainWindow())
        QObject::connect(window, &QObject::destroyed, [] { probeLog("window destroyed"); });
}

/// Once. A second signal during the end must change nothing.
void raiseTwice() {
    static const bool isRaised = (std::raise(SIGTERM), std::raise(SIGTERM), true);
    (void)isRaised;
}

void dismissBox() {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr)
        return;
    if (probeAsked("ROTIKA_PROBE_SIGNAL_IN_BOX")) {
        raiseTwice();
        return;
    }
    probeLog("box " + box->windowTitle().toStdString() + "|" + box->text().toStdString());
    box->accept();
}

/// As a desktop's own file dialog does it: a loop that is not Qt's, for as long as the dialog is there.
void askInForeignLoop() {
#ifndef _WIN32
    QDialog dialog;
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    QObject::connect(&dialog, &QDialog::finished, [loop] { g_main_loop_quit(loop); });
    QTimer::singleShot(0, &dialog, raiseTwice);
    dialog.show();
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
#endif
}

void watch() {
    fakeOverlay.onStart = onEngineStart;
    fakeOverlay.onStop = onEngineStop;
    auto* timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, [told = false]() mutable {
        dismissBox();
        if (told || !engineStarted || QThread::currentThread()->loopLevel() == 0 ||
            !findMainWindow()->isVisible())
            return;
        told = true;
        probeLog("running");
    });
    timer->start(5);
}

Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace

LicenceResult LicenceCheck::check() {
    probeLog("licence");
    if (probeAsked("ROTIKA_PROBE_SIGNAL_IN_DIALOG"))
        askInForeignLoop();
    return {.go = !probeAsked("ROTIKA_PROBE_NO_GO"), .accountText = {}};
}

void LicenceCheck::logOut(QWidget* /*parent*/) {}

QString updateLibraryName() {
    return qEnvironmentVariable("ROTIKA_PROBE_UPDATES");
}

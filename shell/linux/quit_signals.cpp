#include "shell/linux/quit_signals.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <QApplication>
#include <QDialog>
#include <QThread>
#include <cerrno>
#include <chrono>
#include <csignal>

namespace {

constexpr std::array quitSignalNumbers{SIGTERM, SIGINT, SIGHUP};
constexpr std::chrono::milliseconds repetitionPause{50};
constexpr itimerval orderlyEndLimit{{0, 0}, {1, 800'000}};

volatile std::sig_atomic_t writeEnd = -1;

/// The guard releases what is held, and the server the mouse.
void onTimeUp(int /*number*/) {
    _exit(0);
}

void onQuitSignal(int /*number*/) {
    const int kept = errno;
    const char byte = 1;
    // A full pipe already contains the notification.
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(writeEnd), &byte, 1);
    itimerval running{};
    if (getitimer(ITIMER_REAL, &running) == 0 && !timerisset(&running.it_value))
        setitimer(ITIMER_REAL, &orderlyEndLimit, nullptr);
    errno = kept;
}

void setHandler(int number, void (*handler)(int)) {
    struct sigaction previous {};
    if (sigaction(number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN)
        return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

/// A native dialog of the desktop runs a loop that Qt cannot end; it ends when its dialog closes.
void cancelDialogs() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QDialog*>(window);
        if (dialog != nullptr && dialog->isVisible())
            dialog->done(QDialog::Rejected);
    }
}

} // namespace

QuitSignals::QuitSignals() {
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    QObject::connect(&repetition, &QTimer::timeout, &repetition, [this] { endLoops(); });
    notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] {
        notifier->setEnabled(false);
        repetition.start(repetitionPause);
        endLoops();
    });
    writeEnd = ends[1];
    setHandler(SIGALRM, onTimeUp);
    for (const int number : quitSignalNumbers)
        setHandler(number, onQuitSignal);
}

/// The handlers stay installed: a signal during shutdown must not change the exit status.
QuitSignals::~QuitSignals() {
    if (!notifier)
        return;
    writeEnd = -1;
    close(ends[0]);
    close(ends[1]);
}

void QuitSignals::endLoops() {
    // Repeated: the application's loop ignores an exit from before its start, and closing a dialog may open
    // another. Not quit(), which closes the open windows first, and one may refuse.
    if (rounds++ > 0)
        cancelDialogs();
    if (QThread::currentThread()->loopLevel() > 0)
        QCoreApplication::exit(0);
}

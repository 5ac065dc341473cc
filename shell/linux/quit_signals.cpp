#include "shell/linux/quit_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <cerrno>
#include <chrono>
#include <csignal>

namespace {

constexpr std::array quitSignalNumbers{SIGTERM, SIGINT, SIGHUP};
constexpr std::chrono::milliseconds retryPause{50};

volatile std::sig_atomic_t writeEnd = -1;

void onQuitSignal(int /*number*/) {
    const int kept = errno;
    const char byte = 1;
    // A full pipe has said it already.
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(writeEnd), &byte, 1);
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

} // namespace

QuitSignals::QuitSignals() {
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] {
        notifier->setEnabled(false);
        exitOrRetry();
    });
    writeEnd = ends[1];
    for (const int number : quitSignalNumbers)
        setHandler(number, onQuitSignal);
}

QuitSignals::~QuitSignals() {
    if (!notifier)
        return;
    for (const int number : quitSignalNumbers)
        setHandler(number, SIG_DFL);
    writeEnd = -1;
    close(ends[0]);
    close(ends[1]);
}

void QuitSignals::exitOrRetry() {
    // A warning of the engine may be dispatching events while no loop of Qt runs yet; an exit would be lost
    // there. A quit is no good here: it asks the open windows first, and one of them may refuse.
    if (QThread::currentThread()->loopLevel() > 0)
        QCoreApplication::exit(0);
    else
        QTimer::singleShot(retryPause, notifier.get(), [this] { exitOrRetry(); });
}

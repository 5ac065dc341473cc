#include "shell/process/linux/quit_signals.h"

#include "shell/process/program_end.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

constexpr std::array quitSignalNumbers{SIGTERM, SIGINT, SIGHUP};
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

} // namespace

void QuitSignals::exitUntilCreated() {
    for (const int number : quitSignalNumbers)
        setHandler(number, onTimeUp);
}

QuitSignals::QuitSignals(ProgramEnd& programEnd) {
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this, &programEnd] {
        notifier->setEnabled(false);
        programEnd.begin();
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

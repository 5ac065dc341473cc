#include "shell/process/program_end.h"

#include "shell/process/event_loop_support.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QThread>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds repetitionPause{50};

/// A native dialog of the desktop runs a loop that Qt cannot end; it ends when its dialog closes.
void cancelDialogs() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QDialog*>(window);
        if (dialog != nullptr && dialog->isVisible())
            dialog->done(QDialog::Rejected);
    }
}

} // namespace

ProgramEnd::ProgramEnd() {
    QCoreApplication::instance()->installEventFilter(this);
    connect(&repetition, &QTimer::timeout, this, &ProgramEnd::endLoops);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &ProgramEnd::performLastActs);
}

void ProgramEnd::begin() {
    if (repetition.isActive())
        return;
    repetition.start(repetitionPause);
    emit beginning();
    endLoops();
}

void ProgramEnd::setLastActs(std::function<void()> acts) {
    lastActs = std::move(acts);
}

void ProgramEnd::performLastActs() {
    if (const auto acts = std::exchange(lastActs, {}))
        acts();
}

bool ProgramEnd::eventFilter(QObject* watched, QEvent* event) {
    if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit)
        return QObject::eventFilter(watched, event);
    begin();
    return true;
}

void ProgramEnd::endLoops() {
    if (rounds++ > 0) {
        cancelDialogs();
        endNativeLoops();
    }
    // Not quit(), which closes the open windows first, and one may refuse.
    if (QThread::currentThread()->loopLevel() > 0)
        QCoreApplication::exit(0);
}

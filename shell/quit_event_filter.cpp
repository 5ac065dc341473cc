#include "shell/quit_event_filter.h"

#include <QCoreApplication>
#include <QEvent>

QuitEventFilter::QuitEventFilter(QObject* parent) : QObject(parent) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool QuitEventFilter::eventFilter(QObject* watched, QEvent* event) {
    if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit)
        return QObject::eventFilter(watched, event);
    QCoreApplication::exit(0);
    return true;
}

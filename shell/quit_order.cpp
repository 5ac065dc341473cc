#include "shell/quit_order.h"

#include <QCoreApplication>
#include <QEvent>

QuitOrder::QuitOrder(QObject* parent) : QObject(parent) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool QuitOrder::eventFilter(QObject* watched, QEvent* event) {
    if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit)
        return QObject::eventFilter(watched, event);
    QCoreApplication::exit(0);
    return true;
}

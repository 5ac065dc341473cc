#include "shell/base/message_boxes.h"

#include <QApplication>
#include <QFontMetrics>

QMessageBox* makeBox(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text,
                     QMessageBox::StandardButtons buttons) {
    auto* box = new QMessageBox(icon, title, text, buttons, parent);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    return box;
}

QString shortened(const QString& name) {
    constexpr int maxLetters = 200;
    const QString line = name.size() > maxLetters ? name.simplified() : name;
    return QFontMetrics(QApplication::font()).elidedText(line, Qt::ElideMiddle, 600, Qt::TextSingleLine);
}

#include "shell/message_boxes.h"

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
    constexpr int mostLetters = 200; // measuring a longer text would take too long
    const QString line = name.size() > mostLetters ? name.simplified() : name;
    return QFontMetrics(QApplication::font()).elidedText(line, Qt::ElideMiddle, 600, Qt::TextSingleLine);
}

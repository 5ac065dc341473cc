#pragma once

#include <QMessageBox>

/// A box in plain text, since names and paths may look like HTML. It deletes itself when it closes.
QMessageBox* makeBox(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text,
                     QMessageBox::StandardButtons buttons = QMessageBox::Ok);

/// A name of any length and with any characters, on one line that leaves a box narrower than the screen.
QString shortened(const QString& name);

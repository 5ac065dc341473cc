#pragma once

#include <QMessageBox>

/// A message box in plain text, because names and paths may contain HTML. Deletes itself on close.
QMessageBox* makeBox(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text,
                     QMessageBox::StandardButtons buttons = QMessageBox::Ok);

/// The name on one line, elided so that a message box with it is not wider than the screen.
QString shortened(const QString& name);

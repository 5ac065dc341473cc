#include "licence/licence_check.h"

#include <QCoreApplication>

LicenceResult LicenceCheck::check() {
    return {.go = true, .accountText = {}};
}

void LicenceCheck::logOut(QWidget* /*parent*/) {
    QCoreApplication::quit();
}

#include "shell/polish_translator.h"

#include <QCoreApplication>
#include <QTranslator>

void installPolishTranslator() {
    auto* catalogue = new QTranslator(QCoreApplication::instance());
    if (catalogue->load(QStringLiteral(":/texts/qtbase_pl.qm")))
        QCoreApplication::installTranslator(catalogue);
}

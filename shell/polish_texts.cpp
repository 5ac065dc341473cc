#include "shell/polish_texts.h"

#include <QCoreApplication>
#include <QTranslator>

void speakPolish() {
    auto* catalogue = new QTranslator(QCoreApplication::instance());
    if (catalogue->load(QStringLiteral(":/texts/qtbase_pl.qm")))
        QCoreApplication::installTranslator(catalogue);
}

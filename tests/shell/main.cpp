#include "shell/base/polish_translator.h"
#include "shell/process/update_library.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

QString updateLibraryName() {
    return "none";
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen"); // no screen needed
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    // Settings of the tests' own; on Windows they are in the registry of the tests' Wine prefix.
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    installPolishTranslator();
    return RUN_ALL_TESTS();
}

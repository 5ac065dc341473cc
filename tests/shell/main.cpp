#include "shell/polish_texts.h"
#include "shell/update_library.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

QString updateLibraryName() {
    return "none";
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen"); // the widgets need no screen
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    // Nobody's settings but the tests' own (on Windows the prefix is).
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    speakPolish();
    return RUN_ALL_TESTS();
}

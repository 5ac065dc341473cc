#include "shell/base/polish_translator.h"
#include "shell/process/update_library.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTemporaryFile>

QString updateLibraryName() {
    return "none";
}

int main(int argc, char** argv) {
    // No real screen is needed. The second one is as small as a display of 1366 x 768 scaled to 200 %.
    QTemporaryFile screens(
        "screens"); // in the working folder, because a path with a drive would end at its colon
    if (!screens.open())
        return 1;
    screens.write(R"({"screens":[{"name":"a","x":0,"y":0,"width":800,"height":800},
        {"name":"b","x":800,"y":0,"width":684,"height":384}]})");
    screens.close();
    qputenv("QT_QPA_PLATFORM",
            "offscreen:configfile=" + QDir::current().relativeFilePath(screens.fileName()).toUtf8());
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    // Settings of the tests' own; on Windows they are in the registry of the tests' Wine prefix.
    static const QTemporaryDir settings; // Qt writes custom colours at the end of the program
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    installPolishTranslator();
    return RUN_ALL_TESTS();
}

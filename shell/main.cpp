#include "common/single_instance.h"
#include "engine/core/overlay.h"
#include "licence/licence_check.h"
#include "shell/data_folder.h"
#include "shell/event_loop_support.h"
#include "shell/main_window.h"
#include "shell/polish_translator.h"
#include "shell/settings.h"
#include "shell/themes.h"
#include "shell/update_service.h"
#include "shell/voice_installer.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QMessageBox>

namespace {

QString savedTheme() {
    return uiSettings().value(themeKey, "fluent").toString();
}

/// Called on a thread of the update library: only posts an event.
void quitForUpdate() {
    QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
}

} // namespace

// The order matters: each step needs the ones before it.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Rotika");
    QCoreApplication::setApplicationName("Rotika");
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setWindowIcon(QIcon(QCoreApplication::applicationDirPath() + "/rotika.ico"));
    installPolishTranslator();
    // Before the dialogs below: a termination signal may arrive while one is open.
    const EventLoopSupport loopSupport;

    if (!claimSingleInstance()) {
        QMessageBox::information(
            nullptr, QStringLiteral("Rotika"),
            QCoreApplication::translate("main", "Rotika już działa — sprawdź ikonę w zasobniku systemowym."),
            QMessageBox::Ok, QMessageBox::NoButton);
        return 0;
    }

    applyTheme(savedTheme());
    QDir::setCurrent(dataFolder());
    prepareDataFolder();
    finishVoiceInstallation();

    LicenceCheck licence;
    const LicenceResult licenceResult = licence.check();
    if (!licenceResult.go)
        return 0;

    OverlayEngineStart();
    MainWindow window(licence, licenceResult);
    window.show();
    startUpdateService(quitForUpdate);
    const int status = QApplication::exec();
    stopUpdateService();
    OverlayEngineStop();
    return status;
}

#include "common/single_instance.h"
#include "engine/core/overlay.h"
#include "licence/licence_check.h"
#include "shell/base/accessibility.h"
#include "shell/base/data_folder.h"
#include "shell/base/polish_translator.h"
#include "shell/base/settings.h"
#include "shell/base/themes.h"
#include "shell/main_window.h"
#include "shell/process/command_line.h"
#include "shell/process/console.h"
#include "shell/process/control.h"
#include "shell/process/event_loop_support.h"
#include "shell/process/program_end.h"
#include "shell/process/update_service.h"
#include "shell/voice_install/voice_installer.h"
#include "shell/voice_install/voice_start.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QMessageBox>
#include <cstdio>
#include <functional>
#include <optional>

namespace {

// At the start of a session the desktop's panel may come up after the program.
constexpr int trayLimitMs = 10'000;

QString savedTheme() {
    return uiSettings().value(themeKey, "fluent").toString();
}

/// Called on a thread of the update library: only posts an event.
void quitForUpdate() {
    QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
}

void stopServices() {
    stopUpdateService();
    OverlayEngineStop();
}

/// The exit status if the program has nothing more to do, without a screen.
std::optional<int> runWithoutWindow(const CommandLine& line) {
    switch (line.launch) {
    case Launch::version:
        printText(QStringLiteral("Rotika " ROTIKA_VERSION), false);
        return 0;
    case Launch::help:
        printText(commandLineHelp(), false);
        return 0;
    case Launch::invalid:
        printText(line.fault, true);
        return 2;
    case Launch::quit:
        return quitRunningCopies() ? 0 : 1;
    default:
        return std::nullopt;
    }
}

int runAsSecondCopy(const CommandLine& line, std::function<void()> quit) {
    const bool isSender = line.launch == Launch::installVoice;
    if (isSender && sendToRunningCopy({installVoiceCommand.toString(), line.files}))
        return 0;
    const ControlListener control(false, std::move(quit)); // before the boxes
    if (isSender) {
        const QString fault =
            QStringLiteral("Rotika już działa, ale nie przyjmuje poleceń. Zakończ ją i spróbuj ponownie.");
        std::fputs(qUtf8Printable(fault + '\n'), stderr); // for a script
        QMessageBox::warning(nullptr, QStringLiteral("Rotika"), fault, QMessageBox::Ok,
                             QMessageBox::NoButton);
        return 1;
    }
    QMessageBox::information(
        nullptr, QStringLiteral("Rotika"),
        QCoreApplication::translate("main", "Rotika już działa — sprawdź ikonę w zasobniku systemowym."),
        QMessageBox::Ok, QMessageBox::NoButton);
    return 0;
}

void obey(const ControlCommand& command, MainWindow& window) {
    if (command.name == showCommand) {
        window.showAndActivate();
    } else if (command.name == installVoiceCommand) {
        window.showAndActivate(); // it may be hidden in the tray
        installVoice(command.arguments, &window);
    }
}

/// What the program was started for, and what other processes ask for from then on.
void serveCommands(ControlListener& control, const CommandLine& line, MainWindow& window) {
    const auto obeyCommand = [&window](const ControlCommand& command) { obey(command, window); };
    if (line.launch == Launch::installVoice)
        control.arrive({installVoiceCommand.toString(), line.files});
    // In the event loop, because a command may open a dialog.
    QMetaObject::invokeMethod(
        &window, [&control, obeyCommand] { control.deliverTo(obeyCommand); }, Qt::QueuedConnection);
}

} // namespace

// The order matters: each step needs the ones before it.
int main(int argc, char** argv) {
    const CommandLine line = parseCommandLine(programArguments(argc, argv));
    if (const std::optional<int> status = runWithoutWindow(line))
        return *status;
    exitOnTermination();
    dropHangingBus();

    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("Rotika");
    QCoreApplication::setApplicationName("Rotika");
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setWindowIcon(QIcon(QCoreApplication::applicationDirPath() + "/rotika.ico"));
    installPolishTranslator();
    installAccessibility();
    // Before the dialogs below: a termination signal may arrive while one is open.
    ProgramEnd programEnd;
    const EventLoopSupport loopSupport(programEnd);

    const auto quit = [&programEnd] { programEnd.begin(); };
    if (!claimSingleInstance())
        return runAsSecondCopy(line, quit);
    ControlListener control(true, quit); // before the dialogs as well

    applyTheme(savedTheme());
    QDir::setCurrent(dataFolder());
    finishVoiceInstallation();

    LicenceCheck licence;
    const LicenceResult licenceResult = licence.check();
    if (!licenceResult.go)
        return 0;

    OverlayEngineStart();
    programEnd.setLastActs(stopServices);
    const bool startsInTray = line.launch == Launch::minimized && waitForTray(trayLimitMs);
    MainWindow window(licence, licenceResult);
    QObject::connect(&programEnd, &ProgramEnd::beginning, &window, &MainWindow::keepUnsavedChanges);
    programEnd.setLastActs([&window] {
        window.keepUnsavedChanges(); // first: stopping the engine may take seconds
        stopServices();
    });
    // Without a tray there would be no way to the window.
    if (!startsInTray)
        window.show();
    serveCommands(control, line, window);
    startUpdateService(quitForUpdate);
    const int status = QApplication::exec();
    programEnd.performLastActs();
    return status;
}

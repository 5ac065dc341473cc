#include "common/single_instance.h"
#include "engine/core/overlay.h"
#include "licence/licence_check.h"
#include "shell/base/accessibility.h"
#include "shell/base/data_folder.h"
#include "shell/base/polish_translator.h"
#include "shell/base/settings.h"
#include "shell/base/themes.h"
#include "shell/commands.h"
#include "shell/main_window.h"
#include "shell/process/console.h"
#include "shell/process/control.h"
#include "shell/process/event_loop_support.h"
#include "shell/process/program_end.h"
#include "shell/process/update_service.h"
#include "shell/voice_install/voice_start.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <optional>

namespace {

// At the start of a session the desktop's panel may come up after the program.
constexpr int trayLimitMs = 10'000;
constexpr int shortTrayLimitMs = 1000; // for a command, whose user is waiting
constexpr std::chrono::seconds quitLimit{10};
// A copy that hangs ends when it goes on. If nothing waited for that, no copy would be left.
constexpr std::chrono::minutes restartLimit{5};

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
        return quitRunningCopies(quitLimit) ? 0 : 1;
    default:
        return std::nullopt;
    }
}

/// Claims the lock when it is called first.
bool isFirstCopy() {
    static const bool isClaimed = claimSingleInstance();
    return isClaimed;
}

/// As above, after the other copies have been found.
std::optional<int> runBesideOthers(CommandLine& line, char** argv) {
    if (line.isRestart && !quitRunningCopies(restartLimit))
        line.fault = QStringLiteral("Nie udało się zakończyć działającego programu.");
    if (line.isRestart)
        forgetRestart(argv);
    dropHangingBus();
    return line.launch == Launch::command ? sendCommand(line.command, isFirstCopy()) : std::nullopt;
}

bool findTray(const ControlListener& control, int limitMs) {
    return waitForTray(limitMs, [&control] { return !control.hasEarlyCommands(); });
}

/// What the program was started for, and what other processes ask for from then on.
void serveCommands(ControlListener& control, const CommandLine& line, MainWindow& window) {
    if (line.launch == Launch::command)
        control.arrive(line.command);
    // In the event loop, because a command may open a dialog.
    const auto obey = [&window](const ControlCommand& command) { obeyCommand(command, window); };
    QMetaObject::invokeMethod(
        &window, [&control, obey] { control.deliverTo(obey); }, Qt::QueuedConnection);
}

} // namespace

// The order matters: each step needs the ones before it.
int main(int argc, char** argv) {
    CommandLine line = parseCommandLine(programArguments(argc, argv));
    if (const std::optional<int> status = runWithoutWindow(line))
        return *status;
    exitOnTermination();
    if (const std::optional<int> status = runBesideOthers(line, argv))
        return *status;

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
    if (!isFirstCopy())
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
    const bool isMinimized = line.launch == Launch::minimized, isCommand = line.launch == Launch::command;
    // A restart follows a copy that had found the tray or was without one.
    const bool isSessionStart = isMinimized && !line.isRestart;
    const bool startsHidden = isMinimized || (isCommand && !opensWindow(line.command));
    const bool hasTray = startsHidden && findTray(control, isSessionStart ? trayLimitMs : shortTrayLimitMs);
    MainWindow window(licence, licenceResult);
    QObject::connect(&programEnd, &ProgramEnd::beginning, &window, &MainWindow::keepUnsavedChanges);
    programEnd.setLastActs([&window] {
        window.keepUnsavedChanges(); // first: stopping the engine may take seconds
        stopServices();
    });
    // Without a tray there would be no way to the window.
    if (!startsHidden || (isSessionStart && !hasTray && !control.hasEarlyCommands()))
        window.show();
    else if (!hasTray)
        showWithoutActivating(window);
    serveCommands(control, line, window);
    startUpdateService(quitForUpdate);
    const int status = QApplication::exec();
    programEnd.performLastActs();
    return status;
}

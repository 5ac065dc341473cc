#include "shell/commands.h"

#include "engine/core/overlay.h"
#include "shell/base/json_file.h"
#include "shell/main_window.h"
#include "shell/process/control.h"
#include "shell/process/window_activation.h"
#include "shell/toggle_key/toggle_key_dialog.h"
#include "shell/voice_install/voice_installer.h"
#include "shell/voice_switch.h"

#include <QApplication>
#include <QMessageBox>
#include <QWindow>
#include <cstdio>

namespace {

constexpr std::chrono::seconds sendLimit{8};
// The engine drops a press of the toggle key that is older, since the user no longer expects a reaction.
constexpr std::chrono::seconds wheelLimit{2};

QString notReceived() {
    return QStringLiteral("Rotika już działa, ale nie przyjmuje poleceń. Zakończ ją i spróbuj ponownie.");
}

/// The first copy's window comes up behind the box, which it must neither delay nor cover, and receives the
/// keyboard afterwards.
void showRunningCopy() {
    sendInBackground({raiseCommand.toString(), {}});
    QMessageBox box(
        QMessageBox::Information, QStringLiteral("Rotika"),
        QCoreApplication::translate("main", "Rotika już działa — sprawdź ikonę w zasobniku systemowym."),
        QMessageBox::Ok);
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    const bool isAnswered = box.exec() == QMessageBox::Ok;
    QGuiApplication::sync(); // the box has gone
    if (isAnswered)
        sendToRunningCopy({showCommand.toString(), {}}, wheelLimit);
}

/// Unlike the tray's entry, it leaves a maximized window as large as it is.
void bringToFront(MainWindow& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    if (window.isActiveWindow())
        return; // a request would move the focus away from a dialog that is about to open
    window.activateWindow();
    activateForUser(window);
}

int saveVoiceOff() {
    QString backup;
    const bool isSaved = writeVoiceEnabled(false, &backup);
    if (!backup.isEmpty())
        std::fputs(qUtf8Printable(configBackupText(backup) + '\n'), stderr);
    if (!isSaved)
        std::fputs("Nie udało się zapisać pliku config.json.\n", stderr);
    return isSaved ? 0 : 1;
}

} // namespace

bool opensWindow(const ControlCommand& command) {
    return command.name == showCommand || command.name == toggleKeyCommand ||
           command.name == installVoiceCommand;
}

void obeyCommand(const ControlCommand& command, MainWindow& window) {
    if (command.name == showCommand) {
        bringToFront(window);
    } else if (command.name == raiseCommand) {
        showWithoutActivating(window);
    } else if (command.name == toggleWheelCommand) {
        OverlayToggleWheel();
    } else if (command.name == toggleKeyCommand) {
        chooseToggleKey(window);
        if (const QWidget* dialog = QApplication::activeModalWidget())
            activateForUser(*dialog);
    } else if (command.name == installVoiceCommand) {
        bringToFront(window); // it may be hidden in the tray
        installVoice(command.arguments, &window);
    } else {
        switchVoice(command.name == voiceOnCommand);
    }
}

/// By the property that Qt::WA_ShowWithoutActivating sets on a window that is created later.
void showWithoutActivating(QWidget& window) {
    constexpr char property[] = "_q_showWithoutActivating";
    window.winId();
    window.windowHandle()->setProperty(property, true);
    window.setWindowState(window.windowState() & ~(Qt::WindowMinimized | Qt::WindowActive));
    window.show();
    window.raise();
    window.windowHandle()->setProperty(property, false);
}

std::optional<int> sendCommand(const ControlCommand& command, bool isFirstCopy) {
    if (isFirstCopy && command.name != voiceOffCommand)
        return std::nullopt;
    if (isFirstCopy)
        return saveVoiceOff();
    if (sendToRunningCopy(command, command.name == toggleWheelCommand ? wheelLimit : sendLimit))
        return 0;
    std::fputs(qUtf8Printable(notReceived() + '\n'), stderr);
    return opensWindow(command) ? std::nullopt : std::optional(1);
}

int runAsSecondCopy(const CommandLine& line, std::function<void()> quit) {
    const ControlListener control(false, std::move(quit)); // before the boxes
    const QString fault = line.launch == Launch::command ? notReceived() : line.fault;
    if (!fault.isEmpty()) {
        QMessageBox::warning(nullptr, QStringLiteral("Rotika"), fault, QMessageBox::Ok,
                             QMessageBox::NoButton);
        return 1;
    }
    if (!line.isRestart) // else another restart has been faster
        showRunningCopy();
    return 0;
}

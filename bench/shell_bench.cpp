// Latencies of the shell's window, measured in-process on a real X server.

#include "licence/licence_check.h"
#include "shell/base/settings.h"
#include "shell/base/themes.h"
#include "shell/main_window.h"
#include "shell/wheels/wheel_document.h"
#include "shell/wheels/wheel_editor_page.h"
#include "target_reporter.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTimerEvent>
#include <QTreeWidget>
#include <optional>

namespace {

QString fullFile;
std::optional<MainWindow> window;

/// Processes pending events: layout, style and painting.
void settle() {
    QApplication::sendPostedEvents();
    QApplication::processEvents();
}

WheelDocument fullDocument(const QString& path) {
    WheelDocument document;
    document.path = path;
    for (int i = 0; i < 24; ++i) {
        EditorWheel wheel{QStringLiteral("Koło %1").arg(i + 1), {}};
        for (int j = 0; j < 24; ++j) {
            EditorFunction function;
            function.name = QStringLiteral("Czynność %1").arg(j + 1);
            function.icon = QStringLiteral(ROTIKA_BENCH_ICON);
            function.steps.append(EditorStep{EditorStepKind::Click, "a", 1, {}});
            wheel.actions.append(function);
        }
        document.wheels.append(wheel);
    }
    return document;
}

WheelEditorPage& editor() {
    return *window->findChild<WheelEditorPage*>();
}

void showPage(int row) {
    window->findChild<QListWidget*>("Sidebar")->setCurrentRow(row);
    settle();
}

void switchPage(benchmark::State& state) {
    static int row = 0;
    for (auto _ : state)
        showPage(row = (row + 1) % 5);
    state.counters["target_ms"] = 16;
}

void switchTheme(benchmark::State& state) {
    static int theme = 0;
    showPage(0);
    for (auto _ : state) {
        applyTheme(themes()[++theme % 3].themeId);
        settle();
    }
    state.counters["target_ms"] = 120;
}

void open24WheelsOf24FieldsWithIcons(benchmark::State& state) {
    showPage(1);
    for (auto _ : state) {
        editor().loadFile(fullFile);
        settle();
    }
    state.counters["target_ms"] = 150;
}

void typeOneKeyInTheName(benchmark::State& state) {
    showPage(1);
    auto* name = editor().findChild<QLineEdit*>();
    name->setFocus();
    settle();
    for (auto _ : state) {
        QTest::keyClick(name, Qt::Key_A);
        settle();
    }
    state.counters["target_ms"] = 5;
}

void pollStatus(benchmark::State& state) {
    auto* poll = window->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    for (auto _ : state) {
        QTimerEvent tick(poll->timerId());
        QCoreApplication::sendEvent(poll, &tick);
    }
    state.counters["target_ms"] = 0.2;
}

BENCHMARK(switchPage)->Apply(asSingleRuns);
BENCHMARK(switchTheme)->Apply(asSingleRuns);
BENCHMARK(open24WheelsOf24FieldsWithIcons)->Apply(asSingleRuns);
BENCHMARK(typeOneKeyInTheName)->Apply(asSingleRuns);
BENCHMARK(pollStatus)->Apply(asSingleRuns);

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    fullFile = folder.filePath("pelny.json");
    if (!fullDocument(fullFile).save(nullptr))
        return 1;
    applyTheme("fluent");
    LicenceCheck licence;
    window.emplace(licence, licence.check());
    window->show();
    editor().loadFile(fullFile);
    settle();
    const int status = runAgainstTargets(argc, argv);
    window.reset();
    return status;
}

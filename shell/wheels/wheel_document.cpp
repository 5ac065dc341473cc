#include "shell/wheels/wheel_document.h"

#include "common/limits.h"
#include "shell/base/json_file.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>

namespace {

void report(QString* error, const QString& text) {
    if (error != nullptr)
        *error = text;
}

QString tokenOf(const QJsonValue& value) {
    return value.isDouble() ? QString::number(value.toInt(0)) : value.toString();
}

EditorStep openStep(const QJsonObject& object) {
    EditorStep step;
    step.kind = EditorStepKind::Open;
    step.open = object["open"].toString();
    return step;
}

EditorStep stepFromJson(const QJsonObject& object) {
    if (object.contains("open"))
        return openStep(object);
    EditorStep step;
    step.key = tokenOf(object["key"]);
    const QString word = object["action"].toString("click");
    if (word == QStringLiteral("hold") || word == QStringLiteral("przytrzymaj")) {
        step.kind = EditorStepKind::Hold;
        step.value = object["value"].toInt(0);
    } else if (word == QStringLiteral("release") || word == QStringLiteral("pusc") ||
               word == QStringLiteral("puść")) {
        step.kind = EditorStepKind::Release;
    } else if (object.contains("value")) {
        step.value = std::clamp(object["value"].toInt(1), 1, maxClickCount);
    }
    return step;
}

QList<EditorStep> stepsFromLegacyKeys(const QJsonValue& keys) {
    const QJsonArray values = keys.isArray() ? keys.toArray() : QJsonArray{keys};
    QList<EditorStep> steps;
    for (const QJsonValue& value : values) {
        const QString token = tokenOf(value);
        if (token.isEmpty())
            continue;
        EditorStep step;
        step.key = token;
        steps.append(step);
    }
    return steps;
}

QJsonObject stepToJson(const EditorStep& step) {
    switch (step.kind) {
    case EditorStepKind::Click:
        return {{"key", step.key}, {"action", "click"}, {"value", step.value}};
    case EditorStepKind::Hold:
        return {{"key", step.key}, {"action", "hold"}, {"value", step.value}};
    case EditorStepKind::Release:
        return {{"key", step.key}, {"action", "release"}};
    case EditorStepKind::Open:
        return {{"open", step.open}};
    }
    return {};
}

EditorWheel wheelFromJson(const QJsonObject& object) {
    EditorWheel wheel;
    wheel.name = object["name"].toString();
    for (const QJsonValue& action : object["actions"].toArray())
        wheel.actions.append(functionFromJson(action.toObject()));
    return wheel;
}

QJsonArray actionsToJson(const EditorWheel& wheel) {
    QJsonArray actions;
    for (const EditorFunction& function : wheel.actions)
        actions.append(functionToJson(function));
    return actions;
}

} // namespace

QJsonObject WheelDocument::root() const {
    if (!multiWheel)
        return {{"actions", wheels.isEmpty() ? QJsonArray() : actionsToJson(wheels.first())}};
    QJsonArray array;
    for (const EditorWheel& wheel : wheels)
        array.append(QJsonObject{{"name", wheel.name}, {"actions", actionsToJson(wheel)}});
    return {{"wheels", array}};
}

QByteArray WheelDocument::toJson() const {
    return QJsonDocument(root()).toJson();
}

bool WheelDocument::setRoot(const QJsonObject& root) {
    wheels.clear();
    multiWheel = root["wheels"].isArray();
    if (multiWheel) {
        for (const QJsonValue& wheel : root["wheels"].toArray())
            wheels.append(wheelFromJson(wheel.toObject()));
    } else if (root["actions"].isArray()) {
        wheels.append(wheelFromJson({{"actions", root["actions"]}}));
    } else {
        return false;
    }
    if (wheels.isEmpty())
        wheels.append({QStringLiteral("Koło 1"), {}});
    return true;
}

bool WheelDocument::load(const QString& filePath, QString* error) {
    const std::optional<QByteArray> bytes = readFile(filePath);
    if (!bytes) {
        report(error, QStringLiteral("Nie można otworzyć pliku %1").arg(filePath));
        return false;
    }
    QJsonParseError fault;
    const QJsonDocument json = QJsonDocument::fromJson(*bytes, &fault);
    if (json.isNull() || !json.isObject()) {
        report(error, QStringLiteral("Błąd JSON: %1").arg(fault.errorString()));
        return false;
    }
    path = filePath;
    lastKnownContent = *bytes;
    if (!setRoot(json.object())) {
        report(error, QStringLiteral("Plik nie zawiera \"wheels\" ani \"actions\""));
        return false;
    }
    return true;
}

bool WheelDocument::backUpForeignChange() {
    if (lastKnownContent.isNull())
        return true;
    const std::optional<QByteArray> found = readFile(path);
    if (!found)
        return !QFileInfo::exists(path);
    if (found->isEmpty() || *found == lastKnownContent)
        return true;
    backupPath = saveBackupCopy(path, *found);
    return !backupPath.isEmpty();
}

bool WheelDocument::save(QString* error) {
    backupPath.clear();
    const QByteArray bytes = toJson();
    if (backUpForeignChange() && replaceFile(path, bytes)) {
        lastKnownContent = bytes;
        return true;
    }
    report(error, QStringLiteral("Nie można zapisać pliku %1").arg(path));
    return false;
}

bool WheelDocument::saveAs(const QString& filePath, QString* error) {
    if (filePath != path)
        lastKnownContent.clear(); // the user has confirmed overwriting that file
    path = filePath;
    return save(error);
}

QDir WheelDocument::folder() const {
    return QFileInfo(path).dir();
}

EditorFunction functionFromJson(const QJsonObject& object) {
    EditorFunction function;
    function.name = object["name"].toString();
    function.voice = object["voice"].toString();
    function.icon = object["icon"].toString();
    if (object.contains("delay"))
        function.delay = object["delay"].toInt(defaultDelayMs);
    const QString color = object["color"].toString();
    if (!color.isEmpty())
        function.color = QColor(color);
    if (object["steps"].isArray()) {
        for (const QJsonValue& step : object["steps"].toArray())
            function.steps.append(stepFromJson(step.toObject()));
    } else {
        const QJsonValue keys = object.contains("keys") ? object["keys"] : object["key"];
        function.steps = stepsFromLegacyKeys(keys);
    }
    return function;
}

QJsonObject functionToJson(const EditorFunction& function) {
    QJsonObject object{{"name", function.name}};
    if (function.color.isValid())
        object["color"] = function.color.name().toUpper();
    if (function.delay != defaultDelayMs)
        object["delay"] = function.delay;
    if (!function.icon.isEmpty())
        object["icon"] = function.icon;
    if (!function.voice.isEmpty())
        object["voice"] = function.voice;
    QJsonArray steps;
    for (const EditorStep& step : function.steps)
        steps.append(stepToJson(step));
    object["steps"] = steps;
    return object;
}

QString describeStep(const EditorStep& step) {
    switch (step.kind) {
    case EditorStepKind::Click:
        return step.value < 2 ? QStringLiteral("klik:  %1").arg(step.key)
                              : QStringLiteral("klik ×%1:  %2").arg(QString::number(step.value), step.key);
    case EditorStepKind::Hold:
        return step.value < 1
                   ? QStringLiteral("przytrzymaj (bez puszczania):  %1").arg(step.key)
                   : QStringLiteral("przytrzymaj %1 ms:  %2").arg(QString::number(step.value), step.key);
    case EditorStepKind::Release:
        return QStringLiteral("puść:  %1").arg(step.key);
    case EditorStepKind::Open:
        return QStringLiteral("otwórz:  %1").arg(step.open);
    }
    return {};
}

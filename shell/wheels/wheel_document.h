#pragma once

#include "common/limits.h"

#include <QColor>
#include <QDir>
#include <QJsonObject>
#include <QList>
#include <QString>

// The shell's model of one wheel file. It accepts more than the engine: key names are not checked, and a file
// is rejected only if it is not JSON or has neither form. So the engine may drop steps that are saved here.
// Main thread.

/// The values are the rows of the step kind selector.
enum class EditorStepKind { Click = 0, Hold = 1, Release = 2, Open = 3 };

struct EditorStep {
    EditorStepKind kind = EditorStepKind::Click;
    QString key;   // as entered, not checked; empty for Open
    int value = 1; // Click: count; Hold: ms, 0 leaves the key down; otherwise unused
    QString open;  // address or program

    bool operator==(const EditorStep&) const = default;
};

struct EditorFunction {
    QString name;
    QString voice;
    QString icon;               // normally relative to the file's folder
    QColor color;               // invalid: the wheel's own colour
    int delay = defaultDelayMs; // ms between steps
    QList<EditorStep> steps;

    bool operator==(const EditorFunction&) const = default;
};

struct EditorWheel {
    QString name;
    QList<EditorFunction> actions;

    bool operator==(const EditorWheel&) const = default;
};

struct WheelDocument {
    QString path;
    bool multiWheel = true; // the "wheels" form; false for the short "actions" form
    QList<EditorWheel> wheels;
    QByteArray lastKnownContent; // at the last load or save; null if never loaded
    QString backupPath;          // see save()

    /// On failure returns false, sets `error`, if given, to a message for the user, and may have
    /// emptied the document: load into a temporary one. On success there is at least one wheel.
    bool load(const QString& filePath, QString* error);

    /// Rewrites the whole file: JSON members that the model does not have are lost. A failure leaves the old
    /// file unchanged. If another program has changed the file since it was loaded, that version is first
    /// saved beside it and `backupPath` set to its path, otherwise `backupPath` is empty.
    bool save(QString* error);

    /// Sets `path` even if saving fails.
    bool saveAs(const QString& filePath, QString* error);

    /// The content as JSON, and as bytes of the file.
    QJsonObject root() const;
    QByteArray toJson() const;

    /// Takes form and wheels; at least one wheel. False, and may have emptied the document, if `root` has
    /// neither form.
    bool setRoot(const QJsonObject& root);

    /// The folder of the file, which the icons' paths are relative to.
    QDir folder() const;

private:
    /// False if another program has changed the file and it could not be backed up.
    bool backUpForeignChange();
};

EditorFunction functionFromJson(const QJsonObject& object);
QJsonObject functionToJson(const EditorFunction& function);

/// The text of a step in the step list.
QString describeStep(const EditorStep& step);

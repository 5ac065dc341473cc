#pragma once

#include <QColor>
#include <QDir>
#include <QJsonObject>
#include <QList>
#include <QString>

// The shell's copy of one wheel file. An editor's reader: it keeps what the user wrote, checks no key, and
// refuses a file only when it is no JSON or has neither form, so what it saves may still lose steps in the
// engine. First thread.

/// The numbers are the rows of the step kind selector.
enum class EditorStepKind { Click = 0, Hold = 1, Release = 2, Open = 3 };

struct EditorStep {
    EditorStepKind kind = EditorStepKind::Click;
    QString key;   // as typed, not checked; empty for Open
    int value = 1; // Click: how often; Hold: ms, 0 leaves the key down; otherwise unused
    QString open;  // address or program

    bool operator==(const EditorStep&) const = default;
};

struct EditorFunction {
    QString name;
    QString voice;
    QString icon;   // as written, normally relative to the file's folder
    QColor color;   // invalid: the wheel's own colour
    int delay = 30; // ms between steps
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
    QByteArray onDisk; // what the file held when it was last read or written here; null if never
    QString keptCopy;  // see save()

    /// On false `error`, if given, holds a ready message, and the document may have been emptied: load into a
    /// temporary one. On true there is at least one wheel.
    bool load(const QString& filePath, QString* error);

    /// Rewrites the whole file from the model: what the records have no member for is gone. A failure leaves
    /// the old file whole. What another program has written there meanwhile is kept in a file beside it,
    /// whose path is then in `keptCopy`, otherwise empty.
    bool save(QString* error);

    /// The new path stays even if saving fails.
    bool saveAs(const QString& filePath, QString* error);

    /// The folder of the file, which the icons' paths are relative to.
    QDir folder() const;

private:
    /// False if the file holds what is not ours and could not be kept.
    bool keepWhatOthersWrote();
};

EditorFunction functionFromJson(const QJsonObject& object);
QJsonObject functionToJson(const EditorFunction& function);

/// One line of the step list.
QString describeStep(const EditorStep& step);

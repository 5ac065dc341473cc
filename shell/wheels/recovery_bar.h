#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
struct FoundRecovery;

/// Offers unsaved changes that were found. A bar of the window and no box: nobody has to answer, and the
/// engine and the rest of the window go on working. Main thread.
class RecoveryBar : public QWidget {
    Q_OBJECT

public:
    /// Hidden until there is something to offer.
    explicit RecoveryBar(QWidget* parent = nullptr);

    void offer(const FoundRecovery& found, const QString& wheelFile);

    /// The user has discarded the changes or has gone on editing; they are in the file `copy`, or still where
    /// they were if that is empty.
    void reportSetAside(const QString& copy);

signals:
    void restoreRequested();
    void discardRequested();

private:
    void showText(const QString& line);

    QLabel* text;
    QPushButton* restore;
    QPushButton* discard;
    QPushButton* dismiss;
};

// A window of 5,000 buttons, about 300 of which are visible.

#include <QApplication>
#include <QGridLayout>
#include <QPushButton>
#include <QScrollArea>

int main(int argc, char** argv) {
    constexpr int count = 5000;
    constexpr int columns = 14;
    const QApplication application(argc, argv);
    QScrollArea window;
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setSpacing(0);
    grid->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < count; ++i)
        grid->addWidget(new QPushButton(QString::number(i)), i / columns, i % columns);
    window.setWidget(page);
    window.setFrameShape(QFrame::NoFrame);
    window.setWindowTitle("Full Window");
    window.resize(1150, 700);
    window.show();
    return QApplication::exec();
}

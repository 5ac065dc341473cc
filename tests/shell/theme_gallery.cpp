// Shows the style sheets on every kind of widget. "theme_gallery FOLDER" writes pictures of all themes into
// the folder and ends; without a folder it opens a window for each theme's turn, chosen by its number key.

#include "sample_widgets.h"
#include "shell/themes.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QSlider>
#include <QSpinBox>
#include <QToolTip>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <array>

namespace {

QLabel* roleLabel(const QString& text, const char* role) {
    auto* label = new QLabel(text);
    label->setProperty("role", role);
    return label;
}

QFrame* card(std::initializer_list<QWidget*> content) {
    auto* frame = new QFrame;
    frame->setObjectName("Card");
    auto* column = new QVBoxLayout(frame);
    column->setContentsMargins(14, 12, 14, 12);
    column->setSpacing(8);
    for (QWidget* widget : content)
        column->addWidget(widget);
    return frame;
}

QWidget* makeForm() {
    auto* panel = new QWidget;
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(roleLabel("Fraza głosowa", "cardTitle"));
    auto* phrase = new QLineEdit;
    phrase->setPlaceholderText("np. leczenie");
    column->addWidget(phrase);
    auto* steps = new QListWidget;
    steps->ensurePolished();
    for (int i = 1; i < 20; ++i)
        steps->addItem(QString("klik ×%1:  ctrl").arg(i));
    steps->setCurrentRow(1);
    column->addWidget(steps, 1);
    auto* row = new QHBoxLayout;
    auto* kind = new QComboBox;
    kind->addItems({"klik", "przytrzymaj", "puść", "otwórz"});
    row->addWidget(kind);
    auto* key = new QComboBox;
    key->setEditable(true);
    key->addItems({"1", "space", "volumeup"});
    row->addWidget(key, 1);
    auto* value = new QSpinBox;
    value->setRange(0, 60000);
    row->addWidget(value);
    column->addLayout(row);
    auto* buttons = new QHBoxLayout;
    for (const char* text : {"Dodaj krok", "Zamień", "Usuń krok", "▲", "▼"}) {
        auto* button = new QPushButton(text);
        if (QString(text).size() == 1)
            button->setFixedWidth(36);
        buttons->addWidget(button);
    }
    column->addLayout(buttons);
    auto* colour = new QPushButton("#BA7517");
    colour->setStyleSheet("background:#BA7517; color:#FFF;");
    column->addWidget(colour);
    return panel;
}

QWidget* makeCards() {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(18, 18, 18, 18);
    column->setSpacing(10);
    column->addWidget(roleLabel("Ustawienia", "pageTitle"));
    column->addWidget(card({roleLabel("Tobii Eye Tracker", "cardTitle"), roleLabel("aktywny", "ok")}));
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 3000);
    slider->setValue(900);
    auto* enabled = new QCheckBox("Komendy głosowe włączone");
    enabled->setChecked(true);
    column->addWidget(card(
        {enabled, new QCheckBox("Frazy pól kół działają zawsze"), slider, roleLabel("900 ms", "value")}));
    auto* tree = new QTreeWidget;
    tree->ensurePolished();
    tree->setHeaderHidden(true);
    for (int wheel = 1; wheel < 4; ++wheel) {
        auto* item = new QTreeWidgetItem(tree, {QString("Koło %1").arg(wheel)});
        for (int function = 1; function < 6; ++function)
            new QTreeWidgetItem(item, {QString("Funkcja %1").arg(function)});
    }
    tree->topLevelItem(0)->setExpanded(true);
    tree->setCurrentItem(tree->topLevelItem(0));
    column->addWidget(tree, 1);
    auto* primary = new QPushButton("Pokaż koło (X)");
    primary->setObjectName("Primary");
    primary->setMinimumHeight(38);
    column->addWidget(primary);
    return page;
}

QMainWindow* makeWindow() {
    auto* window = new QMainWindow;
    window->setWindowTitle("theme_gallery");
    auto* central = new QWidget;
    auto* row = new QHBoxLayout(central);
    row->setContentsMargins(0, 0, 0, 0);
    auto* sidebar = new QListWidget;
    sidebar->setObjectName("Sidebar");
    sidebar->setFixedWidth(190);
    sidebar->ensurePolished();
    sidebar->addItems({"Start", "Koła wyboru", "Komendy głosowe", "Sterowanie wzrokiem", "Ustawienia"});
    sidebar->setCurrentRow(0);
    row->addWidget(sidebar);
    row->addWidget(makeCards(), 1);
    auto* right = new QVBoxLayout;
    right->setContentsMargins(0, 18, 18, 18);
    right->addWidget(makeForm());
    row->addLayout(right, 1);
    window->setCentralWidget(central);
    window->resize(960, 600);
    return window;
}

/// All kinds of widgets, a row each, in all states, a column each.
QPixmap paintStates() {
    constexpr std::array states{WidgetState::normal, WidgetState::hover, WidgetState::pressed,
                                WidgetState::focus, WidgetState::disabled};
    QDialog window;
    auto* column = new QVBoxLayout(&window);
    QList<QWidget*> widgets;
    for (const SampleWidget& sample : sampleWidgets()) {
        widgets.append(sample.make("Żółty żuraw"));
        column->addWidget(widgets.last(), 0, Qt::AlignLeft);
    }
    window.show();
    window.activateWindow();
    QApplication::processEvents();
    constexpr int columnWidth = 215;
    QPixmap sheet(columnWidth * int(states.size()), window.height());
    QPainter painter(&sheet);
    for (std::size_t i = 0; i < states.size(); ++i) {
        painter.drawPixmap(int(i) * columnWidth, 0, window.grab(QRect(0, 0, columnWidth, window.height())));
        for (QWidget* widget : widgets) {
            putInState(*widget, states[i]);
            const QPoint place = widget->pos() + QPoint(int(i) * columnWidth, 0);
            painter.drawPixmap(place, window.grab(widget->geometry()));
        }
    }
    return sheet;
}

void savePopups(const QString& prefix) {
    QMenu menu;
    menu.addAction("Pokaż koło");
    menu.addAction("Pokaż okno")->setCheckable(true);
    menu.actions().last()->setChecked(true);
    menu.addSeparator();
    menu.addAction("Zakończ")->setEnabled(false);
    menu.addMenu("Więcej")->addAction("Inne");
    menu.setActiveAction(menu.actions().first());
    menu.popup({0, 0});
    QApplication::processEvents();
    menu.grab().save(prefix + "-menu.png");
    menu.hide();
    QComboBox combo;
    combo.addItems({"klik", "przytrzymaj", "puść", "otwórz"});
    combo.show();
    combo.showPopup();
    QApplication::processEvents();
    combo.view()->window()->grab().save(prefix + "-combo.png");
    combo.hidePopup();
    combo.hide();
    QToolTip::showText({300, 300}, "Podpowiedź: żółty żuraw");
    QApplication::processEvents();
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->inherits("QTipLabel"))
            widget->grab().save(prefix + "-tip.png");
    QToolTip::hideText();
    QMessageBox box(QMessageBox::Question, "Edytor kół", "Usunąć koło \"Koło 1\" wraz z funkcjami?",
                    QMessageBox::Yes | QMessageBox::No);
    box.show();
    QApplication::processEvents();
    box.grab().save(prefix + "-box.png");
    box.hide();
    QColorDialog colours;
    colours.setOption(QColorDialog::DontUseNativeDialog);
    colours.show();
    QApplication::processEvents();
    colours.grab().save(prefix + "-colours.png");
    QFileDialog files;
    files.setOption(QFileDialog::DontUseNativeDialog);
    files.show();
    QApplication::processEvents();
    files.grab().save(prefix + "-files.png");
}

void savePictures(const QString& folder) {
    for (const ThemeInfo& theme : themes()) {
        applyTheme(theme.themeId);
        const QString prefix = folder + "/" + theme.themeId;
        const std::unique_ptr<QMainWindow> window(makeWindow());
        window->show();
        window->activateWindow();
        QApplication::processEvents();
        window->grab().save(prefix + "-window.png");
        paintStates().save(prefix + "-states.png");
        savePopups(prefix);
    }
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (argc > 1) {
        savePictures(QString::fromLocal8Bit(argv[1]));
        return 0;
    }
    const std::unique_ptr<QMainWindow> window(makeWindow());
    for (int i = 0; i < themes().size(); ++i) {
        const auto key = QKeySequence(QString::number(i + 1));
        QObject::connect(new QShortcut(key, window.get()), &QShortcut::activated, window.get(),
                         [i] { applyTheme(themes()[i].themeId); });
    }
    applyTheme(themes().first().themeId);
    window->show();
    return QApplication::exec();
}

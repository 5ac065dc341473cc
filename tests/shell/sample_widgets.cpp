#include "sample_widgets.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHoverEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QTreeWidget>

namespace {

std::function<QWidget*()> label(const char* role) {
    return [role] {
        auto* made = new QLabel("Żółty żuraw 123");
        made->setProperty("role", role);
        return made;
    };
}

std::function<QWidget*()> button(const char* objectName) {
    return [objectName] {
        auto* made = new QPushButton("Pokaż koło");
        made->setObjectName(objectName);
        return made;
    };
}

template <typename Button>
std::function<QWidget*()> twoStates(bool checked) {
    return [checked] {
        auto* made = new Button("Frazy pól kół");
        made->setChecked(checked);
        return made;
    };
}

QWidget* makeList(const char* objectName) {
    auto* list = new QListWidget;
    list->setObjectName(objectName);
    list->ensurePolished();
    list->addItems({"Start", "Koła wyboru", "Komendy głosowe", "Sterowanie wzrokiem", "Ustawienia"});
    list->setFixedSize(190, objectName[0] == '\0' ? 110 : 230);
    list->setCurrentRow(1);
    return list;
}

QWidget* makeTree() {
    auto* tree = new QTreeWidget;
    tree->ensurePolished();
    tree->setHeaderHidden(true);
    for (const char* wheel : {"Koło 1", "Koło 2"}) {
        auto* item = new QTreeWidgetItem(tree, {wheel});
        for (const char* function : {"Leczenie", "Kopiuj", "Wklej"})
            new QTreeWidgetItem(item, {function});
    }
    tree->topLevelItem(0)->setExpanded(true);
    tree->setFixedSize(190, 120);
    tree->setCurrentItem(tree->topLevelItem(0)->child(1));
    return tree;
}

QWidget* makeCombo(bool editable) {
    auto* combo = new QComboBox;
    combo->setEditable(editable);
    combo->addItems({"klik", "przytrzymaj", "puść", "otwórz"});
    return combo;
}

QWidget* makeSpin() {
    auto* spin = new QSpinBox;
    spin->setRange(0, 2000);
    spin->setValue(30);
    return spin;
}

QWidget* makeSlider() {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 3000);
    slider->setValue(900);
    slider->setFixedWidth(160);
    return slider;
}

QWidget* makeToolButton() {
    auto* made = new QToolButton;
    made->setText("Wstecz");
    return made;
}

} // namespace

const std::vector<SampleWidget>& sampleWidgets() {
    static const std::vector<SampleWidget> samples{
        {"pageTitle", label("pageTitle"), false},
        {"cardTitle", label("cardTitle"), false},
        {"value", label("value"), false},
        {"ok", label("ok"), false},
        {"plain label", label(""), false},
        {"button", button("")},
        {"primary", button("Primary")},
        {"tool button", makeToolButton},
        {"check box", twoStates<QCheckBox>(false)},
        {"checked box", twoStates<QCheckBox>(true)},
        {"radio", twoStates<QRadioButton>(false)},
        {"radio on", twoStates<QRadioButton>(true)},
        {"line edit", [] { return new QLineEdit("Żółty żuraw"); }},
        {"combo", [] { return makeCombo(false); }},
        {"editable combo", [] { return makeCombo(true); }},
        {"spin box", makeSpin},
        {"slider", makeSlider},
        {"list", [] { return makeList(""); }},
        {"tree", makeTree},
        {"sidebar", [] { return makeList("Sidebar"); }},
    };
    return samples;
}

void putInState(QWidget& widget, WidgetState state) {
    widget.clearFocus();
    widget.setEnabled(state != WidgetState::disabled);
    widget.setAttribute(Qt::WA_UnderMouse, state == WidgetState::hover);
    if (auto* pressable = qobject_cast<QAbstractButton*>(&widget))
        pressable->setDown(state == WidgetState::pressed);
    if (state == WidgetState::hover) {
        const QPointF middle(widget.width() / 2.0, widget.height() / 2.0);
        QHoverEvent enter(QEvent::HoverEnter, middle, middle, QPointF(-1, -1));
        QApplication::sendEvent(&widget, &enter);
        QMouseEvent move(QEvent::MouseMove, middle, widget.mapToGlobal(middle), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(&widget, &move);
    }
    if (state == WidgetState::focus)
        widget.setFocus(Qt::TabFocusReason);
    widget.update();
    QApplication::processEvents();
}

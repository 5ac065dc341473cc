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

using MakeWidget = std::function<QWidget*(const QString&)>;

MakeWidget label(const char* role) {
    return [role](const QString& text) {
        auto* made = new QLabel(text);
        made->setProperty("role", role);
        return made;
    };
}

MakeWidget button(const char* objectName) {
    return [objectName](const QString& text) {
        auto* made = new QPushButton(text);
        made->setObjectName(objectName);
        return made;
    };
}

template <typename Button>
MakeWidget twoStates(bool checked) {
    return [checked](const QString& text) {
        auto* made = new Button(text);
        made->setChecked(checked);
        return made;
    };
}

QWidget* makeList(const char* objectName, const QString& text) {
    auto* list = new QListWidget;
    list->setObjectName(objectName);
    list->ensurePolished();
    list->addItems({text, text, text, text, text});
    list->setFixedSize(190, objectName[0] == '\0' ? 110 : 230);
    list->setCurrentRow(1);
    return list;
}

QWidget* makeTree(const QString& text) {
    auto* tree = new QTreeWidget;
    tree->ensurePolished();
    tree->setHeaderHidden(true);
    for (int wheel = 0; wheel < 2; ++wheel) {
        auto* item = new QTreeWidgetItem(tree, {text});
        for (int function = 0; function < 3; ++function)
            new QTreeWidgetItem(item, {text});
    }
    tree->topLevelItem(0)->setExpanded(true);
    tree->setFixedSize(190, 120);
    tree->setCurrentItem(tree->topLevelItem(0)->child(1));
    return tree;
}

QWidget* makeCombo(bool editable, const QString& text) {
    auto* combo = new QComboBox;
    combo->setEditable(editable);
    combo->addItems({text, text, text});
    return combo;
}

QWidget* makeSpin(const QString& text) {
    auto* spin = new QSpinBox;
    spin->setRange(0, 2000);
    spin->setPrefix(text);
    spin->setValue(30);
    return spin;
}

QWidget* makeSlider(const QString& /*text*/) {
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(0, 3000);
    slider->setValue(900);
    slider->setFixedWidth(160);
    return slider;
}

QWidget* makeToolButton(const QString& text) {
    auto* made = new QToolButton;
    made->setText(text);
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
        {"line edit", [](const QString& text) { return new QLineEdit(text); }},
        {"combo", [](const QString& text) { return makeCombo(false, text); }},
        {"editable combo", [](const QString& text) { return makeCombo(true, text); }},
        {"spin box", makeSpin},
        {"slider", makeSlider},
        {"list", [](const QString& text) { return makeList("", text); }},
        {"tree", makeTree},
        {"sidebar", [](const QString& text) { return makeList("Sidebar", text); }},
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

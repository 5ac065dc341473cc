#include "shell/wheels/color_dialog.h"

#include "shell/base/window_size.h"

#include <QBoxLayout>
#include <QColorDialog>
#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <algorithm>

namespace {

struct NamedColor {
    const char16_t* name;
    QRgb value;
};

// On all of them the button's text, black or white by their lightness, has a contrast of 4.5 : 1 or more.
constexpr NamedColor namedColors[] = {
    {u"czerwony", 0xC62828},     {u"ciemnoczerwony", 0x8E1B1B}, {u"różowy", 0xD81B60},
    {u"pomarańczowy", 0xFF8F26}, {u"bursztynowy", 0xFFB51F},    {u"żółty", 0xFDD835},
    {u"limonkowy", 0xC6D54A},    {u"oliwkowy", 0x827717},       {u"jasnozielony", 0x8BCB5A},
    {u"zielony", 0x2E7D32},      {u"ciemnozielony", 0x1B5E20},  {u"morski", 0x00695C},
    {u"turkusowy", 0x00838F},    {u"błękitny", 0x4FC3F7},       {u"niebieski", 0x1565C0},
    {u"granatowy", 0x1A237E},    {u"fioletowy", 0x7B1FA2},      {u"liliowy", 0xB39DDB},
    {u"brązowy", 0x6D4C41},      {u"beżowy", 0xD7CCC8},         {u"biały", 0xFFFFFF},
    {u"jasnoszary", 0xBDBDBD},   {u"szary", 0x757575},          {u"ciemnoszary", 0x424242},
    {u"czarny", 0x000000},
};

QIcon swatch(const QColor& color) {
    QPixmap picture(24, 24);
    picture.fill(color);
    QPainter painter(&picture);
    painter.setPen(QColor(0x80, 0x80, 0x80)); // visible on light and on dark backgrounds
    painter.drawRect(picture.rect().adjusted(0, 0, -1, -1));
    QIcon icon(picture);
    icon.addPixmap(picture, QIcon::Selected); // or a selected row would tint it
    return icon;
}

QColor colorOf(const QListWidgetItem& item) {
    return item.data(Qt::UserRole).value<QColor>();
}

void addColor(QListWidget& list, const QString& name, const QColor& color, const QColor& start) {
    auto* item = new QListWidgetItem(swatch(color), name, &list);
    item->setData(Qt::UserRole, color);
    if (color == start)
        list.setCurrentItem(item);
}

bool hasColor(const QListWidget& list, const QColor& color) {
    for (int row = 0; row < list.count(); ++row) {
        if (colorOf(*list.item(row)) == color)
            return true;
    }
    return false;
}

/// The colours with names, and those that are kept in Qt's custom slots. The start colour is current, so that
/// Enter keeps it.
QListWidget* makeColorList(const QColor& start) {
    auto* list = new QListWidget;
    list->setAccessibleName(QCoreApplication::translate("ColorDialog", "Kolory"));
    list->ensurePolished(); // or rows keep the height of unstyled text
    const auto addNumber = [&](const QColor& color) {
        if (!hasColor(*list, color))
            addColor(*list, color.name().toUpper(), color, start);
    };
    const bool hasName =
        std::any_of(std::begin(namedColors), std::end(namedColors),
                    [&start](const NamedColor& color) { return QColor(color.value) == start; });
    if (!hasName)
        addNumber(start);
    for (const NamedColor& color : namedColors)
        addColor(*list, QString::fromUtf16(color.name), QColor(color.value), start);
    for (int slot = 0; slot < QColorDialog::customCount(); ++slot)
        addNumber(QColorDialog::customColor(slot)); // white, which has a name, in an empty slot
    return list;
}

constexpr int scrollBarWidth = 24;

int borderOf(const QListWidget& list) {
    return 2 * list.frameWidth() + 8;
}

/// At most three columns in the room; it scrolls if not all rows fit. A name that is too long is elided.
void arrangeCells(QListWidget& list, const QSize& widest, const QSize& room) {
    const int border = borderOf(list);
    const int width = room.width() - border - scrollBarWidth;
    const QSize cell = widest.boundedTo({std::max(width, 1), room.height()});
    const int columns = std::clamp(width / cell.width(), 1, 3);
    const int height = (list.count() + columns - 1) / columns * cell.height() + border;
    list.setFlow(QListView::LeftToRight);
    list.setWrapping(true);
    list.setGridSize(cell);
    for (int row = 0; row < list.count(); ++row)
        list.item(row)->setSizeHint(cell); // all of the cell takes presses
    list.setFixedWidth(columns * cell.width() + border + (room.height() < height ? scrollBarWidth : 0));
    list.setMinimumHeight(std::min(height, room.height()));
}

/// Hides what the list replaces. Returns the first well, after which the list is in the Tab order.
QWidget* hideWells(QColorDialog& dialog) {
    QWidget* first = nullptr;
    for (QLabel* label : dialog.findChildren<QLabel*>()) {
        QWidget* well = label->buddy();
        if (well == nullptr || !well->inherits("QWellArray"))
            continue;
        first = first == nullptr ? well : first;
        well->hide();
        label->hide();
    }
    return first;
}

QPushButton* findButton(const QColorDialog& dialog, const char* text) {
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    const auto found = std::find_if(buttons.begin(), buttons.end(), [text](const QPushButton* button) {
        return button->text() == QColorDialog::tr(text);
    });
    return found == buttons.end() ? nullptr : *found;
}

/// For the mouse alone: the list and the numbers do the same.
void hidePickers(QColorDialog& dialog) {
    for (QWidget* part : dialog.findChildren<QWidget*>()) {
        if (part->inherits("QColorPicker") || part->inherits("QColorLuminancePicker"))
            part->hide();
    }
    if (QPushButton* fromScreen = findButton(dialog, "&Pick Screen Color"))
        fromScreen->hide();
}

/// Red, green and blue take the places of hue, saturation and brightness, which do the same.
void hideHue(const QColorDialog& dialog) {
    const auto* hue = dialog.findChild<QSpinBox*>();
    auto* fields = hue == nullptr ? nullptr : qobject_cast<QGridLayout*>(hue->parentWidget()->layout());
    for (int cell = 0; fields != nullptr && cell < 6; ++cell) {
        const int row = cell / 2;
        const int column = 1 + cell % 2;
        const QLayoutItem* left = fields->itemAtPosition(row, column);
        const QLayoutItem* right = fields->itemAtPosition(row, column + 2);
        if (left == nullptr || right == nullptr)
            return;
        QWidget* moved = right->widget();
        left->widget()->hide();
        fields->removeWidget(moved);
        fields->addWidget(moved, row, column);
        moved->parentWidget()->updateGeometry();
    }
    if (fields == nullptr)
        return;
    for (auto* number : fields->parentWidget()->findChildren<QLineEdit*>(Qt::FindDirectChildrenOnly))
        number->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // no wider than the fields above
}

/// The size of what is visible now: layouts within the dialog's own keep what they have measured before.
QSize measure(const QColorDialog& dialog) {
    dialog.layout()->invalidate();
    dialog.layout()->activate();
    return dialog.sizeHint();
}

/// Leaves out what has the same effect as something else, so that the buttons are on the screen. The list, in
/// `column`, becomes as high as what is beside it.
void fitToScreen(QColorDialog& dialog, QListWidget& list, const QLayout& column) {
    const QSize most = maximumWindowSize(dialog);
    const QSize cell(list.sizeHintForColumn(0) + 8, list.sizeHintForRow(0));
    const int leastHeight = 3 * cell.height();
    arrangeCells(list, cell, {cell.width() + borderOf(list) + scrollBarWidth, leastHeight});
    if (measure(dialog).width() > most.width())
        hideHue(dialog);
    const QSize whole = measure(dialog);
    if (whole.width() > most.width() || whole.height() > most.height())
        hidePickers(dialog);
    const int width = most.width() - measure(dialog).width() + list.width();
    const int rest = column.sizeHint().height() - list.minimumHeight();
    const int height = dialog.layout()->itemAt(0)->sizeHint().height() - rest;
    arrangeCells(list, cell, {width, std::max(leastHeight, height)});
}

/// Both show the colour in force: the list has a selected row only while the fields beside it have its
/// colour.
void connectList(QColorDialog& dialog, QListWidget& list) {
    const auto choose = [&dialog, &list] {
        if (!list.selectedItems().isEmpty())
            dialog.setCurrentColor(colorOf(*list.currentItem()));
    };
    QObject::connect(&list, &QListWidget::itemSelectionChanged, &dialog, choose);
    QObject::connect(&dialog, &QColorDialog::currentColorChanged, &list, [&list](const QColor& color) {
        if (colorOf(*list.currentItem()).rgb() != color.rgb())
            list.clearSelection();
    });
}

void addColorList(QColorDialog& dialog, const QColor& start) {
    auto* parts = qobject_cast<QBoxLayout*>(dialog.layout()->itemAt(0)->layout());
    if (parts == nullptr)
        return;
    QWidget* well = hideWells(dialog); // which Qt leaves out on very small screens
    if (QPushButton* addCustom = findButton(dialog, "&Add to Custom Colors"))
        addCustom->hide();
    QListWidget* list = makeColorList(start);
    list->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    auto* label = new QLabel(QCoreApplication::translate("ColorDialog", "Ko&lory"));
    label->setBuddy(list);
    auto* column = new QVBoxLayout;
    column->addWidget(label);
    column->addWidget(list, 1);
    if (QPushButton* fromScreen = findButton(dialog, "&Pick Screen Color"))
        column->addWidget(fromScreen);
    parts->insertLayout(0, column);
    fitToScreen(dialog, *list, *column);
    if (well != nullptr)
        QWidget::setTabOrder(well, list);
    connectList(dialog, *list);
    list->setFocus();
}

} // namespace

QColor askColor(QWidget* parent, const QString& title, const QColor& start) {
    QColorDialog dialog(parent);
    dialog.setOption(QColorDialog::DontUseNativeDialog); // which would not show the list
    dialog.setWindowTitle(title);
    dialog.setCurrentColor(start);
    addColorList(dialog, start);
    dialog.exec();
    return dialog.selectedColor();
}

// The style sheets on the real pages: what a person can read, see under the mouse and follow with Tab.

#include "fake_overlay.h"
#include "shell/main_window.h"
#include "shell/settings.h"
#include "shell/themes.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QHoverEvent>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <cmath>
#include <map>

namespace {

// Of the Web Content Accessibility Guidelines, level AA: text against its ground, and a mark of state against
// what was there before.
constexpr double textContrast = 4.5;
constexpr double markContrast = 3.0;

/// Full blocks: all but the edges of the text has the text's colour.
const QString blocks = QStringLiteral("█ █ █ █ █ █ █ █");

enum class WidgetState { normal, hover, pressed, focus };

double luminance(QRgb colour) {
    const auto channel = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(qRed(colour)) + 0.7152 * channel(qGreen(colour)) +
           0.0722 * channel(qBlue(colour));
}

double contrast(QRgb one, QRgb other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// Contrast of the two colours that cover most of the picture; 0 when the second covers next to nothing.
double contrastOfTwo(const QImage& picture) {
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    std::vector<std::pair<int, QRgb>> ranked;
    for (const auto& [colour, count] : counts)
        ranked.emplace_back(count, colour);
    std::sort(ranked.rbegin(), ranked.rend());
    const int enough = picture.width() * picture.height() / 100;
    return ranked.size() < 2 || ranked[1].first < enough ? 0 : contrast(ranked[0].second, ranked[1].second);
}

bool isPartOfControl(const QWidget& widget) {
    return qobject_cast<QAbstractSpinBox*>(widget.parentWidget()) != nullptr ||
           qobject_cast<QComboBox*>(widget.parentWidget()) != nullptr;
}

/// Puts the blocks where the widget shows text, and tells that place within it; empty if it shows none.
QRect fillWithBlocks(QWidget& widget) {
    QRect place = widget.rect();
    if (auto* label = qobject_cast<QLabel*>(&widget); label != nullptr && !label->text().isEmpty()) {
        label->setText(blocks);
    } else if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        button->setText(blocks);
        if (qobject_cast<QCheckBox*>(&widget) != nullptr || qobject_cast<QRadioButton*>(&widget) != nullptr)
            place.setLeft(28); // past the indicator
    } else if (auto* edit = qobject_cast<QLineEdit*>(&widget)) {
        edit->setText(blocks);
    } else if (auto* combo = qobject_cast<QComboBox*>(&widget)) {
        combo->setItemText(combo->currentIndex(), blocks);
    } else if (auto* spin = qobject_cast<QSpinBox*>(&widget)) {
        spin->setPrefix(blocks);
    } else if (auto* list = qobject_cast<QListWidget*>(&widget)) {
        list->item(0)->setText(blocks);
        list->setCurrentRow(0);
        place = list->visualItemRect(list->item(0)).translated(list->viewport()->pos());
    } else if (auto* tree = qobject_cast<QTreeWidget*>(&widget)) {
        tree->currentItem()->setText(0, blocks);
        place = tree->visualItemRect(tree->currentItem()).translated(tree->viewport()->pos());
    } else {
        return {};
    }
    return place.adjusted(4, 4, -4, -4);
}

void putInState(QWidget& widget, WidgetState state) {
    widget.clearFocus();
    widget.setAttribute(Qt::WA_UnderMouse, state == WidgetState::hover);
    if (auto* pressable = qobject_cast<QAbstractButton*>(&widget))
        pressable->setDown(state == WidgetState::pressed);
    if (state == WidgetState::hover) {
        const QPointF middle(widget.width() / 2.0, widget.height() / 2.0);
        QHoverEvent enter(QEvent::HoverEnter, middle, middle, QPointF(-1, -1));
        QApplication::sendEvent(&widget, &enter);
    }
    if (state == WidgetState::focus)
        widget.setFocus(Qt::TabFocusReason);
    widget.update();
    QApplication::processEvents();
}

const QRegularExpression comments("/\\*.*?\\*/", QRegularExpression::DotMatchesEverythingOption);

QString readSheet(const QString& id) {
    QFile file(QApplication::applicationDirPath() + "/themes/" + id + ".qss");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).remove(comments);
}

QStringList selectors(const QString& sheet) {
    QStringList found;
    for (const QString& rule : sheet.split('}', Qt::SkipEmptyParts))
        for (const QString& selector : rule.section('{', 0, 0).split(',', Qt::SkipEmptyParts))
            if (!selector.trimmed().isEmpty())
                found.append(selector.trimmed());
    return found;
}

class Sheets : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        fakeOverlay = FakeOverlay();
        applyTheme(GetParam());
        QFile file(folder.filePath("kola.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"({"actions":[{"name":"a","key":"a"}]})");
        file.close();
        uiSettings().setValue(lastWheelFileKey, file.fileName());
        window = std::make_unique<MainWindow>(licence, LicenceResult{.go = true, .accountText = "konto"});
        uiSettings().clear();
        sidebar = window->findChild<QListWidget*>("Sidebar");
        window->resize(1600, 900); // room for every page with the blocks in it
        window->show();
        window->activateWindow();
        QApplication::processEvents();
    }

    /// The page list and all that is to be seen of each page, the page in front.
    void forEachWidget(const std::function<void(QWidget&)>& look) {
        look(*sidebar);
        const auto* stack = window->findChild<QStackedWidget*>();
        for (int row = 0; row < stack->count(); ++row) {
            sidebar->setCurrentRow(row);
            QApplication::processEvents();
            for (auto* list : stack->currentWidget()->findChildren<QListWidget*>())
                list->addItem("a");
            for (QWidget* widget : stack->currentWidget()->findChildren<QWidget*>())
                if (widget->isVisible() && !isPartOfControl(*widget))
                    look(*widget);
        }
    }

    QImage picture(const QWidget& widget, const QRect& place) const {
        return window->grab(place.translated(widget.mapTo(window.get(), QPoint(0, 0)))).toImage();
    }

    QTemporaryDir folder;
    LicenceCheck licence;
    std::unique_ptr<MainWindow> window;
    QListWidget* sidebar = nullptr;
};

TEST(Themes, FallBackToTheFirstForAnyOtherId) {
    for (const char* id : {"Neon", "neon ", "", "classic"})
        EXPECT_EQ(&themeInfo(id), &themes().first()) << id;
}

TEST_P(Sheets, StyleTheSameInEveryTheme) {
    EXPECT_EQ(qApp->styleSheet().remove(comments), readSheet(GetParam()));
    EXPECT_EQ(selectors(readSheet(GetParam())), selectors(readSheet("fluent")));
}

TEST_P(Sheets, ShowOnlyPicturesThatAreThere) {
    auto matches = QRegularExpression(R"(url\(([^)]*)\))").globalMatch(readSheet(GetParam()));
    int pictures = 0;
    for (; matches.hasNext(); ++pictures) {
        const QString path = matches.next().captured(1);
        EXPECT_FALSE(QImage(path).isNull()) << path.toStdString();
        EXPECT_TRUE(path.startsWith(QString(":/%1/").arg(GetParam()))) << path.toStdString();
    }
    EXPECT_GT(pictures, 0);
}

TEST_P(Sheets, KeepTextReadableInEveryState) {
    int texts = 0;
    forEachWidget([&](QWidget& widget) {
        const QRect place = fillWithBlocks(widget);
        QApplication::processEvents();
        if (place.isEmpty())
            return;
        ++texts;
        for (const WidgetState state : {WidgetState::normal, WidgetState::hover, WidgetState::pressed}) {
            putInState(widget, state);
            EXPECT_GE(contrastOfTwo(picture(widget, place)), textContrast)
                << widget.metaObject()->className() << ' ' << widget.accessibleName().toStdString()
                << ", state " << int(state);
        }
        putInState(widget, WidgetState::normal);
    });
    EXPECT_GT(texts, 50);
}

TEST_P(Sheets, KeepMenusReadable) {
    QMenu menu;
    QAction* action = menu.addAction(blocks);
    menu.popup({0, 0});
    QApplication::processEvents();
    for (QAction* active : {static_cast<QAction*>(nullptr), action}) {
        menu.setActiveAction(active);
        const QRect place = menu.actionGeometry(action).adjusted(4, 4, -4, -4);
        EXPECT_GE(contrastOfTwo(menu.grab(place).toImage()), textContrast);
    }
}

TEST_P(Sheets, MarkTheKeyboardFocus) {
    forEachWidget([&](QWidget& widget) {
        if ((widget.focusPolicy() & Qt::TabFocus) == 0 || !widget.isEnabled())
            return;
        putInState(widget, WidgetState::normal);
        const QImage without = picture(widget, widget.rect());
        putInState(widget, WidgetState::focus);
        const QImage with = picture(widget, widget.rect());
        int marked = 0;
        for (int y = 0; y < with.height(); ++y)
            for (int x = 0; x < with.width(); ++x)
                marked += contrast(with.pixel(x, y), without.pixel(x, y)) >= markContrast ? 1 : 0;
        constexpr int smallestMark = 100; // pixels: the outline of a small button
        EXPECT_GE(marked, std::min(widget.width(), smallestMark))
            << widget.metaObject()->className() << ' ' << widget.accessibleName().toStdString();
    });
}

TEST_P(Sheets, ShowEveryRowOfASelectorAndTheArrowOfASelectedWheel) {
    sidebar->setCurrentRow(1);
    for (auto* combo : window->findChildren<QComboBox*>()) {
        combo->showPopup();
        QApplication::processEvents();
        const QAbstractItemView& list = *combo->view();
        const QModelIndex lastInView = list.model()->index(std::min(combo->count(), 10) - 1, 0);
        EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(lastInView)));
        EXPECT_EQ(list.window()->findChildren<QWidget*>("", Qt::FindDirectChildrenOnly).size(), 1)
            << "strips";
        combo->hidePopup();
    }
    auto* tree = window->findChild<QTreeWidget*>();
    QTreeWidgetItem* wheel = tree->topLevelItem(0);
    tree->setCurrentItem(wheel);
    tree->setFocus();
    QApplication::processEvents();
    const QRect text = tree->visualItemRect(wheel);
    const QRect arrow = QRect(0, text.top(), text.left(), text.height()).adjusted(6, 6, -6, -6);
    EXPECT_GE(contrastOfTwo(picture(*tree, arrow.translated(tree->viewport()->pos()))), markContrast);
}

INSTANTIATE_TEST_SUITE_P(All, Sheets, testing::Values("fluent", "neon", "pro"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace

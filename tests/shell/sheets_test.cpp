// The style sheets on the real pages: contrast of texts in every state, and visibility of the keyboard focus.

#include "shell/base/settings.h"
#include "shell/base/themes.h"
#include "shell/main_window.h"
#include "shell/wheels/color_dialog.h"
#include "shell/wheels/icon_picker_dialog.h"
#include "shell/wheels/titled_preview.h"
#include "shell/wheels/wheel_editor_page.h"
#include "test_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace {

// WCAG level AA: text against its background, and a state indicator against the pixels before.
constexpr double textContrast = 4.5;
constexpr double markContrast = 3.0;

/// Full blocks, of which all but the edges are painted in the text's colour.
const QString blocks = QStringLiteral("█ █ █ █ █ █ █ █");

enum class WidgetState { normal, hover, pressed, focus };

double contrast(QRgb one, QRgb other) {
    const auto channel = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](QRgb colour) {
        return 0.2126 * channel(qRed(colour)) + 0.7152 * channel(qGreen(colour)) +
               0.0722 * channel(qBlue(colour));
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// Contrast of the two most frequent colours; 0 if the second covers less than 1 %.
double contrastOfTwo(const QImage& picture) {
    std::map<QRgb, int> counts{{0, 0}, {1, 0}};
    for (int at = 0; at < picture.width() * picture.height(); ++at)
        ++counts[picture.pixel(at % picture.width(), at / picture.width())];
    std::vector<std::pair<QRgb, int>> most(counts.begin(), counts.end());
    std::sort(most.begin(), most.end(), [](auto one, auto other) { return one.second > other.second; });
    return most[1].second * 100 < picture.width() * picture.height() ? 0
                                                                     : contrast(most[0].first, most[1].first);
}

/// Replaces the widget's text by blocks. Returns the rectangle of the text in the widget, empty without text.
QRect fillWithBlocks(QWidget& widget) {
    QRect place = widget.rect();
    if (auto* view = qobject_cast<QAbstractItemView*>(&widget)) {
        const QModelIndex row =
            view->currentIndex().isValid() ? view->currentIndex() : view->model()->index(0, 0);
        view->model()->setData(row, blocks);
        view->setCurrentIndex(row);
        place = view->visualRect(row).translated(view->viewport()->pos());
    } else if (auto* combo = qobject_cast<QComboBox*>(&widget)) {
        combo->setItemText(combo->currentIndex(), blocks);
    } else if (auto* spin = qobject_cast<QSpinBox*>(&widget)) {
        spin->setPrefix(blocks);
    } else if (qobject_cast<QLineEdit*>(&widget) == nullptr && widget.property("text").toString().isEmpty()) {
        return {};
    } else {
        widget.setProperty("text", blocks);
    }
    if (widget.inherits("QCheckBox") || widget.inherits("QRadioButton"))
        place.setLeft(28); // past the indicator
    return place.adjusted(4, 4, -4, -4);
}

void putInState(QWidget& widget, WidgetState state) {
    widget.clearFocus();
    widget.setAttribute(Qt::WA_UnderMouse, state == WidgetState::hover);
    if (auto* pressable = qobject_cast<QAbstractButton*>(&widget))
        pressable->setDown(state == WidgetState::pressed);
    QHoverEvent enter(QEvent::HoverEnter, QPointF(widget.rect().center()), QPointF(), QPointF(-1, -1));
    if (state == WidgetState::hover)
        QApplication::sendEvent(&widget, &enter);
    if (state == WidgetState::focus)
        widget.setFocus(Qt::TabFocusReason);
    widget.update();
    QApplication::processEvents();
}

class Sheets : public testing::TestWithParam<ThemeInfo> {
protected:
    Sheets() {
        applyTheme(GetParam().themeId);
        writeFile(folder.filePath("kola.json"), R"({"actions":[{"name":"a","key":"a"}]})");
        uiSettings().setValue(lastWheelFileKey, folder.filePath("kola.json"));
        window = std::make_unique<MainWindow>(licence, LicenceResult{.go = true, .accountText = "konto"});
        uiSettings().clear();
        for (QTimer* poll : window->findChildren<QTimer*>())
            poll->stop();          // it would replace the blocks by other texts
        window->resize(1600, 900); // large enough for every page with blocks
        window->show();
        window->activateWindow();
        QApplication::processEvents();
    }

    /// Calls `look` for the page list and for every visible widget of each page while it is the current one.
    void forEachWidget(const std::function<void(QWidget&)>& look) {
        auto* pages = window->findChild<QListWidget*>("Sidebar");
        const auto* stack = window->findChild<QStackedWidget*>();
        look(*pages);
        for (int row = 0; row < stack->count(); ++row) {
            pages->setCurrentRow(row);
            QApplication::processEvents();
            for (auto* list : stack->currentWidget()->findChildren<QListWidget*>())
                list->addItem("a");
            for (QWidget* widget : stack->currentWidget()->findChildren<QWidget*>()) {
                SCOPED_TRACE(widget->metaObject()->className() + widget->accessibleName().toStdString());
                const QObject* whole = widget->parent();
                if (widget->isVisible() && !whole->inherits("QAbstractSpinBox") &&
                    !whole->inherits("QComboBox"))
                    look(*widget);
            }
        }
    }

    QImage pictureOf(const QWidget& widget, const QRect& place) const {
        return window->grab(place.translated(widget.mapTo(window.get(), QPoint(0, 0)))).toImage();
    }

    QTemporaryDir folder;
    LicenceCheck licence;
    std::unique_ptr<MainWindow> window;
};

TEST_P(Sheets, KeepTextReadableInEveryStateAndMarkTheKeyboardFocus) {
    int texts = 0;
    forEachWidget([&](QWidget& widget) {
        const QRect place = fillWithBlocks(widget);
        texts += place.isEmpty() ? 0 : 1;
        for (const auto state : {WidgetState::hover, WidgetState::pressed, WidgetState::normal}) {
            putInState(widget, state);
            EXPECT_TRUE(place.isEmpty() || contrastOfTwo(pictureOf(widget, place)) >= textContrast)
                << int(state);
        }
        if (auto* edit = qobject_cast<QLineEdit*>(&widget); edit && !edit->placeholderText().isEmpty()) {
            edit->clear();
            edit->setPlaceholderText(blocks);
            EXPECT_GE(contrastOfTwo(pictureOf(widget, place)), textContrast);
        }
        if ((widget.focusPolicy() & Qt::TabFocus) == 0 || !widget.isEnabled())
            return;
        const QImage without = pictureOf(widget, widget.rect());
        putInState(widget, WidgetState::focus);
        const QImage with = pictureOf(widget, widget.rect());
        int marked = 0;
        for (int at = 0; at < with.width() * with.height(); ++at) {
            const QRgb now = with.pixel(at % with.width(), at / with.width());
            const QRgb before = without.pixel(at % with.width(), at / with.width());
            marked += now != before && contrast(now, before) >= markContrast ? 1 : 0;
        }
        EXPECT_GE(marked, std::min(widget.width(), 100)); // pixels; a small button's outline has 100
    });
    EXPECT_GT(texts, 50);
    QProgressBar bar(window.get());
    bar.setFormat(blocks);
    bar.show();
    for (const int value : {0, 100}) {
        bar.setValue(value);
        EXPECT_GE(contrastOfTwo(pictureOf(bar, bar.rect())), textContrast) << value;
    }
}

/// What can be pressed in the widget, by hand or by gaze.
std::vector<QRect> targetsIn(QWidget& widget) {
    if (auto* header = qobject_cast<QHeaderView*>(&widget))
        return {QRect(0, 0, header->sectionSize(0), header->height())};
    if (auto* view = qobject_cast<QAbstractItemView*>(&widget)) {
        const QModelIndex first = view->model()->index(0, 0, view->rootIndex());
        return first.isValid() ? std::vector{view->visualRect(first)} : std::vector<QRect>();
    }
    std::vector<QRect> targets{QAccessible::queryAccessibleInterface(&widget)->rect()};
    if (auto* combo = qobject_cast<QComboBox*>(&widget))
        targets.push_back({0, 0, combo->width(), combo->view()->sizeHintForRow(0)});
    QStyleOptionSpinBox spin;
    spin.initFrom(&widget);
    for (const auto part : {QStyle::SC_SpinBoxUp, QStyle::SC_SpinBoxDown})
        if (widget.inherits("QAbstractSpinBox"))
            targets.push_back(widget.style()->subControlRect(QStyle::CC_SpinBox, &spin, part, &widget));
    QStyleOptionSlider slider;
    slider.initFrom(&widget);
    slider.state |= QStyle::State_Horizontal;
    for (const auto part : {QStyle::SC_SliderHandle, QStyle::SC_SliderGroove})
        if (widget.inherits("QSlider"))
            targets.push_back(widget.style()->subControlRect(QStyle::CC_Slider, &slider, part, &widget));
    return targets;
}

void expectLargeTargets(QWidget& widget) {
    SCOPED_TRACE(widget.window()->windowTitle().toStdString() + ' ' + widget.metaObject()->className() + ' ' +
                 widget.accessibleName().toStdString());
    const bool isPart =
        widget.parent()->inherits("QAbstractSpinBox") || widget.parent()->inherits("QComboBox");
    const bool takesPresses = (widget.focusPolicy() & Qt::TabFocus) != 0 ||
                              widget.inherits("QAbstractButton") || widget.inherits("QHeaderView");
    if (!widget.isVisible() || isPart || !takesPresses)
        return;
    // The row of a step's fields has a given height.
    const int least = widget.parent()->parent()->inherits("QStackedWidget") ? 34 : 36;
    for (const QRect& target : targetsIn(widget)) {
        EXPECT_GE(target.height(), least);
        EXPECT_GE(target.width(), 36);
    }
}

void expectLargeTargetsIn(const QDialog& dialog) {
    QApplication::processEvents();
    for (QWidget* widget : dialog.findChildren<QWidget*>())
        expectLargeTargets(*widget);
}

TEST_P(Sheets, MakeTargetsLargeEnoughForAHandOrAnEyeOnPagesAndInDialogs) {
    forEachWidget(expectLargeTargets);
    QFileDialog files(window.get());
    QInputDialog name(window.get());
    IconPickerDialog icons({}, window.get());
    QMessageBox box(QMessageBox::Question, "?", "?", QMessageBox::Yes | QMessageBox::No, window.get());
    for (QDialog* dialog : std::initializer_list<QDialog*>{&files, &name, &icons, &box}) {
        dialog->show();
        expectLargeTargetsIn(*dialog);
        dialog->hide();
    }
}

TEST_P(Sheets, PutThePreviewBelowTheFormOnANarrowScreen) { // of 800 px
    window->findChild<QListWidget*>("Sidebar")->setCurrentRow(1);
    QApplication::processEvents();
    const auto* page = window->findChild<WheelEditorPage*>();
    const auto* tree = page->findChild<QTreeWidget*>();
    EXPECT_GT(page->findChild<TitledPreview*>()->y(), tree->mapTo(page, tree->rect().bottomLeft()).y());
}

TEST_P(Sheets, KeepALargeFontReadableInASmallWindow) {
    const QFont font = QApplication::font();
    QApplication::setFont(QFont(font.family(), 30));
    applyTheme(GetParam().themeId);
    window->findChild<QListWidget*>("Sidebar")->setCurrentRow(1);
    window->resize(600, 300);
    QApplication::processEvents();
    for (const QWidget* widget : window->findChild<WheelEditorPage*>()->findChildren<QWidget*>()) {
        const bool hasText =
            widget->inherits("QPushButton") || widget->inherits("QLineEdit") || widget->inherits("QComboBox");
        EXPECT_TRUE(!hasText || widget->height() >= widget->fontMetrics().height())
            << widget->metaObject()->className();
    }
    window->findChild<QListWidget*>("Sidebar")->setCurrentRow(2);
    auto* box = window->findChild<QStackedWidget*>()->currentWidget()->findChild<QCheckBox*>();
    box->setFocus();
    QApplication::processEvents();
    EXPECT_EQ(box->visibleRegion().boundingRect().left(), 0); // its text begins there
    QApplication::setFont(font);
}

TEST_P(Sheets, NameColoursThatKeysChooseInTheColourDialog) {
    const QColor start(1, 2, 3);
    const QFont font = QApplication::font();
    QColorDialog::setCustomColor(9, qRgb(4, 5, 6));
    const auto answer = [&](std::initializer_list<int> keys) {
        QTimer::singleShot(0, [keys] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            expectLargeTargetsIn(*dialog);
            const QSize most = dialog->screen()->availableSize();
            EXPECT_TRUE(most.boundedTo(dialog->frameSize()) == dialog->frameSize())
                << dialog->width() << ' ' << dialog->height();
            for (const int key : keys) {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
                QApplication::sendEvent(dialog->focusWidget(), &press);
            }
        });
        return askColor(window.get(), "Kolor pola", start);
    };
    for (const int screen : {0, 1}) {
        window->setGeometry(QGuiApplication::screens()[screen]->geometry());
        EXPECT_EQ(answer({Qt::Key_Return}), start);
        EXPECT_EQ(answer({Qt::Key_Right, Qt::Key_Return}), QColor(0xC62828)); // "czerwony"
        EXPECT_EQ(answer({Qt::Key_End, Qt::Key_Return}), QColor(4, 5, 6));
        EXPECT_EQ(answer({Qt::Key_Escape}), QColor());
        QApplication::setFont(QFont(font.family(), 20));
        EXPECT_EQ(answer({Qt::Key_Escape}), QColor());
        QApplication::setFont(font);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Sheets, testing::ValuesIn(themes()),
                         [](const auto& theme) { return theme.param.themeId.toStdString(); });

} // namespace

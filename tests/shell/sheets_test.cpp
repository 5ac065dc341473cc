#include "sample_widgets.h"
#include "shell/themes.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <cmath>
#include <map>

namespace {

// Of the Web Content Accessibility Guidelines, level AA: text against its ground, and a mark of state against
// what was there before.
constexpr double textContrast = 4.5;
constexpr double markContrast = 3.0;

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
    QRgb first = 0;
    QRgb second = 0;
    int most = 0;
    int next = 0;
    for (const auto& [colour, count] : counts) {
        if (count > most) {
            second = std::exchange(first, colour);
            next = std::exchange(most, count);
        } else if (count > next) {
            second = colour;
            next = count;
        }
    }
    const int enough = picture.width() * picture.height() / 50;
    return next < enough ? 0 : contrast(first, second);
}

/// Where the widget shows its text; for a list that is the current row.
QRect textPlace(QWidget* widget) {
    QRect place = widget->rect();
    if (auto* list = qobject_cast<QListWidget*>(widget))
        place = list->visualItemRect(list->currentItem()).translated(list->viewport()->pos());
    else if (auto* tree = qobject_cast<QTreeWidget*>(widget))
        place = tree->visualItemRect(tree->currentItem()).translated(tree->viewport()->pos());
    else if (qobject_cast<QCheckBox*>(widget) != nullptr || qobject_cast<QRadioButton*>(widget) != nullptr)
        place.setLeft(28); // past the indicator
    return place.adjusted(4, 4, -4, -4).translated(widget->mapTo(widget->window(), QPoint(0, 0)));
}

QString readSheet(const QString& id) {
    QFile file(QApplication::applicationDirPath() + "/themes/" + id + ".qss");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll())
        .remove(QRegularExpression("/\\*.*?\\*/", QRegularExpression::DotMatchesEverythingOption));
}

QStringList selectors(const QString& sheet) {
    QStringList found;
    for (const QString& rule : sheet.split('}', Qt::SkipEmptyParts))
        for (const QString& selector : rule.section('{', 0, 0).split(',', Qt::SkipEmptyParts))
            if (!selector.trimmed().isEmpty())
                found.append(selector.trimmed());
    return found;
}

QStringList warnings;

void keepWarning(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    // The screenless platform says this of every window.
    if (!message.startsWith("This plugin does not support"))
        warnings.append(message);
}

class Sheets : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        warnings.clear();
        previous = qInstallMessageHandler(keepWarning);
        applyTheme(GetParam());
    }

    void TearDown() override {
        qInstallMessageHandler(previous);
        EXPECT_EQ(warnings.join("\n").toStdString(), "");
    }

    /// The widget in a visible, active window; on a card if so told.
    std::unique_ptr<QWidget> show(QWidget* widget, bool onCard = false) {
        auto window = std::make_unique<QDialog>();
        auto* column = new QVBoxLayout(window.get());
        auto* ground = new QFrame;
        ground->setObjectName(onCard ? "Card" : "");
        column->addWidget(ground);
        (new QVBoxLayout(ground))->addWidget(widget, 0, Qt::AlignLeft);
        window->show();
        window->activateWindow();
        QApplication::processEvents();
        return window;
    }

private:
    QtMessageHandler previous = nullptr;
};

TEST_P(Sheets, SelectOnNoHookThatTheShellDoesNotSet) {
    const QSet<QString> hooks{
        "#Sidebar",          "#Card",         "#Primary", R"([role="pageTitle"])", R"([role="cardTitle"])",
        R"([role="value"])", R"([role="ok"])"};
    const QRegularExpression hook(R"(#\w+|\[[^\]]*\]|(?<![\w:])\.\w+)");
    QSet<QString> used;
    for (const QString& selector : selectors(readSheet(GetParam()))) {
        auto matches = hook.globalMatch(selector);
        while (matches.hasNext())
            used.insert(matches.next().captured());
    }
    EXPECT_EQ(used, hooks);
}

TEST_P(Sheets, StyleTheSameThingsInEveryTheme) {
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

TEST_P(Sheets, FitTheColoursOfTheirRow) {
    const ThemeInfo& row = themeInfo(GetParam());
    const QString sheet = readSheet(GetParam());
    for (const QColor& colour : {row.ringColor, row.hubColor, row.spareColor, row.textColor})
        EXPECT_TRUE(sheet.contains(colour.name(), Qt::CaseInsensitive)) << colour.name().toStdString();
}

TEST_P(Sheets, KeepTextReadableInEveryState) {
    for (const SampleWidget& sample : sampleWidgets()) {
        if (sample.name == "slider")
            continue; // shows no text
        for (const bool onCard : {false, true}) {
            // Full blocks: all but the edges of the text has the text's colour.
            QWidget* widget = sample.make("█ █ █ █ █");
            const auto window = show(widget, onCard);
            for (const WidgetState state : {WidgetState::normal, WidgetState::hover, WidgetState::pressed}) {
                putInState(*widget, state);
                EXPECT_GE(contrastOfTwo(window->grab(textPlace(widget)).toImage()), textContrast)
                    << sample.name << ", state " << int(state) << (onCard ? " on a card" : "");
            }
        }
    }
}

TEST_P(Sheets, KeepMenusReadable) {
    QMenu menu;
    QAction* action = menu.addAction("█ █ █ █ █");
    menu.popup({0, 0});
    QApplication::processEvents();
    for (QAction* active : {static_cast<QAction*>(nullptr), action}) {
        menu.setActiveAction(active);
        const QRect place = menu.actionGeometry(action).adjusted(4, 4, -4, -4);
        EXPECT_GE(contrastOfTwo(menu.grab(place).toImage()), textContrast);
    }
}

TEST_P(Sheets, MarkTheKeyboardFocus) {
    for (const SampleWidget& sample : sampleWidgets()) {
        if (!sample.interactive)
            continue;
        QWidget* widget = sample.make("tekst");
        const auto window = show(widget);
        putInState(*widget, WidgetState::normal);
        const QRect place(widget->mapTo(window.get(), QPoint(0, 0)), widget->size());
        const QImage without = window->grab(place).toImage();
        putInState(*widget, WidgetState::focus);
        const QImage with = window->grab(place).toImage();
        int marked = 0;
        for (int y = 0; y < with.height(); ++y)
            for (int x = 0; x < with.width(); ++x)
                marked += contrast(with.pixel(x, y), without.pixel(x, y)) >= markContrast ? 1 : 0;
        EXPECT_GE(marked, widget->width()) << sample.name;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Sheets, testing::Values("fluent", "neon", "pro"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace

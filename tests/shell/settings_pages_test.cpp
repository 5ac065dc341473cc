#include "fake_overlay.h"
#include "shell/gaze_page.h"
#include "shell/themes.h"
#include "shell/voice_page.h"
#include "shell/wheel_preview.h"
#include "wait_until.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QSlider>

namespace {

class SettingsPagesTest : public testing::Test {
protected:
    void SetUp() override {
        fakeOverlay = FakeOverlay();
        write("config.json", R"({"toggleKey":"F9","voiceGlobal":false,"gazeDwell":5000})");
        write("voice.json", R"({"actions":[{"name":"Okno","voice":"przełącz okno"},{"name":"nieme"}]})");
    }
    void TearDown() override {
        QFile::remove(beside("config.json"));
        QFile::remove(beside("voice.json"));
    }

    static QString beside(const QString& name) { return QCoreApplication::applicationDirPath() + "/" + name; }
    static void write(const QString& name, const QByteArray& text) {
        QFile file(beside(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    static QJsonObject config() {
        QFile file(beside("config.json"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object();
    }
    static QString status(const QWidget& page) {
        for (const QLabel* label : page.findChildren<QLabel*>())
            if (label->property("role") == "ok")
                return label->text();
        return {};
    }
};

TEST_F(SettingsPagesTest, TheVoicePageFollowsTheEngineAndTheFile) {
    QString opened;
    const VoicePage page([&](const QString& path) { opened = path; });
    const auto* list = page.findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), "„przełącz okno” — Okno");
    EXPECT_EQ(status(page), "ładowanie modelu… · 7 fraz");
    fakeOverlay.voiceStatus = L"aktywny";
    write("voice.json", R"({"actions":[{"voice":"a"},{"voice":"b"}]})");
    EXPECT_TRUE(waitUntil([&] { return status(page) == "aktywny · 7 fraz"; }));
    EXPECT_TRUE(waitUntil([&] { return list->count() == 2; }));
    write("voice.json", "{");
    page.findChild<QPushButton*>()->click();
    EXPECT_EQ(opened, beside("voice.json"));
}

TEST_F(SettingsPagesTest, ABoxTakesEffectInTheEngineAndTheStatusFollowsWithinOnePoll) {
    // The engine reads the file, as it stands at that moment.
    fakeOverlay.onReload = [] {
        fakeOverlay.voiceStatus = config()["voiceEnabled"].toBool() ? L"aktywny" : L"wyłączony";
        fakeOverlay.gazeStatus = config()["gazeEnabled"].toBool() ? L"aktywny" : L"wyłączony";
    };
    VoicePage voice({});
    GazePage gaze;
    EXPECT_FALSE(voice.findChildren<QCheckBox*>()[1]->isChecked());
    EXPECT_EQ(fakeOverlay.reloads, 0);
    for (const char* word : {"wyłączony", "aktywny"}) {
        voice.findChild<QCheckBox*>()->click();
        gaze.findChild<QCheckBox*>()->click();
        constexpr int pollMs = 1500;
        constexpr int slackMs = 500; // a timer may be late on a busy machine
        EXPECT_TRUE(
            waitUntil([&] { return status(voice) == QString(word) + " · 7 fraz" && status(gaze) == word; },
                      pollMs + slackMs))
            << status(voice).toStdString() << ", " << status(gaze).toStdString();
    }
    EXPECT_EQ(config()["toggleKey"], "F9") << "keys of other pages stay";
}

/// Kept beside it: what Qt's reader refuses. Taken over: what the engine reads all the same.
TEST_F(SettingsPagesTest, ABoxLosesNothingOfAFileThatQtCannotRead) {
    const struct {
        QByteArray text;
        QByteArray kept; // of the settings, beside the two of the page
    } cases[] = {
        {R"({"toggleKey":"F9",})", "{}"},
        {"{\"toggleKey\":\"F9", "{}"},
        {"[1]", "{}"},
        {R"({"sendDelay":+5,"keyHold":007,"x":[-.5,1.,1e,--5,1-2,1e999,true]})",
         R"({"sendDelay":5,"keyHold":7,"x":[-0.5,1,1,0,1,1e300,true]})"},
        {"{\"voiceModel\":\"a\tb\\u12G4\",\"toggleKey\":\"\\\"\\n\\u0107\"}",
         R"({"voiceModel":"a\tb\u0012","toggleKey":"\"\nć"})"},
    };
    const QString copy = beside("config-kopia-1.json");
    for (const auto& each : cases) {
        write("config.json", each.text);
        VoicePage page({});
        for (int click = 0; click < 2; ++click)
            page.findChild<QCheckBox*>()->click();
        QJsonObject expected = QJsonDocument::fromJson(each.kept).object();
        expected["voiceEnabled"] = true;
        expected["voiceGlobal"] = true;
        EXPECT_EQ(config(), expected) << each.text.toStdString();
        QFile file(copy);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), each.text);
        EXPECT_FALSE(QFile::exists(beside("config-kopia-2.json")));
        file.remove();
    }
}

TEST_F(SettingsPagesTest, TheDwellIsReadAsTheEngineReadsItAndZeroMeansAClick) {
    for (const auto& [text, shown] :
         {std::pair{"1250.7", 1250}, {"-4", 0}, {"1e12", 3000}, {"\"5\"", 900}, {"", 900}}) {
        write("config.json", QByteArray(R"({"gazeDwell":)") + text + "}");
        const GazePage page;
        auto* slider = page.findChild<QSlider*>();
        EXPECT_EQ(slider->value(), shown) << text;
        slider->setSliderDown(true);
        slider->setValue(0);
        const auto labels = page.findChildren<QLabel*>();
        EXPECT_TRUE(std::any_of(labels.begin(), labels.end(),
                                [](const QLabel* label) { return label->text() == "tylko kliknięcie"; }));
    }
}

class WheelPreviewTest : public testing::Test {
protected:
    void SetUp() override { applyTheme("pro"); }

    /// Colour at an angle from twelve o'clock and a share of the wheel's radius.
    static QColor at(WheelPreview& preview, double degrees, double share) {
        preview.resize(240, 240);
        const QImage picture = preview.grab().toImage();
        const double angle = (degrees - 90) * 3.14159265 / 180;
        return picture.pixelColor(qRound(120 + std::cos(angle) * 114 * share),
                                  qRound(120 + std::sin(angle) * 114 * share));
    }
    static QColor lit() { return themeInfo("pro").highlightColor; }
    static QColor field() { return themeInfo("pro").fieldColor; }
};

TEST_F(WheelPreviewTest, LightsTheRightField) {
    WheelPreview preview;
    EXPECT_EQ(at(preview, 67, 0.9), lit()); // the second of eight, as decoration
    EXPECT_EQ(at(preview, 22, 0.9), field());
    EXPECT_EQ(at(preview, 22, 0.1), themeInfo("pro").hubColor);

    preview.setLabels({"a", "b", "c", "d"});
    preview.setHighlight(3);
    EXPECT_EQ(at(preview, 315, 0.9), lit());
    EXPECT_EQ(at(preview, 135, 0.9), field());
    preview.setHighlight(99);
    EXPECT_EQ(at(preview, 315, 0.9), field());

    preview.setLabels({}); // one field, and the one to light would be the second
    EXPECT_EQ(at(preview, 100, 0.9), field());

    // The number of fields is held to what a wheel can have.
    for (const int count : {0, -3, 1}) {
        preview.setSegments(count);
        EXPECT_EQ(at(preview, 20, 0.9), field()) << count;
    }
    for (const int count : {24, 100}) {
        preview.setSegments(count);
        EXPECT_EQ(at(preview, 22.5, 0.9), lit()) << count;
        EXPECT_EQ(at(preview, 37.5, 0.9), field()) << count;
    }
}

} // namespace

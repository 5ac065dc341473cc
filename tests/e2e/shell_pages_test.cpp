#include "scenario.h"
#include "shell_user.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

constexpr PixelColor fluentPrimary{0x18, 0x5F, 0xA5};

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

class ShellPages : public Scenario {
protected:
    std::string fileText(const std::string& name) { return contentOf(stage().folder() / name); }

    void waitForFile(const std::string& name, const std::string& text) {
        holdsWithin(generousLimit, [&] { return fileText(name) == text; });
        EXPECT_EQ(fileText(name), text);
    }

    /// The program with its window in front.
    void start() {
        stage().startProgram();
        user.waitUntilInFront();
    }

    void openInEditor(const std::string& name) {
        user.goTo(Page::wheels);
        user.press(WheelControl::open);
        user.waitForDialog("Otwórz plik kół");
        user.type(stage().target->pathText(stage().folder() / name));
        user.key("Return");
    }

    /// Opens a file that can be read.
    void edit(const std::string& name) {
        openInEditor(name);
        user.waitUntilInFront();
    }

    void answerBox(const std::string& keysymName = "Return") {
        user.waitForDialog("Edytor kół");
        keepPicture("box-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
        user.key(keysymName);
        user.waitUntilInFront();
    }

    /// `kind` is a row of the selector. Ends on "Dodaj krok".
    void addStep(int kind, const std::string& what, const std::string& value = "") {
        user.goTo(WheelControl::stepKind);
        user.key("Home");
        user.key("Down", kind);
        user.tab();
        user.typeOver(what);
        if (!value.empty()) {
            user.tab();
            user.typeOver(value);
        }
        user.tab();
        user.key("space");
    }

    ShellUser user{stage()};
};

constexpr const char* shooterText = R"({
    "wheels": [
        {
            "actions": [
                {
                    "color": "#E74C3C",
                    "delay": 45,
                    "icon": "icons/leczenie.png",
                    "name": "Leczenie",
                    "steps": [
                        {
                            "action": "hold",
                            "key": "shift",
                            "value": 0
                        },
                        {
                            "action": "click",
                            "key": "F6",
                            "value": 2
                        },
                        {
                            "action": "release",
                            "key": "shift"
                        },
                        {
                            "action": "hold",
                            "key": "F7",
                            "value": 60
                        },
                        {
                            "open": "handled:strzal"
                        }
                    ],
                    "voice": "leczenie"
                }
            ],
            "name": "Strzelanka"
        }
    ]
}
)";

TEST_F(ShellPages, AWheelIsMadeSavedActivatedAndPlayed) {
    Stage& s = stage();
    s.target->setHandler(testArguments().recorder);
    s.writeFile("default.json", oneWheelText("Litery", clickActions({"a"})));
    start();
    edit("default.json");

    user.press(WheelControl::addWheel);
    user.waitForDialog("Nowe koło");
    keepPicture("editor-new-wheel");
    user.typeOver("Strzelanka");
    user.key("Return");
    user.waitUntilInFront();
    user.press(WheelControl::addFunction);
    user.goTo(WheelControl::name);
    user.typeOver("Leczenie");
    user.tab();
    user.type("leczenie");

    user.press(WheelControl::icon);
    user.waitForDialog("Wybierz ikonę");
    user.waitForRest();
    keepPicture("editor-icons");
    user.type("leczenie");
    user.key("Return");
    user.waitUntilInFront();
    user.press(WheelControl::color);
    user.waitForDialog("Kolor pola");
    setKey(s.screen.eyes(), "Alt_L", true); // the field "HTML"
    user.key("h");
    setKey(s.screen.eyes(), "Alt_L", false);
    user.typeOver("#E74C3C");
    user.waitForRest();
    keepPicture("editor-colour");
    user.key("Return");
    user.waitUntilInFront();
    user.goTo(WheelControl::delay);
    user.typeOver("45");

    addStep(0, "b", "1");
    addStep(1, "shift", "0");
    addStep(2, "shift");
    addStep(0, "q", "2");
    user.tab(3); // from "Dodaj krok" to "▲": the clicks come before the release
    user.key("space");
    user.goTo(WheelControl::stepKind); // the moved step is in the form: another key in its place
    user.tab();
    user.typeOver("F6");
    user.tab(3);
    user.key("space");
    user.goTo(WheelControl::steps);
    user.key("Home");
    user.goTo(WheelControl::stepKind);
    user.tab(5); // "Usuń krok"
    user.key("space");
    addStep(1, "F7", "60");
    addStep(3, "handled:strzal");
    user.waitForRest();
    keepPicture("editor-made-wheel");

    // The other wheel goes, after a question.
    user.goTo(WheelControl::tree);
    user.key("Home");
    user.goTo(WheelControl::remove);
    user.key("space");
    answerBox();
    placePointer(s.screen.eyes(), user.findSquare(fluentPrimary, 6)); // "Aktywuj", which saves first
    s.mouse->click(MouseButton::left);
    waitForFile("default.json", shooterText);

    s.startRecorder();
    s.recording.mark();
    s.openWheel();
    keepPicture("editor-made-wheel-open");
    s.choose(fieldPoint(0, 1));
    s.waitUntilWheelIsClosed();
    s.recording.waitForPress("key-up F7");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down Shift_L", "key-down F6", "key-up F6", "key-down F6",
                                               "key-up F6", "key-up Shift_L", "key-down F7", "key-up F7"}));
    waitFor("the address to be opened", [&] { return !s.notes().empty(); });
    EXPECT_EQ(s.notes(), Texts{"handled:strzal"});
}

TEST_F(ShellPages, ASettingKeepsUnknownKeysAndReachesTheEngine) {
    Stage& s = stage();
    start();
    // Another program has changed the files meanwhile: the page keeps that, and the engine reads them again.
    s.writeFile("default.json", oneWheelText("Nowe", clickActions({"n"})));
    s.writeFile("config.json", R"({"toggleKey":"F9","tajemnica":[1,{"a":null}],"gazeDwell":1250})");
    user.goTo(Page::voice);
    user.tab(2);
    user.key("space");
    waitForFile("config.json", R"({
    "gazeDwell": 1250,
    "tajemnica": [
        1,
        {
            "a": null
        }
    ],
    "toggleKey": "F9",
    "voiceEnabled": false,
    "voiceGlobal": false
}
)");
    s.startRecorder();
    s.recording.mark();
    s.openWheel();
    s.choose(fieldPoint(0, 1));
    s.recording.waitForPress("key-up n");
}

TEST_F(ShellPages, TheDwellIsSavedWhenTheSliderIsLetGo) {
    Stage& s = stage();
    s.writeFile("config.json", settingsText("\"gazeDwell\": 0"));
    start();
    user.goTo(Page::gaze);
    user.waitForRest();
    keepPicture("gaze-dwell-zero");
    // The handle: nothing else in the theme's colour is so thick without a sign in it.
    placePointer(s.screen.eyes(), user.findSquare(fluentPrimary, 10));
    s.mouse->press(MouseButton::left);
    s.mouse->move(4000, 0); // as far as it goes
    user.waitForRest();
    EXPECT_NE(fileText("config.json").find("\"gazeDwell\": 0"), std::string::npos);
    s.mouse->release(MouseButton::left);
    waitForFile("config.json", R"({
    "gazeDwell": 3000,
    "gazeEnabled": false,
    "toggleKey": "F9",
    "voiceEnabled": false
}
)");
}

TEST_F(ShellPages, AThemeTakesEffectAtOnceAndIsRemembered) {
    Stage& s = stage();
    start();
    const auto cornerColor = [&] {
        const ShownWindow window = *s.mainWindow();
        return s.screen.eyes().pixel(window.left + 60, window.top + window.height - 40);
    };
    waitFor("the window to be painted", [&] { return cornerColor() == PixelColor{0xE9, 0xEE, 0xF7}; });
    user.goTo(Page::settings);
    user.tab();
    user.key("Down", 2);
    waitFor("the graphite theme", [&] { return cornerColor().red < 0x40; });
    const PixelColor graphite = cornerColor();
    s.endProgram();
    s.startProgram();
    waitFor("the graphite theme again", [&] { return cornerColor() == graphite; });
}

TEST_F(ShellPages, AFileThatCannotBeReadLeavesTheOpenOneAsItIs) {
    Stage& s = stage();
    const std::string good = oneWheelText("Litery", clickActions({"a"}));
    s.writeFile("default.json", good);
    s.writeFile("urwany.json", R"({ "wheels": [ { "name": "X", )");
    start();
    edit("default.json");
    openInEditor("urwany.json");
    answerBox();
    EXPECT_EQ(fileText("urwany.json"), R"({ "wheels": [ { "name": "X", )");
    user.press(WheelControl::addFunction);
    user.press(WheelControl::save);
    waitFor("the good file to be saved",
            [&] { return fileText("default.json").find("Nowa funkcja") != std::string::npos; });
    EXPECT_NE(fileText("default.json").find("Pole 1"), std::string::npos);
}

TEST_F(ShellPages, WhatCouldNotBeSavedStaysOpenAndCanBeSavedElsewhere) {
    Stage& s = stage();
    std::filesystem::create_directory(s.folder() / "dysk");
    s.writeFile("dysk/kola.json", oneWheelText("Litery", clickActions({"a"})));
    start();
    edit("dysk/kola.json");
    user.press(WheelControl::addFunction);
    user.waitForRest();
    std::filesystem::remove_all(s.folder() / "dysk"); // the medium has been taken out
    user.press(WheelControl::save);
    answerBox();
    // Activating saves first, and goes no further when that fails.
    user.press(WheelControl::activate);
    answerBox();
    user.press(WheelControl::saveAs);
    user.waitForDialog("Zapisz jako");
    user.typeOver(s.target->pathText(s.folder() / "ocalone.json"));
    user.key("Return");
    user.waitUntilInFront();
    waitFor("the rescued file",
            [&] { return fileText("ocalone.json").find("Nowa funkcja") != std::string::npos; });
}

} // namespace

} // namespace e2e

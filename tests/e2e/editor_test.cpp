// The engine without the shell, and its own function editor, which Windows alone has.

#include "scenario.h"
#include "tray_user.h"

#include <fstream>
#include <iterator>

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

constexpr const char* editorTitle = "Rotika — edytor funkcji";
constexpr const char* boxTitle = "Edytor funkcji";

/// Where a text can be entered.
struct Field {
    int left;
    int middle;
    int width;
};

// Points in the windows, from the inner top left corner.
constexpr ScreenPoint editorButton{105, 496}; // of the status page
constexpr ScreenPoint nowhere{840, 300};
constexpr ScreenPoint saveButton{230, 24};
constexpr ScreenPoint saveAsButton{330, 24};
constexpr ScreenPoint activateButton{437, 24};
constexpr ScreenPoint renameWheelButton{480, 61};
constexpr ScreenPoint addWheelButton{575, 61};
constexpr ScreenPoint removeWheelButton{650, 61};
constexpr ScreenPoint addFieldButton{45, 464};
constexpr ScreenPoint stepUpButton{742, 190};
constexpr ScreenPoint removeStepButton{772, 262};
constexpr ScreenPoint stepKind{553, 347};
constexpr ScreenPoint addStepButton{305, 382};
constexpr ScreenPoint replaceStepButton{415, 382};
constexpr ScreenPoint writeFieldButton{345, 464};
constexpr Field wheelName{250, 61, 170};
constexpr Field fieldName{320, 99, 165};
constexpr Field fieldColor{545, 99, 85};
constexpr Field stepKey{318, 347, 90};
constexpr Field stepValue{712, 347, 60};
constexpr int longestText = 12; // that a field holds in these scenarios
constexpr int rowHeight = 17;

constexpr ScreenPoint stepRow(int row) {
    return {400, 183 + rowHeight * row};
}

// Rows of the list of actions
enum StepKindRow { clickRow, holdRow, releaseRow, openRow };

// Where the middle of an entry of the tray's menu lies.
constexpr double quit = 0.82;

class OnWindowsEngineAlone : public Scenario {
protected:
    /// The engine with its icon in a tray, on a wheel of two fields that type a and b.
    void startEngine() {
        Stage& s = stage();
        s.writeFile("default.json", oneWheelText("Litery", clickActions({"a", "b"})));
        tray.startTray();
        s.program = launchEngine();
        tray.icon();
    }

    Process launchEngine() {
        Command command = stage().target->commandFor(stage().folder() / "rotika-engine.exe", {});
        command.folder = stage().screen.folder();
        command.outputFile = stage().screen.folder() / "program.log";
        return Process(command);
    }

    /// By the tray's icon and the button of the page that it shows.
    void openEditor() {
        const XConnection& eyes = stage().screen.eyes();
        tray.doubleClickUntil([&] { return eyes.shownWindow("Rotika").has_value(); });
        user.waitForDialog("Rotika");
        keepPicture("status-page");
        clickIn("Rotika", editorButton);
        waitFor("the editor", [&] { return eyes.shownWindow(editorTitle).has_value(); });
        takeEditor();
    }

    /// Wine may leave the keyboard to nobody until a new window, or one that a box has lain over, is clicked,
    /// and loses clicks while it changes hands.
    void takeEditor() {
        user.waitForRest();
        click(nowhere);
        user.waitForDialog(editorTitle);
    }

    /// And sees what it does, as a person would: Wine loses clicks that come while it is busy with the last,
    /// and a list may take a movement after a click for a drag.
    void clickIn(const std::string& title, ScreenPoint point) {
        const std::optional<ShownWindow> window = stage().screen.eyes().shownWindow(title);
        ASSERT_TRUE(window) << title;
        placePointer(stage().screen.eyes(), {window->left + point.x, window->top + point.y});
        stage().mouse->click(MouseButton::left);
        user.waitForRest();
    }
    void click(ScreenPoint point) { clickIn(editorTitle, point); }

    /// In place of what a field holds, once the field shows its caret or a selection.
    void fill(const Field& field, const std::string& text) {
        const XConnection& eyes = stage().screen.eyes();
        const ShownWindow window = *eyes.shownWindow(editorTitle);
        const auto inside = [&] {
            return eyes.look(window.left + field.left + 3, window.top + field.middle - 9, field.width - 6, 18)
                .pixels;
        };
        const std::vector<PixelColor> before = inside();
        click({field.left + field.width / 2, field.middle});
        waitFor("the caret", [&] { return inside() != before; });
        user.key("End");
        user.key("BackSpace", longestText);
        user.type(text);
    }

    void chooseKind(StepKindRow row) {
        const XConnection& eyes = stage().screen.eyes();
        const ShownWindow window = *eyes.shownWindow(editorTitle);
        click(stepKind);
        waitFor("the list of actions", [&] {
            for (const ShownWindow& shown : eyes.shownWindows()) {
                if (shown.width == 170 && shown.top > window.top + stepKind.y)
                    return true;
            }
            return false;
        });
        click({stepKind.x, 368 + rowHeight * row});
    }

    void enterStep(const std::string& key, StepKindRow kind, const std::string& value,
                   ScreenPoint button = addStepButton) {
        fill(stepKey, key);
        chooseKind(kind);
        fill(stepValue, value);
        click(button);
    }

    /// Waits for the box and takes its first button, or the second.
    void answer(const std::string& picture, bool takesFirst = true) {
        user.waitForDialog(boxTitle);
        keepPicture(picture);
        user.key("Right", takesFirst ? 0 : 1);
        user.key("Return");
        waitFor("the box to go", [this] { return !stage().screen.eyes().shownWindow(boxTitle); });
    }

    void answerAndGoOn(const std::string& picture) {
        answer(picture);
        takeEditor();
    }

    std::string contentOf(const std::string& name) {
        std::ifstream stream(stage().folder() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void waitForIn(const std::string& name, const std::string& text) {
        waitFor(text + " in " + name, [&] { return contentOf(name).find(text) != std::string::npos; });
    }

    void quitByTray() {
        stage().recorder.end(); // it lies over the tray
        tray.chooseUntil(quit, [this] { return !stage().program.isRunning(); });
        EXPECT_EQ(stage().program.statusWithin(generousLimit), 0);
    }

    /// Opens the wheel and chooses the last of `count` fields, before a recorder; what it types.
    Texts chooseLastOf(int count, std::size_t presses) {
        Stage& s = stage();
        s.recording.mark();
        s.openWheel();
        s.choose(fieldPoint(count - 1, count));
        s.recording.waitForPresses(presses);
        return s.recording.pressTexts();
    }

    ShellUser user{stage()};
    TrayUser tray{stage()};
};

TEST_F(OnWindowsEngineAlone, AFieldMadeInItsEditorIsSavedAndWorks) {
    startEngine();
    openEditor();
    fill(wheelName, "Gra");
    click(renameWheelButton);
    click(addWheelButton);
    click(removeWheelButton);
    answerAndGoOn("editor-remove-wheel");
    click(addFieldButton);
    fill(fieldName, "Skok");
    enterStep("nonsense", clickRow, "");
    answerAndGoOn("editor-unknown-key");
    enterStep("e", clickRow, "2");
    enterStep("shift", releaseRow, "");
    enterStep("http://x.pl", openRow, "");
    click(removeStepButton); // the one just added
    enterStep("shift", holdRow, "");
    click(stepUpButton);
    click(stepUpButton);
    click(stepRow(1));
    enterStep("f", clickRow, "2", replaceStepButton);
    fill(fieldColor, "red");
    click(writeFieldButton);
    answerAndGoOn("editor-bad-colour");
    fill(fieldColor, "#e74c3c");
    click(writeFieldButton);
    keepPicture("editor-filled");
    click(saveButton);
    const std::string newField = R"(        { "name": "Skok", "color": "#E74C3C",
          "steps": [
            { "key": "shift", "action": "hold", "value": 0 },
            { "key": "f", "action": "click", "value": 2 },
            { "key": "shift", "action": "release" }
          ]
        }
)";
    waitForIn("default.json", newField);
    EXPECT_NE(contentOf("default.json").find("\"name\": \"Gra\""), std::string::npos);

    click(saveAsButton);
    user.waitForDialog("Save As");
    user.key("BackSpace", longestText); // Wine puts the caret behind the name that is offered
    user.type("kopia");
    user.waitForRest();
    keepPicture("editor-save-as");
    user.key("Return");
    waitForIn("kopia.json", newField);

    stage().startRecorder();
    EXPECT_EQ(chooseLastOf(3, 6), (Texts{"key-down Shift_L", "key-down f", "key-up f", "key-down f",
                                         "key-up f", "key-up Shift_L"}));
    quitByTray();
}

TEST_F(OnWindowsEngineAlone, ActivatingSavesNothingAndClosingAsks) {
    startEngine();
    const std::string before = contentOf("default.json");
    openEditor();
    click(addFieldButton);
    enterStep("e", clickRow, "");
    click(writeFieldButton);
    click(activateButton);
    stage().startRecorder();
    EXPECT_EQ(chooseLastOf(3, 2), (Texts{"key-down e", "key-up e"}));
    EXPECT_EQ(contentOf("default.json"), before);
    stage().recorder.end();

    takeEditor();
    const XConnection& eyes = stage().screen.eyes();
    for (const bool closes : {false, true}) {
        eyes.close(*eyes.shownWindow(editorTitle));
        answer("editor-close", closes);
        user.waitForRest();
        EXPECT_EQ(!eyes.shownWindow(editorTitle), closes);
    }
    quitByTray();
}

TEST_F(OnWindowsEngineAlone, TellsOfBadFilesAndIsAloneOnTheDesktop) {
    Stage& s = stage();
    s.writeFile("config.json",
                "{ \"toggleKey\": \"nonsense\", \"gazeEnabled\": false, \"voiceEnabled\": false }");
    s.writeFile("default.json", "{ broken");
    tray.startTray();
    s.program = launchEngine();
    user.waitForDialog("Rotika");
    keepPicture("engine-problems");
    user.key("Return");
    tray.icon();

    Process second = launchEngine();
    user.waitForDialog("Rotika");
    keepPicture("engine-second-copy");
    user.key("Return");
    EXPECT_EQ(second.statusWithin(generousLimit), 0);
    quitByTray();
}

} // namespace

} // namespace e2e

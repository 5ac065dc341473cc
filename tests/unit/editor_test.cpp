#include "core/lifecycle.h"
#include "editor/editor_controls.h"
#include "editor/editor_form.h"
#include "editor/editor_state.h"
#include "engine_test.h"
#include "overlay.h"
#include "platform/paths.h"

using namespace std::string_literals;

namespace {

constexpr char twoWheels[] = R"({"wheels": [
  {"actions": [{"name": "A", "key": ["a", "b"], "color": "#e74c3c", "delay": 50, "icon": "i.png", "voice": "raz"}, {}]},
  {"name": "Drugie", "actions": [{"name": "C", "key": "c"}]}]})";

class Editor : public EngineTest {
protected:
    /// Starts the engine on these wheels, with a tray icon, and opens its editor.
    void open(const std::string& wheels = twoWheels) {
        folder.write("config.json", R"({"gazeEnabled": false, "voiceEnabled": false})");
        folder.write("default.json", wheels);
        editorState = {};
        ASSERT_TRUE(startEngine(true));
        desktop.mainHandlers->editorRequested();
        desktop.clearJournal();
    }

    /// Presses a button; the boxes that came, without the title that all of them have.
    std::string pressed(std::int32_t button) {
        desktop.clearJournal();
        editor.press(button);
        return boxes();
    }

    std::string boxes() const {
        std::string texts = journal({JournalKind::box});
        const std::string title = "[Edytor funkcji] ";
        for (auto at = texts.find(title); at != std::string::npos; at = texts.find(title))
            texts.erase(at, title.size());
        return texts;
    }

    /// Fills the controls for entering a step and presses `button`; the boxes.
    std::string enterStep(const std::u16string& key, std::int32_t kind, const std::u16string& value,
                          std::int32_t button = addStepButton) {
        editor.type(stepKeyEdit, key);
        editor.choose(stepKindList, kind);
        editor.type(stepValueEdit, value);
        return pressed(button);
    }

    std::string wheelDialog() const {
        return " in " + utf8FromUtf16(folder.path()) +
               ", Pliki JSON (*.json) = *.json, Wszystkie (*.*) = *.*";
    }

    /// Rows and selection of wheels, fields and steps.
    std::string lists() const {
        std::string text;
        for (const std::int32_t id : {wheelList, fieldList, stepList})
            text +=
                editor.rows(id) + " @" + std::to_string(editor.selection(id)) + (id == stepList ? "" : ", ");
        return text;
    }

    std::string entryControls() const {
        return editor.text(stepKeyEdit) + "," + std::to_string(editor.selection(stepKindList)) + "," +
               editor.text(stepValueEdit);
    }

    SimulatedEditor& editor = desktop.editor;
};

TEST_F(Editor, OpensOnTheFirstWheelOfTheDefaultFile) {
    open();
    EXPECT_TRUE(editor.isShown && editor.hasInterfaceFont);
    EXPECT_EQ(editor.controls.size(), 31u);
    EXPECT_EQ(lists(), "1: (bez nazwy)|2: Drugie @0, A   [2]|(bez nazwy)   [0] @-1,  @-1");
    EXPECT_EQ(editor.controls.at(pathLabel).text, folder.path("default.json"));
    EXPECT_EQ(editor.rows(stepKindList), "klik (naciśnij i puść)|przytrzymaj|puść|otwórz (adres / program)");
    EXPECT_EQ(entryControls(), ",0,");
    EXPECT_EQ(editor.text(fieldDelayEdit), "30");

    editor.choose(fieldList, 0);
    std::string form;
    for (const std::int32_t id :
         {fieldNameEdit, fieldColorEdit, fieldDelayEdit, fieldIconEdit, fieldVoiceEdit})
        form += editor.text(id) + " ";
    EXPECT_EQ(form, "A #E74C3C 50 i.png raz ");
    EXPECT_EQ(editor.rows(stepList), "klik:  a|klik:  b");
}

TEST_F(Editor, StaysAsItIsWhenAskedForAgainAndStartsAnewAfterItWasClosed) {
    open();
    editor.press(addWheelButton);
    desktop.mainHandlers->editorRequested();
    EXPECT_EQ(editor.restoreCount, 1);
    EXPECT_EQ(editor.rows(wheelList), "1: (bez nazwy)|2: Drugie|3: Koło 3");

    const std::string question = "ask Są niezapisane zmiany. Zamknąć edytor mimo to?";
    for (const bool answer : {false, true}) {
        desktop.clearJournal();
        editor.answers = {answer};
        editor.closeWindow();
        EXPECT_EQ(boxes(), question);
        EXPECT_EQ(editor.isShown, !answer);
    }
    desktop.mainHandlers->editorRequested();
    EXPECT_EQ(editor.rows(wheelList), "1: (bez nazwy)|2: Drugie");
    desktop.clearJournal();
    editor.closeWindow();
    EXPECT_EQ(boxes(), "");
    EXPECT_FALSE(editor.isShown);
}

TEST_F(Editor, WhatIsMadeInItIsWrittenInTheCanonicalFormAndReadByTheEngine) {
    open();
    editor.press(newButton);
    editor.type(wheelNameEdit, u"Gra \"1\"");
    editor.press(renameWheelButton);
    editor.press(addFieldButton);
    EXPECT_EQ(lists(), "1: Gra \"1\" @0, Nowa funkcja   [0] @0,  @-1");
    editor.type(fieldNameEdit, u"Łyk");
    editor.type(fieldColorEdit, u"#e74c3c");
    editor.type(fieldDelayEdit, u"");
    editor.type(fieldIconEdit, u"icons\\a.png");
    editor.type(fieldVoiceEdit, u"łyk wody");
    enterStep(u"Shift", 1, u"");
    enterStep(u" lmb ", 0, u"500");
    enterStep(u"shift", 2, u"");
    enterStep(u"https://przyklad.pl/a\\b", 3, u"77");
    EXPECT_EQ(pressed(writeFieldButton), "");
    editor.press(addWheelButton); // stays empty
    editor.pickedFiles = {folder.path("default.json")};
    EXPECT_EQ(pressed(saveButton),
              "save" + wheelDialog() +
                  ", default.json, json, inform Uwaga: któreś koło nie ma żadnych funkcji — przy\n"
                  "wczytywaniu zostanie pominięte.");
    EXPECT_EQ(folder.read("default.json"), R"({
  "wheels": [
    {
      "name": "Gra \"1\"",
      "actions": [
        { "name": "Łyk", "color": "#E74C3C", "delay": 0, "icon": "icons\\a.png", "voice": "łyk wody",
          "steps": [
            { "key": "Shift", "action": "hold", "value": 0 },
            { "key": "lmb", "action": "click", "value": 100 },
            { "key": "shift", "action": "release" },
            { "open": "https://przyklad.pl/a\\b" }
          ]
        }
      ]
    },
    {
      "name": "Koło 2",
      "actions": [
      ]
    }
  ]
}
)");
    EXPECT_EQ(describe(engineState.wheels),
              "Gra \"1\"[Łyk{hold Shift 0, click lmb 100, release shift 0, open https://przyklad.pl/a\\b 1} "
              "delay=0 bgr=3C4CE7 icon=icons\\a.png voice=łyk wody]");
    EXPECT_FALSE(editorState.editorDirty);
}

TEST_F(Editor, TakesStepsWithTheReadersLimitsAndRefusesUnknownKeys) {
    open();
    editor.press(addFieldButton);
    struct StepCase {
        std::u16string key;
        std::int32_t kind;
        std::u16string value;
        std::string row;
    };
    const StepCase cases[] = {
        {u"q", 0, u"", "klik:  q"},
        {u"q", 0, u"2", "klik x2:  q"},
        {u"F5", 0, u"101", "klik x100:  F5"},
        {u"q", 0, u"99999999999", "klik x100:  q"},
        {u"q", 0, u"-99999999999", "klik:  q"},
        {u"q", -1, u"3", "klik x3:  q"}, // no action chosen
        {u"MB4", 1, u"", "przytrzymaj (bez puszczania):  MB4"},
        {u"q", 1, u"-5", "przytrzymaj (bez puszczania):  q"},
        {u"q", 1, u" +7x9", "przytrzymaj 7 ms:  q"},
        {u"q", 1, u"60001", "przytrzymaj 60000 ms:  q"},
        {u"q", 2, u"70000", "puść:  q"},
        {u"  x y ", 3, u"5", "otwórz:    x y "},
        {std::u16string(600, u'p'), 3, u"", "otwórz:  " + std::string(511, 'p')},
    };
    for (const StepCase& c : cases) {
        EXPECT_EQ(enterStep(c.key, c.kind, c.value), "");
        EXPECT_EQ(utf8FromUtf16(editor.controls.at(stepList).rows.back()), c.row);
        EXPECT_EQ(editor.selection(stepList) + 1, static_cast<int>(editorState.editorField.steps.size()));
    }
    const std::string before = editor.rows(stepList);
    EXPECT_EQ(enterStep(u" foo ", 0, u"1"),
              "warn Nieznany klawisz/przycisk: \" foo \"\n\nPrzykłady: q, 5, F5, space, enter, esc, up,\n"
              "lmb (lewy przycisk myszy), rmb, mmb, mb4, mb5");
    EXPECT_TRUE(enterStep(u"", 3, u"1", replaceStepButton)
                    .starts_with("warn Dla czynności \"otwórz\" wpisz w polu Klawisz adres URL (np. "));
    EXPECT_EQ(editor.rows(stepList), before);
}

TEST_F(Editor, ReplacesMovesAndRemovesTheSelectedStep) {
    open(
        R"({"actions": [{"steps": [{"key": "a", "value": 3}, {"key": "b", "action": "hold"}, {"open": "c"}]}]})");
    editor.choose(fieldList, 0);
    for (const std::int32_t button : {replaceStepButton, removeStepButton, stepUpButton, stepDownButton})
        EXPECT_EQ(enterStep(u"foo", 0, u"", button), ""); // nothing is selected
    const std::string entries[] = {"a,0,3", "b,1,0", "c,3,"};
    for (std::int32_t row = 0; row < 3; ++row) {
        editor.choose(stepList, row);
        EXPECT_EQ(entryControls(), entries[row]);
    }
    const std::string around = "1: (bez nazwy) @0, (bez nazwy)   [3] @0, ";
    // At either end a step stays.
    for (const std::int32_t button : {stepDownButton, stepUpButton, stepUpButton, stepUpButton})
        editor.press(button);
    EXPECT_EQ(lists(), around + "otwórz:  c|klik x3:  a|przytrzymaj (bez puszczania):  b @0");
    editor.press(stepDownButton);
    EXPECT_EQ(enterStep(u"d", 2, u"", replaceStepButton), "");
    EXPECT_EQ(lists(), around + "klik x3:  a|puść:  d|przytrzymaj (bez puszczania):  b @1");
    editor.press(removeStepButton);
    EXPECT_EQ(lists(), around + "klik x3:  a|przytrzymaj (bez puszczania):  b @-1");

    // All that stands in the form alone, and another choice drops it.
    EXPECT_FALSE(editorState.editorDirty);
    editor.choose(fieldList, 0);
    EXPECT_EQ(editor.rows(stepList), "klik x3:  a|przytrzymaj (bez puszczania):  b|otwórz:  c");
}

TEST_F(Editor, WritesTheFormBackOnlyIfItsColourIsOne) {
    open();
    editor.choose(fieldList, 0);
    editor.type(fieldNameEdit, std::u16string(600, u'n'));
    const std::vector<Wheel> before = editorState.editorWheels;
    for (const char16_t* bad : {u"red", u"#12345", u"#1234567", u"#12345g", u"1234567", u" #12345", u" "}) {
        editor.type(fieldColorEdit, bad);
        EXPECT_EQ(pressed(writeFieldButton),
                  "warn Niepoprawny kolor — użyj formatu #RRGGBB (np. #E74C3C) albo zostaw pole puste.");
    }
    EXPECT_EQ(editorState.editorWheels, before);

    const WheelAction& field = editorState.editorWheels[0].actions[0];
    editor.type(fieldColorEdit, u"");
    const std::pair<const char16_t*, std::int32_t> delays[] = {
        {u"", 0}, {u"2001", 2000}, {u"-1", 0}, {u"x", 0}, {u"1500", 1500}};
    for (const auto& [text, delay] : delays) {
        editor.type(fieldDelayEdit, text);
        EXPECT_EQ(pressed(writeFieldButton), "");
        EXPECT_EQ(field.delay, delay);
    }
    EXPECT_EQ(describe(field),
              std::string(511, 'n') + "{click a 1, click b 1} delay=1500 icon=i.png voice=raz");
    EXPECT_TRUE(editorState.editorDirty);
    EXPECT_EQ(editor.selection(fieldList), 0);
}

TEST_F(Editor, WithoutAFieldItSaysWhatIsMissing) {
    open();
    const std::string none = "inform Najpierw wybierz lub dodaj funkcję.";
    EXPECT_EQ(pressed(addStepButton), none);
    EXPECT_EQ(pressed(writeFieldButton), none);
    EXPECT_EQ(pressed(editFieldButton), "inform Najpierw wybierz funkcję z listy.");
    EXPECT_EQ(pressed(removeFieldButton), "");
    editor.choose(fieldList, 0);
    EXPECT_EQ(pressed(editFieldButton), "");
    EXPECT_EQ(pressed(removeFieldButton), "");
    EXPECT_EQ(lists() + editor.text(fieldNameEdit),
              "1: (bez nazwy)|2: Drugie @0, (bez nazwy)   [0] @-1,  @-1");
    EXPECT_EQ(pressed(writeFieldButton), none);
}

TEST_F(Editor, AddsAndRemovesWheels) {
    open();
    editor.choose(fieldList, 0);
    editor.choose(wheelList, 1);
    EXPECT_EQ(editor.text(wheelNameEdit) + editor.text(fieldNameEdit), "Drugie");
    EXPECT_EQ(lists(), "1: (bez nazwy)|2: Drugie @1, C   [1] @-1,  @-1");
    EXPECT_FALSE(editorState.editorDirty);
    editor.press(addWheelButton);
    editor.choose(wheelList, 1);
    EXPECT_EQ(pressed(removeWheelButton), "ask Usunąć koło \"Drugie\" wraz z funkcjami?");
    EXPECT_EQ(editor.rows(wheelList), "1: (bez nazwy)|2: Drugie|3: Koło 3");
    editor.answers = {true};
    editor.press(removeWheelButton);
    EXPECT_EQ(lists(), "1: (bez nazwy)|2: Koło 3 @1,  @-1,  @-1"); // the one behind it
    editor.press(addWheelButton);
    EXPECT_EQ(editor.rows(wheelList), "1: (bez nazwy)|2: Koło 3|3: Koło 3");
    editor.answers = {true, true};
    editor.press(removeWheelButton);
    EXPECT_EQ(editor.selection(wheelList), 1); // there is none behind it
    editor.press(removeWheelButton);
    EXPECT_EQ(pressed(removeWheelButton), "inform Musi zostać przynajmniej jedno koło.");
    editor.choose(wheelList, -1);
    EXPECT_EQ(editor.rows(fieldList), "A   [2]|(bez nazwy)   [0]");
}

TEST_F(Editor, AsksBeforeItDropsADocumentAndOpensWhatCanBeRead) {
    open();
    const std::string question = "ask Niezapisane zmiany zostaną utracone. Kontynuować?";
    const std::string dialog = "open" + wheelDialog();
    EXPECT_EQ(pressed(openButton), dialog); // and cancelled
    editor.press(addWheelButton);
    EXPECT_EQ(pressed(openButton), question);
    EXPECT_EQ(pressed(newButton), question);
    EXPECT_EQ(editorState.editorWheels.size(), 3u);

    const std::u16string partly =
        folder.write("partly.json", R"({"actions": [{"name": "B", "key": "zzz"}]})");
    editor.answers = {true};
    editor.pickedFiles = {partly};
    EXPECT_EQ(pressed(openButton), question + ", " + dialog +
                                       ", warn Problemy przy wczytywaniu:\n\ndefault.json: nieznany klawisz "
                                       "\"zzz\" dla pola \"B\".\n");
    EXPECT_EQ(lists(), "1: (bez nazwy) @0, B   [0] @-1,  @-1");
    editor.pickedFiles = {folder.path("missing.json")};
    EXPECT_NE(pressed(openButton).find("Nie udało się wczytać pliku kół: "), std::string::npos);
    EXPECT_EQ(editor.rows(wheelList), "1: Koło 1");
    EXPECT_EQ(editor.controls.at(pathLabel).text, folder.path("missing.json"));
    EXPECT_FALSE(editorState.editorDirty);

    editor.press(newButton);
    EXPECT_EQ(editor.text(pathLabel), "(nowy plik — niezapisany)");
}

TEST_F(Editor, OnlySavingOverTheEnginesOwnFilesPutsThemIntoForce) {
    open();
    engineState.wheels = {wheelOf(4)};
    const std::pair<const char*, bool> files[] = {
        {"inne.json", false}, {"DEFAULT.json", true}, {"Voice.JSON", true}};
    for (const auto& [file, isInForce] : files) {
        const int repaints = desktop.mainWindowRepaints;
        const std::uint32_t phrases = engineState.phraseGeneration;
        editor.pickedFiles = {folder.path(file)};
        editor.press(saveAsButton);
        EXPECT_EQ(editor.controls.at(pathLabel).text, folder.path(file));
        EXPECT_EQ(desktop.mainWindowRepaints - repaints, isInForce) << file;
        EXPECT_EQ(engineState.phraseGeneration != phrases, isInForce) << file;
        EXPECT_EQ(OverlayWheelCount(), isInForce ? 2 : 1) << file;
    }
    editor.press(addWheelButton);
    EXPECT_NE(pressed(saveAsButton), ""); // and cancelled
    EXPECT_TRUE(editorState.editorDirty);

    // A full disk is not reported, but the old file stays.
    const std::string before = folder.read("Voice.JSON");
    setSimulatedDiskRoom(20);
    editor.press(saveButton);
    EXPECT_EQ(folder.read("Voice.JSON"), before);
    EXPECT_FALSE(editorState.editorDirty);
}

/// A save that fails looks like one that did not, but the next opening shows what was to be saved.
TEST_F(Editor, WhatCouldNotBeWrittenIsKeptAndOpenedNextTime) {
    open();
    const std::string saved = "1: (bez nazwy)|2: Drugie";
    const std::string unsaved = saved + "|3: Koło 3";
    const auto saveAs = [this](const std::string& name) {
        editor.pickedFiles = {folder.path(name)};
        editor.press(saveAsButton);
        EXPECT_FALSE(editorState.editorDirty);
    };
    const auto expectOnReopening = [this](const std::string& rows, const std::string& name) {
        editor.closeWindow();
        desktop.mainHandlers->editorRequested();
        EXPECT_EQ(editor.rows(wheelList), rows);
        EXPECT_EQ(editor.text(pathLabel),
                  name.empty() ? "(nowy plik — niezapisany)" : folder.at(name).make_preferred().string());
    };
    std::filesystem::create_directory(folder.at("temp"));
    setSimulatedTemporaryFolder(folder.path("temp"));
    editor.press(addWheelButton);
    editor.press(addFieldButton);
    saveAs("temp"); // no file can take the place of a folder
    EXPECT_TRUE(std::filesystem::exists(folder.at("niezapisane-kola-1.json")));
    expectOnReopening(unsaved, "");
    saveAs("inne.json");
    expectOnReopening(saved, "default.json");

    editor.press(addWheelButton);
    editor.press(addFieldButton);
    setSimulatedProgramFolder(folder.path("missing"));
    saveAs("temp");
    EXPECT_TRUE(std::filesystem::exists(folder.at("temp/niezapisane-kola-1.json")));
    expectOnReopening(unsaved, "");
    editor.press(newButton);
    saveAs("inne.json"); // another document
    expectOnReopening(unsaved, "");
    setSimulatedProgramFolder(folder.path());

    setSimulatedDiskRoom(0);
    saveAs("inne.json");
    std::filesystem::remove_all(folder.at("temp"));
    expectOnReopening(unsaved, "inne.json"); // nowhere but in memory
    editor.press(newButton);
    expectOnReopening(saved, "default.json");
}

TEST_F(Editor, ShortensThePathOfAnIconInTheFolderOfTheProgram) {
    open();
    editor.choose(fieldList, 0);
    const std::u16string inside = joinPath(folder.path(), u"icons/Ą.png");
    std::u16string otherCase = inside;
    otherCase[otherCase.find(u"rotika")] = u'R';
    const std::u16string outside = folder.path() + u"2/a.png";
    const std::pair<std::optional<std::u16string>, std::u16string> cases[] = {{inside, u"icons/Ą.png"},
                                                                              {std::nullopt, u"icons/Ą.png"},
                                                                              {outside, outside},
                                                                              {otherCase, u"icons/Ą.png"}};
    for (const auto& [picked, shown] : cases) {
        editor.pickedFiles = {picked};
        EXPECT_TRUE(
            pressed(chooseIconButton)
                .ends_with(", Obrazy (*.png;*.bmp;*.jpg) = *.png;*.bmp;*.jpg, Wszystkie (*.*) = *.*"));
        EXPECT_EQ(editor.controls.at(fieldIconEdit).text, shown);
    }
    EXPECT_EQ(editorState.editorField.icon, u"i.png"); // until it is written back
}

TEST_F(Editor, ActivatesTheWheelsThatHaveFieldsWithoutSavingThem) {
    open("{ broken"); // shown as an empty wheel
    EXPECT_EQ(boxes(), "");
    EXPECT_EQ(lists(), "1: Koło 1 @0,  @-1,  @-1");
    EXPECT_EQ(pressed(activateButton), "inform Żadne koło nie ma funkcji — nie ma czego aktywować.");
    engineState.wheels = {wheelOf(4), wheelOf(4)};
    engineState.activeWheel = 1;
    pressToggleKey();
    engineState.hoveredField = 3;
    editor.press(addWheelButton);
    for (int i = 0; i < 25; ++i)
        editor.press(addFieldButton);
    editor.press(addWheelButton);
    const int paints = wheelPaintCount();
    const int repaints = desktop.mainWindowRepaints;
    EXPECT_EQ(pressed(activateButton), "");
    EXPECT_EQ(journal({JournalKind::tray}),
              "info [Rotika] Aktywowano koła z edytora. Naciśnij klawisz wywołania, aby ich użyć.");
    EXPECT_EQ(engineState.wheels, std::vector{editorState.editorWheels.at(1)});
    EXPECT_EQ(engineState.wheels[0].actions.size(), 25u);
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_EQ(engineState.hoveredField, -1);
    EXPECT_EQ(wheelPaintCount(), paints + 1);
    EXPECT_EQ(desktop.mainWindowRepaints, repaints + 1);
    EXPECT_TRUE(editorState.editorDirty);
    EXPECT_EQ(folder.read("default.json"), "{ broken");
    OverlayReloadConfig();
    EXPECT_EQ(engineState.wheels[0].actions.size(), 6u);
}

TEST_F(Editor, ListsActOnANewSelectionAloneAndOtherControlsNotAtAll) {
    open();
    setListSelection(editorState.editorWindow, wheelList, 1);
    setListSelection(editorState.editorWindow, fieldList, 0);
    for (const std::int32_t id : {wheelList, fieldList, stepList})
        editor.press(id); // another of their news
    for (const std::int32_t id : {0, 1003, 2000, 2005, 2007, 2024, 2032})
        editor.handlers.controlUsed(id, true);
    EXPECT_EQ(editor.text(wheelNameEdit) + editor.text(fieldNameEdit), "");
    EXPECT_FALSE(editorState.editorDirty);
}

TEST_F(Editor, EndsWithTheProgramWhileABoxWaits) {
    open();
    editor.press(addWheelButton);
    editor.whileBoxWaits = [this] { desktop.destroyMainWindow(); };
    EXPECT_NE(pressed(saveButton), ""); // about the empty wheel
    EXPECT_EQ(editorState.editorWindow, nullptr);
    EXPECT_NE(folder.read("default.json").find("\"Koło 3\""), std::string::npos);
}

} // namespace

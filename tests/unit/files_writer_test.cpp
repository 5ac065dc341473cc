#include "engine_test.h"
#include "files/first_run_files.h"
#include "files/key_names.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"

using namespace std::string_literals;

namespace {

std::string firstWheels() {
    std::string text = "{\n  \"wheels\": [\n    {\n      \"name\": \"Kolo 1\",\n      \"actions\": [\n";
    for (const char digit : "12345678"s)
        text += "        { \"name\": \"Funkcja "s + digit + "\", \"key\": \"" + digit +
                (digit < '8' ? "\" },\n" : "\" }\n");
    return text + "      ]\n    }\n  ]\n}\n";
}

ActionStep step(StepKind kind, const std::u16string& token, std::int32_t value) {
    return {parseKeyCode(token), kind, value, {}};
}

/// Two wheels with everything a file can hold.
std::vector<Wheel> richWheels() {
    WheelAction all;
    all.name = u"Przełącz \"okno\"\n\\\x07\x1F\x7F/\xD83D\xDE00";
    all.steps = {step(StepKind::hold, u"alt", 0), step(StepKind::click, u"Tab", 100),
                 step(StepKind::release, u"alt", 0), open(u"C:\\a b\\ż.exe")};
    all.delay = 0;
    all.color = 0x3C4CE7;
    all.hasColor = true;
    all.icon = u"icons\\a.png";
    all.voice = u"przełącz okno";
    return {{u"Koło \"1\"", {all, WheelAction()}}, {u"", {WheelAction()}}};
}

class FilesWriter : public FilesTest {
protected:
    /// What the engine reads back from what it wrote.
    std::vector<Wheel> reread(const std::vector<Wheel>& wheels) {
        std::vector<Wheel> read;
        problems.clear();
        loadWheelFile(folder.write("written.json", serializeWheels(wheels)), read, problems);
        return read;
    }

    std::u16string problems;
};

} // namespace

TEST_F(FilesWriter, AFreshFolderGetsThreeFilesThatLoadWithoutAProblem) {
    loadConfiguration(problems);
    EXPECT_EQ(problems, u"");
    EXPECT_EQ(folder.read("config.json"), "{\n  \"segmentColor\": \"#3498DB\",\n  \"toggleKey\": \"x\"\n}\n");
    EXPECT_EQ(folder.read("default.json"), firstWheels());
    EXPECT_EQ(folder.fileCount(), 3u);
    EXPECT_EQ(describe(engineState.voiceActions, "; "),
              "Przełącz okno{hold alt 0, click tab 1, release alt 0} voice=przełącz okno");
    ASSERT_EQ(engineState.wheels.size(), 1u);
    EXPECT_EQ(describe(engineState.wheels[0].actions[7]), "Funkcja 8{click 8 1}");
}

TEST_F(FilesWriter, ExistingFilesAreNeverTouched) {
    folder.write("config.json", "");
    folder.write("voice.json", "my own");
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.read("config.json"), "");
    EXPECT_EQ(folder.read("default.json"), firstWheels());
    EXPECT_EQ(folder.read("voice.json"), "my own");
}

TEST_F(FilesWriter, EscapesOnlyWhatMustBe) {
    EXPECT_EQ(escapeJsonString(u"\t\n\r\"\\"), R"(\t\n\r\"\\)");
    EXPECT_EQ(escapeJsonString(u"\0\b\f\x07\x1F"s), R"(\u0000\u0008\u000c\u0007\u001f)");
    EXPECT_EQ(escapeJsonString(u"/ \x7F\x80łŻ"), "/ \x7F\xC2\x80łŻ");
    EXPECT_EQ(escapeJsonString(u"\xD83D\xDE00\xD83D"), "\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST_F(FilesWriter, WritesTheCanonicalLayout) {
    EXPECT_EQ(serializeWheels({}), "{\n  \"wheels\": [\n  ]\n}\n");
    std::vector<Wheel> wheels = richWheels();
    wheels[0].actions[0].name = u"Przełącz okno";
    wheels[0].actions[0].steps[2].value = 7; // a release keeps no value
    wheels[1].actions.clear();
    EXPECT_EQ(serializeWheels(wheels), R"({
  "wheels": [
    {
      "name": "Koło \"1\"",
      "actions": [
        { "name": "Przełącz okno", "color": "#E74C3C", "delay": 0, "icon": "icons\\a.png", "voice": "przełącz okno",
          "steps": [
            { "key": "alt", "action": "hold", "value": 0 },
            { "key": "Tab", "action": "click", "value": 100 },
            { "key": "alt", "action": "release" },
            { "open": "C:\\a b\\ż.exe" }
          ]
        },
        { "name": "",
          "steps": [
          ]
        }
      ]
    },
    {
      "name": "",
      "actions": [
      ]
    }
  ]
}
)");
}

TEST_F(FilesWriter, WhatItWritesReadsBackTheSameButForWhatTheReaderDrops) {
    std::vector<Wheel> wheels = richWheels();
    EXPECT_EQ(reread(wheels), wheels);
    wheels.insert(wheels.begin(), Wheel{u"bez pól", {}});
    EXPECT_EQ(reread(wheels), richWheels());
    EXPECT_EQ(problems, u"");
    EXPECT_EQ(reread({{u"W", std::vector<WheelAction>(25)}}).at(0).actions.size(), 24u);
    EXPECT_NE(problems, u"");
}

TEST_F(FilesWriter, AFailedWriteLeavesTheOldFileWholeAndNothingBehind) {
    const std::u16string path = folder.write("wheels.json", "stara treść");
    for (const std::size_t room : {0u, 5u}) {
        setSimulatedDiskRoom(room);
        writeTextFile(path, "nowa treść");
        EXPECT_EQ(folder.read("wheels.json"), "stara treść");
    }
    setSimulatedDiskRoom(60); // config.json fits, the next does not
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.read("config.json").size(), 52u);
    EXPECT_EQ(folder.fileCount(), 2u);
    setSimulatedDiskRoom(std::nullopt);
    writeTextFile(path, "nowa");
    EXPECT_EQ(folder.read("wheels.json"), "nowa");
    writeTextFile(folder.path("missing/file.json"), "x"); // reports nothing
    EXPECT_EQ(folder.fileCount(), 2u);
}

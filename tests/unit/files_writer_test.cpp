#include "files/first_run_files.h"
#include "files/key_names.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"
#include "files_support.h"
#include "platform/files.h"

namespace {

const char* const firstWheels = R"({
  "wheels": [
    {
      "name": "Kolo 1",
      "actions": [
        { "name": "Funkcja 1", "key": "1" },
        { "name": "Funkcja 2", "key": "2" },
        { "name": "Funkcja 3", "key": "3" },
        { "name": "Funkcja 4", "key": "4" },
        { "name": "Funkcja 5", "key": "5" },
        { "name": "Funkcja 6", "key": "6" },
        { "name": "Funkcja 7", "key": "7" },
        { "name": "Funkcja 8", "key": "8" }
      ]
    }
  ]
}
)";

const char* const firstVoiceFunctions = R"({
  "actions": [
    { "name": "Przełącz okno", "voice": "przełącz okno",
      "steps": [ { "key": "alt", "action": "hold" },
                 { "key": "tab", "action": "click" },
                 { "key": "alt", "action": "release" } ] }
  ]
}
)";

ActionStep step(StepKind kind, const std::u16string& text, std::int32_t value) {
    ActionStep made;
    made.kind = kind;
    made.value = value;
    (kind == StepKind::open ? made.target : made.key.text) = text;
    if (kind != StepKind::open) {
        made.key = parseKeyCode(text);
    }
    return made;
}

/// Two wheels with everything a file can hold.
std::vector<Wheel> richWheels() {
    WheelAction all;
    all.name = u"Przełącz \"okno\"\n\\\x07\x1F\x7F/\xD83D\xDE00";
    all.steps = {step(StepKind::hold, u"alt", 0), step(StepKind::click, u"Tab", 100),
                 step(StepKind::release, u"alt", 0), step(StepKind::open, u"C:\\a b\\ż.exe", 1)};
    all.delay = 0;
    all.color = 0x3C4CE7;
    all.hasColor = true;
    all.icon = u"icons\\a.png";
    all.voice = u"przełącz okno";
    WheelAction bare;
    bare.name = u"";
    return {{u"Koło 1", {all, bare}}, {u"", {bare}}};
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
    std::string saved(const std::string& json) {
        std::vector<Wheel> read;
        loadWheelFile(folder.write("read.json", json), read, problems);
        return serializeWheels(read);
    }

    std::u16string problems;
};

} // namespace

TEST_F(FilesWriter, AFreshFolderGetsThreeFilesThatLoadWithoutAProblem) {
    loadConfiguration(problems);
    EXPECT_EQ(problems, u"");
    EXPECT_EQ(folder.read("config.json"), "{\n  \"segmentColor\": \"#3498DB\",\n  \"toggleKey\": \"x\"\n}\n");
    EXPECT_EQ(std::filesystem::file_size(folder.at("config.json")), 52u);
    EXPECT_EQ(folder.read("default.json"), firstWheels);
    EXPECT_EQ(folder.read("voice.json"), firstVoiceFunctions);
    EXPECT_EQ(folder.fileCount(), 3u);
    EXPECT_EQ(describe(engineState.voiceActions),
              "Przełącz okno{hold alt 0, click tab 1, release alt 0} voice=przełącz okno");
    ASSERT_EQ(engineState.wheels.size(), 1u);
    EXPECT_EQ(describe(engineState.wheels[0].actions[7]), "Funkcja 8{click 8 1}");
}

TEST_F(FilesWriter, ExistingFilesAreNeverTouched) {
    folder.write("config.json", "");
    folder.write("voice.json", "my own");
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.read("config.json"), "");
    EXPECT_EQ(folder.read("default.json"), firstWheels);
    EXPECT_EQ(folder.read("voice.json"), "my own");
}

TEST_F(FilesWriter, EscapesOnlyWhatMustBe) {
    using namespace std::string_literals;
    const std::pair<std::u16string, std::string> cases[] = {
        {u"", ""},
        {u"\t\n\r\"\\", R"(\t\n\r\"\\)"},
        {u"\0\b\f\x07\x1F"s, R"(\u0000\u0008\u000c\u0007\u001f)"},
        {u"/ \x7F\x80łŻ", "/ \x7F\xC2\x80łŻ"},
        {u"\xD83D\xDE00\xD83D", "\xF0\x9F\x98\x80\xEF\xBF\xBD"},
    };
    for (const auto& [text, escaped] : cases) {
        EXPECT_EQ(escapeJsonString(text), escaped);
    }
}

TEST_F(FilesWriter, WritesTheCanonicalLayout) {
    EXPECT_EQ(serializeWheels({}), "{\n  \"wheels\": [\n  ]\n}\n");
    WheelAction full;
    full.name = u"Przełącz okno";
    full.color = 0x3C4CE7;
    full.hasColor = true;
    full.delay = 50;
    full.voice = u"przełącz okno";
    full.steps = {step(StepKind::hold, u"alt", 0), step(StepKind::click, u"tab", 1),
                  step(StepKind::release, u"alt", 7)};
    WheelAction icon;
    icon.name = u"i";
    icon.icon = u"i\\n.png";
    icon.delay = 0;
    icon.steps = {step(StepKind::open, u"http://a", 1)};
    const std::vector<Wheel> wheels{{u"Koło \"1\"", {full, icon, WheelAction()}}, {u"", {}}};
    EXPECT_EQ(serializeWheels(wheels), R"({
  "wheels": [
    {
      "name": "Koło \"1\"",
      "actions": [
        { "name": "Przełącz okno", "color": "#E74C3C", "delay": 50, "voice": "przełącz okno",
          "steps": [
            { "key": "alt", "action": "hold", "value": 0 },
            { "key": "tab", "action": "click", "value": 1 },
            { "key": "alt", "action": "release" }
          ]
        },
        { "name": "i", "delay": 0, "icon": "i\\n.png",
          "steps": [
            { "open": "http://a" }
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

TEST_F(FilesWriter, WhatItWritesReadsBackTheSame) {
    const std::vector<Wheel> wheels = richWheels();
    EXPECT_EQ(reread(wheels), wheels);
    EXPECT_EQ(problems, u"");
}

TEST_F(FilesWriter, ReaderAndWriterDisagreeWhereTheyShould) {
    std::vector<Wheel> wheels = richWheels();
    wheels.insert(wheels.begin(), Wheel{u"bez pól", {}});
    EXPECT_EQ(reread(wheels), richWheels());
    EXPECT_EQ(problems, u"");

    wheels = {{u"W", std::vector<WheelAction>(25)}};
    EXPECT_EQ(reread(wheels).at(0).actions.size(), 24u);
    EXPECT_EQ(utf8FromUtf16(problems),
              "default.json: zbyt wiele funkcji w kole \"W\" — używam pierwszych 24.\n");

    const auto field = [](const std::string& members, const std::string& steps) {
        return "{\n  \"wheels\": [\n    {\n      \"name\": \"\",\n      \"actions\": [\n        { " +
               members + ",\n          \"steps\": [\n" + steps +
               "          ]\n        }\n      ]\n    }\n  ]\n}\n";
    };
    const std::pair<std::string, std::string> cases[] = {
        {R"({"actions":[{"key":5}]})",
         field(R"("name": "")", "            { \"key\": \"5\", \"action\": \"click\", \"value\": 1 }\n")},
        {R"({"actions":[{"steps":[{"key":" A ","action":"PUSC","value":9}],"name":"\u0041\u007f/"}]})",
         field("\"name\": \"A\x7F/\"", "            { \"key\": \"A\", \"action\": \"release\" }\n")},
        {R"({"actions":[{"color":"#e74c3c","other":1,"name":"a","name":"b","steps":[{},{"key":"?nic"}]}]})",
         field(R"("name": "a", "color": "#E74C3C")", "")},
        {R"({"actions":[{"delay":30,"steps":[{"value":7,"open":"o","key":"a"}]}]})",
         field(R"("name": "")", "            { \"open\": \"o\" }\n")},
    };
    for (const auto& [json, written] : cases) {
        EXPECT_EQ(saved(json), written) << json;
    }
}

TEST_F(FilesWriter, AFailedWriteLeavesTheOldFileWholeAndNothingBehind) {
    const std::u16string path = folder.write("wheels.json", "stara treść");
    for (const std::size_t room : {0u, 5u}) {
        setSimulatedDiskRoom(room);
        writeTextFile(path, "nowa treść");
        EXPECT_EQ(folder.read("wheels.json"), "stara treść");
        EXPECT_EQ(folder.fileCount(), 1u);
    }
    setSimulatedDiskRoom(std::nullopt);
    writeTextFile(path, "nowa");
    EXPECT_EQ(folder.read("wheels.json"), "nowa");
    EXPECT_EQ(folder.fileCount(), 1u);
}

TEST_F(FilesWriter, AFullDiskAtTheFirstRunLeavesNoCutFile) {
    setSimulatedDiskRoom(60); // config.json fits, the next does not
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.fileCount(), 1u);
    EXPECT_TRUE(std::filesystem::exists(folder.at("config.json")));
}

TEST_F(FilesWriter, WhereNothingCanBeWrittenNothingHappens) {
    writeTextFile(folder.path("missing/file.json"), "x");
    writeTextFile(folder.path(), "x");
    writeTextFile(u"", "x");
    EXPECT_EQ(folder.fileCount(), 0u);
    EXPECT_TRUE(std::filesystem::is_directory(folder.at("")));
}

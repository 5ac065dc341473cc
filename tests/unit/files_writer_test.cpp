#include "engine_test.h"
#include "files/first_run_files.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"

TEST_F(EngineTest, AFreshFolderGetsThreeFilesThatLoadWithoutAProblemAndExistingOnesAreNeverTouched) {
    std::u16string problems;
    loadConfiguration(problems);
    EXPECT_EQ(problems, u"");
    EXPECT_EQ(describe(engineState.voiceActions),
              "Przełącz okno{hold alt 0, click tab 1, release alt 0} voice=przełącz okno");
    EXPECT_EQ(engineState.wheels.at(0).actions.size(), 8u);
    EXPECT_TRUE(describe(engineState.wheels).ends_with("Funkcja 8{click 8 1}]"));
    const std::string wheels = folder.read("default.json");
    std::filesystem::remove(folder.at("default.json"));
    folder.write("config.json", "");
    folder.write("voice.json", "my own");
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.read("config.json") + folder.read("voice.json"), "my own");
    EXPECT_EQ(folder.read("default.json"), wheels);
}

TEST_F(EngineTest, WheelsAreWrittenInTheCanonicalLayoutAndReadBackTheSame) {
    const std::string written = R"({
  "wheels": [
    {
      "name": "Koło \"1\"",
      "actions": [
        { "name": "Przełącz\n\u0007\u001f", "color": "#E74C3C", "delay": 0, "icon": "icons\\a.png", "voice": "okno",
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
    }
  ]
}
)";
    std::vector<Wheel> wheels;
    std::u16string problems;
    EXPECT_TRUE(loadWheelFile(folder.write("koła.json", written), wheels, problems));
    EXPECT_EQ(describe(wheels),
              "Koło \"1\"[Przełącz\n\x07\x1F{hold alt 0, click Tab 100, release alt 0, open C:\\a b\\ż.exe "
              "1} delay=0 bgr=3C4CE7 icon=icons\\a.png voice=okno; {}]");
    wheels[0].actions[0].steps[2].value = 7; // a release keeps no value
    EXPECT_EQ(serializeWheels(wheels), written);
    EXPECT_EQ(serializeWheels({{u"b", {}}}),
              "{\n  \"wheels\": [\n    {\n      \"name\": \"b\",\n      \"actions\": [\n"
              "      ]\n    }\n  ]\n}\n");
    EXPECT_EQ(escapeJsonString(u"\t\r\0\b/ \x7F\x80ł\xD83D"s), "\\t\\r\\u0000\\u0008/ \x7F\xC2\x80ł\uFFFD");
}

TEST_F(EngineTest, AFailedWriteLeavesTheOldFileWholeAndNothingBehind) {
    const std::u16string path = folder.write("wheels.json", "stara treść");
    for (const std::size_t room : {0u, 5u}) {
        setSimulatedDiskRoom(room);
        writeTextFile(path, "nowa treść");
        EXPECT_EQ(folder.read("wheels.json"), "stara treść");
    }
    setSimulatedDiskRoom(60); // config.json fits, the next does not
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.folder), {}), 2);
    setSimulatedDiskRoom(std::nullopt);
    writeTextFile(path, "nowa");
    EXPECT_EQ(folder.read("wheels.json"), "nowa");
}

#include "engine_test.h"
#include "files/first_run_files.h"
#include "files/key_names.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"

#include <sstream>

namespace {

class FilesWheels : public EngineTest {
protected:
    /// Loads each row in place of the "%"; it means what its result says in place of that one's, with "!" for
    /// each line of problems.
    void check(const char* table, const std::string& around, const std::string& aroundMeaning) {
        for (const auto& [json, expected] : rowsOf(table)) {
            wheels.resize(2); // must not survive, whatever the file holds
            const bool isGood = load(replaced(around, {{"%", json}}));
            const std::string marks(static_cast<std::size_t>(std::ranges::count(problems, u'\n')), '!');
            EXPECT_EQ(isGood, marks.empty()) << json;
            const std::size_t end = expected.find_last_not_of(" !") + 1;
            EXPECT_EQ(describe(wheels) + marks,
                      replaced(aroundMeaning, {{"%", expected.substr(0, end)}}) +
                          expected.substr(std::min(expected.find('!'), expected.size())))
                << json;
        }
    }

    bool load(const std::string& bytes) {
        problems.clear();
        return loadWheelFile(folder.write("koła.json", bytes), wheels, problems);
    }

    std::vector<Wheel> wheels;
    std::u16string problems;
};

std::string listOf(const std::string& item, std::size_t count) {
    return repeated(item + ",", count - 1) + item;
}

std::string textOfKey(const KeyCode& key) {
    const std::string kind = key.isMouse ? "button" : key.extended ? "extended" : "";
    return key.valid ? kind + std::to_string(key.isMouse ? key.mouseButton : key.vk) : "none";
}

constexpr char roots[] = R"(
    {"actions":[]} ->   {"wheels":[],"actions":[{"key":"b"}]} -> 
    {"wheels":5,"actions":[{"key":"a"}]} -> [{click a 1}]
    {"wheels":[{"name":"A","actions":[{}]},{"name":"B","actions":[]},{"name":5,"actions":[{}]}]} -> A[{}] [{}]
    {"wheels":[{"name":"x"},{"actions":5},[],7,{"name":"B","actions":[{}]}]} -> B[{}] !!!!
    {"wheels":[],"wheels":[{"actions":[{}]}]} ->   {"Wheels":[{"actions":[{}]}]} -> !
    {"wheels":{},"actions":{}} -> !  {"actions":[5,"s",null,[1],{}]} -> [{}; {}; {}; {}; {}]
    {"actions":[{}]} x -> !  [] -> !)";

constexpr char fieldForms[] = R"(
    "key":["a","b"] -> {click a 1, click b 1}  "keys":["a","nic","LMB"] -> {click a 1, click LMB 1} !
    "keys":"a" -> {click a 1}  "keys":[],"key":"a" -> {}  "keys":null,"key":"a" -> {} !
    "steps":[],"key":"a" -> {}  "steps":"a","key":"a","keys":["b"] -> {}  "key":5.7 -> {click 5 1}
    "key":[["a"]] -> {} !  "Key":"a" -> {}  "delay":2001 -> {} delay=2000  "delay":1e10 -> {} delay=0
    "delay":12.9 -> {} delay=12  "delay":"10","color":5,"icon":5,"voice":[] -> {}
    "color":"#e74C3C" -> {} bgr=3C4CE7  "color":"red" -> {}
    "icon":"icons\\a.png","voice":" Raz dwa" -> {} icon=icons\a.png voice= Raz dwa)";

constexpr char stepForms[] = R"(
    {"key":"a"} -> click a 1  {"key":7,"action":"KLIK"} -> click 7 1
    {"key":"a","action":"click","value":0} -> click a 1  {"key":"a","value":101} -> click a 100
    {"key":"a","value":"7"} -> click a 1  {"key":"a","action":"hold"} -> hold a 0
    {"key":"a","action":"Przytrzymaj","value":60001} -> hold a 60000
    {"key":"a","action":"hold","value":-5} -> hold a 0
    {"key":"a","action":"release","value":70000} -> release a 70000
    {"key":"a","action":"pusc","value":-1},{"key":"b","action":"puść"} -> release a 0, release b 0
    {"key":"a","action":"Press","value":3} -> click a 3 !  {"key":"nic","action":"nic"} -> !!
    {"action":"hold"},5,"a",null,[],{} ->   {"key":true} -> !  {"open":"","key":"a"},{"open":5,"key":"a"} -> 
    {"open":"notepad","key":"nic","action":"nic","value":9} -> open notepad 1
    {"key":"a"},{"key":"nic"},{"key":"b","action":"hold"} -> click a 1, hold b 0 !)";

} // namespace

TEST_F(FilesWheels, FilesFieldsAndStepsMeanWhatTheTablesSay) {
    check(roots, "%", "%");
    check(fieldForms, R"({"actions":[{%}]})", "[%]");
    check(stepForms, R"({"actions":[{"steps":[%]}]})", "[{%}]");
    EXPECT_TRUE(load("\xEF\xBB\xBF{\"actions\":[{\"name\":\"a\xC5z\"}]}\r\n"));
    EXPECT_EQ(describe(wheels), "[a\uFFFDz{}]");
    EXPECT_FALSE(load("\xFF\xFE{\"actions\":[{}]}"));
}

TEST_F(FilesWheels, LinesAboutProblemsNameWhatIsWrong) {
    EXPECT_FALSE(load(
        R"({"wheels": [7, {"name": "W", "actions": [)" + listOf("{}", 24) +
        R"(, {"name": "f", "key": " Nic "}, {"steps": [{"key": 1e10, "action": "Bum"}]}]}, {"actions": [{}]}]})"));
    EXPECT_EQ(utf8FromUtf16(problems),
              "default.json: koło bez tablicy \"actions\".\n"
              "default.json: nieznany klawisz \" Nic \" dla pola \"f\".\n"
              "default.json: nieznany klawisz \"-2147483648\" dla pola \"\".\n"
              "default.json: nieznana czynność \"bum\" w polu \"\".\n"
              "default.json: zbyt wiele funkcji w kole \"W\" — używam pierwszych 24.\n");
    EXPECT_EQ(describe(wheels), "W[" + repeated("{}; ", 23) + "{}] [{}]");
    EXPECT_FALSE(load("{}"));
    EXPECT_EQ(utf8FromUtf16(problems), "default.json: brak \"wheels\" ani \"actions\".\n");
    EXPECT_FALSE(load(""));
    EXPECT_EQ(utf8FromUtf16(problems),
              "Nie udało się wczytać pliku kół: " + folder.at("koła.json").string() + "\n");
    EXPECT_TRUE(load("{\"actions\":[" + listOf("{}", 24) + "]}"));
}

TEST_F(FilesWheels, HugeFilesAreReadAndDoNotFillTheMemoryWithLines) {
    constexpr std::size_t stepCount = 200'000;
    EXPECT_TRUE(load("{\"actions\":[{\"steps\":[" + listOf("{\"key\":\"a\"}", stepCount) + "]}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).steps.size(), stepCount);
    const std::string name(2'000'000, 'n');
    EXPECT_FALSE(load("{\"actions\":[{\"name\":\"" + name + "\",\"keys\":[" + listOf("{}", 50) + "]}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).name.size(), name.size());
    EXPECT_TRUE(problems.size() > name.size() && problems.size() < 20'000'000u);
}

TEST_F(EngineTest, KeysAreNamedOrLookedUpOnTheLayout) {
    setSimulatedLayoutKey(u'ü', 0xDB);
    setSimulatedLayoutKey(u'7', 0x99);
    std::istringstream names(
        R"(x=88 X=88 7=55 f=70 !=49 ą=65 ü=219 f1=112 F1=112 f1x=112 f01=112 F24=135 space=32 SPACJA=32
        Enter=13 tab=9 esc=27 escape=27 capslock=20 caps=20 backspace=8 shift=16 ctrl=17 alt=18
        up=extended38 down=extended40 left=extended37 right=extended39 insert=extended45 delete=extended46
        home=extended36 end=extended35 pageup=extended33 pagedown=extended34 win=extended91 prtsc=extended44
        printscreen=extended44 volumeup=extended175 volumedown=extended174 volumemute=extended173
        playpause=extended179 nexttrack=extended176 prevtrack=extended177 LMB=button0 lpm=button0
        rmb=button1 ppm=button1 mmb=button2 mpm=button2 mb4=button3 Mouse4=button3 mb5=button4
        mouse5=button4 f0=none F25=none f99=none f12x=none f-1=none fx=none del=none  x=none 55=none Ü=none
        я=none)");
    for (std::string each; names >> each;) {
        const std::size_t end = each.find('=', 1);
        EXPECT_EQ(textOfKey(parseKeyCode(utf16FromUtf8(each.substr(0, end)))), each.substr(end + 1)) << each;
    }
    EXPECT_EQ(textOfKey(parseKeyCode(u"\v\f\r\n\tX ")), "88");
    for (const char16_t* const token : {u"", u"page up", u"\xD83D"})
        EXPECT_EQ(textOfKey(parseKeyCode(token)), "none");
    EXPECT_EQ(parseKeyCode(u" Nie ma ").text, u"Nie ma");
}

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

TEST_F(FilesWheels, WheelsAreWrittenInTheCanonicalLayoutAndReadBackTheSame) {
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
    EXPECT_TRUE(load(written));
    EXPECT_EQ(describe(wheels),
              "Koło \"1\"[Przełącz\n\x07\x1F{hold alt 0, click Tab 100, release alt 0, open C:\\a b\\ż.exe "
              "1} delay=0 bgr=3C4CE7 icon=icons\\a.png voice=okno; {}]");
    wheels[0].actions[0].steps[2].value = 7; // a release keeps no value
    EXPECT_EQ(serializeWheels(wheels), written);
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

#include "engine_test.h"
#include "files/key_names.h"
#include "files/wheel_files.h"

#include <sstream>

namespace {

class FilesWheels : public EngineTest {
protected:
    /// Loads each row between `before` and `after`; it means what its result says, with "!" for each line of
    /// problems.
    void check(const char* table, const std::string& before, const std::string& after,
               const std::string& front, const std::string& back) {
        for (const auto& [json, expected] : rowsOf(table)) {
            wheels.resize(2); // must not survive, whatever the file holds
            const bool isGood = load(before + json + after);
            const std::size_t end = expected.find_last_not_of('!') + 1;
            EXPECT_EQ(isGood, end == expected.size()) << json;
            EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(problems, u'\n')), expected.size() - end)
                << json;
            const std::string meaning = expected.substr(0, end);
            EXPECT_EQ(describe(wheels), front + meaning.substr(0, meaning.find_last_not_of(' ') + 1) + back)
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
    check(roots, "", "", "", "");
    check(fieldForms, "{\"actions\":[{", "}]}", "[", "]");
    check(stepForms, "{\"actions\":[{\"steps\":[", "]}]}", "[{", "}]");
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

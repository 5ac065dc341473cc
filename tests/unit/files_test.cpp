#include "engine_test.h"
#include "files/first_run_files.h"
#include "files/json_reader.h"
#include "files/key_names.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "files/wheel_writer.h"

#include <sstream>

using namespace rotika;

namespace {

std::string shown(const JsonValue& value) {
    std::ostringstream text;
    text.precision(17);
    for (const JsonValue& item : value.items)
        text << shown(item) << ",";
    for (const JsonMember& member : value.members)
        text << utf8FromUtf16(member.key) << ":" << shown(member.value) << ",";
    if (value.type == JsonType::Number)
        text << value.number + 0; // no negative zero
    const char* const opening[] = {"null", value.boolean ? "true" : "false", "", "'", "[", "{"};
    const char* const closing[] = {"", "", "", "'", "]", "}"};
    const auto type = static_cast<int>(value.type);
    return opening[type] + text.str() + utf8FromUtf16(value.text) + closing[type];
}

/// The parsed document, or "!" if it is rejected.
std::string read(const std::u16string& text) {
    JsonCursor cursor{text};
    JsonValue root;
    if (!parseValue(cursor, root))
        return "!";
    skipWhitespace(cursor);
    return cursor.pos == text.size() ? shown(root) : "!";
}

constexpr char documents[] = R"rows(
    {} -> {}  { "a" : 1 , "b" : [ true , false , null ], "a":"x" } -> {a:1,b:[true,false,null,],a:'x',}
    [[],{},[{}]] -> [[],{},[{},],]  [ [ ] ,{ } ,[{}]] -> [[],{},[{},],]
    # numbers: the longest valid prefix
    0 -> 0  - -> 0  + -> 0  . -> 0  e -> 0  --5 -> 0  +-5 -> 0  -+5 -> 0  .e5 -> 0  1e-999 -> 0  0e999 -> 0
    1. -> 1  1-2 -> 1  1e -> 1  1e+ -> 1  -12.5 -> -12.5  -12.5.3 -> -12.5  007 -> 7  +7 -> 7  1e5e5 -> 100000
    1E+5 -> 100000  1e999 -> inf  1e99999999999999999999 -> inf  -1e999 -> -inf
    "\u0041\u017cÓ\uD83D\uDE00\ud83d" -> 'AżÓ😀�'
    <tiny> -> 0  <tiny>e401 -> 1  <tiny>e999 -> inf  <nines> -> inf
    # white space; an escape takes any four characters and reads the hexadecimal prefix
    <t>{<r><n>} -> {}  "\"\/\\\b\f\n\r\traw<n><0>" -> '"/\<b><f><n><r><t>raw<n><0>'
    "\uZZZZ" -> '<0>'  "\u"]}"" -> '<0>'  "\u12G4x" -> '<12>x'  "\u 12Gx" -> '<12>x'  "\u-001" -> '<ffff>'
    # rejected
    <t> -> !  <feff>{} -> !  <a0>{} -> !  [<v>1] -> !  [<0>] -> !
    {}{} -> !  {"a":1} x -> !  ] -> !  {"a":1,} -> !  [1,] -> !  [,1] -> !  [,] -> !  {,} -> !  [true false] -> !
    {"a" 1} -> !  {"a":} -> !  {"a"} -> !  {a:1} -> !  {1:1} -> !  {} // comment -> !  { -> !  {"a" -> !
    {"a": -> !  {"a":1 -> !  {"a":1, -> !  {"a":1] -> !  [ -> !  [1 -> !  [1} -> !  tru -> !  True -> !  NULL -> !
    NaN -> !  nullx -> !  "a -> !  " -> !  "\ -> !  "\" -> !  "\x41" -> !  "\u00" -> !  "\ " -> !)rows";

TEST(FilesJson, CompleteDocumentsAreReadLenientlyAndOthersRejected) {
    const std::string tiny = "0." + std::string(400, '0') + "1";
    for (const auto& row : rowsOf(replaced(documents, {"<tiny>", tiny, "<nines>", std::string(400, '9')}))) {
        const auto unnamed = [](const std::string& text) {
            return replaced(text, {"<0>",  "\0"s,    "<b>",    "\b",     "<t>",    "\t",    "<n>",  "\n",
                                   "<v>",  "\v",     "<f>",    "\f",     "<r>",    "\r",    "<12>", "\x12",
                                   "<a0>", "\u00A0", "<feff>", "\uFEFF", "<ffff>", "\uFFFF"});
        };
        EXPECT_EQ(read(utf16FromUtf8(unnamed(row.first))), unnamed(row.second)) << row.first;
    }
}

TEST(FilesJson, DeepNestingIsParsedAndDestroyedAndNumbersAreTruncated) {
    for (const auto& [number, integer] : rowsOf(R"(
        99.9 -> 99  -99.9 -> -99  2147483647.9 -> 2147483647  2147483648 -> -2147483648  -3e9 -> -2147483648
        inf -> -2147483648  nan -> -2147483648)"))
        EXPECT_EQ(std::to_string(integerOf(std::stod(number))), integer) << number;
    JsonValue root;
    constexpr std::size_t depth = 300'000;
    EXPECT_EQ(read(std::u16string(depth, u'[')), "!");
    const std::u16string nested = std::u16string(depth, u'[') + std::u16string(depth, u']');
    JsonCursor deepCursor{nested};
    EXPECT_TRUE(parseValue(deepCursor, root));
    root = JsonValue(); // assignment destroys the old tree as well
}

/// One "!" per line.
std::string marksOf(const std::string& lines) {
    return std::string(static_cast<std::size_t>(std::ranges::count(lines, '\n')), '!');
}

class FilesSettings : public EngineTest {
protected:
    /// Loads the configuration; returns its problems.
    static std::string load() {
        std::u16string problems;
        loadConfiguration(problems);
        return utf8FromUtf16(problems);
    }
    std::string load(const std::string& config) const { return folder.write("config.json", config), load(); }

    static std::string settings() {
        const EngineConfig& c = engineConfig;
        std::ostringstream text;
        text << "color=" << c.segmentColor << " key=" << utf8FromUtf16(c.toggleKey) << " send=" << c.sendDelay
             << " hold=" << c.keyHold << " dwell=" << c.gazeDwell << " focus=" << c.takeFocus
             << " gaze=" << c.gazeEnabled << " tobii=" << utf8FromUtf16(c.gazeDllPath)
             << " voice=" << c.voiceEnabled << " global=" << c.voiceGlobal
             << " model=" << utf8FromUtf16(c.voiceModel) << " vosk=" << utf8FromUtf16(c.voiceDllPath);
        return text.str();
    }

    /// The settings that differ from the defaults, and "!" for each problem.
    std::string changes(const std::string& problems) const {
        std::istringstream before(fresh);
        std::istringstream now(settings());
        std::string text;
        for (std::string old, each; before >> old && now >> each;)
            text += old == each ? "" : each + " ";
        text += marksOf(problems);
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }

    const std::string fresh = settings();
};

constexpr char files[] = R"(
    {"unknown":1,"SendDelay":1} ->
    {"segmentColor":"#abcDEF","toggleKey":"F5","sendDelay":1,"keyHold":2,"takeFocus":true} -> color=15715755 key=F5 send=1 hold=2 focus=1
    {"gazeEnabled":false,"gazeDwell":3,"gazeDllPath":"g"} -> dwell=3 gaze=0 tobii=g
    {"voiceEnabled":false,"voiceGlobal":false,"voiceModel":"m","voiceDllPath":"v"} -> voice=0 global=0 model=m vosk=v
    {"sendDelay":2001,"keyHold":1001,"gazeDwell":10001} -> send=2000 hold=1000 dwell=10000
    {"sendDelay":-1,"keyHold":1e10,"gazeDwell":1e999} -> send=0 hold=0 dwell=0
    {"sendDelay":99.9,"sendDelay":5} -> send=99
    {"sendDelay":"60","keyHold":"6","gazeDwell":[],"takeFocus":1,"gazeEnabled":0,"gazeDllPath":5,"toggleKey":5} ->
    {"voiceEnabled":null,"voiceGlobal":"false","voiceModel":7,"voiceDllPath":{}} ->
    {"sendDelay":"5","sendDelay":5,"voiceModel":"","gazeDllPath":""} ->
    {"segmentColor":null} -> !  {"segmentColor":"3498DB"} -> !  {"segmentColor":"#3498DBF"} -> !
    {"segmentColor":"#3498D"} -> !  {"segmentColor":"#-3498D"} -> !  {"toggleKey":"lmb"} -> !
    {"toggleKey":" nic ","segmentColor":"","keyHold":7} -> hold=7 !!
    {"sendDelay":1} x -> !  [] -> !)";

TEST_F(FilesSettings, AFileChangesOnlyTheValidSettingsThatItContains) {
    for (const auto& [config, expected] : rowsOf(files)) {
        resetEngineForTest();
        EXPECT_EQ(changes(load(config)), expected) << config;
        EXPECT_EQ(engineConfig.toggleKeyCode.text, engineConfig.toggleKey);
    }
    EXPECT_EQ(load("\xEF\xBB\xBF{\"gazeDllPath\":\"a\xFFz\",\"toggleKey\":\"Nic \",\"segmentColor\":7}"),
              "config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n"
              "config.json: nieznany klawisz \"Nic \" — używam \"x\".\n");
    EXPECT_EQ(engineConfig.gazeDllPath, u"a\uFFFDz");
}

TEST_F(FilesSettings, AReloadKeepsSettingsThatTheFileNoLongerContains) {
    EXPECT_EQ(load(R"({"sendDelay":5,"toggleKey":"F5","gazeDllPath":"g","voiceModel":"m"})"), "");
    EXPECT_EQ(load(R"({"keyHold":6,"voiceModel":""})"), "");
    EXPECT_EQ(changes(load("broken")), "key=F5 send=5 hold=6 tobii=g model=m !");
    std::filesystem::remove(folder.at("config.json")); // recreated with a colour and a key
    EXPECT_EQ(changes(load()), "send=5 hold=6 tobii=g model=m");
}

TEST_F(FilesSettings, ThereIsAlwaysAWheelAndVoiceFunctionsNeedAPhrase) {
    const std::string noWheels = "default.json: brak poprawnych kół — wyświetlam 6 pustych pól.\n";
    for (const char* wheels : {R"({"wheels":[]})", "7", ""}) {
        engineState.activeWheel = 3;
        folder.write("default.json", wheels);
        EXPECT_TRUE(load().ends_with(noWheels));
        EXPECT_EQ(describe(engineState.wheels), "[{}; {}; {}; {}; {}; {}]");
        EXPECT_EQ(engineState.activeWheel, 0);
    }
    folder.write("voice.json", R"({"wheels":[
        {"name":"A","actions":[{"name":"f","key":"a","voice":"raz"},{"name":"g","key":"b"}]},
        {"actions":[{"voice":"dwa"},{"voice":"","key":"c"},{"voice":5,"key":"ź!"}]}]})");
    EXPECT_TRUE(load().ends_with("default.json: nieznany klawisz \"ź!\" dla pola \"\".\n"));
    EXPECT_EQ(describe(engineState.voiceActions), "f{click a 1} voice=raz; {} voice=dwa");
    folder.write("voice.json", "broken");
    EXPECT_TRUE(load().ends_with(utf8FromUtf16(folder.path("voice.json")) + "\n"));
    EXPECT_TRUE(engineState.voiceActions.empty());
}

class FilesWheels : public EngineTest {
protected:
    /// Loads `around` with each row's input in place of "%"; expects `expectedAround` with the row's result
    /// in place of "%", and "!" for each problem.
    void check(const char* table, const std::string& around, const std::string& expectedAround) {
        for (const auto& [json, expected] : rowsOf(table)) {
            wheels.resize(2); // must be replaced by any file
            const bool isGood = load(replaced(around, {"%", json}));
            const std::string marks = marksOf(utf8FromUtf16(problems));
            EXPECT_EQ(isGood, marks.empty()) << json;
            const std::size_t end = expected.find_last_not_of(" !") + 1;
            EXPECT_EQ(describe(wheels) + marks,
                      replaced(expectedAround, {"%", expected.substr(0, end)}) +
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

TEST_F(FilesWheels, FilesFieldsAndStepsAreParsed) {
    check(roots, "%", "%");
    check(fieldForms, R"({"actions":[{%}]})", "[%]");
    check(stepForms, R"({"actions":[{"steps":[%]}]})", "[{%}]");
    EXPECT_TRUE(load("\xEF\xBB\xBF{\"actions\":[{\"name\":\"a\xC5z\"}]}\r\n"));
    EXPECT_EQ(describe(wheels), "[a\uFFFDz{}]");
    EXPECT_FALSE(load("\xFF\xFE{\"actions\":[{}]}"));
}

TEST_F(FilesWheels, AWheelHasAtMost24FieldsAndProblemsNameTheInvalidValue) {
    const std::string fields = "{\"name\": \"W\", \"actions\": [" + repeated("{},", 23) + "{}";
    EXPECT_TRUE(load(fields + "]}"));
    EXPECT_FALSE(load(R"({"wheels": [)" + fields + R"(, {"name": "f", "key": " Nic "}]}]})"));
    EXPECT_EQ(describe(wheels), "W[" + repeated("{}; ", 23) + "{}]");
    EXPECT_EQ(utf8FromUtf16(problems),
              "default.json: nieznany klawisz \" Nic \" dla pola \"f\".\n"
              "default.json: zbyt wiele funkcji w kole \"W\" — używam pierwszych 24.\n");
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
}

TEST_F(EngineTest, AnEmptyFolderGetsThreeValidFilesAndExistingFilesAreNeverChanged) {
    std::u16string problems;
    loadConfiguration(problems);
    EXPECT_EQ(problems, u"");
    EXPECT_EQ(describe(engineState.voiceActions),
              "Przełącz okno{hold alt 0, click tab 1, release alt 0} voice=przełącz okno");
    EXPECT_TRUE(describe(engineState.wheels).ends_with("Funkcja 8{click 8 1}]"));
    const std::string wheels = folder.read("default.json");
    std::filesystem::remove(folder.at("default.json"));
    folder.write("config.json", "");
    folder.write("voice.json", "my own");
    ensureDefaultFiles(folder.path());
    EXPECT_EQ(folder.read("config.json") + folder.read("voice.json"), "my own");
    EXPECT_EQ(folder.read("default.json"), wheels);
}

TEST_F(FilesWheels, WheelsAreWrittenInTheCanonicalLayoutAndReadBackEqual) {
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
    wheels[0].actions[0].steps[2].value = 7; // not written for a release
    EXPECT_EQ(serializeWheels(wheels), written);
    EXPECT_EQ(escapeJsonString(u"\t\r\0\b/ \x7F\x80ł\xD83D"s), "\\t\\r\\u0000\\u0008/ \x7F\xC2\x80ł\uFFFD");
}

} // namespace

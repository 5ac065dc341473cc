#include "core/engine_config.h"
#include "files/settings_file.h"
#include "files_support.h"

#include <sstream>

namespace {

const std::string unreadableLine = "Nie udało się wczytać config.json — używam ustawień domyślnych.\n";
const std::string colorLine = "config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n";
const std::string noActionsLine = "default.json: koło bez tablicy \"actions\".\n";
const std::string noFormLine = "default.json: brak \"wheels\" ani \"actions\".\n";
const std::string placeholderLine = "default.json: brak poprawnych kół — wyświetlam 6 pustych pól.\n";

std::string toggleLine(const std::string& token) {
    return "config.json: nieznany klawisz \"" + token + "\" — używam \"x\".\n";
}

class FilesSettings : public FilesTest {
protected:
    std::string load(const std::string& config) {
        folder.write("config.json", config);
        return load();
    }
    static std::string load() {
        std::u16string problems;
        loadConfiguration(problems);
        return utf8FromUtf16(problems);
    }
    std::string unreadable(const std::string& name) const {
        return "Nie udało się wczytać pliku kół: " + utf8FromUtf16(folder.path(name)) + "\n";
    }
};

/// Every setting in one line, to see at a glance what a file changed.
std::string settings() {
    const EngineConfig& c = engineConfig;
    std::ostringstream text;
    text << std::hex << std::uppercase << c.segmentColor << std::dec << ' ' << utf8FromUtf16(c.toggleKey)
         << ' ' << c.sendDelay << ' ' << c.keyHold << ' ' << c.gazeDwell << ' ' << c.takeFocus
         << c.gazeEnabled << c.voiceEnabled << c.voiceGlobal << " <" << utf8FromUtf16(c.gazeDllPath) << "> <"
         << utf8FromUtf16(c.voiceModel) << "> <" << utf8FromUtf16(c.voiceDllPath) << '>';
    return text.str();
}

const std::string switchesAndPaths = " 0111 <> <vosk-model-small-pl-0.22> <>";
const std::string defaults = "DB9834 x 250 60 900" + switchesAndPaths;

} // namespace

TEST(FilesColor, ReadsSixHexadecimalDigitsOnly) {
    const std::pair<std::u16string, RgbColor> good[] = {{u"#3498DB", 0xDB9834}, {u"#abcdef", 0xEFCDAB}};
    for (const auto& [text, expected] : good) {
        RgbColor color = 1;
        EXPECT_TRUE(parseHexColor(text, color));
        EXPECT_EQ(color, expected);
    }
    RgbColor color = 7;
    for (const std::u16string text :
         {u"", u"#", u"3498DB", u"#3498D", u"#3498DBF", u"#3498DG", u"#FFF", u"red", u"#-3498D", u"#３498DB"})
        EXPECT_FALSE(parseHexColor(text, color)) << utf8FromUtf16(text);
    EXPECT_EQ(color, 7u);
}

TEST_F(FilesSettings, AFileChangesOnlyWhatItSuppliesAndWhatPasses) {
    const struct {
        std::string config;
        std::string settings;
        std::string problems;
    } cases[] = {
        {"\xEF\xBB\xBF{ }\n", defaults, ""},
        {R"({"unknown":1,"SendDelay":1})", defaults, ""},
        {R"({"segmentColor":"#010203","toggleKey":"F5","sendDelay":1,"keyHold":2,"takeFocus":true,
             "gazeEnabled":false,"gazeDwell":3,"gazeDllPath":"g","voiceEnabled":false,"voiceGlobal":false,
             "voiceModel":"m","voiceDllPath":"v"})",
         "30201 F5 1 2 3 1000 <g> <m> <v>", ""},
        {R"({"sendDelay":2001,"keyHold":1001,"gazeDwell":10001})",
         "DB9834 x 2000 1000 10000" + switchesAndPaths, ""},
        {R"({"sendDelay":-1,"keyHold":1e10,"gazeDwell":1e999})", "DB9834 x 0 0 0" + switchesAndPaths, ""},
        {R"({"sendDelay":99.9,"sendDelay":5})", "DB9834 x 99 60 900" + switchesAndPaths, ""},
        {R"({"sendDelay":"60","keyHold":"60","gazeDwell":[],"takeFocus":1,"gazeEnabled":0,"gazeDllPath":5,
             "voiceEnabled":null,"voiceGlobal":"false","voiceModel":7,"voiceDllPath":{},"toggleKey":5})",
         defaults, ""},
        {R"({"sendDelay":"5","sendDelay":5,"voiceModel":"","gazeDllPath":""})", defaults, ""},
        {R"({"segmentColor":"3498DB","keyHold":7})", "DB9834 x 250 7 900" + switchesAndPaths, colorLine},
        {R"({"segmentColor":null})", defaults, colorLine},
        {R"({"toggleKey":"lmb"})", defaults, toggleLine("lmb")},
        {R"({"toggleKey":""})", defaults, toggleLine("")},
        {R"({"toggleKey":" nic ","segmentColor":""})", defaults, colorLine + toggleLine(" nic ")},
        {"", defaults, unreadableLine},
        {"{\"sendDelay\":1} x", defaults, unreadableLine},
        {"[]", defaults, unreadableLine},
        {"{\"sendDelay\":\xFF 1}", defaults, unreadableLine},
        {"{\"gazeDllPath\":\"a\xFFz\"}", "DB9834 x 250 60 900 0111 <a\uFFFDz> <vosk-model-small-pl-0.22> <>",
         ""},
    };
    for (const auto& example : cases) {
        resetEngineForTest();
        EXPECT_EQ(load(example.config), example.problems) << example.config;
        EXPECT_EQ(settings(), example.settings) << example.config;
        EXPECT_TRUE(engineConfig.toggleKeyCode.valid);
        EXPECT_EQ(engineConfig.toggleKeyCode.text, engineConfig.toggleKey);
    }
}

TEST_F(FilesSettings, AReloadKeepsWhatTheFileNoLongerSays) {
    EXPECT_EQ(load(R"({"sendDelay":5,"toggleKey":"F5","gazeDllPath":"g","voiceModel":"m"})"), "");
    EXPECT_EQ(load(R"({"keyHold":6,"voiceModel":""})"), "");
    EXPECT_EQ(load("broken"), unreadableLine);
    EXPECT_EQ(settings(), "DB9834 F5 5 6 900 0111 <g> <m> <>");
    EXPECT_EQ(engineConfig.toggleKeyCode.vk, 0x74);
    std::filesystem::remove(folder.at("config.json")); // it is made again, with a colour and a key
    EXPECT_EQ(load(), "");
    EXPECT_EQ(settings(), "DB9834 x 5 6 900 0111 <g> <m> <>");
}

TEST_F(FilesSettings, ALoadNeverEndsWithoutAWheel) {
    const std::pair<std::string, std::string> cases[] = {
        {R"({"wheels":[]})", ""},
        {R"({"wheels":[{"name":"x"}]})", noActionsLine},
        {"7", noFormLine},
        {"", unreadable("default.json")},
    };
    for (const auto& [wheels, firstLine] : cases) {
        engineState.activeWheel = 3;
        folder.write("default.json", wheels);
        EXPECT_EQ(load(), firstLine + placeholderLine);
        EXPECT_EQ(describe(engineState.wheels), "[{}; {}; {}; {}; {}; {}]");
        EXPECT_EQ(engineState.activeWheel, 0);
    }
    setSimulatedProgramFolder(folder.path("gone"));
    EXPECT_TRUE(load().starts_with(unreadableLine));
    EXPECT_EQ(describe(engineState.wheels), "[{}; {}; {}; {}; {}; {}]");
    EXPECT_EQ(engineConfig.toggleKeyCode.vk, 0x58);
}

TEST_F(FilesSettings, VoiceFunctionsAreFlattenedAndNeedAPhrase) {
    folder.write("voice.json", R"({"wheels":[
        {"name":"A","actions":[{"name":"f","key":"a","voice":"raz"},{"name":"g","key":"b"}]},
        {"actions":[{"voice":"dwa"},{"voice":"","key":"c"},{"voice":5,"key":"ź!"}]}]})");
    EXPECT_EQ(load(), "default.json: nieznany klawisz \"ź!\" dla pola \"\".\n");
    EXPECT_EQ(describe(engineState.voiceActions, "; "), "f{click a 1} voice=raz; {} voice=dwa");
    folder.write("voice.json", "broken");
    EXPECT_EQ(load(), unreadable("voice.json"));
    EXPECT_TRUE(engineState.voiceActions.empty());
}

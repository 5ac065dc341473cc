#include "core/engine_config.h"
#include "files/settings_file.h"
#include "files_support.h"

#include <sstream>

namespace {

const char* const unreadableLine = "Nie udało się wczytać config.json — używam ustawień domyślnych.\n";
const char* const colorLine = "config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n";

class FilesSettings : public FilesTest {
protected:
    std::string load(const std::string& config) {
        folder.write("config.json", config);
        return load();
    }
    std::string load() {
        std::u16string problems;
        loadConfiguration(problems);
        return utf8FromUtf16(problems);
    }
};

std::string toggleLine(const std::string& token) {
    return std::string("config.json: nieznany klawisz \"") + token + "\" — używam \"x\".\n";
}

/// Every setting in one line, to see at a glance what a file changed.
std::string settings() {
    const EngineConfig& c = engineConfig;
    std::ostringstream text;
    text << std::hex << std::uppercase << c.segmentColor << std::dec << ' ' << utf8FromUtf16(c.toggleKey)
         << ' ' << c.sendDelay << ' ' << c.keyHold << ' ' << c.takeFocus << c.gazeEnabled << ' '
         << c.gazeDwell << " <" << utf8FromUtf16(c.gazeDllPath) << "> " << c.voiceEnabled << c.voiceGlobal
         << " <" << utf8FromUtf16(c.voiceModel) << "> <" << utf8FromUtf16(c.voiceDllPath) << '>';
    return text.str();
}

const char* const defaults = "DB9834 x 250 60 01 900 <> 11 <vosk-model-small-pl-0.22> <>";

} // namespace

TEST(FilesColor, ReadsSixHexadecimalDigitsOnly) {
    const std::pair<std::u16string, RgbColor> good[] = {
        {u"#3498DB", 0xDB9834}, {u"#abcdef", 0xEFCDAB}, {u"#000000", 0}, {u"#FF0000", 0x0000FF}};
    for (const auto& [text, expected] : good) {
        RgbColor color = 1;
        EXPECT_TRUE(parseHexColor(text, color));
        EXPECT_EQ(color, expected);
    }
    for (const std::u16string text : {u"", u"#", u"3498DB", u"#3498D", u"#3498DBF", u"#3498DG", u"#FFF",
                                      u"red", u"# 3498D", u"#-3498D", u"#0x1234", u"#３498DB"}) {
        RgbColor color = 7;
        EXPECT_FALSE(parseHexColor(text, color)) << utf8FromUtf16(text);
        EXPECT_EQ(color, 7u);
    }
}

TEST_F(FilesSettings, AFileChangesOnlyWhatItSuppliesAndWhatPasses) {
    const struct {
        std::string config;
        std::string settings;
        std::string problems;
    } cases[] = {
        {"{}", defaults, ""},
        {"\xEF\xBB\xBF{ }\n", defaults, ""},
        {R"({"unknown":1,"SendDelay":1})", defaults, ""},
        {R"({"segmentColor":"#010203","toggleKey":"F5","sendDelay":1,"keyHold":2,"takeFocus":true,
             "gazeEnabled":false,"gazeDwell":3,"gazeDllPath":"g","voiceEnabled":false,"voiceGlobal":false,
             "voiceModel":"m","voiceDllPath":"v"})",
         "30201 F5 1 2 10 3 <g> 00 <m> <v>", ""},
        {R"({"sendDelay":2500,"keyHold":1001,"gazeDwell":10001})",
         "DB9834 x 2000 1000 01 10000 <> 11 <vosk-model-small-pl-0.22> <>", ""},
        {R"({"sendDelay":-1,"keyHold":1e10,"gazeDwell":1e999})",
         "DB9834 x 0 0 01 0 <> 11 <vosk-model-small-pl-0.22> <>", ""},
        {R"({"sendDelay":99.9,"sendDelay":5})", "DB9834 x 99 60 01 900 <> 11 <vosk-model-small-pl-0.22> <>",
         ""},
        {R"({"sendDelay":"60","keyHold":"60","gazeDwell":[],"takeFocus":1,"gazeEnabled":0,"gazeDllPath":5,
             "voiceEnabled":null,"voiceGlobal":"false","voiceModel":7,"voiceDllPath":{},"toggleKey":5})",
         defaults, ""},
        {R"({"sendDelay":"5","sendDelay":5})", defaults, ""},
        {R"({"voiceModel":"","gazeDllPath":""})", defaults, ""},
        {R"({"segmentColor":"3498DB","keyHold":7})",
         "DB9834 x 250 7 01 900 <> 11 <vosk-model-small-pl-0.22> <>", colorLine},
        {R"({"segmentColor":5})", defaults, colorLine},
        {R"({"segmentColor":null})", defaults, colorLine},
        {R"({"toggleKey":"lmb"})", defaults, toggleLine("lmb")},
        {R"({"toggleKey":""})", defaults, toggleLine("")},
        {R"({"toggleKey":" nic ","segmentColor":""})", defaults, colorLine + toggleLine(" nic ")},
        {"", defaults, unreadableLine},
        {"{\"sendDelay\":1", defaults, unreadableLine},
        {"{\"sendDelay\":1} x", defaults, unreadableLine},
        {"[]", defaults, unreadableLine},
        {"\xFF\xFE{}", defaults, unreadableLine},
        {"{\"sendDelay\":\xFF 1}", defaults, unreadableLine},
        {"{\"gazeDllPath\":\"a\xFFz\"}", "DB9834 x 250 60 01 900 <a\uFFFDz> 11 <vosk-model-small-pl-0.22> <>",
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
    EXPECT_EQ(settings(), "DB9834 F5 5 6 01 900 <g> 11 <m> <>");
    EXPECT_EQ(load("broken"), unreadableLine);
    EXPECT_EQ(settings(), "DB9834 F5 5 6 01 900 <g> 11 <m> <>");
    EXPECT_EQ(engineConfig.toggleKeyCode.vk, 0x74);
    EXPECT_EQ(load(R"({"gazeDllPath":""})"), "");
    EXPECT_EQ(settings(), "DB9834 F5 5 6 01 900 <> 11 <m> <>");
}

TEST_F(FilesSettings, ADeletedFileComesBackAtTheNextLoad) {
    EXPECT_EQ(load(R"({"segmentColor":"#010203","toggleKey":"F5","sendDelay":5})"), "");
    std::filesystem::remove(folder.at("config.json"));
    EXPECT_EQ(load(), "");
    EXPECT_EQ(settings(), "DB9834 x 5 60 01 900 <> 11 <vosk-model-small-pl-0.22> <>");
}

TEST_F(FilesSettings, ALoadNeverEndsWithoutAWheel) {
    const std::string sixEmpty = "[{}; {}; {}; {}; {}; {}]";
    const std::string sixLine = "default.json: brak poprawnych kół — wyświetlam 6 pustych pól.\n";
    const std::string unreadable = "Nie udało się wczytać pliku kół: ";
    const struct {
        std::string wheels;
        std::string firstLine;
    } cases[] = {
        {R"({"wheels":[]})", ""},
        {R"({"actions":[]})", ""},
        {R"({"wheels":[{"name":"x"}]})", "default.json: koło bez tablicy \"actions\".\n"},
        {"7", "default.json: brak \"wheels\" ani \"actions\".\n"},
        {"", unreadable + utf8FromUtf16(folder.path("default.json")) + "\n"},
    };
    for (const auto& example : cases) {
        engineState.activeWheel = 3;
        folder.write("default.json", example.wheels);
        EXPECT_EQ(load(), example.firstLine + sixLine);
        EXPECT_EQ(describe(engineState.wheels), sixEmpty);
        EXPECT_EQ(engineState.activeWheel, 0);
    }
}

TEST_F(FilesSettings, VoiceFunctionsAreFlattenedAndNeedAPhrase) {
    folder.write("voice.json", R"({"wheels":[
        {"name":"A","actions":[{"name":"f","key":"a","voice":"raz"},{"name":"g","key":"b"}]},
        {"actions":[{"voice":"dwa"},{"voice":"","key":"c"},{"voice":5,"key":"ź!"}]}]})");
    EXPECT_EQ(load(), "default.json: nieznany klawisz \"ź!\" dla pola \"\".\n");
    EXPECT_EQ(describe(engineState.voiceActions), "f{click a 1} voice=raz; {} voice=dwa");

    folder.write("voice.json", "broken");
    EXPECT_EQ(load(), "Nie udało się wczytać pliku kół: " + utf8FromUtf16(folder.path("voice.json")) + "\n");
    EXPECT_TRUE(engineState.voiceActions.empty());
}

TEST_F(FilesSettings, ProblemsComeInTheOrderOfTheLoad) {
    folder.write("config.json", "");
    folder.write("default.json", R"({"wheels":[5,{"actions":[{"name":"f","key":"nic"}]}]})");
    folder.write("voice.json", "[]");
    std::u16string problems = u"przedtem\n";
    loadConfiguration(problems);
    EXPECT_EQ(utf8FromUtf16(problems), std::string("przedtem\n") + unreadableLine +
                                           "default.json: koło bez tablicy \"actions\".\n"
                                           "default.json: nieznany klawisz \"nic\" dla pola \"f\".\n"
                                           "default.json: brak \"wheels\" ani \"actions\".\n");
}

TEST_F(FilesSettings, AFolderThatIsGoneStillGivesAWheelAndAKey) {
    setSimulatedProgramFolder(folder.path("gone"));
    const std::string problems = load();
    EXPECT_NE(problems.find(unreadableLine), std::string::npos);
    EXPECT_EQ(settings(), defaults);
    EXPECT_EQ(engineConfig.toggleKeyCode.vk, 0x58);
    ASSERT_EQ(engineState.wheels.size(), 1u);
    EXPECT_EQ(engineState.wheels[0].actions.size(), 6u);
    EXPECT_EQ(folder.fileCount(), 0u);
}

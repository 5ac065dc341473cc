#include "engine_test.h"
#include "files/settings_file.h"

#include <sstream>

namespace {

class FilesSettings : public EngineTest {
protected:
    static std::string load() {
        std::u16string problems;
        loadConfiguration(problems);
        return utf8FromUtf16(problems);
    }
    std::string load(const std::string& config) const {
        folder.write("config.json", config);
        return load();
    }

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

    /// What differs from the settings of a fresh process, and "!" for each line about a problem.
    std::string changes(const std::string& problems) const {
        std::istringstream before(fresh);
        std::istringstream now(settings());
        std::string text;
        for (std::string old, each; before >> old && now >> each;)
            text += old == each ? "" : each + " ";
        text += std::string(static_cast<std::size_t>(std::ranges::count(problems, '\n')), '!');
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

} // namespace

TEST_F(FilesSettings, AFileChangesOnlyWhatItSuppliesAndWhatPasses) {
    for (const auto& [config, expected] : rowsOf(files)) {
        resetEngineForTest();
        EXPECT_EQ(changes(load(config)), expected) << config;
        EXPECT_EQ(engineConfig.toggleKeyCode.text, engineConfig.toggleKey);
    }
    EXPECT_EQ(load("\xEF\xBB\xBF{\"gazeDllPath\":\"a\xFFz\",\"toggleKey\":\"Nic \",\"segmentColor\":7}"),
              "config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n"
              "config.json: nieznany klawisz \"Nic \" — używam \"x\".\n");
    EXPECT_EQ(engineConfig.gazeDllPath, u"a\uFFFDz");
    EXPECT_EQ(load("{\"sendDelay\":\xFF 1}"),
              "Nie udało się wczytać config.json — używam ustawień domyślnych.\n");
}

TEST_F(FilesSettings, AReloadKeepsWhatTheFileNoLongerSays) {
    EXPECT_EQ(load(R"({"sendDelay":5,"toggleKey":"F5","gazeDllPath":"g","voiceModel":"m"})"), "");
    EXPECT_EQ(load(R"({"keyHold":6,"voiceModel":""})"), "");
    EXPECT_EQ(changes(load("broken")), "key=F5 send=5 hold=6 tobii=g model=m !");
    std::filesystem::remove(folder.at("config.json")); // it is made again, with a colour and a key
    EXPECT_EQ(changes(load()), "send=5 hold=6 tobii=g model=m");
}

TEST_F(FilesSettings, ALoadNeverEndsWithoutAWheelAndVoiceFunctionsNeedAPhrase) {
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

#include "files/wheel_files.h"
#include "files_support.h"

namespace {

class FilesWheels : public FilesTest {
protected:
    bool load(const std::string& bytes) {
        problems.clear();
        return loadWheelFile(folder.write("koła.json", bytes), wheels, problems);
    }
    std::string lines() const { return utf8FromUtf16(problems); }
    std::string unreadable() const {
        return "Nie udało się wczytać pliku kół: " + utf8FromUtf16(folder.path("koła.json")) + "\n";
    }

    std::vector<Wheel> wheels;
    std::u16string problems;
};

std::string keyLine(const std::string& token, const std::string& field = "f") {
    return std::string("default.json: nieznany klawisz \"") + token + "\" dla pola \"" + field + "\".\n";
}

std::string actionLine(const std::string& word, const std::string& field = "f") {
    return std::string("default.json: nieznana czynność \"") + word + "\" w polu \"" + field + "\".\n";
}

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

std::string listOf(const std::string& item, std::size_t count) {
    return repeated(item + ",", count - 1) + item;
}

const char* const noActionsLine = "default.json: koło bez tablicy \"actions\".\n";
const char* const noFormLine = "default.json: brak \"wheels\" ani \"actions\".\n";

struct Example {
    std::string json;
    std::string expected;
    std::string problems;
};

} // namespace

TEST_F(FilesWheels, RootsAndWheels) {
    const Example cases[] = {
        {R"({"actions":[]})", "", ""},
        {R"({"wheels":[]})", "", ""},
        {R"({"wheels":[],"actions":[{"key":"b"}]})", "", ""},
        {R"({"wheels":5,"actions":[{"key":"a"}]})", "[{click a 1}]", ""},
        {R"({"wheels":[{"actions":[{"key":"a"}]}],"actions":[{"key":"b"}]})", "[{click a 1}]", ""},
        {R"({"wheels":[{"name":"A","actions":[{}]},{"name":"B","actions":[]},{"name":5,"actions":[{}]}]})",
         "A[{}] [{}]", ""},
        {R"({"wheels":[{"name":"x"},{"actions":5},[],7,"s",{"name":"B","actions":[{}]}]})", "B[{}]",
         repeated(noActionsLine, 5)},
        {R"({"wheels":[],"wheels":[{"actions":[{}]}]})", "", ""},
        {R"({"Wheels":[{"actions":[{}]}]})", "", noFormLine},
        {R"({"wheels":{},"actions":{}})", "", noFormLine},
        {"[]", "", noFormLine},
        {"null", "", noFormLine},
        {"\"actions\"", "", noFormLine},
        {R"({"actions":[5,"s",null,[1],{}]})", "[{}; {}; {}; {}; {}]", ""},
        {"", "", unreadable()},
        {R"({"actions":[{}]} x)", "", unreadable()},
        {R"({"actions":[{}])", "", unreadable()},
        {"\xFF\xFE{\"actions\":[{}]}", "", unreadable()},
        {"\xEF\xBB\xBF{\"actions\":[{\"name\":\"a\xC5z\"}]}\r\n", "[a\uFFFDz{}]", ""},
    };
    for (const Example& example : cases) {
        wheels.resize(2); // must not survive, whatever the file holds
        EXPECT_EQ(load(example.json), example.problems.empty()) << example.json;
        EXPECT_EQ(describe(wheels), example.expected) << example.json;
        EXPECT_EQ(lines(), example.problems) << example.json;
    }
}

TEST_F(FilesWheels, FieldsAndTheirForms) {
    const Example cases[] = {
        {R"("key":"a")", "f{click a 1}", ""},
        {R"("key":["a","b"])", "f{click a 1, click b 1}", ""},
        {R"("keys":["a","nic","LMB"])", "f{click a 1, click LMB 1}", keyLine("nic")},
        {R"("keys":"a")", "f{click a 1}", ""},
        {R"("keys":[],"key":"a")", "f{}", ""},
        {R"("keys":null,"key":"a")", "f{}", keyLine("")},
        {R"("steps":[],"key":"a")", "f{}", ""},
        {R"("steps":"a","key":"a","keys":["b"])", "f{}", ""},
        {R"("steps":{"key":"a"},"key":"a")", "f{}", ""},
        {R"("key":5)", "f{click 5 1}", ""},
        {R"("key":5.7)", "f{click 5 1}", ""},
        {R"("key":12)", "f{}", keyLine("12")},
        {R"("key":1e10)", "f{}", keyLine("-2147483648")},
        {R"("key":true)", "f{}", keyLine("")},
        {R"("key":[["a"]])", "f{}", keyLine("")},
        {R"("key":"  Nic ")", "f{}", keyLine("  Nic ")},
        {R"("delay":5000)", "f{} delay=2000", ""},
        {R"("delay":-1)", "f{} delay=0", ""},
        {R"("delay":1e10)", "f{} delay=0", ""},
        {R"("delay":12.9)", "f{} delay=12", ""},
        {R"("delay":"10")", "f{}", ""},
        {R"("color":"#E74C3C")", "f{} bgr=3C4CE7", ""},
        {R"("color":"#e74c3c")", "f{} bgr=3C4CE7", ""},
        {R"("color":"red")", "f{}", ""},
        {R"("color":5)", "f{}", ""},
        {R"("icon":"icons\\a.png","voice":" Raz  dwa ")", "f{} icon=icons\\a.png voice= Raz  dwa ", ""},
        {R"("icon":5,"voice":[])", "f{}", ""},
        {R"("name":"g","key":"nic")", "f{}", keyLine("nic")},
        {R"("Key":"a")", "f{}", ""},
    };
    for (const Example& example : cases) {
        EXPECT_EQ(load("{\"actions\":[{\"name\":\"f\"," + example.json + "}]}"), example.problems.empty());
        EXPECT_EQ(describe(wheels), "[" + example.expected + "]") << example.json;
        EXPECT_EQ(lines(), example.problems) << example.json;
    }
    EXPECT_FALSE(load(R"({"actions":[{"key":"nic","name":"później"},{"name":5,"key":"nic"}]})"));
    EXPECT_EQ(lines(), keyLine("nic", "później") + keyLine("nic", ""));
}

TEST_F(FilesWheels, Steps) {
    const Example cases[] = {
        {R"({"key":"a"})", "click a 1", ""},
        {R"({"key":7})", "click 7 1", ""},
        {R"({"key":"a","action":"KLIK"})", "click a 1", ""},
        {R"({"key":"a","action":"click","value":0})", "click a 1", ""},
        {R"({"key":"a","value":-4})", "click a 1", ""},
        {R"({"key":"a","value":500})", "click a 100", ""},
        {R"({"key":"a","value":1e10})", "click a 1", ""},
        {R"({"key":"a","value":"7"})", "click a 1", ""},
        {R"({"key":"a","action":"hold"})", "hold a 0", ""},
        {R"({"key":"a","action":"Przytrzymaj","value":70000})", "hold a 60000", ""},
        {R"({"key":"a","action":"hold","value":-5})", "hold a 0", ""},
        {R"({"key":"a","action":"release"})", "release a 0", ""},
        {R"({"key":"a","action":"release","value":70000})", "release a 70000", ""},
        {R"({"key":"a","action":"release","value":-1})", "release a 0", ""},
        {R"({"key":"a","action":"pusc"})", "release a 0", ""},
        {R"({"key":"a","action":"puść"})", "release a 0", ""},
        {R"({"key":"a","action":"Press","value":3})", "click a 3", actionLine("press")},
        {R"({"key":"a","action":""})", "click a 1", actionLine("")},
        {R"({"key":"a","action":" click"})", "click a 1", actionLine(" click")},
        {R"({"key":"a","action":5})", "click a 1", ""},
        {R"({"key":"nic","action":"nic"})", "", keyLine("nic") + actionLine("nic")},
        {R"({"action":"nic"})", "", actionLine("nic")},
        {R"({"action":"hold"})", "", ""},
        {R"({"key":true})", "", keyLine("")},
        {R"(5,"a",null,[],{})", "", ""},
        {R"({"open":"https://a.pl"})", "open https://a.pl 1", ""},
        {R"({"open":""})", "", ""},
        {R"({"open":"","key":"a"})", "", ""},
        {R"({"open":5,"key":"a"})", "", ""},
        {R"({"open":"notepad","key":"nic","action":"nic","value":9})", "open notepad 1", ""},
        {R"({"key":"a"},{"key":"nic"},{"key":"b","action":"hold"})", "click a 1, hold b 0", keyLine("nic")},
    };
    for (const Example& example : cases) {
        EXPECT_EQ(load("{\"actions\":[{\"name\":\"f\",\"steps\":[" + example.json + "]}]}"),
                  example.problems.empty());
        EXPECT_EQ(describe(wheels), "[f{" + example.expected + "}]") << example.json;
        EXPECT_EQ(lines(), example.problems) << example.json;
    }
    ASSERT_TRUE(load(R"({"actions":[{"steps":[{"open":"x","key":"a"}]}]})"));
    EXPECT_EQ(wheels[0].actions[0].steps[0].key, KeyCode());
}

TEST_F(FilesWheels, AWheelIsCutAt24FieldsAfterAllOfThemWereRead) {
    EXPECT_TRUE(load("{\"wheels\":[{\"name\":\"W\",\"actions\":[" + listOf("{}", 24) + "]}]}"));
    EXPECT_EQ(wheels.at(0).actions.size(), 24u);
    const std::string last = R"(,{"name":"ost","key":"nic"}]},{"actions":[{}]}]})";
    EXPECT_FALSE(load("{\"wheels\":[{\"name\":\"W\",\"actions\":[" + listOf("{}", 24) + last));
    EXPECT_EQ(lines(), keyLine("nic", "ost") +
                           "default.json: zbyt wiele funkcji w kole \"W\" — używam pierwszych 24.\n");
    ASSERT_EQ(wheels.size(), 2u);
    EXPECT_EQ(wheels[0].actions.size(), 24u);
}

TEST_F(FilesWheels, HugeAndHostileFilesAreReadOrRefused) {
    constexpr std::size_t size = 10'000'000;
    const std::string longName(size, 'n');
    EXPECT_TRUE(load("{\"actions\":[{\"name\":\"" + longName + "\"}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).name.size(), size);

    EXPECT_TRUE(load("{\"actions\":[{\"steps\":[" + listOf("{\"key\":\"a\"}", size / 12) + "]}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).steps.size(), size / 12);

    EXPECT_FALSE(load("{\"actions\":[" + listOf("{}", size / 3) + "]}"));
    EXPECT_EQ(wheels.at(0).actions.size(), maxFieldCount);

    EXPECT_FALSE(load(repeated("[", size)));
    EXPECT_EQ(lines(), unreadable());
    EXPECT_FALSE(load(repeated("\xF0\x9F", size / 2)));
    EXPECT_EQ(lines(), unreadable());

    // The value of an unknown key may be nested as it likes.
    const std::string nest = repeated("[", 500'000) + repeated("]", 500'000);
    EXPECT_TRUE(load("{\"actions\":[{\"name\":\"f\",\"more\":" + nest + "}]}"));
    EXPECT_EQ(describe(wheels), "[f{}]");
}

TEST_F(FilesWheels, LinesThatQuoteALongNameDoNotFillTheMemory) {
    const std::string name(2'000'000, 'n');
    EXPECT_FALSE(
        load("{\"actions\":[{\"name\":\"" + name + "\",\"keys\":[" + listOf("{}", 100'000) + "]}]}"));
    EXPECT_GT(problems.size(), name.size());
    EXPECT_LT(problems.size(), 20'000'000u);
}

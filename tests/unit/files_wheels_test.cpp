#include "files/wheel_files.h"
#include "files_support.h"

using namespace std::string_literals;

namespace {

class FilesWheels : public FilesTest {
protected:
    bool load(const std::string& bytes) {
        problems.clear();
        return loadWheelFile(folder.write("koła.json", bytes), wheels, problems);
    }
    std::string unreadable() const {
        return "Nie udało się wczytać pliku kół: " + utf8FromUtf16(folder.path("koła.json")) + "\n";
    }

    void check(const std::string& bytes, const std::string& expected, const std::string& expectedLines) {
        EXPECT_EQ(load(bytes), expectedLines.empty()) << bytes;
        EXPECT_EQ(describe(wheels), expected) << bytes;
        EXPECT_EQ(utf8FromUtf16(problems), expectedLines) << bytes;
    }

    std::vector<Wheel> wheels;
    std::u16string problems;
};

std::string keyLine(const std::string& token, const std::string& field = "f") {
    return "default.json: nieznany klawisz \"" + token + "\" dla pola \"" + field + "\".\n";
}

std::string actionLine(const std::string& word, const std::string& field = "f") {
    return "default.json: nieznana czynność \"" + word + "\" w polu \"" + field + "\".\n";
}

std::string listOf(const std::string& item, std::size_t count) {
    return repeated(item + ",", count - 1) + item;
}

const std::string noActionsLine = "default.json: koło bez tablicy \"actions\".\n";
const std::string noFormLine = "default.json: brak \"wheels\" ani \"actions\".\n";

struct Example {
    std::string json;
    std::string expected;
    std::string problems;
};

} // namespace

TEST_F(FilesWheels, RootsAndWheels) {
    const Example cases[] = {
        {R"({"actions":[]})", "", ""},
        {R"({"wheels":[],"actions":[{"key":"b"}]})", "", ""},
        {R"({"wheels":5,"actions":[{"key":"a"}]})", "[{click a 1}]", ""},
        {R"({"wheels":[{"name":"A","actions":[{}]},{"name":"B","actions":[]},{"name":5,"actions":[{}]}]})",
         "A[{}] [{}]", ""},
        {R"({"wheels":[{"name":"x"},{"actions":5},[],7,"s",{"name":"B","actions":[{}]}]})", "B[{}]",
         repeated(noActionsLine, 5)},
        {R"({"wheels":[],"wheels":[{"actions":[{}]}]})", "", ""},
        {R"({"Wheels":[{"actions":[{}]}]})", "", noFormLine},
        {R"({"wheels":{},"actions":{}})", "", noFormLine},
        {"[]", "", noFormLine},
        {"\"actions\"", "", noFormLine},
        {R"({"actions":[5,"s",null,[1],{}]})", "[{}; {}; {}; {}; {}]", ""},
        {"", "", unreadable()},
        {R"({"actions":[{}]} x)", "", unreadable()},
        {"\xFF\xFE{\"actions\":[{}]}", "", unreadable()},
        {"\xEF\xBB\xBF{\"actions\":[{\"name\":\"a\xC5z\"}]}\r\n", "[a\uFFFDz{}]", ""},
    };
    for (const Example& example : cases) {
        wheels.resize(2); // must not survive, whatever the file holds
        check(example.json, example.expected, example.problems);
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
        {R"("key":5.7)", "f{click 5 1}", ""},
        {R"("key":12)", "f{}", keyLine("12")},
        {R"("key":1e10)", "f{}", keyLine("-2147483648")},
        {R"("key":[["a"]])", "f{}", keyLine("")},
        {R"("key":"  Nic ")", "f{}", keyLine("  Nic ")},
        {R"("Key":"a")", "f{}", ""},
        {R"("delay":2001)", "f{} delay=2000", ""},
        {R"("delay":1e10)", "f{} delay=0", ""},
        {R"("delay":12.9)", "f{} delay=12", ""},
        {R"("delay":"10","color":5,"icon":5,"voice":[])", "f{}", ""},
        {R"("color":"#e74C3C")", "f{} bgr=3C4CE7", ""},
        {R"("color":"red")", "f{}", ""},
        {R"("icon":"icons\\a.png","voice":" Raz  dwa ")", "f{} icon=icons\\a.png voice= Raz  dwa ", ""},
    };
    for (const Example& example : cases)
        check("{\"actions\":[{\"name\":\"f\"," + example.json + "}]}", "[" + example.expected + "]",
              example.problems);
    check(R"({"actions":[{"key":"nic","name":"później"},{"name":5,"key":"nic"}]})", "[później{}; {}]",
          keyLine("nic", "później") + keyLine("nic", ""));
}

TEST_F(FilesWheels, Steps) {
    const Example cases[] = {
        {R"({"key":"a"})", "click a 1", ""},
        {R"({"key":7,"action":"KLIK"})", "click 7 1", ""},
        {R"({"key":"a","action":"click","value":0})", "click a 1", ""},
        {R"({"key":"a","value":101})", "click a 100", ""},
        {R"({"key":"a","value":1e10})", "click a 1", ""},
        {R"({"key":"a","value":"7"})", "click a 1", ""},
        {R"({"key":"a","action":"hold"})", "hold a 0", ""},
        {R"({"key":"a","action":"Przytrzymaj","value":60001})", "hold a 60000", ""},
        {R"({"key":"a","action":"hold","value":-5})", "hold a 0", ""},
        {R"({"key":"a","action":"release","value":70000})", "release a 70000", ""},
        {R"({"key":"a","action":"pusc","value":-1})", "release a 0", ""},
        {R"({"key":"a","action":"puść"})", "release a 0", ""},
        {R"({"key":"a","action":"Press","value":3})", "click a 3", actionLine("press")},
        {R"({"key":"a","action":" click"})", "click a 1", actionLine(" click")},
        {R"({"key":"a","action":5})", "click a 1", ""},
        {R"({"key":"nic","action":"nic"})", "", keyLine("nic") + actionLine("nic")},
        {R"({"action":"nic"})", "", actionLine("nic")},
        {R"({"action":"hold"})", "", ""},
        {R"({"key":true})", "", keyLine("")},
        {R"(5,"a",null,[],{})", "", ""},
        {R"({"open":"","key":"a"})", "", ""},
        {R"({"open":5,"key":"a"})", "", ""},
        {R"({"open":"notepad","key":"nic","action":"nic","value":9})", "open notepad 1", ""},
        {R"({"key":"a"},{"key":"nic"},{"key":"b","action":"hold"})", "click a 1, hold b 0", keyLine("nic")},
    };
    for (const Example& example : cases)
        check("{\"actions\":[{\"name\":\"f\",\"steps\":[" + example.json + "]}]}",
              "[f{" + example.expected + "}]", example.problems);
}

TEST_F(FilesWheels, AWheelIsCutAt24FieldsAfterAllOfThemWereRead) {
    const std::string kept = "W[" + repeated("{}; "s, 23) + "{}]";
    check(R"({"wheels":[{"name":"W","actions":[)" + listOf("{}", 24) + "]}]}", kept, "");
    check(R"({"wheels":[{"name":"W","actions":[)" + listOf("{}", 24) +
              R"(,{"name":"ost","key":"nic"}]},{"actions":[{}]}]})",
          kept + " [{}]",
          keyLine("nic", "ost") + "default.json: zbyt wiele funkcji w kole \"W\" — używam pierwszych 24.\n");
}

TEST_F(FilesWheels, HugeAndHostileFilesAreReadOrRefused) {
    constexpr std::size_t size = 10'000'000; // bytes, a thousand times what anybody writes
    EXPECT_TRUE(load("{\"actions\":[{\"name\":\"" + std::string(size, 'n') + "\"}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).name.size(), size);
    EXPECT_TRUE(load("{\"actions\":[{\"steps\":[" + listOf("{\"key\":\"a\"}", size / 60) + "]}]}"));
    EXPECT_EQ(wheels.at(0).actions.at(0).steps.size(), size / 60);
    EXPECT_FALSE(load("{\"actions\":[" + listOf("{}", size / 15) + "]}"));
    EXPECT_EQ(wheels.at(0).actions.size(), maxFieldCount);
    EXPECT_FALSE(load(repeated("\xF0\x9F"s, size / 2)));

    // Each line quotes the field's name, and yet the lines do not fill the memory.
    const std::string name(2'000'000, 'n');
    EXPECT_FALSE(load("{\"actions\":[{\"name\":\"" + name + "\",\"keys\":[" + listOf("{}", 50) + "]}]}"));
    EXPECT_GT(problems.size(), name.size());
    EXPECT_LT(problems.size(), 20'000'000u);
}

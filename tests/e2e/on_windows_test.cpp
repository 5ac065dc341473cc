// Scenarios that Windows alone has.

#include "scenario.h"

namespace e2e {

namespace {

using Texts = std::vector<std::string>;

class OnWindows : public Scenario {};

TEST_F(OnWindows, AnotherProgramActivatesAWheelFile) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("", clickActions({"a", "b"})));
    s.writeFile("inne.json", oneWheelText("", clickActions({"c", "d", "e", "f"})));
    s.writeFile("puste.json", "{ \"wheels\": [ { \"name\": \"bez pól\", \"actions\": [] } ] }");
    s.startAll();
    s.recording.mark();
    const auto activate = [&](const std::string& file) {
        return s.target->sendToEngine({"activate", s.target->pathText(s.folder() / file)});
    };
    EXPECT_EQ(activate("puste.json"), 0);
    EXPECT_EQ(activate("nie-ma.json"), 0);
    s.openWheel();
    s.choose(fieldPoint(1, 2));
    s.recording.waitForPress("key-up b");

    // An open wheel is repainted and goes on.
    s.openWheel();
    EXPECT_EQ(activate("inne.json"), 1);
    s.choose(fieldPoint(1, 4));
    s.recording.waitForPress("key-up d");
    EXPECT_EQ(s.recording.pressTexts(), (Texts{"key-down b", "key-up b", "key-down d", "key-up d"}));
}

} // namespace

} // namespace e2e

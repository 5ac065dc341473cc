#include "scenario.h"

namespace e2e {

class Choosing : public Scenario {};

TEST_F(Choosing, OpenChooseRun) {
    Stage& s = stage();
    s.writeFile("default.json", oneWheelText("Koło", clickActions({"a", "b", "c", "d"})));
    s.startAll();
    placePointer(s.screen.eyes(), {500, 300});
    s.recording.mark();

    s.openWheel();
    s.choose(fieldPoint(2, 4));
    s.waitUntilWheelIsClosed();

    s.recording.waitForPresses(2);
    EXPECT_EQ(s.recording.pressTexts(), (std::vector<std::string>{"key-down c", "key-up c"}));
    EXPECT_EQ(s.screen.eyes().pointer(), (ScreenPoint{500, 300}));
}

} // namespace e2e

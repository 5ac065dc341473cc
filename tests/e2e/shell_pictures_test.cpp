// Pictures of all pages, to be looked at; what is checked here is only that each page paints and none looks
// like another.

#include "scenario.h"
#include "shell_user.h"

#include <set>

namespace e2e {

namespace {

struct Look {
    std::string name;
    std::string theme;
    std::string fontDpi = "96";
    std::string scale = "1";
};

void PrintTo(const Look& look, std::ostream* stream) {
    *stream << look.name;
}

class ShellPictures : public Scenario, public testing::WithParamInterface<Look> {
protected:
    void start() {
        Stage& s = stage();
        s.writeFile("default.json", R"({ "wheels": [ { "name": "Strzelanka", "actions": [
            { "name": "Leczenie", "voice": "leczenie", "color": "#E74C3C", "icon": "icons/leczenie.png",
              "steps": [ { "key": "ctrl", "action": "hold" }, { "key": "1", "value": 3 },
                         { "key": "ctrl", "action": "release" }, { "open": "https://example.org" } ] },
            { "name": "Granat z bardzo długim opóźnieniem", "icon": "icons/atak.png", "key": "g" },
            { "name": "", "key": "h" }, { "name": "Tarcza", "icon": "icons/tarcza.png", "key": "t" } ] },
            { "name": "Przeglądarka o bardzo długiej nazwie", "actions": [ { "name": "Wstecz" } ] } ] })");
        s.target->saveTheme(GetParam().theme);
        Command command = s.target->commandFor(s.folder() / testArguments().program.filename(), {});
        command.folder = s.screen.folder();
        command.outputFile = s.screen.folder() / "program.log";
        command.environment["QT_FONT_DPI"] = GetParam().fontDpi;
        command.environment["QT_SCALE_FACTOR"] = GetParam().scale;
        s.program = Process(command);
        s.waitForMainWindow();
        user.waitUntilInFront();
    }

    std::vector<PixelColor> windowPixels() {
        const ShownWindow window = *stage().mainWindow();
        EXPECT_LE(window.left + window.width, stage().screen.eyes().width());
        EXPECT_LE(window.top + window.height, stage().screen.eyes().height());
        return stage().screen.eyes().look(window.left, window.top, window.width, window.height).pixels;
    }

    ShellUser user{stage()};
};

TEST_P(ShellPictures, OfEveryPage) {
    start();
    std::vector<std::vector<PixelColor>> pictures;
    for (const auto& [page, name] : {std::pair{Page::start, "start"},
                                     {Page::wheels, "wheels"},
                                     {Page::voice, "voice"},
                                     {Page::gaze, "gaze"},
                                     {Page::settings, "settings"}}) {
        user.goTo(page);
        if (page == Page::wheels) {
            user.goTo(WheelControl::open);
            user.waitForRest();
            keepPicture("page-" + GetParam().name + "-wheels-empty");
            user.press(WheelControl::open);
            user.waitForDialog("Otwórz plik kół");
            user.waitForRest();
            keepPicture("page-" + GetParam().name + "-open-dialog");
            user.type(stage().target->pathText(stage().folder() / "default.json"));
            user.key("Return");
            user.waitUntilInFront();
        }
        waitFor("the page to differ from the others", [&] {
            const std::vector<PixelColor> shown = windowPixels();
            return std::find(pictures.begin(), pictures.end(), shown) == pictures.end();
        });
        user.waitForRest();
        pictures.push_back(windowPixels());
        keepPicture("page-" + GetParam().name + "-" + name);
    }
    std::set<std::tuple<int, int, int>> colors;
    for (const PixelColor& color : pictures.back())
        colors.insert({color.red, color.green, color.blue});
    EXPECT_GT(colors.size(), 10U); // letters with smooth edges
}

INSTANTIATE_TEST_SUITE_P(Looks, ShellPictures,
                         testing::Values(Look{"fluent", "fluent"}, Look{"neon", "neon"}, Look{"pro", "pro"},
                                         Look{"large", "fluent", "144"}, Look{"scaled", "neon", "96", "1.5"}),
                         [](const auto& instance) { return instance.param.name; });

} // namespace

} // namespace e2e

// The whole program on a private screen, measured from outside: what a person waits for.

#include "harness/stage.h"
#include "harness/waiting.h"
#include "probe.h"
#include "target_reporter.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xdamage.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <numeric>
#include <thread>

namespace {

using namespace e2e;
using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Looks without a pause: a figure of a few milliseconds leaves no room for one.
double msUntil(Clock::time_point start, const std::function<bool()>& condition) {
    while (!condition())
        if (msSince(start) > 5000)
            throw ScenarioError("what is measured did not come about");
    return msSince(start);
}

void report(const std::string& what, std::vector<double> values, double target, const char* unit) {
    std::sort(values.begin(), values.end());
    printFigure(what.c_str(), values[values.size() / 2], values.back(), target, unit);
}

void pressToggleKey(const Stage& stage, bool down) {
    Display* display = stage.screen.eyes().raw();
    XTestFakeKeyEvent(display, stage.screen.eyes().keycodeOf(toggleKey), down ? 1 : 0, CurrentTime);
    XFlush(display);
}

// A spot of the ring that is neither text nor edge.
constexpr LayerPoint ringSpot{294 + 200, 230 - 30};

/// A full page of fields, as it is opened over a program.
void measureOpening(const std::string& where, Compositing compositing, double targetMs) {
    Stage stage({compositing, {}});
    stage.writeFile("default.json", oneWheelText("Próba", clickActions(std::vector<std::string>(24, "a"))));
    stage.startAll();
    stage.openWheel(); // once, to learn where it stands
    const ScreenPoint spot = stage.wheel.onScreen(ringSpot);
    const XConnection& eyes = stage.screen.eyes();
    stage.toggle();
    stage.waitUntilWheelIsClosed();
    const PixelColor background = eyes.pixel(spot.x, spot.y);
    std::vector<double> values;
    for (int i = 0; i < 40; ++i) {
        waitFor("the background", [&] { return eyes.pixel(spot.x, spot.y) == background; });
        const Clock::time_point start = Clock::now();
        pressToggleKey(stage, true);
        values.push_back(msUntil(start, [&] { return eyes.pixel(spot.x, spot.y) != background; }));
        pressToggleKey(stage, false);
        stage.toggle();
        stage.waitUntilWheelIsClosed();
    }
    report("toggle key to first wheel pixel, " + where, values, targetMs, "ms");
}

/// Fonts, shapes and the layer's memory must be ready before the first opening.
void measureFirstOpening() {
    std::vector<double> values;
    ScreenPoint spot;
    {
        Stage stage;
        stage.startAll();
        stage.openWheel(); // to learn where it stands: on each of these screens the same
        spot = stage.wheel.onScreen(ringSpot);
    }
    for (int i = 0; i < 6; ++i) {
        Stage stage;
        stage.startAll();
        const XConnection& eyes = stage.screen.eyes();
        std::this_thread::sleep_for(std::chrono::milliseconds(500)); // the start's own work is done
        const PixelColor background = eyes.pixel(spot.x, spot.y);
        const Clock::time_point start = Clock::now();
        pressToggleKey(stage, true);
        values.push_back(msUntil(start, [&] { return eyes.pixel(spot.x, spot.y) != background; }));
        pressToggleKey(stage, false);
    }
    report("first opening after the start: toggle key to first wheel pixel", values, 12, "ms");
}

void measureMotion() {
    Stage stage;
    stage.startAll();
    stage.openWheel();
    report("real mouse motion to repainted cursor", motionLatencies(stage, 60), 17, "ms");
}

/// The server refuses a second client the same key: that is when the first one has it.
bool toggleKeyIsTaken(const XConnection& eyes) {
    static bool wasRefused = false;
    Display* display = eyes.raw();
    const unsigned keycode = eyes.keycodeOf(toggleKey);
    const auto before = XSetErrorHandler([](Display*, XErrorEvent*) {
        wasRefused = true;
        return 0;
    });
    wasRefused = false;
    // With a modifier that the program takes along with the bare key, so that it is never in the program's
    // way.
    XGrabKey(display, static_cast<int>(keycode), LockMask, DefaultRootWindow(display), 0, GrabModeAsync,
             GrabModeAsync);
    XUngrabKey(display, static_cast<int>(keycode), LockMask, DefaultRootWindow(display));
    XSync(display, 0);
    XSetErrorHandler(before);
    return wasRefused;
}

double memoryMegabytes(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word)
        if (word == "VmRSS:")
            status >> kilobytes;
    return kilobytes / 1024;
}

/// 24 wheels of 24 fields with icons, as the editor had open when the program was last ended.
void rememberFullFile(const Stage& stage) {
    std::string wheels;
    for (int i = 0; i < 24; ++i) {
        std::string fields;
        for (int j = 0; j < 24; ++j)
            fields +=
                std::string(j == 0 ? "" : ",") + R"({"name":"Pole","icon":"icons/tarcza.png","key":"a"})";
        wheels += std::string(i == 0 ? "" : ",") + R"({"name":"Koło","actions":[)" + fields + "]}";
    }
    stage.writeFile("full.json", R"({"wheels":[)" + wheels + "]}");
    const std::filesystem::path settings = stage.screen.folder() / "home/.config/Rotika";
    std::filesystem::create_directories(settings);
    std::ofstream(settings / "UI.conf")
        << "[General]\nlastWheelFile=" << (stage.folder() / "full.json").string() << "\n";
}

void measureWindow() {
    Stage stage;
    std::vector<double> values;
    for (int i = 0; i < 6; ++i) {
        const Clock::time_point start = Clock::now();
        Process program = stage.launchProgram();
        while (!stage.screen.eyes().shownWindow("Rotika"))
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (i > 0)
            values.push_back(msSince(start));
        program.end();
        waitFor("the key to be free", [&] { return !toggleKeyIsTaken(stage.screen.eyes()); });
    }
    report("process start to main window shown", values, 300, "ms");
    rememberFullFile(stage);
    stage.startProgram();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    report("resident memory, 24 wheels of 24 fields in the editor", {memoryMegabytes(stage.program.pid())},
           90, "MB");
}

void measureStart() {
    Stage stage;
    std::vector<double> values;
    double memory = 0;
    for (int i = 0; i < 6; ++i) {
        waitFor("the key to be free", [&] { return !toggleKeyIsTaken(stage.screen.eyes()); });
        const Clock::time_point start = Clock::now();
        Process program = stage.launchProgram();
        while (!toggleKeyIsTaken(stage.screen.eyes()))
            std::this_thread::sleep_for(std::chrono::milliseconds(5)); // rarely, so as not to be in its way
        if (i > 0)                                                     // the first one warms the disk's cache
            values.push_back(msSince(start));
        waitFor("the window", [&] { return stage.screen.eyes().shownWindow("Rotika").has_value(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        memory = memoryMegabytes(program.pid());
        program.end();
    }
    report("process start to toggle key live", values, 250, "ms");
    report("resident memory, engine and shell up", {memory}, 70, "MB");
}

long voluntarySwitches(pid_t process) {
    long all = 0;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream status(task.path() / "status");
        std::string word;
        long switches = 0;
        while (status >> word)
            if (word == "voluntary_ctxt_switches:")
                status >> switches;
        all += switches;
    }
    return all;
}

int repaintsWithin(Display* display, Window window, std::chrono::milliseconds time) {
    int event = 0;
    int error = 0;
    XDamageQueryExtension(display, &event, &error);
    const Damage damage = XDamageCreate(display, window, XDamageReportRawRectangles);
    XSync(display, 1);
    std::this_thread::sleep_for(time);
    int count = 0;
    XSync(display, 0);
    while (XPending(display) > 0) {
        XEvent next;
        XNextEvent(display, &next);
        count += next.type == event + XDamageNotify ? 1 : 0;
    }
    XDamageDestroy(display, damage);
    return count;
}

void measureRest() {
    Stage stage;
    stage.startAll();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const long before = voluntarySwitches(stage.program.pid());
    std::this_thread::sleep_for(std::chrono::seconds(6));
    const long woken = voluntarySwitches(stage.program.pid()) - before;
    // The shell asks the engine for its status four times in six seconds; the engine itself has nothing to
    // do.
    report("wake-ups in 6 s with the wheel closed (4 are the shell's)", {static_cast<double>(woken)}, 8,
           "  ");
    stage.openWheel();
    const auto repaints =
        repaintsWithin(stage.screen.eyes().raw(), stage.wheel.window()->id, std::chrono::milliseconds(3000));
    printFigure("repaints in 3 s with the wheel open and nothing moving", repaints, repaints, 0, "  ");
    if (repaints > 0)
        std::printf("  MISSED: nothing should be painted\n");
}

} // namespace

int main(int argc, char** argv) {
    return runProbe(argc, argv, [] {
        measureStart();
        measureWindow();
        measureOpening("compositor", Compositing::on, 12);
        measureOpening("no compositor", Compositing::off, 8);
        measureFirstOpening();
        measureMotion();
        measureRest();
    });
}

#pragma once

#include "harness/private_screen.h"
#include "harness/real_mouse.h"
#include "harness/recording.h"
#include "harness/target.h"
#include "harness/wheel_view.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace e2e {

/// The key that opens the wheel in the scenarios.
constexpr const char* toggleKey = "F9";

/// The main window is wider than this, and every box of the program is not.
constexpr int smallestMainWindow = 600;

/// Settings for a scenario: the devices that no scenario has are off, and the key is the one above. `more`
/// holds further members, such as "\"keyHold\": 500".
std::string settingsText(const std::string& more = "");
/// {"wheels": [{"name": NAME, "actions": [ACTIONS]}]}, with the actions as they stand in the file.
std::string oneWheelText(const std::string& name, const std::vector<std::string>& actions);
/// Plain fields named "Pole 1" and so on, each of which clicks one key.
std::vector<std::string> clickActions(const std::vector<std::string>& keys);

/// A text as it stands in a JSON file, with its quotation marks. ASCII.
std::string jsonText(const std::string& text);

/// A private screen with a copy of the program of its own, and a recorder in front of it.
class Stage {
public:
    explicit Stage(const ScreenSetup& setup = {});
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    /// The program's own folder, where it reads and writes its files.
    const std::filesystem::path& folder() const { return programFolder; }
    void writeFile(const std::string& name, const std::string& text) const;

    /// Starts the program and waits until its window stands, so that the engine runs.
    void startProgram();
    void waitForMainWindow();
    std::optional<ShownWindow> mainWindow() const;
    /// Ends it as the end of a session would.
    void endProgram();
    /// What has been opened by means of the recorder, as recorder/record.h tells; one entry each.
    std::vector<std::string> notes() const;

    /// Starts it and waits for nothing.
    Process launchProgram(const std::filesystem::path& startFolder = {}) const;
    /// Puts a recorder with the patterned background over the whole screen and waits until it has the focus.
    /// A margin at the bottom stays free: as large as the screen, a layer under Wine is the window manager's,
    /// too, which puts it below a program that fills the screen.
    void startRecorder(int marginPx = 0);
    /// Program, then recorder.
    void startAll();
    /// Puts the real cursor there, and begins the recording anew when the recorder has seen it arrive: Wine
    /// may tell of other places on the way.
    void restPointerAt(ScreenPoint place);

    /// Presses the toggle key and waits until the wheel stands and the mouse is held back.
    void openWheel(const std::string& key = toggleKey);
    /// The same after something else that opens it.
    void openWheelAfter(const std::function<void()>& opening);
    void toggle() const;
    void waitUntilWheelIsClosed() const;
    bool wheelIsOpen() const;
    /// Moves the real mouse until the virtual cursor is drawn at `point`.
    void aim(LayerPoint point);
    /// Takes note of where the virtual cursor is after the mouse was moved in another way.
    void trackCursor() { cursor = wheel.findCursor().value_or(cursor); }
    /// Aims and presses the left button.
    void choose(LayerPoint point);

    PrivateScreen screen;
    /// What the program is started with besides.
    Environment programVariables;
    std::unique_ptr<Target> target;
    std::unique_ptr<RealMouse> mouse;
    Process program;
    Process recorder;
    Recording recording;
    WheelView wheel;

private:
    bool isInFront(const std::string& title) const;
    bool wheelOpensWell(std::chrono::milliseconds limit) const;
    bool cursorArrives(LayerPoint point, std::chrono::milliseconds limit) const;

    std::filesystem::path programFolder;
    std::filesystem::path executable;
    LayerPoint cursor; // where the virtual cursor was last sent
};

} // namespace e2e

#pragma once

#include "harness/private_screen.h"
#include "harness/real_mouse.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace e2e {

/// What the test program was told to test, by its arguments.
struct Arguments {
    std::string target = "linux"; // or "windows": the program for Windows, under Wine
    std::filesystem::path program;
    std::filesystem::path recorder;
    std::filesystem::path artefacts;
    std::filesystem::path wineScript;   // makes a prefix and starts programs in it
    std::filesystem::path winePrefix;   // the one that each test takes a copy of
    std::filesystem::path statusReader; // reads the program's window; for Linux
    std::filesystem::path doubles;      // folder of the libraries that stand in for the devices'
    std::filesystem::path speech;       // folder of the speech library and the model that it loads
};

const Arguments& testArguments();
/// Takes what GoogleTest has left of the command line; false if something is missing or unknown.
bool readTestArguments(int count, char** words);

/// All in which the two builds of the program differ to somebody who uses them on an X server.
class Target {
public:
    virtual ~Target() = default;

    /// Makes ready what programs of this kind run in; before any is started.
    virtual void prepare(const PrivateScreen& screen) = 0;
    /// How to start such a program with these arguments.
    virtual Command commandFor(const std::filesystem::path& program,
                               const std::vector<std::string>& words) const = 0;
    /// A file's path as programs of this kind write it.
    virtual std::string pathText(const std::filesystem::path& file) const = 0;
    virtual std::unique_ptr<RealMouse> openMouse(const XConnection& eyes) const = 0;
    /// Whether the mouse is held back from the other programs.
    virtual bool holdsMouse(const XConnection& eyes) const = 0;
    /// Whether each movement of the mouse arrives once and each opening of the wheel holds the mouse. Wine on
    /// a busy machine may deliver raw motion twice, drop a confinement of the cursor when the focus changes
    /// at that moment, and keep the old outline of a layer that is hidden and shown at once, until it is
    /// painted again.
    virtual bool inputIsExact() const = 0;
    /// How often one press of the left button on an arrow turns the page: on Windows the press comes by two
    /// roads, and both count.
    virtual int turnsPerPress() const = 0;
    /// What the system says to a program that is to end, as at the end of a session.
    virtual void askToQuit(const Process& program) const = 0;
    /// What recorder/sender_win32.cpp knows to say; its exit status. Windows only.
    virtual int sendToEngine(const std::vector<std::string>& words) const = 0;
    /// What the window's card of this title says of a device; nothing while there is none. Always nothing on
    /// Windows, where Wine's windows tell nobody what they show.
    virtual std::optional<std::string> statusText(const std::string& title) const = 0;
    /// File name of the library that the other system calls `name`.dll.
    virtual std::string libraryFile(const std::string& name) const = 0;
    /// Folder of this system's libraries in the speech library's package.
    virtual std::string runtimeFolder() const = 0;
    /// Chooses the theme that the program's settings hold, without the program.
    virtual void saveTheme(const std::string& themeId) const = 0;
    /// From now on text files ending in `.txt` and addresses of the scheme `handled:` are opened by
    /// `handler`, a program of the target's kind that gets the file or address as its only argument.
    virtual void setHandler(const std::filesystem::path& handler) const = 0;
    /// Ends what prepare() has started.
    virtual void finish() = 0;
};

std::unique_ptr<Target> makeTarget();

} // namespace e2e

#pragma once

#include "platform/linux/x11.h"

namespace rotika {

// The owner thread's connection to the X server and the dispatch of its events. Other threads have
// connections of their own. Owner thread, except where noted.

/// Opens the connection and attaches it to the thread's default GLib context. False without a display or
/// without a required extension (XInput 2.2, XTest, XFixes, RandR 1.5, Shape, XKB).
bool openConnection();

/// Null before openConnection has succeeded.
Display* ownerDisplay();
Window rootWindow();
Atom atomNamed(const char* name);

/// Handlers are called for each event, in the order of their addition, until one returns true. They stay for
/// the whole process; adding one again changes nothing.
using EventHandler = bool (*)(XEvent& event);
void addEventHandler(EventHandler handler);

/// Opcode of the generic events of XInput 2, and event bases of the others.
int xinputOpcode();
int fixesEventBase();

/// Catches the X errors of requests that this thread sends during its lifetime. Any thread; no other thread
/// may use the connection meanwhile.
class ErrorTrap {
public:
    explicit ErrorTrap(Display* connection = ownerDisplay());
    ~ErrorTrap();
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;

    /// Waits for the server, so that all errors so far have arrived.
    bool hasFailed() const;

private:
    Display* display;
    unsigned long before;
};

/// A 32-bit property of a window, or `missing`.
unsigned long windowProperty(Window window, Atom property, Atom type, unsigned long missing);

} // namespace rotika

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>

namespace rotika {

namespace {
std::unique_ptr<SimulatedDesktop>& desktopSlot() {
    static auto desktop = std::make_unique<SimulatedDesktop>();
    return desktop;
}
} // namespace

SimulatedDesktop& simulatedDesktop() {
    return *desktopSlot();
}

void resetSimulatedDesktop() {
    // Workers use the current desktop, so they must end before it is destroyed.
    desktopSlot()->clock.drain();
    desktopSlot() = std::make_unique<SimulatedDesktop>();
}

SimulatedDesktop::SimulatedDesktop() {
    foreground = addProgram("game");
}

void SimulatedDesktop::requireOwner(const char* function) const {
    if (std::this_thread::get_id() != ownerThread)
        breakContract(function);
}

void SimulatedDesktop::note(JournalKind kind, std::string text) {
    const std::lock_guard lock(guard);
    journal.push_back({clock.now(), kind, std::move(text)});
}

std::vector<std::string> SimulatedDesktop::journalOf(std::initializer_list<JournalKind> kinds) const {
    const std::lock_guard lock(guard);
    std::vector<std::string> texts;
    for (const JournalEntry& entry : journal) {
        if (std::ranges::find(kinds, entry.kind) != kinds.end())
            texts.push_back(entry.text);
    }
    return texts;
}

// Time and the owner's loop

void SimulatedDesktop::advanceTo(std::uint64_t tick) {
    settle();
    while (true) {
        std::optional<std::uint64_t> next = clock.nextWake();
        for (const auto& [window, timer] : timers)
            next = next ? std::min(*next, timer.nextAtMs) : timer.nextAtMs;
        if (!next || *next > tick)
            break;
        clock.setNow(std::max(clock.now(), *next));
        settle();
        while (fireDueTimer())
            settle();
    }
    clock.setNow(tick);
}

void SimulatedDesktop::settle() {
    do {
        while (clock.runDueWorker()) {
        }
        pumpMessages();
    } while (clock.nextWake().value_or(clock.now() + 1) <= clock.now());
}

void SimulatedDesktop::pumpMessages() {
    requireOwner("messages pumped on a worker");
    while (true) {
        QueuedMessage next;
        {
            const std::lock_guard lock(guard);
            if (queue.empty())
                return;
            next = std::move(queue.front());
            queue.pop_front();
        }
        if (next.window->exists)
            next.deliver();
    }
}

bool SimulatedDesktop::fireDueTimer() {
    for (auto& [window, timer] : timers) {
        if (timer.nextAtMs <= clock.now()) {
            timer.nextAtMs = clock.now() + timer.periodMs;
            timer.tick(); // may stop this very timer
            return true;
        }
    }
    return false;
}

void SimulatedDesktop::enqueue(WindowHandle window, std::function<void()> deliver) {
    const std::lock_guard lock(guard);
    queue.push_back({window, std::move(deliver)});
}

// Windows

PlatformWindow& SimulatedDesktop::addWindow(const std::string& name, const Rect& place) {
    PlatformWindow& window = windows.emplace_back();
    window.name = name;
    window.isOurs = true;
    window.place = place;
    stack.push_back(&window);
    return window;
}

PlatformWindow& SimulatedDesktop::requireWindow(WindowHandle window, const char* function) {
    requireOwner(function);
    if (window == nullptr || !window->exists)
        breakContract(function);
    return *window;
}

void SimulatedDesktop::raise(WindowHandle window) {
    std::erase(stack, window);
    stack.push_back(window);
}

WindowHandle SimulatedDesktop::addProgram(const std::string& name) {
    PlatformWindow& window = addWindow(name, monitors.front());
    window.isShown = true;
    window.isOurs = false;
    return &window;
}

void SimulatedDesktop::closeProgram(WindowHandle window) {
    window->exists = false;
    window->isShown = false;
    if (foreground == window)
        foreground = nullptr;
}

WindowHandle SimulatedDesktop::windowNamed(const std::string& name) {
    const auto found = std::ranges::find(windows, name, &PlatformWindow::name);
    return found == windows.end() ? nullptr : &*found;
}

WindowHandle SimulatedDesktop::topProgram() const {
    const auto found =
        std::find_if(stack.rbegin(), stack.rend(), [](WindowHandle w) { return w->isShown && !w->isOurs; });
    return found == stack.rend() ? nullptr : *found;
}

bool SimulatedDesktop::sendData(std::uintptr_t kind, const void* bytes, std::size_t byteCount) {
    return mainHandlers->dataArrived(kind, bytes, byteCount);
}

void SimulatedDesktop::destroyMainWindow() {
    mainHandlers->destroyed();
    destroyEditorWindow(windowNamed("editor")); // owned by the main window
    windowNamed("main")->exists = false;
}

void SimulatedDesktop::requestClose(const std::string& windowName) {
    if (const auto closeRequested = windowNamed(windowName)->overlayHandlers.closeRequested)
        closeRequested();
}

void SimulatedDesktop::destroyOverlay(const std::string& windowName) {
    const WindowHandle window = windowNamed(windowName);
    window->overlayHandlers.destroyed();
    window->exists = false;
    window->name += " (destroyed)";
}

void SimulatedDesktop::changeMonitors(std::vector<Rect> now) {
    monitors = std::move(now);
    mainHandlers->monitorsChanged();
}

void SimulatedDesktop::lockSession(bool isLocked) {
    mainHandlers->sessionLockChanged(isLocked);
}

std::set<std::uint16_t> SimulatedDesktop::registeredKeys() const {
    std::set<std::uint16_t> keys;
    for (const auto& [id, hotKey] : hotKeys)
        keys.insert(hotKey.virtualKey);
    return keys;
}

} // namespace rotika

#include "harness/recording.h"

#include "harness/waiting.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace e2e {

std::vector<RecordedEvent> Recording::readLines() const {
    std::ifstream stream(file, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    std::string whole = text.str();
    // The last line may be on its way.
    whole.resize(whole.rfind('\n') == std::string::npos ? 0 : whole.rfind('\n') + 1);
    std::vector<RecordedEvent> events;
    std::istringstream lines(whole);
    for (RecordedEvent event; lines >> event.timeMs >> event.kind >> event.name >> event.x >> event.y;)
        events.push_back(event);
    return events;
}

std::vector<RecordedEvent> Recording::all() const {
    std::vector<RecordedEvent> events = readLines();
    events.erase(events.begin(),
                 events.begin() + static_cast<std::ptrdiff_t>(std::min(first, events.size())));
    return events;
}

std::vector<RecordedEvent> Recording::presses() const {
    std::vector<RecordedEvent> kept;
    std::set<std::string> down;
    const std::vector<RecordedEvent> events = readLines();
    for (std::size_t i = 0; i < events.size(); ++i) {
        const RecordedEvent& event = events[i];
        const std::string thing = event.kind.substr(0, event.kind.find('-')) + event.name;
        const bool isPress = event.kind.ends_with("-down");
        if (isPress)
            down.insert(thing);
        else if (!event.kind.ends_with("-up") || down.erase(thing) == 0)
            continue;
        if (i >= first)
            kept.push_back(event);
    }
    return kept;
}

std::vector<std::string> Recording::pressTexts() const {
    std::vector<std::string> texts;
    for (const RecordedEvent& event : presses())
        texts.push_back(event.what());
    return texts;
}

int Recording::count(const std::string& kind) const {
    const std::vector<RecordedEvent> events = all();
    return static_cast<int>(std::count_if(events.begin(), events.end(),
                                          [&](const RecordedEvent& event) { return event.kind == kind; }));
}

void Recording::waitForPress(const std::string& what, int times) const {
    waitFor("\"" + what + "\" in the recorder, " + std::to_string(times) + " times", [&] {
        const std::vector<std::string> texts = pressTexts();
        return std::count(texts.begin(), texts.end(), what) >= times;
    });
}

void Recording::waitForPresses(std::size_t number) const {
    waitFor(std::to_string(number) + " presses and releases in the recorder",
            [&] { return presses().size() >= number; });
}

void Recording::waitForKind(const std::string& kind) const {
    waitFor("a \"" + kind + "\" in the recorder", [&] { return count(kind) > 0; });
}

} // namespace e2e

#include "platform/windows/cursor_pin.h"

#include <cstddef>

namespace rotika {

namespace {

/// In the order of the numbers in `extended`, which start at 1.
constexpr LONG RECT::*sides[] = {&RECT::left, &RECT::top, &RECT::right, &RECT::bottom};

/// More than one pixel: the system may round a pin where monitors differ in scale.
bool isPinSized(const RECT& clip) {
    constexpr LONG maxPinPx = 4;
    return clip.right - clip.left <= maxPinPx && clip.bottom - clip.top <= maxPinPx;
}

bool isWholeDesktop(const RECT& clip) {
    const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
    const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    return clip.left <= left && clip.top <= top &&
           clip.right >= left + GetSystemMetrics(SM_CXVIRTUALSCREEN) &&
           clip.bottom >= top + GetSystemMetrics(SM_CYVIRTUALSCREEN);
}

void setClip(const std::optional<RECT>& clip) {
    ClipCursor(clip ? &*clip : nullptr);
}

} // namespace

std::optional<RECT> cursorClip() {
    RECT clip{};
    if (GetClipCursor(&clip) == 0 || isWholeDesktop(clip) || isPinSized(clip)) {
        return std::nullopt;
    }
    return clip;
}

void pinCursor(Point pinned) {
    const RECT place{pinned.x, pinned.y, pinned.x + 1, pinned.y + 1};
    ClipCursor(&place);
}

void unpinCursor(const std::optional<RECT>& before) {
    RECT clip{};
    if (GetClipCursor(&clip) == 0 || isPinSized(clip)) {
        setClip(before);
        return;
    }
    // Set again by the process that set the pin: Wine would keep a part of the pin otherwise.
    setClip(isWholeDesktop(clip) ? std::nullopt : std::optional(clip));
}

GuardRecord pinRecord(bool pinned) {
    GuardRecord record;
    record.kind = GuardedThing::pointerPin;
    record.down = pinned ? 1 : 0;
    return record;
}

std::vector<GuardRecord> clipRecords(const RECT& clip) {
    std::vector<GuardRecord> records;
    for (const auto side : sides) {
        GuardRecord record = pinRecord(true);
        record.extended = static_cast<std::uint8_t>(records.size() + 1);
        record.code = static_cast<std::uint32_t>(clip.*side);
        records.push_back(record);
    }
    return records;
}

bool isPinRecord(const GuardRecord& record) {
    return record.kind == GuardedThing::pointerPin && record.extended == 0;
}

std::optional<RECT> clipBefore(const HeldThings& held) {
    RECT clip{};
    std::size_t foundSides = 0;
    for (const GuardRecord& record : held.all()) {
        if (record.kind == GuardedThing::pointerPin && record.extended >= 1 &&
            record.extended <= std::size(sides)) {
            clip.*sides[record.extended - 1] = static_cast<LONG>(record.code);
            ++foundSides;
        }
    }
    return foundSides == std::size(sides) ? std::optional(clip) : std::nullopt;
}

} // namespace rotika

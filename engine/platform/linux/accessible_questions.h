#pragma once

#include "base/geometry.h"

#include "platform/linux/bus_connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rotika {

// What can be asked about an object of the accessibility tree. The takers get the least telling value when
// the program gives none.

/// As AtspiRole; 0 if there is none.
void askForRole(BusConnection& bus, const BusObject& object, std::function<void(std::uint32_t role)> taker);

/// Bits numbered as AtspiStateType.
void askForStates(BusConnection& bus, const BusObject& object,
                  std::function<void(std::uint64_t states)> taker);

/// On the screen, as the program sees it; nothing for what has no place or no size.
void askForPlace(BusConnection& bus, const BusObject& object,
                 std::function<void(const std::optional<Rect>& place)> taker);

void askForName(BusConnection& bus, const BusObject& object,
                std::function<void(const std::string& name)> taker);

void askForChildren(BusConnection& bus, const BusObject& object,
                    std::function<void(const std::vector<BusObject>& children)> taker);

/// Some toolkits make each child, needed or not, when they are asked for all, and go through the others for
/// each. -1 if there is no answer.
void askForChildCount(BusConnection& bus, const BusObject& object,
                      std::function<void(std::int32_t count)> taker);

using ChildTaker = std::function<void(const std::optional<BusObject>& child)>;

/// The child at a point of the screen, in the program's coordinates.
void askForChildAt(BusConnection& bus, const BusObject& object, Point point, ChildTaker taker);

void askForChildAtIndex(BusConnection& bus, const BusObject& object, std::int32_t index, ChildTaker taker);

/// The process of each program on the bus; 0 if that is unknown.
void askForProcess(BusConnection& bus, const std::string& program, std::function<void(pid_t process)> taker);

} // namespace rotika

#pragma once

#include "base/geometry.h"

#include "platform/linux/bus_connection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rotika {

// Calls to an object of the accessibility tree. The handlers receive an empty value if there is no reply or
// an unusable one.

/// As AtspiRole; 0 if unknown.
void requestRole(BusConnection& bus, const BusObject& object,
                 std::function<void(std::uint32_t role)> handler);

/// Bits numbered as AtspiStateType.
void requestStates(BusConnection& bus, const BusObject& object,
                   std::function<void(std::uint64_t states)> handler);

/// Screen coordinates as the program reports them; nullopt for an object without position or size.
void requestPlace(BusConnection& bus, const BusObject& object,
                  std::function<void(const std::optional<Rect>& place)> handler);

void requestName(BusConnection& bus, const BusObject& object,
                 std::function<void(const std::string& name)> handler);

void requestChildren(BusConnection& bus, const BusObject& object,
                     std::function<void(const std::vector<BusObject>& children)> handler);

/// -1 if there is no reply. Check it before requestChildren(): some toolkits then create every child, each in
/// time linear in their number.
void requestChildCount(BusConnection& bus, const BusObject& object,
                       std::function<void(std::int32_t count)> handler);

using ChildHandler = std::function<void(const std::optional<BusObject>& child)>;

/// The child at a screen point, in the program's coordinates.
void requestChildAt(BusConnection& bus, const BusObject& object, Point point, ChildHandler handler);

void requestChildAtIndex(BusConnection& bus, const BusObject& object, std::int32_t index,
                         ChildHandler handler);

/// The process of a program on the bus; 0 if unknown.
void requestProcess(BusConnection& bus, const std::string& program,
                    std::function<void(pid_t process)> handler);

} // namespace rotika

// Stands in for UI Automation as a COM server. "automation_script.txt" beside it may say:
//
//   root CLASS          the elements that follow, up to the next root, are below windows of this class
//   element DEPTH NAME TYPE LEFT TOP RIGHT BOTTOM [enabled] [focusable] [offscreen] [unreadable]
//   fail CALL [CLASS]   create, ElementFromHandle, FindFirst or FindAllBuildCache fails
//   hang CALL [CLASS]   it takes as long as this line stands there
//
// "automation_log.txt" names these calls and, whenever an object is let go, how many are left behind.

#include "../double_script.h"

// Tables of functions instead of classes: those that the product does not call need no name.
#define CINTERFACE
#include <ole2.h>
#include <uiautomationclient.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <map>
#include <sstream>

namespace {

struct Node {
    RECT place{};
    std::map<PROPERTYID, LONG> values{};
};

/// One of any interface. Nobody counts references: the product has no second ones.
struct Object {
    const void* functions = nullptr;                   // first, as callers expect
    std::string name{};                                // an element's, if it is a window: the class
    std::vector<Node> nodes{};                         // what is below an element, or an array's
    std::vector<PROPERTYID> fetched{};                 // with the elements that are found
    std::vector<std::pair<PROPERTYID, LONG>> wanted{}; // of which one meets the condition
};
std::atomic<int> liveObjects = 0;

DoubleScript& script() {
    static DoubleScript& only = *new DoubleScript("automation", {"root", "element"});
    return only;
}

bool succeeds(const std::string& call) {
    const auto isToldTo = [&](const char* word) {
        const std::vector<std::string> calls = script().allOf(word);
        return std::ranges::any_of(calls, [&](const auto& each) { return call.starts_with(each); });
    };
    script().note(call);
    while (isToldTo("hang"))
        Sleep(5);
    return !isToldTo("fail");
}

Object& as(void* face) {
    return *static_cast<Object*>(face);
}

/// Makes an object whose functions refuse, but for those that `fill` puts into the table.
template <typename Face>
HRESULT give(Face** out, bool isWell, const Object& object, auto fill) {
    static const auto table = [&] {
        std::array<void*, sizeof(*Face::lpVtbl) / sizeof(void*)> slots{};
        // On 64-bit Windows the caller clears the stack: it may pass any arguments.
        slots.fill(reinterpret_cast<void*>(+[] { return E_NOTIMPL; }));
        auto made = std::bit_cast<std::remove_pointer_t<decltype(Face::lpVtbl)>>(slots);
        made.Release = [](Face* self) -> ULONG {
            delete &as(self);
            script().note("left behind " + std::to_string(--liveObjects));
            return 0;
        };
        fill(made);
        return made;
    }();
    *out = isWell ? reinterpret_cast<Face*>(new Object(object)) : nullptr;
    if (!isWell)
        return E_FAIL;
    as(*out).functions = &table;
    ++liveObjects;
    return S_OK;
}

std::vector<Node> nodesBelow(const std::string& windowClass) {
    static const std::map<std::string, PROPERTYID> flags{{"enabled", UIA_IsEnabledPropertyId},
                                                         {"focusable", UIA_IsKeyboardFocusablePropertyId},
                                                         {"offscreen", UIA_IsOffscreenPropertyId},
                                                         {"unreadable", 0}};
    std::vector<Node> nodes;
    std::string root;
    for (std::size_t i = 0; !script().event(i).word.empty(); ++i) {
        const auto [word, rest] = script().event(i);
        root = word == "root" ? rest : root;
        if (word == "root" || root != windowClass)
            continue;
        Node& node = nodes.emplace_back();
        std::istringstream words(rest);
        std::string skipped;
        words >> skipped >> skipped >> node.values[UIA_ControlTypePropertyId];
        words >> node.place.left >> node.place.top >> node.place.right >> node.place.bottom;
        for (std::string flag; words >> flag;)
            node.values[flags.at(flag)] = 1;
    }
    return nodes;
}

/// Only what was fetched with the element can be read.
template <PROPERTYID property, typename Value>
HRESULT WINAPI cached(IUIAutomationElement* self, Value* out) {
    Node& node = as(self).nodes[0];
    if (std::ranges::count(as(self).fetched, property) == 0 || node.values[0] != 0)
        return E_FAIL;
    if constexpr (property == UIA_BoundingRectanglePropertyId)
        *out = node.place;
    else
        *out = node.values[property];
    return S_OK;
}

auto fits(void* condition) {
    return [&wanted = as(condition).wanted](Node node) {
        return std::ranges::any_of(wanted,
                                   [&](const auto& each) { return node.values[each.first] == each.second; });
    };
}

HRESULT giveElement(IUIAutomationElement** out, bool isWell, const Object& made) {
    return give(out, isWell, made, [](auto& table) {
        table.get_CachedIsEnabled = cached<UIA_IsEnabledPropertyId>;
        table.get_CachedIsOffscreen = cached<UIA_IsOffscreenPropertyId>;
        table.get_CachedIsKeyboardFocusable = cached<UIA_IsKeyboardFocusablePropertyId>;
        table.get_CachedControlType = cached<UIA_ControlTypePropertyId>;
        table.get_CachedBoundingRectangle = cached<UIA_BoundingRectanglePropertyId>;
        table.FindFirst = [](auto* self, TreeScope, auto* condition, auto** found) {
            const std::vector<Node>& nodes = as(self).nodes;
            const auto first = std::ranges::find_if(nodes, fits(condition)); // what follows counts as below
            const bool isFound = succeeds("FindFirst " + as(self).name) && first != nodes.end();
            return giveElement(found, isFound, {.nodes = {isFound ? first + 1 : first, nodes.end()}});
        };
        table.FindAllBuildCache = [](auto* self, TreeScope, auto* condition, auto* request, auto** found) {
            Object array{.fetched = as(request).fetched};
            std::ranges::copy_if(as(self).nodes, std::back_inserter(array.nodes), fits(condition));
            return give(found, succeeds("FindAllBuildCache " + as(self).name), array, [](auto& functions) {
                functions.get_Length = [](auto* that, int* length) {
                    *length = static_cast<int>(as(that).nodes.size());
                    return S_OK;
                };
                functions.GetElement = [](auto* that, int index, auto** element) {
                    const Node& node = as(that).nodes.at(static_cast<std::size_t>(index));
                    return giveElement(element, true, {.nodes = {node}, .fetched = as(that).fetched});
                };
            });
        };
    });
}

void fillAutomation(IUIAutomationVtbl& table) {
    constexpr static auto nothing = [](auto&) {};
    table.CreateCacheRequest = [](auto*, auto** out) {
        return give(out, true, {}, [](auto& request) {
            request.AddProperty = [](auto* self, PROPERTYID property) {
                as(self).fetched.push_back(property);
                return S_OK;
            };
        });
    };
    table.CreatePropertyCondition = [](auto*, PROPERTYID property, VARIANT value, auto** out) {
        const bool isFlag = property != UIA_ControlTypePropertyId;
        const LONG wanted = isFlag ? value.boolVal != VARIANT_FALSE : value.lVal;
        return give(out, value.vt == (isFlag ? VT_BOOL : VT_I4), {.wanted = {{property, wanted}}}, nothing);
    };
    table.CreateOrConditionFromNativeArray = [](auto*, auto** conditions, int count, auto** out) {
        Object any;
        for (int i = 0; i < count; ++i)
            any.wanted.push_back(as(conditions[i]).wanted[0]);
        return give(out, true, any, nothing);
    };
    table.ElementFromHandle = [](auto*, UIA_HWND window, auto** out) {
        char name[128] = {};
        GetClassNameA(static_cast<HWND>(window), name, sizeof(name));
        return giveElement(out, succeeds(std::string("ElementFromHandle ") + name),
                           {.name = name, .nodes = nodesBelow(name)});
    };
}

} // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI DllGetClassObject(REFCLSID, REFIID, void** out) {
    return give(reinterpret_cast<IClassFactory**>(out), true, {}, [](auto& table) {
        table.CreateInstance = [](auto*, auto*, REFIID, void** made) {
            return give(reinterpret_cast<IUIAutomation**>(made), succeeds("create"), {}, fillAutomation);
        };
    });
}

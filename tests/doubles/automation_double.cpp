// A double of UI Automation: a COM server with a fixed set of elements.

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <string>
#include <vector>

// Function tables instead of classes, so that functions that the product does not call need not be declared.
#define CINTERFACE
#include <ole2.h>
#include <uiautomationclient.h>
#include <windows.h>

namespace {

constexpr PROPERTYID type = UIA_ControlTypePropertyId, enabled = UIA_IsEnabledPropertyId,
                     focusable = UIA_IsKeyboardFocusablePropertyId, offscreen = UIA_IsOffscreenPropertyId;

struct Node {
    std::string windowClass; // of the window that contains it
    RECT place;
    std::map<PROPERTYID, LONG> values;
};

// Every condition matches all of them.
const std::vector<Node> allNodes{
    {"RotikaFront", {10, 11, 12, 13}, {{type, UIA_ButtonControlTypeId}, {enabled, 1}}},
    {"RotikaFront", {20, 21, 22, 23}, {{type, UIA_GroupControlTypeId}, {enabled, 1}, {focusable, 1}}},
    {"RotikaFront", {30, 31, 32, 33}, {{type, UIA_HyperlinkControlTypeId}, {offscreen, 1}}},
    {"MozillaWindowClass", {40, 41, 42, 43}, {{type, UIA_EditControlTypeId}, {enabled, 1}}},
    {"Shell_TrayWnd", {50, 51, 52, 53}, {{type, UIA_ButtonControlTypeId}, {enabled, 1}}},
};

/// An object of any interface. Without a reference count: the product never adds a reference.
struct Object {
    const void* functions = nullptr;   // first, as callers expect
    std::vector<Node> nodes{};         // an element's descendants, an array's elements, or the element itself
    std::vector<PROPERTYID> fetched{}; // properties cached with the elements that are found
};

Object& as(void* face) {
    return *static_cast<Object*>(face);
}

/// Makes an object whose functions fail with E_NOTIMPL, except for those that `fill` puts into the table.
template <typename Face>
HRESULT give(Face** out, const Object& object, auto fill) {
    static const auto table = [&] {
        std::array<void*, sizeof(*Face::lpVtbl) / sizeof(void*)> slots{};
        // One function fits every slot: on 64-bit Windows the caller cleans up the arguments.
        slots.fill(reinterpret_cast<void*>(+[] { return E_NOTIMPL; }));
        auto made = std::bit_cast<std::remove_pointer_t<decltype(Face::lpVtbl)>>(slots);
        made.Release = [](Face* self) -> ULONG {
            delete &as(self);
            return 0;
        };
        fill(made);
        return made;
    }();
    *out = reinterpret_cast<Face*>(new Object(object));
    as(*out).functions = &table;
    return S_OK;
}

/// Fails for a property that was not cached with the element.
template <PROPERTYID property, typename Value>
HRESULT WINAPI cached(IUIAutomationElement* self, Value* out) {
    Node& node = as(self).nodes[0];
    if (std::ranges::count(as(self).fetched, property) == 0)
        return E_FAIL;
    if constexpr (property == UIA_BoundingRectanglePropertyId)
        *out = node.place;
    else
        *out = node.values[property];
    return S_OK;
}

void fillElement(IUIAutomationElementVtbl& table) {
    table.get_CachedIsEnabled = cached<enabled>;
    table.get_CachedIsOffscreen = cached<offscreen>;
    table.get_CachedIsKeyboardFocusable = cached<focusable>;
    table.get_CachedControlType = cached<type>;
    table.get_CachedBoundingRectangle = cached<UIA_BoundingRectanglePropertyId>;
    table.FindAllBuildCache = [](auto* self, TreeScope, auto*, auto* request, auto** found) {
        return give(found, {.nodes = as(self).nodes, .fetched = as(request).fetched}, [](auto& functions) {
            functions.get_Length = [](auto* that, int* length) {
                *length = static_cast<int>(as(that).nodes.size());
                return S_OK;
            };
            functions.GetElement = [](auto* that, int index, auto** element) {
                const Node& node = as(that).nodes.at(static_cast<std::size_t>(index));
                return give(element, {.nodes = {node}, .fetched = as(that).fetched}, fillElement);
            };
        });
    };
}

void fillAutomation(IUIAutomationVtbl& table) {
    constexpr static auto nothing = [](auto&) {};
    table.CreateCacheRequest = [](auto*, auto** out) {
        return give(out, {}, [](auto& request) {
            request.AddProperty = [](auto* self, PROPERTYID property) {
                as(self).fetched.push_back(property);
                return S_OK;
            };
        });
    };
    table.CreatePropertyCondition = [](auto*, PROPERTYID, VARIANT, auto** out) {
        return give(out, {}, nothing);
    };
    table.CreateOrConditionFromNativeArray = [](auto*, auto**, int, auto** out) {
        return give(out, {}, nothing);
    };
    // A window without elements denies access, as windows of elevated programs do.
    table.ElementFromHandle = [](auto*, UIA_HWND window, auto** out) -> HRESULT {
        char name[128] = {};
        GetClassNameA(static_cast<HWND>(window), name, sizeof(name));
        Object element{.nodes = allNodes};
        std::erase_if(element.nodes, [&name](const Node& node) { return node.windowClass != name; });
        return element.nodes.empty() ? E_ACCESSDENIED : give(out, element, fillElement);
    };
}

} // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI DllGetClassObject(REFCLSID, REFIID, void** out) {
    return give(reinterpret_cast<IClassFactory**>(out), {}, [](auto& table) {
        table.CreateInstance = [](auto*, auto*, REFIID, void** made) {
            return give(reinterpret_cast<IUIAutomation**>(made), {}, fillAutomation);
        };
    });
}

// Stands in for UI Automation as a COM server of the class CUIAutomation. What "automation_script.txt" beside
// it may say:
//
//   root CLASS         the elements that follow, up to the next root, lie below windows of this class
//   element DEPTH NAME TYPE LEFT TOP RIGHT BOTTOM [enabled] [focusable] [offscreen]
//                      in the order of the tree; the window itself has depth 0
//   fail CALL [WHAT]   the call fails, with these arguments or with any; "fail create": no object
//   hang CALL [WHAT]   the call takes as long as this line stands there
//
// Every call but the reading of cached properties is noted in "automation_log.txt"; a call that the double
// does not know as "unknown call". The last line of a search tells how many objects it has left behind.

#include "scripted_tree.h"

// The interfaces as tables of functions: most of the functions are never called and need no name here.
#define CINTERFACE
#include <ole2.h>

// Puts the names of classes and interfaces here.
#include <initguid.h>
#include <uiautomationclient.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

namespace {

using Names = std::vector<std::string>;

DoubleScript& script() {
    static DoubleScript& only = *new DoubleScript("automation", {"root", "element"});
    return only;
}

bool fails(const Names& failing, const std::string& call, const std::string& what) {
    return std::ranges::any_of(
        failing, [&](const std::string& line) { return line == call || line == call + " " + what; });
}

/// Notes the call and takes its time; whether it succeeds.
bool succeeds(const std::string& call, const std::string& what = "", const std::string& more = "") {
    script().note(call + (what.empty() ? "" : " ") + what + more);
    while (fails(script().allOf("hang"), call, what))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return !fails(script().allOf("fail"), call, what);
}

HRESULT WINAPI unknownCall() {
    script().note("unknown call");
    return E_NOTIMPL;
}

/// A table in which each function is the one above. Where arguments are passed in registers and the caller
/// clears the stack, as on 64-bit Windows, one function can be called as if it had any arguments.
template <typename Table>
Table unknownCalls() {
    std::array<void*, sizeof(Table) / sizeof(void*)> slots{};
    slots.fill(reinterpret_cast<void*>(&unknownCall));
    return std::bit_cast<Table>(slots);
}

std::atomic<int> liveObjects = 0;

/// An object of the interface, with whatever belongs to it.
template <typename Face, typename Data>
struct Object : Face {
    explicit Object(decltype(Face::lpVtbl) table, Data belongings) : data(std::move(belongings)) {
        this->lpVtbl = table;
        ++liveObjects;
    }
    ~Object() { --liveObjects; }

    Data data;
    std::atomic<ULONG> references = 1;
};

template <typename Made, typename Face>
Made& as(Face* face) {
    return *static_cast<Made*>(face);
}

template <typename Made, typename Face, typename Table>
void countReferences(Table& table) {
    table.AddRef = [](Face* self) -> ULONG { return ++as<Made>(self).references; };
    table.Release = [](Face* self) -> ULONG {
        const ULONG left = --as<Made>(self).references;
        if (left == 0)
            delete static_cast<Made*>(self);
        return left;
    };
}

// Conditions and cache requests

struct Wanted {
    PROPERTYID property = 0;
    LONG value = 0;
};

/// Any of these will do; with none, every element will.
using ConditionObject = Object<IUIAutomationCondition, std::vector<Wanted>>;
using RequestObject = Object<IUIAutomationCacheRequest, std::vector<PROPERTYID>>;

IUIAutomationCondition* newCondition(std::vector<Wanted> wanted) {
    static const auto table = [] {
        auto made = unknownCalls<IUIAutomationConditionVtbl>();
        countReferences<ConditionObject, IUIAutomationCondition>(made);
        return made;
    }();
    return new ConditionObject(const_cast<IUIAutomationConditionVtbl*>(&table), std::move(wanted));
}

IUIAutomationCacheRequest* newRequest() {
    static const auto table = [] {
        auto made = unknownCalls<IUIAutomationCacheRequestVtbl>();
        countReferences<RequestObject, IUIAutomationCacheRequest>(made);
        made.AddProperty = [](IUIAutomationCacheRequest* self, PROPERTYID property) -> HRESULT {
            as<RequestObject>(self).data.push_back(property);
            return S_OK;
        };
        return made;
    }();
    return new RequestObject(const_cast<IUIAutomationCacheRequestVtbl*>(&table), {});
}

bool meets(const TreeNode& node, const std::vector<Wanted>& wanted) {
    return wanted.empty() || std::ranges::any_of(wanted, [&](const Wanted& each) {
               return each.property == UIA_ControlTypePropertyId ? node.type == each.value
                                                                 : node.isFocusable == (each.value != 0);
           });
}

std::string textOf(const std::vector<Wanted>& wanted) {
    std::string text;
    for (const Wanted& each : wanted)
        text += " " + std::to_string(each.property) + "=" + std::to_string(each.value);
    return text.empty() ? " any" : text;
}

// Elements

struct ElementData {
    TreeNode node;
    std::vector<TreeNode> below;
    std::shared_ptr<const Names> failing; // of the cached properties
};
using ElementObject = Object<IUIAutomationElement, ElementData>;

struct ArrayData {
    std::vector<TreeNode> nodes;
};
using ArrayObject = Object<IUIAutomationElementArray, ArrayData>;

IUIAutomationElement* newElement(TreeNode node, std::vector<TreeNode> below);

IUIAutomationElementArray* newArray(std::vector<TreeNode> nodes) {
    static const auto table = [] {
        auto made = unknownCalls<IUIAutomationElementArrayVtbl>();
        countReferences<ArrayObject, IUIAutomationElementArray>(made);
        made.get_Length = [](IUIAutomationElementArray* self, int* length) -> HRESULT {
            *length = static_cast<int>(as<ArrayObject>(self).data.nodes.size());
            return S_OK;
        };
        made.GetElement = [](IUIAutomationElementArray* self, int index,
                             IUIAutomationElement** out) -> HRESULT {
            const TreeNode& node = as<ArrayObject>(self).data.nodes.at(static_cast<std::size_t>(index));
            *out = succeeds("GetElement", node.name) ? newElement(node, {}) : nullptr;
            return *out == nullptr ? E_FAIL : S_OK;
        };
        return made;
    }();
    return new ArrayObject(const_cast<IUIAutomationElementArrayVtbl*>(&table), {std::move(nodes)});
}

/// A failed reading leaves rubbish behind no more than a real one does.
template <typename Value>
HRESULT cached(IUIAutomationElement* self, const char* property, Value value, Value* out) {
    const ElementData& data = as<ElementObject>(self).data;
    if (fails(*data.failing, property, data.node.name))
        return E_FAIL;
    *out = value;
    return S_OK;
}

void readCached(IUIAutomationElementVtbl& table) {
    using Self = IUIAutomationElement;
    static const auto node = [](Self* self) -> const TreeNode& { return as<ElementObject>(self).data.node; };
    table.get_CachedIsEnabled = [](Self* self, BOOL* out) -> HRESULT {
        return cached(self, "get_CachedIsEnabled", BOOL{node(self).isEnabled}, out);
    };
    table.get_CachedIsOffscreen = [](Self* self, BOOL* out) -> HRESULT {
        return cached(self, "get_CachedIsOffscreen", BOOL{node(self).isOffscreen}, out);
    };
    table.get_CachedIsKeyboardFocusable = [](Self* self, BOOL* out) -> HRESULT {
        return cached(self, "get_CachedIsKeyboardFocusable", BOOL{node(self).isFocusable}, out);
    };
    table.get_CachedControlType = [](Self* self, CONTROLTYPEID* out) -> HRESULT {
        return cached(self, "get_CachedControlType", CONTROLTYPEID{node(self).type}, out);
    };
    table.get_CachedBoundingRectangle = [](Self* self, RECT* out) -> HRESULT {
        const TreeNode& it = node(self);
        return cached(self, "get_CachedBoundingRectangle", RECT{it.left, it.top, it.right, it.bottom}, out);
    };
}

HRESULT WINAPI findFirst(IUIAutomationElement* self, TreeScope scope, IUIAutomationCondition* condition,
                         IUIAutomationElement** out) {
    const ElementData& data = as<ElementObject>(self).data;
    const std::vector<Wanted>& wanted = as<ConditionObject>(condition).data;
    *out = nullptr;
    if (!succeeds("FindFirst", data.node.name, " scope " + std::to_string(scope) + textOf(wanted)))
        return E_FAIL;
    const auto found = std::ranges::find_if(data.below, [&](const TreeNode& n) { return meets(n, wanted); });
    if (found != data.below.end()) {
        const auto end = std::find_if(found + 1, data.below.end(),
                                      [&](const TreeNode& n) { return n.depth <= found->depth; });
        *out = newElement(*found, {found + 1, end});
    }
    return S_OK; // with nothing found too
}

HRESULT WINAPI findAll(IUIAutomationElement* self, TreeScope scope, IUIAutomationCondition* condition,
                       IUIAutomationCacheRequest* request, IUIAutomationElementArray** out) {
    const ElementData& data = as<ElementObject>(self).data;
    const std::vector<Wanted>& wanted = as<ConditionObject>(condition).data;
    std::string details = " scope " + std::to_string(scope) + " for" + textOf(wanted) + " with";
    for (const PROPERTYID property : as<RequestObject>(request).data)
        details += " " + std::to_string(property);
    *out = nullptr;
    if (!succeeds("FindAllBuildCache", data.node.name, details))
        return E_FAIL;
    std::vector<TreeNode> found;
    std::ranges::copy_if(data.below, std::back_inserter(found),
                         [&](const TreeNode& node) { return meets(node, wanted); });
    *out = newArray(std::move(found));
    return S_OK;
}

IUIAutomationElement* newElement(TreeNode node, std::vector<TreeNode> below) {
    static const auto table = [] {
        auto made = unknownCalls<IUIAutomationElementVtbl>();
        countReferences<ElementObject, IUIAutomationElement>(made);
        made.FindFirst = findFirst;
        made.FindAllBuildCache = findAll;
        readCached(made);
        return made;
    }();
    return new ElementObject(
        const_cast<IUIAutomationElementVtbl*>(&table),
        {std::move(node), std::move(below), std::make_shared<const Names>(script().allOf("fail"))});
}

// The object itself

using AutomationObject = Object<IUIAutomation, int>;

/// Gives what was made, if there is something.
template <typename Face>
HRESULT handOver(Face* made, Face** out) {
    *out = made;
    return made == nullptr ? E_FAIL : S_OK;
}

HRESULT WINAPI createPropertyCondition(IUIAutomation* /*self*/, PROPERTYID property, VARIANT value,
                                       IUIAutomationCondition** out) {
    const bool isFlag = value.vt == VT_BOOL;
    const Wanted wanted{property, isFlag ? value.boolVal != VARIANT_FALSE : value.lVal};
    const std::string what = std::to_string(property) + " " + std::to_string(wanted.value);
    const bool isWell = succeeds("CreatePropertyCondition", what,
                                 isFlag              ? " flag"
                                 : value.vt == VT_I4 ? ""
                                                     : " ?");
    return handOver(isWell ? newCondition({wanted}) : nullptr, out);
}

HRESULT WINAPI createOrCondition(IUIAutomation* /*self*/, IUIAutomationCondition** conditions, int count,
                                 IUIAutomationCondition** out) {
    std::vector<Wanted> all;
    for (int i = 0; i < count; ++i) {
        const std::vector<Wanted>& each = as<ConditionObject>(conditions[i]).data;
        all.insert(all.end(), each.begin(), each.end());
    }
    const bool isWell = succeeds("CreateOrConditionFromNativeArray", std::to_string(count));
    return handOver(isWell ? newCondition(std::move(all)) : nullptr, out);
}

HRESULT WINAPI elementFromHandle(IUIAutomation* /*self*/, UIA_HWND window, IUIAutomationElement** out) {
    const HWND handle = static_cast<HWND>(window);
    TreeNode node;
    node.name = classOf(handle);
    const bool isWell = succeeds("ElementFromHandle", node.name);
    return handOver(isWell ? newElement(node, nodesBelow(script(), handle)) : nullptr, out);
}

IUIAutomation* newAutomation() {
    static const auto table = [] {
        auto made = unknownCalls<IUIAutomationVtbl>();
        made.AddRef = [](IUIAutomation* self) -> ULONG { return ++as<AutomationObject>(self).references; };
        made.Release = [](IUIAutomation* self) -> ULONG {
            const ULONG left = --as<AutomationObject>(self).references;
            if (left == 0) {
                delete static_cast<AutomationObject*>(self);
                script().note("left behind " + std::to_string(liveObjects));
            }
            return left;
        };
        made.CreateCacheRequest = [](IUIAutomation* /*self*/, IUIAutomationCacheRequest** out) -> HRESULT {
            return handOver(succeeds("CreateCacheRequest") ? newRequest() : nullptr, out);
        };
        made.get_ControlViewCondition = [](IUIAutomation* /*self*/, IUIAutomationCondition** out) -> HRESULT {
            return handOver(succeeds("get_ControlViewCondition") ? newCondition({}) : nullptr, out);
        };
        made.CreatePropertyCondition = createPropertyCondition;
        made.CreateOrConditionFromNativeArray = createOrCondition;
        made.ElementFromHandle = elementFromHandle;
        return made;
    }();
    return new AutomationObject(const_cast<IUIAutomationVtbl*>(&table), 0);
}

// The server. Its factory is never deleted.

HRESULT WINAPI createInstance(IClassFactory* /*self*/, IUnknown* /*outer*/, REFIID wanted, void** out) {
    *out = nullptr;
    if (!IsEqualGUID(wanted, IID_IUIAutomation))
        return E_NOINTERFACE;
    *out = succeeds("create") ? newAutomation() : nullptr;
    return *out == nullptr ? E_FAIL : S_OK;
}

IClassFactory& factory() {
    static const auto table = [] {
        auto made = unknownCalls<IClassFactoryVtbl>();
        made.QueryInterface = [](IClassFactory* self, REFIID wanted, void** out) -> HRESULT {
            const bool isOurs = IsEqualGUID(wanted, IID_IUnknown) || IsEqualGUID(wanted, IID_IClassFactory);
            *out = isOurs ? self : nullptr;
            return isOurs ? S_OK : E_NOINTERFACE;
        };
        made.AddRef = [](IClassFactory* /*self*/) -> ULONG { return 1; };
        made.Release = made.AddRef;
        made.CreateInstance = createInstance;
        made.LockServer = [](IClassFactory* /*self*/, BOOL /*lock*/) -> HRESULT { return S_OK; };
        return made;
    }();
    static IClassFactory only{const_cast<IClassFactoryVtbl*>(&table)};
    return only;
}

} // namespace

extern "C" __declspec(dllexport) HRESULT WINAPI
    DllGetClassObject(REFCLSID classId, REFIID wanted, void** out) {
    *out = nullptr;
    if (!IsEqualGUID(classId, CLSID_CUIAutomation))
        return CLASS_E_CLASSNOTAVAILABLE;
    return factory().lpVtbl->QueryInterface(&factory(), wanted, out);
}

extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() {
    return S_FALSE;
}

#include "platform/windows/automation.h"

#include <array>
#include <utility>

namespace rotika {

namespace {

using Condition = ComPointer<IUIAutomationCondition>;

constexpr std::array clickedTypes{
    ControlType::button,   ControlType::splitButton, ControlType::checkBox,  ControlType::radioButton,
    ControlType::comboBox, ControlType::edit,        ControlType::hyperlink, ControlType::listItem,
    ControlType::menuItem, ControlType::tabItem,     ControlType::treeItem,  ControlType::slider,
    ControlType::spinner,
};

constexpr std::array<PROPERTYID, 5> readProperties{
    UIA_BoundingRectanglePropertyId, UIA_ControlTypePropertyId, UIA_IsKeyboardFocusablePropertyId,
    UIA_IsEnabledPropertyId,         UIA_IsOffscreenPropertyId,
};

/// Fetched together with the elements: avoids a call into the other program for each property.
ComPointer<IUIAutomationCacheRequest> propertyRequest(IUIAutomation& automation) {
    ComPointer<IUIAutomationCacheRequest> request;
    if (FAILED(automation.CreateCacheRequest(request.slot())) || !request) {
        return {};
    }
    for (const PROPERTYID property : readProperties) {
        request->AddProperty(property);
    }
    return request;
}

/// Empty on failure.
Condition propertyIs(IUIAutomation& automation, PROPERTYID property, const VARIANT& value) {
    Condition condition;
    if (FAILED(automation.CreatePropertyCondition(property, value, condition.slot()))) {
        return {};
    }
    return condition;
}

Condition typeIs(IUIAutomation& automation, ControlType type) {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = static_cast<LONG>(type);
    return propertyIs(automation, UIA_ControlTypePropertyId, value);
}

Condition takesFocus(IUIAutomation& automation) {
    VARIANT value{};
    value.vt = VT_BOOL;
    value.boolVal = VARIANT_TRUE;
    return propertyIs(automation, UIA_IsKeyboardFocusablePropertyId, value);
}

Condition anyOf(IUIAutomation& automation, const std::vector<Condition>& conditions) {
    std::vector<IUIAutomationCondition*> borrowed;
    for (const Condition& condition : conditions) {
        borrowed.push_back(condition.get());
    }
    Condition joined;
    if (borrowed.empty() || FAILED(automation.CreateOrConditionFromNativeArray(
                                borrowed.data(), static_cast<int>(borrowed.size()), joined.slot()))) {
        return {};
    }
    return joined;
}

Condition targetCondition(IUIAutomation& automation) {
    std::vector<Condition> conditions;
    const auto add = [&conditions](Condition condition) {
        if (condition) {
            conditions.push_back(std::move(condition));
        }
    };
    for (const ControlType type : clickedTypes) {
        add(typeIs(automation, type));
    }
    add(takesFocus(automation));
    Condition joined = anyOf(automation, conditions);
    if (!joined) {
        automation.get_ControlViewCondition(joined.slot());
    }
    return joined;
}

/// A call that fails leaves its property at the default.
ScreenElement cachedElement(IUIAutomationElement& element) {
    BOOL isEnabled = FALSE;
    BOOL isOffscreen = TRUE;
    BOOL isFocusable = FALSE;
    CONTROLTYPEID type = 0;
    RECT rect{};
    element.get_CachedIsEnabled(&isEnabled);
    element.get_CachedIsOffscreen(&isOffscreen);
    element.get_CachedIsKeyboardFocusable(&isFocusable);
    element.get_CachedControlType(&type);
    element.get_CachedBoundingRectangle(&rect);
    return {{rect.left, rect.top, rect.right, rect.bottom},
            static_cast<ControlType>(type),
            isEnabled != FALSE,
            isOffscreen != FALSE,
            isFocusable != FALSE};
}

} // namespace

std::optional<Automation> Automation::open() {
    ComPointer<IUIAutomation> automation;
    if (FAILED(CoCreateInstance(__uuidof(CUIAutomation), nullptr, CLSCTX_INPROC_SERVER,
                                __uuidof(IUIAutomation), reinterpret_cast<void**>(automation.slot()))) ||
        !automation) {
        return std::nullopt;
    }
    return Automation(std::move(automation));
}

Automation::Automation(ComPointer<IUIAutomation> opened)
    : automation(std::move(opened)), properties(propertyRequest(*automation.get())),
      targets(targetCondition(*automation.get())) {}

AutomationElement Automation::elementOf(HWND window) const {
    AutomationElement element;
    if (FAILED(automation->ElementFromHandle(window, element.slot()))) {
        return {};
    }
    return element;
}

AutomationElement Automation::firstDocument(const AutomationElement& element) const {
    const Condition isDocument = typeIs(*automation.get(), ControlType::document);
    AutomationElement document;
    if (!isDocument || FAILED(element->FindFirst(TreeScope_Descendants, isDocument.get(), document.slot()))) {
        return {};
    }
    return document;
}

std::vector<ScreenElement> Automation::targetsBelow(const AutomationElement& element) const {
    ComPointer<IUIAutomationElementArray> found;
    if (!properties || !targets ||
        FAILED(element->FindAllBuildCache(TreeScope_Descendants, targets.get(), properties.get(),
                                          found.slot())) ||
        !found) {
        return {};
    }
    int length = 0;
    found->get_Length(&length);
    std::vector<ScreenElement> elements;
    for (int index = 0; index < length; ++index) {
        AutomationElement each;
        if (SUCCEEDED(found->GetElement(index, each.slot())) && each) {
            elements.push_back(cachedElement(*each.get()));
        }
    }
    return elements;
}

} // namespace rotika

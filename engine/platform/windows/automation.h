#pragma once

#include "platform/elements.h"

#include "platform/windows/handles.h"

#include <uiautomationclient.h>

#include <optional>
#include <vector>

namespace rotika {

using AutomationElement = ComPointer<IUIAutomationElement>;

/// UI Automation with conditions for elements that can be clicked or focused. Used and destroyed on one
/// thread, within its COM session.
class Automation {
public:
    /// Nullopt where the system has no such service.
    static std::optional<Automation> open();

    /// Empty if the window has none or its program does not reply within the system's time limit.
    AutomationElement elementOf(HWND window) const;
    /// The first document below the element; empty without one.
    AutomationElement firstDocument(const AutomationElement& element) const;
    /// Clickable or focusable descendants of the element, in tree order; empty on failure.
    std::vector<ScreenElement> targetsBelow(const AutomationElement& element) const;

private:
    explicit Automation(ComPointer<IUIAutomation> opened);

    ComPointer<IUIAutomation> automation;
    ComPointer<IUIAutomationCacheRequest> properties;
    ComPointer<IUIAutomationCondition> targets;
};

} // namespace rotika

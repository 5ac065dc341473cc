#pragma once

#include "platform/elements.h"

#include "platform/windows/handles.h"

#include <uiautomationclient.h>

#include <optional>
#include <vector>

namespace rotika {

using AutomationElement = ComPointer<IUIAutomationElement>;

/// UI Automation, made ready to search for what can be clicked or focused. Used and ended on one thread,
/// within its COM session.
class Automation {
public:
    /// Nothing where the system has no such service.
    static std::optional<Automation> open();

    /// Empty if the window has none or its program does not answer in the time that the system gives it.
    AutomationElement elementOf(HWND window) const;
    /// The first document below the element; empty without one.
    AutomationElement firstDocument(const AutomationElement& element) const;
    /// What can be clicked or focused below the element, in the order of the tree; empty on failure.
    std::vector<ScreenElement> targetsBelow(const AutomationElement& element) const;

private:
    explicit Automation(ComPointer<IUIAutomation> opened);

    ComPointer<IUIAutomation> automation;
    ComPointer<IUIAutomationCacheRequest> properties;
    ComPointer<IUIAutomationCondition> targets;
};

} // namespace rotika

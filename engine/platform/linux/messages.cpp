#include "platform/messages.h"

#include "platform/linux/messages.h"
#include "platform/linux/owner_loop.h"

#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace rotika {

namespace {

struct PostedMessage {
    WindowHandle window = nullptr;
    std::uint32_t message = 0;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;
};

// Never destroyed: abandoned worker threads may post until the process ends.
struct Queue {
    std::mutex mutex;
    std::map<WindowHandle, MessageHandler> handlers;
    std::deque<PostedMessage> messages;
};
Queue& queue() {
    static Queue* const instance = new Queue;
    return *instance;
}

struct Delivery {
    MessageHandler handler = nullptr;
    PostedMessage posted;
};

std::optional<Delivery> takeNext() {
    Queue& all = queue();
    const std::lock_guard lock(all.mutex);
    if (all.messages.empty())
        return std::nullopt;
    const PostedMessage posted = all.messages.front();
    all.messages.pop_front();
    return Delivery{all.handlers[posted.window], posted};
}

/// One message per dispatch: if a handler opens a modal loop, that loop delivers the rest.
gboolean deliverOne(gpointer) {
    if (const auto delivery = takeNext())
        delivery->handler(delivery->posted.message, delivery->posted.wParam, delivery->posted.lParam);
    return G_SOURCE_REMOVE;
}

} // namespace

void registerWindow(WindowHandle window, MessageHandler handler) {
    const std::lock_guard lock(queue().mutex);
    queue().handlers[window] = handler;
}

bool postWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) {
    {
        const std::lock_guard lock(queue().mutex);
        const auto known = queue().handlers.find(window);
        if (known == queue().handlers.end() || known->second == nullptr)
            return false;
        queue().messages.push_back({window, message, wParam, lParam});
    }
    // With priority: a press must be handled before the next motion changes the cursor position.
    callOwnerSoon(deliverOne, nullptr);
    return true;
}

} // namespace rotika

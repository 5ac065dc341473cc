#include "platform/messages.h"

#include "platform/linux/glib_handles.h"
#include "platform/linux/window_registry.h"

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

// Worker threads that were abandoned may still post at the very end, so the queue is never destroyed.
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

/// One message a dispatch: a handler that opens a modal loop leaves the rest to that loop.
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
    // Soon: a press counts where the cursor stood when it came, however fast the mouse moves on.
    callOwnerSoon(deliverOne, nullptr);
    return true;
}

} // namespace rotika

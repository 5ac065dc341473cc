#include "platform/linux/owner_loop.h"

namespace rotika {

namespace {

void attachToOwner(GSource* source, GSourceFunc function, gpointer data) {
    g_source_set_callback(source, function, data, nullptr);
    g_source_attach(source, ownerContext());
    g_source_unref(source);
}

} // namespace

GMainContext* ownerContext() {
    static GMainContext* const context = g_main_context_ref_thread_default();
    return context;
}

// g_main_context_invoke would call the function at once on this thread whenever no thread owns the context.
void callOwnerSoon(GSourceFunc function, gpointer data) {
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT - 1);
    attachToOwner(source, function, data);
}

void callOwnerAfter(guint delayMs, GSourceFunc function, gpointer data) {
    attachToOwner(g_timeout_source_new(delayMs), function, data);
}

} // namespace rotika

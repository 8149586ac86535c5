#include "Ferrivane/linux/desktop/MainContext.h"

#include <utility>

#include <glib-unix.h>

namespace ferrivane::MainContext {
namespace {

struct Attached {
    DesktopServices::Loop loop;
    gpointer descriptor = nullptr;  // GLib's handle for it
};

Attached& attached() {
    static Attached loop;
    return loop;
}

gboolean prepare(GSource*, gint* timeout) {
    *timeout = attached().loop.timeoutMilliseconds();
    return *timeout == 0 ? TRUE : FALSE;
}

// Only when something is due: whoever runs the loop until nothing happens would never end.
gboolean check(GSource* source) {
    const bool isReadable = g_source_query_unix_fd(source, attached().descriptor) != 0;
    return isReadable || attached().loop.timeoutMilliseconds() == 0 ? TRUE : FALSE;
}

gboolean dispatch(GSource*, GSourceFunc, gpointer) {
    attached().loop.dispatch();
    return G_SOURCE_CONTINUE;
}

}  // namespace

void attach(DesktopServices::Loop loop) {
    attached().loop = std::move(loop);
    static GSourceFuncs functions{prepare, check, dispatch, nullptr, nullptr, nullptr};
    GSource* const source = g_source_new(&functions, sizeof(GSource));
    // An alert that waits for its answer inside one of our timers does not stop the others.
    g_source_set_can_recurse(source, TRUE);
    attached().descriptor = g_source_add_unix_fd(source, attached().loop.descriptor, G_IO_IN);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

void iterate() {
    g_main_context_iteration(nullptr, TRUE);
}

}  // namespace ferrivane::MainContext

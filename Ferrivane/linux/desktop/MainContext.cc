#include "Ferrivane/linux/desktop/MainContext.h"

#include <utility>

#include <glib-unix.h>

namespace ferrivane::MainContext {
namespace {

DesktopServices::Loop& attached() {
    static DesktopServices::Loop loop;
    return loop;
}

gboolean prepare(GSource*, gint* timeout) {
    *timeout = attached().timeoutMilliseconds();
    return *timeout == 0 ? TRUE : FALSE;
}

// After every wait: a look at what is due costs next to nothing.
gboolean check(GSource*) {
    return TRUE;
}

gboolean dispatch(GSource*, GSourceFunc, gpointer) {
    attached().dispatch();
    return G_SOURCE_CONTINUE;
}

}  // namespace

void attach(DesktopServices::Loop loop) {
    attached() = std::move(loop);
    static GSourceFuncs functions{prepare, check, dispatch, nullptr, nullptr, nullptr};
    GSource* const source = g_source_new(&functions, sizeof(GSource));
    // An alert that waits for its answer inside one of our timers does not stop the others.
    g_source_set_can_recurse(source, TRUE);
    g_source_add_unix_fd(source, attached().descriptor, G_IO_IN);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

void iterate() {
    g_main_context_iteration(nullptr, TRUE);
}

}  // namespace ferrivane::MainContext

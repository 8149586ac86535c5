// A program on the session bus: owns the name it is given, prints "owned", then every call that it
// gets, and ends when its standard input does.
#include <cstdio>

#include <gio/gio.h>

namespace {

// Runs on the connection's own thread.
GDBusMessage* printCall(GDBusConnection* bus, GDBusMessage* message, gboolean incoming, gpointer) {
    if (incoming == 0 ||
        g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
        return message;
    }
    GVariant* const body = g_dbus_message_get_body(message);
    gchar* const text = body != nullptr ? g_variant_print(body, 1) : g_strdup("()");
    std::printf("%s %s\n", g_dbus_message_get_member(message), text);
    std::fflush(stdout);
    g_free(text);
    GDBusMessage* const reply = g_dbus_message_new_method_reply(message);
    g_dbus_connection_send_message(bus, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(reply);
    g_object_unref(message);
    return nullptr;
}

}  // namespace

int main(int count, char** values) {
    if (count < 2) return 2;
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) return 1;
    g_dbus_connection_add_filter(bus, printCall, nullptr, nullptr);
    GVariant* const reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", values[1], 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
        nullptr);
    if (reply == nullptr) return 1;
    g_variant_unref(reply);
    std::puts("owned");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    g_object_unref(bus);
    return 0;
}

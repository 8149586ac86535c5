// A panel's side of the icons: owns org.kde.StatusNotifierWatcher, prints "owned", then
// "registered NAME" for every icon and "gone NAME" when its program has left the bus, and ends when
// its standard input does. With the argument "silent" it answers no call.
#include <cstdio>
#include <cstring>

#include <gio/gio.h>

namespace {

constexpr const char* kDescription = R"xml(
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  </interface>
</node>)xml";

bool isSilent = false;

void print(const char* what, const char* name) {
    std::printf("%s %s\n", what, name);
    std::fflush(stdout);
}

void gone(GDBusConnection*, const gchar* name, gpointer) {
    print("gone", name);
}

void call(GDBusConnection* bus, const gchar*, const gchar*, const gchar*, const gchar*,
          GVariant* arguments, GDBusMethodInvocation* invocation, gpointer) {
    const char* name = nullptr;
    g_variant_get(arguments, "(&s)", &name);
    print("registered", name);
    g_bus_watch_name_on_connection(bus, name, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, gone, nullptr,
                                   nullptr);
    if (!isSilent) g_dbus_method_invocation_return_value(invocation, nullptr);
}

GVariant* property(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* name,
                   GError**, gpointer) {
    return std::strcmp(name, "ProtocolVersion") == 0 ? g_variant_new_int32(0)
                                                     : g_variant_new_boolean(TRUE);
}

gboolean inputEnded(GIOChannel*, GIOCondition, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

void owned(GDBusConnection*, const gchar*, gpointer) {
    std::puts("owned");
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** values) {
    isSilent = count > 1 && std::strcmp(values[1], "silent") == 0;
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    GDBusNodeInfo* const description = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    if (bus == nullptr || description == nullptr) return 1;
    const GDBusInterfaceVTable table{call, property, nullptr, {}};
    g_dbus_connection_register_object(bus, "/StatusNotifierWatcher", description->interfaces[0],
                                      &table, nullptr, nullptr, nullptr);
    // Sets of flags, here and below.
    // NOLINTBEGIN(clang-analyzer-optin.core.EnumCastOutOfRange)
    constexpr auto kReplaceable = static_cast<GBusNameOwnerFlags>(
        G_BUS_NAME_OWNER_FLAGS_ALLOW_REPLACEMENT | G_BUS_NAME_OWNER_FLAGS_REPLACE);
    g_bus_own_name_on_connection(bus, "org.kde.StatusNotifierWatcher", kReplaceable, owned, nullptr,
                                 nullptr, nullptr);
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    GIOChannel* const input = g_io_channel_unix_new(0);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), inputEnded, loop);
    // NOLINTEND(clang-analyzer-optin.core.EnumCastOutOfRange)
    g_main_loop_run(loop);
    g_io_channel_unref(input);
    g_main_loop_unref(loop);
    g_dbus_node_info_unref(description);
    g_object_unref(bus);
    return 0;
}

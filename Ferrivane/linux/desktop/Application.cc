#include "Ferrivane/linux/desktop/Application.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include <glib-unix.h>
#include <signal.h>

#include "Ferrivane/linux/desktop/DisplayWatch.h"
#include "Ferrivane/linux/desktop/GObjects.h"
#include "Ferrivane/linux/desktop/SessionBus.h"
#include "core/support/Descriptors.h"

namespace ferrivane::Application {
namespace {

using Calls = DesktopServices::Calls;
using NameClaim = DesktopServices::NameClaim;

constexpr const char* kInterface = "org.freedesktop.Application";
constexpr int kTimeoutMilliseconds = 2000;
// For the sender's pid, and for a window with the toolkit's modules.
constexpr std::size_t kDescriptorsOfLink = 4;
constexpr std::size_t kDescriptorsOfWindow = 32;
constexpr const char* kDescription = R"(
<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate">
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="Open">
      <arg type="as" name="uris" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg type="s" name="action_name" direction="in"/>
      <arg type="av" name="parameter" direction="in"/>
      <arg type="a{sv}" name="platform_data" direction="in"/>
    </method>
  </interface>
</node>)";

// "org.example.App" lies at "/org/example/App", with "_" for "-".
std::string objectPath(const std::string& applicationId) {
    std::string path = "/" + applicationId;
    std::ranges::replace(path, '.', '/');
    std::ranges::replace(path, '-', '_');
    return path;
}

VariantPointer askBus(GDBusConnection* bus, const char* method, GVariant* arguments) {
    return SessionBus::call(
        bus, {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method},
        arguments, G_DBUS_CALL_FLAGS_NONE, kTimeoutMilliseconds);
}

// Tokens and ids are short; what is long is none, and would be kept for as long as the link waits.
std::optional<std::string> text(GVariant* dictionary, const char* key) {
    constexpr std::size_t kLongest = 4096;
    const char* value = nullptr;
    if (!g_variant_lookup(dictionary, key, "&s", &value)) return std::nullopt;
    const std::string_view found = value;
    if (found.empty() || found.size() > kLongest) return std::nullopt;
    return std::string(found);
}

std::vector<std::string> texts(GVariant* array) {
    std::vector<std::string> result;
    result.reserve(g_variant_n_children(array));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, array);
    const char* item = nullptr;
    while (g_variant_iter_next(&iterator, "&s", &item)) result.emplace_back(item);
    return result;
}

VariantPointer child(GVariant* tuple, gsize index) {
    return VariantPointer(g_variant_get_child_value(tuple, index));
}

// Whoever sent the call lives only until the reply, so it is looked at before.
void handle(GDBusConnection*, const gchar* sender, const gchar*, const gchar*,
            const gchar* methodName, GVariant* parameters, GDBusMethodInvocation* invocation,
            gpointer data) {
    const Calls& calls = *static_cast<const Calls*>(data);
    const std::string_view method = methodName;
    // A link that cannot go on is better refused than lost. And the toolkit ends the process where
    // it finds no descriptors.
    if (!descriptorsAreLeft(method == "Open" ? kDescriptorsOfLink : kDescriptorsOfWindow)) {
        return g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.DBus.Error.LimitsExceeded", "Too many open files.");
    }
    const auto platformData = child(parameters, g_variant_n_children(parameters) - 1);
    Calls::Sender from{.process = {},
                       .startupId = text(platformData.get(), "desktop-startup-id").value_or(""),
                       .activationToken = text(platformData.get(), "activation-token")};
    bool isTaken = true;
    if (method == "Open") {
        from.process = SessionBus::nameOwner(sender);
        isTaken = calls.open(texts(child(parameters, 0).get()), from);
    } else if (method == "ActivateAction") {
        const auto name = child(parameters, 0);
        isTaken = calls.activateAction(g_variant_get_string(name.get(), nullptr), from);
    } else {
        calls.activate(from);
    }
    if (isTaken) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        g_dbus_method_invocation_return_dbus_error(invocation,
                                                   "org.freedesktop.DBus.Error.InvalidArgs",
                                                   "Refused. The log of Ferrivane says why.");
    }
}

// The name that this process owns; empty without one.
std::string& ownedName() {
    static std::string name;
    return name;
}

void busClosed(GDBusConnection*, gboolean, GError*, gpointer data) {
    static_cast<const Calls*>(data)->sessionEnded();
}

constexpr std::array kEndingSignals{SIGTERM, SIGINT, SIGHUP};

gboolean terminated(gpointer data) {
    for (const int number : kEndingSignals) ::signal(number, SIG_DFL);
    static_cast<const Calls*>(data)->terminate();
    return G_SOURCE_REMOVE;
}

bool registerObject(GDBusConnection* bus, const std::string& path, Calls& calls) {
    static GDBusNodeInfo* const description = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    static const GDBusInterfaceVTable table{handle, nullptr, nullptr, {}};
    return g_dbus_connection_register_object(
               bus, path.c_str(), g_dbus_node_info_lookup_interface(description, kInterface),
               &table, &calls, nullptr, nullptr) != 0;
}

bool callActivate(GDBusConnection* bus, const std::string& applicationId,
                  const std::optional<std::string>& activationToken) {
    GVariantBuilder platformData;
    g_variant_builder_init(&platformData, G_VARIANT_TYPE_VARDICT);
    if (activationToken) {
        for (const char* key : {"activation-token", "desktop-startup-id"}) {
            g_variant_builder_add(&platformData, "{sv}", key,
                                  g_variant_new_string(activationToken->c_str()));
        }
    }
    constexpr int kUsualTimeout = -1;
    return SessionBus::call(
               bus,
               {applicationId.c_str(), objectPath(applicationId).c_str(), kInterface, "Activate"},
               g_variant_new("(a{sv})", &platformData), G_DBUS_CALL_FLAGS_NONE,
               kUsualTimeout) != nullptr;
}

}  // namespace

NameClaim serve(const std::string& applicationId, Calls calls) {
    static Calls served;
    GDBusConnection* const bus = SessionBus::connection();
    if (bus == nullptr) return NameClaim::noBus;
    served = std::move(calls);
    // First the object, then the name: whoever sees the name may call at once.
    if (!registerObject(bus, objectPath(applicationId), served)) return NameClaim::noBus;
    constexpr guint32 kDoNotQueue = 4;
    constexpr guint32 kPrimaryOwner = 1;
    const auto reply =
        askBus(bus, "RequestName", g_variant_new("(su)", applicationId.c_str(), kDoNotQueue));
    if (!reply) return NameClaim::noBus;
    guint32 result = 0;
    g_variant_get(reply.get(), "(u)", &result);
    if (result != kPrimaryOwner) return NameClaim::taken;
    ownedName() = applicationId;
    g_signal_connect(bus, "closed", G_CALLBACK(busClosed), &served);
    for (const int number : kEndingSignals) g_unix_signal_add(number, terminated, &served);
    DisplayWatch::start(served.sessionEnded);
    return NameClaim::owned;
}

void stopServing() {
    GDBusConnection* const bus = SessionBus::connection();
    const std::string name = std::exchange(ownedName(), {});
    if (bus == nullptr || name.empty()) return;
    // The bus delivers in order: what was sent to the name has arrived when this is answered. It is
    // not where there are no descriptors: then the name goes with the process.
    askBus(bus, "ReleaseName", g_variant_new("(s)", name.c_str()));
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    g_dbus_connection_flush_sync(bus, nullptr, nullptr);
}

bool activate(const std::string& applicationId, const std::optional<std::string>& activationToken) {
    GDBusConnection* const bus = SessionBus::connection();
    if (bus == nullptr) return false;
    // One that ends may take the call and not answer it; the next one is somebody else's.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (callActivate(bus, applicationId, activationToken)) return true;
    }
    return false;
}

}  // namespace ferrivane::Application

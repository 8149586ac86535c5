#include "Ferrivane/linux/desktop/SessionBus.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "Ferrivane/linux/Environment.h"
#include "core/support/Descriptors.h"

namespace ferrivane::SessionBus {
namespace {

constexpr int kTimeoutMilliseconds = 2000;

// GIO would start a bus of its own when it finds none, or an address that asks for it.
bool hasBus() {
    const std::string address = environment("DBUS_SESSION_BUS_ADDRESS");
    if (!address.empty()) return address.find("autolaunch:") == std::string::npos;
    const std::string runtime = environment("XDG_RUNTIME_DIR");
    struct stat bus{};
    return !runtime.empty() && ::stat((runtime + "/bus").c_str(), &bus) == 0 &&
           S_ISSOCK(bus.st_mode) && bus.st_uid == ::geteuid();
}

// The library itself would wait for ever for a bus that takes the connection and says nothing, and
// end the process where it finds no thread.
ObjectPointer<GDBusConnection> connectInTime(
    const std::function<GDBusConnection*(GCancellable*)>& connect) {
    const ObjectPointer<GCancellable> attempt(g_cancellable_new());
    const auto cancelInTime = [&](const std::stop_token& connected) {
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any().wait_for(
            lock, connected, std::chrono::milliseconds(kTimeoutMilliseconds), [] { return false; });
        if (!connected.stop_requested()) g_cancellable_cancel(attempt.get());
    };
    std::jthread watch;
    try {
        watch = std::jthread(cancelInTime);
    } catch (const std::system_error&) {
        return nullptr;
    }
    return ObjectPointer<GDBusConnection>(connect(attempt.get()));
}

// The processes of a process's session, which is not ours, as far as they are alive: a browser may
// have been started by a script that still runs.
std::vector<guint32> sessionOf(pid_t member) {
    const pid_t leader = ::getsid(member);
    if (leader == ::getsid(0)) return {static_cast<guint32>(member)};
    std::vector<guint32> members;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const pid_t process = std::atoi(entry->path().filename().c_str());
        if (process > 0 && ::getsid(process) == leader) {
            members.push_back(static_cast<guint32>(process));
        }
    }
    return members;
}

}  // namespace

GDBusConnection* connection() {
    if (!hasBus()) return nullptr;
    static const auto bus = connectInTime(
        [](GCancellable* attempt) { return g_bus_get_sync(G_BUS_TYPE_SESSION, attempt, nullptr); });
    // The end of the bus is not ours.
    if (bus) g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return bus.get();
}

ObjectPointer<GDBusConnection> another() {
    if (connection() == nullptr) return nullptr;
    const TextPointer address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    return connectInTime([&](GCancellable* attempt) {
        // A set of flags, in the enumeration of the single ones.
        constexpr auto kFlags =  // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange)
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        return g_dbus_connection_new_for_address_sync(address.get(), kFlags, nullptr, attempt,
                                                      nullptr);
    });
}

VariantPointer call(GDBusConnection* bus, const Method& method, GVariant* arguments,
                    GDBusCallFlags flags, int timeoutMilliseconds) {
    constexpr std::size_t kDescriptorsOfCall = 4;
    if (bus == nullptr || !descriptorsAreLeft(kDescriptorsOfCall)) {
        g_variant_unref(g_variant_ref_sink(arguments));
        return nullptr;
    }
    return VariantPointer(g_dbus_connection_call_sync(
        bus, method.destination, method.path, method.interface, method.name, arguments, nullptr,
        flags, timeoutMilliseconds, nullptr, nullptr));
}

std::optional<pid_t> nameOwner(std::string_view name) {
    const VariantPointer reply = call(connection(),
                                      {"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus", "GetConnectionUnixProcessID"},
                                      g_variant_new("(s)", std::string(name).c_str()),
                                      G_DBUS_CALL_FLAGS_NO_AUTO_START, kTimeoutMilliseconds);
    if (!reply) return std::nullopt;
    guint32 process = 0;
    g_variant_get(reply.get(), "(u)", &process);
    return static_cast<pid_t>(process);
}

void moveToOwnScope(pid_t process) {
    std::error_code error;
    const std::string runtime = environment("XDG_RUNTIME_DIR");
    if (runtime.empty() || !std::filesystem::exists(runtime + "/systemd/private", error)) return;

    const std::string unit = "app-ferrivane-chrome-" + std::to_string(process) + ".scope";
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE("a(sv)"));
    const std::vector<guint32> members = sessionOf(process);
    g_variant_builder_add(&properties, "(sv)", "PIDs",
                          g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, members.data(),
                                                    members.size(), sizeof members[0]));
    g_variant_builder_add(&properties, "(sv)", "Slice", g_variant_new_string("app.slice"));
    call(connection(),
         {"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
          "org.freedesktop.systemd1.Manager", "StartTransientUnit"},
         g_variant_new("(ssa(sv)a(sa(sv)))", unit.c_str(), "fail", &properties, nullptr),
         G_DBUS_CALL_FLAGS_NO_AUTO_START, kTimeoutMilliseconds);
}

}  // namespace ferrivane::SessionBus

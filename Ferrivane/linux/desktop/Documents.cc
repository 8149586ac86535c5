#include "Ferrivane/linux/desktop/Documents.h"

#include "Ferrivane/linux/desktop/GObjects.h"
#include "Ferrivane/linux/desktop/SessionBus.h"

namespace ferrivane::Documents {

std::expected<void, std::string> open(const std::filesystem::path& file) {
    const ObjectPointer<GFile> location(g_file_new_for_path(file.c_str()));
    const TextPointer uri(g_file_get_uri(location.get()));
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(uri.get(), nullptr, &error)) return {};
    const ErrorPointer owned(error);
    return std::unexpected(owned->message);
}

void select(const std::filesystem::path& file) {
    constexpr int kTimeoutMilliseconds = 5000;  // the bus may have to start a file manager
    GDBusConnection* const bus = SessionBus::connection();
    const ObjectPointer<GFile> location(g_file_new_for_path(file.c_str()));
    const TextPointer uri(g_file_get_uri(location.get()));
    if (bus != nullptr) {
        const char* const uris[] = {uri.get(), nullptr};
        const auto reply = SessionBus::call(
            bus,
            {"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
             "org.freedesktop.FileManager1", "ShowItems"},
            g_variant_new("(^ass)", uris, ""), G_DBUS_CALL_FLAGS_NONE, kTimeoutMilliseconds);
        if (reply) return;
    }
    (void)open(file.parent_path());
}

}  // namespace ferrivane::Documents

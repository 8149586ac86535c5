#include "Ferrivane/linux/desktop/Documents.h"

#include "Ferrivane/linux/desktop/GObjects.h"

namespace ferrivane::Documents {

std::expected<void, std::string> open(const std::filesystem::path& file) {
    const ObjectPointer<GFile> location(g_file_new_for_path(file.c_str()));
    const TextPointer uri(g_file_get_uri(location.get()));
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(uri.get(), nullptr, &error)) return {};
    const ErrorPointer owned(error);
    return std::unexpected(owned->message);
}

}  // namespace ferrivane::Documents

#include "Ferrivane/linux/desktop/KeyFile.h"

#include <memory>

#include <glib.h>

namespace ferrivane::KeyFile {
namespace {

constexpr const char* kGroup = "Preferences";

struct Release {
    void operator()(GKeyFile* keys) const { g_key_file_unref(keys); }
};

std::unique_ptr<GKeyFile, Release> load(const std::filesystem::path& file) {
    std::unique_ptr<GKeyFile, Release> keys(g_key_file_new());
    g_key_file_load_from_file(keys.get(), file.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
    return keys;
}

}  // namespace

std::optional<std::string> value(const std::filesystem::path& file, const std::string& key) {
    const std::unique_ptr<char, void (*)(void*)> text(
        g_key_file_get_value(load(file).get(), kGroup, key.c_str(), nullptr), g_free);
    if (!text) return std::nullopt;
    return std::string(text.get());
}

bool setValue(const std::filesystem::path& file, const std::string& key, const std::string& text) {
    const auto keys = load(file);
    g_key_file_set_value(keys.get(), kGroup, key.c_str(), text.c_str());
    return g_key_file_save_to_file(keys.get(), file.c_str(), nullptr) != FALSE;
}

}  // namespace ferrivane::KeyFile

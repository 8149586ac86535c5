#include "Ferrivane/linux/desktop/KeyFile.h"

#include <memory>

#include "Ferrivane/linux/desktop/GObjects.h"

namespace ferrivane::KeyFile {
namespace {

constexpr const char* kGroup = "Preferences";

struct Release {
    void operator()(GKeyFile* keys) const { g_key_file_unref(keys); }
};

std::unique_ptr<GKeyFile, Release> load(const std::string& file) {
    std::unique_ptr<GKeyFile, Release> keys(g_key_file_new());
    g_key_file_load_from_data(keys.get(), file.data(), file.size(), G_KEY_FILE_KEEP_COMMENTS,
                              nullptr);
    return keys;
}

}  // namespace

std::optional<std::string> value(const std::string& file, const std::string& key) {
    const TextPointer text(g_key_file_get_value(load(file).get(), kGroup, key.c_str(), nullptr));
    if (!text) return std::nullopt;
    return std::string(text.get());
}

std::string withValue(const std::string& file, const std::string& key, const std::string& text) {
    const auto keys = load(file);
    g_key_file_set_value(keys.get(), kGroup, key.c_str(), text.c_str());
    gsize length = 0;
    const TextPointer whole(g_key_file_to_data(keys.get(), &length, nullptr));
    return {whole.get(), length};
}

}  // namespace ferrivane::KeyFile

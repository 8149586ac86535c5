#include "Ferrivane/linux/desktop/MenuProperties.h"

#include <cctype>
#include <string>

namespace ferrivane {
namespace {

VariantPointer sunk(GVariant* variant) {
    return VariantPointer(g_variant_ref_sink(variant));
}

// One "_" marks a mnemonic.
std::string label(const std::string& title) {
    std::string escaped;
    for (const char character : title) escaped.append(character == '_' ? 2 : 1, character);
    return escaped;
}

// Keys that are pressed together; a menu item could have several such sets. Panels of GTK look for
// the name of a keysym and show none for a sign such as ",", those of Qt for the sign itself.
VariantPointer shortcut(const std::string& key) {
    const auto letter = static_cast<unsigned char>(key.front());
    std::vector<std::string> names{"Control"};
    if (std::isupper(letter) != 0) names.emplace_back("Shift");
    names.push_back(key);
    names.back().front() = static_cast<char>(std::tolower(letter));
    GVariantBuilder keys;
    g_variant_builder_init(&keys, G_VARIANT_TYPE("aas"));
    g_variant_builder_open(&keys, G_VARIANT_TYPE("as"));
    for (const std::string& name : names) g_variant_builder_add(&keys, "s", name.c_str());
    g_variant_builder_close(&keys);
    return sunk(g_variant_builder_end(&keys));
}

}  // namespace

MenuProperties menuProperties(const MenuItem* item) {
    MenuProperties result;
    const auto add = [&](const char* name, GVariant* value) {
        result.emplace_back(name, sunk(value));
    };
    if (item == nullptr) {
        add("children-display", g_variant_new_string("submenu"));
    } else if (item->command == Command::separator) {
        add("type", g_variant_new_string("separator"));
    } else {
        add("label", g_variant_new_string(label(item->title).c_str()));
        if (!item->key.empty()) result.emplace_back("shortcut", shortcut(item->key));
    }
    // Said although they are the defaults: somebody may ask for one by its name.
    add("enabled", g_variant_new_boolean(TRUE));
    add("visible", g_variant_new_boolean(TRUE));
    return result;
}

}  // namespace ferrivane

#include "Ferrivane/IncomingLinks.h"

#include <algorithm>
#include <array>

#include "Ferrivane/AppInfo.h"
#include "core/support/Text.h"
#include "core/support/Url.h"

namespace ferrivane::IncomingLinks {
namespace {

// A browser takes ".." away by the letter, which behind a symbolic link leads somewhere else.
std::filesystem::path withoutDots(const std::filesystem::path& existing) {
    std::error_code error;
    if (std::ranges::find(existing, std::filesystem::path("..")) != existing.end()) {
        const auto target = std::filesystem::canonical(existing, error);
        if (!error) return target;
    }
    return existing.lexically_normal();
}

}  // namespace

Operands fromOperands(const std::vector<std::string>& operands,
                      const std::filesystem::path& directory) {
    Operands found;
    for (const std::string& operand : operands) {
        if (operand.empty() || operand.starts_with('-')) continue;
        if (isOwn(operand)) {
            found.askForSettings = true;
            continue;
        }
        if (Url::schemeOf(operand)) {
            found.links.push_back(operand);
            continue;
        }
        const std::filesystem::path path = directory / operand;
        std::error_code error;
        if (std::filesystem::exists(path, error)) {
            found.links.push_back(fileURL(withoutDots(path)));
        }
    }
    return found;
}

bool isOwn(std::string_view url) {
    const auto scheme = Url::schemeOf(url);
    return scheme && Text::equalIgnoringCase(*scheme, AppInfo::urlScheme);
}

std::string fileURL(const std::filesystem::path& path) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/!$&'()*+,;=:@";
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char c : path.string()) {
        if (kPlain.find(c) != std::string_view::npos) {
            url.push_back(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            url.push_back('%');
            url.push_back(kHexDigits[byte >> 4]);
            url.push_back(kHexDigits[byte & 0x0F]);
        }
    }
    return url;
}

}  // namespace ferrivane::IncomingLinks

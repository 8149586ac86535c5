// The operands of a start, one a line.
#include <algorithm>

#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/IncomingLinks.h"
#include "core/support/Url.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {
namespace {

const std::filesystem::path directory = "/etc";

// The path of a file URL.
std::string decoded(std::string_view url) {
    url.remove_prefix(std::string_view("file://").size());
    std::string path;
    for (std::size_t i = 0; i < url.size(); ++i) {
        if (url[i] == '%') {
            path.push_back(
                static_cast<char>(std::stoi(std::string(url.substr(i + 1, 2)), nullptr, 16)));
            i += 2;
        } else {
            path.push_back(url[i]);
        }
    }
    return path;
}

void checkFile(const std::string& link, const std::string& operand) {
    require(link.starts_with("file:///"), "a file becomes a file URL");
    const auto url = Url::parse(link);
    require(url && url->scheme == "file" && !url->host, "its URL is one, without a host");
    const std::string path = decoded(link);
    require(IncomingLinks::fileURL(path) == link, "path and URL say the same");
    std::error_code error;
    const bool isSame = std::filesystem::equivalent(path, directory / operand, error);
    require(isSame || error, "the URL leads to the file");
    const std::filesystem::path parts = path;
    require(std::ranges::find(parts, std::filesystem::path("..")) == parts.end(), "without dots");
}

}  // namespace

void run(std::string_view input) {
    std::vector<std::string> operands = splitAt(input, '\n');
    for (std::string& operand : operands) std::erase(operand, '\0');  // cannot come by argv
    const auto found = IncomingLinks::fromOperands(operands, directory);

    std::vector<std::string> links;
    bool areForUs = false;
    for (const std::string& operand : operands) {
        const auto alone = IncomingLinks::fromOperands({operand}, directory);
        require(alone.links.size() + (alone.askForSettings ? 1 : 0) <= 1, "one becomes one");
        areForUs = areForUs || alone.askForSettings;
        links.insert(links.end(), alone.links.begin(), alone.links.end());
        require(alone.askForSettings == IncomingLinks::isOwn(operand), "our own ask for settings");
        if (!alone.links.empty() && alone.links[0] != operand) checkFile(alone.links[0], operand);
    }
    require(found.links == links, "operands do not depend on each other");
    require(found.askForSettings == areForUs, "one of ours is enough");
    for (const std::string& link : links) {
        require(!ChromeLauncher::isSwitch(link), "no link is a switch");
        require(Url::schemeOf(link).has_value(), "every link has a scheme");
    }
}

}  // namespace ferrivane::fuzz

#include "Ferrivane/DefaultBrowser.h"

#include <algorithm>
#include <expected>
#include <memory>
#include <utility>

namespace ferrivane::DefaultBrowser {
namespace {

bool handles(const Applications& applications, const std::optional<std::string>& identifier,
             std::string_view scheme) {
    const auto current = handler(applications, scheme);
    return identifier && current && applications.identifier(*current) == identifier;
}

struct Making {
    Applications& applications;
    std::filesystem::path application;
    std::optional<std::string> identifier;
    std::function<void(const Failures&)> completion;
    Failures failures = {};
};

// The scheme with this index and all after it.
void makeFrom(std::size_t index, const std::shared_ptr<Making>& making) {
    while (index < schemes.size() &&
           handles(making->applications, making->identifier, schemes.at(index))) {
        ++index;
    }
    if (index == schemes.size()) return making->completion(making->failures);
    making->applications.setHandler(
        making->application, schemes.at(index),
        [index, making](const std::expected<void, PlatformError>& result) {
            if (!result) making->failures.emplace(schemes.at(index), result.error());
            makeFrom(index + 1, making);
        });
}

}  // namespace

std::string sampleLink(std::string_view scheme) {
    return std::string(scheme) + "://example.com";
}

std::optional<std::filesystem::path> handler(const Applications& applications,
                                             std::string_view scheme) {
    return applications.handler(scheme);
}

bool isDefault(const Applications& applications, const std::filesystem::path& application) {
    const auto identifier = applications.identifier(application);
    return std::ranges::all_of(schemes, [&](std::string_view scheme) {
        return handles(applications, identifier, scheme);
    });
}

void make(Applications& applications, const std::filesystem::path& application,
          std::function<void(const Failures&)> completion) {
    makeFrom(0, std::make_shared<Making>(Making{
                    .applications = applications,
                    .application = application,
                    .identifier = applications.identifier(application),
                    .completion = std::move(completion),
                }));
}

}  // namespace ferrivane::DefaultBrowser

#include "Ferrivane/ProfileSource.h"

#include <utility>

#include "Ferrivane/HelperScript.h"
#include "core/ChromeProfiles.h"

namespace ferrivane::ProfileSource {
namespace {

template<typename Result>
Profiles described(Result result) {
    if (!result) return std::unexpected(result.error().description());
    return std::move(*result);
}

}  // namespace

void load(const Platform& platform, std::function<void(Profiles)> completion) {
    if (!platform.isSandboxed) {
        return completion(described(ChromeProfiles::load(ChromeProfiles::localStateURL())));
    }
    HelperScript::loadProfiles(
        platform, [&loop = platform.mainLoop,
                   completion = std::move(completion)](HelperScript::Profiles profiles) {
            loop.after(
                {}, [completion, result = described(std::move(profiles))] { completion(result); });
        });
}

}  // namespace ferrivane::ProfileSource

// The ids of applications in the path of a control group.
#include <algorithm>

#include "Ferrivane/linux/AppUnit.h"
#include "tests/fuzz/Fuzz.h"

namespace ferrivane::fuzz {

void run(std::string_view input) {
    const auto ids = AppUnit::candidateIds(input);
    const auto units = static_cast<std::size_t>(std::ranges::count(input, '/')) + 1;
    require(ids.size() <= 2 * units, "a unit has at most two ids");
    for (const std::string& id : ids) {
        require(!id.empty(), "an id is not empty");
        require(id.size() <= input.size(), "an id is a part of the path");
    }
    const std::string path(input);
    require(AppUnit::candidateIds("/" + path + "/") == ids, "slashes at the ends do not matter");

    const auto inScope = AppUnit::candidateIds(path + "/app-org.example.Inner-1.scope");
    require(!inScope.empty() && inScope[0] == "org.example.Inner", "the inner unit comes first");
    require(std::ranges::equal(inScope.begin() + 1, inScope.end(), ids.begin(), ids.end()),
            "then those around it");
}

}  // namespace ferrivane::fuzz

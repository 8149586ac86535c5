#include "tests/app/AppTest.h"

#include <chrono>
#include <cstddef>
#include <regex>
#include <sstream>

#include "core/port/Paths.h"
#include "tests/support/Files.h"

namespace ferrivane::test {
namespace {

using namespace std::chrono_literals;

std::string jsonText(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result.push_back('\\');
        result.push_back(c);
    }
    return result + "\"";
}

}  // namespace

std::vector<std::string> linesWithoutTime(const std::filesystem::path& file) {
    if (!std::filesystem::exists(file)) return {};
    static const std::regex stamp(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} )");
    std::istringstream text(readText(file));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        std::smatch found;
        const bool hasTime =
            std::regex_search(line, found, stamp, std::regex_constants::match_continuous);
        lines.push_back(hasTime ? found.suffix().str() : "no time: " + line);
    }
    return lines;
}

AppTest::AppTest() {
    std::filesystem::create_directory(userData);
    useUserData(userData);
}

void AppTest::useUserData(const std::filesystem::path& directory) {
    Paths::setChromeUserDataDirectory(directory);
}

void AppTest::writeRules(std::string_view json) const {
    writeText(rulesFile, json);
}

void AppTest::writeCatalogue(const std::vector<ChromeProfile>& profiles) const {
    std::string entries;
    for (const ChromeProfile& profile : profiles) {
        if (!entries.empty()) entries += ",";
        entries += jsonText(profile.directory) + ":{\"name\":" + jsonText(profile.name);
        if (profile.email) entries += ",\"user_name\":" + jsonText(*profile.email);
        if (profile.hostedDomain)
            entries += ",\"hosted_domain\":" + jsonText(*profile.hostedDomain);
        entries += "}";
    }
    writeLocalState(R"({"profile":{"info_cache":{)" + entries + "}}}");
}

void AppTest::writeLocalState(std::string_view json) const {
    writeText(userData / "Local State", json);
}

std::vector<std::string> AppTest::newLogLines() {
    EXPECT_TRUE(log.flush(60s));
    std::vector<std::string> lines = linesWithoutTime(log.fileURL);
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(linesSeen));
    linesSeen += lines.size();
    return lines;
}

}  // namespace ferrivane::test

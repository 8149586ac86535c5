// What the tests of a sandboxed application have in common: real folders for a script that never
// runs, because the fake platform does its work.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/HelperScript.h"
#include "tests/app/AppTest.h"
#include "tests/support/Files.h"

namespace ferrivane::test {

class HelperTest : public AppTest {
  protected:
    static constexpr std::string_view kScript = "#!/bin/sh\nexit 0\n";

    // Sandboxed, with a bundled script and a folder, and nothing installed.
    HelperTest() {
        for (const auto& folder : {scripts, temporary, bundled.parent_path()}) {
            std::filesystem::create_directory(folder);
        }
        writeText(bundled, kScript);
        fake.isSandboxed = true;
        fake.scripts.folder = scripts;
        fake.scripts.bundled = bundled;
        fake.scripts.temporary = temporary;
    }

    void installScript(std::string_view text = kScript) const {
        writeText(installed, text);
        std::filesystem::permissions(installed, std::filesystem::perms::owner_all);
    }
    // The script writes this to the destination of "profiles".
    void copyByScript(std::string text) {
        fake.scripts.whenRun = [text = std::move(text)](const std::vector<std::string>& words) {
            if (words.size() == 2 && words[0] == "profiles") writeText(words[1], text);
        };
    }
    bool nothingTemporary() const { return std::filesystem::is_empty(temporary); }

    const std::filesystem::path scripts = dir / "scripts";
    const std::filesystem::path installed = scripts / "ferrivane-helper.sh";
    const std::filesystem::path bundled = dir / "bundle/ferrivane-helper.sh";
    const std::filesystem::path temporary = dir / "temporary";
};

}  // namespace ferrivane::test

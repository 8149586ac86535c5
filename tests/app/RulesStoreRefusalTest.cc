// What the settings do when the system refuses them the folder of the rules.
#include <gmock/gmock.h>

#include "Ferrivane/RulesStore.h"
#include "tests/app/AppTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace ferrivane {
namespace {

class RulesStoreRefusal : public test::AppTest {};

// Nobody can know whether there is a text of others to be kept, so nothing is written over it; and
// the look for a free name for it ends.
TEST_F(RulesStoreRefusal, AFolderThatCannotBeSearchedIsAProblemAndNoEndlessSearch) {
    const std::filesystem::path folder = dir / "config";
    std::filesystem::create_directory(folder);
    test::writeText(folder / "rules.json", "of others");
    test::setMode(dir.path(), 0755);
    test::setMode(folder, 0600);
    const std::string problem = test::inChild([&] {
        test::becomeUnprivileged();
        RulesStore store(fake.platform(), log, folder / "rules.json");
        store.addRule();
        return store.problem().value_or("saved");
    });
    test::setMode(folder, 0700);
    EXPECT_EQ(problem, "cannot save rules.json: replacing the file failed: Permission denied");
    EXPECT_EQ(test::readText(folder / "rules.json"), "of others");
    EXPECT_EQ(test::namesIn(folder), std::vector<std::string>{"rules.json"});
}

}  // namespace
}  // namespace ferrivane

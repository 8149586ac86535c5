#include <gtest/gtest.h>

#include "core/ChromeProfiles.h"

namespace ferrivane {
namespace {

TEST(ChromeProfilesResolve, ByDirectoryThenNameThenAccount) {
    const std::vector<ChromeProfile> profiles{
        {"Default", "Profile 1", "home@a.b", {}},
        {"Profile 1", "Work", "me@work.example", "work.example"},
        {"Profile 2", "work", "Default", {}},
        {"Profile 3", "Straße", {}, {}},
        {"Profile 4", "home@a.b", "other@a.b", {}},
        {"Profile 5", "Caf\u00E9", "ME@work.example", {}},
        {"Profile 6", " ", {}, {}},
    };
    const struct {
        const char* name;
        const char* requested;
        const char* directory;  // "-": none
    } rows[] = {
        {"directory", "Profile 2", "Profile 2"},
        {"directory beats the name of an earlier profile", "Profile 1", "Profile 1"},
        {"directory beats an account", "Default", "Default"},
        {"directories are compared exactly, accounts are not", "default", "Profile 2"},
        {"directory in other case", "profile 2", "-"},
        {"name", "Work", "Profile 1"},
        {"name in other case, the first of two", "  wORK ", "Profile 1"},
        {"name beats the account of an earlier profile", "HOME@a.b", "Profile 4"},
        {"name with a sharp s", "STRASSE", "Profile 3"},
        {"decomposed name", "CAFE\u0301", "Profile 5"},
        {"accents are kept", "Cafe", "-"},
        {"account", "other@A.B", "Profile 4"},
        {"the first of two accounts", "me@WORK.example", "Profile 1"},
        {"blanks and line breaks around", "\u00A0\n Profile 3\t", "Profile 3"},
        {"part of a name", "Wor", "-"},
        {"domain", "work.example", "-"},
        {"empty", "", "-"},
        {"blank, though a name is blank", " \t", "-"},
        {"unknown", "Profile 9", "-"},
    };
    for (const auto& row : rows) {
        const auto found = ChromeProfiles::resolve(row.requested, profiles);
        EXPECT_EQ(found ? found->directory : "-", row.directory) << row.name;
    }
    EXPECT_EQ(ChromeProfiles::resolve("Profile 1", profiles), profiles[1]) << "the whole record";
    EXPECT_EQ(ChromeProfiles::resolve("Default", {}), std::nullopt);
}

TEST(ChromeProfilesResolve, NothingIsNoProfileEvenWhereOneIsCalledNothing) {
    const std::vector<ChromeProfile> profiles{{"", "", "", {}}};
    EXPECT_EQ(ChromeProfiles::resolve("", profiles), std::nullopt);
    EXPECT_EQ(ChromeProfiles::resolve(" ", profiles), std::nullopt);
}

TEST(ChromeProfilesResolve, DefaultIsFoundByNameOnlyWhenSomebodyIsCalledThat) {
    const std::vector<ChromeProfile> plain{{"Default", "Person 1", "a@b.c", {}}};
    EXPECT_EQ(ChromeProfiles::resolve("default", plain), std::nullopt);
    const std::vector<ChromeProfile> named{{"Default", "DEFAULT", {}, {}}};
    EXPECT_EQ(ChromeProfiles::resolve("default", named), named[0]);
}

TEST(ChromeProfilesBareDirectory, IsDefaultOrProfileAndANumber) {
    const struct {
        const char* name;
        const char* requested;
        const char* directory;  // "-": none
    } rows[] = {
        {"default", "Default", "Default"},
        {"blanks around", " Default\n", "Default"},
        {"default in other case", "default", "-"},
        {"more than default", "Default 1", "-"},
        {"number", "Profile 1", "Profile 1"},
        {"blanks around a number", "\u00A0Profile 12 ", "Profile 12"},
        {"zero", "Profile 0", "Profile 0"},
        {"zeros in front stay", "Profile 007", "Profile 007"},
        {"minus sign", "Profile -3", "Profile -3"},
        {"plus sign", "Profile +3", "Profile +3"},
        {"largest number", "Profile 9223372036854775807", "Profile 9223372036854775807"},
        {"smallest number", "Profile -9223372036854775808", "Profile -9223372036854775808"},
        {"beyond the largest", "Profile 9223372036854775808", "-"},
        {"no number", "Profile ", "-"},
        {"nothing behind", "Profile", "-"},
        {"letter", "Profile x", "-"},
        {"letter behind", "Profile 1a", "-"},
        {"lower case", "profile 1", "-"},
        {"no blank", "Profile1", "-"},
        {"two blanks", "Profile  1", "-"},
        {"blank behind the sign", "Profile - 1", "-"},
        {"sign alone", "Profile -", "-"},
        {"plus sign alone", "Profile +", "-"},
        {"two signs", "Profile +-1", "-"},
        {"two plus signs", "Profile ++1", "-"},
        {"fraction", "Profile 1.0", "-"},
        {"hexadecimal", "Profile 0x1", "-"},
        {"digits of another script", "Profile ١", "-"},
        {"no-break space in the middle", "Profile\u00A01", "-"},
        {"empty", "", "-"},
        {"blank", "  ", "-"},
        {"display name", "Work", "-"},
        {"path", "Profile 1/..", "-"},
    };
    for (const auto& row : rows) {
        const auto found = ChromeProfiles::bareDirectory(row.requested);
        EXPECT_EQ(found ? found->directory : "-", row.directory) << row.name;
        if (found) {
            EXPECT_EQ(*found, (ChromeProfile{row.directory, row.directory, {}, {}})) << row.name;
        }
    }
}

}  // namespace
}  // namespace ferrivane

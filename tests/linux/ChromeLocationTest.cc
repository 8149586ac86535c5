#include <map>

#include <gtest/gtest.h>

#include "Ferrivane/linux/ChromeLocation.h"
#include "tests/linux/Entries.h"
#include "tests/linux/Program.h"
#include "tests/support/TempDir.h"

namespace ferrivane {
namespace {

using Words = std::vector<std::string>;
using Names = std::vector<std::string_view>;

class ChromeLocationTest : public ::testing::Test {
  protected:
    ChromeLocationTest() {
        for (const char* name : {"chrome", "flatpak", "chromium"}) {
            test::writeScript(dir / "bin" / name, "");
        }
    }

    void install(const std::string& id, const std::string& exec, const std::string& more = "") {
        test::writeEntry(folder / (id + ".desktop"), id, exec, more);
    }
    void installFlatpak(const std::string& id) {
        install(id, flatpak + " run --file-forwarding " + id + " @@u %U @@", "X-Flatpak=" + id);
    }

    std::optional<ChromeLocation> locate() const {
        return ChromeLocator::locate(entries, "/home/ada", [this](const char* name) {
            const auto found = environment.find(name);
            return found == environment.end() ? "" : found->second;
        });
    }

    const test::TempDir dir;
    const std::filesystem::path folder = dir / "applications";
    const DesktopEntries entries{{folder}};
    const std::string chrome = dir / "bin/chrome";
    const std::string flatpak = dir / "bin/flatpak";
    std::map<std::string, std::string> environment;
};

TEST_F(ChromeLocationTest, Variants) {
    const std::string config = "/home/ada/.config/";
    const Names googles{"chrome"};
    const Names others{"chromium", "chromium-browser", "chrome"};
    enum class Package { ofTheSystem, asFlatpak, asSnap };
    const struct {
        const char* name;
        const char* id;
        std::filesystem::path userData;
        Names processNames;
        Package package = Package::ofTheSystem;
    } rows[] = {
        {"Google Chrome", "google-chrome", config + "google-chrome", googles},
        {"Google Chrome by its new name", "com.google.Chrome", config + "google-chrome", googles},
        {"Chromium", "chromium", config + "chromium", others},
        {"Chromium on other distributions", "chromium-browser", config + "chromium", others},
        {"the beta", "google-chrome-beta", config + "google-chrome-beta", googles},
        {"the unstable one", "google-chrome-unstable", config + "google-chrome-unstable", googles},
        {"Google Chrome as a Flatpak", "com.google.Chrome",
         "/home/ada/.var/app/com.google.Chrome/config/google-chrome", googles, Package::asFlatpak},
        {"Chromium as a Flatpak", "org.chromium.Chromium",
         "/home/ada/.var/app/org.chromium.Chromium/config/chromium", others, Package::asFlatpak},
        {"Chromium as a Snap", "chromium_chromium", "/home/ada/snap/chromium/common/chromium",
         others, Package::asSnap},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const bool isFlatpak = row.package == Package::asFlatpak;
        std::filesystem::remove_all(folder);
        if (isFlatpak) {
            installFlatpak(row.id);
        } else {
            install(row.id, "env A=b " + chrome + " --x %U");
        }
        const auto found = locate();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->entry, folder / (std::string(row.id) + ".desktop"));
        EXPECT_EQ(found->executable, isFlatpak ? flatpak : chrome);
        EXPECT_EQ(found->command, (isFlatpak ? Words{flatpak, "run", "--file-forwarding", row.id}
                                             : Words{"env", "A=b", chrome, "--x"}));
        EXPECT_EQ(found->userDataDirectory, row.userData);
        EXPECT_EQ(found->processNames, row.processNames);
        EXPECT_EQ(found->isContained, row.package != Package::ofTheSystem);
        EXPECT_FALSE(found->hasOwnFolder);
    }
}

TEST_F(ChromeLocationTest, TheMoreImportantVariantCounts) {
    const Words order{"google-chrome",      "com.google.Chrome",      "chromium",
                      "chromium-browser",   "google-chrome-beta",     "google-chrome-unstable",
                      "com.google.Chrome-", "org.chromium.Chromium-", "chromium_chromium"};
    for (const std::string& name : order) {
        const bool isFlatpak = name.ends_with('-');
        const std::string id = name.substr(0, name.size() - (isFlatpak ? 1 : 0));
        if (isFlatpak && id == "com.google.Chrome") continue;  // the id is taken by the other one
        isFlatpak ? installFlatpak(id) : install(id, chrome);
    }
    for (const std::string& name : order) {
        if (name == "com.google.Chrome-") installFlatpak("com.google.Chrome");
        const auto found = locate();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->isContained, name.ends_with('-') || name == "chromium_chromium") << name;
        const std::string id = found->entry.stem();
        EXPECT_EQ(id, name.substr(0, name.find_last_not_of('-') + 1));
        std::filesystem::remove(found->entry);
    }
    EXPECT_FALSE(locate());
}

TEST_F(ChromeLocationTest, NotThere) {
    EXPECT_FALSE(locate()) << "without any folder";
    install("vivid-browser", chrome);
    EXPECT_FALSE(locate()) << "another browser";
    install("google-chrome", "/nowhere/chrome %U");
    EXPECT_FALSE(locate()) << "the program is missing";
    install("google-chrome", chrome, "Hidden=true");
    EXPECT_FALSE(locate()) << "deleted by the user";
    install("org.chromium.Chromium", chrome);
    EXPECT_FALSE(locate()) << "a native package under a Flatpak's id";
    install("chromium", chrome, "X-Flatpak=chromium");
    EXPECT_FALSE(locate()) << "a Flatpak under a native package's id";
    install("chromium-browser", chrome, "NoDisplay=true");
    EXPECT_TRUE(locate()) << "not shown in menus";
}

TEST_F(ChromeLocationTest, OneWithoutItsProgramIsPassedOver) {
    install("google-chrome", "/nowhere/chrome %U");
    install("chromium", chrome);
    EXPECT_EQ(locate()->entry, folder / "chromium.desktop");
}

TEST_F(ChromeLocationTest, OneThatWouldStartThisProgramIsPassedOver) {
    std::filesystem::create_symlink(std::filesystem::canonical("/proc/self/exe"), dir / "bin/own");
    install("google-chrome", dir / "bin/own");
    EXPECT_FALSE(locate());
    install("google-chrome", "env A=b " + (dir / "bin/own").string() + " %U");
    install("chromium", chrome);
    EXPECT_EQ(locate()->entry, folder / "chromium.desktop");
}

TEST_F(ChromeLocationTest, UserDataDirectory) {
    const struct {
        const char* name;
        std::string exec;
        std::map<std::string, std::string> environment;
        const char* directory;
        bool isNamedByEntry = false;
    } rows[] = {
        {"by default", "", {}, "/home/ada/.config/google-chrome"},
        {"the configuration folder", "", {{"XDG_CONFIG_HOME", "/c"}}, "/c/google-chrome"},
        {"its own configuration folder",
         "",
         {{"XDG_CONFIG_HOME", "/c"}, {"CHROME_CONFIG_HOME", "/cc"}},
         "/cc/google-chrome"},
        {"its own folder",
         "",
         {{"XDG_CONFIG_HOME", "/c"}, {"CHROME_CONFIG_HOME", "/cc"}, {"CHROME_USER_DATA_DIR", "/u"}},
         "/u"},
        {"a switch before everything",
         "--user-data-dir=/s %U",
         {{"CHROME_USER_DATA_DIR", "/u"}},
         "/s",
         true},
        {"a switch with a blank in its value",
         "\"--user-data-dir=/my data\" %U",
         {},
         "/my data",
         true},
        {"a switch in single quotes", "--user-data-dir='/my data' %U", {}, "/my data", true},
        {"the last of two switches", "--user-data-dir=/s --user-data-dir=/t", {}, "/t", true},
        {"a switch without a value", "--user-data-dir= %U", {{"CHROME_USER_DATA_DIR", "/u"}}, "/u"},
        {"a switch with its value in the next word",
         "--user-data-dir /s",
         {},
         "/home/ada/.config/google-chrome"},
        {"its own folder by an assignment",
         "env CHROME_USER_DATA_DIR=/e " + chrome,
         {{"CHROME_USER_DATA_DIR", "/u"}},
         "/e",
         true},
        {"the configuration folder by an assignment",
         "env A=b XDG_CONFIG_HOME=/e " + chrome,
         {{"XDG_CONFIG_HOME", "/c"}},
         "/e/google-chrome",
         true},
        {"an assignment of less importance",
         "env XDG_CONFIG_HOME=/e " + chrome,
         {{"CHROME_CONFIG_HOME", "/cc"}},
         "/cc/google-chrome"},
        {"a switch with a similar name",
         "--user-data-dir-x=/s",
         {},
         "/home/ada/.config/google-chrome"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const bool isWhole = row.exec.find(chrome) != std::string::npos;
        install("google-chrome", isWhole ? row.exec : chrome + " " + row.exec);
        environment = row.environment;
        const auto found = locate();
        EXPECT_EQ(found->userDataDirectory, row.directory);
        EXPECT_EQ(found->hasOwnFolder, row.isNamedByEntry);
    }
}

TEST_F(ChromeLocationTest, TheEnvironmentDoesNotReachIntoAContainer) {
    environment = {{"XDG_CONFIG_HOME", "/c"}, {"CHROME_USER_DATA_DIR", "/u"}};
    installFlatpak("org.chromium.Chromium");
    EXPECT_EQ(locate()->userDataDirectory,
              "/home/ada/.var/app/org.chromium.Chromium/config/chromium");
    std::filesystem::remove_all(folder);
    install("chromium_chromium", chrome);
    EXPECT_EQ(locate()->userDataDirectory, "/home/ada/snap/chromium/common/chromium");
}

}  // namespace
}  // namespace ferrivane

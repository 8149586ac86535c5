// What the settings offer to choose from: profiles, running applications, kinds of rules.
#include <gmock/gmock.h>

#include "Ferrivane/ProfilePicker.h"
#include "Ferrivane/RuleRow.h"
#include "Ferrivane/RunningApp.h"
#include "tests/support/FakePlatform.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Choice = ProfilePicker::Choice;

const std::vector<ChromeProfile> kProfiles{{"Default", "Home", "ada@home.example", {}},
                                           {"Profile 1", "Work", {}, {}}};

TEST(ProfilePickerTest, OneChoicePerProfileInTheirOrder) {
    for (const char* selection : {"Profile 1", "Work", "work"}) {
        const auto choices = ProfilePicker::choices(selection, kProfiles);
        EXPECT_THAT(choices.all,
                    ElementsAre(Choice{"Home", "Default"}, Choice{"Work", "Profile 1"}))
            << selection;
        EXPECT_EQ(choices.current, 1U) << selection;
    }
    EXPECT_EQ(ProfilePicker::choices("ADA@home.example", kProfiles).current, 0U);
}

TEST(ProfilePickerTest, AnUnknownProfileStaysVisible) {
    const auto choices = ProfilePicker::choices("Gone", kProfiles);
    EXPECT_THAT(choices.all, ElementsAre(Choice{"Home", "Default"}, Choice{"Work", "Profile 1"},
                                         Choice{"⚠︎ Gone", "Gone"}));
    EXPECT_EQ(choices.current, 2U);
    EXPECT_EQ(ProfilePicker::choices("", kProfiles).all.back(), (Choice{"⚠︎ choose…", ""}));
    EXPECT_EQ(ProfilePicker::choices("  ", kProfiles).all.back(), (Choice{"⚠︎   ", "  "}));
    EXPECT_THAT(ProfilePicker::choices("Default", {}).all,
                ElementsAre(Choice{"⚠︎ Default", "Default"}));
}

class RunningAppTest : public ::testing::Test {
  protected:
    void run(pid_t process, std::optional<std::string> name, std::optional<std::string> id,
             std::optional<std::string> path) {
        fake.applications.applicationsRunning.push_back(
            {process, std::move(name), std::move(id), std::move(path)});
    }
    std::vector<std::string> shown() {
        std::vector<std::string> lines;
        for (const RunningApp& app : RunningApp::current(fake.applications)) {
            lines.push_back(std::to_string(app.id) + " " + app.name + " = " + app.matchValue);
        }
        return lines;
    }

    test::FakePlatform fake;
};

TEST_F(RunningAppTest, SortedByNameWhateverTheCase) {
    run(3, "mail", "org.example.Mail", "/usr/bin/mail");
    run(1, "Chat", "org.example.Chat", "/usr/bin/chat");
    run(2, "Notes", "org.example.Notes", "/usr/bin/notes");
    EXPECT_THAT(shown(), ElementsAre("1 Chat = org.example.Chat", "3 mail = org.example.Mail",
                                     "2 Notes = org.example.Notes"));
}

TEST_F(RunningAppTest, EqualNamesKeepTheDesktopsOrder) {
    run(2, "Mail", "b", "/b");
    run(1, "mail", "a", "/a");
    EXPECT_THAT(shown(), ElementsAre("2 Mail = b", "1 mail = a"));
}

TEST_F(RunningAppTest, CopiesOfOneApplicationAreToldApartByTheirPath) {
    run(1, "Chat", "org.example.Chat", "/usr/bin/chat");
    run(2, "Chat", "org.example.Chat", "/home/ada/chat-beta");
    EXPECT_THAT(shown(), ElementsAre("1 Chat (chat) = /usr/bin/chat",
                                     "2 Chat (chat-beta) = /home/ada/chat-beta"));
}

TEST_F(RunningAppTest, ACopyWithoutAPathCountsButIsNotListed) {
    run(1, "Chat", "org.example.Chat", "/usr/bin/chat");
    run(2, "Chat", "org.example.Chat", std::nullopt);
    EXPECT_THAT(shown(), ElementsAre("1 Chat (chat) = /usr/bin/chat"));
}

TEST_F(RunningAppTest, WithoutANameItIsListedUnderItsIdentifier) {
    run(1, std::nullopt, "org.example.Chat", "/usr/bin/chat");
    EXPECT_THAT(shown(), ElementsAre("1 org.example.Chat = org.example.Chat"));
}

TEST_F(RunningAppTest, WhoIsNeverListed) {
    run(1, "Ferrivane", "com.hollowmere.ferrivane", "/usr/bin/Ferrivane");
    run(2, "A script", std::nullopt, "/usr/bin/script");
    EXPECT_THAT(shown(), IsEmpty());
}

TEST(RuleRowTest, KindsInTheirOrder) {
    ASSERT_EQ(RuleRow::kinds.size(), Rule::kAllKinds.size());
    for (std::size_t i = 0; i < RuleRow::kinds.size(); ++i) {
        EXPECT_EQ(RuleRow::kinds[i].kind, Rule::kAllKinds[i]);
    }
    EXPECT_EQ(RuleRow::kinds[0].label, "URL contains");
    EXPECT_EQ(RuleRow::kinds[1].label, "Domain");
    EXPECT_EQ(RuleRow::kinds[2].label, "Sent by");
}

TEST(RuleRowTest, EachKindHasItsPlaceholder) {
    using enum Rule::Kind;
    EXPECT_THAT(RuleRow::placeholder(url, Desktop::macOS),
                ::testing::StartsWith("any part of the link, e.g. "));
    EXPECT_THAT(RuleRow::placeholder(host, Desktop::freedesktop),
                ::testing::EndsWith(" — also matches its subdomains"));
    EXPECT_EQ(RuleRow::placeholder(app, Desktop::macOS), "bundle id, app name or .app path");
    EXPECT_EQ(RuleRow::placeholder(app, Desktop::freedesktop),
              "desktop id, app name or program path");
}

TEST(RuleRowTest, OnlyASenderIsFilledInFromAMenu) {
    EXPECT_FALSE(RuleRow::hasFillInMenu(Rule::Kind::url));
    EXPECT_FALSE(RuleRow::hasFillInMenu(Rule::Kind::host));
    EXPECT_TRUE(RuleRow::hasFillInMenu(Rule::Kind::app));
}

TEST(RuleRowTest, ContextMenu) {
    using Item = RuleRow::ContextItem;
    using enum Item::Action;
    EXPECT_THAT(RuleRow::contextMenu(false, true),
                ElementsAre(Item{moveUp, "Move Up", false}, Item{moveDown, "Move Down", true},
                            Item{divider}, Item{remove, "Remove"}));
    EXPECT_TRUE(RuleRow::contextMenu(true, false)[0].isEnabled);
    EXPECT_FALSE(RuleRow::contextMenu(true, false)[1].isEnabled);
}

}  // namespace
}  // namespace ferrivane

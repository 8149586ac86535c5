// Everything that the settings window shows and does, without a toolkit: a shell draws it and calls
// it. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "Ferrivane/MenuBar.h"
#include "Ferrivane/Observers.h"
#include "Ferrivane/ProfilePicker.h"
#include "Ferrivane/RulesStore.h"
#include "Ferrivane/RunningApp.h"
#include "Ferrivane/platform/Platform.h"

namespace ferrivane {

class SettingsView {
  public:
    // A line with a symbol in front of it, as macOS names it, and buttons behind.
    struct Banner {
        enum class Tint { green, orange };
        std::string_view symbol;
        Tint tint = Tint::orange;
        std::string text;
        std::string_view button{};  // empty without one

        bool operator==(const Banner&) const = default;
    };
    enum class Edge { top, bottom };
    // Who may send the link to try: somebody unknown, or an application that runs.
    struct Sender {
        std::string name;
        std::optional<pid_t> process{};

        bool operator==(const Sender&) const = default;
    };
    struct Senders {
        std::vector<Sender> all;
        std::size_t current = 0;
    };

    // All references outlive this.
    SettingsView(const Platform& platform, RulesStore& store, MenuBar& menuBar);

    // Told before each change of the view's own state; the store tells of its own.
    Observers willChange;

    // Asks again who the default browser is and which applications run. The shell calls it when
    // the view appears.
    void refresh();

    Banner defaultBrowserBanner() const;
    void makeDefaultBrowser();
    // Absent when the helper script is not needed or ready.
    std::optional<Banner> helperBanner() const;
    void installHelper();
    void revealHelper() const;

    // Rules.
    bool canMoveUp(std::size_t index) const { return index > 0; }
    bool canMoveDown(std::size_t index) const { return index + 1 < store_.config().rules.size(); }
    void move(const Uuid& rule, std::ptrdiff_t offset);
    void setKind(const Uuid& rule, Rule::Kind kind);
    void setMatch(const Uuid& rule, const std::string& match);
    void setProfile(const Uuid& rule, const std::string& profile);
    void setDefaultProfile(const std::string& profile);
    // What can be chosen where this profile is written now.
    ProfilePicker::Choices profileChoices(const std::string& selection) const;
    void addRule();  // its field takes the focus
    void removeRule(const Uuid& rule);
    std::string_view matchPlaceholder(Rule::Kind kind) const;
    // Whether the menu that fills a pattern in has anything in it.
    bool canFillIn() const { return !runningApps_.empty(); }
    // The rule whose pattern is being edited.
    const std::optional<Uuid>& focusedRule() const { return focusedRule_; }
    void setFocusedRule(const std::optional<Uuid>& rule);
    // The shell watches the rules' file while the window is shown. What others write is read at
    // once, or when the person has finished editing or dragging.
    void rulesFileChanged();
    // Set by the shell: whether a menu is open or a mouse button is held, whose end would then meet
    // another rule. It calls readChanges when that is over.
    std::function<bool()> isInteracting;
    void readChanges();
    // Reads everything anew, each time the window is shown.
    void reload();

    // Dragging a rule. The text that a drag offers is the rule's identifier.
    std::string beginDrag(const Uuid& rule);
    void setDropTargeted(const Uuid& rule, bool isTargeted);
    // Where the insertion line lies on a row; absent when no drag is over it.
    std::optional<Edge> insertionEdge(const Uuid& rule) const;
    // Without a target: onto the list, behind its last row.
    void drop(const std::optional<Uuid>& target);
    // After the drop, or without one: what is dropped later comes from elsewhere.
    void endDrag();

    // The link tester.
    const std::vector<RunningApp>& runningApps() const { return runningApps_; }
    const std::string& testURL() const { return testURL_; }
    void setTestURL(std::string url);
    std::optional<pid_t> testAppPid() const { return testAppPid_; }
    void setTestAppPid(std::optional<pid_t> process);
    // One that runs no more is unknown.
    Senders senders() const;
    std::string testResult() const;

    // Options.
    bool showMenuBarIcon() const { return showMenuBarIcon_; }
    void setShowMenuBarIcon(bool shows);
    void editRules() const;
    void showLog() const;
    std::string version() const;

    RulesStore& store() const { return store_; }

    static constexpr std::string_view rulesTitle =
        "Rules — checked top to bottom, the first match wins";
    static constexpr std::string_view noRules =
        "No rules yet: every link opens in the default profile.";
    static constexpr std::string_view addRuleTitle = "Add rule";
    static constexpr std::string_view rulesHint =
        "Drag the ≡ handle to reorder. Comments live in rules.json.";
    static constexpr std::string_view defaultProfileLabel = "Default profile";
    static constexpr std::string_view defaultProfileToolTip =
        "Where a link opens when none of the rules above matches";
    static constexpr std::string_view defaultProfileCaption =
        "Used when none of the rules above matches.";
    static constexpr std::string_view testerTitle = "Try a link";
    static constexpr std::string_view testerPlaceholder = "https://…";
    static constexpr std::string_view testerSenderLabel = "sent by";
    static constexpr std::string_view unknownApp = "unknown app";
    static constexpr std::string_view optionsTitle = "Options";
    static constexpr std::string_view menuBarIconTitle = "Show icon in the menu bar";
    static constexpr std::string_view editRulesTitle = "Edit rules.json…";
    static constexpr std::string_view showLogTitle = "Show Log";
    static constexpr std::string_view showFoldersTitle = "Show Folders…";
    static constexpr std::string_view showFoldersToolTip =
        "Copy the script by hand if the button above does not work";

  private:
    bool mustWait() const;
    template<typename Change>
    void edit(const Uuid& rule, Change change);
    std::optional<std::size_t> indexOf(const Uuid& rule) const;

    const Platform platform_;
    RulesStore& store_;
    MenuBar& menuBar_;
    bool isDefaultBrowser_ = false;
    std::string browserName_;  // of the one that is
    std::vector<RunningApp> runningApps_;
    std::string testURL_;
    std::optional<pid_t> testAppPid_;
    bool showMenuBarIcon_;
    std::optional<Uuid> focusedRule_;
    bool mustReadChanges_ = false;
    bool mustReload_ = false;
    std::optional<Uuid> draggingRule_;
    std::optional<Uuid> dropTarget_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace ferrivane

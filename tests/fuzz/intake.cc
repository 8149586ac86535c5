// What the session sends to the resident application: the first line is the startup id, a tab and
// the activation token; every other line is a link.
#include <algorithm>

#include "Ferrivane/AppDelegate.h"
#include "Ferrivane/ChromeLauncher.h"
#include "Ferrivane/IncomingLinks.h"
#include "core/port/Paths.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/FakePlatform.h"

namespace ferrivane::fuzz {
namespace {

using namespace std::chrono_literals;

constexpr const char* kNowhere = "/dev/null/nowhere";  // no file of the person's is touched

bool hasNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

std::string launchOf(const std::string& link, const std::optional<std::string>& token) {
    return "browser.launch /apps/google-chrome.desktop [--profile-directory=Default] [" + link +
           "]" + (token ? " token=" + *token : "");
}

// The calls that links lead to, and how many alerts.
struct Consequences {
    std::vector<std::string> launches;
    std::size_t alerts = 0;
    bool isTaken = false;
};

Consequences expected(const LinkEvent& event) {
    Consequences result;
    auto token = event.activationToken;
    if (event.urls.size() > AppDelegate::mostLinksWaiting) return result;
    std::size_t waiting = 0;
    for (const std::string& url : event.urls) {
        if (url.empty() || (ChromeLauncher::isSwitch(url) && !IncomingLinks::isOwn(url))) continue;
        result.isTaken = true;
        if (IncomingLinks::isOwn(url)) continue;
        require(++waiting <= AppDelegate::mostLinksWaiting, "so many are taken and no more");
        const auto own = std::exchange(token, std::nullopt);
        if (hasNul(url) || hasNul(own.value_or(""))) {
            ++result.alerts;
        } else {
            result.launches.push_back(launchOf(url, own));
        }
    }
    return result;
}

}  // namespace

void run(std::string_view input) {
    Paths::setChromeUserDataDirectory(kNowhere);
    static Log log(kNowhere);
    const auto fake = std::make_unique<test::FakePlatform>();
    AppDelegate app(fake->platform(), log, true, kNowhere);

    std::vector<std::string> lines = splitAt(input, '\n');
    const std::vector<std::string> head = splitAt(lines[0], '\t');
    lines.erase(lines.begin());
    LinkEvent event{.urls = lines, .sender = {}, .startupId = head[0]};
    if (head.size() > 1) event.activationToken = head[1];

    const Consequences wanted = expected(event);
    require(app.handleGetURL(event) == wanted.isTaken, "taken is what is told to be taken");
    require(fake->calls.count("browser.launch") == 0,
            "a call is answered before anything is opened");
    fake->mainLoop.runUntilIdle();
    require(fake->calls.of({"browser.launch"}) == wanted.launches, "every link opens, unchanged");
    require(fake->dialogs.alerts.size() == wanted.alerts, "what cannot be opened is told");
    require(!fake->launchLock.held, "the lock is given back");

    fake->calls.clear();
    app.openFiles(lines, event);
    fake->mainLoop.runUntilIdle();
    require(fake->calls.of({"browser.launch"}).size() == lines.size(), "every file opens");
    constexpr std::array kActions{"settings", "edit-rules", "show-log"};
    const bool isKnown = std::ranges::find(kActions, head[0]) != kActions.end();
    require(app.performAction(head[0], event.activationToken) == isKnown, "actions are known ones");
    app.reopen(event.activationToken);
    fake->mainLoop.runUntilIdle();
    log.flush(1s);  // else what is logged piles up
}

}  // namespace ferrivane::fuzz

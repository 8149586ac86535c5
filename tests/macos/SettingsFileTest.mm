// The rules' file is watched while the settings are open.
#import "tests/macos/SettingsTest.h"

namespace ferrivane {
namespace {

using SettingsFileTest = test::SettingsTest;

TEST_F(SettingsFileTest, WhatOthersWriteIsShown) {
    window();
    writeRules(R"({"rules": [{"kind": "host", "match": "other.example", "profile": "Work"}]})");
    EXPECT_TRUE(becomesTrue([&] { return table().numberOfRows == 1; }));
    EXPECT_EQ(utf8(matchOf(0).stringValue), "other.example");
    const auto beside = dir / "replacement";
    test::writeText(beside, R"({"rules": []})");
    std::filesystem::rename(beside, rulesFile);
    EXPECT_TRUE(becomesTrue([&] { return find(SettingsControls::noRules) != nil; }));
}

TEST_F(SettingsFileTest, WhatOthersWriteWaitsUntilAMenuIsClosed) {
    window();
    writeRules(R"({"rules": []})");
    __block bool isRead = true;
    NSTimer* timer = [NSTimer timerWithTimeInterval:0
                                            repeats:NO
                                              block:^(NSTimer*) {
                                                view->rulesFileChanged();
                                                isRead = store->config().rules.empty();
                                              }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSEventTrackingRunLoopMode];
    [NSRunLoop.mainRunLoop runMode:NSEventTrackingRunLoopMode
                        beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.1]];
    EXPECT_FALSE(isRead);
    EXPECT_TRUE(becomesTrue([&] { return store->config().rules.empty(); }));
}

TEST_F(SettingsFileTest, WhatALinkLeadsToIsWatchedToo) {
    const auto target = dir / "elsewhere" / "rules.json";
    std::filesystem::create_directory(target.parent_path());
    std::filesystem::rename(rulesFile, target);
    std::filesystem::create_symlink(target, rulesFile);
    window();
    std::filesystem::remove(target);
    draw();
    test::writeText(target, R"({"rules": []})");
    EXPECT_TRUE(becomesTrue([&] { return store->config().rules.empty(); }));
}

}  // namespace
}  // namespace ferrivane

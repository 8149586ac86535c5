// Texts and paths on their way to Foundation and back.
#include <gmock/gmock.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {
namespace {

TEST(ConversionsTest, TextComesBackAsItWas) {
    for (const std::string& text :
         {std::string(), std::string("a"), std::string("ä 👩‍👩‍👧 e\u0301"),
          std::string("a\0b", 3)}) {
        EXPECT_EQ(utf8(nsString(text)), text);
    }
}

TEST(ConversionsTest, WhatIsNotUtf8IsNotLost) {
    EXPECT_EQ(utf8(nsString("a\xFF")), "aÿ");
}

TEST(ConversionsTest, NoTextIsNoValue) {
    EXPECT_EQ(optionalUtf8(nil), std::nullopt);
    EXPECT_EQ(optionalUtf8(@""), "");
    EXPECT_EQ(utf8(nil), "");
}

TEST(ConversionsTest, PathsComeBackAsTheyWere) {
    EXPECT_EQ(optionalPath(fileURL("/tmp/a b/ä%20.html")), "/tmp/a b/ä%20.html");
    EXPECT_EQ(optionalPath(nil), std::nullopt);
}

TEST(ConversionsTest, AnErrorHasNoFullStop) {
    NSError* const error =
        [NSError errorWithDomain:NSCocoaErrorDomain
                            code:1
                        userInfo:@{NSLocalizedDescriptionKey : @"It did not work."}];
    EXPECT_EQ(platformError(error), PlatformError{"It did not work"});
}

}  // namespace
}  // namespace ferrivane

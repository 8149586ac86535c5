// Between the values of portable code and those of Foundation. Any thread.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#import <Foundation/Foundation.h>

#include "Ferrivane/platform/Browser.h"

namespace ferrivane {

// Never nil: what is not UTF-8 is taken for Latin-1.
NSString* nsString(std::string_view text);
NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts);
NSURL* fileURL(const std::filesystem::path& path);

// All of the text, be there a NUL in it; empty for nil.
std::string utf8(NSString* text);
std::optional<std::string> optionalUtf8(NSString* text);
std::optional<std::filesystem::path> optionalPath(NSURL* file);

PlatformError platformError(NSError* error);
// Success for nil.
std::expected<void, PlatformError> outcomeOf(NSError* error);

}  // namespace ferrivane

#import "Ferrivane/macos/MacPreferences.h"

#import <Foundation/Foundation.h>

#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {

bool MacPreferences::flag(std::string_view key) const {
    return [NSUserDefaults.standardUserDefaults boolForKey:nsString(key)];
}

void MacPreferences::setFlag(std::string_view key, bool value) {
    [NSUserDefaults.standardUserDefaults setBool:value forKey:nsString(key)];
}

}  // namespace ferrivane

// Watches a file of the person's, be it replaced or written in place, as long as this lives. Main
// thread only.
#pragma once

#include <filesystem>

#import <Foundation/Foundation.h>

@interface FVSettingsFileWatch : NSObject

// `changed` is called on the main thread, once for what happens within a moment.
- (instancetype)initWithFile:(const std::filesystem::path&)file
                     changed:(void (^)(void))changed NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;

@end

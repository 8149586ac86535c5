#import "Ferrivane/macos/Conversions.h"

namespace ferrivane {

NSString* nsString(std::string_view text) {
    NSString* const string = [[NSString alloc] initWithBytes:text.data()
                                                      length:text.size()
                                                    encoding:NSUTF8StringEncoding];
    if (string != nil) return string;
    return [[NSString alloc] initWithBytes:text.data()
                                    length:text.size()
                                  encoding:NSISOLatin1StringEncoding];
}

NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts) {
    NSMutableArray<NSString*>* const strings = [NSMutableArray arrayWithCapacity:texts.size()];
    for (const std::string& text : texts) [strings addObject:nsString(text)];
    return strings;
}

NSURL* fileURL(const std::filesystem::path& path) {
    return [NSURL fileURLWithPath:nsString(path.native())];
}

std::string utf8(NSString* text) {
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return bytes.length == 0 ? std::string()
                             : std::string(static_cast<const char*>(bytes.bytes), bytes.length);
}

std::optional<std::string> optionalUtf8(NSString* text) {
    return text == nil ? std::nullopt : std::optional(utf8(text));
}

std::optional<std::filesystem::path> optionalPath(NSURL* file) {
    NSString* const path = file.path;
    return path == nil ? std::nullopt : std::optional<std::filesystem::path>(utf8(path));
}

PlatformError platformError(NSError* error) {
    std::string text = utf8(error.localizedDescription);
    if (text.ends_with('.')) text.pop_back();
    return {text};
}

std::expected<void, PlatformError> outcomeOf(NSError* error) {
    if (error == nil) return {};
    return std::unexpected(platformError(error));
}

}  // namespace ferrivane

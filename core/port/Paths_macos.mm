// Folders as NSFileManager reports them for the current user, not as $HOME says.
#include <utility>

#import <Foundation/Foundation.h>

#include "core/port/Paths.h"

namespace ferrivane::Paths {
namespace {

std::filesystem::path& locatedChrome() {
    static std::filesystem::path directory;
    return directory;
}

}  // namespace

std::filesystem::path home() {
    static const std::filesystem::path folder =
        NSFileManager.defaultManager.homeDirectoryForCurrentUser.fileSystemRepresentation;
    return folder;
}

std::filesystem::path rulesFile() {
    static const std::filesystem::path file =
        home() / "Library/Application Support/Ferrivane/rules.json";
    return file;
}

std::filesystem::path logDirectory() {
    static const std::filesystem::path folder = home() / "Library/Logs/Ferrivane";
    return folder;
}

std::filesystem::path chromeUserDataDirectory() {
    const std::filesystem::path& directory = locatedChrome();
    return directory.empty() ? home() / "Library/Application Support/Google/Chrome" : directory;
}

void setChromeUserDataDirectory(std::filesystem::path directory) {
    locatedChrome() = std::move(directory);
}

}  // namespace ferrivane::Paths

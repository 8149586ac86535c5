// macOS only. Foundation looks for the person's home before the program begins, so that a test
// cannot give itself another one any more.
#pragma once

#include <filesystem>

namespace ferrivane::test {

// Runs this program once more, with a home of its own that is removed afterwards, and ends with its
// status. Returns in that second process only, with its home. To be called before main.
std::filesystem::path foundationHome();

}  // namespace ferrivane::test

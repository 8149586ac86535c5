// The folders of the person who runs the tests are out of reach: before the first test the process
// gets a home of its own, removed after the last one.
#pragma once

#include <filesystem>

namespace ferrivane::test {

// Holds the folders of whatever asks for them.
std::filesystem::path privateHome();

}  // namespace ferrivane::test

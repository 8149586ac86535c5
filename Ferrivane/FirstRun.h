// The first step of every start that opens links: the user finds a rules file to edit.
#pragma once

#include <filesystem>

#include "core/Log.h"

namespace ferrivane::FirstRun {

// Writes the starter file when there is none. A failure is logged; routing then runs on the
// built-in defaults.
void ensureConfig(Log& log, const std::filesystem::path& rulesFile);

}  // namespace ferrivane::FirstRun

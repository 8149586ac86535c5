// The launch lock as a locked file, shared by all processes of the user's session.
#pragma once

#include <filesystem>

#include "Ferrivane/platform/LaunchLock.h"
#include "core/support/FileDescriptor.h"

namespace ferrivane {

class LaunchLockFile : public LaunchLock {
  public:
    explicit LaunchLockFile(std::filesystem::path file) : path_(std::move(file)) {}
    // In $XDG_RUNTIME_DIR, else in the log's folder.
    static std::filesystem::path defaultPath();

    // True as well when the file cannot be made: a link that goes on without the lock is better
    // than one that does not.
    bool tryAcquire() override;
    void release() override { file_.reset(); }

  private:
    const std::filesystem::path path_;
    FileDescriptor file_;  // the lock ends with the descriptor
};

}  // namespace ferrivane

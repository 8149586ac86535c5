// The desktop's installed applications: the ".desktop" files below the XDG data directories
// (freedesktop.org, XDG Base Directory Specification 0.8, Desktop Entry Specification 1.5).
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Ferrivane/linux/DesktopEntry.h"

namespace ferrivane {

class DesktopEntries {
  public:
    // The folders to look in, the most important first.
    explicit DesktopEntries(std::vector<std::filesystem::path> folders);
    // Those of this session: $XDG_DATA_HOME and $XDG_DATA_DIRS or their defaults.
    static DesktopEntries ofSession();

    // The same for several questions in a row, such as those of one link: findByProgram reads the
    // folders at most once, and later changes may go unseen. Copies share what was read, and are
    // not safe to use on several threads.
    DesktopEntries snapshot() const;

    // The entry with this id (with or without ".desktop"). Of several the most important one
    // counts, and if that is hidden there is none. One whose program is missing counts only where
    // there is no other.
    std::optional<DesktopEntry> find(std::string_view id) const;

    // The entry that best stands for a program: one whose Exec starts this very file, else one
    // whose Exec starts a file of the same name; visible ones first, then one with the program's
    // name as its id, then the one with the fewest arguments.
    std::optional<DesktopEntry> findByProgram(const std::filesystem::path& program) const;

    // The id of an entry's file; absent when it lies in none of the folders.
    std::optional<std::string> idOf(const std::filesystem::path& file) const;

  private:
    // A file, and the programs that it names.
    struct File {
        std::filesystem::path folder;
        std::filesystem::path path;
        std::vector<std::string> programs;
    };

    std::vector<File> readFolders() const;

    std::vector<std::filesystem::path> folders_;
    // Of a snapshot; empty until first needed.
    std::shared_ptr<std::optional<std::vector<File>>> files_;
};

}  // namespace ferrivane

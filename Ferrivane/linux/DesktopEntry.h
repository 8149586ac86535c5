// One ".desktop" file of an application (freedesktop.org, Desktop Entry Specification 1.5).
//
// A reader of our own for the few keys that we need: it is on the road of every link, where merely
// loading the desktop's library would take as long as the rest of the road (docs/DECISIONS.md). A
// test holds it against that library.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ferrivane {

struct DesktopEntry {
    std::string id;  // without ".desktop"
    std::filesystem::path file;
    std::string name;               // in the user's language
    std::vector<std::string> exec;  // the Exec line's words, field codes included
    bool isVisible = true;          // neither Hidden nor NoDisplay
    bool isHidden = false;          // stands for an entry that was deleted
    bool isFlatpak = false;

    // Absent when the file is no readable entry of an application.
    static std::optional<DesktopEntry> read(const std::filesystem::path& file, std::string id);

    // The program that Exec starts, behind "env" and its assignments; absolute, found through PATH;
    // absent when there is no such executable file.
    std::optional<std::filesystem::path> program() const;
    // The Exec line without field codes.
    std::vector<std::string> command() const;
};

// The programs that a file's text names in Exec lines, as they stand there, those of the entry's
// actions among them. Takes a fraction of the time of reading the entry.
std::vector<std::string> programsIn(std::string_view text);

}  // namespace ferrivane

#include "Ferrivane/linux/DesktopEntries.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include <unistd.h>

#include "Ferrivane/linux/Environment.h"
#include "core/port/Paths.h"
#include "core/support/ReadFile.h"
#include "core/support/Text.h"

namespace ferrivane {
namespace {

constexpr std::string_view kSuffix = ".desktop";
// Larger ones, a hundred times what any application has, are not searched for a program.
constexpr std::size_t kLargestEntry = std::size_t{1024} * 1024;

std::filesystem::path resolved(const std::filesystem::path& file) {
    std::error_code error;
    auto target = std::filesystem::canonical(file, error);
    return error ? file : target;
}

std::string withSuffix(std::string_view id) {
    std::string name(id);
    if (!name.ends_with(kSuffix)) name += kSuffix;
    return name;
}

std::string withoutSuffix(std::string name) {
    if (name.ends_with(kSuffix)) name.resize(name.size() - kSuffix.size());
    return name;
}

std::string idIn(const std::filesystem::path& folder, const std::filesystem::path& file) {
    std::string id = withoutSuffix(file.lexically_relative(folder).string());
    std::ranges::replace(id, '/', '-');
    return id;
}

// The file of an entry's name below a folder. A dash may stand for a folder.
std::optional<std::filesystem::path> fileIn(const std::filesystem::path& folder,
                                            const std::string& name) {
    std::filesystem::path file = folder / name;
    if (::access(file.c_str(), F_OK) == 0) return file;
    for (std::size_t dash = name.find('-', 1); dash < name.size();
         dash = name.find('-', dash + 1)) {
        const std::string part = name.substr(0, dash);
        const std::filesystem::path subfolder = folder / part;
        if (part == "." || part == "..") continue;
        if (::access(subfolder.c_str(), F_OK) != 0) continue;
        if (auto found = fileIn(subfolder, name.substr(dash + 1))) return found;
    }
    return std::nullopt;
}

// Desktops pass over an entry whose program is missing.
bool isUsable(const DesktopEntry& entry) {
    return entry.exec.empty() || entry.program();
}

}  // namespace

DesktopEntries::DesktopEntries(std::vector<std::filesystem::path> folders)
    : folders_(std::move(folders)) {}

DesktopEntries DesktopEntries::ofSession() {
    std::vector<std::filesystem::path> folders;
    const std::string own = environment("XDG_DATA_HOME");
    folders.push_back(
        (own.starts_with('/') ? std::filesystem::path(own) : Paths::home() / ".local/share") /
        "applications");
    std::vector<std::string> shared = environmentList("XDG_DATA_DIRS");
    if (shared.empty()) shared = {"/usr/local/share", "/usr/share"};
    for (const std::string& folder : shared) {
        if (folder.starts_with('/')) {
            folders.push_back(std::filesystem::path(folder) / "applications");
        }
    }
    return DesktopEntries(std::move(folders));
}

DesktopEntries DesktopEntries::snapshot() const {
    DesktopEntries copy(folders_);
    copy.files_ = std::make_shared<std::optional<std::vector<File>>>();
    return copy;
}

std::optional<DesktopEntry> DesktopEntries::find(std::string_view id) const {
    const std::string name = withSuffix(id);
    if (name.find('/') != std::string::npos) return std::nullopt;
    std::optional<DesktopEntry> withoutProgram;
    for (const std::filesystem::path& folder : folders_) {
        const auto file = fileIn(folder, name);
        if (!file) continue;
        auto entry = DesktopEntry::read(*file, withoutSuffix(name));
        if (entry && entry->isHidden) break;
        if (entry && isUsable(*entry)) return entry;
        if (!withoutProgram) withoutProgram = std::move(entry);
    }
    return withoutProgram;
}

std::vector<DesktopEntries::File> DesktopEntries::readFolders() const {
    std::vector<File> files;
    constexpr auto kOptions = std::filesystem::directory_options::skip_permission_denied;
    for (const std::filesystem::path& folder : folders_) {
        std::error_code error;
        for (std::filesystem::recursive_directory_iterator file(folder, kOptions, error), end;
             !error && file != end; file.increment(error)) {
            if (file->path().extension() != kSuffix) continue;
            const auto text = readFile(file->path());
            if (text && text->size() <= kLargestEntry) {
                files.push_back({folder, file->path(), programsIn(*text)});
            }
        }
    }
    return files;
}

std::optional<DesktopEntry> DesktopEntries::findByProgram(
    const std::filesystem::path& program) const {
    const std::filesystem::path target = resolved(program);
    const std::string name = program.filename();
    const std::string targetName = target.filename();

    // As a rule the id is the program's name, and one file tells.
    if (auto entry = find(name); entry && entry->isVisible) {
        const auto started = entry->program();
        if (started && resolved(*started) == target) return entry;
    }

    std::optional<std::vector<File>> own;
    std::optional<std::vector<File>>& files = files_ ? *files_ : own;
    if (!files) files = readFolders();

    using Score = std::tuple<bool, bool, bool, std::ptrdiff_t>;
    std::optional<DesktopEntry> best;
    Score bestScore;
    for (const File& file : *files) {
        // Most entries do not name the program, or what it is a link to, even in part.
        const bool isNamed = std::ranges::any_of(file.programs, [&](const std::string& word) {
            return Text::contains(word, name) || Text::contains(word, targetName);
        });
        if (!isNamed) continue;
        auto entry = DesktopEntry::read(file.path, idIn(file.folder, file.path));
        if (!entry || entry->isHidden) continue;
        const auto started = entry->program();
        if (!started) continue;
        const bool isSame = resolved(*started) == target;
        if (!isSame && started->filename() != name) continue;
        // Of several with one id another one may count.
        const auto counting = find(entry->id);
        if (!counting || counting->file != entry->file) continue;
        const Score score{isSame, entry->isVisible, entry->id == name,
                          -static_cast<std::ptrdiff_t>(entry->exec.size())};
        if (!best || score > bestScore) {
            best = std::move(entry);
            bestScore = score;
        }
    }
    return best;
}

std::optional<std::string> DesktopEntries::idOf(const std::filesystem::path& file) const {
    for (const std::filesystem::path& folder : folders_) {
        const auto relative = file.lexically_relative(folder);
        if (!relative.empty() && *relative.begin() != ".." && file.extension() == kSuffix) {
            return idIn(folder, file);
        }
    }
    return std::nullopt;
}

}  // namespace ferrivane

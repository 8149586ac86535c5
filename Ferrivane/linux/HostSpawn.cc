#include "Ferrivane/linux/HostSpawn.h"

#include <iterator>

namespace ferrivane {

HostSpawn::HostSpawn(const std::filesystem::path& marker) {
    std::error_code error;
    isNeeded_ = std::filesystem::exists(marker, error);
}

std::vector<std::string> HostSpawn::command(
    std::vector<std::string> command, const std::optional<std::string>& activationToken) const {
    if (!isNeeded_) return command;
    std::vector<std::string> words{"flatpak-spawn", "--host"};
    if (activationToken) words.push_back("--env=XDG_ACTIVATION_TOKEN=" + *activationToken);
    words.insert(words.end(), std::make_move_iterator(command.begin()),
                 std::make_move_iterator(command.end()));
    return words;
}

}  // namespace ferrivane

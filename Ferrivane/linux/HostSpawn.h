// Running programs outside a Flatpak: by flatpak-spawn(1), which asks the session helper on the
// host. The package needs --talk-name=org.freedesktop.Flatpak.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ferrivane {

class HostSpawn {
  public:
    // Every Flatpak has this file, and nothing else does (flatpak-metadata(5)).
    explicit HostSpawn(const std::filesystem::path& marker = "/.flatpak-info");

    bool isNeeded() const { return isNeeded_; }

    // The command as it must be started here. The environment does not go along; the token does.
    std::vector<std::string> command(std::vector<std::string> command,
                                     const std::optional<std::string>& activationToken) const;

  private:
    bool isNeeded_;
};

}  // namespace ferrivane

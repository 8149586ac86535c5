// Preferences in preferences.ini beside rules.json.
#pragma once

#include <string>

#include "Ferrivane/platform/Preferences.h"

namespace ferrivane {

class LinuxPreferences : public Preferences {
  public:
    bool flag(std::string_view key) const override;
    void setFlag(std::string_view key, bool value) override;

    // One line; empty as long as it was never set.
    std::string text(std::string_view key) const;
    void setText(std::string_view key, const std::string& value);
};

}  // namespace ferrivane

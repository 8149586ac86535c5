// The standard user defaults.
#pragma once

#include "Ferrivane/platform/Preferences.h"

namespace ferrivane {

class MacPreferences : public Preferences {
  public:
    bool flag(std::string_view key) const override;
    void setFlag(std::string_view key, bool value) override;
};

}  // namespace ferrivane

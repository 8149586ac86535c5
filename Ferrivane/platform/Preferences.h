// The person's choices that are not rules. Main thread only.
#pragma once

#include <string_view>

namespace ferrivane {

class Preferences {
  public:
    virtual ~Preferences() = default;

    // False as long as it was never set.
    virtual bool flag(std::string_view key) const = 0;
    virtual void setFlag(std::string_view key, bool value) = 0;
};

}  // namespace ferrivane

// The process that started this one and waits for it. Main thread only.
#pragma once

#include <optional>

#include "core/Opener.h"

namespace ferrivane {

class Caller {
  public:
    virtual ~Caller() = default;

    // From here on the caller no longer waits for this process to end, but for release. Call it
    // before the first thread starts.
    virtual void detach() = 0;
    // Lets the caller go on with the exit status of our work. The standard streams are closed
    // afterwards. Without an earlier detach it does nothing.
    virtual void release(int status) = 0;

    // The application that the caller belongs to, as far as it can honestly be known.
    virtual std::optional<Opener> opener() const = 0;
};

}  // namespace ferrivane

#include "core/support/FileError.h"

#include <system_error>

namespace ferrivane {

std::string systemErrorText(int code) {
    return std::generic_category().message(code);
}

std::string FileError::description() const {
    std::string reason = systemErrorText(code);
    switch (operation) {
        case Operation::open:
            return "open failed: " + reason;
        case Operation::read:
            return "read failed: " + reason;
        case Operation::write:
            return "write failed: " + reason;
        case Operation::replace:
            return "replacing the file failed: " + reason;
        case Operation::createFolder:
            return "cannot create folder " + path.string() + ": " + reason;
    }
    return reason;
}

}  // namespace ferrivane

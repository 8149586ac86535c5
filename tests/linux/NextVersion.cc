// Makes the program that it is linked into one of a later version.
#include "Ferrivane/linux/Version.h"

namespace ferrivane {

std::string_view buildVersion() {
    return "99.0.0";
}

}  // namespace ferrivane

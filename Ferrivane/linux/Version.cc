#include "Ferrivane/linux/Version.h"

namespace ferrivane {

std::string_view buildVersion() {
    return FERRIVANE_VERSION;
}

}  // namespace ferrivane

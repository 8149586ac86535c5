// The application on the session bus: org.freedesktop.Application, spoken by hand because GIO's own
// application object does not tell who calls.
#pragma once

#include <optional>
#include <string>

#include "Ferrivane/linux/DesktopServices.h"

namespace ferrivane::Application {

// Once per process.
DesktopServices::NameClaim serve(const std::string& applicationId, DesktopServices::Calls calls);

void stopServing();

bool activate(const std::string& applicationId, const std::optional<std::string>& activationToken);

}  // namespace ferrivane::Application

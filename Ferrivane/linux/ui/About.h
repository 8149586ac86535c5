// What the application is: its name, version and licence.
#pragma once

#include <QWidget>
#include <string>

namespace ferrivane {

// Shows the one window about it in front of the others.
void showAbout(const std::string& nameAndVersion, QWidget* parent);

}  // namespace ferrivane

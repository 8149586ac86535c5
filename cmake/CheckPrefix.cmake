# Runs first at every installation: refuses a prefix that a desktop entry cannot name. xdg-open splits
# its Exec line at blanks and knows no quotes; the other characters would need them, or have a meaning
# of their own there.
cmake_policy(VERSION 3.25)

if(CMAKE_INSTALL_PREFIX MATCHES "[][ \t\n\"'`\\\\$&|;*?#()<>~%=]")
  message(FATAL_ERROR
    "Cannot install into \"${CMAKE_INSTALL_PREFIX}\": desktop entries name the program by its path, "
    "which must not contain \"${CMAKE_MATCH_0}\". Choose another --prefix.")
endif()
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE)

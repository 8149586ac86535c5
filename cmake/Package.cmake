# The Debian package: cpack --config BUILD/CPackConfig.cmake
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ferrivane)
set(CPACK_PACKAGE_VENDOR "the Ferrivane authors")
# There is no address to write to yet. A name below .invalid belongs to nobody, now or later.
set(CPACK_PACKAGE_CONTACT "the Ferrivane authors <ferrivane@hollowmere.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "open each link in the right profile of Google Chrome")

# Installed as if into /usr, so that the entries name /usr/bin/Ferrivane.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION web)
# No "Provides: www-browser": who asks for that wants to read a page, and this shows none. It would
# count as the one browser of a system that has no other.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "google-chrome-stable | chromium, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Ferrivane takes the place of the default browser and shows no page itself.
When an application opens a link, it finds out which application that was,
walks your ordered rules, and opens the link in Google Chrome or Chromium,
in the profile that the first matching rule names.
.
A rule looks at the link, at its host, or at the application that the link
comes from. It is for people who keep work, private and client profiles
apart and open links all day long.")
# No maintainer scripts: dpkg's triggers refresh what the desktop and man keep of a package's files,
# and the rules and the log are the person's.

set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageTime.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianFiles.cmake)
set(CPACK_FERRIVANE_SOURCES ${PROJECT_SOURCE_DIR})
set(CPACK_FERRIVANE_STRIP ${CMAKE_STRIP})
set(CPACK_FERRIVANE_RELEASE_DATE ${FERRIVANE_RELEASE_DATE})
include(CPack)

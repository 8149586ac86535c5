# At installation: the entries that name the program by its absolute path.
cmake_policy(VERSION 3.25)

set(FERRIVANE_PROGRAM "${CMAKE_INSTALL_PREFIX}/${ferrivane_bindir}/Ferrivane")

# One folder for each destination, so that two installations at a time do not meet.
string(SHA1 destination "$ENV{DESTDIR}:${CMAKE_INSTALL_PREFIX}")
set(entries "${ferrivane_scratch}/entries-${destination}")
foreach(entry IN ITEMS desktop service)
  configure_file("${ferrivane_templates}/${ferrivane_id}.${entry}.in"
    "${entries}/${ferrivane_id}.${entry}" @ONLY)
endforeach()
file(INSTALL "${entries}/${ferrivane_id}.desktop"
  DESTINATION "${CMAKE_INSTALL_PREFIX}/${ferrivane_datadir}/applications")
file(INSTALL "${entries}/${ferrivane_id}.service"
  DESTINATION "${CMAKE_INSTALL_PREFIX}/${ferrivane_datadir}/dbus-1/services")
file(REMOVE_RECURSE "${entries}")

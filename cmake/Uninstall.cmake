# Takes an installation away again:
#
#     cmake -D CMAKE_INSTALL_PREFIX=PREFIX -P cmake/Uninstall.cmake
cmake_policy(VERSION 3.25)

if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_PREFIX}" OR NOT EXISTS "${CMAKE_INSTALL_PREFIX}/bin/Ferrivane")
  message(FATAL_ERROR "Ferrivane is not installed in \"${CMAKE_INSTALL_PREFIX}\"")
endif()

file(GLOB modules "${CMAKE_INSTALL_PREFIX}/lib*/ferrivane" "${CMAKE_INSTALL_PREFIX}/lib*/*/ferrivane")
set(id com.hollowmere.ferrivane)
set(share "${CMAKE_INSTALL_PREFIX}/share")
foreach(file IN ITEMS
    ${modules}
    "${share}/applications/${id}.desktop"
    "${share}/bash-completion/completions/Ferrivane"
    "${share}/dbus-1/services/${id}.service"
    "${share}/ferrivane"
    "${share}/fish/vendor_completions.d/Ferrivane.fish"
    "${share}/icons/hicolor/scalable/apps/${id}.svg"
    "${share}/icons/hicolor/symbolic/apps/${id}-symbolic.svg"
    "${share}/man/man1/Ferrivane.1"
    "${share}/metainfo/${id}.metainfo.xml"
    "${share}/zsh/site-functions/_Ferrivane"
    "${CMAKE_INSTALL_PREFIX}/bin/Ferrivane")
  if(EXISTS "${file}")
    message(STATUS "Removing: ${file}")
    file(REMOVE_RECURSE "${file}")
  endif()
endforeach()

set(ferrivane_datadir share)
include("${CMAKE_CURRENT_LIST_DIR}/TellDesktop.cmake")

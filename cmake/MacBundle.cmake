# Ferrivane.app around the executable, signed, and a zip of it: cpack --config BUILD/CPackConfig.cmake

set(FERRIVANE_SIGN_IDENTITY "-" CACHE STRING "Who signs Ferrivane.app; \"-\" is nobody, an ad-hoc signature")
option(FERRIVANE_SANDBOXED "Sign Ferrivane.app for the App Sandbox" OFF)

set(sources ${PROJECT_SOURCE_DIR}/resources)
set(icon ${CMAKE_CURRENT_BINARY_DIR}/Ferrivane.icns)
set(drawing ${sources}/icons/com.hollowmere.ferrivane.svg)
add_custom_command(OUTPUT ${icon}
  COMMAND ${sources}/macos/make-icon ${drawing} ${icon}
  DEPENDS ${sources}/macos/make-icon ${drawing}
  VERBATIM)
configure_file(${sources}/macos/Info.plist.in ${CMAKE_CURRENT_BINARY_DIR}/Info.plist @ONLY)

set(helper ${sources}/ferrivane-helper.sh)
target_sources(Ferrivane PRIVATE ${icon} ${helper})
set_target_properties(Ferrivane PROPERTIES
  MACOSX_BUNDLE_INFO_PLIST ${CMAKE_CURRENT_BINARY_DIR}/Info.plist
  LINK_DEPENDS "${icon};${helper}"
  RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
  # Nothing in it changes once it is signed.
  SKIP_BUILD_RPATH ON)

set(signing --force --sign ${FERRIVANE_SIGN_IDENTITY})
if(NOT FERRIVANE_SIGN_IDENTITY STREQUAL "-")
  list(APPEND signing --options runtime --timestamp)
endif()
if(FERRIVANE_SANDBOXED)
  list(APPEND signing --entitlements ${sources}/Ferrivane.entitlements)
endif()
# In one command, so that everything is there when it is signed.
set(resources $<TARGET_BUNDLE_CONTENT_DIR:Ferrivane>/Resources)
add_custom_command(TARGET Ferrivane POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E make_directory ${resources}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${icon} ${helper} ${resources}
  COMMAND codesign ${signing} $<TARGET_BUNDLE_DIR:Ferrivane>
  VERBATIM)

install(TARGETS Ferrivane BUNDLE DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME Ferrivane-${PROJECT_VERSION}-macos-arm64)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_STRIP_FILES OFF)
include(CPack)

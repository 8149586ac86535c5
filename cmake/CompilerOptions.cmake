# One interface target carries what every target of ours is compiled and linked with.
add_library(ferrivane_options INTERFACE)
target_include_directories(ferrivane_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(ferrivane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

# GCC 12 sees overlapping copies where std::string joins texts (GCC bug 105651, mended in 13), and
# values that may not be set or do not fit in what it has inlined or instrumented.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(ferrivane_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized
    -Wno-stringop-overflow -Wno-array-bounds)
endif()

# Clang takes the standard library's own use of what it deprecates for ours.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(ferrivane_options INTERFACE -Wno-deprecated-declarations)
endif()

# The check of virtual tables needs descriptors of its own, and some tests leave none.
if(FERRIVANE_SANITIZE)
  target_compile_options(ferrivane_options INTERFACE
    -fsanitize=${FERRIVANE_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(ferrivane_options INTERFACE -fsanitize=${FERRIVANE_SANITIZE})
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_compile_options(ferrivane_options INTERFACE
    -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong)
  if(NOT APPLE)
    target_compile_options(ferrivane_options INTERFACE -fstack-clash-protection)
  endif()
endif()
if(FERRIVANE_FUZZ)
  target_compile_options(ferrivane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(NOT APPLE)
  target_compile_definitions(ferrivane_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(ferrivane_options INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed)
endif()

# What nearly every source of a library includes, read once: a third of the time that one takes to
# compile. Each source still includes what it uses; the build with the thread sanitizer shows it.
function(ferrivane_precompile library)
  if(APPLE)
    return()
  endif()
  target_precompile_headers(${library} PRIVATE <algorithm> <chrono> <expected> <filesystem>
    <functional> <memory> <optional> <string> <string_view> <utility> <vector> ${ARGN})
endfunction()

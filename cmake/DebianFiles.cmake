# Before the package is closed: what only Debian wants, and wants otherwise.
cmake_policy(VERSION 3.25)

set(usr "${CPACK_TEMPORARY_DIRECTORY}/usr")
set(doc "${usr}/share/doc/ferrivane")
set(sources "${CPACK_FERRIVANE_SOURCES}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Its zsh looks elsewhere for what packages bring.
file(MAKE_DIRECTORY "${usr}/share/zsh/vendor-completions")
file(RENAME "${usr}/share/zsh/site-functions/_Ferrivane"
  "${usr}/share/zsh/vendor-completions/_Ferrivane")
file(REMOVE_RECURSE "${usr}/share/zsh/site-functions")

file(COPY "${sources}/resources/debian/copyright" DESTINATION "${doc}")
file(MAKE_DIRECTORY "${usr}/share/lintian/overrides")
file(COPY_FILE "${sources}/resources/debian/lintian-overrides"
  "${usr}/share/lintian/overrides/ferrivane")

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
run(awk -v "maintainer=${CPACK_PACKAGE_CONTACT}" -v "date=${now}"
  -f "${sources}/cmake/debian-changelog.awk" "${sources}/CHANGELOG.md"
  OUTPUT_FILE "${doc}/changelog")
run(gzip -9 --no-name --force "${doc}/changelog" "${usr}/share/man/man1/Ferrivane.1")

file(GLOB modules "${usr}/lib*/ferrivane/*.so" "${usr}/lib*/*/ferrivane/*.so")
set(binaries "${usr}/bin/Ferrivane" ${modules})
run("${CPACK_FERRIVANE_STRIP}" --strip-unneeded --remove-section=.comment --remove-section=.note
  ${binaries})
# Whatever the permissions of the checkout.
run(chmod -R u=rwX,go=rX "${usr}")

# CPack could find the dependencies too, but would take the modules for libraries that others are
# linked with, and have ldconfig called for them.
set(scratch "${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps")
file(WRITE "${scratch}/debian/control" "Source: ferrivane\n\nPackage: ferrivane\nArchitecture: any\n")
execute_process(COMMAND dpkg-shlibdeps -O ${binaries} WORKING_DIRECTORY "${scratch}"
  RESULT_VARIABLE result OUTPUT_VARIABLE depends ERROR_VARIABLE messages
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "dpkg-shlibdeps, of the package dpkg-dev: ${result}\n${messages}")
endif()
string(REPLACE "shlibs:Depends=" "" CPACK_DEBIAN_PACKAGE_DEPENDS "${depends}")

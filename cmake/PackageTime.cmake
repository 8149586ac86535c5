# Read by cpack first. The same sources make the same package, whenever it is made: without a time from
# outside, every file in it is of the day of the release.
cmake_policy(VERSION 3.25)

if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  execute_process(COMMAND date --utc --date ${CPACK_FERRIVANE_RELEASE_DATE} +%s
    OUTPUT_VARIABLE seconds OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{SOURCE_DATE_EPOCH} ${seconds})
endif()

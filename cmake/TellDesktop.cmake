# After a change in a folder that this session's desktop reads: refreshes what it keeps of it.
# Each step is a convenience, so one that fails or has no tool is passed over.
cmake_policy(VERSION 3.25)

if(NOT "$ENV{DESTDIR}" STREQUAL "")
  return()
endif()
set(folder "${CMAKE_INSTALL_PREFIX}/${ferrivane_datadir}")

set(own "$ENV{XDG_DATA_HOME}")
if(own STREQUAL "")
  set(own "$ENV{HOME}/.local/share")
endif()
set(read "$ENV{XDG_DATA_DIRS}")
if(read STREQUAL "")
  set(read "/usr/local/share:/usr/share")
endif()
string(REPLACE ":" ";" read "${own}:${read}")
list(TRANSFORM read REPLACE "/+$" "")
if(NOT folder IN_LIST read)
  return()
endif()

function(try tool)
  find_program(program ${tool} NO_CACHE)
  if(program)
    execute_process(COMMAND "${program}" ${ARGN} TIMEOUT 20 OUTPUT_QUIET ERROR_QUIET)
  endif()
endfunction()

try(update-desktop-database "${folder}/applications")

# Where icons are cached the cache must be newer than the folder; elsewhere a newer folder is enough.
file(TOUCH_NOCREATE "${folder}/icons/hicolor")
if(EXISTS "${folder}/icons/hicolor/index.theme")
  try(gtk-update-icon-cache --quiet --force "${folder}/icons/hicolor")
endif()

# Other kinds of address would start a bus.
if("$ENV{DBUS_SESSION_BUS_ADDRESS}" MATCHES "^(unix|tcp):")
  try(dbus-send --session --dest=org.freedesktop.DBus --type=method_call --print-reply
    --reply-timeout=2000 /org/freedesktop/DBus org.freedesktop.DBus.ReloadConfig)
endif()

# Runs at installation, when the prefix is known for certain. The commands in these files are
# absolute paths: GIO passes over an entry whose program it does not find in PATH.

cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE prefix)
set(program_path "${prefix}/${program_folder}/vastel-connect")
if(program_path MATCHES "[^A-Za-z0-9+,./:=@_-]")
  # Generic xdg-open cannot run a quoted path.
  message(FATAL_ERROR "The prefix must do without blanks and signs: ${prefix}")
endif()

function(install_configured template folder name)
  set(file "$ENV{DESTDIR}${prefix}/${folder}/${name}")
  message(STATUS "Installing: ${file}")
  configure_file("${packaging_folder}/${template}" "${file}" @ONLY NO_SOURCE_PERMISSIONS)
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${prefix}/${folder}/${name}")
  set(CMAKE_INSTALL_MANIFEST_FILES "${CMAKE_INSTALL_MANIFEST_FILES}" PARENT_SCOPE)
endfunction()

install_configured(com.vastel.Connect.desktop.in ${data_folder}/applications
  com.vastel.Connect.desktop)
install_configured(com.vastel.Connect.service.in ${data_folder}/dbus-1/services
  com.vastel.Connect.service)
# The user manager looks in the data folders of each prefix, and has a place for distributions.
if(prefix STREQUAL "/usr")
  set(unit_folder lib/systemd/user)
else()
  set(unit_folder ${data_folder}/systemd/user)
endif()
install_configured(vastel-connect.service.in ${unit_folder} vastel-connect.service)
# The manual's options are the rows of README's table of switches.
file(STRINGS "${packaging_folder}/../../README.md" rows REGEX "^[|] `-")
string(REPLACE "`" "" rows "${rows}")
string(REPLACE "-" "\\-" rows "${rows}")
string(REGEX REPLACE "[|] ([^|;]*) [|] ([^|;]*) [|];?" ".TP\n.B \\1\n\\2.\n" CONNECT_OPTIONS
  "${rows}")
install_configured(vastel-connect.1.in ${data_folder}/man/man1 vastel-connect.1)

# The index of schemes that openers read. A package leaves this to the system's own trigger.
find_program(UPDATE_DESKTOP_DATABASE update-desktop-database)
if("$ENV{DESTDIR}" STREQUAL "" AND UPDATE_DESKTOP_DATABASE)
  execute_process(COMMAND ${UPDATE_DESKTOP_DATABASE}
    "${prefix}/${data_folder}/applications")
endif()

# CONNECT_HOST: which host is built, and with which libraries. "gnustep" is the host for macOS with
# GNUstep's frameworks instead of Apple's, which judges it where no Mac is at hand.

if(APPLE)
  set(own_host macos)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(own_host linux)
endif()
set(CONNECT_HOST "${own_host}" CACHE STRING "The host that is built: linux, macos or gnustep")
# The folder of each host, in platform/ and in tests/.
set(folder_of_linux linux)
set(folder_of_macos macos)
set(folder_of_gnustep macos)
set(CONNECT_HOST_FOLDER "${folder_of_${CONNECT_HOST}}")
if(NOT CONNECT_HOST_FOLDER)
  message(FATAL_ERROR "CONNECT_HOST is \"${CONNECT_HOST}\", which is none of linux, macos and gnustep. "
    "For ${CMAKE_SYSTEM_NAME}, see \"A new host\" in docs/internals.md.")
endif()

# By its header, which is all of it: its CMake package has another name until version 4, and is one
# processor's on Debian 12.
find_path(UTF8CPP_INCLUDE_DIR utf8.h PATH_SUFFIXES utf8cpp REQUIRED)
add_library(utf8cpp INTERFACE)
target_include_directories(utf8cpp SYSTEM INTERFACE ${UTF8CPP_INCLUDE_DIR})

include(platform/${CONNECT_HOST_FOLDER}/Libraries.cmake)

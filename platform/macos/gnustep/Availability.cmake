# What macOS lacks until a later release than the oldest one of the program is an error here too.
# LLVM's library has Apple's marks of that, switched off: a copy of them is switched on, with an
# attribute in place of Apple's, which holds for Apple's systems only.

set(CONNECT_AVAILABILITY OFF)
set(marks __configuration/availability.h)
if(NOT EXISTS ${CONNECT_LIBCXX}/${marks})
  message(STATUS "What macOS ${CMAKE_OSX_DEPLOYMENT_TARGET} lacks is not judged: the marks of that "
    "are in LLVM's library from release 19 on")
  return()
endif()

string(REGEX MATCH "^([0-9]+)\\.([0-9]+)$" oldest ${CMAKE_OSX_DEPLOYMENT_TARGET})
math(EXPR oldest "${CMAKE_MATCH_1} * 10000 + ${CMAKE_MATCH_2} * 100")
file(READ ${CONNECT_LIBCXX}/${marks} text)
string(REGEX MATCHALL "availability\\(macos, strict, introduced = [0-9.]+\\)" introduced "${text}")
foreach(mark IN LISTS introduced)
  string(REGEX MATCH "[0-9.]+" version ${mark})
  if(version VERSION_GREATER CMAKE_OSX_DEPLOYMENT_TARGET)
    string(REPLACE ${mark} "unavailable(\"introduced in macOS ${version}\")" text "${text}")
  endif()
endforeach()

set(folder ${PROJECT_BINARY_DIR}/availability)
file(CONFIGURE OUTPUT ${folder}/${marks} CONTENT "#define __APPLE__
#define __ENVIRONMENT_MAC_OS_X_VERSION_MIN_REQUIRED__ ${oldest}
${text}
#undef __APPLE__
" @ONLY)
file(CONFIGURE OUTPUT ${folder}/__config_site CONTENT "#include_next <__config_site>
#undef _LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS
#undef _LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS
#define _LIBCPP_HAS_VENDOR_AVAILABILITY_ANNOTATIONS 1
" @ONLY)
include_directories(SYSTEM ${folder})
set(CONNECT_AVAILABILITY ON)

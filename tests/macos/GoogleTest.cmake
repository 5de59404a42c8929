# Debian's library of GoogleTest is compiled with another standard library: this is the same release,
# compiled from Debian's sources.

find_path(CONNECT_GOOGLETEST CMakeLists.txt PATHS /usr/src/googletest NO_DEFAULT_PATH REQUIRED)
set(INSTALL_GTEST OFF)
set(warnings_are_errors ${CMAKE_COMPILE_WARNING_AS_ERROR})
set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
add_subdirectory(${CONNECT_GOOGLETEST} googletest EXCLUDE_FROM_ALL SYSTEM)
set(CMAKE_COMPILE_WARNING_AS_ERROR ${warnings_are_errors})

# AppKit and Foundation of Debian's GNUstep, with the runtime of its compiler collection. That
# runtime knows no automatic reference counting: what the host allocates is not released here.

find_path(GNUSTEP_HEADERS AppKit/AppKit.h PATH_SUFFIXES GNUstep REQUIRED)
find_library(GNUSTEP_GUI gnustep-gui REQUIRED)
find_library(GNUSTEP_BASE gnustep-base REQUIRED)
file(GLOB compiler_headers /usr/lib/gcc/*/*/include)
find_path(GNUSTEP_RUNTIME_HEADERS objc/objc.h HINTS ${compiler_headers} REQUIRED)

target_include_directories(connect_appkit SYSTEM INTERFACE ${GNUSTEP_HEADERS})
target_compile_definitions(connect_appkit INTERFACE
  GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_GUI_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS)
set(options -pthread -fexceptions -fobjc-exceptions -fobjc-runtime=gcc
  -fconstant-string-class=NSConstantString
  # Behind clang's own headers, which the same folder has too.
  -idirafter${GNUSTEP_RUNTIME_HEADERS}
  "SHELL:-include ${CMAKE_CURRENT_LIST_DIR}/AppleEvents.h")
target_compile_options(connect_appkit INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${options}>")
target_link_libraries(connect_appkit INTERFACE ${GNUSTEP_GUI} ${GNUSTEP_BASE} objc pthread)

include(${CMAKE_CURRENT_LIST_DIR}/Availability.cmake)

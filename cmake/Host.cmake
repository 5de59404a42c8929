# Which host is built: Linux', macOS' with Apple's frameworks, or the same one with GNUstep's, which
# judges it where no Mac is at hand.

find_package(utf8cpp REQUIRED)
if(NOT TARGET utf8cpp::utf8cpp)
  # Its name until version 4.
  add_library(utf8cpp::utf8cpp ALIAS utf8cpp)
endif()

option(CONNECT_GNUSTEP "Build the macOS host against GNUstep" OFF)

set(CONNECT_MACOS_HOST OFF)
if(APPLE OR CONNECT_GNUSTEP)
  set(CONNECT_MACOS_HOST ON)
  if(CONNECT_GNUSTEP)
    set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
  endif()
  enable_language(OBJCXX)
  set(CMAKE_OBJCXX_STANDARD 20)
  set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
  set(CMAKE_OBJCXX_EXTENSIONS OFF)
  include(platform/macos/Libraries.cmake)
else()
  set(Boost_USE_STATIC_LIBS ON)
  find_package(Boost 1.81 CONFIG REQUIRED COMPONENTS json)
endif()

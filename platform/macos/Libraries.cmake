# The libraries that all folders use, from their headers alone: what a package manager compiled is
# for one architecture and for the newest system.

if(CONNECT_HOST STREQUAL "gnustep")
  set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
else()
  # For the symbols that are kept beside the program.
  add_compile_options(-g)
endif()
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)

find_package(Boost 1.81 CONFIG REQUIRED)
add_library(connect_boost_json STATIC ${CMAKE_CURRENT_LIST_DIR}/BoostJson.cpp)
target_link_libraries(connect_boost_json PUBLIC Boost::headers)
target_compile_definitions(connect_boost_json PUBLIC
  BOOST_JSON_NO_LIB BOOST_JSON_STATIC_LINK BOOST_CONTAINER_NO_LIB BOOST_CONTAINER_STATIC_LINK)
add_library(Boost::json ALIAS connect_boost_json)

# What the files of the host are compiled with, and link.
add_library(connect_appkit INTERFACE)
# A method has to name the parameters that it does not use.
target_compile_options(connect_appkit INTERFACE
  $<$<COMPILE_LANGUAGE:OBJCXX>:-Wno-unused-parameter>)
if(CONNECT_HOST STREQUAL "gnustep")
  include(${CMAKE_CURRENT_LIST_DIR}/gnustep/GNUstep.cmake)
else()
  target_compile_options(connect_appkit INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc>)
  target_link_libraries(connect_appkit INTERFACE "-framework AppKit")
endif()

# What every target of the project is compiled with.

add_library(connect_options INTERFACE)
target_include_directories(connect_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(connect_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual
  # A designated initializer may leave out what stays at its default.
  -Wno-missing-field-initializers
  # g++ 12 sees overlapping copies in a literal + string once it optimizes.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# Settings that cost nothing and turn a memory fault into a clean end.
target_compile_options(connect_options INTERFACE -fstack-protector-strong)
if(NOT APPLE AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  target_compile_options(connect_options INTERFACE -fcf-protection)
endif()
target_compile_definitions(connect_options INTERFACE
  $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>
  # Of whichever standard library it is.
  _GLIBCXX_ASSERTIONS _LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_FAST)

# A time has 64 bits on processors of 32, too.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_definitions(connect_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# connect_library(<name> <STATIC|OBJECT> SOURCES <file>... LINKS <target>...)
function(connect_library name type)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;LINKS")
  add_library(${name} ${type} ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC connect_options ${arg_LINKS})
endfunction()

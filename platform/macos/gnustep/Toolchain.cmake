# LLVM's standard library, which a Mac has too, and the compiler of the same release. Debian lets one
# release of the library be installed at a time.

file(GLOB libraries /usr/lib/llvm-*/include/c++/v1)
list(SORT libraries COMPARE NATURAL ORDER DESCENDING)
list(POP_FRONT libraries CONNECT_LIBCXX)
if(CONNECT_LIBCXX)
  string(REGEX REPLACE "/include/.*" /bin/clang++ CMAKE_CXX_COMPILER ${CONNECT_LIBCXX})
  if(NOT EXISTS ${CMAKE_CXX_COMPILER})
    message(FATAL_ERROR "${CONNECT_LIBCXX} is there, and ${CMAKE_CXX_COMPILER} is not: "
      "install the compiler of that release, or remove its library and start dev/setup tests.")
  endif()
else()
  set(CMAKE_CXX_COMPILER clang++)
endif()
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
set(CMAKE_OBJCXX_FLAGS_INIT -stdlib=libc++)

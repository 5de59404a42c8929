set(Boost_USE_STATIC_LIBS ON)
find_package(Boost 1.81 CONFIG REQUIRED COMPONENTS json)
find_package(PkgConfig REQUIRED)
pkg_check_modules(libsystemd REQUIRED IMPORTED_TARGET libsystemd)

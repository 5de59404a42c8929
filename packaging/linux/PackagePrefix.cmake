# Read by cpack once for each form of package.
if(CPACK_GENERATOR STREQUAL RPM)
  set(CPACK_INSTALL_PREFIX /usr)
else()
  set(CPACK_INSTALL_PREFIX /usr/local)
endif()

# cpack makes a product archive that puts the application into /Applications and nowhere else.

set(CONNECT_INSTALLER_IDENTITY "" CACHE STRING
  "Whose signature the product archive bears: a Developer ID Installer identity; empty for none")

# Finder shows the name of the folder. The signature does not hold it.
install(DIRECTORY $<TARGET_BUNDLE_DIR:Vastel_Connect>/ DESTINATION "Vastel Connect.app"
  USE_SOURCE_PERMISSIONS COMPONENT application)

set(CPACK_GENERATOR productbuild)
set(CPACK_PACKAGE_NAME "Vastel Connect")
set(CPACK_PACKAGE_VENDOR Vastel)
set(CPACK_PACKAGE_FILE_NAME vastel-connect-${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /Applications)
set(CPACK_PRE_BUILD_SCRIPTS ${packaging}/Applications.cmake)
set(CPACK_COMPONENTS_ALL application)
set(CPACK_PRODUCTBUILD_IDENTIFIER com.vastel.Connect)
if(CONNECT_INSTALLER_IDENTITY)
  set(CPACK_PKGBUILD_IDENTITY_NAME ${CONNECT_INSTALLER_IDENTITY})
  set(CPACK_PRODUCTBUILD_IDENTITY_NAME ${CONNECT_INSTALLER_IDENTITY})
endif()
# What the Installer is told is our own: CPack's wants a licence to be agreed to, and names no
# architectures, without which a Mac with Apple silicon asks for Rosetta. The domains stand in it;
# with the variable, CPack leaves out what they replace.
set(CPACK_PRODUCTBUILD_DOMAINS ON)
set(CPACK_DEPLOYMENT_TARGET ${CMAKE_OSX_DEPLOYMENT_TARGET})
list(PREPEND CMAKE_MODULE_PATH ${packaging})
include(CPack)
# An upgrade must not chase a copy that somebody moved elsewhere.
cpack_add_component(application DISPLAY_NAME "Vastel Connect" REQUIRED
  PLIST ${packaging}/Component.plist)

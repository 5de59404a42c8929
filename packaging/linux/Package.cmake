# cpack makes an RPM for /usr, and an archive for /usr/local that is unpacked in "/". The Debian
# package is made by debian/.

set(CPACK_GENERATOR RPM TGZ)
set(CPACK_PACKAGE_NAME vastel-connect)
set(CPACK_PACKAGE_VENDOR Vastel)
set(CPACK_PACKAGE_CONTACT "Vastel <support@vastel.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL https://vastel.example/connect)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Opens the web page that a telephony client's link names")
set(CPACK_PACKAGE_DESCRIPTION "A telephony web client makes screenpop links, each of which carries a small record of a call.
Following one opens the caller's web page in the user's default browser while the phone still rings.")
set(CPACK_PACKAGE_FILE_NAME vastel-connect-${PROJECT_VERSION}.${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/PackagePrefix.cmake)
set(CPACK_STRIP_FILES ON)
# The entries name the program by its path: the prefix is that of the system where it is used.
set(CPACK_SET_DESTDIR ON)
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)

set(CPACK_RPM_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_RPM_PACKAGE_LICENSE Proprietary)
set(CPACK_RPM_PACKAGE_GROUP Applications/Internet)
# As in debian/control.
set(CPACK_RPM_PACKAGE_REQUIRES "desktop-file-utils, xdg-utils")
# The folders that are the system's, or several packages'.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
  /usr/lib/systemd /usr/lib/systemd/user /usr/share/applications
  /usr/share/bash-completion /usr/share/bash-completion/completions
  /usr/share/dbus-1 /usr/share/dbus-1/services /usr/share/fish /usr/share/fish/vendor_completions.d
  /usr/share/icons /usr/share/icons/hicolor /usr/share/icons/hicolor/scalable
  /usr/share/icons/hicolor/scalable/apps /usr/share/man /usr/share/man/man1 /usr/share/metainfo
  /usr/share/zsh /usr/share/zsh/site-functions)
# Links to the program by its build, for debug packages, which there are none of.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none")
include(CPack)

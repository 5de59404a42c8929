# The bundle as GNUstep knows it: the executable at its top, no folder "Contents", and the interface
# file as it was written.

set(bundle ${PROJECT_BINARY_DIR}/Vastel_Connect.app)
set_target_properties(Vastel_Connect PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${bundle})
configure_file(${CMAKE_CURRENT_BINARY_DIR}/Info.plist ${bundle}/Resources/Info.plist COPYONLY)
configure_file(${packaging}/MainMenu.xib ${bundle}/Resources/MainMenu.xib COPYONLY)
configure_file(${packaging}/AppIcon.icns ${bundle}/Resources/AppIcon.icns COPYONLY)

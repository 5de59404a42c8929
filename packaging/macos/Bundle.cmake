# The bundle: what Finder and LaunchServices know of the program, and its signature.

set(CONNECT_SIGNING_IDENTITY "-" CACHE STRING
  "Whose signature the application bears: a Developer ID Application identity; \"-\" for nobody's")

set(info_plist ${CMAKE_CURRENT_BINARY_DIR}/Info.plist)
set(entitlements ${packaging}/Vastel_Connect.entitlements)
set_target_properties(Vastel_Connect PROPERTIES
  MACOSX_BUNDLE ON
  MACOSX_BUNDLE_INFO_PLIST ${info_plist}
  RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
  XCODE_ATTRIBUTE_PRODUCT_BUNDLE_IDENTIFIER com.vastel.Connect
  XCODE_ATTRIBUTE_CODE_SIGN_STYLE Manual
  XCODE_ATTRIBUTE_CODE_SIGN_IDENTITY ${CONNECT_SIGNING_IDENTITY}
  XCODE_ATTRIBUTE_CODE_SIGN_ENTITLEMENTS ${entitlements}
  # What is hardened lets no debugger in.
  "XCODE_ATTRIBUTE_CODE_SIGN_INJECT_BASE_ENTITLEMENTS[variant=Release]" NO
  "XCODE_ATTRIBUTE_ENABLE_HARDENED_RUNTIME[variant=Release]" YES)

# In a project for Xcode, a target has one set of options for all its languages.
set_target_properties(connect_host Vastel_Connect PROPERTIES
  XCODE_ATTRIBUTE_CLANG_ENABLE_OBJC_ARC YES)

find_program(CONNECT_XCRUN xcrun)
execute_process(COMMAND ${CONNECT_XCRUN} --find ibtool
  OUTPUT_VARIABLE ibtool OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE status)
if(NOT CONNECT_XCRUN OR NOT status EQUAL 0)
  message(FATAL_ERROR "No ibtool: the interface file needs the whole of Xcode, which the Command "
    "Line Tools are not. Install Xcode, then: sudo xcode-select -s /Applications/Xcode.app")
endif()

set(interface ${packaging}/MainMenu.xib)
set(icon ${packaging}/AppIcon.icns)
if(CMAKE_GENERATOR STREQUAL "Xcode")
  # It compiles the interface file, fills the bundle and signs it of its own accord.
  target_sources(Vastel_Connect PRIVATE ${interface} ${icon})
  set_source_files_properties(${interface} ${icon} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  return()
endif()

# A crash report names functions by what is kept here; the program itself need not hold it.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_custom_command(TARGET Vastel_Connect POST_BUILD
    COMMAND dsymutil $<TARGET_FILE:Vastel_Connect> -o ${PROJECT_BINARY_DIR}/Vastel_Connect.app.dSYM
    COMMAND strip -S $<TARGET_FILE:Vastel_Connect> VERBATIM)
endif()

# ibtool makes a file or a folder, as it likes: it writes where the result belongs.
set(resources ${PROJECT_BINARY_DIR}/Vastel_Connect.app/Contents/Resources)
set(compiled_interface ${resources}/MainMenu.nib)
add_custom_command(OUTPUT ${compiled_interface}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${resources}
  COMMAND ${ibtool} --errors --warnings --notices --output-format human-readable-text
    --minimum-deployment-target ${CMAKE_OSX_DEPLOYMENT_TARGET}
    --compile ${compiled_interface} ${interface}
  DEPENDS ${interface} VERBATIM)

set(time_stamp --timestamp)
if(CONNECT_SIGNING_IDENTITY STREQUAL "-")
  set(time_stamp --timestamp=none)
endif()
# The signature covers the resources, so both are one step: CMake's own copying of resources is not
# ordered before anything.
add_custom_target(bundle ALL
  COMMAND ${CMAKE_COMMAND} -E copy ${icon} ${resources}
  # A folder that iCloud keeps marks files in a way that codesign refuses.
  COMMAND xattr -cr $<TARGET_BUNDLE_DIR:Vastel_Connect>
  COMMAND codesign --force "$<$<CONFIG:Release>:--options;runtime>" ${time_stamp}
    --entitlements ${entitlements} --sign ${CONNECT_SIGNING_IDENTITY}
    $<TARGET_BUNDLE_DIR:Vastel_Connect>
  DEPENDS ${compiled_interface}
  COMMENT "Filling and signing the bundle" COMMAND_EXPAND_LISTS VERBATIM)
add_dependencies(bundle Vastel_Connect)

# The program, and the files through which the desktop sends it links.

install(TARGETS vastel-connect RUNTIME)
foreach(name IN ITEMS com.vastel.Connect.metainfo.xml vastel-connect.1)
  configure_file(${packaging}/${name}.in ${name} @ONLY)
endforeach()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/com.vastel.Connect.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/com.vastel.Connect.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vastel-connect.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${packaging}/completions/vastel-connect.bash RENAME vastel-connect
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${packaging}/completions/_vastel-connect
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${packaging}/completions/vastel-connect.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

install(CODE "set(program_folder \"${CMAKE_INSTALL_BINDIR}\")")
install(CODE "set(data_folder \"${CMAKE_INSTALL_DATADIR}\")")
install(CODE "set(packaging_folder \"${packaging}\")")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/InstallData.cmake)

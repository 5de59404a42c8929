# The program, and the files through which the desktop sends it links.

install(TARGETS vastel-connect RUNTIME)
configure_file(${packaging}/com.vastel.Connect.metainfo.xml.in com.vastel.Connect.metainfo.xml @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/com.vastel.Connect.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/com.vastel.Connect.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${packaging}/completions/vastel-connect.bash RENAME vastel-connect
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${packaging}/completions/_vastel-connect
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${packaging}/completions/vastel-connect.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# What support and administrators read, as links between these documents have it.
set(doc_folder ${CMAKE_INSTALL_DATADIR}/doc/vastel-connect)
set(docs ${PROJECT_SOURCE_DIR}/docs)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${docs}/clients.md ${docs}/deploy.md ${docs}/links.html
  ${docs}/links.md ${docs}/troubleshooting.md DESTINATION ${doc_folder})
install(FILES ${docs}/pictures/terminal.svg DESTINATION ${doc_folder}/pictures)
install(DIRECTORY ${packaging}/../policies/ DESTINATION ${doc_folder}/examples
  PATTERN *.mobileconfig EXCLUDE)

install(CODE "
  set(program_folder \"${CMAKE_INSTALL_BINDIR}\")
  set(data_folder \"${CMAKE_INSTALL_DATADIR}\")
  set(packaging_folder \"${packaging}\")
  set(PROJECT_VERSION ${PROJECT_VERSION})
  set(CONNECT_RELEASE_DATE ${CONNECT_RELEASE_DATE})")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/InstallData.cmake)

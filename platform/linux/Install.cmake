# The program, and the files through which the desktop sends it links.

install(TARGETS vastel-connect RUNTIME)
install(CODE "set(program_folder \"${CMAKE_INSTALL_BINDIR}\")")
install(CODE "set(data_folder \"${CMAKE_INSTALL_DATADIR}\")")
install(CODE "set(packaging_folder \"${PROJECT_SOURCE_DIR}/packaging\")")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/InstallData.cmake)
